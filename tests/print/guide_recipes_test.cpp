// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What docs/PRINTING.md says of the cutter, the drawer and the buzzer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/print/guide_document.h"

namespace {

using print_chain::millimetres;
using print_chain::Options;
using testing::ElementsAre;
using wren::escpos::MarkKind;

constexpr auto kPage = MarkKind::kPage;
constexpr auto kFull = MarkKind::kFullCut;
constexpr auto kPartial = MarkKind::kPartialCut;
constexpr auto kDrawer = MarkKind::kDrawerPulse;
constexpr auto kBeep = MarkKind::kBeep;

class GuideRecipes : public print_chain::Guide {
 protected:
  std::vector<MarkKind> marksOf(const std::string& document, const Options& options,
                                int copies = 1) {
    std::vector<MarkKind> kinds;
    for (const auto& mark : paperOf(document, options, copies).marks) kinds.push_back(mark.kind);
    return kinds;
  }

  // Paper that runs out after the last row of the document.
  double fedAtTheEnd(const Options& options) {
    const auto plain = paperOf("receipt.pdf", {{"DocCutType", "0"}}).lengthUnits;
    return millimetres(paperOf("receipt.pdf", options).lengthUnits - plain);
  }
};

TEST_F(GuideRecipes, CutsOnceAfterTheDocument) {
  EXPECT_THAT(marksOf(twoPages(), {}), ElementsAre(kPage, kPage, kPartial));
  EXPECT_THAT(marksOf(twoPages(), {{"DocCutType", "2"}}), ElementsAre(kPage, kPage, kPartial));
  EXPECT_THAT(marksOf(twoPages(), {{"DocCutType", "1"}}), ElementsAre(kPage, kPage, kFull));
}

TEST_F(GuideRecipes, CutsEveryPageApart) {
  EXPECT_THAT(marksOf(twoPages(), {{"PageCutType", "2"}, {"DocCutType", "0"}}),
              ElementsAre(kPage, kPartial, kPage, kPartial));
}

TEST_F(GuideRecipes, WithoutACutNothingIsFedAtTheEnd) {
  EXPECT_THAT(marksOf("receipt.pdf", {{"DocCutType", "0"}}), ElementsAre(kPage));
  EXPECT_NEAR(fedAtTheEnd({}), 12, 0.1);
  EXPECT_NEAR(fedAtTheEnd({{"DocCutType", "0"}, {"FeedCutAfterJobEnd", "15"}}), 0, 0.01);
}

TEST_F(GuideRecipes, FeedsMillimetresBeforeTheCut) {
  EXPECT_NEAR(fedAtTheEnd({{"FeedCutAfterJobEnd", "5"}}), 5, 0.1);
  EXPECT_NEAR(fedAtTheEnd({{"FeedCutAfterJobEnd", "15"}}), 15, 0.1);
}

TEST_F(GuideRecipes, WithBothCutsTheLastPageIsCutTwice) {
  const auto marks = paperOf(twoPages(), {{"PageCutType", "2"}, {"DocCutType", "1"}}).marks;
  ASSERT_EQ(marks.size(), 5U);
  EXPECT_EQ(marks[3].kind, kPartial);
  EXPECT_EQ(marks[4].kind, kFull);
  EXPECT_NEAR(millimetres(marks[4].atUnits - marks[3].atUnits), 12, 0.1) << "the feed between";
}

TEST_F(GuideRecipes, CopiesArePagesOfOneDocument) {
  EXPECT_THAT(marksOf("receipt.pdf", {{"PageCutType", "2"}, {"DocCutType", "0"}}, 2),
              ElementsAre(kPage, kPartial, kPage, kPartial));
  EXPECT_THAT(marksOf("receipt.pdf", {{"CashDrawerSetting", "1"}}, 2),
              ElementsAre(kDrawer, kPage, kPage, kPartial));
}

TEST_F(GuideRecipes, OpensTheDrawerBeforeOrAfterPrinting) {
  EXPECT_THAT(marksOf(twoPages(), {{"CashDrawerSetting", "1"}}),
              ElementsAre(kDrawer, kPage, kPage, kPartial));
  const auto after = marksOf(twoPages(), {{"CashDrawerSetting", "2"}});
  EXPECT_THAT(after, testing::UnorderedElementsAre(kPage, kPage, kPartial, kDrawer));
  EXPECT_EQ(after[1], kPage) << "not before the last page";
}

TEST_F(GuideRecipes, PulsesGetLongerIn50Milliseconds) {
  for (unsigned setting = 0; setting <= 8; ++setting) {
    const auto paper = paperOf("order.txt", {{"CashDrawerSetting", "1"},
                                             {"CashDrawerPulseWidth", std::to_string(setting)}});
    ASSERT_EQ(paper.marks.at(0).kind, kDrawer);
    EXPECT_EQ(paper.marks[0].second, 100 + 50 * setting);
  }
}

TEST_F(GuideRecipes, BeepsOnceWhenTheReceiptIsDone) {
  const auto marks = paperOf(twoPages(), {{"Buzzer2Setting", "2"}}).marks;
  ASSERT_EQ(marks.size(), 4U);
  EXPECT_EQ(marks[1].kind, kPage);
  EXPECT_EQ(marks[2].kind == kBeep ? marks[2].first : marks[3].first, 1U);
}

TEST_F(GuideRecipes, BeepsThreeTimesBeforeEveryPage) {
  const auto marks = paperOf(twoPages(), {{"Buzzer1Setting", "1"}, {"Buzzer1Repeat", "3"}}).marks;
  ASSERT_EQ(marks.size(), 5U);
  for (const std::size_t at : {0U, 2U}) {
    EXPECT_EQ(marks[at].kind, kBeep);
    EXPECT_EQ(marks[at].first, 3U);
    EXPECT_EQ(marks[at + 1].kind, kPage);
  }
}

}  // namespace
