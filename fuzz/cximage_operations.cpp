// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Any sequence of operations on a small bitmap, against the reference implementation.
// Pixels that an operation leaves undefined are written before they are read.

#include <array>

#include "bitmap/cximage.h"
#include "fuzz/input.h"
#include "tests/reference/cximage.h"

namespace {

using fuzz::check;

constexpr std::uint32_t kDepths[] = {1, 4, 8, 24, 32, 0, 3, 5, 9};
constexpr std::uint32_t kSides[] = {0, 65536, 0x80000000U, 0xFFFFFFFFU};

tagRGBQUAD colorFrom(fuzz::Input& input) {
  return {input.byte(), input.byte(), input.byte(), input.byte()};
}

reference::tagRGBQUAD referenceColor(const tagRGBQUAD& c) {
  return {c.blue, c.green, c.red, c.reserved};
}

bool sameColor(const tagRGBQUAD& a, const reference::tagRGBQUAD& b) {
  return a.blue == b.blue && a.green == b.green && a.red == b.red && a.reserved == b.reserved;
}

// The two bitmaps, which must stay equal.
class Pair {
 public:
  void run(fuzz::Input& input) {
    switch (input.below(18)) {
      case 0:
        return create(input);
      case 1:
        return createFromArray(input);
      case 2:
        return same(fast_.Rotate180(nullptr), slow_.Rotate180(nullptr));
      case 3:
        return rotateAway();
      case 4:
        return mirror();
      case 5:
        return makeCenter(input);
      case 6:
        fast_.Negative();
        return slow_.Negative();
      case 7:
        return light(input);
      case 8:
        return lut(input);
      case 9:
        return increaseBpp(input);
      case 10:
        return dither(input);
      case 11:
        return setPixel(input);
      case 12:
        return nearest(input);
      case 13:
        return setPaletteColor(input);
      case 14:
        return setPalette(input);
      case 15:
        return transfer();
      case 16:
        fast_.SetGrayPalette();
        return slow_.SetGrayPalette();
      default:
        return same(fast_.Destroy(), slow_.Destroy());
    }
  }

  void compare() const {
    check(fast_.IsValid() == slow_.IsValid(), "both bitmaps are valid or neither");
    check(std::string(fast_.GetLastError()) == slow_.GetLastError(), "the same last error");
    check(fast_.GetWidth() == slow_.GetWidth() && fast_.GetHeight() == slow_.GetHeight(),
          "the same size");
    check(fast_.GetSize() == slow_.GetSize(), "the same number of bytes");
    check((fast_.GetPalette() == nullptr) == (slow_.GetPalette() == nullptr), "a palette or none");
    if (!fast_.IsValid()) return;
    comparePalettes();
    comparePixels();
  }

 private:
  static void same(bool a, bool b) { check(a == b, "the same answer"); }

  void comparePalettes() const {
    for (int i = 0; i < 256; ++i) {
      const auto index = static_cast<std::uint8_t>(i);
      check(sameColor(fast_.GetPaletteColor(index), slow_.GetPaletteColor(index)), "same palette");
    }
  }

  void comparePixels() const {
    for (std::int64_t y = 0; y < slow_.GetHeight(); ++y) {
      for (std::int64_t x = 0; x < slow_.GetWidth(); ++x) {
        check(fast_.GetPixelIndex(x, y) == slow_.GetPixelIndex(x, y), "the same pixels");
        check(fast_.BlindGetPixelIndex(x, y) == fast_.GetPixelIndex(x, y), "blind or not");
        check(sameColor(fast_.BlindGetPixelColor(x, y), slow_.BlindGetPixelColor(x, y)),
              "the same colours");
      }
    }
    // For a pixel outside the first byte is read, of which a narrow row leaves bits undefined.
    if (slow_.GetWidth() * slow_.header.bitsPerPixel < 8) return;
    check(fast_.GetPixelIndex(-1, 0) == slow_.GetPixelIndex(-1, 0), "the same pixel outside");
  }

  // A new image has undefined pixels.
  void fill(fuzz::Input& input) {
    const std::uint8_t start = input.byte();
    const std::uint8_t step = input.byte();
    const std::uint64_t bytes = std::uint64_t{slow_.info.effectiveWidth} * slow_.GetHeight();
    for (std::uint64_t i = 0; i < bytes; ++i) {
      const auto value = static_cast<std::uint8_t>(start + i * step);
      fast_.GetBits(0)[i] = value;
      slow_.GetBits(0)[i] = value;
    }
  }

  void create(fuzz::Input& input) {
    const bool odd = input.below(8) == 0;
    const std::uint32_t width = odd ? kSides[input.below(4)] : 1 + input.below(72);
    const std::uint32_t height = odd ? kSides[1 + input.below(3)] : 1 + input.below(40);
    const std::uint32_t depth = kDepths[input.below(9)];
    const std::uint32_t type = input.byte();
    const void* block = fast_.Create(width, height, depth, type);
    same(block != nullptr, slow_.Create(width, height, depth, type) != nullptr);
    if (block != nullptr) fill(input);
  }

  void createFromArray(fuzz::Input& input) {
    const std::uint32_t width = 1 + input.below(72);
    const std::uint32_t height = 1 + input.below(40);
    const std::uint32_t depth = kDepths[input.below(9)];
    // Complete rows: a shorter row leaves bytes undefined.
    const std::uint32_t bytesPerLine = (width * depth + 31) / 32 * 4 + input.below(3);
    const bool flip = input.below(2) == 1;
    const auto pixels = input.filling(std::size_t{bytesPerLine} * height);
    const std::uint8_t* source = input.below(16) == 15 ? nullptr : pixels.data();
    same(fast_.CreateFromArray(source, width, height, depth, bytesPerLine, flip),
         slow_.CreateFromArray(source, width, height, depth, bytesPerLine, flip));
  }

  void rotateAway() {
    CxImage fast;
    reference::CxImage slow;
    same(fast_.Rotate180(&fast), slow_.Rotate180(&slow));
    fast_.Transfer(fast);
    slow_.Transfer(slow);
  }

  // At other depths the result is undefined, and the two may differ.
  void mirror() {
    if (slow_.IsValid() && slow_.header.bitsPerPixel != 8) return mirrorAlone();
    fast_.Mirror();
    slow_.Mirror();
  }

  void mirrorAlone() {
    fast_.Mirror();
    fast_.Destroy();
    slow_.Destroy();
    const std::uint8_t pixel = 0;
    same(fast_.CreateFromArray(&pixel, 1, 1, 8, 1, false),
         slow_.CreateFromArray(&pixel, 1, 1, 8, 1, false));
  }

  // The margins are undefined.
  void makeCenter(fuzz::Input& input) {
    const std::int32_t width = slow_.GetWidth();
    const auto newWidth = static_cast<std::int32_t>(input.below(80)) - 4;
    fast_.MakeCenter(newWidth);
    slow_.MakeCenter(newWidth);
    if (!slow_.IsValid() || newWidth <= width) return;
    const std::int32_t left = (newWidth - width) / 2;
    for (std::int64_t y = 0; y < slow_.GetHeight(); ++y) {
      for (std::int64_t x = 0; x < newWidth; ++x) {
        if (x >= left && x < left + width) continue;
        fast_.SetPixelIndex(x, y, 77);
        slow_.SetPixelIndex(x, y, 77);
      }
    }
  }

  void light(fuzz::Input& input) {
    const auto brightness = static_cast<std::int32_t>(input.below(250)) * 8 - 1000;
    const auto contrast = static_cast<std::int32_t>(input.below(250)) * 2 - 250;
    same(fast_.Light(brightness, contrast), slow_.Light(brightness, contrast));
  }

  void lut(fuzz::Input& input) {
    const auto table = input.bytes(256);
    same(fast_.Lut(table.data()), slow_.Lut(table.data()));
    same(fast_.Lut(nullptr), slow_.Lut(nullptr));
  }

  void increaseBpp(fuzz::Input& input) {
    const std::uint32_t depth = kDepths[input.below(9)];
    same(fast_.IncreaseBpp(depth), slow_.IncreaseBpp(depth));
  }

  void dither(fuzz::Input& input) {
    const auto method = static_cast<std::int64_t>(input.below(11)) - 1;
    same(fast_.Dither(method), slow_.Dither(method));
  }

  void setPixel(fuzz::Input& input) {
    const auto x = static_cast<std::int64_t>(input.below(28)) - 2;
    const auto y = static_cast<std::int64_t>(input.below(16)) - 2;
    const std::uint8_t index = input.byte();
    fast_.SetPixelIndex(x, y, index);
    slow_.SetPixelIndex(x, y, index);
    if (!slow_.IsValid() || x < 0 || y < 0 || x >= slow_.GetWidth() || y >= slow_.GetHeight()) {
      return;
    }
    const tagRGBQUAD color = colorFrom(input);
    fast_.BlindSetPixelColor(x, y, color);
    slow_.BlindSetPixelColor(x, y, referenceColor(color));
  }

  void nearest(fuzz::Input& input) {
    const tagRGBQUAD color = colorFrom(input);
    check(fast_.GetNearestIndex(color) == slow_.GetNearestIndex(referenceColor(color)),
          "same nearest");
  }

  void setPaletteColor(fuzz::Input& input) {
    const std::uint8_t index = input.byte();
    const tagRGBQUAD c = colorFrom(input);
    fast_.SetPaletteColor(index, c.red, c.green, c.blue, c.reserved);
    slow_.SetPaletteColor(index, c.red, c.green, c.blue, c.reserved);
  }

  void setPalette(fuzz::Input& input) {
    std::array<tagRGBQUAD, 40> entries = {};
    std::array<reference::tagRGBQUAD, 40> referenceEntries = {};
    const std::uint32_t count = input.below(41);
    for (std::uint32_t i = 0; i < count; ++i) {
      entries[i] = colorFrom(input);
      referenceEntries[i] = referenceColor(entries[i]);
    }
    fast_.SetPalette(entries.data(), count);
    slow_.SetPalette(referenceEntries.data(), count);
  }

  void transfer() {
    CxImage fast;
    reference::CxImage slow;
    fast.Transfer(fast_);
    slow.Transfer(slow_);
    compare();
    fast_.Transfer(fast);
    slow_.Transfer(slow);
  }

  CxImage fast_;
  reference::CxImage slow_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  Pair pair;
  while (input.left() > 0) {
    pair.run(input);
    pair.compare();
  }
  return 0;
}
