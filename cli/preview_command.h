// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// wren preview: runs wren-preview, a program of its own. Only the listing as JSON is made here.

#pragma once

#include <string>
#include <vector>

namespace wren::cli {

/// @param arguments those of wren-preview.
/// @return the exit status if it does not replace this process. Throws a Failure.
int runPreview(const std::vector<std::string>& arguments);

}  // namespace wren::cli
