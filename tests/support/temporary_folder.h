// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A folder of a test's own, gone when the test is done.
#pragma once

#include <filesystem>
#include <string>

namespace wren_test {

class TemporaryFolder {
 public:
  /// Ends the test program with a message when no folder can be made.
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  const std::filesystem::path& path() const { return folder; }
  /// Writes a file into the folder and returns its path.
  std::filesystem::path write(const std::string& name, const std::string& bytes) const;

 private:
  std::filesystem::path folder;
};

/// The bytes of a file; empty when it cannot be read.
std::string readFile(const std::filesystem::path& path);

}  // namespace wren_test
