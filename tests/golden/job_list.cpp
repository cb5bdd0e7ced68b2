// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/golden/job_list.h"

#include <string>

namespace golden {

namespace {

using Jobs = std::vector<JobInput>;

const char* const kTypes[] = {"None",   "FloydSteinberg", "Ordered",
                              "Burkes", "Stucki",         "JarvisJudiceNinke",
                              "Sierra", "StevensonArce",  "QVDithering"};

PageInput page(std::uint32_t width, std::uint32_t height, const std::string& pixels) {
  PageInput result;
  result.width = width;
  result.height = height;
  result.pixels = pixels;
  return result;
}

PageInput pageAt(std::uint32_t resolution, const std::string& pixels) {
  PageInput result = page(8, 8, pixels);
  result.resolution = resolution;
  return result;
}

JobInput job(const std::string& name, const std::string& description,
             const std::vector<PageInput>& pages, const std::vector<Pair>& options = {}) {
  JobInput result;
  result.name = name;
  result.description = description;
  result.pages = pages;
  result.options = options;
  return result;
}

// Small, so that most bytes of the job are those around the page.
std::vector<PageInput> tinyPage() {
  return {page(2, 1, "flat:255")};
}

void addHalftoneTypes(Jobs& jobs) {
  for (const char* type : kTypes) {
    const std::string name = type;
    jobs.push_back(job("type-ramp-" + name, "A grey ramp, halftoned by " + name + ".",
                       {page(40, 16, "ramp")}, {{"HalftoneType", name}}));
    jobs.push_back(job("type-noise-" + name, "Noise of odd size, halftoned by " + name + ".",
                       {page(33, 11, "noise:7")}, {{"HalftoneType", name}}));
  }
  jobs.push_back(job("type-drawing-QVDithering", "A line drawing for the stencil method.",
                     {page(32, 24, "pgm:drawing.pgm")}, {{"HalftoneType", "QVDithering"}}));
  jobs.push_back(job("type-drawing-Stucki", "A line drawing for error diffusion.",
                     {page(32, 24, "pgm:drawing.pgm")}, {{"HalftoneType", "Stucki"}}));
  jobs.push_back(job("type-photo-QVDithering",
                     "A picture without hard edges for the stencil method.",
                     {page(37, 29, "photo:3")}, {{"HalftoneType", "QVDithering"}}));
  jobs.push_back(job("stencil-one-level",
                     "A page of a single grey level: the stencil uses the threshold 128.",
                     {page(16, 9, "flat:200")}, {{"HalftoneType", "QVDithering"}}));
  jobs.push_back(job("stencil-blank", "A blank page for the stencil method.",
                     {page(16, 9, "flat:0")}, {{"HalftoneType", "QVDithering"}}));
  jobs.push_back(job("stencil-sparse", "A few dots on blank paper for the stencil method.",
                     {page(24, 16, "sparse:5")}, {{"HalftoneType", "QVDithering"}}));
  jobs.push_back(job("threshold-129", "The fixed threshold prints levels from 129.",
                     {page(9, 2, "flat:128"), page(9, 2, "flat:129")}));
}

void addBrightness(Jobs& jobs) {
  for (const char* value : {"-100", "-20", "-1", "0", "1", "20", "25", "26", "100"}) {
    jobs.push_back(job(std::string("brightness-") + value, "Brightness with the fixed threshold.",
                       {page(52, 8, "ramp")}, {{"Brightness", value}}));
  }
  for (const char* type : {"FloydSteinberg", "Burkes", "QVDithering"}) {
    for (const char* value : {"-20", "20"}) {
      jobs.push_back(job(std::string("brightness-") + value + "-" + type,
                         "Brightness is applied before halftoning.", {page(40, 10, "photo:11")},
                         {{"Brightness", value}, {"HalftoneType", type}}));
    }
  }
  jobs.push_back(job("brightness-clamped", "A choice above 100 is clamped to 100.",
                     {page(52, 8, "ramp")}, {{"Brightness", "101"}}));
}

void addTrims(Jobs& jobs) {
  const struct {
    const char* name;
    const char* rows;
    const char* description;
  } kRows[] = {
      {"middle-row", "3", "One blank row is kept above the first row with ink."},
      {"row-0-and-5", "0,5", "Row 0 is never tested, so its ink is trimmed."},
      {"row-0-only", "0", "Ink in row 0 only: nothing is trimmed."},
      {"row-1-only", "1", "Ink in row 1: only the bottom is trimmed."},
      {"last-row", "9", "Ink in the last row: only the top is trimmed."},
      {"first-and-last", "0,9", "Ink in the first and the last row: row 0 is trimmed."},
      {"rows-2-to-4", "2,3,4", "Blank rows on both sides of a block."},
  };
  for (const auto& row : kRows) {
    const std::vector<PageInput> pages = {page(5, 10, std::string("rows:") + row.rows)};
    jobs.push_back(job(std::string("trim-") + row.name, row.description, pages));
    jobs.push_back(job(std::string("no-trim-") + row.name, "The same rows with page type 1.", pages,
                       {{"PageType", "1"}}));
  }
  jobs.push_back(job("trim-blank-page", "A blank page is printed at its full height.",
                     {page(5, 10, "flat:0")}));
  jobs.push_back(
      job("trim-before-tone",
          "Blank rows are found before tone: those that Brightness darkens are trimmed too.",
          {page(5, 10, "rows:4,6")}, {{"Brightness", "100"}}));
  jobs.push_back(job("trim-stencil", "Trimming with the stencil method.",
                     {page(12, 20, "rows:5,6,7,12")}, {{"HalftoneType", "QVDithering"}}));
  JobInput lacking =
      job("trim-without-page-type", "A printer without PageType trims.", {page(5, 10, "rows:3")});
  lacking.lacks = {"PageType"};
  jobs.push_back(lacking);
}

JobInput limited(JobInput input, const std::string& maxMediaWidth) {
  input.maxMediaWidth = maxMediaWidth;
  return input;
}

void addWidthLimits(Jobs& jobs) {
  jobs.push_back(limited(job("wide-600-at-204pt", "575 of 600 columns, 12 cut on the left.",
                             {page(600, 2, "noise:21")}),
                         "204.0"));
  jobs.push_back(limited(job("wide-832-at-204pt", "575 of 832 columns, error diffusion.",
                             {page(832, 2, "photo:22")}, {{"HalftoneType", "Burkes"}}),
                         "204.0"));
  jobs.push_back(
      limited(job("wide-20-at-5pt", "14 of 20 columns, an even excess.", {page(20, 9, "noise:23")}),
              "5.0"));
  jobs.push_back(limited(job("wide-21-at-5pt", "14 of 21 columns, an odd excess.",
                             {page(21, 9, "noise:24")}, {{"HalftoneType", "Ordered"}}),
                         "5"));
  jobs.push_back(
      limited(job("wide-21-at-5pt-stencil",
                  "Columns on the right that are not printed still count in the histogram and "
                  "the blur of the stencil.",
                  {page(21, 12, "photo:25")}, {{"HalftoneType", "QVDithering"}}),
              "5.0"));
  jobs.push_back(
      limited(job("wide-cut-dots-left", "All ink is in a column on the left that is not printed.",
                  {page(20, 9, "column:1")}),
              "5.0"));
  jobs.push_back(limited(job("wide-cut-dots-right",
                             "Ink in the masked columns on the right does not count for trimming.",
                             {page(20, 9, "column:18")}),
                         "5.0"));
  jobs.push_back(limited(job("wide-two-pages", "The second page fits and is not cut.",
                             {page(20, 3, "noise:26"), page(14, 3, "noise:27")}),
                         "5.0"));
  jobs.push_back(limited(
      job("wide-at-the-limit", "As wide as the media: nothing is cut.", {page(14, 3, "noise:28")}),
      "5.0"));
  jobs.push_back(limited(job("wide-negative-limit", "A negative MaxMediaWidth is no limit.",
                             {page(20, 3, "noise:29")}),
                         "-5.0"));
  jobs.push_back(limited(job("wide-text-limit", "A MaxMediaWidth that is not a number is no limit.",
                             {page(20, 3, "noise:30")}),
                         "wide"));
}

void addSizes(Jobs& jobs) {
  for (std::uint32_t width = 1; width <= 17; ++width) {
    const std::string type = kTypes[width % 9];
    jobs.push_back(job("width-" + std::to_string(width), "A narrow page, " + type + ".",
                       {page(width, 9, "noise:" + std::to_string(100 + width))},
                       {{"HalftoneType", type}}));
  }
  const std::uint32_t kWide[] = {575, 576, 639, 832};
  for (const std::uint32_t width : kWide) {
    jobs.push_back(job("width-" + std::to_string(width), "A wide page, Sierra.",
                       {page(width, 3, "photo:" + std::to_string(width))},
                       {{"HalftoneType", "Sierra"}}));
    jobs.push_back(job("width-" + std::to_string(width) + "-stencil", "A wide page, stencil.",
                       {page(width, 3, "photo:" + std::to_string(width))},
                       {{"HalftoneType", "QVDithering"}}));
  }
  for (const std::uint32_t height : {1U, 7U, 8U, 16U, 17U}) {
    jobs.push_back(job("height-" + std::to_string(height), "Full and partial bands.",
                       {page(6, height, "noise:" + std::to_string(height))}, {{"PageType", "1"}}));
  }
  for (const std::uint32_t resolution : {100U, 101U, 180U, 203U})
    jobs.push_back(job("resolution-" + std::to_string(resolution),
                       "Single density up to 100 dpi, double density above.",
                       {pageAt(resolution, "noise:9")}));
}

void addPages(Jobs& jobs) {
  jobs.push_back(job("pages-three-sizes", "Three pages of different sizes.",
                     {page(9, 9, "noise:1"), page(3, 2, "noise:2"), page(17, 5, "noise:3")},
                     {{"HalftoneType", "StevensonArce"}, {"PageCutType", "2"}}));
  jobs.push_back(job("pages-two-stencil", "The stencil keeps no state between pages.",
                     {page(15, 13, "photo:1"), page(15, 13, "photo:1")},
                     {{"HalftoneType", "QVDithering"}}));
  JobInput copies =
      job("pages-copies", "The copy count is logged and otherwise ignored.", tinyPage());
  copies.pages[0].copies = 3;
  jobs.push_back(copies);
  JobInput densities = job("pages-two-resolutions", "The density is chosen for each page.",
                           {pageAt(100, "noise:4"), pageAt(203, "noise:4")});
  jobs.push_back(densities);
}

void addBuzzers(Jobs& jobs) {
  for (const char* setting : {"1", "2"}) {
    for (const char* buzzer : {"Buzzer1", "Buzzer2"}) {
      const std::string name = buzzer;
      jobs.push_back(
          job("buzzer-" + name + "-" + setting, "A buzzer at one of its two positions.",
              {tinyPage()[0], tinyPage()[0]},
              {{name + "Setting", setting}, {name + "OnTime", "9"}, {name + "Repeat", "3"}}));
    }
  }
  jobs.push_back(job("buzzer-clamped", "Parameters above 9 fall back to 1.", tinyPage(),
                     {{"Buzzer1Setting", "2"},
                      {"Buzzer1OnTime", "12"},
                      {"Buzzer1Repeat", "10"},
                      {"Buzzer2Setting", "2"},
                      {"Buzzer2OnTime", "10"},
                      {"Buzzer2Repeat", "9"}}));
  jobs.push_back(job("buzzer-both", "Both buzzers at the start and a page cut.", tinyPage(),
                     {{"Buzzer1Setting", "1"},
                      {"Buzzer2Setting", "1"},
                      {"Buzzer2OnTime", "0"},
                      {"PageCutType", "1"}}));
  JobInput lacking = job("buzzer-parameters-missing", "A buzzer without parameters sends -1 as FF.",
                         tinyPage(), {{"Buzzer1Setting", "1"}});
  lacking.lacks = {"Buzzer1OnTime", "Buzzer1Repeat"};
  jobs.push_back(lacking);
  JobInput none =
      job("buzzer-missing", "Without buzzer options, the buzzer set-up ends in 08.", tinyPage());
  none.lacks = {"Buzzer1Setting", "Buzzer2Setting"};
  jobs.push_back(none);
}

void addCuts(Jobs& jobs) {
  for (const char* type : {"0", "1", "2", "3", "4"}) {
    jobs.push_back(job(std::string("page-cut-") + type, "A cut after every page.",
                       {tinyPage()[0], tinyPage()[0]}, {{"PageCutType", type}}));
    jobs.push_back(job(std::string("doc-cut-") + type, "A feed and a cut after the last page.",
                       {tinyPage()[0], tinyPage()[0]},
                       {{"DocCutType", type}, {"FeedCutAfterJobEnd", "5"}}));
  }
  for (const char* feed : {"0", "15", "16", "17"})
    jobs.push_back(job(std::string("doc-cut-feed-") + feed, "The feed wraps at 16.", tinyPage(),
                       {{"DocCutType", "1"}, {"FeedCutAfterJobEnd", feed}}));
  JobInput noFeed = job("doc-cut-feed-missing", "Without the feed option, F0 is sent.", tinyPage(),
                        {{"DocCutType", "2"}});
  noFeed.lacks = {"FeedCutAfterJobEnd"};
  jobs.push_back(noFeed);
  JobInput noCut = job("cuts-missing", "Without cut options, the feed is sent without a cut.",
                       tinyPage(), {{"FeedCutAfterJobEnd", "3"}});
  noCut.lacks = {"DocCutType", "PageCutType"};
  jobs.push_back(noCut);
}

void addDrawerAndDirection(Jobs& jobs) {
  for (int width = 0; width <= 9; ++width) {
    const std::string setting = width % 2 == 0 ? "1" : "2";
    jobs.push_back(
        job("drawer-" + setting + "-width-" + std::to_string(width),
            "One pulse for the cash drawer; width 9 is not in the table.", tinyPage(),
            {{"CashDrawerSetting", setting}, {"CashDrawerPulseWidth", std::to_string(width)}}));
  }
  JobInput lacking = job("drawer-width-missing", "A drawer without a pulse width sends nothing.",
                         tinyPage(), {{"CashDrawerSetting", "1"}});
  lacking.lacks = {"CashDrawerPulseWidth"};
  jobs.push_back(lacking);
  jobs.push_back(job("bidi-1", "Unidirectional printing.", tinyPage(), {{"BidiPrinting", "1"}}));
  JobInput noBidi =
      job("bidi-missing", "Without the option, no direction command is sent.", tinyPage());
  noBidi.lacks = {"BidiPrinting"};
  jobs.push_back(noBidi);
}

void addDefaults(Jobs& jobs) {
  JobInput defaults =
      job("defaults-of-the-printer", "The defaults of the printer apply.", {page(20, 4, "ramp")});
  defaults.defaults = {{"PageCutType", "1"},       {"HalftoneType", "Ordered"},
                       {"Brightness", "20"},       {"PageType", "1"},
                       {"CashDrawerSetting", "2"}, {"CashDrawerPulseWidth", "4"}};
  jobs.push_back(defaults);
  defaults.name = "defaults-overridden";
  defaults.description = "Job options override the defaults of the printer.";
  defaults.options = {{"PageCutType", "2"},
                      {"HalftoneType", "Burkes"},
                      {"Brightness", "-20"},
                      {"PageType", "0"},
                      {"PageSize", "X58MMY100MM"}};
  jobs.push_back(defaults);
  defaults.name = "defaults-unknown-choice";
  defaults.description = "A job option with an unknown choice leaves the default.";
  defaults.options = {{"PageCutType", "77"}, {"HalftoneType", "Serra"}};
  jobs.push_back(defaults);
  defaults.name = "defaults-case-of-choice";
  defaults.description = "CUPS ignores case in keywords and choices.";
  defaults.options = {{"pagecuttype", "3"}, {"HalftoneType", "sierra"}};
  jobs.push_back(defaults);
  JobInput bare =
      job("printer-with-no-options", "A printer that lacks every option.", {page(20, 4, "ramp")});
  for (const reference::PpdOption& option : optionsOf(JobInput()).ppd)
    bare.lacks.push_back(option.keyword);
  jobs.push_back(bare);
}

void addEnds(Jobs& jobs) {
  PageInput oneBit = page(16, 2, "flat:170");
  oneBit.bits = 1;
  PageInput colour = page(3, 2, "flat:9");
  colour.bits = 24;
  PageInput cut = page(40, 30, "noise:40");
  cut.truncated = true;
  const PageInput good = page(4, 3, "noise:41");
  jobs.push_back(job("end-no-pages", "An empty raster.", {}));
  jobs.push_back(job("end-one-bit", "A page with 1 bit per pixel ends the run.", {oneBit}));
  jobs.push_back(job("end-colour-after-page", "A colour page after a good one: status 1.",
                     {good, colour, good}));
  jobs.push_back(job("end-first-page-cut", "The pixels of the first page are truncated.", {cut},
                     {{"Buzzer1Setting", "1"}}));
  jobs.push_back(
      job("end-third-page-cut", "Two pages print, the third is truncated.", {good, good, cut}));
}

}  // namespace

std::vector<JobInput> jobList() {
  Jobs jobs;
  addHalftoneTypes(jobs);
  addBrightness(jobs);
  addTrims(jobs);
  addWidthLimits(jobs);
  addSizes(jobs);
  addPages(jobs);
  addBuzzers(jobs);
  addCuts(jobs);
  addDrawerAndDirection(jobs);
  addDefaults(jobs);
  addEnds(jobs);
  return jobs;
}

}  // namespace golden
