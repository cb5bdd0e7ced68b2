// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/private_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using wren_test::readFile;
using wren_test::TemporaryFolder;

unsigned modeOf(const fs::path& path) {
  struct stat status = {};
  EXPECT_EQ(stat(path.c_str(), &status), 0);
  return status.st_mode & 07777U;
}

int refused(const fs::path& path) {
  errno = 0;
  EXPECT_FALSE(wren::openPrivateFile(path.c_str()));
  return errno;
}

TEST(PrivateFile, IsCreatedForItsOwnerAlone) {
  const TemporaryFolder folder;
  const mode_t mask = umask(0);
  const wren::FileDescriptor file = wren::openPrivateFile((folder.path() / "new").c_str());
  umask(mask);
  ASSERT_TRUE(file);
  EXPECT_EQ(modeOf(folder.path() / "new"), 0600U);
  EXPECT_NE(fcntl(file.get(), F_GETFD) & FD_CLOEXEC, 0);
  EXPECT_EQ(write(file.get(), "x", 1), 1);
  EXPECT_EQ(readFile(folder.path() / "new"), "x");
}

TEST(PrivateFile, EmptiesAnExistingFileAndRemovesTheAccessOfOthers) {
  const TemporaryFolder folder;
  const auto path = folder.write("old", "old text");
  chmod(path.c_str(), 0666);
  ASSERT_TRUE(wren::openPrivateFile(path.c_str()));
  EXPECT_EQ(readFile(path), "");
  EXPECT_EQ(modeOf(path), 0600U);
}

TEST(PrivateFile, IsEmptiedWhicheverDescriptorItGets) {
  const TemporaryFolder folder;
  const auto path = folder.write("old", "old text");
  const int savedInput = dup(STDIN_FILENO);
  close(STDIN_FILENO);
  EXPECT_EQ(wren::openPrivateFile(path.c_str()).release(), STDIN_FILENO);
  dup2(savedInput, STDIN_FILENO);
  close(savedInput);
  EXPECT_EQ(readFile(path), "");
}

TEST(PrivateFile, LeavesAFileOfAnotherUserAlone) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can make a file of another user";
  const TemporaryFolder folder;
  const auto path = folder.write("theirs", "keep");
  ASSERT_EQ(chown(path.c_str(), 65534, 65534), 0);
  EXPECT_EQ(refused(path), EINVAL);
  EXPECT_EQ(readFile(path), "keep");
}

TEST(PrivateFile, FollowsNoSymbolicLink) {
  const TemporaryFolder folder;
  const auto target = folder.write("target", "keep");
  fs::create_symlink(target, folder.path() / "link");
  fs::create_symlink(folder.path() / "missing", folder.path() / "dangling");
  EXPECT_EQ(refused(folder.path() / "link"), ELOOP);
  EXPECT_EQ(refused(folder.path() / "dangling"), ELOOP);
  EXPECT_EQ(readFile(target), "keep");
  EXPECT_FALSE(fs::exists(folder.path() / "missing"));
}

// Another user may have linked a file of theirs to the name that is used next.
TEST(PrivateFile, LeavesAFileWithAHardLinkAlone) {
  const TemporaryFolder folder;
  const auto target = folder.write("target", "keep");
  chmod(target.c_str(), 0644);
  fs::create_hard_link(target, folder.path() / "link");
  EXPECT_EQ(refused(folder.path() / "link"), EINVAL);
  EXPECT_EQ(readFile(target), "keep");
  EXPECT_EQ(modeOf(target), 0644U);
}

TEST(PrivateFile, RefusesEverythingButARegularFileWithoutBlocking) {
  const TemporaryFolder folder;
  ASSERT_EQ(mkfifo((folder.path() / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(refused(folder.path() / "pipe"), EINVAL);
  EXPECT_EQ(refused(folder.path()), EISDIR);
  EXPECT_EQ(refused("/dev/null"), EINVAL);
  EXPECT_EQ(refused(folder.path() / "no" / "file"), ENOENT);
}

}  // namespace
