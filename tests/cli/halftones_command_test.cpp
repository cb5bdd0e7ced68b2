// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// wren halftones: the sheet shows what is printed.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "escpos/reader.h"
#include "preview/contact_sheet.h"
#include "preview/paper_picture.h"
#include "preview/png_file.h"
#include "tests/cli/wren_program.h"
#include "tests/preview/png_reading.h"
#include "tests/support/raster_stream.h"
#include "tests/support/same_bytes.h"

namespace wren::cli {
namespace {

using testing::HasSubstr;

class WrenProgramHalftones : public WrenProgram {
 protected:
  // A part of the paper of a print.
  preview::Picture partOf(const std::string& type, const preview::Area& area) {
    done({"print", example("photo.png"), "--out", type + ".prn", "-o", "HalftoneType=" + type});
    const std::string bytes = bytesOf(type + ".prn");
    const auto reading =
        escpos::readAll({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    preview::PaperPicture paper(reading.paper, escpos::wholeStrip(reading.paper), {});
    return preview::cropped(preview::greyPicture(paper), area);
  }
};

TEST_F(WrenProgramHalftones, ShowEachTypeDotByDot) {
  constexpr preview::Area kPart = {320, 90, 180, 90};
  const auto result = done({"halftones", example("photo.png"), "--crop", "180x90+320+90",
                            "--brightness", "0", "--out", "sheet.png", "--json"});
  const auto report = nlohmann::json::parse(result.out);
  EXPECT_EQ(report["schema"], 1);
  EXPECT_EQ(report["sheet"], "sheet.png");
  ASSERT_EQ(report["halftoneTypes"].size(), 9U);
  std::vector<preview::SheetRow> rows;
  std::set<std::vector<std::uint8_t>> different;
  for (const auto& type : report["halftoneTypes"]) {
    const std::string name = type["name"];
    preview::Picture part = partOf(name, kPart);
    different.insert(part.pixels);
    rows.push_back({"HalftoneType=" + name + ": " + type["prints"].get<std::string>(),
                    {{"Brightness=0", std::move(part)}}});
  }
  EXPECT_EQ(different.size(), 9U) << "two types print the same, so the comparison proves little";
  const preview::Picture expected = preview::drawContactSheet(rows, 1600);
  ASSERT_EQ(preview::writePng(expected, pathOf("expected.png")), "");
  const GreyPicture drawn = readPng(pathOf("sheet.png"));
  EXPECT_GT(drawn.pixels.size(), 9U * kPart.widthPx * kPart.heightPx);
  EXPECT_THAT(drawn.pixels, wren_test::SameBytes(readPng(pathOf("expected.png")).pixels));
}

// Each column has its own brightness, each paper its own PPD, and the user's options hold.
TEST_F(WrenProgramHalftones, ShowEachBrightnessOnThePaperWithTheOptionsOfTheUser) {
  // The blank rows at the end are printed with PageType=1 alone.
  wren_test::RasterPage page = wren_test::noisePage(576, 48, 1);
  std::fill(page.pixels.end() - 16 * 576, page.pixels.end(), '\0');
  folder_.write("bin.ras", wren_test::rasterStream(wren_test::RasterKind::kV2, {page}));
  standIn("cupsfilter",
          "printf '%s ' \"$@\" >" + pathOf("asked") + "\nexec cat " + pathOf("bin.ras") + "\n");
  folder_.write("order.txt", "text\n");
  const std::vector<std::string> common = {"--paper", "58", "-o", "PageType=1", "-o", "cpi=14"};
  const auto call = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), common.begin(), common.end());
    return done(arguments).out;
  };
  const auto report = nlohmann::json::parse(
      call({"halftones", "order.txt", "--brightness", "-25 0 25", "--out", "sheet.png", "--json"}));
  EXPECT_THAT(bytesOf("asked"), HasSubstr("/wren58.ppd "));
  EXPECT_THAT(bytesOf("asked"), HasSubstr("-o cpi=14 "));
  std::vector<preview::SheetRow> rows;
  for (const auto& type : report["halftoneTypes"]) {
    const std::string name = type["name"];
    preview::SheetRow row;
    row.heading = "HalftoneType=" + name + ": " + type["prints"].get<std::string>();
    std::set<std::vector<std::uint8_t>> different;
    for (const char* brightness : {"-25", "0", "25"}) {
      call({"print", "order.txt", "--out", "cell.prn", "-o", "HalftoneType=" + name, "-o",
            std::string("Brightness=") + brightness});
      const std::string bytes = bytesOf("cell.prn");
      const auto paper =
          escpos::readAll({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()})
              .paper;
      EXPECT_EQ(paper.widthDots, 384U);
      preview::PaperPicture picture(paper, escpos::wholeStrip(paper), {});
      row.cells.push_back({std::string("Brightness=") + brightness, preview::greyPicture(picture)});
      different.insert(row.cells.back().picture.pixels);
    }
    EXPECT_EQ(different.size(), 3U) << name << " prints the same, so the comparison proves little";
    rows.push_back(std::move(row));
  }
  const preview::Picture expected = preview::drawContactSheet(rows, 1600);
  ASSERT_EQ(preview::writePng(expected, pathOf("expected.png")), "");
  EXPECT_THAT(readPng(pathOf("sheet.png")).pixels,
              wren_test::SameBytes(readPng(pathOf("expected.png")).pixels));
}

TEST_F(WrenProgramHalftones, AreNamedAfterTheDocument) {
  EXPECT_EQ(done({"halftones", example("order.txt"), "--brightness", "-10 0"}).out,
            "sheet: order.halftones.png\n");
  EXPECT_THAT(bytesOf("order.halftones.png"), testing::StartsWith("\x89PNG"));
}

// Three dots, one to a byte, stand for any document.
class WrenProgramSheets : public WrenProgramHalftones {
 protected:
  void SetUp() override {
    const wren_test::RasterPage page = wren_test::noisePage(576, 48, 1);
    folder_.write("bin.ras", wren_test::rasterStream(wren_test::RasterKind::kV2, {page}));
    standIn("cupsfilter", "exec cat " + pathOf("bin.ras") + "\n");
    folder_.write("order.txt", "text\n");
  }
};

TEST_F(WrenProgramSheets, AreAsWideAsTheyMayBe) {
  done({"halftones", "order.txt", "--out", "a.png"});
  const auto usual = readPng(pathOf("a.png"));
  EXPECT_LE(usual.width, 1600U);
  EXPECT_GT(usual.width, 1400U);
  done({"halftones", "order.txt", "--out", "b.png", "--width", "700"});
  const auto narrow = readPng(pathOf("b.png"));
  EXPECT_LE(narrow.width, 700U);
  EXPECT_GT(narrow.width, 500U);
}

TEST_F(WrenProgramSheets, AreReportedAsJson) {
  const auto report = nlohmann::json::parse(
      done({"halftones", "order.txt", "--into", "a/b", "--brightness", " -10  0 ", "--json"}).out);
  EXPECT_EQ(report["schema"], 1);
  EXPECT_EQ(report["sheet"], "a/b/order.halftones.png");
  EXPECT_TRUE(std::filesystem::exists(pathOf("a/b/order.halftones.png")));
  EXPECT_EQ(report["brightness"], (nlohmann::json{"-10", "0"}));
  ASSERT_EQ(report["halftoneTypes"].size(), 9U);
  EXPECT_EQ(report["halftoneTypes"][0]["name"], "None");
  EXPECT_EQ(report.size(), 4U);
}

TEST_F(WrenProgramSheets, ShowThePartThatIsOnThePaper) {
  const auto sheetOf = [&](const std::string& crop) {
    done({"halftones", "order.txt", "--brightness", "0", "--out", "a.png", "--crop", crop});
    return readPng(pathOf("a.png"));
  };
  // What is beyond the paper is left out: 80 mm paper has 576 dots.
  EXPECT_THAT(sheetOf("100x40+476+0").pixels,
              wren_test::SameBytes(sheetOf("4294967295x40+476+0").pixels));
  EXPECT_NE(sheetOf("100x40+0+0").pixels, sheetOf("100x40+1+0").pixels);
  EXPECT_NE(sheetOf("100x40+0+0").pixels, sheetOf("100x40+0+1").pixels);
}

TEST_F(WrenProgramSheets, RefuseCropsInAnotherForm) {
  for (const char* crop :
       {"9", "9x", "9x9", "9x9+", "9x9+9", "9x9+9+", "9x9x9+9", "9+9+9+9", "9x9+9+9+", "9x9+9+9 ",
        "x9+9+9", "-9x9+9+9", "9x9-9+9", "4294967296x9+0+0", "9X9+9+9"}) {
    EXPECT_EQ(refusal(2, {"halftones", "order.txt", std::string("--crop=") + crop}),
              std::string("--crop wants WIDTHxHEIGHT+X+Y in dots, not '") + crop + "'");
  }
  EXPECT_EQ(refusal(2, {"halftones", "order.txt", "--crop", "9x9+576+0"}),
            "--crop shows no part of the paper");
  EXPECT_FALSE(std::filesystem::exists(pathOf("order.halftones.png")));
}

TEST_F(WrenProgramSheets, RefuseOptionsThatTheyShowThemselves) {
  for (const char* name : {"HalftoneType", "Brightness"}) {
    const std::string value = std::string(name) == "Brightness" ? "=5" : "=Burkes";
    EXPECT_EQ(refusal(2, {"halftones", "order.txt", "-o", name + value}),
              std::string("halftones shows every ") + name + "; -o cannot choose one");
  }
  EXPECT_EQ(refusal(2, {"halftones", "order.txt", "--brightness", "  "}),
            "--brightness wants one number or several in quotes");
  EXPECT_THAT(refusal(2, {"halftones", "order.txt", "-o", "zork=1"}),
              HasSubstr("'zork' is no option of this printer or of CUPS"));
}

TEST_F(WrenProgramSheets, AppearWholeOrNotAtAll) {
  folder_.write("old.png", "old");
  EXPECT_EQ(refusal(1, {"halftones", "order.txt", "--out", "none/x.png"}),
            "'none/x.png' cannot be written: No such file or directory");
  EXPECT_THAT(refusal(1, {"halftones", "order.txt", "--out", "/dev/full"}),
              testing::StartsWith("'/dev/full' cannot be written: "));
  standIn("cupsfilter", "exit 1\n");
  refusal(3, {"halftones", "order.txt", "--out", "old.png"});
  EXPECT_EQ(bytesOf("old.png"), "old");
  refusal(3, {"halftones", "order.txt", "--into", "new"});
  EXPECT_FALSE(std::filesystem::exists(pathOf("new")));
}

TEST_F(WrenProgramHalftones, RefuseWhatTheyCannotShow) {
  folder_.write("good.txt", "text\n");
  EXPECT_THAT(refusal(2, {"halftones", "good.txt", "--crop", "100"}),
              HasSubstr("--crop wants WIDTHxHEIGHT+X+Y"));
  EXPECT_THAT(refusal(2, {"halftones", "good.txt", "--crop", "9x9+9+9x"}),
              HasSubstr("--crop wants"));
  EXPECT_THAT(refusal(2, {"halftones", "good.txt", "--crop", "9x9+9999+9"}),
              HasSubstr("no part of the paper"));
  EXPECT_THAT(refusal(2, {"halftones", "good.txt", "--brightness", ""}),
              HasSubstr("--brightness wants"));
  EXPECT_THAT(refusal(2, {"halftones", "good.txt", "--brightness", "7"}),
              HasSubstr("Brightness has no choice '7'"));
  EXPECT_THAT(refusal(2, {"halftones", "good.txt", "-o", "Brightness=5"}),
              HasSubstr("-o cannot choose one"));
  EXPECT_THAT(refusal(2, {"halftones", "good.txt", "--out", "good.txt"}),
              HasSubstr("is the document itself"));
  EXPECT_THAT(refusal(3, {"halftones", "gone.pdf"}), HasSubstr("there is no file 'gone.pdf'"));
}

}  // namespace
}  // namespace wren::cli
