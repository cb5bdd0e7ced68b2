// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/child_process.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "common/handles.h"
#include "tests/support/temporary_folder.h"

namespace wren::cli {
namespace {

namespace fs = std::filesystem;

class Programs : public testing::Test {
 protected:
  void TearDown() override { setPath(path_); }

  static void setPath(const std::string& path) { setenv("PATH", path.c_str(), 1); }

  // An empty program in a folder of this test.
  std::string install(const std::string& folder, const std::string& name, bool isExecutable) {
    fs::create_directories(folder_.path() / folder);
    const auto file = folder_.write(folder + "/" + name, "");
    fs::permissions(file, fs::perms(isExecutable ? 0755 : 0644));
    return file.string();
  }
  std::string pathOf(const std::string& name) const { return (folder_.path() / name).string(); }

 private:
  static std::string pathOfUser() {
    const char* path = std::getenv("PATH");
    return path != nullptr ? path : "/usr/bin:/bin";
  }

  wren_test::TemporaryFolder folder_;
  std::string path_ = pathOfUser();
};

TEST_F(Programs, AreFoundInTheFirstFolderThatHasThem) {
  const std::string text = install("a", "reader", false);
  const std::string first = install("b", "reader", true);
  const std::string second = install("c", "reader", true);
  const std::string last = install("c", "writer", true);
  setPath(":" + pathOf("none") + ":" + pathOf("a") + ":" + pathOf("b") + "::" + pathOf("c"));
  EXPECT_EQ(findProgram("reader"), first);
  EXPECT_EQ(findProgram("writer"), last);
  EXPECT_EQ(findProgram("printer"), "");
  EXPECT_EQ(findProgram(second), second);
  EXPECT_EQ(findProgram(text), "");
}

// There is cupsfilter, and the PATH of ordinary users does not have them.
TEST_F(Programs, AreFoundInTheFoldersForAdministrators) {
  for (const std::string& path : {std::string("/usr/bin:/bin"), pathOf("")}) {
    setPath(path);
    EXPECT_THAT(findProgram("cupsfilter"), testing::EndsWith("sbin/cupsfilter")) << path;
  }
  const std::string own = install("own", "cupsfilter", true);
  setPath(pathOf("own"));
  EXPECT_EQ(findProgram("cupsfilter"), own);
}

TEST_F(Programs, AreFoundWithoutAPath) {
  unsetenv("PATH");
  EXPECT_THAT(findProgram("sh"), testing::EndsWith("bin/sh"));
  EXPECT_THAT(findProgram("cupsfilter"), testing::EndsWith("sbin/cupsfilter"));
}

TEST(Children, EndWithTheirStatusOrTheirSignal) {
  EXPECT_EQ(runChild({"true"}, -1, -1), 0);
  EXPECT_EQ(runChild({"sh", "-c", "exit 3"}, -1, -1), 3);
  EXPECT_EQ(runChild({"sh", "-c", "kill -TERM $$"}, -1, -1), 128 + 15);
  EXPECT_EQ(runChild({"no-such-program"}, -1, -1), kNotStarted);
  EXPECT_EQ(runChild({"/"}, -1, -1), kNotStarted);
}

TEST(Children, WriteToTheirOwnDescriptors) {
  const wren_test::TemporaryFolder folder;
  const auto out = folder.write("out", "");
  const auto error = folder.write("error", "");
  const FileDescriptor toOut(open(out.c_str(), O_WRONLY));
  const FileDescriptor toError(open(error.c_str(), O_WRONLY));
  const Arguments command = {"sh", "-c", "cat; echo \"$1\"; echo err >&2", "sh", "a  b"};
  EXPECT_EQ(runChild(command, toOut.get(), toError.get()), 0);
  EXPECT_EQ(wren_test::readFile(out), "a  b\n");
  EXPECT_EQ(wren_test::readFile(error), "err\n");
}

TEST(Children, AreReadToTheirEnd) {
  const ChildOutput read = captureOutput({"sh", "-c", "cat; printf 'a b\\n'; exit 4"}, 60);
  EXPECT_EQ(read.status, 4);
  EXPECT_EQ(read.text, "a b\n");
  const ChildOutput much = captureOutput({"head", "-c", "3000000", "/dev/zero"}, 60);
  EXPECT_EQ(much.status, 0);
  EXPECT_GE(much.text.size(), std::size_t{1} << 20);
  EXPECT_LE(much.text.size(), (std::size_t{1} << 20) + 4096);
  EXPECT_EQ(captureOutput({"no-such-program"}, 60).status, kNotStarted);
  // Byte by byte.
  const ChildOutput slow = captureOutput({"sh", "-c", "printf a; sleep 0.2; printf b; exit 4"}, 60);
  EXPECT_EQ(slow.status, 4);
  EXPECT_EQ(slow.text, "ab");
}

TEST(Children, HaveNoEndOfThePipeButTheirOutput) {
  const char* const kCount =
      "own=$(readlink /proc/$$/fd/1); n=0; for f in /proc/$$/fd/*; do "
      "[ \"$(readlink $f)\" = \"$own\" ] && n=$((n+1)); done; echo $n";
  EXPECT_EQ(captureOutput({"sh", "-c", kCount}, 60).text, "1\n");
}

TEST(Children, GetWhatIsThrownAwayAndNothingToRead) {
  const wren_test::TemporaryFolder folder;
  const auto file = folder.write("links", "");
  const std::string list =
      "for i in 0 1 2; do all=\"$all $(readlink /proc/$$/fd/$i)\"; done; echo $all >" +
      file.string();
  EXPECT_EQ(runChild({"sh", "-c", list}, -1, -1), 0);
  EXPECT_EQ(wren_test::readFile(file), "/dev/null /dev/null /dev/null\n");
  // Open for writing, or for reading alone.
  EXPECT_EQ(runChild({"sh", "-c", "echo a && echo b >&2"}, -1, -1), 0);
  EXPECT_NE(runChild({"sh", "-c", "echo a >&0"}, -1, -1), 0);
  EXPECT_EQ(captureOutput({"sh", "-c", "echo a; readlink /proc/$$/fd/2"}, 60).text,
            "a\n/dev/null\n");
}

TEST(Children, AreKilledAtTheLimitOfTime) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(captureOutput({"sleep", "50"}, 2).status, 128 + 9);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(1900));
}

}  // namespace
}  // namespace wren::cli
