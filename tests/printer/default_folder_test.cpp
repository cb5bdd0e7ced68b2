// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// An image of a printer object that nobody told a folder goes to the print system's folder
// for temporary files. What this program writes there goes to a folder of its own.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "printer/dot_matrix_ep_printer.h"
#include "tests/support/filter_job.h"
#include "tests/support/spool_folder.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {
namespace {

// In a child: a process cannot leave the private spool folder.
TEST(DefaultFolder, ImageBeforeTheFirstPageIsNamedPrnimg) {
  if (!canMount()) GTEST_SKIP() << "needs mounts";
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.path() / "spool");
  const pid_t child = fork();
  if (child == 0) {
    enterPrivateSpool(folder.path(), SpoolKind::kPrivate);
    const unsigned char dots[] = {0, 255};
    DotMatrixEpPrinter().saveImage(dots, 2, 1, 2, 8);
    _exit(0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  const auto images = savedImages(folder.path() / "spool");
  ASSERT_EQ(images.size(), 1U);
  EXPECT_EQ(images[0].kind, "prnimg");
  EXPECT_EQ(images[0].bytes.size(), 54U + 1024U + 2U);
}

}  // namespace
}  // namespace wren_test
