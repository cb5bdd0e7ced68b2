// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/golden/hand_derived_jobs.h"

#include <cstddef>

namespace golden {

namespace {

// The bytes around the pages when every option is at choice 0: initialise, buzzers off,
// bidirectional; feed 16 after a page; buzzers off and the status request at the end of the job.
const Bytes kProloguePlain = {0x1B, 0x40, 0x1F, 0x1B, 0x1F, 0x42, 0x65,
                              0x65, 0x70, 0x06, 0x1B, 0x55, 0x00};
const Bytes kPageEnd = {0x1B, 0x4A, 0x10};
const Bytes kEpiloguePlain = {0x1F, 0x1B, 0x1F, 0x42, 0x65, 0x65, 0x70, 0x06, 0x1B, 0x76};

Bytes joined(const std::vector<Bytes>& parts) {
  Bytes result;
  for (const Bytes& part : parts) result.insert(result.end(), part.begin(), part.end());
  return result;
}

JobInput onePage(const std::string& name, std::uint32_t width, std::uint32_t height,
                 const std::string& pixels, const std::vector<Pair>& options) {
  JobInput input;
  input.name = name;
  PageInput page;
  page.width = width;
  page.height = height;
  page.pixels = "bytes:" + pixels;
  input.pages = {page};
  input.options = options;
  return input;
}

HandDerivedJob noPages() {
  JobInput input;
  input.name = "NoPages";
  return {input, joined({kProloguePlain, kEpiloguePlain}), {}};
}

// Levels 128 129 255 / 0 200 1. Levels from 129 become dots:
//   row 0: . # #
//   row 1: . # .
// Column bytes, row 0 in bit 7 and row 1 in bit 6: 00, 80 + 40 = C0, 80. Two rows feed 4.
// Both rows have ink, so nothing is trimmed.
// Grey image: the header counts rows of 3 bytes padded to 4: 8 bytes of image after 54 + 1024 =
// 1078 bytes, 1086 = 043E in total; but the 6 levels are written without padding. Dots: (3 + 7) / 8
// = 1 byte per row, padded to 4; 62 + 8 = 70 = 46. Bottom row first, white is 1:
//   row 1: 1 0 1 and five ones = 1011 1111 = BF; row 0: 1 0 0 and five ones = 1001 1111 = 9F.
HandDerivedJob fixedThreshold() {
  return {
      onePage("FixedThreshold", 3, 2, "8081FF00C801", {}),
      joined({kProloguePlain,
              {0x1B, 0x3C, 0x1B, 0x2A, 0x01, 0x03, 0x00, 0x00, 0xC0, 0x80, 0x1B, 0x4A, 0x04},
              kPageEnd,
              kEpiloguePlain}),
      {{0x42, 0x4D, 0x3E, 0x04, 0x00, 0x00, 0, 0, 0, 0,    0x36, 0x04, 0x00, 0x00, 40,
        0,    0,    0,    3,    0,    0,    0, 2, 0, 0,    0,    1,    0,    8,    0,
        0,    0,    0,    0,    8,    0,    0, 0, 0, 0,    0,    0,    0,    0,    0,
        0,    0,    1,    0,    0,    0,    1, 0, 0, 0x80, 0x81, 0xFF, 0x00, 0xC8, 0x01},
       {0x42, 0x4D, 0x46, 0x00, 0x00, 0x00, 0, 0, 0, 0,    0x3E, 0x00, 0x00, 0x00, 40, 0, 0, 0, 3,
        0,    0,    0,    2,    0,    0,    0, 1, 0, 1,    0,    0,    0,    0,    0,  8, 0, 0, 0,
        0,    0,    0,    0,    0,    0,    0, 0, 0, 0,    0,    0,    0,    0,    0,  0, 0, 0, 0,
        0,    0xFF, 0xFF, 0xFF, 0x00, 0xBF, 0, 0, 0, 0x9F, 0,    0,    0}}};
}

// "FloydSteinberg" uses the 4 x 4 threshold matrix. Level 100: 100 x 16 / 255 = 6.27, so 6; a dot
// where the matrix is 0 to 5:
//    0  8  2 10      # . # .
//   12  4 14  6      . # . .
//    3 11  1  9      # . # .
//   15  7 13  5      . . . #
// Columns: rows 0 and 2 = 80 + 20 = A0, row 1 = 40, A0, row 3 = 10. Four rows feed 8.
HandDerivedJob orderedMatrix() {
  return {
      onePage("OrderedMatrix", 4, 4, "64646464646464646464646464646464",
              {{"HalftoneType", "FloydSteinberg"}}),
      joined({kProloguePlain,
              {0x1B, 0x3C, 0x1B, 0x2A, 0x01, 0x04, 0x00, 0xA0, 0x40, 0xA0, 0x10, 0x1B, 0x4A, 0x08},
              kPageEnd,
              kEpiloguePlain}),
      {}};
}

// clang-format off
// "Ordered" is Burkes: 8/32 of the error go to x + 1, 4/32 to x + 2 (truncated toward zero).
//   level   decision             x + 1             x + 2
//     100   no dot, error 100     90 + 25 = 115    180 + 12 = 192
//     115   no dot, error 115    192 + 28 = 220     60 + 14 =  74
//     220   dot, error -35        74 -  8 =  66
//      66   no dot
// With the weight 7/16 of Floyd and Steinberg, the second level would be 133 and a dot.
// clang-format on
HandDerivedJob burkesRow() {
  return {
      onePage("BurkesRow", 4, 1, "645AB43C", {{"HalftoneType", "Ordered"}}),
      joined({kProloguePlain,
              {0x1B, 0x3C, 0x1B, 0x2A, 0x01, 0x04, 0x00, 0x00, 0x00, 0x80, 0x00, 0x1B, 0x4A, 0x02},
              kPageEnd,
              kEpiloguePlain}),
      {}};
}

// 5 / 72 x 203 = 14.09, so 14 of 17 columns are printed; excess 3, one of it on the left.
// Ink in columns 0, 1, 14 and 15. Columns 1 to 14 move to 0 to 13; columns 14, 15 and 16 keep their
// old levels (ink, ink, paper) and are masked.
//   printed:  # ............ #          14 = 0E columns, the first and the last are 80
//   dots:     # ............ # # # .    in the debug image, with the masked columns
// Debug image: 0111 1111 = 7F, 1111 1000 = F8, 1 and seven ones = FF; (17 + 7) / 8 = 3 bytes,
// padded to 4; 62 + 4 = 66 = 42.
HandDerivedJob overWide() {
  JobInput input = onePage("OverWide", 17, 1, "FFFF000000000000000000000000FFFF00", {});
  input.maxMediaWidth = "5.0";
  return {
      input,
      joined({kProloguePlain,
              {0x1B, 0x3C, 0x1B, 0x2A, 0x01, 0x0E, 0x00, 0x80, 0,    0,    0,    0,
               0,    0,    0,    0,    0,    0,    0,    0,    0x80, 0x1B, 0x4A, 0x02},
              kPageEnd,
              kEpiloguePlain}),
      {{0x42, 0x4D, 0x4A, 0x04, 0x00, 0x00, 0, 0, 0, 0, 0x36, 0x04, 0x00, 0x00, 40,   0,    0,  0,
        17,   0,    0,    0,    1,    0,    0, 0, 1, 0, 8,    0,    0,    0,    0,    0,    20, 0,
        0,    0,    0,    0,    0,    0,    0, 0, 0, 0, 0,    1,    0,    0,    0,    1,    0,  0,
        0xFF, 0,    0,    0,    0,    0,    0, 0, 0, 0, 0,    0,    0,    0xFF, 0xFF, 0xFF, 0},
       {0x42, 0x4D, 0x42, 0x00, 0x00, 0x00, 0, 0,    0,    0,    0x3E, 0x00, 0x00, 0x00, 40,  0, 0,
        0,    17,   0,    0,    0,    1,    0, 0,    0,    1,    0,    1,    0,    0,    0,   0, 0,
        4,    0,    0,    0,    0,    0,    0, 0,    0,    0,    0,    0,    0,    0,    0,   0, 0,
        0,    0,    0,    0,    0,    0,    0, 0xFF, 0xFF, 0xFF, 0x00, 0x7F, 0xF8, 0xFF, 0x00}}};
}

// Ten rows with ink in row 3 only: the content ends at 4, and one blank row is kept above row 3, so
// rows 2 and 3 are printed: bit 6, column byte 40, feed 4.
// Buzzer 1 at the end of the page: repeat 3 is sent first; on-time 12 is above 9 and becomes 1.
// Partial page cut; drawer at the end of the job with width 4: 32 + 4 x 19 = 96 (all hexadecimal);
// document cut 2 with feed 5 x 16 = 80 = 50. A buzzer is set, so the set-up ends in 08.
HandDerivedJob trimsAndDevices() {
  return {
      onePage("TrimsAndDevices", 1, 10, "000000FF000000000000",
              {{"Buzzer1Setting", "2"},
               {"Buzzer1OnTime", "12"},
               {"Buzzer1Repeat", "3"},
               {"PageCutType", "2"},
               {"CashDrawerSetting", "2"},
               {"CashDrawerPulseWidth", "4"},
               {"DocCutType", "2"},
               {"FeedCutAfterJobEnd", "5"},
               {"BidiPrinting", "1"}}),
      {0x1B, 0x40, 0x1F, 0x1B, 0x1F, 0x42, 0x65, 0x65, 0x70, 0x08, 0x1B, 0x55, 0x01,  // prologue
       0x1B, 0x3C, 0x1B, 0x2A, 0x01, 0x01, 0x00, 0x40, 0x1B, 0x4A, 0x04,              // rows 2, 3
       0x1B, 0x4A, 0x10, 0x1B, 0x42, 0x03, 0x01, 0x1D, 0x56, 0x01,                    // page end
       0x1B, 0x4A, 0x50, 0x1D, 0x56, 0x01, 0x1B, 0x70, 0x00, 0x96, 0x32,              // job end
       0x1F, 0x1B, 0x1F, 0x42, 0x65, 0x65, 0x70, 0x06, 0x1B, 0x76},
      {}};
}

// Moment-preserving thresholding is undefined for a single grey level: the threshold is 128. The
// gamma table maps 128 to 152, and sharpening does not change a flat page (4 x 152 - 3 x 152). With
// one row, every pixel is at the border. 0.505786 of the error go one pixel to the right,
// -0.052926 two:
//   152     is above 128, a dot: error -103
//   152 - 103 x 0.505786                          =  99.90, no dot: error 99.90
//   152 +  99.90 x 0.505786 + 103 x 0.052926      = 207.98, a dot: error -47.02
//   152 -  47.02 x 0.505786 -  99.90 x 0.052926   = 122.93, no dot
HandDerivedJob stencilRow() {
  return {
      onePage("StencilRow", 4, 1, "80808080", {{"HalftoneType", "QVDithering"}}),
      joined({kProloguePlain,
              {0x1B, 0x3C, 0x1B, 0x2A, 0x01, 0x04, 0x00, 0x80, 0x00, 0x80, 0x00, 0x1B, 0x4A, 0x02},
              kPageEnd,
              kEpiloguePlain}),
      {}};
}

// Brightness 20 adds 100 to every level: 28 becomes 128, 29 becomes 129, and 200 is clamped to 255.
// Twelve rows of one column, page type 1: eight rows in the first band, four in the second.
//   28 29 0 0 0 0 0 29 | 29 28 0 200    .#.. ...# = 41, feed 10; #..# = 90, feed 8
HandDerivedJob brightenedBands() {
  return {onePage("BrightenedBands", 1, 12, "1C1D00000000001D1D1C00C8",
                  {{"Brightness", "20"}, {"PageType", "1"}, {"PageCutType", "1"}}),
          joined({kProloguePlain,
                  {0x1B, 0x3C, 0x1B, 0x2A, 0x01, 0x01, 0x00, 0x41, 0x1B, 0x4A,
                   0x10, 0x1B, 0x2A, 0x01, 0x01, 0x00, 0x90, 0x1B, 0x4A, 0x08},
                  kPageEnd,
                  {0x1D, 0x56, 0x00},
                  kEpiloguePlain}),
          {}};
}

}  // namespace

std::vector<HandDerivedJob> handDerivedJobs() {
  std::vector<HandDerivedJob> jobs = {noPages(),    fixedThreshold(), orderedMatrix(),
                                      burkesRow(),  overWide(),       trimsAndDevices(),
                                      stencilRow(), brightenedBands()};
  // Every job starts with 64 zero bytes.
  for (HandDerivedJob& job : jobs) job.output = joined({Bytes(64, 0), job.output});
  return jobs;
}

Bytes withoutGreyPalette(const std::string& kind, const Bytes& file) {
  Bytes result = file;
  if (kind == "origin" && result.size() >= 1078)
    result.erase(result.begin() + 54, result.begin() + 1078);
  return result;
}

}  // namespace golden
