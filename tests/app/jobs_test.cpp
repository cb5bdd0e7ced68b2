// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Good jobs through the whole application: what the printer gets.

#include <cups/raster.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/app/filter_of_pages.h"
#include "tests/app/pdf_text.h"
#include "tests/app/running_app.h"
#include "tests/app/sample_documents.h"
#include "tests/reference/page.h"
#include "tests/support/printer_bytes.h"
#include "tests/support/raster_stream.h"
#include "tests/support/same_bytes.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {
namespace {

constexpr const char* kPwg = "image/pwg-raster";

std::string pwg(const std::vector<RasterPage>& pages) {
  return rasterStream(RasterKind::kPwg, pages);
}

// A page of paper with a black block between two rows, 100 dots wide, in ink levels.
RasterPage block(unsigned width, unsigned height, unsigned top, unsigned bottom) {
  RasterPage page = flatPage(width, height, 0);
  for (unsigned y = top; y < bottom; ++y) {
    page.pixels.replace(std::size_t{y} * width + 100, 100, 100, '\xff');
  }
  return page;
}

// How often each command stands in printer bytes.
std::size_t count(const std::string& bytes, const std::string& command) {
  std::size_t found = 0;
  for (std::size_t at = bytes.find(command); at != std::string::npos;
       at = bytes.find(command, at + 1)) {
    ++found;
  }
  return found;
}

std::size_t dotRows(const std::string& bytes) {
  std::size_t rows = 0;
  for (const PrintedPage& page : printedPages(bytes)) rows += page.rows.size();
  return rows;
}

const std::string kPartialCut("\x1D\x56\x01", 3);
const std::string kFullCut("\x1D\x56\x00", 3);
const std::string kDrawer("\x1B\x70\x00\x32\x32", 5);

class Identity : public testing::TestWithParam<int> {};

TEST_P(Identity, OfEachHalftoneAndFormatWithTheFilter) {
  RunningApp app({.paperMm = GetParam()});
  std::size_t jobs = 0;
  for (const SampleDocument& document : sampleDocuments()) {
    for (const char* halftone : kHalftones) {
      SCOPED_TRACE(std::string(document.format) + ", " + halftone);
      app.forgetPages();
      const JobOutcome job = app.print(document.bytes, document.format,
                                       {JobAttribute::keyword("halftone-type", halftone)});
      ASSERT_EQ(job.state, IPP_JSTATE_COMPLETED) << job.message;
      const auto papers = app.waitForPapers(++jobs);
      ASSERT_EQ(papers.size(), jobs);
      ASSERT_EQ(app.pages().size(), document.pages);
      EXPECT_THAT(papers.back(), SameBytes(filterBytesOf(app.pages(), {.halftone = halftone})));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Papers, Identity, testing::Values(58, 80, 112));

TEST(AppJobs, PrintWithTheOptionsOfTheJob) {
  RunningApp app;
  const JobOutcome job = app.print(
      pwg({noisePage(576, 100, 3)}), kPwg,
      {JobAttribute::keyword("cash-drawer-setting", "after"),
       JobAttribute::integer("cash-drawer-pulse-width", 3),
       JobAttribute::keyword("buzzer1-setting", "before"),
       JobAttribute::integer("buzzer1-repeat", 4), JobAttribute::keyword("doc-cut-type", "full"),
       JobAttribute::keyword("page-type", "keep"), JobAttribute::integer("print-darkness", 40)});
  ASSERT_EQ(job.state, IPP_JSTATE_COMPLETED) << job.message;
  EXPECT_EQ(app.waitForPapers(1).at(0),
            filterBytesOf(app.pages(), {.options = "CashDrawerSetting=2 CashDrawerPulseWidth=3 "
                                                   "Buzzer1Setting=1 Buzzer1Repeat=4 DocCutType=1 "
                                                   "PageType=1 Brightness=10"}));
}

TEST(AppJobs, UseAsMuchPaperAsTheContentWhateverTheSizeOfThePage) {
  RunningApp app;
  std::vector<std::size_t> rows;
  for (const unsigned lengthMm : {100U, 297U, 2000U}) {
    const unsigned height = lengthMm * 203 * 10 / 254;
    const JobOutcome job = app.print(pwg({block(639, height, 50, 350)}), kPwg);
    ASSERT_EQ(job.state, IPP_JSTATE_COMPLETED) << job.message;
    rows.push_back(dotRows(app.waitForPapers(rows.size() + 1).back()));
  }
  // The row just above the content is printed too.
  EXPECT_THAT(rows, testing::Each(301U));
}

TEST(AppJobs, ShortenGapsOnlyWhenAsked) {
  RunningApp app;
  RasterPage page = block(576, 1200, 0, 100);
  const RasterPage bottom = block(576, 1200, 1100, 1200);
  page.pixels.replace(std::size_t{1100} * 576, std::string::npos,
                      bottom.pixels.substr(std::size_t{1100} * 576));
  app.print(pwg({page}), kPwg);
  app.print(pwg({page}), kPwg, {JobAttribute::integer("longest-gap", 10)});
  const auto papers = app.waitForPapers(2);
  EXPECT_EQ(dotRows(papers.at(0)), 1200U);
  EXPECT_EQ(dotRows(papers.at(1)), 279U);  // 100 + 79 + 100; 79 rows are 9.9 mm
}

// A page of PDF with a black bar at its top.
PdfPage pdfBar(double heightPt) {
  const double heightOfPage = 100;
  return {200, heightOfPage,
          "0 " + std::to_string(heightOfPage - heightPt) + " 200 " + std::to_string(heightPt) +
              " re f"};
}

TEST(AppJobs, PrintAndCountEveryPageOfADocument) {
  const struct {
    const char* format;
    std::string bytes;
  } kDocuments[] = {
      {"application/pdf", PdfText({pdfBar(10), pdfBar(20), pdfBar(30)}).file()},
      {"text/plain", "one line\f two\nlines\f three\nlines\nhere\n"},
      {kPwg, pwg({block(576, 40, 0, 40), block(576, 80, 0, 80), block(576, 120, 0, 120)})}};
  RunningApp app;
  std::vector<std::string> papers;
  for (const auto& document : kDocuments) {
    SCOPED_TRACE(document.format);
    const JobOutcome job = app.print(document.bytes, document.format);
    EXPECT_EQ(job.state, IPP_JSTATE_COMPLETED) << job.message;
    EXPECT_EQ(job.impressions, 3);
    papers = app.waitForPapers(papers.size() + 1);
    ASSERT_FALSE(papers.empty());
    const auto printed = printedPages(papers.back());
    ASSERT_EQ(printed.size(), 3U);
    EXPECT_LT(printed[0].rows.size(), printed[1].rows.size());
    EXPECT_LT(printed[1].rows.size(), printed[2].rows.size());
  }
}

TEST(AppJobs, RepeatTheWholeDocumentForEachCopy) {
  RunningApp app;
  const std::string document = pwg({block(576, 80, 0, 80), block(576, 160, 0, 160)});
  const JobOutcome job =
      app.print(document, kPwg,
                {JobAttribute::integer("copies", 3), JobAttribute::keyword("page-cut-type", "full"),
                 JobAttribute::keyword("cash-drawer-setting", "after")});
  ASSERT_EQ(job.state, IPP_JSTATE_COMPLETED) << job.message;
  const std::string bytes = app.waitForPapers(1).at(0);
  std::vector<std::size_t> lengths;
  for (const PrintedPage& page : printedPages(bytes)) lengths.push_back(page.rows.size());
  EXPECT_THAT(lengths, testing::ElementsAre(80, 160, 80, 160, 80, 160));
  EXPECT_EQ(count(bytes, kFullCut), 6U);
  EXPECT_EQ(count(bytes, kPartialCut), 1U);
  EXPECT_EQ(count(bytes, kDrawer), 1U);
}

struct Finishing {
  std::vector<JobAttribute> attributes;
  std::string cut;  ///< empty: none
};

// The settings of the user give Japanese text a font of its own.
// Of text the first bytes end inside a character in one of four documents.
TEST(AppJobs, OfNoFormatAreKnownByTheirFirstBytes) {
  RunningApp app;
  auto documents = sampleDocuments();
  std::erase_if(documents, [](const auto& document) { return document.format == kPwg; });
  for (const char* start : {"", "a", "aa", "aaa"}) {
    std::string text = start;
    for (int i = 0; i < 1000; ++i) text += i % 20 == 19 ? "\n" : "\xF0\x9F\xA7\xBE";
    documents.push_back({"text/plain", text, 1});
  }
  std::size_t papers = 0;
  for (const SampleDocument& document : documents) {
    SCOPED_TRACE(document.format);
    const JobOutcome named = app.print(document.bytes, document.format);
    const JobOutcome unnamed = app.print(document.bytes, "application/octet-stream");
    EXPECT_EQ(named.state, IPP_JSTATE_COMPLETED) << named.message;
    EXPECT_EQ(unnamed.state, IPP_JSTATE_COMPLETED) << unnamed.message;
    const auto printed = app.waitForPapers(papers += 2);
    ASSERT_EQ(printed.size(), papers);
    EXPECT_THAT(printed[papers - 1], SameBytes(printed[papers - 2]));
  }
}

TEST(AppJobs, SetTextInTheLanguageOfTheirClient) {
  RunningApp app;
  const auto folder = app.folder() / ".config/fontconfig";
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "fonts.conf") << R"(<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "urn:fontconfig:fonts.dtd">
<fontconfig><match target="pattern">
  <test name="lang" compare="contains"><string>ja</string></test>
  <edit name="family" mode="prepend" binding="strong"><string>DejaVu Serif</string></edit>
</match></fontconfig>
)";
  for (const char* language : {"ja-JP", "zh-CN", "en"}) {
    app.speak(language);
    ASSERT_EQ(app.print("Word\n", "text/plain").state, IPP_JSTATE_COMPLETED) << language;
  }
  const auto papers = app.waitForPapers(3);
  ASSERT_EQ(papers.size(), 3U);
  EXPECT_THAT(papers[2], SameBytes(papers[1]));
  EXPECT_NE(papers[0], papers[1]);
}

// A phone that prints without a cut says so. A queue of CUPS sends the same "none" for a person who
// chose nothing, with what no person chooses.
TEST(AppJobs, CutWhenAQueueOfCupsSaysNone) {
  RunningApp app;
  std::size_t jobs = 0;
  const JobAttribute none = JobAttribute::number("finishings", 3);
  const JobAttribute handling =
      JobAttribute::keyword("multiple-document-handling", "separate-documents-uncollated-copies");
  const JobAttribute bin = JobAttribute::keyword("output-bin", "center");
  const Finishing cases[] = {
      {{none, handling, bin}, kPartialCut}, {{none, handling}, ""}, {{none, bin}, ""}};
  for (const Finishing& row : cases) {
    SCOPED_TRACE(jobs);
    const JobOutcome job = app.print(pwg({block(576, 80, 0, 80)}), kPwg, row.attributes);
    ASSERT_EQ(job.state, IPP_JSTATE_COMPLETED) << job.message;
    EXPECT_EQ(count(app.waitForPapers(++jobs).back(), kPartialCut), row.cut.empty() ? 0U : 1U);
  }
}

struct Content {
  std::vector<JobAttribute> attributes;
  const char* halftone;
};

TEST(AppJobs, TakeTheHalftoneOfTheirContentUnlessTheyNameOne) {
  RunningApp app;
  const auto content = [](const char* value) {
    return JobAttribute::keyword("print-content-optimize", value);
  };
  const Content cases[] = {
      {{content("text")}, "threshold"},
      {{content("graphic")}, "ordered"},
      {{content("text-and-graphic")}, "ordered"},
      {{content("photo")}, "stucki"},
      {{content("auto")}, "threshold"},
      {{content("photo"), JobAttribute::keyword("halftone-type", "bayer")}, "bayer"},
  };
  std::size_t jobs = 0;
  for (const Content& row : cases) {
    SCOPED_TRACE(jobs);
    const std::string page = pwg({noisePage(576, 80, 3)});
    ASSERT_EQ(app.print(page, kPwg, row.attributes).state, IPP_JSTATE_COMPLETED);
    ASSERT_EQ(app.print(page, kPwg, {JobAttribute::keyword("halftone-type", row.halftone)}).state,
              IPP_JSTATE_COMPLETED);
    jobs += 2;
    const auto papers = app.waitForPapers(jobs);
    ASSERT_EQ(papers.size(), jobs);
    EXPECT_THAT(papers.at(jobs - 2), SameBytes(papers.at(jobs - 1)));
  }
}

TEST(AppJobs, CutAsTheirFinishingsSay) {
  RunningApp app;
  const Finishing cases[] = {
      {{}, kPartialCut},
      {{JobAttribute::number("finishings", 3)}, ""},
      {{JobAttribute::number("finishings", 11)}, kPartialCut},
      {{JobAttribute::number("finishings", 3), JobAttribute::keyword("doc-cut-type", "full")},
       kFullCut},
      {{JobAttribute::number("finishings", 11), JobAttribute::keyword("doc-cut-type", "none")}, ""},
  };
  std::size_t jobs = 0;
  for (const Finishing& row : cases) {
    SCOPED_TRACE(jobs);
    ASSERT_EQ(app.print(pwg({block(576, 80, 0, 80)}), kPwg, row.attributes).state,
              IPP_JSTATE_COMPLETED);
    const std::string bytes = app.waitForPapers(++jobs).back();
    EXPECT_EQ(count(bytes, kPartialCut), row.cut == kPartialCut ? 1U : 0U);
    EXPECT_EQ(count(bytes, kFullCut), row.cut == kFullCut ? 1U : 0U);
  }
}

// No option of a queue sets it, so there is no filter to compare with.
TEST(AppJobs, PrintContrastAsTheReferenceDoes) {
  RunningApp app;
  std::size_t jobs = 0;
  for (const int contrast : {-100, -30, 30, 100}) {
    for (const int halftone : {0, 3, 8}) {
      SCOPED_TRACE(std::to_string(contrast) + ", " + kHalftones[halftone]);
      const RasterPage page = noisePage(576, 64, 5);
      ASSERT_EQ(app.print(pwg({page}), kPwg,
                          {JobAttribute::integer("contrast", contrast),
                           JobAttribute::keyword("halftone-type", kHalftones[halftone])})
                    .state,
                IPP_JSTATE_COMPLETED);
      const reference::PageOptions options = {
          .contrast = contrast, .halftoneType = halftone, .removeBlankEdges = 15};
      const reference::Bytes expected = reference::bytesOf(
          reference::printImage(options, reinterpret_cast<const std::uint8_t*>(page.pixels.data()),
                                576, 64, 576)
              .commands);
      const std::string bytes = app.waitForPapers(++jobs).back();
      EXPECT_THAT(bytes, testing::HasSubstr(std::string(expected.begin(), expected.end())));
    }
  }
}

TEST(AppJobs, OfASecondDocumentPrintTheFirstWholeAndOnce) {
  RunningApp app;
  const std::string document = pwg({block(576, 80, 0, 80)});
  const int id = app.createJob();
  ASSERT_NE(id, 0);
  EXPECT_EQ(app.sendDocument(id, document, kPwg, false), IPP_STATUS_OK);
  EXPECT_EQ(app.sendDocument(id, document, kPwg, true),
            IPP_STATUS_ERROR_MULTIPLE_JOBS_NOT_SUPPORTED);
  EXPECT_EQ(app.waitFor(id).state, IPP_JSTATE_COMPLETED);
  const auto papers = app.waitForPapers(1);
  ASSERT_EQ(papers.size(), 1U);
  EXPECT_EQ(dotRows(papers.at(0)), 80U);
}

TEST(AppJobs, ScaleAWidePageUnlessTheJobWantsItCut) {
  RunningApp app;
  const RasterPage wide = flatPage(1152, 200, 255);
  app.print(pwg({wide}), kPwg);
  app.print(pwg({wide}), kPwg, {JobAttribute::keyword("print-scaling", "none")});
  const auto papers = app.waitForPapers(2);
  EXPECT_EQ(dotRows(papers.at(0)), 100U);
  EXPECT_EQ(dotRows(papers.at(1)), 200U);
}

}  // namespace
}  // namespace wren_test
