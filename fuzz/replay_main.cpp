// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Runs a fuzz target on the files of its corpus, without a fuzzer, as part of the ordinary tests.
// Further folders may be empty.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesOf(const fs::path& folder) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

bool replay(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) return false;
  const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
  // Printed before the run, so that a crash shows its input.
  std::fprintf(stderr, "%s\n", file.filename().c_str());
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s corpus-folder [folder...]\n", argv[0]);
    return 2;
  }
  bool all = true;
  for (int i = 1; i < argc; ++i) {
    std::error_code missing;
    if (!fs::is_directory(argv[i], missing)) {
      std::fprintf(stderr, "%s is not a folder\n", argv[i]);
      return 2;
    }
    const std::vector<fs::path> files = filesOf(argv[i]);
    if (i == 1 && files.empty()) {
      std::fprintf(stderr, "%s holds no inputs\n", argv[i]);
      return 2;
    }
    all = std::all_of(files.begin(), files.end(), replay) && all;
  }
  return all ? 0 : 1;
}
