// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// What somebody may have meant by a name that does not exist.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace wren::cli {

/// The number of letters to insert, delete or replace to get from one name to the other, without
/// regard to case.
std::size_t editDistance(std::string_view a, std::string_view b);

/// The nearest of some names; empty if none is near: more than a third of the letters differ and it
/// does not begin so.
std::string nearestName(std::string_view wanted, const std::vector<std::string>& names);

/// ", did you mean 'NAME'?", or nothing.
std::string suggestion(std::string_view wanted, const std::vector<std::string>& names);

}  // namespace wren::cli
