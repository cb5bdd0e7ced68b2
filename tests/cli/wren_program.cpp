// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/cli/wren_program.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

namespace wren::cli {

namespace fs = std::filesystem;

wren_test::ProcessResult WrenProgram::wren(const std::vector<std::string>& arguments) {
  const char* path = std::getenv("PATH");
  wren_test::ProcessSpec spec;
  spec.program = program_ ? "/proc/self/fd/" + std::to_string(program_.get()) : WREN_PROGRAM;
  spec.arguments = {"wren"};
  spec.arguments.insert(spec.arguments.end(), arguments.begin(), arguments.end());
  // The first of a name counts.
  spec.environment = environment_;
  spec.environment.insert(
      spec.environment.end(),
      {"PATH=" + pathOf("bin") + ":" + (path != nullptr ? path : "/usr/bin:/bin"),
       "HOME=" + folder_.path().string(), "LC_ALL=C.UTF-8"});
  spec.workingFolder = folder_.path();
  spec.beforeExec = beforeExec_;
  return wren_test::runProcess(spec);
}

wren_test::ProcessResult WrenProgram::done(const std::vector<std::string>& arguments) {
  auto result = wren(arguments);
  EXPECT_EQ(result.exitStatus, 0) << testing::PrintToString(arguments) << "\n" << result.err;
  return result;
}

std::string WrenProgram::refusal(int status, const std::vector<std::string>& arguments) {
  const auto result = wren(arguments);
  const std::string what = testing::PrintToString(arguments);
  EXPECT_EQ(result.exitStatus, status) << what << "\n" << result.err;
  EXPECT_EQ(result.out, "") << what;
  const std::string begin = "wren: ";
  const bool isOneLine = result.err.find('\n') + 1 == result.err.size();
  if (!isOneLine || result.err.rfind(begin, 0) != 0) {
    ADD_FAILURE() << what << " is not answered with one line: " << result.err;
    return result.err;
  }
  return result.err.substr(begin.size(), result.err.size() - begin.size() - 1);
}

// The build may lie in the home of root, where others find nothing: the program is opened before.
void WrenProgram::becomeOrdinary() {
  if (geteuid() != 0) return;
  fs::permissions(folder_.path(), fs::perms(0755));
  program_ = FileDescriptor(open(WREN_PROGRAM, O_RDONLY | O_CLOEXEC));
  beforeExec_ = [] {
    constexpr uid_t kNobody = 65534;
    if (setgid(kNobody) != 0 || setuid(kNobody) != 0) _exit(125);
  };
}

void WrenProgram::standIn(const std::string& name, const std::string& script) {
  fs::create_directories(pathOf("bin"));
  const auto path = folder_.write("bin/" + name, "#!/bin/sh\n" + script);
  fs::permissions(path, fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec);
}

std::string example(const std::string& name) {
  return WREN_SOURCE_DIR "/examples/" + name;
}

}  // namespace wren::cli
