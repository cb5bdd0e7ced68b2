// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A folder for the files of one test, and whole files as bytes.

#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

/// Made empty for the running test and removed with everything in it.
class ScratchFolder {
 public:
  ScratchFolder() {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string("wren_") + test->name() + "_" + std::to_string(::getpid());
    // A test with parameters has a slash in its name.
    std::replace(name.begin(), name.end(), '/', '_');
    path_ = std::filesystem::path(testing::TempDir()) / name;
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  std::string file(const std::string& name) const { return (path_ / name).string(); }
  std::string path() const { return path_.string(); }

  std::string write(const std::string& name, const std::vector<std::uint8_t>& bytes) const {
    std::ofstream out(file(name), std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
    return file(name);
  }

 private:
  std::filesystem::path path_;
};

inline std::vector<std::uint8_t> bytesOfFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}
