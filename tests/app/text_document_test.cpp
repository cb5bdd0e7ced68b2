// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/text_document.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

#include "app/document_error.h"
#include "tests/app/collected_pages.h"
#include "tests/support/temporary_folder.h"

namespace wren::app {
namespace {

using testing::ElementsAre;
using wren_test::CollectedPage;
using wren_test::CollectedPages;

class TextDocument : public testing::Test {
 protected:
  bool read(const std::string& text) {
    request_.path = folder_.write("document.txt", text);
    return readText(request_, {}, pages_);
  }

  std::string errorOf(const std::string& text) {
    try {
      read(text);
    } catch (const DocumentError& error) {
      return error.what();
    }
    return "none";
  }

  // The columns of dots between the first and the last with ink.
  static std::pair<unsigned, unsigned> inkColumns(const CollectedPage& page) {
    std::pair<unsigned, unsigned> found{page.widthPx, 0};
    for (unsigned y = 0; y < page.heightPx; ++y) {
      for (unsigned x = 0; x < page.widthPx; ++x) {
        if (page.at(x, y) == 0) continue;
        found = {std::min(found.first, x), std::max(found.second, x)};
      }
    }
    return found;
  }

  static unsigned inkCount(const CollectedPage& page) {
    unsigned count = 0;
    for (const std::uint8_t level : page.levels) count += level != 0 ? 1 : 0;
    return count;
  }

  wren_test::TemporaryFolder folder_;
  DocumentRequest request_;
  CollectedPages pages_;
};

// A block fills its cell, so that it shows where the cell is: 20 dots are a tenth of an inch.
TEST_F(TextDocument, PutsTenCharactersOnAnInch) {
  read("   █");
  EXPECT_EQ(inkColumns(pages_.pages.at(0)), (std::pair{60U, 79U}));
}

// 14 dots, 14.5 characters.
TEST_F(TextDocument, PutsFourteenCharactersOnAnInch) {
  request_.charactersPerInch = 14;
  read("   █");
  EXPECT_EQ(inkColumns(pages_.pages.at(0)), (std::pair{42U, 55U}));
}

TEST_F(TextDocument, DrawsInkAndPaperOnly) {
  read("Corner Café €12.50\n┌─┐ 日本語\n\xFF\xF3\xB0\x80\x80");
  EXPECT_THAT(pages_.levels(), ElementsAre(0, 255));
  EXPECT_TRUE(pages_.complete);
}

TEST_F(TextDocument, DrawsTheSameCharacterAlike) {
  read("ab  ab");
  const CollectedPage& page = pages_.pages.at(0);
  for (unsigned y = 0; y < page.heightPx; ++y) {
    for (unsigned x = 0; x < 40; ++x)
      ASSERT_EQ(page.at(x, y), page.at(x + 80, y)) << x << ", " << y;
  }
}

// 576 dots are 28 cells of 20.
TEST_F(TextDocument, WrapsAtTheWidthOfTheHead) {
  read("a");
  read(std::string(28, 'a'));
  read(std::string(29, 'a'));
  const unsigned lineHeightPx = pages_.pages.at(0).heightPx;
  EXPECT_EQ(pages_.pages.at(1).heightPx, lineHeightPx);
  EXPECT_EQ(pages_.pages.at(2).heightPx, 2 * lineHeightPx);
  EXPECT_EQ(pages_.pages.at(2).widthPx, 576U);
}

// The strokes of a frame leave no gap from line to line.
TEST_F(TextDocument, JoinsTheLinesOfFrames) {
  read("│\n│\n│");
  const CollectedPage& page = pages_.pages.at(0);
  for (unsigned y = 0; y < page.heightPx; ++y) {
    unsigned ink = 0;
    for (unsigned x = 0; x < 20; ++x) ink += page.at(x, y) != 0 ? 1 : 0;
    ASSERT_GT(ink, 0U) << "row " << y;
  }
}

TEST_F(TextDocument, LeavesTheNeighboursOfAWideCharacterAlone) {
  read("  日");
  const auto [left, right] = inkColumns(pages_.pages.at(0));
  EXPECT_GE(left, 40U);
  EXPECT_LE(right, 79U);
}

TEST_F(TextDocument, ShowsBytesThatAreNoText) {
  read("\xFF");
  EXPECT_GT(inkCount(pages_.pages.at(0)), 20U);
}

TEST_F(TextDocument, SplitsAtTheLongestPage) {
  read("a");
  const unsigned lineHeightPx = pages_.pages.at(0).heightPx;
  request_.target.maxHeightPx = 3 * lineHeightPx - 1;
  read("a\nb\nc\nd\ne");
  const std::string twoLines = "576x" + std::to_string(2 * lineHeightPx);
  const std::string oneLine = "576x" + std::to_string(lineHeightPx);
  EXPECT_THAT(pages_.sizes(), ElementsAre(oneLine, twoLines, twoLines, oneLine));
}

// More than a Cairo surface can hold, 32767 rows.
TEST_F(TextDocument, PrintsALongText) {
  std::string text;
  for (int i = 0; i < 2000; ++i) text += "line\n";
  request_.target.maxHeightPx = 100000;
  read(text);
  ASSERT_EQ(pages_.pages.size(), 1U);
  EXPECT_GT(pages_.pages[0].heightPx, 60000U);
  EXPECT_TRUE(pages_.complete);
}

TEST_F(TextDocument, RefusesAnEmptyText) {
  EXPECT_EQ(errorOf(""), "the text is empty");
  EXPECT_EQ(errorOf("\f\f"), "the text is empty");
}

TEST_F(TextDocument, RefusesUtf16) {
  EXPECT_EQ(errorOf("\xFF\xFE"
                    "a"),
            "the text is UTF-16, only UTF-8 can be printed");
}

TEST_F(TextDocument, RefusesALargeText) {
  EXPECT_EQ(errorOf(std::string((1 << 20) + 1, 'a')), "the text is larger than 1024 KiB");
  EXPECT_EQ(pages_.begun, 0U);
}

TEST_F(TextDocument, StopsWhenCancelled) {
  request_.cancel = CancelCheck([](const void*) { return true; }, nullptr);
  EXPECT_FALSE(read("a"));
  EXPECT_THAT(pages_.sizes(), ElementsAre());
}

}  // namespace
}  // namespace wren::app
