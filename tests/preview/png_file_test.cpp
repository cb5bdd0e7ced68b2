// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/png_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>

#include "common/handles.h"
#include "escpos/reader.h"
#include "tests/escpos/printer_streams.h"
#include "tests/preview/file_size_limit.h"
#include "tests/preview/png_reading.h"
#include "tests/preview/scratch_folder.h"

namespace wren::preview {
namespace {

using streams::bitImage;
using streams::Bytes;
using streams::feed;
using streams::hex;
using streams::operator+;

std::uint32_t numberAt(const Bytes& bytes, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < 4; ++i) number = number << 8 | bytes.at(at + i);
  return number;
}

// The first chunk of each kind: a length, a name, data and a checksum each, after 8 bytes.
std::map<std::string, Bytes> chunksOf(const Bytes& png) {
  std::map<std::string, Bytes> chunks;
  for (std::size_t at = 8; at + 12 <= png.size();) {
    const std::size_t length = numberAt(png, at);
    const auto name = png.begin() + static_cast<std::ptrdiff_t>(at) + 4;
    const auto data = name + 4;
    chunks.try_emplace(std::string(name, data),
                       Bytes(data, data + static_cast<std::ptrdiff_t>(length)));
    at += 12 + length;
  }
  return chunks;
}

// A paper with three rows, and a picture of all of it.
class PaperPng : public testing::Test {
 protected:
  PaperPicture picture(PictureStyle style = {}) const {
    return {paper_, escpos::wholeStrip(paper_), style};
  }
  std::map<std::string, Bytes> chunks(PictureStyle style) const {
    PaperPicture drawn = picture(style);
    EXPECT_EQ(writePng(drawn, folder_.file("p.png")), "");
    return chunksOf(bytesOfFile(folder_.file("p.png")));
  }

  ScratchFolder folder_;
  escpos::Paper paper_ =
      escpos::readAll(bitImage(1, hex("80 40 20 80 40 20 80 40 20")) + feed(6)).paper;
};

// Width, height, bits a pixel, kind of colour (3: palette), and three times 0.
TEST_F(PaperPng, HasABitForADot) {
  EXPECT_EQ(chunks({})["IHDR"], hex("00000009 00000003 01 03 00 00 00"));
  EXPECT_EQ(chunks({})["PLTE"], hex("FFFFFF 000000"));
}

// Paper, dots, margin, scale, cuts in red, drawer pulses in green, beeps in blue.
TEST_F(PaperPng, HasAColourForEachKindOfMark) {
  auto marked = chunks({203, 1, true});
  EXPECT_EQ(Bytes(marked["IHDR"].begin() + 8, marked["IHDR"].end()), hex("04 03 00 00 00"));
  EXPECT_EQ(marked["PLTE"], hex("FFFFFF 000000 E2E4E8 464A52 CD1E1E 147832 1E46C8"));
}

// dpi / 0.0254, rounded; unit 1 is the metre.
TEST_F(PaperPng, HasTheResolutionInPixelsPerMetre) {
  const std::pair<PictureStyle, const char*> cases[] = {
      {{203, 1, false}, "00001F38 00001F38 01"},   // 7992.1
      {{180, 1, false}, "00001BAF 00001BAF 01"},   // 7086.6
      {{204, 1, false}, "00001F5F 00001F5F 01"},   // 8031.496
      {{203, 3, true}, "00005DA8 00005DA8 01"},    // 23976.4
      {{2400, 16, false}, "00171183 00171183 01"}  // 1511811.02: 38400 dpi
  };
  for (const auto& [style, expected] : cases) {
    EXPECT_EQ(chunks(style)["pHYs"], hex(expected)) << style.dpi;
  }
}

TEST_F(PaperPng, IsKnownAsOwnWithAndWithoutMarks) {
  for (const bool marks : {false, true}) {
    PaperPicture drawn = picture({203, 1, marks});
    ASSERT_EQ(writePng(drawn, folder_.file("p.png")), "");
    EXPECT_TRUE(isOwnPng(folder_.file("p.png"))) << marks;
  }
}

TEST_F(PaperPng, IsTheSameInMemory) {
  PaperPicture drawn = picture({203, 2, true});
  ASSERT_EQ(writePng(drawn, folder_.file("p.png")), "");
  const std::string bytes = pngBytes(drawn);
  EXPECT_EQ(Bytes(bytes.begin(), bytes.end()), bytesOfFile(folder_.file("p.png")));
}

TEST_F(PaperPng, HasTheSamePixelsWhenItIsMadeFast) {
  // Compresses well, so that less effort shows.
  Bytes stream;
  for (int i = 0; i < 50; ++i) {
    Bytes columns;
    for (int x = 0; x < 500; ++x) columns.push_back(static_cast<std::uint8_t>(x * x / (i + 1)));
    stream = stream + bitImage(1, columns) + feed(16);
  }
  const auto paper = escpos::readAll(stream).paper;
  PaperPicture drawn(paper, escpos::wholeStrip(paper), {});
  PngRules fast;
  fast.isFast = true;
  const std::string small = pngBytes(drawn);
  const std::string quick = pngBytes(drawn, fast);
  EXPECT_EQ(readPngBytes(quick).text(), readPngBytes(small).text());
  EXPECT_GT(quick.size(), small.size());
}

TEST_F(PaperPng, EndsAfterTheRowsThatAreAllowed) {
  PaperPicture drawn = picture();
  PngRules rules;
  rules.maxRows = 2;
  EXPECT_EQ(readPngBytes(pngBytes(drawn, rules)).text(), "#..#..#..\n.#..#..#.\n");
}

bool always(const void*) {
  return true;
}

TEST_F(PaperPng, HasNoBytesIfItWasCancelled) {
  PaperPicture drawn = picture();
  PngRules rules;
  rules.cancel = CancelCheck(always, nullptr);
  EXPECT_EQ(pngBytes(drawn, rules), "");
  EXPECT_EQ(writePng(drawn, folder_.file("p.png"), rules), "cancelled");
  EXPECT_FALSE(std::filesystem::exists(folder_.file("p.png")));
}

// A PNG has at most 2^31 - 1 rows. libpng itself stops at a million, unless it is told not to.
TEST_F(PaperPng, MayHaveAsManyRowsAsTheFormat) {
  PngRules rules;
  rules.cancel = CancelCheck(always, nullptr);
  const auto writeRows = [&](std::uint64_t rows) {
    PaperPicture drawn(paper_, {{0, rows}, 0, 0}, {});
    return writePng(drawn, folder_.file("p.png"), rules);
  };
  EXPECT_EQ(writeRows(1'000'001), "cancelled");
  EXPECT_EQ(writeRows(0x7FFFFFFF), "cancelled");
  EXPECT_EQ(writeRows(0x80000000), "the picture is too long for a PNG");
  EXPECT_FALSE(std::filesystem::exists(folder_.file("p.png")));
}

// So small a file is written when it is closed.
TEST(PngFile, IsRemovedIfTheDiskIsFull) {
  const ScratchFolder folder;
  std::string error;
  {
    const FileSizeLimit full(10);
    error = writePng(Picture::white(3, 3), folder.file("p.png"));
  }
  EXPECT_EQ(error, "File too large");
  EXPECT_FALSE(std::filesystem::exists(folder.file("p.png")));
}

TEST(PngFile, MayBeReadByWhomTheUserAllows) {
  const ScratchFolder folder;
  const mode_t before = ::umask(0027);
  const std::string error = writePng(Picture::white(3, 3), folder.file("p.png"));
  ::umask(before);
  EXPECT_EQ(error, "");
  struct stat status = {};
  ASSERT_EQ(::stat(folder.file("p.png").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

// Reading a pipe would take its bytes from somebody else, or wait.
TEST(PngFile, IsNotSoughtInAPipe) {
  const ScratchFolder folder;
  ASSERT_EQ(writePng(Picture::white(900, 900), folder.file("own.png")), "");
  auto own = bytesOfFile(folder.file("own.png"));
  ASSERT_EQ(::mkfifo(folder.file("pipe.png").c_str(), 0600), 0);
  const FileDescriptor pipe(::open(folder.file("pipe.png").c_str(), O_RDWR | O_NONBLOCK));
  ASSERT_TRUE(pipe);
  own.resize(2048);
  ASSERT_EQ(::write(pipe.get(), own.data(), own.size()), 2048);
  EXPECT_FALSE(isOwnPng(folder.file("pipe.png")));
}

// Eight bits a pixel, kind of colour 0: grey.
TEST(PngFile, HasAByteForAGreyPixelAndNoResolution) {
  const ScratchFolder folder;
  ASSERT_EQ(writePng(Picture::white(5, 2), folder.file("grey.png")), "");
  auto chunks = chunksOf(bytesOfFile(folder.file("grey.png")));
  EXPECT_EQ(chunks["IHDR"], hex("00000005 00000002 08 00 00 00 00"));
  EXPECT_EQ(chunks.count("pHYs"), 0u);
}

TEST(PngFile, HoldsEveryLevelOfAGreyPicture) {
  const ScratchFolder folder;
  Picture picture = Picture::white(256, 2);
  for (std::size_t i = 0; i < 256; ++i) picture.pixels[i] = static_cast<std::uint8_t>(i);
  ASSERT_EQ(writePng(picture, folder.file("grey.png")), "");
  const GreyPicture read = readPng(folder.file("grey.png"));
  EXPECT_EQ(read.width, 256u);
  EXPECT_EQ(read.height, 2u);
  EXPECT_EQ(read.pixels, picture.pixels);
}

TEST(PngFile, IsKnownAsOwn) {
  const ScratchFolder folder;
  ASSERT_EQ(writePng(Picture::white(900, 900), folder.file("own.png")), "");
  EXPECT_TRUE(isOwnPng(folder.file("own.png")));
  const auto own = bytesOfFile(folder.file("own.png"));
  const std::string text(own.begin(), own.end());
  const std::string words = std::string("Software") + '\0' + "Wren";
  ASSERT_NE(text.find(words), std::string::npos);
  std::string other = text;
  other.replace(text.find(words) + 9, 4, "Else");
  EXPECT_FALSE(isOwnPng(folder.write("other.png", {other.begin(), other.end()})));
  EXPECT_FALSE(isOwnPng(folder.write("job.prn", {text.begin() + 8, text.end()})));
  EXPECT_FALSE(isOwnPng(folder.file("absent.png")));
  EXPECT_FALSE(isOwnPng(folder.path()));
}

TEST(PngFile, ReportsAMissingFolder) {
  const ScratchFolder folder;
  EXPECT_EQ(writePng(Picture::white(1, 1), folder.file("no/such.png")),
            "No such file or directory");
}

}  // namespace
}  // namespace wren::preview
