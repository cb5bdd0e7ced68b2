// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/dot_matrix_ep_printer.h"

#include <gtest/gtest.h>

#include "tests/printer/recording_printer.h"
#include "tests/support/printer_bytes.h"

namespace {

using wren_test::bytesOf;
using wren_test::fromHex;
using wren_test::hexLines;
using wren_test::hexOf;
using wren_test::RecordingPrinter;

using Lines = std::vector<std::string>;

std::string encoded(RecordingPrinter& printer, const std::string& page, unsigned long height,
                    unsigned long width, unsigned long bytesPerLine = 0) {
  printer.doPrintImage(bytesOf(page), bytesPerLine, height, width);
  return printer.bytes();
}

TEST(DotMatrixEpPrinter, PageWithoutRowsIsItsStartAlone) {
  RecordingPrinter printer;
  EXPECT_EQ(hexOf(encoded(printer, "", 0, 5)), "1B 3C");
}

TEST(DotMatrixEpPrinter, ColumnsHaveTheTopRowInBit7) {
  std::string page(8 * 8, '\0');
  for (std::size_t i = 0; i < 8; ++i) page[i * 8 + i] = 1;  // a diagonal
  RecordingPrinter printer;
  EXPECT_EQ(hexLines(encoded(printer, page, 8, 8)),
            (Lines{"1B 3C", "1B 2A 01 08 00 80 40 20 10 08 04 02 01", "1B 4A 10"}));
}

TEST(DotMatrixEpPrinter, NinthRowIsABandOfItsOwnWithAFeedOfTwo) {
  RecordingPrinter printer;
  EXPECT_EQ(
      hexLines(encoded(printer, std::string(18, '\x01'), 9, 2)),
      (Lines{"1B 3C", "1B 2A 01 02 00 FF FF", "1B 4A 10", "1B 2A 01 02 00 80 80", "1B 4A 02"}));
}

TEST(DotMatrixEpPrinter, ThirteenRowsLeaveTheLowThreeBitsOfTheLastBandClear) {
  RecordingPrinter printer;
  EXPECT_EQ(hexLines(encoded(printer, std::string(13, '\x7F'), 13, 1)),
            (Lines{"1B 3C", "1B 2A 01 01 00 FF", "1B 4A 10", "1B 2A 01 01 00 F8", "1B 4A 0A"}));
}

TEST(DotMatrixEpPrinter, FeedIsTwiceTheRowsOfTheBand) {
  for (unsigned long height = 1; height <= 8; ++height) {
    RecordingPrinter printer;
    const auto lines = hexLines(encoded(printer, std::string(height, '\0'), height, 1));
    char feed[16];
    std::snprintf(feed, sizeof feed, "1B 4A %02lX", 2 * height);
    EXPECT_EQ(lines, (Lines{"1B 3C", "1B 2A 01 01 00 00", feed}));
  }
}

TEST(DotMatrixEpPrinter, AnyValueButZeroIsADot) {
  RecordingPrinter printer;
  EXPECT_EQ(hexLines(encoded(printer, fromHex("00 01 7F 80 FF"), 1, 5))[1],
            "1B 2A 01 05 00 00 80 80 80 80");
}

TEST(DotMatrixEpPrinter, DensityFollowsTheHorizontalResolution) {
  const struct {
    unsigned dpi;
    const char* mode;
  } rows[] = {{0, "00"}, {100, "00"}, {101, "01"}, {203, "01"}, {0xFFFFFFFFU, "01"}};
  for (const auto& row : rows) {
    RecordingPrinter printer;
    printer.header.HWResolution[0] = row.dpi;
    printer.header.HWResolution[1] = 203 - row.dpi % 203;
    EXPECT_EQ(hexLines(encoded(printer, "x", 1, 1))[1],
              std::string("1B 2A ") + row.mode + " 01 00 80")
        << row.dpi;
  }
}

TEST(DotMatrixEpPrinter, SkippedPixelsOnTheRightAreNotSent) {
  const std::string page(384, '\xFF');
  RecordingPrinter whole;
  EXPECT_EQ(encoded(whole, page, 1, 384).substr(2, 5), fromHex("1B2A018001"));
  EXPECT_EQ(whole.bytes().size(), 2U + 5 + 384 + 3);
  RecordingPrinter skipping;
  skipping.setSkipRightPixels(8);
  EXPECT_EQ(encoded(skipping, page, 1, 384).substr(2, 5), fromHex("1B2A017801"));
  EXPECT_EQ(skipping.bytes().size(), 2U + 5 + 376 + 3);
}

TEST(DotMatrixEpPrinter, RowsAreWidthBytesApartWhateverTheBytesPerLine) {
  const std::string page = fromHex("00FF00 FF00FF");
  RecordingPrinter plain;
  RecordingPrinter other;
  plain.setSkipRightPixels(1);
  other.setSkipRightPixels(1);
  const std::string expected = encoded(plain, page, 2, 3, 3);
  EXPECT_EQ(encoded(other, page, 2, 3, 17), expected);
  EXPECT_EQ(hexLines(expected)[1], "1B 2A 01 02 00 40 80");
}

TEST(DotMatrixEpPrinter, ColumnCountKeepsItsLow16BitsAndAllColumnsAreSent) {
  RecordingPrinter printer;
  const std::string bytes = encoded(printer, std::string(65537, '\0'), 1, 65537);
  EXPECT_EQ(bytes.substr(0, 7), fromHex("1B3C 1B2A010100"));
  EXPECT_EQ(bytes.size(), 7U + 65537 + 3);
}

TEST(DotMatrixEpPrinter, OtherOptionsDoNotMatter) {
  RecordingPrinter plain;
  RecordingPrinter set;
  set.setMaxMediaWidth(1);
  set.SetPrintWidth(1);
  set.setPrintSpeed("15");
  set.setPrintDensity(15);
  set.setNegativePrint(true);
  const std::string page(24, '\x01');
  EXPECT_EQ(encoded(set, page, 8, 3), encoded(plain, page, 8, 3));
}

// An output stream that cancels the job during the first band.
class CancellingStream {
 public:
  CancellingStream() : stream_(fopencookie(this, "w", {nullptr, take, nullptr, nullptr})) {
    std::setvbuf(stream(), nullptr, _IONBF, 0);
  }
  CancellingStream(const CancellingStream&) = delete;
  CancellingStream& operator=(const CancellingStream&) = delete;

  FILE* stream() { return stream_.get(); }
  const std::string& bytes() const { return bytes_; }
  wren::CancelCheck check() const {
    return {[](const void* self) { return static_cast<const CancellingStream*>(self)->cancelled_; },
            this};
  }

 private:
  static ssize_t take(void* self, const char* text, size_t count) {
    auto& sink = *static_cast<CancellingStream*>(self);
    sink.bytes_.append(text, count);
    if (sink.bytes_.find("\x1B*") != std::string::npos) sink.cancelled_ = true;
    return static_cast<ssize_t>(count);
  }

  std::string bytes_;
  bool cancelled_ = false;
  wren::FilePtr stream_;
};

TEST(DotMatrixEpPrinter, FinishesTheBandInWhichTheJobIsCancelled) {
  CancellingStream sink;
  RecordingPrinter printer;
  printer.getOutputStreams() = {sink.stream()};
  printer.setCancelCheck(sink.check());
  printer.doPrintImage(bytesOf(std::string(24, '\x01')), 1, 24, 1);
  EXPECT_EQ(hexLines(sink.bytes()), (Lines{"1B 3C", "1B 2A 01 01 00 FF", "1B 4A 10"}));
}

}  // namespace
