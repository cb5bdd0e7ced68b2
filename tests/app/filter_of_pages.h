// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What the filter of a CUPS queue prints for pages that the application has kept.

#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace wren_test {

struct FilterOptions {
  std::string halftone = "threshold";  ///< a choice of the application
  std::string options = {};            ///< more options of the job, by the names of the PPD
};

/// The printer bytes of `rastertowren` for one job of these pages.
std::string filterBytesOf(const std::vector<std::filesystem::path>& pages,
                          const FilterOptions& options);

}  // namespace wren_test
