// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/debug_image.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <ctime>

#include "tests/printer/recording_printer.h"
#include "tests/support/bmp_file.h"
#include "tests/support/filter_job.h"
#include "tests/support/printer_bytes.h"
#include "tests/support/same_bytes.h"

namespace {

namespace fs = std::filesystem;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using wren::printer::PageMemory;
using wren::printer::writeBandImage;
using wren::printer::writeImage;
using wren_test::BmpFile;
using wren_test::bytesOf;
using wren_test::fromHex;
using wren_test::hexOf;
using wren_test::readBmp;
using wren_test::readFile;
using wren_test::RecordingPrinter;
using wren_test::sameBytes;
using wren_test::TemporaryFolder;

class DebugImage : public testing::Test {
 protected:
  // The file that saveImage writes.
  std::string saved(const std::string& pixels, unsigned long bytesPerLine, unsigned long height,
                    unsigned long width, unsigned short bitsPerPixel) {
    printer.setImageFormat(folder.path() / "one.bmp");
    printer.saveImage(bytesOf(pixels), bytesPerLine, height, width, bitsPerPixel);
    return readFile(folder.path() / "one.bmp");
  }

  TemporaryFolder folder;
  RecordingPrinter printer{folder.path()};
};

TEST_F(DebugImage, GreyImageOf384By100) {
  const std::string pixels(384 * 100, '\x42');
  const std::string bytes = saved(pixels, 384, 100, 384, 8);
  const BmpFile file = readBmp(bytes);
  EXPECT_EQ(bytes.size(), 54U + 1024 + 38400);
  EXPECT_EQ(file.fileSize, 39478U);
  EXPECT_EQ(file.imageSize, 38400U);
  EXPECT_EQ(file.pixels, pixels);
}

TEST_F(DebugImage, DotImageOf384By100) {
  const std::string bytes = saved(std::string(384 * 100, '\0'), 384, 100, 384, 1);
  const BmpFile file = readBmp(bytes);
  EXPECT_EQ(bytes.size(), 4862U);
  EXPECT_EQ(file.fileSize, 4862U);
  EXPECT_EQ(file.imageSize, 4800U);
  EXPECT_EQ(file.pixels.size(), 48U * 100);
}

TEST_F(DebugImage, HeaderAndPaletteOfAGreyImage) {
  const std::string bytes = saved(std::string(30, '\x05'), 10, 3, 10, 8);
  EXPECT_EQ(hexOf(bytes.substr(0, 54)),
            "42 4D 5A 04 00 00 00 00 00 00 36 04 00 00 28 00 00 00 0A 00 00 00 03 00 00 00 01 00 "
            "08 00 00 00 00 00 24 00 00 00 00 00 00 00 00 00 00 00 00 01 00 00 00 01 00 00");
  const std::string palette = readBmp(bytes).palette;
  ASSERT_EQ(palette.size(), 1024U);
  for (std::size_t i = 0; i < 256; ++i) {
    const char level = static_cast<char>(i);
    EXPECT_EQ(palette.substr(4 * i, 4), std::string({level, level, level, '\0'})) << i;
  }
}

TEST_F(DebugImage, HeaderAndPaletteOfADotImage) {
  EXPECT_EQ(hexOf(saved(std::string(10, '\0'), 10, 1, 10, 1)),
            "42 4D 42 00 00 00 00 00 00 00 3E 00 00 00 28 00 00 00 0A 00 00 00 01 00 00 00 01 00 "
            "01 00 00 00 00 00 04 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
            "00 00 00 00 FF FF FF 00 FF FF 00 00");
}

// The header declares padded rows, bottom row first; the bytes are neither.
TEST_F(DebugImage, GreyRowsAreStoredAsInMemoryWhateverTheHeaderSays) {
  std::string pixels;
  for (char i = 0; i < 20; ++i) pixels += i;
  const BmpFile file = readBmp(saved(pixels, 10, 2, 10, 8));
  EXPECT_EQ(file.imageSize, 24U);
  EXPECT_EQ(file.fileSize, 1078U + 24);
  EXPECT_EQ(file.height, 2);
  EXPECT_EQ(file.pixels, pixels);
}

TEST_F(DebugImage, DotRowsArePackedWhiteForEmptyAndStoredBottomUp) {
  const std::string empty(10, '\0');
  const std::string dots(10, '\xFF');
  EXPECT_EQ(hexOf(readBmp(saved(empty, 10, 1, 10, 1)).pixels), "FF FF 00 00");
  EXPECT_EQ(hexOf(readBmp(saved(dots, 10, 1, 10, 1)).pixels), "00 3F 00 00");
  EXPECT_EQ(hexOf(readBmp(saved(dots + empty, 10, 2, 10, 1)).pixels), "FF FF 00 00 00 3F 00 00");
}

TEST_F(DebugImage, AnyValueButZeroIsADot) {
  EXPECT_EQ(hexOf(readBmp(saved(fromHex("00 01 7F 80 FF 00 00 00"), 8, 1, 8, 1)).pixels),
            "87 00 00 00");
}

// Rows are read by bytes per line and declared by the width.
TEST_F(DebugImage, RowsLongerThanTheWidthAreCutToTheDeclaredRow) {
  const std::string row = std::string(8, '\0') + std::string(32, '\x01');
  const BmpFile file = readBmp(saved(row + row, 40, 2, 8, 1));
  EXPECT_EQ(file.imageSize, 8U);
  EXPECT_EQ(hexOf(file.pixels), "FF 00 00 00 FF 00 00 00");
  const BmpFile narrow = readBmp(saved(fromHex("0000000001 0101010100"), 5, 2, 3, 1));
  EXPECT_EQ(hexOf(narrow.pixels), "0F 00 00 00 F7 00 00 00");
}

TEST_F(DebugImage, GreyImageOfLongerRowsTakesTheFirstWidthTimesHeightBytes) {
  const BmpFile file = readBmp(saved("abcdefgh", 4, 2, 3, 8));
  EXPECT_EQ(file.width, 3);
  EXPECT_EQ(file.pixels, "abcdef");
}

TEST_F(DebugImage, OtherDepthsAreLikeDotsWithoutAPalette) {
  for (const unsigned short depth : std::initializer_list<unsigned short>{0, 4, 24}) {
    const std::string bytes = saved(std::string(10, '\0'), 10, 1, 10, depth);
    EXPECT_EQ(bytes.size(), 54U + 4);
    EXPECT_EQ(readBmp(bytes).bitsPerPixel, 1U);
    EXPECT_EQ(readBmp(bytes).pixelOffset, 62U);
    EXPECT_EQ(readBmp(bytes).fileSize, 66U);
    EXPECT_EQ(hexOf(bytes.substr(54)), "FF FF 00 00");
  }
}

TEST_F(DebugImage, PageWithoutRowsIsAHeader) {
  EXPECT_EQ(saved("", 10, 0, 10, 1).size(), 62U);
  EXPECT_EQ(saved("", 10, 0, 10, 8).size(), 1078U);
}

TEST_F(DebugImage, IsNamedByTheMomentAndTheRunningNumber) {
  setenv("TZ", "UTC", 1);
  tzset();
  printer.setImageFormat(folder.path() / "n_%d-%d-%d_%d_%d_%d_%ld.bmp");
  const std::time_t before = std::time(nullptr);
  printer.saveImage(bytesOf("x"), 1, 1, 1, 8);
  printer.saveImage(bytesOf("x"), 1, 1, 1, 8);
  const auto images = wren_test::savedImages(folder.path());
  ASSERT_EQ(images.size(), 2U);
  EXPECT_EQ(images[1].number, images[0].number + 1);
  bool named = false;
  for (std::time_t second = before; second <= std::time(nullptr); ++second) {
    char text[64];
    std::tm when = {};
    gmtime_r(&second, &when);
    std::snprintf(text, sizeof text, "n_%d-%d-%d_%d_%d_%d_%ld.bmp", when.tm_year + 1900,
                  when.tm_mon + 1, when.tm_mday, when.tm_hour, when.tm_min, when.tm_sec,
                  images[0].number);
    named = named || images[0].name == text;
  }
  EXPECT_TRUE(named) << images[0].name;
}

TEST_F(DebugImage, MissingFolderCostsOneLineAndANumber) {
  const fs::path images = folder.path() / "images";
  fs::create_directory(images);
  printer.setImageFormat(images / "n_%d-%d-%d_%d_%d_%d_%ld.bmp");
  printer.saveImage(bytesOf("x"), 1, 1, 1, 8);
  fs::rename(images, folder.path() / "away");
  CaptureStderr();
  printer.saveImage(bytesOf("x"), 1, 1, 1, 8);
  const std::string message = GetCapturedStderr();
  const std::string start =
      "WrenPrinter::saveImage: unable to open the file " + images.string() + "/n_";
  EXPECT_EQ(message.substr(0, start.size()), start);
  EXPECT_EQ(message.back(), '\n');
  EXPECT_EQ(wren_test::linesOf(message).size(), 1U);
  fs::rename(folder.path() / "away", images);
  printer.saveImage(bytesOf("x"), 1, 1, 1, 8);
  const auto saved = wren_test::savedImages(images);
  ASSERT_EQ(saved.size(), 2U);
  EXPECT_EQ(saved[1].number, saved[0].number + 2);
}

TEST_F(DebugImage, IsNotSavedWhileImagesAreOff) {
  printer.setDebugImageFolder({});
  EXPECT_EQ(saved("x", 1, 1, 1, 8), "");
  EXPECT_FALSE(fs::exists(folder.path() / "one.bmp"));
}

TEST_F(DebugImage, IsForItsOwnerAloneAndReplacesAnOlderOne) {
  saved(std::string(100, 'x'), 10, 10, 10, 8);
  const std::string bytes = saved("y", 1, 1, 1, 8);
  EXPECT_EQ(bytes.size(), 1079U);
  struct stat status = {};
  ASSERT_EQ(stat((folder.path() / "one.bmp").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(DebugImage, FollowsNoSymbolicLink) {
  fs::create_symlink(folder.path() / "target", folder.path() / "one.bmp");
  CaptureStderr();
  EXPECT_EQ(saved("x", 1, 1, 1, 8), "");
  EXPECT_EQ(GetCapturedStderr(), "WrenPrinter::saveImage: unable to open the file " +
                                     (folder.path() / "one.bmp").string() + "\n");
  EXPECT_FALSE(fs::exists(folder.path() / "target"));
}

TEST(DebugImageWriting, AFullDiskEndsTheWritingQuietly) {
  const int full = open("/dev/full", O_RDWR | O_CLOEXEC);
  ASSERT_GE(full, 0);
  const std::string pixels(100, 'x');
  CaptureStderr();
  PageMemory rows;
  writeImage(full, {bytesOf(pixels), 10, 10, 10}, 8, rows);
  writeImage(full, {bytesOf(pixels), 10, 10, 10}, 1, rows);
  EXPECT_EQ(GetCapturedStderr(), "");
  close(full);
}

// A pipe that does not wait takes a large image only in part.
TEST(DebugImageWriting, ContinuesAfterAShortWrite) {
  const std::string pixels(300000, 'x');
  wren_test::CaptureFile whole;
  PageMemory rows;
  writeImage(fileno(whole.stream()), {bytesOf(pixels), 1000, 300, 1000}, 8, rows);
  std::fseek(whole.stream(), 0, SEEK_END);
  const std::string expected = whole.bytes();
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  const pid_t child = fork();
  if (child == 0) {
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, nullptr);
    const itimerval often = {{0, 1000}, {0, 1000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    writeImage(ends[1], {bytesOf(pixels), 1000, 300, 1000}, 8, rows);
    _exit(0);
  }
  close(ends[1]);
  std::string got;
  char block[5000];
  for (ssize_t count = 0; (count = read(ends[0], block, sizeof block)) > 0;) {
    got.append(block, static_cast<std::size_t>(count));
    usleep(200);
  }
  close(ends[0]);
  waitpid(child, nullptr, 0);
  EXPECT_TRUE(sameBytes(expected, got));
}

// The rows of a page that is wider than one piece of a row, and of one with padded rows.
TEST(DebugImageWriting, NeedsNoMemoryForItsRows) {
  const struct {
    unsigned long bytesPerLine;
    unsigned long width;
  } rows[] = {{10, 10}, {17, 10}, {5, 40}, {32768, 32768}, {70001, 70001}};
  for (const auto& row : rows) {
    std::string pixels(row.bytesPerLine * 3, '\0');
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = i % 7 < 3 ? '\xFF' : '\0';
    const auto written = [&](PageMemory memory) {
      wren_test::CaptureFile file;
      writeImage(fileno(file.stream()), {bytesOf(pixels), row.bytesPerLine, 3, row.width}, 1,
                 memory);
      std::fseek(file.stream(), 0, SEEK_END);
      return file.bytes();
    };
    const auto noMemory = [](std::size_t) { return wren::MallocBytes(); };
    EXPECT_TRUE(sameBytes(written(PageMemory()), written(PageMemory(noMemory)))) << row.width;
  }
}

// Bands of `rows` rows, of a pattern without repetition.
wren::printer::DotBands makeBands(std::size_t width, std::size_t rows) {
  wren::printer::DotBands bands;
  EXPECT_TRUE(bands.resize(width, rows));
  for (std::size_t i = 0; i < bands.bandCount(); ++i) {
    for (std::size_t x = 0; x < width; ++x) {
      bands.band(i)[x] = static_cast<std::uint8_t>((i * 131 + x * 37) >> (x % 5));
    }
  }
  return bands;
}

// Dots as bytes, from their definition: bit 7 of a column is its top row.
std::string pixelsOf(const wren::printer::DotBands& bands) {
  std::string pixels;
  for (std::size_t y = 0; y < bands.rows(); ++y) {
    for (std::size_t x = 0; x < bands.width(); ++x) {
      pixels += (bands.band(y / 8)[x] & (0x80 >> y % 8)) != 0 ? '\xFF' : '\0';
    }
  }
  return pixels;
}

TEST(DebugImageWriting, OfBandsIsThatOfTheirPixels) {
  const auto noMemory = [](std::size_t bytes) {
    return bytes > 512 ? wren::MallocBytes() : wren::printer::allocatePage(bytes);
  };
  for (const auto& size :
       {std::pair<std::size_t, std::size_t>{1, 1}, {8, 8}, {9, 15}, {33, 17}, {300, 41}}) {
    // No structured binding: clang before 16 refuses to capture one in a lambda.
    const std::size_t width = size.first;
    const std::size_t rows = size.second;
    const auto bands = makeBands(width, rows);
    const std::string pixels = pixelsOf(bands);
    const auto written = [&](auto write) {
      wren_test::CaptureFile file;
      write(fileno(file.stream()));
      std::fseek(file.stream(), 0, SEEK_END);
      return file.bytes();
    };
    PageMemory memory;
    const std::string expected = written([&](int file) {
      writeImage(file, {bytesOf(pixels), width, rows, width}, 1, memory);
    });
    PageMemory little(noMemory);
    EXPECT_TRUE(
        sameBytes(expected, written([&](int file) { writeBandImage(file, bands, memory); })));
    EXPECT_TRUE(
        sameBytes(expected, written([&](int file) { writeBandImage(file, bands, little); })))
        << width << " x " << rows << ", a band at a time";
  }
}

}  // namespace
