// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// rastertowren_at_level LEVEL job-id user title copies options [file]
//
// The filter with its kernels at one vector level, for `./wren bench --levels`. The main of the
// filter is compiled into it under the name `filterMain`.

#include <cstdio>
#include <optional>

#include "common/vector_level.h"
#include "tests/levels/level_argument.h"

int filterMain(int argc, char** argv);

namespace {

constexpr int kStatusUsage = 2;

}  // namespace

int main(int argc, char** argv) {
  const auto level = argc < 2 ? std::nullopt : wren::machineLevelNamed(argv[1]);
  if (!level) {
    std::fprintf(stderr, "Usage: %s LEVEL job-id user title copies options [file]\n", argv[0]);
    return kStatusUsage;
  }
  wren::useVectorLevel(*level);
  argv[1] = argv[0];
  return filterMain(argc - 1, argv + 1);
}
