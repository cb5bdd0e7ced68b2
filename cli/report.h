// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// The JSON documents of `--json`.

#pragma once

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

namespace wren::cli {

/// The number in each document. It rises when a word changes its meaning or is removed.
inline constexpr int kSchema = 1;

/// Prints an object with its "schema".
void printJson(const nlohmann::ordered_json& object, std::FILE* to = stdout);

/// The text, or null if it is empty.
nlohmann::ordered_json textOrNull(const std::string& text);

}  // namespace wren::cli
