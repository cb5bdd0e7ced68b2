// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/printer_status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace wren::app {
namespace {

/// The answers in a stream: status bytes as they are, printed answers as 0x100 + byte.
std::vector<unsigned> answersIn(const std::vector<std::uint8_t>& bytes) {
  AnswerReader reader;
  std::vector<unsigned> answers;
  for (const std::uint8_t byte : bytes) {
    const auto answer = reader.take(byte);
    if (!answer) continue;
    answers.push_back(answer->kind == AnswerKind::kPrinted ? 0x100U + answer->byte : answer->byte);
  }
  return answers;
}

TEST(AnswerReader, FindsTheAnswersAndSkipsTheRest) {
  const struct {
    const char* what;
    std::vector<std::uint8_t> bytes;
    std::vector<unsigned> answers;
  } cases[] = {
      {"nothing", {}, {}},
      {"all is well", {0x12, 0x12, 0x12, 0x12}, {0x12, 0x12, 0x12, 0x12}},
      {"every free bit", {0x12, 0x1E, 0x32, 0x52, 0x7E}, {0x12, 0x1E, 0x32, 0x52, 0x7E}},
      {"XON and XOFF", {0x11, 0x13, 0x16, 0x11}, {0x16}},
      {"noise", {0xFF, 0x80, 0x92, 0x93, 0x1A, 0xFE}, {0x1A}},
      {"paper status", {0x00, 0x0C, 0x6F}, {0x100, 0x10C, 0x16F}},
      {"automatic status", {0x10, 0x00, 0x00, 0x00, 0x12}, {0x12}},
      {"automatic status, off-line", {0x18, 0x20, 0x0C, 0x0F, 0x00}, {0x100}},
      {"automatic status cut off", {0x10, 0x00, 0x12, 0x00}, {0x12, 0x100}},
      {"automatic status twice", {0x10, 0, 0, 0, 0x10, 0, 0, 0, 0x32}, {0x32}},
  };
  for (const auto& one : cases) {
    EXPECT_THAT(answersIn(one.bytes), testing::ContainerEq(one.answers)) << one.what;
  }
}

PrinterStatus with(bool PrinterStatus::*member) {
  PrinterStatus status;
  status.*member = true;
  return status;
}

TEST(PrinterStatus, NamesTheBitsOfTheFourAnswers) {
  constexpr std::uint8_t kFixed = 0x12;
  const struct {
    unsigned n;
    std::uint8_t bits;
    bool PrinterStatus::*member;
  } cases[] = {
      {1, 0x04, &PrinterStatus::drawerPinHigh}, {1, 0x08, &PrinterStatus::offline},
      {2, 0x04, &PrinterStatus::coverOpen},     {2, 0x20, &PrinterStatus::paperOut},
      {2, 0x40, &PrinterStatus::otherError},    {3, 0x04, &PrinterStatus::otherError},
      {3, 0x08, &PrinterStatus::cutterError},   {3, 0x20, &PrinterStatus::otherError},
      {3, 0x40, &PrinterStatus::otherError},    {4, 0x0C, &PrinterStatus::paperNearEnd},
      {4, 0x04, &PrinterStatus::paperNearEnd},  {4, 0x60, &PrinterStatus::paperOut},
      {4, 0x20, &PrinterStatus::paperOut},
  };
  for (const auto& one : cases) {
    StatusAnswers answers = {kFixed, kFixed, kFixed, kFixed};
    answers[one.n - 1] = static_cast<std::uint8_t>(kFixed | one.bits);
    EXPECT_TRUE(statusOf(answers) == with(one.member))
        << "n = " << one.n << ", bits " << std::hex << unsigned{one.bits} << ": "
        << describe(statusOf(answers));
  }
}

TEST(PrinterStatus, IsNotTouchedByTheBitsThatTellNothing) {
  // The fixed bits of all four, the line of an on-line request and the feed button.
  const struct {
    unsigned n;
    std::uint8_t bits;
  } cases[] = {{1, 0x93 | 0x60}, {2, 0x93 | 0x08}, {3, 0x93}, {4, 0x93}};
  for (const auto& one : cases) {
    for (unsigned bit = 1; bit <= 0x80; bit <<= 1) {
      if ((one.bits & bit) == 0) continue;
      StatusAnswers answers;
      answers[one.n - 1] = static_cast<std::uint8_t>(bit);
      EXPECT_TRUE(statusOf(answers) == PrinterStatus()) << "n = " << one.n << ", bit " << bit;
    }
  }
  EXPECT_TRUE(withCause(PrinterStatus(), 0x93) == PrinterStatus());
}

TEST(PrinterStatus, IsReadyWithoutFaultsAndWithLittlePaper) {
  EXPECT_TRUE(statusOf({}).isReady());
  EXPECT_TRUE(statusOf({0x12, 0x12, 0x12, 0x12}).isReady());
  EXPECT_TRUE(with(&PrinterStatus::paperNearEnd).isReady());
  EXPECT_TRUE(with(&PrinterStatus::drawerPinHigh).isReady());
  for (const auto member :
       {&PrinterStatus::offline, &PrinterStatus::coverOpen, &PrinterStatus::paperOut,
        &PrinterStatus::cutterError, &PrinterStatus::otherError}) {
    EXPECT_FALSE(with(member).isReady()) << describe(with(member));
  }
}

TEST(PrinterStatus, IsBroughtUpToDateByTheCauseAlone) {
  const StatusAnswers well = {0x12, 0x12, 0x12, 0x12};
  const StatusAnswers nearEnd = {0x16, 0x12, 0x12, 0x1E};
  const StatusAnswers noPaper = {0x1A, 0x32, 0x12, 0x7E};
  const StatusAnswers cutter = {0x1A, 0x52, 0x1A, 0x12};
  const struct {
    StatusAnswers before;
    std::uint8_t cause;
    const char* words;
    bool isReady;
  } cases[] = {
      {well, 0x12, "", true},
      {well, 0x16, "cover open", false},
      {well, 0x1A, "off-line", false},
      {well, 0x32, "out of paper", false},
      {well, 0x52, "printer error", false},
      {nearEnd, 0x12, "paper near its end", true},
      {nearEnd, 0x32, "out of paper", false},
      {noPaper, 0x12, "paper near its end", true},
      {noPaper, 0x16, "cover open, paper near its end", false},
      {cutter, 0x52, "cutter error", false},
      {cutter, 0x12, "", true},
  };
  for (const auto& one : cases) {
    const PrinterStatus before = statusOf(one.before);
    const PrinterStatus status = withCause(before, one.cause);
    EXPECT_EQ(describe(status), one.words);
    EXPECT_EQ(status.isReady(), one.isReady) << one.words;
    EXPECT_EQ(status.drawerPinHigh, before.drawerPinHigh) << one.words;
  }
}

TEST(PrinterStatus, IsSaidInWords) {
  const struct {
    StatusAnswers answers;
    const char* words;
  } cases[] = {
      {{0x12, 0x12, 0x12, 0x12}, ""},
      {{0x16, 0x12, 0x12, 0x12}, ""},
      {{0x1A, 0x12, 0x12, 0x12}, "off-line"},
      {{0x1A, 0x32, 0x12, 0x7E}, "out of paper"},
      {{0x1A, 0x16, 0x12, 0x12}, "cover open"},
      {{0x1A, 0x36, 0x12, 0x72}, "out of paper, cover open"},
      {{0x1A, 0x52, 0x1A, 0x12}, "cutter error"},
      {{0x1A, 0x52, 0x32, 0x1E}, "printer error, paper near its end"},
      {{0x12, 0x12, 0x12, 0x1E}, "paper near its end"},
  };
  for (const auto& one : cases) EXPECT_EQ(describe(statusOf(one.answers)), one.words);
}

}  // namespace
}  // namespace wren::app
