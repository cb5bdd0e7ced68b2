// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The languages that share characters and write them in different forms.

#pragma once

#include <string_view>

namespace wren::app {

enum class TextLanguage {
  kAny,  ///< that of the process
  kJapanese,
  kKorean,
  kSimplifiedChinese,
  kTraditionalChinese,
};

/// @param tag as in RFC 5646, in any case; from a client.
TextLanguage textLanguageOf(std::string_view tag);

/// The tag by which fonts are chosen; empty for kAny.
const char* tagOf(TextLanguage language);

}  // namespace wren::app
