// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// queue_test FOLDER root|user: runs all cases with one scheduler in FOLDER.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "tests/queue/delivered_job.h"

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  if (argc != 3) return 2;
  TestBench testBench(argv[1], std::string(argv[2]) == "root");
  bench = &testBench;
  if (!testBench.scheduler.start() || !testBench.scheduler.addQueues(testBench.printer.port())) {
    std::fprintf(stderr, "no scheduler:\n%s", testBench.scheduler.logTail().c_str());
    return 1;
  }
  const int result = RUN_ALL_TESTS();
  if (result != 0) std::fputs(testBench.scheduler.logTail().c_str(), stderr);
  return result;
}
