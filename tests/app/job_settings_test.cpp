// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/job_settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

namespace wren::app {
namespace {

using Values = std::map<std::string, std::string>;

JobRequest::Lookup in(const Values& values) {
  return [values](const char* name) -> std::optional<std::string> {
    const auto found = values.find(name);
    if (found == values.end()) return std::nullopt;
    return found->second;
  };
}

JobSettings settingsOf(const Values& ofJob, const Values& ofPrinter = {}) {
  JobRequest request;
  request.ofJob = in(ofJob);
  request.ofPrinter = in(ofPrinter);
  return makeJobSettings(request);
}

TEST(JobSettings, AreThoseOfAReceiptPrinterWhereNothingIsSet) {
  const JobSettings settings = makeJobSettings({});
  EXPECT_EQ(settings.core.docCutType, 2);
  EXPECT_EQ(settings.core.feedCutAfterJobEnd, 12);
  EXPECT_EQ(settings.core.cashDrawerSetting, 0);
  EXPECT_EQ(settings.core.buzzer1OnTime, 1);
  EXPECT_EQ(settings.core.pageType, 0);
  EXPECT_EQ(settings.core.halftoneType, None);
  EXPECT_EQ(settings.core.brightness, 0);
  EXPECT_FALSE(settings.core.debugImages);
  EXPECT_EQ(settings.contrast, 0);
  EXPECT_EQ(settings.longestGapMm, 0U);
}

TEST(JobSettings, OfTheJobBeatThoseOfThePrinter) {
  const JobSettings settings =
      settingsOf({{"cash-drawer-setting", "before"}, {"contrast", "-5"}},
                 {{"cash-drawer-setting", "after"}, {"buzzer1-repeat", "3"}});
  EXPECT_EQ(settings.core.cashDrawerSetting, 1);
  EXPECT_EQ(settings.core.buzzer1Repeat, 3);
  EXPECT_EQ(settings.contrast, -5);
}

struct HalftoneCase {
  const char* ofJob;
  const char* content;
  const char* ofPrinter;
  DitherType halftone;
};

TEST(JobSettings, TakeTheHalftoneOfTheJobThenItsContentThenThePrinters) {
  const HalftoneCase cases[] = {
      {"stencil", "photo", "bayer", QVDithering},
      {nullptr, "photo", "bayer", Burkes},  // prints with Stucki's weights
      {nullptr, "text", "bayer", None},
      {nullptr, "graphic", "bayer", FloydSteinberg},
      {nullptr, "auto", "bayer", StevensonArce},
      {nullptr, "", "sierra", JarvisJudiceNinke},
      {nullptr, "", nullptr, None},
  };
  for (const HalftoneCase& row : cases) {
    JobRequest request;
    request.ofJob = in(row.ofJob == nullptr ? Values{} : Values{{"halftone-type", row.ofJob}});
    request.ofPrinter =
        in(row.ofPrinter == nullptr ? Values{} : Values{{"halftone-type", row.ofPrinter}});
    request.content = row.content;
    EXPECT_EQ(makeJobSettings(request).core.halftoneType, row.halftone) << row.content;
  }
}

struct CutCase {
  const char* ofJob;
  std::optional<bool> finishings;
  const char* ofPrinter;
  int cut;
};

TEST(JobSettings, CutAsTheJobThenItsFinishingsThenThePrinterSay) {
  const CutCase cases[] = {
      {"full", false, "none", 1},         {"none", true, "full", 0},
      {nullptr, true, "full", 1},         {nullptr, true, "none", 2},
      {nullptr, false, "full", 0},        {nullptr, std::nullopt, "full", 1},
      {nullptr, std::nullopt, "none", 0}, {nullptr, std::nullopt, nullptr, 2},
  };
  for (const CutCase& row : cases) {
    JobRequest request;
    request.ofJob = in(row.ofJob == nullptr ? Values{} : Values{{"doc-cut-type", row.ofJob}});
    request.ofPrinter =
        in(row.ofPrinter == nullptr ? Values{} : Values{{"doc-cut-type", row.ofPrinter}});
    request.cutAtEnd = row.finishings;
    EXPECT_EQ(makeJobSettings(request).core.docCutType, row.cut);
  }
}

TEST(JobSettings, TurnDarknessIntoBrightness) {
  const std::map<int, int> brightness = {{-100, -25}, {-40, -10}, {0, 0}, {20, 5}, {100, 25}};
  for (const auto& [darkness, expected] : brightness) {
    JobRequest request;
    request.darkness = darkness;
    EXPECT_EQ(makeJobSettings(request).core.brightness, expected);
  }
}

TEST(JobSettings, AddTheDarknessThatPapplsPageSets) {
  struct Row {
    std::int32_t configured;
    std::int32_t darkness;
    std::int32_t brightness;
  };
  for (const Row& row : {Row{50, 0, 0}, Row{60, 0, 5}, Row{0, 0, -25}, Row{100, 0, 25},
                         Row{60, -20, 0}, Row{100, 100, 25}, Row{0, -100, -25}}) {
    JobRequest request;
    request.darkness = row.darkness;
    request.configuredDarkness = row.configured;
    EXPECT_EQ(makeJobSettings(request).core.brightness, row.brightness)
        << row.configured << ", " << row.darkness;
  }
}

TEST(JobSettings, PrintHighQualityInOneDirectionUnlessTheJobSaysOtherwise) {
  JobRequest request;
  request.highQuality = true;
  EXPECT_EQ(makeJobSettings(request).core.bidiPrinting, 1);
  request.ofJob = in({{"bidi-printing", "both"}});
  EXPECT_EQ(makeJobSettings(request).core.bidiPrinting, 0);
}

TEST(JobSettings, KeepTheDrawerClosedForAClientThatIsFarAwayUnlessThePrinterTrustsIt) {
  JobRequest request;
  request.ofPrinter = in({{"cash-drawer-setting", "after"}});
  EXPECT_EQ(makeJobSettings(request).core.cashDrawerSetting, 2);
  request.clientIsLocal = false;
  EXPECT_EQ(makeJobSettings(request).core.cashDrawerSetting, 0);
  request.ofPrinter = in({{"cash-drawer-setting", "after"}, {"drawer-from", "anyone"}});
  EXPECT_EQ(makeJobSettings(request).core.cashDrawerSetting, 2);
}

TEST(JobSettings, OfAClientThatIsFarAwayAndAsksForTheDrawerAreRefused) {
  JobRequest request;
  request.clientIsLocal = false;
  request.ofJob = in({{"cash-drawer-setting", "off"}});
  EXPECT_EQ(makeJobSettings(request).core.cashDrawerSetting, 0);
  request.ofJob = in({{"cash-drawer-setting", "before"}});
  EXPECT_THROW(makeJobSettings(request), BadAttribute);
}

TEST(JobSettings, SayWhetherTheClientMayOpenTheDrawer) {
  JobRequest request;
  EXPECT_TRUE(makeJobSettings(request).mayOpenDrawer);
  request.clientIsLocal = false;
  EXPECT_FALSE(makeJobSettings(request).mayOpenDrawer);
  request.ofPrinter = in({{"drawer-from", "anyone"}});
  EXPECT_TRUE(makeJobSettings(request).mayOpenDrawer);
}

TEST(JobSettings, OfAJobThatChangesWhoMayOpenTheDrawerAreRefused) {
  EXPECT_THROW(settingsOf({{"drawer-from", "anyone"}}), BadAttribute);
}

TEST(JobSettings, OfABadValueNameAttributeAndValue) {
  const std::map<Values, std::string> messages = {
      {{{"halftone-type", "stuki"}}, "halftone-type cannot be \"stuki\""},
      {{{"cash-drawer-pulse-width", "99"}}, "cash-drawer-pulse-width cannot be \"99\""},
      {{{"doc-cut-type", "1"}}, "doc-cut-type cannot be \"1\""},
  };
  for (const auto& [ofJob, message] : messages) {
    try {
      settingsOf(ofJob);
      ADD_FAILURE() << message;
    } catch (const BadAttribute& bad) {
      EXPECT_THAT(bad.what(), testing::HasSubstr(message));
    }
  }
}

// A saved default of an older version must not stop every job.
TEST(JobSettings, IgnoreADefaultThatIsNoLongerOffered) {
  EXPECT_EQ(settingsOf({}, {{"doc-cut-type", "torn"}}).core.docCutType, 2);
}

}  // namespace
}  // namespace wren::app
