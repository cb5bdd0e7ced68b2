// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Page size names: any text, against the reference implementation.

#include "filter/page_size_name.h"

#include "fuzz/input.h"
#include "tests/reference/job.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string name = fuzz::Input(data, size).text();
  const auto numbers = wren::filter::parsePageSizeName(name.c_str());
  float width = 0.0F;
  float height = 0.0F;
  const bool valid = reference::parsePageSize(name, width, height);
  fuzz::check(numbers.width == width && numbers.height == height,
              "the numbers are those of the reference implementation");
  fuzz::check(valid || (numbers.width == 0.0F && numbers.height == 0.0F), "no pattern, no numbers");
  return 0;
}
