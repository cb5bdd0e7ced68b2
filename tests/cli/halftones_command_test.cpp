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
