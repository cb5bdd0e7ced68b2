// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/text_pages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace wren::app {
namespace {

// Pages of lines of cells, each as "column:text"; a wide one as "column+:text".
using Shown = std::vector<std::vector<std::string>>;

std::string show(const TextLine& line) {
  std::string shown;
  for (const TextCell& cell : line) {
    shown += (shown.empty() ? "" : " ") + std::to_string(cell.column) +
             (cell.columns == 2 ? "+:" : ":") + cell.text;
  }
  return shown;
}

Shown pagesOf(const std::string& text, unsigned columns, std::size_t maxLines) {
  TextPages pages(text, columns, maxLines);
  Shown result;
  while (const std::optional<TextPage> page = pages.next()) {
    result.emplace_back();
    for (const TextLine& line : *page) result.back().push_back(show(line));
  }
  return result;
}

struct Case {
  const char* name;
  std::string text;
  Shown pages;
};

void PrintTo(const Case& shown, std::ostream* out) {
  *out << shown.name;
}

class TextPagesCase : public testing::TestWithParam<Case> {};

// Four columns, three lines.
TEST_P(TextPagesCase, LaysTextOut) {
  EXPECT_EQ(pagesOf(GetParam().text, 4, 3), GetParam().pages);
}

const std::string kBad = "\xEF\xBF\xBD";  // U+FFFD

INSTANTIATE_TEST_SUITE_P(
    Text, TextPagesCase,
    testing::Values(
        Case{"Nothing", "", {}}, Case{"Word", "ab", {{"0:a 1:b"}}},
        Case{"EndOfTheLine", "a\n", {{"0:a"}}}, Case{"EmptyLine", "a\n\nb", {{"0:a", "", "0:b"}}},
        Case{"ReturnAndFeed", "a\r\nb", {{"0:a", "0:b"}}}, Case{"Return", "a\rb", {{"0:a", "0:b"}}},
        Case{"FullLine", "abcd\ne", {{"0:a 1:b 2:c 3:d", "0:e"}}},
        Case{"LongLine", "abcde", {{"0:a 1:b 2:c 3:d", "0:e"}}},
        Case{"SpacesAtTheEdge", "abcd  e", {{"0:a 1:b 2:c 3:d", "0:e"}}},
        Case{"SpacesBehindTheEdge", "ab      \nc", {{"0:a 1:b", "0:c"}}},
        Case{"SpacesBeforeTheFirst", "      a", {{"0:a"}}}, Case{"Indent", "  a", {{"2:a"}}},
        Case{"LongPage", "a\nb\nc\nd", {{"0:a", "0:b", "0:c"}, {"0:d"}}},
        Case{"FormFeed", "a\fb", {{"0:a"}, {"0:b"}}},
        Case{"FormFeedInItsLine", "a\n\f\nb", {{"0:a"}, {"", "0:b"}}},
        Case{"FormFeeds", "\f\fa\f\f", {{"0:a"}}},
        Case{"FormFeedOfAFullPage", "a\nb\nc\n\fd", {{"0:a", "0:b", "0:c"}, {"0:d"}}},
        Case{"OrderMark",
             "\xEF\xBB\xBF"
             "a",
             {{"0:a"}}},
        Case{"Wide", "a日b", {{"0:a 1+:日 3:b"}}},
        Case{"WideAtTheEdge", "abc日", {{"0:a 1:b 2:c", "0+:日"}}},
        Case{"WideSpace", "　a", {{"2:a"}}}, Case{"Accent", "e\xCC\x81x", {{"0:e\xCC\x81 1:x"}}},
        Case{"AccentAlone", "\xCC\x81x", {{"0:\xCC\x81 1:x"}}},
        Case{"AccentAtTheEdge", "abcd\xCC\x81", {{"0:a 1:b 2:c 3:d\xCC\x81"}}},
        Case{"Joiner",
             "a\xE2\x80\x8D"
             "b",
             {{"0:a 1:b"}}},
        Case{"Zero", std::string("a\0b", 3), {{"0:a 1:" + kBad + " 2:b"}}},
        Case{"Escape", "\x1B@", {{"0:" + kBad + " 1:@"}}},
        Case{"WrongByte",
             "\xFF"
             "a",
             {{"0:" + kBad + " 1:a"}}},
        Case{"OverlongForm", "\xC0\xAF", {{"0:" + kBad + " 1:" + kBad}}},
        Case{"Surrogate", "\xED\xA0\x80", {{"0:" + kBad + " 1:" + kBad + " 2:" + kBad}}},
        Case{"CutOff", "\xE6\x97", {{"0:" + kBad + " 1:" + kBad}}}),
    [](const auto& shown) { return shown.param.name; });

TEST(TextPages, PutsTabsEveryEightColumns) {
  EXPECT_EQ(pagesOf("\ta\tb1234567\tc", 40, 3), (Shown{{"8:a 16:b 17:1 18:2 19:3 20:4 21:5 22:6 "
                                                        "23:7 32:c"}}));
}

struct Head {
  std::string bytes;
  bool isText;
};

TEST(TextHead, IsUtf8WithoutControls) {
  const Head heads[] = {{"Tisch 4\r\n\tKaffee 3,50 \xE2\x82\xAC\f", true},
                        {"\xEF\xBB\xBFmarked", true},
                        {"cut off \xE2\x82", true},
                        {"cut off \xF0", true},
                        {"", false},
                        {"Latin-1: caf\xE9 au lait", false},
                        {"\x1B@ printer bytes", false},
                        {std::string("zero\0byte", 9), false},
                        {"\x7F", false},
                        {"\xFF\xFEU\x01", false}};
  for (const Head& head : heads) EXPECT_EQ(isTextHead(head.bytes), head.isText) << head.bytes;
}

TEST(TextPages, LimitsTheMarksOfACharacter) {
  std::string text = "e";
  for (int i = 0; i < 1000; ++i) text += "\xCC\x81";
  TextPages pages(text, 4, 3);
  EXPECT_LE(pages.next()->at(0).at(0).text.size(), 65U);
}

}  // namespace
}  // namespace wren::app
