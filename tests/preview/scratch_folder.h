// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A temporary folder with paths as text and contents as printer bytes.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

class ScratchFolder {
 public:
  std::string path() const { return folder_.path().string(); }
  std::string file(const std::string& name) const { return (folder_.path() / name).string(); }

  /// Writes a file and returns its path.
  std::string write(const std::string& name, const std::vector<std::uint8_t>& bytes) const {
    return folder_.write(name, std::string(bytes.begin(), bytes.end())).string();
  }

 private:
  wren_test::TemporaryFolder folder_;
};

/// The contents of a file; empty if it cannot be read.
inline std::vector<std::uint8_t> bytesOfFile(const std::string& path) {
  const std::string text = wren_test::readFile(path);
  return {text.begin(), text.end()};
}
