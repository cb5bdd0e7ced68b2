// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/png_file.h"

#include <gtest/gtest.h>

#include "tests/preview/png_reading.h"
#include "tests/preview/scratch_folder.h"

namespace wren::preview {
namespace {

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
