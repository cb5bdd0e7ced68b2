// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// page_hashes reference
// page_hashes product [LEVEL]
//
// Prints lines with a hash of the printer bytes and debug images of a page, and what the page is:
// one for each way that a printer object takes its dots. The reference implementation or the
// product prints the page, the product at the named vector level or at the one that it chooses,
// which goes to standard error. Exit status 77: this build or processor lacks the level.

#include <cinttypes>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/vector_level.h"
#include "tests/golden/golden_job.h"
#include "tests/levels/level_argument.h"
#include "tests/printer/printed_page.h"
#include "tests/printer/test_pages.h"
#include "tests/reference/page.h"

namespace {

using reference::Bytes;
using reference::PageOptions;
using wren_test::TestPage;

constexpr int kStatusUsage = 2;
constexpr int kStatusSkipped = 77;

// Wider than two vectors of 64 bytes, with a rest for every shorter one; more rows than lanes.
constexpr unsigned long kWidth = 203;
constexpr unsigned long kHeight = 150;
constexpr unsigned kRandomPages = 120;

using Dumps = std::vector<reference::Dump>;

void printLine(const Bytes& bytes, const Dumps& dumps, const std::string& page) {
  Bytes all = bytes;
  for (const auto& dump : dumps) all.insert(all.end(), dump.bytes.begin(), dump.bytes.end());
  std::printf("%016" PRIx64 " %s\n", golden::fnv1a64(all), page.c_str());
}

constexpr const char* kWays[] = {"as bytes", "packed"};

void printWithReference(const PageOptions& options, const TestPage& page) {
  const auto result = reference::printImage(options, page.pixels.data(), page.bytesPerLine,
                                            page.height, page.width);
  for (const char* way : kWays) {
    printLine(reference::bytesOf(result.commands), result.dumps,
              describe(options, page) + ", " + way);
  }
}

void printWithProduct(const PageOptions& options, const TestPage& page) {
  for (const bool packed : {false, true}) {
    const auto output = wren_test::printWithProduct(options, page, packed);
    printLine(output.bytes, output.dumps, describe(options, page) + ", " + kWays[packed ? 1 : 0]);
  }
}

using Print = void (*)(const PageOptions&, const TestPage&);

void printPages(Print print) {
  for (int type = 0; type <= wren_test::kStencil; ++type) {
    PageOptions options;
    options.halftoneType = type;
    print(options, wren_test::noiseLevels(kWidth, kHeight, 1));
    print(options, wren_test::rampLevels(kWidth, kHeight, 20, 20));
  }
  for (unsigned seed = 1; seed <= kRandomPages; ++seed) {
    wren_test::Dice dice(seed);
    const TestPage page = wren_test::randomPage(dice, dice.below(9), 150, 70);
    print(wren_test::randomOptions(dice, page, static_cast<int>(dice.below(9))), page);
  }
}

int printProduct(std::span<char*> levels) {
  if (!levels.empty()) {
    const auto level = wren::machineLevelNamed(levels[0]);
    if (!level) return kStatusSkipped;
    wren::useVectorLevel(*level);
  }
  std::fprintf(stderr, "%s\n", vectorLevelName(wren::vectorLevel()).data());
  printPages(printWithProduct);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::span<char*> arguments(argv, static_cast<std::size_t>(argc));
  const std::string_view who = argc > 1 ? argv[1] : "";
  if (who == "product" && argc <= 3) return printProduct(arguments.subspan(2));
  if (who != "reference" || argc != 2) return kStatusUsage;
  printPages(printWithReference);
  return 0;
}
