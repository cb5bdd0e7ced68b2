// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/wren_printer.h"

#include <gtest/gtest.h>

#include <regex>

#include "tests/printer/recording_printer.h"

namespace {

using wren_test::bytesOf;
using wren_test::CaptureFile;
using wren_test::RecordingPrinter;

class PlainPrinter : public WrenPrinter {
 public:
  void doPrintImage(const unsigned char*, unsigned long, unsigned long, unsigned long) override {}
  std::string imageFormat() const { return imageFileFormat; }
};

TEST(WrenPrinter, StartsWithItsDefaults) {
  PlainPrinter printer;
  EXPECT_EQ(printer.getPrintSpeed(), 7);
  EXPECT_EQ(printer.getPrintDensity(), 8);
  EXPECT_EQ(printer.getHalftoneType(), 0);
  EXPECT_EQ(printer.getBrightness(), 0);
  EXPECT_EQ(printer.getContrast(), 0);
  EXPECT_EQ(printer.getMaxMediaWidth(), 0);
  EXPECT_EQ(printer.GetPrintWidth(), 0);
  EXPECT_EQ(printer.getVBarcodeOpt(), 0);
  EXPECT_EQ(printer.getRemoveBlankEdges(), 0);
  EXPECT_EQ(printer.getSkipRightPixels(), 0U);
  EXPECT_EQ(printer.getPageHeader(), nullptr);
  EXPECT_EQ(printer.getUserData(), nullptr);
  EXPECT_FALSE(printer.isNegativePrint());
  EXPECT_FALSE(printer.isMirrorPrint());
  EXPECT_FALSE(printer.isRotate180Print());
  EXPECT_FALSE(printer.getAntiWrinkle());
  EXPECT_FALSE(printer.getUseQVDithering());
  EXPECT_FALSE(printer.isCancelled());
  EXPECT_EQ(printer.getOutputStreams(), std::list<FILE*>{stdout});
}

TEST(WrenPrinter, SavesImagesBelowTheSpoolFolderUnlessToldOtherwise) {
  PlainPrinter printer;
  EXPECT_TRUE(printer.savesDebugImages());
  EXPECT_EQ(printer.imageFormat(), "/var/spool/cups/tmp/prnimg_%d-%d-%d_%d_%d_%d_%ld.bmp");
  EXPECT_TRUE(printer.setDebugImageFolder("elsewhere"));
  EXPECT_EQ(printer.imageFormat(), "elsewhere/prnimg_%d-%d-%d_%d_%d_%d_%ld.bmp");
}

TEST(WrenPrinter, TurnsDebugImagesOffForNoFolderAndForANameThatIsTooLong) {
  PlainPrinter printer;
  EXPECT_TRUE(printer.setDebugImageFolder(""));
  EXPECT_FALSE(printer.savesDebugImages());
  EXPECT_TRUE(printer.setDebugImageFolder("x"));
  EXPECT_TRUE(printer.savesDebugImages());
  // The template holds 1023 characters: a slash and the longest name need 35 of them.
  EXPECT_TRUE(printer.setDebugImageFolder(std::string(1023 - 35, 'x')));
  EXPECT_FALSE(printer.setDebugImageFolder(std::string(1024 - 35, 'x')));
  EXPECT_FALSE(printer.savesDebugImages());
}

TEST(WrenPrinter, ClampsBrightnessAndContrast) {
  const struct {
    int given;
    int stored;
  } rows[] = {{-101, -100}, {-100, -100}, {0, 0}, {99, 99}, {100, 100}, {101, 100}};
  PlainPrinter printer;
  for (const auto& row : rows) {
    printer.setBrightness(row.given);
    printer.setContrast(row.given);
    EXPECT_EQ(printer.getBrightness(), row.stored);
    EXPECT_EQ(printer.getContrast(), row.stored);
  }
}

TEST(WrenPrinter, ClampsDensityAndSpeed) {
  PlainPrinter printer;
  for (const auto& [given, stored] : {std::pair{-1, 0}, {0, 0}, {15, 15}, {16, 15}}) {
    printer.setPrintDensity(given);
    EXPECT_EQ(printer.getPrintDensity(), stored);
  }
  for (const auto& [text, stored] : {std::pair{"0", 1},
                                     {"abc", 1},
                                     {"16", 15},
                                     {"9", 9},
                                     {"1", 1},
                                     {"15", 15},
                                     {"-3", 1},
                                     {"", 1}}) {
    printer.setPrintSpeed(text);
    EXPECT_EQ(printer.getPrintSpeed(), stored) << text;
  }
}

TEST(WrenPrinter, StoresTheOtherOptionsAsTheyAre) {
  PlainPrinter printer;
  cups_page_header2_s header = {};
  int mark = 0;
  auto* userData = reinterpret_cast<WrenPrinter::UserData*>(&mark);
  printer.SetPrintWidth(-5000000000L);
  printer.setPageHeader(&header);
  printer.setAntiWrinkle(true);
  printer.setUseQVDithering(true);
  printer.setMaxMediaWidth(-3);
  printer.setVBarcodeOpt(77);
  printer.setHalftoneType(static_cast<DitherType>(99));
  printer.setNegativePrint(true);
  printer.setRotate180Print(true);
  printer.setMirrorPrint(true);
  printer.setRemoveBlankEdges(255);
  printer.setSkipRightPixels(~0UL);
  printer.setUserData(userData);
  EXPECT_EQ(printer.GetPrintWidth(), -5000000000L);
  EXPECT_EQ(printer.getPageHeader(), &header);
  EXPECT_TRUE(printer.getAntiWrinkle());
  EXPECT_TRUE(printer.getUseQVDithering());
  EXPECT_EQ(printer.getMaxMediaWidth(), -3);
  EXPECT_EQ(printer.getVBarcodeOpt(), 77);
  EXPECT_EQ(static_cast<int>(printer.getHalftoneType()), 99);
  EXPECT_TRUE(printer.isNegativePrint());
  EXPECT_TRUE(printer.isRotate180Print());
  EXPECT_TRUE(printer.isMirrorPrint());
  EXPECT_EQ(printer.getRemoveBlankEdges(), 255);
  EXPECT_EQ(printer.getSkipRightPixels(), ~0UL);
  EXPECT_EQ(printer.getUserData(), userData);
}

TEST(WrenPrinter, IdentifiesItselfBy55BytesInHexadecimal) {
  const std::string text = PlainPrinter().getCopyRight();
  EXPECT_EQ(text.size(), 168U);
  EXPECT_TRUE(std::regex_match(text, std::regex("MFT:[0-9A-F]{2}( [0-9A-F]{2}){54}"))) << text;
}

TEST(WrenPrinter, WritesTheSameBytesToEveryStreamInTurn) {
  CaptureFile second;
  RecordingPrinter printer;
  printer.getOutputStreams().push_back(second.stream());
  const std::string zeros("\0\xFF\0", 3);
  printer.printByte(0x1B);
  printer.printBytes(bytesOf(zeros), 3);
  printer.printStr("100 %d");
  EXPECT_EQ(printer.printFormat("<%d %s>", 12, "x"), 6);
  const std::string expected = "\x1B" + zeros + "100 %d<12 x>";
  EXPECT_EQ(printer.bytes(), expected);
  EXPECT_EQ(second.bytes(), expected);
}

TEST(WrenPrinter, KeepsTheOrderOfItsStreams) {
  CaptureFile both;
  PlainPrinter printer;
  printer.getOutputStreams() = {both.stream(), both.stream()};
  printer.printStr("a");
  printer.printStr("b");
  EXPECT_EQ(both.bytes(), "aabb");
}

TEST(WrenPrinter, WritesNothingWithoutStreams) {
  PlainPrinter printer;
  printer.getOutputStreams().clear();
  printer.printByte(1);
  printer.printStr("x");
  EXPECT_EQ(printer.printFormat("%d", 5), 0);
}

TEST(WrenPrinter, ReportsAFailedWriteOnTheStreamAlone) {
  const wren::FilePtr full(std::fopen("/dev/full", "w"));
  ASSERT_NE(full, nullptr);
  std::setvbuf(full.get(), nullptr, _IONBF, 0);
  PlainPrinter printer;
  printer.getOutputStreams() = {full.get()};
  printer.printByte(1);
  EXPECT_NE(std::ferror(full.get()), 0);
}

TEST(WrenPrinter, AsksTheCancelCheck) {
  bool cancelled = false;
  PlainPrinter printer;
  printer.setCancelCheck(
      {[](const void* flag) { return *static_cast<const bool*>(flag); }, &cancelled});
  EXPECT_FALSE(printer.isCancelled());
  cancelled = true;
  EXPECT_TRUE(printer.isCancelled());
}

}  // namespace
