// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Blocks marked `bash` in the documents are scripts, which are run whole.

#include <gtest/gtest.h>
#include <unistd.h>

#include <sstream>

#include "tests/docs/markdown.h"
#include "tests/support/process.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {
namespace {

std::vector<std::string> scriptsOf(const std::string& text) {
  std::vector<std::string> scripts;
  std::istringstream lines(text);
  bool isInside = false;
  for (std::string line; std::getline(lines, line);) {
    if (line == "```bash") {
      isInside = true;
      scripts.emplace_back();
    } else if (line == "```") {
      isInside = false;
    } else if (isInside) {
      scripts.back() += line + "\n";
    }
  }
  return scripts;
}

class WorkedExamples : public testing::TestWithParam<std::string> {};

TEST_P(WorkedExamples, Succeed) {
  const std::string programs = std::string(WREN_BUILD_DIR) + "/preview";
  if (::access((programs + "/wren-preview").c_str(), X_OK) != 0) {
    GTEST_SKIP() << "there is no wren-preview";
  }
  const auto scripts = scriptsOf(projectFile(GetParam()));
  EXPECT_FALSE(scripts.empty());
  for (const std::string& script : scripts) {
    const TemporaryFolder folder;
    folder.write("receipt.prn",
                 std::string("\x1B@\x1B<\x1B*\x01\x01\x00\x80\x1BJ\x10\x1DV\x01", 16));
    ProcessSpec spec;
    spec.program = "/bin/bash";
    spec.arguments = {"bash", "-e", "-o", "pipefail", "-c", script};
    spec.environment = {"PATH=" + programs + ":/usr/bin:/bin"};
    spec.workingFolder = folder.path().string();
    const ProcessResult result = runProcess(spec);
    EXPECT_EQ(result.exitStatus, 0) << script << result.out << result.err;
  }
}

INSTANTIATE_TEST_SUITE_P(Documents, WorkedExamples, testing::Values("docs/PREVIEW.md"),
                         [](const auto& test) { return testNameOf(test.param); });

}  // namespace
}  // namespace wren_test
