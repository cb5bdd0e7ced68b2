// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The inputs of all golden jobs. `golden_writer` writes them and the expected
// output to the files in jobs/.

#pragma once

#include <vector>

#include "tests/golden/golden_job.h"

namespace golden {

std::vector<JobInput> jobList();

}  // namespace golden
