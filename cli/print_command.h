// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// wren print: a document as printer bytes, and a picture of the paper. No queue, no root and no
// scheduler are needed.

#pragma once

#include "cli/print_arguments.h"

namespace wren::cli {

/// @return the exit status. Throws a Failure.
int runPrint(const PrintArguments& arguments);

}  // namespace wren::cli
