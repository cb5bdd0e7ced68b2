// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/text_language.h"

#include <array>
#include <cctype>
#include <string>

namespace wren::app {
namespace {

struct Prefix {
  std::string_view tag;
  TextLanguage language;
};

// The first that fits.
constexpr std::array<Prefix, 8> kPrefixes = {{
    {"ja", TextLanguage::kJapanese},
    {"ko", TextLanguage::kKorean},
    {"zh-hans", TextLanguage::kSimplifiedChinese},
    {"zh-hant", TextLanguage::kTraditionalChinese},
    {"zh-tw", TextLanguage::kTraditionalChinese},
    {"zh-hk", TextLanguage::kTraditionalChinese},
    {"zh-mo", TextLanguage::kTraditionalChinese},
    {"zh", TextLanguage::kSimplifiedChinese},
}};

bool beginsWith(std::string_view tag, std::string_view prefix) {
  return tag.starts_with(prefix) && (tag.size() == prefix.size() || tag[prefix.size()] == '-');
}

}  // namespace

TextLanguage textLanguageOf(std::string_view tag) {
  std::string lower(tag);
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  for (const Prefix& prefix : kPrefixes) {
    if (beginsWith(lower, prefix.tag)) return prefix.language;
  }
  return TextLanguage::kAny;
}

const char* tagOf(TextLanguage language) {
  switch (language) {
    case TextLanguage::kJapanese:
      return "ja";
    case TextLanguage::kKorean:
      return "ko";
    case TextLanguage::kSimplifiedChinese:
      return "zh-cn";
    case TextLanguage::kTraditionalChinese:
      return "zh-tw";
    case TextLanguage::kAny:
      break;
  }
  return "";
}

}  // namespace wren::app
