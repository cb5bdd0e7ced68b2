// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A count with its noun, for messages and listings.

#pragma once

#include <cstdint>
#include <string>

namespace wren::escpos {

/// "1 page", "2 pages": the noun gets an s for every count but 1.
std::string counted(std::uint64_t count, const std::string& noun);

}  // namespace wren::escpos
