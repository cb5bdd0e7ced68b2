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

// At scale 16, 128 x 1600 pixels a piece: 19 pieces are less than the pixels that are drawn in any
// case.
TEST_F(JobPicture, OfALongPaperIsCancelledAndRemoved) {
  options_.style.scale = 16;
  options_.split = true;
  rules_.cancel = CancelCheck(always, nullptr);
  const WrittenPictures written = write(paperOfRows(100, 25));
  ASSERT_EQ(written.files.size(), kUncancelledPixels / (128 * 1600));
  EXPECT_THAT(written.errors, ElementsAre(file("p-20.png") + ": cancelled"));
  EXPECT_FALSE(std::filesystem::exists(file("p-20.png")));
}

}  // namespace
}  // namespace wren::preview
