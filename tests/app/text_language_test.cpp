// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/text_language.h"

#include <gtest/gtest.h>

namespace wren_test {
namespace {

using wren::app::TextLanguage;

TEST(TextLanguage, IsReadFromTheTagOfAClient) {
  struct Row {
    const char* tag;
    TextLanguage language;
  };
  const Row rows[] = {
      {"ja", TextLanguage::kJapanese},
      {"ja-JP", TextLanguage::kJapanese},
      {"jam", TextLanguage::kAny},
      {"ko-kr", TextLanguage::kKorean},
      {"zh", TextLanguage::kSimplifiedChinese},
      {"zh-CN", TextLanguage::kSimplifiedChinese},
      {"zh-Hans-HK", TextLanguage::kSimplifiedChinese},
      {"zh-Hant", TextLanguage::kTraditionalChinese},
      {"zh-tw", TextLanguage::kTraditionalChinese},
      {"ZH-HK", TextLanguage::kTraditionalChinese},
      {"en-us", TextLanguage::kAny},
      {"", TextLanguage::kAny},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(wren::app::textLanguageOf(row.tag), row.language) << row.tag;
  }
}

TEST(TextLanguage, HasATagForFonts) {
  EXPECT_STREQ(tagOf(TextLanguage::kJapanese), "ja");
  EXPECT_STREQ(tagOf(TextLanguage::kKorean), "ko");
  EXPECT_STREQ(tagOf(TextLanguage::kSimplifiedChinese), "zh-cn");
  EXPECT_STREQ(tagOf(TextLanguage::kTraditionalChinese), "zh-tw");
  EXPECT_STREQ(tagOf(TextLanguage::kAny), "");
}

}  // namespace
}  // namespace wren_test
