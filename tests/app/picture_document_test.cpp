// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/picture_document.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>

#include <ostream>
#include <string>
#include <vector>

#include "app/document_error.h"
#include "tests/app/collected_pages.h"
#include "tests/app/picture_files.h"
#include "tests/support/temporary_folder.h"

namespace wren::app {
namespace {

using testing::ElementsAre;
using wren_test::CollectedPages;
using wren_test::jpegOf;
using wren_test::JpegSpec;
using wren_test::pngOf;
using wren_test::PngSpec;

using Bytes = std::vector<std::uint8_t>;

class PictureDocument : public testing::Test {
 protected:
  PictureDocument() {
    // Pixels as they are, unless a test says otherwise.
    request_.target = {
        .headWidthPx = 8, .paperWidthPx = 10, .fitWidePages = false, .maxHeightPx = 40};
  }

  bool read(const std::string& bytes) {
    request_.path = folder_.write("picture", bytes);
    return bytes.starts_with("\x89PNG") ? readPng(request_, settings_, pages_)
                                        : readJpeg(request_, settings_, pages_);
  }

  std::string errorOf(const std::string& bytes) {
    try {
      read(bytes);
    } catch (const DocumentError& error) {
      return error.what();
    }
    return "none";
  }

  // The ink of the one page.
  Bytes inkOf(const std::string& bytes) {
    pages_.pages.clear();
    EXPECT_EQ(errorOf(bytes), "none");
    return pages_.pages.at(0).levels;
  }

  wren_test::TemporaryFolder folder_;
  DocumentRequest request_;
  PictureSettings settings_;
  CollectedPages pages_;
};

struct Pixels {
  const char* name;
  PngSpec spec;
  Bytes ink;
};

void PrintTo(const Pixels& shown, std::ostream* out) {
  *out << shown.name;
}

class PngPixels : public PictureDocument, public testing::WithParamInterface<Pixels> {};

TEST_P(PngPixels, BecomeInk) {
  EXPECT_EQ(inkOf(pngOf(GetParam().spec)), GetParam().ink);
}

// Luma: 0.299 red, 0.587 green, 0.114 blue. 255 - 76.245, 255 - 149.685, 255 - 29.07.
INSTANTIATE_TEST_SUITE_P(
    Of, PngPixels,
    testing::Values(
        Pixels{"Grey", {3, 1, 8, PNG_COLOR_TYPE_GRAY, false, {0, 100, 255}}, {255, 155, 0}},
        Pixels{"OneBit",
               {8, 1, 1, PNG_COLOR_TYPE_GRAY, false, {0xF0}},
               {0, 0, 0, 0, 255, 255, 255, 255}},
        Pixels{"FourBits", {2, 1, 4, PNG_COLOR_TYPE_GRAY, false, {0x5F}}, {170, 0}},
        Pixels{"SixteenBits",
               {2, 1, 16, PNG_COLOR_TYPE_GRAY, false, {0x80, 0x80, 0xFF, 0xFF}},
               {127, 0}},
        Pixels{"Colours",
               {3, 1, 8, PNG_COLOR_TYPE_RGB, false, {255, 0, 0, 0, 255, 0, 0, 0, 255}},
               {179, 105, 226}},
        Pixels{"Palette",
               {2, 1, 8, PNG_COLOR_TYPE_PALETTE, false, {1, 0}, {0, 0, 0, 255, 255, 255}},
               {0, 255}},
        Pixels{"TransparentPaletteEntry",
               {2, 1, 8, PNG_COLOR_TYPE_PALETTE, false, {0, 1}, {0, 0, 0, 0, 0, 0}, {0, 128}},
               {0, 128}},
        Pixels{"GreyAndAlpha",
               {3, 1, 8, PNG_COLOR_TYPE_GRAY_ALPHA, false, {0, 0, 0, 51, 0, 255}},
               {0, 51, 255}},
        Pixels{"ColourAndAlpha",
               {2, 1, 8, PNG_COLOR_TYPE_RGB_ALPHA, false, {0, 0, 0, 102, 255, 255, 255, 255}},
               {102, 0}},
        Pixels{
            "TransparentGrey", {2, 1, 8, PNG_COLOR_TYPE_GRAY, false, {0, 9}, {}, {}, 0}, {0, 246}}),
    [](const auto& shown) { return shown.param.name; });

// Sizes in which some passes have no pixels, too.
TEST_F(PictureDocument, ReadsInterlacedPngAlike) {
  for (unsigned size = 1; size <= 8; ++size) {
    PngSpec spec{size, size, 8, PNG_COLOR_TYPE_GRAY, true, {}};
    Bytes ink;
    for (unsigned i = 0; i < size * size; ++i) {
      spec.rows.push_back(static_cast<std::uint8_t>(3 * i));
      ink.push_back(static_cast<std::uint8_t>(255 - 3 * i));
    }
    EXPECT_EQ(inkOf(pngOf(spec)), ink) << size;
  }
}

// ---- Size ----

TEST_F(PictureDocument, ScalesToTheWidthOfTheHead) {
  request_.target.fitWidePages = true;
  request_.target.headWidthPx = 4;
  EXPECT_THAT(inkOf(pngOf({2, 1, 8, PNG_COLOR_TYPE_GRAY, false, {0, 255}})),
              ElementsAre(255, 255, 0, 0, 255, 255, 0, 0));
  EXPECT_THAT(inkOf(pngOf({8,
                           2,
                           8,
                           PNG_COLOR_TYPE_GRAY,
                           false,
                           {0, 255, 0, 0, 255, 255, 55, 155, 255, 0, 0, 0, 255, 255, 55, 155}})),
              ElementsAre(128, 255, 0, 150));
}

TEST_F(PictureDocument, CutsTheMiddleOutOfAWideOne) {
  request_.target.headWidthPx = 2;
  EXPECT_THAT(inkOf(pngOf({5, 1, 8, PNG_COLOR_TYPE_GRAY, false, {1, 2, 3, 4, 5}})),
              ElementsAre(253, 252));
}

TEST_F(PictureDocument, RefusesWhatWouldBeTooLong) {
  request_.target.fitWidePages = true;
  EXPECT_EQ(errorOf(pngOf({1, 6, 8, PNG_COLOR_TYPE_GRAY, false, Bytes(6)})),
            "the picture is too long");  // 48 rows
  EXPECT_EQ(pages_.begun, 0U);
}

TEST_F(PictureDocument, ScalesALargeJpegWhileItReadsIt) {
  request_.target = {.headWidthPx = 576};
  const JpegSpec spec{4000, 3000, 1, Bytes(12'000'000, 155)};
  EXPECT_TRUE(read(jpegOf(spec)));
  EXPECT_THAT(pages_.sizes(), ElementsAre("576x432"));
  EXPECT_THAT(pages_.levels(), ElementsAre(100));
}

// ---- Orientation ----

// What is seen, by the table of the EXIF standard: a letter is the pixel's place in the file.
//   abc
//   def
struct Turned {
  int orientation;
  const char* rows;
};

constexpr Turned kTurned[] = {{1, "abc def"},  {2, "cba fed"},  {3, "fed cba"},  {4, "def abc"},
                              {5, "ad be cf"}, {6, "da eb fc"}, {7, "fc eb da"}, {8, "cf be ad"}};

std::string lettersOf(const wren_test::CollectedPage& page) {
  std::string rows;
  for (unsigned y = 0; y < page.heightPx; ++y) {
    if (y > 0) rows += ' ';
    for (unsigned x = 0; x < page.widthPx; ++x) {
      rows += static_cast<char>('a' + (page.at(x, y) + 20) / 40);
    }
  }
  return rows;
}

const Bytes kLetters = {255, 215, 175, 135, 95, 55};

TEST_F(PictureDocument, TurnsAPngAsItsExifSays) {
  for (const bool behind : {false, true}) {
    for (const Turned& turned : kTurned) {
      PngSpec spec{3, 2, 8, PNG_COLOR_TYPE_GRAY, false, kLetters};
      spec.orientation = turned.orientation;
      spec.exifBehind = behind;
      inkOf(pngOf(spec));
      EXPECT_EQ(lettersOf(pages_.pages.at(0)), turned.rows) << turned.orientation;
    }
  }
}

TEST_F(PictureDocument, TurnsAJpegAsItsExifSays) {
  for (const Turned& turned : kTurned) {
    inkOf(jpegOf({3, 2, 1, kLetters, turned.orientation}));
    EXPECT_EQ(lettersOf(pages_.pages.at(0)), turned.rows) << turned.orientation;
  }
}

TEST_F(PictureDocument, ScalesATurnedOneToTheHead) {
  request_.target = {.headWidthPx = 4, .fitWidePages = true, .maxHeightPx = 40};
  PngSpec spec{3, 2, 8, PNG_COLOR_TYPE_GRAY, false, kLetters};
  spec.orientation = 6;
  inkOf(pngOf(spec));
  EXPECT_EQ(lettersOf(pages_.pages.at(0)), "ddaa ddaa eebb eebb ffcc ffcc");
}

TEST_F(PictureDocument, PassesOverAnOrientationThatDoesNotExist) {
  inkOf(jpegOf({3, 2, 1, kLetters, 9}));
  EXPECT_EQ(lettersOf(pages_.pages.at(0)), "abc def");
}

// ---- Colours of JPEG ----

TEST_F(PictureDocument, ReadsTheColoursOfJpeg) {
  Bytes red;
  for (int i = 0; i < 64; ++i) red.insert(red.end(), {255, 0, 0});
  EXPECT_THAT(inkOf(jpegOf({8, 8, 3, red})),
              testing::Each(testing::AllOf(testing::Ge(178), testing::Le(180))));
}

// Magenta and yellow ink: red.
TEST_F(PictureDocument, ReadsBothKindsOfCmyk) {
  for (const bool adobe : {true, false}) {
    const std::uint8_t none = adobe ? 255 : 0;
    const auto full = static_cast<std::uint8_t>(255 - none);
    Bytes red;
    for (int i = 0; i < 64; ++i) red.insert(red.end(), {none, full, full, none});
    JpegSpec spec{8, 8, 4, red};
    spec.hasAdobeMarker = adobe;
    EXPECT_THAT(inkOf(jpegOf(spec)),
                testing::Each(testing::AllOf(testing::Ge(178), testing::Le(180))))
        << adobe;
  }
}

TEST_F(PictureDocument, ReadsProgressiveJpeg) {
  JpegSpec spec{8, 8, 1, Bytes(64, 100)};
  spec.isProgressive = true;
  EXPECT_THAT(inkOf(jpegOf(spec)), testing::Each(155));
}

// ---- Refused ----

std::string somePng(bool isInterlaced) {
  PngSpec spec{8, 30, 8, PNG_COLOR_TYPE_RGB, isInterlaced, {}};
  for (unsigned i = 0; i < 720; ++i) spec.rows.push_back(static_cast<std::uint8_t>(i * i * 7));
  return pngOf(spec);
}

std::string someJpeg(bool isProgressive) {
  JpegSpec spec{8, 30, 3, {}};
  for (unsigned i = 0; i < 720; ++i) spec.rows.push_back(static_cast<std::uint8_t>(i * i * 7));
  spec.isProgressive = isProgressive;
  return jpegOf(spec);
}

TEST_F(PictureDocument, RefusesAFileThatIsCutOffAnywhere) {
  for (const std::string& whole :
       {somePng(false), somePng(true), someJpeg(false), someJpeg(true)}) {
    EXPECT_EQ(errorOf(whole), "none");
    pages_.begun = 0;
    for (std::size_t size = whole.size() - 1; size > 8; size -= std::min<std::size_t>(size, 97)) {
      EXPECT_THAT(errorOf(whole.substr(0, size)), testing::HasSubstr("is damaged: ")) << size;
    }
    EXPECT_EQ(pages_.begun, 0U);
  }
}

TEST_F(PictureDocument, RefusesADamagedPng) {
  std::string file = somePng(false);
  file[file.size() / 2] ^= 1;
  EXPECT_THAT(errorOf(file), testing::StartsWith("the PNG is damaged: "));
  EXPECT_EQ(pages_.begun, 0U);
}

// The height of the frame header: 32767 x 32767 pixels.
TEST_F(PictureDocument, RefusesAHugeJpeg) {
  std::string file = someJpeg(false);
  const std::size_t frame = file.find("\xFF\xC0");
  file.replace(frame + 5, 4, "\x7F\xFF\x7F\xFF");
  EXPECT_EQ(errorOf(file), "the picture has more than 120 million pixels");
}

TEST_F(PictureDocument, RefusesAHugePng) {
  PngSpec spec{1, 1, 8, PNG_COLOR_TYPE_GRAY, false, {0}};
  settings_.maxPixels = 3;
  spec.widthPx = 4;
  spec.rows = {0, 0, 0, 0};
  EXPECT_EQ(errorOf(pngOf(spec)), "the picture has more than 0 million pixels");
}

TEST_F(PictureDocument, RefusesInterlacedPngThatNeedsTooMuchMemory) {
  settings_.maxMemoryBytes = 239;
  EXPECT_EQ(errorOf(somePng(true)), "the PNG is interlaced and too large");
}

TEST_F(PictureDocument, RefusesAProgressiveJpegThatNeedsTooMuchMemory) {
  settings_.maxMemoryBytes = 1 << 20;
  JpegSpec spec{2000, 2000, 1, Bytes(4'000'000)};
  spec.isProgressive = true;
  request_.target = {};
  EXPECT_EQ(errorOf(jpegOf(spec)), "the JPEG needs too much memory");
}

TEST_F(PictureDocument, RefusesAJpegOfManyScans) {
  settings_.maxScans = 2;
  EXPECT_EQ(errorOf(someJpeg(true)), "the JPEG has more than 2 scans");
}

TEST_F(PictureDocument, RefusesOtherFiles) {
  EXPECT_EQ(errorOf("GIF89a"), "this is not a JPEG");
  EXPECT_EQ(errorOf("\x89PNG\r\n"), "this is not a PNG");
  EXPECT_EQ(errorOf(""), "the picture is empty");
}

TEST_F(PictureDocument, StopsWhenCancelled) {
  request_.cancel = CancelCheck([](const void*) { return true; }, nullptr);
  for (const std::string& whole :
       {somePng(false), somePng(true), someJpeg(false), someJpeg(true)}) {
    EXPECT_FALSE(read(whole));
  }
  EXPECT_EQ(pages_.begun, 0U);
}

}  // namespace
}  // namespace wren::app
