// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/printer_state.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>

namespace wren::preview {
namespace {

struct StateCase {
  const char* name;
  std::function<void(PrinterState&)> change;
  bool isOnline;
  std::array<unsigned, 4> realTime;  // answers to n 1 to 4
  unsigned paper;                    // answer to 1D 72 1
  unsigned drawer;                   // answer to 1D 72 2
};

void PrintTo(const StateCase& one, std::ostream* out) {
  *out << one.name;
}

class PrinterStatus : public testing::TestWithParam<StateCase> {};

// From the bit tables of the command references; 0x12 is set in each real-time answer.
TEST_P(PrinterStatus, IsToldByItsBits) {
  PrinterState state;
  GetParam().change(state);
  EXPECT_EQ(state.isOnline(), GetParam().isOnline);
  for (unsigned n = 1; n <= 4; ++n) {
    EXPECT_EQ(state.realTimeStatus(n), GetParam().realTime[n - 1]) << "10 04 " << n;
    EXPECT_EQ(state.realTimeStatus(n) & 0x93, 0x12) << "10 04 " << n;
  }
  for (const unsigned n : {1U, 49U}) EXPECT_EQ(state.transmittedStatus(n), GetParam().paper) << n;
  for (const unsigned n : {2U, 50U}) EXPECT_EQ(state.transmittedStatus(n), GetParam().drawer) << n;
}

INSTANTIATE_TEST_SUITE_P(
    States, PrinterStatus,
    testing::Values(StateCase{"Well", [](PrinterState&) {}, true, {0x12, 0x12, 0x12, 0x12}, 0, 0},
                    StateCase{"NearEnd",
                              [](PrinterState& s) { s.paper = PaperSupply::kNearEnd; },
                              true,
                              {0x12, 0x12, 0x12, 0x1E},
                              0x03,
                              0},
                    StateCase{"PaperOut",
                              [](PrinterState& s) { s.paper = PaperSupply::kOut; },
                              false,
                              {0x1A, 0x32, 0x12, 0x7E},
                              0x0F,
                              0},
                    StateCase{"CoverOpen",
                              [](PrinterState& s) { s.isCoverOpen = true; },
                              false,
                              {0x1A, 0x16, 0x12, 0x12},
                              0,
                              0},
                    StateCase{"ButtonHeld",
                              [](PrinterState& s) { s.isButtonHeld = true; },
                              false,
                              {0x5A, 0x1A, 0x12, 0x12},
                              0,
                              0},
                    StateCase{"DrawerHigh",
                              [](PrinterState& s) { s.isDrawerHigh = true; },
                              true,
                              {0x16, 0x12, 0x12, 0x12},
                              0,
                              0x01},
                    StateCase{"Recoverable",
                              [](PrinterState& s) { s.error = PrinterError::kRecoverable; },
                              false,
                              {0x1A, 0x52, 0x16, 0x12},
                              0,
                              0},
                    StateCase{"Cutter",
                              [](PrinterState& s) { s.error = PrinterError::kCutter; },
                              false,
                              {0x1A, 0x52, 0x1A, 0x12},
                              0,
                              0},
                    StateCase{"Unrecoverable",
                              [](PrinterState& s) { s.error = PrinterError::kUnrecoverable; },
                              false,
                              {0x1A, 0x52, 0x32, 0x12},
                              0,
                              0},
                    StateCase{"Temperature",
                              [](PrinterState& s) { s.error = PrinterError::kTemperature; },
                              false,
                              {0x1A, 0x52, 0x52, 0x12},
                              0,
                              0}),
    [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace wren::preview
