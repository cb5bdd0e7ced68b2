// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Jobs whose bytes were calculated by hand; the comments of the source show the
// arithmetic. They check both the reference implementation and the filter.

#pragma once

#include <string>
#include <vector>

#include "tests/golden/golden_job.h"

namespace golden {

struct HandDerivedJob {
  JobInput input;
  Bytes output;              ///< standard output
  std::vector<Bytes> dumps;  ///< debug images, as from `withoutGreyPalette`
};

std::vector<HandDerivedJob> handDerivedJobs();

/// A debug image file; for kind "origin" without the 1024 bytes of the grey palette, which is the
/// same in all of them.
Bytes withoutGreyPalette(const std::string& kind, const Bytes& file);

}  // namespace golden
