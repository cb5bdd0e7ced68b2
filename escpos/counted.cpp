// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/counted.h"

namespace wren::escpos {

std::string counted(std::uint64_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace wren::escpos
