// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/splitter.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/escpos/printer_streams.h"

namespace wren::escpos {
namespace {

using streams::bitImage;
using streams::Bytes;
using streams::hex;
using streams::operator+;

// What a splitter emits, as "length:first byte" in hexadecimal; "?" for unknown, "!" for truncated.
class Splitting {
 public:
  Splitting()
      : splitter_([this](CommandKind kind, std::span<const std::uint8_t> bytes) {
          char text[16];
          std::snprintf(text, sizeof text, "%zu:%02X", bytes.size(), bytes[0]);
          outline_ += text;
          if (kind == CommandKind::kUnknown) outline_ += "?";
          if (kind == CommandKind::kTruncated) outline_ += "!";
          outline_ += " ";
        }) {}

  std::string feed(const Bytes& bytes) {
    outline_.clear();
    splitter_.feed(bytes);
    return outline_;
  }

  std::string finish() {
    outline_.clear();
    splitter_.finish();
    return outline_;
  }

  Splitter& splitter() { return splitter_; }

 private:
  std::string outline_;
  Splitter splitter_;
};

TEST(Splitter, EmitsEachByteOfARunAtOnce) {
  Splitting splitting;
  EXPECT_EQ(splitting.feed(hex("00")), "1:00 ");
  EXPECT_EQ(splitting.feed(hex("41")), "1:41? ");
  EXPECT_EQ(splitting.feed(hex("00 00")), "1:00 1:00 ");
  EXPECT_EQ(splitting.finish(), "");
}

TEST(Splitter, EmitsACommandWithItsLastByte) {
  Splitting splitting;
  EXPECT_EQ(splitting.feed(hex("1B 4A")), "");
  EXPECT_EQ(splitting.splitter().pendingBytes(), 2u);
  EXPECT_EQ(splitting.feed(hex("10 10 04")), "3:1B ");
  EXPECT_EQ(splitting.feed(hex("01")), "3:10 ");
  EXPECT_EQ(splitting.splitter().pendingBytes(), 0u);
}

TEST(Splitter, TakesTheDataOfACommandForNoCommand) {
  Splitting splitting;
  EXPECT_EQ(splitting.feed(bitImage(1, hex("10 04 01 10 05 02"))), "11:1B ");
}

TEST(Splitter, FindsACommandInsideTheStartOfAnother) {
  Splitting splitting;
  EXPECT_EQ(splitting.feed(hex("1B 10 04 01")), "1:1B? 3:10 ");
  EXPECT_EQ(splitting.feed(hex("10 10 04 01")), "1:10? 3:10 ");
}

TEST(Splitter, EndsWithATruncatedCommand) {
  Splitting splitting;
  EXPECT_EQ(splitting.feed(hex("1B 2A 01 04 00 FF")), "");
  EXPECT_EQ(splitting.finish(), "6:1B! ");
  EXPECT_EQ(splitting.feed(hex("1B 40")), "2:1B ");
}

TEST(Splitter, ForgetsAnIncompleteCommand) {
  Splitting splitting;
  EXPECT_EQ(splitting.feed(hex("1B 2A 01 04 00 FF")), "");
  splitting.splitter().reset();
  EXPECT_EQ(splitting.splitter().pendingBytes(), 0u);
  EXPECT_EQ(splitting.feed(hex("1B 40")), "2:1B ");
}

}  // namespace
}  // namespace wren::escpos
