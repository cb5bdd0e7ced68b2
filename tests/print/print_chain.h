// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Prints documents through the filters of CUPS and rastertowren, as `wren print` does.

#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/reference/job.h"

namespace print_chain {

struct Printed {
  reference::Bytes bytes;
  std::vector<reference::Page> raster;  ///< input of the filter
  reference::JobOptions options;
};

/// Names and values; an empty value gives an option without `=VALUE`.
using Options = std::vector<std::pair<std::string, std::string>>;

/// Runs a shell command and returns its standard output; empty if it fails.
std::string outputOf(const std::string& command);

class PrintChain : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  /// A path in the temporary folder of the test.
  std::string pathOf(const std::string& name) const { return (folder_ / name).string(); }

  /// Prints a document. The test fails if the chain fails.
  /// @param document the name of an example, or an absolute path.
  /// @param paper width in mm: 58, 80 or 112.
  Printed print(const std::string& document, int paper, const Options& jobOptions, int copies = 1);

  /// The pages of tests/print/rasters/NAME.ras.gz: an example as one version of CUPS's filters
  /// once drew it, for figures that depend on the last pixel (dev/make_rasters).
  std::vector<reference::Page> storedPages(const std::string& name);

  /// Sends those pages through the filter alone.
  Printed printStored(const std::string& name, int paper, const Options& jobOptions);

 private:
  /// Unpacks a stored raster into the folder of the test and returns its path.
  std::string unpackStored(const std::string& name);

  std::filesystem::path folder_;
};

}  // namespace print_chain
