// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/job_picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/escpos/printer_streams.h"
#include "tests/preview/png_reading.h"
#include "tests/preview/scratch_folder.h"

namespace wren::preview {
namespace {

using streams::bitImage;
using streams::Bytes;
using streams::feed;
using streams::hex;
using streams::operator+;
using testing::ElementsAre;
using testing::IsEmpty;

// Eight dots wide; a row of 254 dpi is a tenth of a millimetre.
escpos::Paper paperOfRows(std::uint8_t rows, int pieces = 1) {
  Bytes stream;
  for (int i = 0; i < pieces; ++i) {
    stream = stream + bitImage(1, hex("80 80 80 80 80 80 80 80")) +
             feed(static_cast<std::uint8_t>(2 * rows)) + hex("1D5600");
  }
  return escpos::readAll(stream).paper;
}

class JobPicture : public testing::Test {
 protected:
  JobPicture() { options_.style.dpi = 254; }

  WrittenPictures write(const escpos::Paper& paper) const {
    return writePictures(paper, options_, folder_.file("p.png"), rules_);
  }
  std::string file(const std::string& name) const { return folder_.file(name); }

  const ScratchFolder folder_;
  Options options_;
  PictureRules rules_;
};

TEST_F(JobPicture, HasAsManyPixelsAsAreAllowed) {
  rules_.maxPixels = 8 * 100;
  const WrittenPictures written = write(paperOfRows(100));
  EXPECT_THAT(written.files, ElementsAre(file("p.png")));
  EXPECT_THAT(written.errors, IsEmpty());
  EXPECT_EQ(readPng(file("p.png")).height, 100u);
}

TEST_F(JobPicture, IsCutOffAtTheLimitOfPixels) {
  rules_.maxPixels = 8 * 100 - 1;
  const WrittenPictures written = write(paperOfRows(100));
  EXPECT_THAT(written.files, ElementsAre(file("p.png")));
  EXPECT_THAT(written.errors,
              ElementsAre(file("p.png") +
                          ": ends after 9.9 mm; a job has at most 799 pixels in 10000 pictures"));
  EXPECT_EQ(readPng(file("p.png")).height, 99u);
}

TEST_F(JobPicture, CountsTheSquareOfTheScale) {
  options_.style.scale = 4;
  rules_.maxPixels = 32 * 44;
  EXPECT_THAT(write(paperOfRows(100)).errors,
              ElementsAre(file("p.png") +
                          ": ends after 1.1 mm; a job has at most 1408 pixels in 10000 pictures"));
  EXPECT_EQ(readPng(file("p.png")).height, 44u);
}

TEST_F(JobPicture, SharesTheLimitAmongThePieces) {
  options_.split = true;
  rules_.maxPixels = 8 * 250;
  const WrittenPictures written = write(paperOfRows(100, 4));
  EXPECT_THAT(written.files, ElementsAre(file("p-1.png"), file("p-2.png"), file("p-3.png")));
  EXPECT_THAT(written.errors,
              ElementsAre(file("p-3.png") +
                          ": ends after 5.0 mm; a job has at most 2000 pixels in 10000 pictures"));
  EXPECT_FALSE(std::filesystem::exists(file("p-4.png")));
}

TEST_F(JobPicture, IsLeftOutWhereTheLimitIsUsedUp) {
  options_.split = true;
  rules_.maxPixels = 8 * 200;
  const WrittenPictures written = write(paperOfRows(100, 3));
  EXPECT_THAT(written.files, ElementsAre(file("p-1.png"), file("p-2.png")));
  EXPECT_THAT(
      written.errors,
      ElementsAre(file("p-3.png") + ": left out; a job has at most 1600 pixels in 10000 pictures"));
}

TEST_F(JobPicture, IsLeftOutBeyondTheLimitOfPictures) {
  options_.split = true;
  rules_.maxPictures = 2;
  const WrittenPictures written = write(paperOfRows(10, 5));
  EXPECT_THAT(written.files, ElementsAre(file("p-1.png"), file("p-2.png")));
  EXPECT_THAT(written.errors,
              ElementsAre(file("p-3.png") +
                          ": left out; a job has at most 800000000 pixels in 2 pictures"));
}

TEST_F(JobPicture, ShowsEvenHalfARow) {
  EXPECT_THAT(write(escpos::readAll(feed(1)).paper).files, ElementsAre(file("p.png")));
  EXPECT_EQ(readPng(file("p.png")).height, 1u);
  EXPECT_THAT(write(escpos::readAll(feed(0)).paper).files, IsEmpty());
}

TEST_F(JobPicture, KeepsAnExistingFile) {
  rules_.keepExisting = true;
  folder_.write("p.png", hex("0102"));
  const WrittenPictures written = write(paperOfRows(10));
  EXPECT_THAT(written.files, IsEmpty());
  EXPECT_THAT(written.errors, ElementsAre(file("p.png") + ": File exists"));
  EXPECT_EQ(bytesOfFile(file("p.png")), hex("0102"));
}

TEST_F(JobPicture, ReplacesAnExistingFileWhereThatIsMeant) {
  folder_.write("p.png", hex("0102"));
  EXPECT_THAT(write(paperOfRows(10)).errors, IsEmpty());
  EXPECT_EQ(readPng(file("p.png")).height, 10u);
}

bool always(const void*) {
  return true;
}

TEST_F(JobPicture, OfAReceiptIsDrawnEvenIfItIsCancelled) {
  rules_.cancel = CancelCheck(always, nullptr);
  EXPECT_THAT(write(paperOfRows(100)).errors, IsEmpty());
  EXPECT_EQ(readPng(file("p.png")).height, 100u);
}

// At scale 16, 128 x 1600 pixels a piece: 19 pieces are less than the 4,000,000 pixels that are
// drawn in any case.
TEST_F(JobPicture, OfALongPaperIsCancelledAndRemoved) {
  options_.style.scale = 16;
  options_.split = true;
  rules_.cancel = CancelCheck(always, nullptr);
  const WrittenPictures written = write(paperOfRows(100, 25));
  ASSERT_EQ(written.files.size(), 19u);
  EXPECT_THAT(written.errors, ElementsAre(file("p-20.png") + ": cancelled"));
  EXPECT_FALSE(std::filesystem::exists(file("p-20.png")));
}

// Exactly 4,000,000 pixels are not many yet.
TEST_F(JobPicture, IsCancelledBeyondFourMillionPixels) {
  options_.split = true;
  rules_.cancel = CancelCheck(always, nullptr);
  const auto errorsAt = [&](std::uint8_t rows) {
    Bytes stream;
    for (int i = 0; i < 10; ++i) stream = stream + feed(static_cast<std::uint8_t>(2 * rows));
    return write(escpos::readAll(bitImage(1, streams::repeat(4000, 0)) + stream).paper).errors;
  };
  EXPECT_THAT(errorsAt(100), IsEmpty());
  EXPECT_THAT(errorsAt(101), ElementsAre(file("p-1.png") + ": cancelled"));
}

TEST_F(JobPicture, IsNumberedBeforeItsExtension) {
  options_.split = true;
  const auto paper = paperOfRows(10, 2);
  const auto namesFor = [&](const std::string& name) {
    return writePictures(paper, options_, file(name), rules_).files;
  };
  EXPECT_THAT(namesFor("a.b.png"), ElementsAre(file("a.b-1.png"), file("a.b-2.png")));
  EXPECT_THAT(namesFor("plain"), ElementsAre(file("plain-1"), file("plain-2")));
}

TEST(PictureName, HasTheExtensionPng) {
  EXPECT_EQ(pictureName("job.prn"), "job.png");
  EXPECT_EQ(pictureName("job"), "job.png");
  EXPECT_EQ(pictureName("/tmp/a.b/job.v2.prn"), "/tmp/a.b/job.v2.png");
  EXPECT_EQ(pictureName("a.b/job"), "a.b/job.png");
}

// A feed unit is half a row: 80,000 mm at 203 dpi are 639,370.08 rows.
TEST(PaperLimit, IsTheLengthInFeedUnits) {
  const auto unitsOf = [](unsigned mm, unsigned dpi) {
    Options options;
    options.maxLengthMm = mm;
    options.style.dpi = dpi;
    return paperLimits(options).lengthUnits;
  };
  EXPECT_EQ(unitsOf(80'000, 203), 1'278'740u);
  EXPECT_EQ(unitsOf(1, 254), 20u);
  EXPECT_EQ(unitsOf(1, 50), 3u);  // 3.94
  // The most that the options allow.
  EXPECT_EQ(unitsOf(1'000'000, 2400), 188'976'377u);
  Options larger;
  larger.style.scale = 16;
  EXPECT_EQ(paperLimits(larger).lengthUnits, 1'278'740u) << "the scale is about pixels";
}

// Each number is another one.
TEST(Summary, CountsWhatThePrinterDid) {
  Bytes stream = hex("1B3C") + feed(200);
  for (int i = 0; i < 2; ++i) stream = stream + hex("1D5600") + feed(200);
  for (int i = 0; i < 3; ++i) stream = stream + hex("1B70003232");
  stream = stream + hex("1B420402");
  const Bytes one = hex("1B3C") + feed(8) + hex("1D5601 1B70013232 1B420102");
  const auto textOf = [](const Bytes& bytes, unsigned dpi) {
    escpos::Reader reader(escpos::PaperLimits{}, {});
    reader.feed(bytes);
    reader.finish();
    return summary(reader, dpi);
  };
  EXPECT_EQ(textOf(stream, 254), "1 page, 30.0 mm, 2 cuts, 3 drawer pulses, 4 beeps, 36 bytes");
  EXPECT_EQ(textOf(one, 254), "1 page, 0.4 mm, 1 cut, 1 drawer pulse, 1 beep, 17 bytes");
  EXPECT_EQ(textOf(stream + hex("1B3C") + feed(20), 203),
            "2 pages, 38.8 mm, 2 cuts, 3 drawer pulses, 4 beeps, 41 bytes");
}

TEST(Problems, AreShownWithTheirOffsets) {
  const auto reading = [](int faults) {
    Bytes stream;
    for (int i = 0; i < faults; ++i) stream = stream + hex("41 1B40");
    escpos::Reader reader(escpos::PaperLimits{}, {});
    reader.feed(stream);
    reader.finish();
    testing::internal::CaptureStderr();
    printProblems(reader.printer(), "x");
    return testing::internal::GetCapturedStderr();
  };
  EXPECT_EQ(reading(0), "");
  EXPECT_EQ(
      reading(2),
      "wren-preview: x: offset 0: 1 unknown byte\nwren-preview: x: offset 3: 1 unknown byte\n");
  EXPECT_EQ(reading(100).find("more"), std::string::npos);
  EXPECT_NE(reading(101).find("wren-preview: x: offset 297: 1 unknown byte\n"
                              "wren-preview: x: 1 more like these\n"),
            std::string::npos);
}

}  // namespace
}  // namespace wren::preview
