// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What docs/PRINTING.md says of sizes.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/print/guide_document.h"

namespace {

using print_chain::Guide;
using print_chain::Ink;
using print_chain::inkOf;
using print_chain::millimetres;

class GuideSizes : public Guide {
 protected:
  Ink inkOfFirst(const std::string& document, int paper, const print_chain::Options& options) {
    return inkOf(print(document, paper, options).raster.at(0));
  }
};

// A longer size moves the document by less than a row.
TEST_F(GuideSizes, TooLongASizeCostsNoPaper) {
  const auto fitting = paperOf("receipt.pdf", {});
  const auto long_ = paperOf("receipt.pdf", {{"PageSize", "X80MMY600MM"}});
  EXPECT_LT(millimetres(fitting.lengthUnits), 150);
  EXPECT_NEAR(static_cast<double>(fitting.lengthUnits), static_cast<double>(long_.lengthUnits), 2);
}

TEST_F(GuideSizes, PageTypeOneKeepsTheBlankRows) {
  const auto label =
      paperOf("order.txt", {{"PageType", "1"}, {"PageSize", "X80MMY50MM"}, {"DocCutType", "0"}});
  EXPECT_NEAR(millimetres(label.lengthUnits), 51, 0.2) << "50 mm and the feed of a page";
}

TEST_F(GuideSizes, ALongerSizeMendsADocumentThatComesOutSmall) {
  EXPECT_LT(inkOfFirst(framedPdf(227, 900), 80, {}).width(), 400U);
  EXPECT_GT(inkOfFirst(framedPdf(227, 900), 80, {{"PageSize", "X80MMY600MM"}}).width(), 530U);
}

TEST_F(GuideSizes, WhatIsMadeForThePrintedWidthKeepsIt) {
  EXPECT_NEAR(inkOfFirst(framedPdf(136, 300), 58, {{"PageSize", "X48MMY200MM"}}).width(), 282, 2);
  EXPECT_NEAR(inkOfFirst(framedPdf(204, 300), 80, {{"PageSize", "X72MMY200MM"}}).width(), 474, 2);
  EXPECT_NEAR(inkOfFirst(framedPdf(294, 300), 112, {{"PageSize", "X104MMY200MM"}}).width(), 727, 2);
  EXPECT_NEAR(inkOfFirst(framedPdf(204, 900), 80, {{"PageSize", "Custom.72x350mm"}}).width(), 474,
              2);
}

TEST_F(GuideSizes, AReceiptFor80ShrinksOn58UnlessItIsCut) {
  const auto on80 = inkOfFirst("receipt.pdf", 80, {});
  const auto shrunk = inkOfFirst("receipt.pdf", 58, {});
  const auto cut = inkOfFirst("receipt.pdf", 58, {{"print-scaling", "none"}});
  EXPECT_LT(shrunk.height(), on80.height() * 2 / 3);
  EXPECT_EQ(cut.height(), on80.height());
  EXPECT_EQ(cut.width(), 384U) << "both sides are cut off";
}

TEST_F(GuideSizes, A4IsShrunkToTheWidthOfThePaper) {
  const auto ink = inkOfFirst(framedPdf(595, 842), 80, {});
  EXPECT_GT(ink.width(), 530U);
  EXPECT_LT(ink.width(), 576U) << "the whole frame is there";
  EXPECT_NEAR(ink.height(), ink.width() * (842 - 40) / (595 - 40), 5);
}

// 500 x 200 points: 1410 x 564 rows.
TEST_F(GuideSizes, AWidePageLosesItsSidesUnlessItIsFittedOrTurned) {
  const auto page = framedPdf(500, 200);
  const auto asItIs = inkOfFirst(page, 80, {});
  const auto fitted = inkOfFirst(page, 80, {{"fit-to-page", ""}});
  const auto turned = inkOfFirst(page, 80, {{"landscape", ""}});
  EXPECT_EQ(asItIs.width(), 576U);
  EXPECT_NEAR(asItIs.height(), 463, 3) << "not shrunk";
  EXPECT_LT(fitted.height(), 200U);
  EXPECT_LT(fitted.width(), 576U);
  EXPECT_GT(turned.height(), 1200U);
}

// What is shrunk or turned does not heed position=top, which only PageType=1 lets one see.
TEST_F(GuideSizes, AShrunkPageStandsInTheMiddleOfTheSize) {
  const auto ink = inkOfFirst(framedPdf(595, 842), 80, {});
  EXPECT_NEAR(ink.top, 1598 - ink.bottom, 5);
}

// A bar at each side and one in the middle; 799 dots, of which 576 are printed.
TEST_F(GuideSizes, ACustomPageWiderThanTheHeadKeepsItsMiddle) {
  const auto page =
      pdf(283, 425, "5 200 10 50 rectfill 136 200 10 50 rectfill 268 200 10 50 rectfill");
  const auto printed = print(page, 80, {{"PageSize", "Custom.100x150mm"}});
  EXPECT_NEAR(inkOf(printed.raster.at(0)).width(), 770, 2);
  const auto paper = paperOf(printed);
  std::vector<std::uint8_t> row(576);
  wren::escpos::renderRow(paper, 60, row);
  const auto first = std::find(row.begin(), row.end(), 1) - row.begin();
  EXPECT_NEAR(static_cast<double>(first), 274, 3) << "the bar in the middle";
  EXPECT_NEAR(static_cast<double>(std::count(row.begin(), row.end(), 1)), 28, 2);
}

TEST_F(GuideSizes, APageWithoutADotIsFedAtItsWholeLength) {
  const auto paper = paperOf(pdf(226, 300, ""), {{"DocCutType", "0"}});
  EXPECT_NEAR(millimetres(paper.lengthUnits), 201, 0.2) << "200 mm and the feed of a page";
}

// A line of text is as high as one that has a character more, until it breaks.
TEST_F(GuideSizes, ALineOfTextHolds28CharactersOr39) {
  const auto heightOf = [&](std::size_t characters, const print_chain::Options& options) {
    return inkOfFirst(textFile(std::string(characters, 'H')), 80, options).height();
  };
  EXPECT_EQ(heightOf(28, {}), heightOf(1, {}));
  EXPECT_GT(heightOf(29, {}), heightOf(1, {}));
  EXPECT_EQ(heightOf(39, {{"cpi", "14"}}), heightOf(1, {{"cpi", "14"}}));
  EXPECT_GT(heightOf(40, {{"cpi", "14"}}), heightOf(1, {{"cpi", "14"}}));
}

}  // namespace
