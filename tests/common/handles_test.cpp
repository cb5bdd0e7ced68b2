// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/handles.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <utility>

namespace {

using wren::FileDescriptor;

bool isOpen(int descriptor) {
  return fcntl(descriptor, F_GETFD) >= 0;
}

int openedNumber() {
  return open("/dev/null", O_RDONLY | O_CLOEXEC);
}

TEST(FileDescriptor, ClosesAtItsEnd) {
  const int number = openedNumber();
  ASSERT_GE(number, 0);
  { const FileDescriptor file(number); }
  EXPECT_FALSE(isOpen(number));
}

// A process whose standard input is closed gets number 0 for the next file it opens.
TEST(FileDescriptor, ClosesNumberZeroToo) {
  const FileDescriptor input(dup(STDIN_FILENO));
  close(STDIN_FILENO);
  const int number = openedNumber();
  EXPECT_EQ(number, STDIN_FILENO);
  { const FileDescriptor file(number); }
  EXPECT_FALSE(isOpen(number));
  if (input) dup2(input.get(), STDIN_FILENO);
}

TEST(FileDescriptor, MoveLeavesNothingBehind) {
  FileDescriptor first(openedNumber());
  FileDescriptor second(openedNumber());
  const int kept = first.get();
  const int replaced = second.get();
  second = std::move(first);
  EXPECT_EQ(second.get(), kept);
  EXPECT_TRUE(isOpen(kept));
  EXPECT_FALSE(isOpen(replaced));
}

TEST(FileDescriptor, ReleasedNumberStaysOpen) {
  FileDescriptor file(openedNumber());
  const int number = file.release();
  EXPECT_FALSE(static_cast<bool>(file));
  EXPECT_TRUE(isOpen(number));
  close(number);
}

}  // namespace
