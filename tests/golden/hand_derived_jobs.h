// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Jobs whose bytes were worked out with pencil and paper. They hold the literal
// versions and the filter alike to the arithmetic in the comments.

#ifndef WREN_TESTS_GOLDEN_HAND_DERIVED_JOBS_H_
#define WREN_TESTS_GOLDEN_HAND_DERIVED_JOBS_H_

#include <string>
#include <vector>

#include "tests/golden/golden_job.h"

namespace golden {

struct HandDerivedJob {
  JobInput input;
  Bytes output;              // standard output
  std::vector<Bytes> dumps;  // whole files, without the grey palette of the first
};

std::vector<HandDerivedJob> handDerivedJobs();

/// A debug image without the 1024 bytes of its grey palette, which are the same in all of them.
Bytes withoutGreyPalette(const std::string& kind, const Bytes& file);

}  // namespace golden

#endif  // WREN_TESTS_GOLDEN_HAND_DERIVED_JOBS_H_
