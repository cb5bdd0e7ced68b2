// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/output_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "cli/failure.h"
#include "tests/support/temporary_folder.h"

namespace wren::cli {
namespace {

namespace fs = std::filesystem;
using wren_test::readFile;

std::size_t filesIn(const fs::path& folder) {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
}

std::string failureOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.status(), kFailed);
    return failure.what();
  }
  return "no failure";
}

class OutputFiles : public testing::Test {
 protected:
  wren_test::TemporaryFolder folder_;
  std::string target_ = (folder_.path() / "receipt.prn").string();
};

TEST_F(OutputFiles, AppearWhole) {
  writeWholeFile(target_, "bytes");
  EXPECT_EQ(readFile(target_), "bytes");
  EXPECT_EQ(filesIn(folder_.path()), 1U);
}

TEST_F(OutputFiles, LeaveWhatWasThereUnlessCommitted) {
  writeWholeFile(target_, "old");
  {
    const OutputFile file(target_);
    EXPECT_NE(file.path(), target_);
    EXPECT_EQ(readFile(target_), "old");
  }
  EXPECT_EQ(readFile(target_), "old");
  EXPECT_EQ(filesIn(folder_.path()), 1U);
}

TEST_F(OutputFiles, KeepTheModeOfTheFileThatTheyReplace) {
  folder_.write("receipt.prn", "old");
  fs::permissions(target_, fs::perms::owner_read | fs::perms::owner_write);
  writeWholeFile(target_, "new");
  EXPECT_EQ(fs::status(target_).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(OutputFiles, HaveTheModeOfTheUserMask) {
  const mode_t mask = umask(027);
  writeWholeFile(target_, "new");
  umask(mask);
  EXPECT_EQ(static_cast<unsigned>(fs::status(target_).permissions()), 0640U);
}

TEST_F(OutputFiles, FollowASymbolicLink) {
  const std::string real = folder_.write("real", "old");
  fs::create_symlink(real, target_);
  writeWholeFile(target_, "new");
  EXPECT_TRUE(fs::is_symlink(target_));
  EXPECT_EQ(readFile(real), "new");
}

TEST_F(OutputFiles, WriteToADeviceDirectly) {
  writeWholeFile("/dev/null", "bytes");
  EXPECT_FALSE(fs::is_regular_file("/dev/null"));
}

TEST_F(OutputFiles, SayWhyNothingCanBeWritten) {
  EXPECT_EQ(failureOf([] { writeWholeFile("/nonexistent/x", ""); }),
            "'/nonexistent/x' cannot be written: No such file or directory");
  EXPECT_EQ(failureOf([&] { writeWholeFile(folder_.path(), ""); }),
            "'" + folder_.path().string() + "' cannot be written: Is a directory");
  EXPECT_EQ(failureOf([] { writeWholeFile("/dev/full", "bytes"); }),
            "'/dev/full' cannot be written: No space left on device");
  folder_.write("file", "");
  EXPECT_THAT(failureOf([&] { const NewFolder folder((folder_.path() / "file" / "x").string()); }),
              testing::HasSubstr("cannot be created: "));
}

TEST_F(OutputFiles, AreReadBackOrSayWhyNot) {
  folder_.write("file", std::string("a\0b\n", 4));
  EXPECT_EQ(readWholeFile((folder_.path() / "file").string()), std::string("a\0b\n", 4));
  for (const std::size_t size : {0U, 1U, 65535U, 65536U, 65537U}) {
    folder_.write("file", std::string(size, 'x'));
    EXPECT_EQ(readWholeFile((folder_.path() / "file").string()).size(), size);
  }
  EXPECT_EQ(failureOf([&] { readWholeFile(folder_.path().string()); }),
            "'" + folder_.path().string() + "' cannot be read: Is a directory");
}

TEST(TemporaryFolders, ArePrivateAndRemovedWithTheirContents) {
  std::string path;
  {
    const TemporaryFolder folder;
    path = fs::path(folder.pathOf("file")).parent_path();
    writeWholeFile(folder.pathOf("file"), "bytes");
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_all);
  }
  EXPECT_FALSE(fs::exists(path));
}

}  // namespace
}  // namespace wren::cli
