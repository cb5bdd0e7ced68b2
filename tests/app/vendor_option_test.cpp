// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/vendor_option.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/support/temporary_folder.h"

namespace wren::app {
namespace {

TEST(VendorOptions, HaveOneAttributeForEachOptionOfTheTable) {
  for (const job::NumericOption& row : job::kIndexedOptions) {
    const auto attributes =
        std::count_if(vendorOptions().begin(), vendorOptions().end(),
                      [&](const VendorOption& option) { return option.field == row.field; });
    EXPECT_EQ(attributes, 1) << row.keyword;
  }
}

TEST(VendorOptions, HaveAsManyNamesAsValues) {
  for (const VendorOption& option : vendorOptions()) {
    if (!option.hasNames()) continue;
    EXPECT_EQ(static_cast<int>(option.choices.size()), option.highest - option.lowest + 1)
        << option.attribute;
  }
}

TEST(VendorOptions, StandInTheDocument) {
  const std::string page = wren_test::readFile(WREN_APPLICATION_PAGE);
  for (const VendorOption& option : vendorOptions()) {
    EXPECT_THAT(page, testing::HasSubstr("\n| `" + std::string(option.attribute) + "` | " +
                                         acceptedValues(option) + " | " +
                                         vendorValueText(option, option.initial) + " | "));
  }
}

TEST(VendorOptions, AreNoMoreThanThePrintSystemTakes) {
  EXPECT_LE(vendorOptions().size(), 32U);
}

TEST(VendorOptions, NameTheHalftoneThatPrints) {
  const VendorOption& halftone = *findVendorOption("halftone-type");
  EXPECT_THAT(halftone.choices,
              testing::ElementsAre(testing::StrEq("threshold"), testing::StrEq("ordered"),
                                   testing::StrEq("burkes"), testing::StrEq("stucki"),
                                   testing::StrEq("jarvis-judice-ninke"), testing::StrEq("sierra"),
                                   testing::StrEq("stevenson-arce"), testing::StrEq("bayer"),
                                   testing::StrEq("stencil")));
}

struct Text {
  const char* attribute;
  const char* text;
  bool accepted;
  std::int32_t value;
};

TEST(VendorValue, IsAChoiceByNameOrAnIntegerOfTheRange) {
  const Text texts[] = {
      {"doc-cut-type", "none", true, 0},
      {"doc-cut-type", "partial", true, 2},
      {"doc-cut-type", "Partial", false, 0},
      {"doc-cut-type", "2", false, 0},
      {"doc-cut-type", "", false, 0},
      {"contrast", "-100", true, -100},
      {"contrast", "100", true, 100},
      {"contrast", "101", false, 0},
      {"contrast", "-101", false, 0},
      {"contrast", "1 ", false, 0},
      {"contrast", "0x1", false, 0},
      {"contrast", "99999999999", false, 0},
      {"cash-drawer-pulse-width", "8", true, 8},
      {"cash-drawer-pulse-width", "9", false, 0},
      {"cash-drawer-pulse-width", "-1", false, 0},
      {"halftone-type", "stencil", true, 8},
      {"halftone-type", "stencil,stencil", false, 0},
  };
  for (const Text& text : texts) {
    SCOPED_TRACE(std::string(text.attribute) + "=" + text.text);
    const VendorOption* option = findVendorOption(text.attribute);
    ASSERT_NE(option, nullptr);
    std::int32_t value = 0;
    EXPECT_EQ(parseVendorValue(*option, text.text, value), text.accepted);
    EXPECT_EQ(value, text.value);
  }
}

TEST(VendorValue, IsListedForPeople) {
  EXPECT_EQ(acceptedValues(*findVendorOption("doc-cut-type")), "none, full, partial");
  EXPECT_EQ(acceptedValues(*findVendorOption("cash-drawer-pulse-width")), "0 to 8");
}

}  // namespace
}  // namespace wren::app
