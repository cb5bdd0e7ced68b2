// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/ppd_access.h"

#include <cups/cups.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/support/ppd_text.h"
#include "tests/support/temporary_folder.h"

namespace {

using wren_test::PpdText;

class PpdAccess : public testing::Test {
 protected:
  // Opens a PPD without marking anything.
  ppd_file_t* open(const PpdText& text) {
    opened.reset(ppdOpenFile(folder.write("test.ppd", text.text()).c_str()));
    EXPECT_NE(opened, nullptr);
    return opened.get();
  }

 private:
  wren_test::TemporaryFolder folder;
  std::unique_ptr<ppd_file_t, wren::ClosePpd> opened;
};

TEST_F(PpdAccess, MarkedChoiceComesBeforeTheDefault) {
  ppd_file_t* ppd = open(PpdText().numbers("Level", 5, 1));
  EXPECT_EQ(wrenPpdGetChoiceAsIntDefault(ppd, "Level", 9), 1);
  ppdMarkOption(ppd, "Level", "3");
  EXPECT_EQ(wrenPpdGetChoiceAsIntDefault(ppd, "Level", 9), 3);
  EXPECT_STREQ(wrenPpdGetChoice(ppd, "Level")->choice, "3");
}

TEST_F(PpdAccess, MissingOptionGivesTheDefault) {
  ppd_file_t* ppd = open(PpdText());
  EXPECT_EQ(wrenPpdGetChoice(ppd, "Level"), nullptr);
  EXPECT_EQ(wrenPpdGetChoiceAsIntDefault(ppd, "Level", 42), 42);
  EXPECT_EQ(wrenPpdGetChoiceAsBoolDefault(ppd, "Level", -7), -7);
  EXPECT_STREQ(wrenPpdGetChoiceAsStrDefault(ppd, "Level", "fallback"), "fallback");
  EXPECT_EQ(wrenPpdGetChoiceAsStrDefault(ppd, "Level", nullptr), nullptr);
}

TEST_F(PpdAccess, DefaultThatIsNoChoiceGivesTheDefault) {
  ppd_file_t* ppd = open(PpdText().option("Level", {"1", "2"}, "7"));
  EXPECT_EQ(wrenPpdGetChoice(ppd, "Level"), nullptr);
  EXPECT_EQ(wrenPpdGetChoiceAsIntDefault(ppd, "Level", 42), 42);
}

TEST_F(PpdAccess, IntegersAreTheLeadingDigitsOfTheName) {
  const struct {
    const char* name;
    int value;
  } rows[] = {{"0", 0}, {"12abc", 12}, {"-5", -5}, {"Auto", 0}, {"007", 7}};
  for (const auto& row : rows) {
    ppd_file_t* ppd = open(PpdText().option("Level", {row.name}, row.name));
    EXPECT_EQ(wrenPpdGetChoiceAsIntDefault(ppd, "Level", 42), row.value) << row.name;
  }
}

TEST_F(PpdAccess, TruthValuesByWordOrByTheLowByteOfANumber) {
  const struct {
    const char* name;
    int value;
  } rows[] = {{"Yes", 1},    {"TRUE", 1}, {"true", 1}, {"No", 0},  {"fAlSe", 0},
              {"0", 0},      {"1", 1},    {"2", 2},    {"256", 0}, {"255", -1},
              {"128", -128}, {"-1", -1},  {"yess", 0}};
  for (const auto& row : rows) {
    ppd_file_t* ppd = open(PpdText().option("Flag", {row.name}, row.name));
    EXPECT_EQ(wrenPpdGetChoiceAsBoolDefault(ppd, "Flag", 42), row.value) << row.name;
  }
}

TEST_F(PpdAccess, AttributesAsTextAndAsNumber) {
  ppd_file_t* ppd = open(PpdText().attribute("MaxMediaWidth", "204.5").attribute("Wren", "abc"));
  EXPECT_EQ(wrenPpdGetAttrAsFloatDefault(ppd, "MaxMediaWidth", nullptr, 1.0), 204.5);
  EXPECT_STREQ(wrenPpdGetAttrAsStrDefault(ppd, "MaxMediaWidth", nullptr, "x"), "204.5");
  EXPECT_EQ(wrenPpdGetAttrAsFloatDefault(ppd, "Wren", nullptr, 1.0), 0.0);
  EXPECT_EQ(wrenPpdGetAttrAsFloatDefault(ppd, "Missing", nullptr, 1.5), 1.5);
  EXPECT_STREQ(wrenPpdGetAttrAsStrDefault(ppd, "Missing", nullptr, "x"), "x");
}

TEST_F(PpdAccess, AttributesAreTakenByTheirOptionKeyword) {
  ppd_file_t* ppd = open(PpdText().raw("*WrenLimit A/Text: \"1.5\"\n*WrenLimit B/Text: \"2.5\"\n"));
  EXPECT_EQ(wrenPpdGetAttrAsFloatDefault(ppd, "WrenLimit", "B", 0.0), 2.5);
  EXPECT_EQ(wrenPpdGetAttrAsFloatDefault(ppd, "WrenLimit", "C", 0.25), 0.25);
}

// The CUPS library returns an empty text here, which is a value. Only null gives the
// default.
TEST_F(PpdAccess, AttributeWithEmptyTextIsAValue) {
  ppd_file_t* ppd = open(PpdText().attribute("MaxMediaWidth", ""));
  EXPECT_EQ(wrenPpdGetAttrAsFloatDefault(ppd, "MaxMediaWidth", nullptr, 1.0), 0.0);
  EXPECT_STREQ(wrenPpdGetAttrAsStrDefault(ppd, "MaxMediaWidth", nullptr, "x"), "");
}

TEST_F(PpdAccess, AttributeWithoutValueTextGivesTheDefault) {
  ppd_file_t* ppd = open(PpdText().attribute("MaxMediaWidth", "204.0"));
  ppd_attr_t* attribute = ppdFindAttr(ppd, "MaxMediaWidth", nullptr);
  char* value = attribute->value;
  attribute->value = nullptr;
  EXPECT_EQ(wrenPpdGetAttrAsFloatDefault(ppd, "MaxMediaWidth", nullptr, 1.0), 1.0);
  EXPECT_STREQ(wrenPpdGetAttrAsStrDefault(ppd, "MaxMediaWidth", nullptr, "x"), "x");
  attribute->value = value;
}

TEST_F(PpdAccess, NoPpdHoldsNothing) {
  EXPECT_EQ(wrenPpdGetChoice(nullptr, "Level"), nullptr);
  EXPECT_EQ(wrenPpdGetChoiceAsIntDefault(nullptr, "Level", 3), 3);
  EXPECT_EQ(wrenPpdGetAttrAsFloatDefault(nullptr, "MaxMediaWidth", nullptr, 2.0), 2.0);
}

}  // namespace
