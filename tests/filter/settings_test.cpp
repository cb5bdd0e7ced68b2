// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "filter/settings.h"

#include <cups/ppd.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "job/option_table.h"
#include "tests/support/filter_job.h"
#include "tests/support/ppd_text.h"
#include "tests/support/temporary_folder.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using wren::job::kIndexedOptions;
using wren::job::NumericOption;
using wren_test::fullPpd;
using wren_test::PpdText;

class SettingsTest : public testing::Test {
 protected:
  void TearDown() override { unsetenv("PPD"); }

  bool read(const std::string& ppd, const char* options, Settings& settings) {
    setenv("PPD", folder.write("test.ppd", ppd).c_str(), 1);
    CaptureStderr();
    const bool result = initializeSettings(options, &settings);
    messages = GetCapturedStderr();
    return result;
  }
  Settings read(const PpdText& ppd, const char* options = nullptr) {
    Settings settings;
    EXPECT_TRUE(read(ppd.text(), options, settings)) << messages;
    return settings;
  }

  wren_test::TemporaryFolder folder;
  std::string messages;
};

// A different value for each option, in the order in which the options are read.
PpdText ppdOfDistinctChoices() {
  PpdText ppd;
  ppd.raw("*cupsModelNumber: 77\n");
  ppd.attribute("MaxMediaWidth", "204.0");
  int value = 10;
  for (const NumericOption& row : kIndexedOptions) {
    ppd.option(row.keyword, {"0", std::to_string(value)}, std::to_string(value));
    ++value;
  }
  ppd.pageSizes({"X72D5MMY100MM"}, "X72D5MMY100MM");
  ppd.halftoneType("Stucki");
  ppd.option("Brightness", {"-20", "0"}, "-20");
  return ppd;
}

TEST_F(SettingsTest, EveryFieldComesFromItsOption) {
  const Settings s = read(ppdOfDistinctChoices());
  EXPECT_EQ(s.modelNumber, 77);
  EXPECT_EQ(s.maxMediaWidth, 204.0);
  EXPECT_EQ(s.pageWidth, 72.5F);
  EXPECT_EQ(s.pageHeight, 100.0F);
  EXPECT_EQ(s.pageType, 10);
  EXPECT_EQ(s.bidiPrinting, 11);
  EXPECT_EQ(s.pageCutType, 12);
  EXPECT_EQ(s.docCutType, 13);
  EXPECT_EQ(s.cashDrawerSetting, 14);
  EXPECT_EQ(s.cashDrawerPulseWidth, 15);
  EXPECT_EQ(s.buzzer1Setting, 16);
  EXPECT_EQ(s.buzzer1OnTime, 17);
  EXPECT_EQ(s.buzzer1Repeat, 18);
  EXPECT_EQ(s.buzzer2Setting, 19);
  EXPECT_EQ(s.buzzer2OnTime, 20);
  EXPECT_EQ(s.buzzer2Repeat, 21);
  EXPECT_EQ(s.feedCutAfterJobEnd, 22);
  EXPECT_EQ(s.brightness, -20);
  EXPECT_EQ(s.halftoneType, Stucki);
  EXPECT_EQ(s.buzzer1Reserved, 0);
  EXPECT_EQ(s.buzzer2Reserved, 0);
}

TEST_F(SettingsTest, EachChoiceFoundIsLoggedWithAnEmptyLineInTheOrderOfReading) {
  read(ppdOfDistinctChoices());
  std::string expected;
  int value = 10;
  for (const char* keyword :
       {"PageType", "BidiPrinting", "PageCutType", "DocCutType", "CashDrawerSetting",
        "CashDrawerPulseWidth", "Buzzer1Setting", "Buzzer1OnTime", "Buzzer1Repeat",
        "Buzzer2Setting", "Buzzer2OnTime", "Buzzer2Repeat", "FeedCutAfterJobEnd"}) {
    expected += std::string("DEBUG:getOptionChoiceIndex: ") + keyword + " = " +
                std::to_string(value++) + "\n\n";
  }
  EXPECT_EQ(messages, expected);
}

TEST_F(SettingsTest, PpdWithoutOptionsGivesTheDefaultsAndNoLine) {
  const Settings s = read(PpdText());
  EXPECT_EQ(messages, "");
  for (const NumericOption& row : kIndexedOptions) {
    EXPECT_EQ(s.*row.field, -1) << row.keyword;
  }
  EXPECT_EQ(s.modelNumber, 0);
  EXPECT_EQ(s.maxMediaWidth, 0.0);
  EXPECT_EQ(s.pageWidth, 0.0F);
  EXPECT_EQ(s.pageHeight, 0.0F);
  EXPECT_EQ(s.brightness, 0);
  EXPECT_EQ(s.halftoneType, None);
}

TEST_F(SettingsTest, MissingFeedOptionHasNoLine) {
  PpdText ppd;
  ppd.numbers("PageType", 1, 0);
  EXPECT_EQ(read(ppd).feedCutAfterJobEnd, -1);
  EXPECT_EQ(messages, "DEBUG:getOptionChoiceIndex: PageType = 0\n\n");
}

TEST_F(SettingsTest, JobOptionOverridesTheDefaultOfThePpd) {
  PpdText ppd;
  ppd.numbers("PageCutType", 3, 1);
  EXPECT_EQ(read(ppd).pageCutType, 1);
  EXPECT_EQ(read(ppd, "PageCutType=2").pageCutType, 2);
  EXPECT_EQ(read(ppd, "media=x PageCutType=3 job-uuid=y").pageCutType, 3);
  EXPECT_EQ(read(ppd, "").pageCutType, 1);
}

TEST_F(SettingsTest, PageSizeOfTheJobIsRead) {
  const Settings s = read(fullPpd(), "PageSize=X72D5MMY100MM");
  EXPECT_EQ(s.pageWidth, 72.5F);
  EXPECT_EQ(s.pageHeight, 100.0F);
  EXPECT_EQ(read(fullPpd(), "PageSize=Letter").pageWidth, 0.0F);
}

TEST_F(SettingsTest, PageSizeWhoseDefaultIsNoChoiceGivesNoNumbers) {
  PpdText ppd;
  ppd.pageSizes({"X80MMY200MM"}, "X58MMY200MM");
  EXPECT_EQ(read(ppd).pageWidth, 0.0F);
  EXPECT_EQ(read(ppd).pageHeight, 0.0F);
}

TEST_F(SettingsTest, HalftoneTypeIsReadByItsExactName) {
  for (int type = 0; type <= 8; ++type) {
    const std::string name = wrenHalftoneTypeToStr(static_cast<DitherType>(type));
    EXPECT_EQ(read(fullPpd(name)).halftoneType, type);
    EXPECT_EQ(read(fullPpd(), ("HalftoneType=" + name).c_str()).halftoneType, type);
  }
  PpdText ppd;
  ppd.option("HalftoneType", {"Bayer"}, "Bayer");
  EXPECT_EQ(read(ppd).halftoneType, None);
}

// Queues with an older PPD, without the option, keep their images. The option is not logged.
TEST_F(SettingsTest, DebugImagesAreOnUnlessTheirOptionSaysOff) {
  EXPECT_TRUE(read(PpdText()).debugImages);
  for (const auto& [choice, expected] : {std::pair{"Off", false}, {"On", true}, {"Both", true}}) {
    PpdText ppd;
    ppd.option("DebugImages", {"Off", "On", "Both"}, choice);
    EXPECT_EQ(read(ppd).debugImages, expected) << choice;
    EXPECT_EQ(messages, "");
    EXPECT_TRUE(read(ppd, "DebugImages=On").debugImages);
    EXPECT_FALSE(read(ppd, "DebugImages=Off").debugImages);
  }
}

TEST_F(SettingsTest, ChoiceThatIsNoNumberReadsZero) {
  PpdText ppd;
  ppd.option("PageType", {"Ticket"}, "Ticket").option("Brightness", {"Dark"}, "Dark");
  EXPECT_EQ(read(ppd).pageType, 0);
  EXPECT_EQ(read(ppd).brightness, 0);
}

TEST_F(SettingsTest, MissingVariableIsOneErrorLine) {
  unsetenv("PPD");
  Settings settings;
  settings.pageType = 5;
  CaptureStderr();
  EXPECT_FALSE(initializeSettings("", &settings));
  EXPECT_EQ(GetCapturedStderr(),
            "ERROR:Unable to open the PPD file: the environment variable PPD is not set\n");
  EXPECT_EQ(settings.pageType, 5);
}

TEST_F(SettingsTest, ReasonOfAnUnreadablePpdIsTold) {
  const struct {
    std::string text;
    const char* reason;
  } rows[] = {
      {"", "it does not begin like a PPD file (line 0)"},
      {"no PPD at all\n", "it breaks the rules of PPD files (line 1)"},
  };
  for (const auto& row : rows) {
    Settings settings;
    EXPECT_FALSE(read(row.text, "", settings));
    EXPECT_EQ(messages, "ERROR:Unable to open the PPD file " + std::string(getenv("PPD")) + ": " +
                            row.reason + "\n");
  }
}

TEST_F(SettingsTest, UnreadablePpdIsOneErrorLineWithPathAndReason) {
  Settings settings;
  EXPECT_FALSE(read("no PPD at all\n", "", settings));
  EXPECT_EQ(wren_test::linesOf(messages).size(), 1U);
  EXPECT_EQ(messages.rfind("ERROR:Unable to open the PPD file ", 0), 0U) << messages;
  EXPECT_NE(messages.find(getenv("PPD")), std::string::npos);
  const std::string missing = folder.path() / "missing.ppd";
  setenv("PPD", missing.c_str(), 1);
  CaptureStderr();
  EXPECT_FALSE(initializeSettings("", &settings));
  messages = GetCapturedStderr();
  EXPECT_EQ(messages, "ERROR:Unable to open the PPD file " + missing +
                          ": the file cannot be opened (line 0)\n");
  EXPECT_EQ(wren_test::linesOf(messages).size(), 1U);
}

TEST(OptionChoiceIndex, OfAnUnknownKeywordIsMinusOneWithoutALine) {
  CaptureStderr();
  EXPECT_EQ(getOptionChoiceIndex("PageType", nullptr), -1);
  EXPECT_EQ(GetCapturedStderr(), "");
}

}  // namespace
