// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "job/option_table.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace wren::job {
namespace {

// The lowest and the highest choice that a printer offers, and that of a new printer.
TEST(OptionTable, HasTheChoicesOfTheOptions) {
  std::ostringstream table;
  for (const NumericOption& option : kIndexedOptions) {
    table << option.keyword << " " << option.lowest << " " << option.highest << " "
          << option.initial << "\n";
  }
  EXPECT_EQ(table.str(),
            "PageType 0 1 0\n"
            "BidiPrinting 0 1 0\n"
            "PageCutType 0 2 0\n"
            "DocCutType 0 2 2\n"
            "CashDrawerSetting 0 2 0\n"
            "CashDrawerPulseWidth 0 8 0\n"
            "Buzzer1Setting 0 2 0\n"
            "Buzzer1OnTime 0 9 1\n"
            "Buzzer1Repeat 0 9 1\n"
            "Buzzer2Setting 0 2 0\n"
            "Buzzer2OnTime 0 9 1\n"
            "Buzzer2Repeat 0 9 1\n"
            "FeedCutAfterJobEnd 0 15 12\n");
}

}  // namespace
}  // namespace wren::job
