// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Documents through CUPS's own filters and ours, as ./wren print sends them.

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
  std::vector<reference::Page> raster;  ///< what CUPS handed to the filter
  reference::JobOptions options;
};

/// Names and values; an option with an empty value stands alone.
using Options = std::vector<std::pair<std::string, std::string>>;

/// Runs a shell command and returns what it writes; empty when it fails.
std::string outputOf(const std::string& command);

class PrintChain : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  /// A path in a folder that lives as long as the test.
  std::string pathOf(const std::string& name) const { return (folder_ / name).string(); }

  /// Prints an example, or the document of an absolute path, on `paper` mm; fails the test
  /// when the chain fails.
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

