// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A temporary folder that is removed with its contents at the end of the test.

#pragma once

#include <filesystem>
#include <string>

namespace wren_test {

class TemporaryFolder {
 public:
  /// Throws std::runtime_error if no folder can be created.
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  const std::filesystem::path& path() const { return folder_; }
  /// Writes a file in the folder and returns its path.
  std::filesystem::path write(const std::string& name, const std::string& bytes) const;

 private:
  std::filesystem::path folder_;
};

/// The bytes of a file; empty if it cannot be read.
std::string readFile(const std::filesystem::path& path);

}  // namespace wren_test
