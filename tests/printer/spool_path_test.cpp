// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Where the debug images of the shipped program go. This test program alone is linked with
// the folder that is shipped; what it writes there lands in a folder of its own.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "printer/dot_matrix_ep_printer.h"
#include "printer/dump_names.h"
#include "tests/support/filter_job.h"
#include "tests/support/spool_folder.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {
namespace {

TEST(SpoolPath, IsTheSchedulersTemporaryFolder) {
  EXPECT_STREQ(kPrintedDumpFormat, "/var/spool/cups/tmp/prnimg_%d-%d-%d_%d_%d_%d_%ld.bmp");
  EXPECT_STREQ(kOriginDumpFormat, "/var/spool/cups/tmp/origin_%d-%d-%d_%d_%d_%d_%ld.bmp");
  EXPECT_STREQ(kDitheredDumpFormat, "/var/spool/cups/tmp/dithered_%d-%d-%d_%d_%d_%d_%ld.bmp");
}

// In a child, because the private spool folder stays for good.
TEST(SpoolPath, AnImageBeforeTheFirstPageIsNamedPrnimg) {
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
  EXPECT_EQ(images[0].number, 0);
  EXPECT_EQ(images[0].bytes.size(), 54U + 1024U + 2U);
}

}  // namespace
}  // namespace wren_test
