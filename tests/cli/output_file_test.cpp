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

TEST_F(OutputFiles, KeepEveryBitOfTheModeThatIsForFiles) {
  folder_.write("receipt.prn", "old");
  for (const unsigned mode : {0600U, 0640U, 0755U, 0777U, 0200U}) {
    fs::permissions(target_, fs::perms(mode));
    writeWholeFile(target_, "new");
    EXPECT_EQ(static_cast<unsigned>(fs::status(target_).permissions()), mode);
  }
}

TEST_F(OutputFiles, HaveNoMoreRightsThanOtherNewFiles) {
  const mode_t mask = umask(0);
  writeWholeFile(target_, "new");
  EXPECT_EQ(umask(mask), 0U) << "the mask of the user is another now";
  EXPECT_EQ(static_cast<unsigned>(fs::status(target_).permissions()), 0666U);
}

TEST_F(OutputFiles, AreWrittenBesideTheirTarget) {
  const OutputFile file(target_);
  EXPECT_EQ(fs::path(file.path()).parent_path(), folder_.path());
  EXPECT_EQ(file.target(), target_);
  const fs::path here = fs::current_path();
  fs::current_path(folder_.path());
  {
    OutputFile relative("name");
    EXPECT_EQ(filesIn(folder_.path()), 2U);
    relative.commit();
  }
  fs::current_path(here);
  EXPECT_TRUE(fs::exists(folder_.path() / "name"));
}

// What is in its place is no temporary file any more.
TEST_F(OutputFiles, StayWhenTheyWereCommitted) {
  {
    OutputFile file(target_);
    file.commit();
    EXPECT_EQ(file.path(), target_);
    file.commit();
  }
  EXPECT_TRUE(fs::exists(target_));
  EXPECT_EQ(filesIn(folder_.path()), 1U);
}

TEST_F(OutputFiles, SayThatTheyCannotBePutInTheirPlace) {
  OutputFile file(target_);
  fs::create_directory(target_);
  EXPECT_EQ(failureOf([&] { file.commit(); }),
            "'" + target_ + "' cannot be written: Is a directory");
}

TEST_F(OutputFiles, AreRefusedForNamesThatAreTooLong) {
  const std::string name = folder_.path().string() + "/" + std::string(256, 'n');
  EXPECT_EQ(failureOf([&] { const OutputFile file(name); }),
            "'" + name + "' cannot be written: File name too long");
  EXPECT_EQ(filesIn(folder_.path()), 0U);
}

TEST_F(OutputFiles, AreReadToTheLimit) {
  const std::string path = folder_.write("file", std::string(1000, 'x'));
  EXPECT_EQ(readWholeFile(path, 1000).size(), 1000U);
  try {
    readWholeFile(path, 999);
    FAIL() << "no failure";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.status(), kDocument);
    EXPECT_EQ(failure.what(), "'" + path + "' is longer than 999 bytes");
  }
  EXPECT_EQ(failureOf([] { readWholeFile("/nowhere"); }),
            "'/nowhere' cannot be read: No such file or directory");
}

class NewFolders : public OutputFiles {};

TEST_F(NewFolders, GoAgainIfTheyAreEmpty) {
  const std::string inner = (folder_.path() / "a/b/c").string();
  {
    const NewFolder created(inner + "/");
    EXPECT_TRUE(fs::is_directory(inner));
  }
  EXPECT_EQ(filesIn(folder_.path()), 0U);
  {
    const NewFolder created(inner);
    folder_.write("a/b/kept", "");
  }
  EXPECT_TRUE(fs::exists(folder_.path() / "a/b/kept"));
  EXPECT_FALSE(fs::exists(inner));
}

TEST_F(NewFolders, LeaveFoldersThatWereThere) {
  fs::create_directory(folder_.path() / "old");
  for (const char* name : {"old", "old/", "old/new", "./old/../old/new"}) {
    const NewFolder created((folder_.path() / name).string());
  }
  EXPECT_TRUE(fs::exists(folder_.path() / "old"));
  EXPECT_FALSE(fs::exists(folder_.path() / "old/new"));
  const NewFolder current("");
  const std::string file = folder_.write("file", "");
  EXPECT_EQ(failureOf([&] { const NewFolder created(file); }),
            "'" + file + "' cannot be created: Not a directory");
  EXPECT_EQ(failureOf([&] { const NewFolder created(file + "/x/y"); }),
            "'" + file + "/x/y' cannot be created: Not a directory");
  // What was created before it failed goes again.
  const std::string longName = (folder_.path() / "n/m").string() + "/" + std::string(256, 'x');
  EXPECT_THAT(failureOf([&] { const NewFolder created(longName); }),
              testing::EndsWith("cannot be created: File name too long"));
  EXPECT_FALSE(fs::exists(folder_.path() / "n"));
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
