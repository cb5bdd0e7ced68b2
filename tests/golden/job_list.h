// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The inputs of all golden jobs. golden_writer turns them into the files in jobs/.

#ifndef WREN_TESTS_GOLDEN_JOB_LIST_H_
#define WREN_TESTS_GOLDEN_JOB_LIST_H_

#include <vector>

#include "tests/golden/golden_job.h"

namespace golden {

std::vector<JobInput> jobList();

}  // namespace golden

#endif  // WREN_TESTS_GOLDEN_JOB_LIST_H_
