// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "job/self_test_page.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "common/glyphs.h"
#include "common/halftone_type.h"
#include "job/option_table.h"
#include "job/self_test_codes.h"
#include "printer/page_dots.h"
#include "printer/page_geometry.h"

namespace wren::job {
namespace {

constexpr std::uint8_t kInk = 255;

constexpr std::uint32_t kFewestDots = 96;
constexpr std::uint32_t kMostDots = 4096;
constexpr std::uint32_t kDotsWithoutLimit = 576;

constexpr std::uint32_t kLine = kGlyphRows + 2;
constexpr std::uint32_t kGap = 24;
constexpr std::uint32_t kSmallGap = 8;
constexpr std::uint32_t kRampRows = 40;
constexpr std::uint32_t kGridMm = 20;

constexpr std::uint32_t kBarModuleDots = 2;
constexpr std::uint32_t kBarRows = 80;
constexpr std::uint32_t kBarQuietModules = 10;
constexpr std::uint32_t kQrModuleDots = 6;
constexpr std::uint32_t kQrQuietModules = 4;

/// The print heads that there are PPDs for.
struct Head {
  std::uint32_t dots;
  const char* text;
};
constexpr std::array<Head, 3> kHeads = {{
    {384, "384 dots: 58 mm paper"},
    {576, "576 dots: 80 mm paper"},
    {832, "832 dots: 112 mm paper"},
}};

/// The method that prints for each halftone type, in their order.
constexpr std::array<const char*, 9> kPrintedMethods = {
    "threshold", "ordered",         "Burkes", "Stucki", "Jarvis et al.",
    "Sierra",    "Stevenson, Arce", "Bayer",  "stencil"};

/// The first dot at or after a distance from the edge, to the nearest dot.
constexpr std::uint32_t dotsOf(std::uint32_t mm) {
  return (mm * kSelfTestDpi * 10 + 127) / 254;
}

/// Millimetres with one decimal.
std::string millimetres(std::uint32_t dots) {
  const std::uint32_t tenths = (dots * 254 + kSelfTestDpi / 2) / kSelfTestDpi;
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " mm";
}

/// A strip of grey levels as wide as the page. What lies outside it is not drawn.
class Strip {
 public:
  Strip(std::uint32_t width, std::uint32_t height)
      : width_(width), height_(height), levels_(std::size_t{width} * height) {}

  std::uint32_t width() const { return width_; }
  std::uint32_t height() const { return height_; }

  void set(std::uint32_t x, std::uint32_t y, std::uint8_t level) {
    if (x < width_ && y < height_) levels_[std::size_t{y} * width_ + x] = level;
  }

  void fill(std::uint32_t left, std::uint32_t top, std::uint32_t width, std::uint32_t height) {
    for (std::uint32_t y = top; y < top + height; ++y) {
      for (std::uint32_t x = left; x < left + width; ++x) set(x, y, kInk);
    }
  }

  /// @param scale dots to a side of a font pixel.
  void text(std::uint32_t left, std::uint32_t top, std::string_view text, std::uint32_t scale = 1) {
    const auto columns = static_cast<std::uint32_t>(text.size() * kGlyphAdvance);
    for (std::uint32_t y = 0; y < kGlyphRows; ++y) {
      for (std::uint32_t x = 0; x < columns; ++x) {
        if (textPixel(text, x, y)) fill(left + x * scale, top + y * scale, scale, scale);
      }
    }
  }

  printer::GreyPage page() const { return {levels_.data(), width_, width_, height_}; }

 private:
  std::uint32_t width_;
  std::uint32_t height_;
  std::vector<std::uint8_t> levels_;
};

/// The page, from top to bottom.
class Roll {
 public:
  explicit Roll(std::uint32_t width) { page_.widthPx = width; }

  std::uint32_t width() const { return page_.widthPx; }

  void add(const Strip& strip, DitherType type = None) {
    const std::size_t start = page_.dots.size();
    page_.dots.resize(start + std::size_t{strip.width()} * strip.height());
    printer::DotOptions options;
    options.stencil = type == QVDithering;
    options.method = type;
    printer::makePageDots(options, strip.page(), page_.dots.data() + start, {});
    page_.heightPx += strip.height();
  }

  void addText(std::string_view text) {
    Strip strip(width(), kLine);
    strip.text(0, 0, text);
    add(strip);
  }

  void addGap(std::uint32_t rows = kGap) { add(Strip(width(), rows)); }

  SelfTestPage take() { return std::move(page_); }

 private:
  SelfTestPage page_;
};

void addTitle(Roll& roll, const Settings& settings) {
  Strip title(roll.width(), 2 * kLine);
  title.text(0, 0, "Wren self-test", 2);
  roll.add(title);
  std::string line = "Wren " WREN_VERSION;
  if (settings.modelNumber > 0) line += ", " + std::to_string(settings.modelNumber) + " mm paper";
  roll.addText(line);
  roll.addGap();
}

// From the first dot to the last, with an upright stroke at either end.
void addWidth(Roll& roll, std::uint32_t dots, std::string_view text) {
  roll.addText(text);
  Strip strip(roll.width(), kGap);
  strip.fill(0, 7, dots, 2);
  strip.fill(0, 0, 2, 16);
  strip.fill(dots - 2, 0, 2, 16);
  roll.add(strip);
}

void addWidths(Roll& roll) {
  const std::uint32_t width = roll.width();
  addWidth(roll, width, "Width: " + std::to_string(width) + " dots, " + millimetres(width));
  for (const Head& head : kHeads) {
    if (head.dots < width) addWidth(roll, head.dots, head.text);
  }
}

// Thicker lines at each 5 and each 10 mm.
std::uint32_t lineDots(std::uint32_t mm) {
  return mm % 10 == 0 ? 3 : (mm % 5 == 0 ? 2 : 1);
}

void addGrid(Roll& roll) {
  roll.addText("Grid in mm, " + std::to_string(kSelfTestDpi) + " dpi");
  Strip strip(roll.width(), dotsOf(kGridMm) + 3 + kLine);
  for (std::uint32_t mm = 0; dotsOf(mm) < strip.width(); ++mm) {
    strip.fill(dotsOf(mm), kLine, lineDots(mm), dotsOf(kGridMm) + 3);
    if (mm % 10 == 0) strip.text(dotsOf(mm), 0, std::to_string(mm));
  }
  for (std::uint32_t mm = 0; mm <= kGridMm; ++mm) {
    strip.fill(0, kLine + dotsOf(mm), strip.width(), lineDots(mm));
  }
  roll.add(strip);
  roll.addGap();
}

// From paper on the left to full ink on the right.
Strip rampOf(std::uint32_t width) {
  Strip ramp(width, kRampRows);
  for (std::uint32_t y = 0; y < kRampRows; ++y) {
    for (std::uint32_t x = 0; x < width; ++x) {
      ramp.set(x, y, static_cast<std::uint8_t>(x * kInk / (width - 1)));
    }
  }
  return ramp;
}

void addRamps(Roll& roll) {
  const Strip ramp = rampOf(roll.width());
  for (std::size_t i = 0; i < kPrintedMethods.size(); ++i) {
    const auto type = static_cast<DitherType>(i);
    roll.addText(std::string(wrenHalftoneTypeToStr(type)) + ": " + kPrintedMethods[i]);
    roll.add(ramp, type);
    roll.addGap(kSmallGap);
  }
  roll.addGap();
}

std::vector<std::string> settingsLines(const Settings& settings) {
  std::vector<std::string> lines;
  for (const NumericOption& option : kIndexedOptions) {
    const std::int32_t value = settings.*option.field;
    lines.push_back(std::string(option.keyword) + " " +
                    (value == kAbsentOption ? "-" : std::to_string(value)));
  }
  lines.push_back(std::string(kBrightnessOption.keyword) + " " +
                  std::to_string(settings.*kBrightnessOption.field));
  lines.push_back(std::string(kHalftoneTypeOption) + " " +
                  wrenHalftoneTypeToStr(settings.halftoneType));
  lines.push_back(std::string(kDebugImagesOption) + " " +
                  (settings.debugImages ? "On" : kDebugImagesOff));
  return lines;
}

void addSettings(Roll& roll, const Settings& settings) {
  constexpr std::size_t kColumnDots = std::size_t{32} * kGlyphAdvance;
  const std::vector<std::string> lines = settingsLines(settings);
  const std::size_t columns = std::max<std::size_t>(1, roll.width() / kColumnDots);
  const std::size_t rows = (lines.size() + columns - 1) / columns;
  Strip strip(roll.width(), static_cast<std::uint32_t>(rows * kLine));
  for (std::size_t i = 0; i < lines.size(); ++i) {
    strip.text(static_cast<std::uint32_t>(i / rows * kColumnDots),
               static_cast<std::uint32_t>(i % rows * kLine), lines[i]);
  }
  roll.add(strip);
  roll.addGap();
}

constexpr std::uint32_t barCodeDots() {
  return (static_cast<std::uint32_t>(kBarCodeModules.size()) + 2 * kBarQuietModules) *
         kBarModuleDots;
}

// The text below a code, in the middle of the page.
void addCaption(Roll& roll, std::string_view text) {
  Strip strip(roll.width(), kLine);
  const auto dots = static_cast<std::uint32_t>(text.size() * kGlyphAdvance);
  strip.text((roll.width() - dots) / 2, 0, text);
  roll.add(strip);
}

void addBarCode(Roll& roll) {
  Strip strip(roll.width(), kBarRows);
  const std::uint32_t left = (roll.width() - barCodeDots()) / 2 + kBarQuietModules * kBarModuleDots;
  for (std::uint32_t i = 0; i < kBarCodeModules.size(); ++i) {
    if (kBarCodeModules[i] == '1')
      strip.fill(left + i * kBarModuleDots, 0, kBarModuleDots, kBarRows);
  }
  roll.add(strip);
  addCaption(roll, kBarCodeText);
}

void addQrCode(Roll& roll) {
  const auto modules = static_cast<std::uint32_t>(kQrCodeRows.size());
  const std::uint32_t quiet = kQrQuietModules * kQrModuleDots;
  const std::uint32_t left = (roll.width() - modules * kQrModuleDots) / 2;
  Strip strip(roll.width(), modules * kQrModuleDots + 2 * quiet);
  for (std::uint32_t y = 0; y < modules; ++y) {
    for (std::uint32_t x = 0; x < modules; ++x) {
      if (kQrCodeRows[y][x] != '1') continue;
      strip.fill(left + x * kQrModuleDots, quiet + y * kQrModuleDots, kQrModuleDots, kQrModuleDots);
    }
  }
  roll.add(strip);
  addCaption(roll, kQrCodeText);
}

std::uint32_t widthOf(const Settings& settings) {
  const std::uint64_t dots = printer::printableWidthPx(settings.maxMediaWidth, kSelfTestDpi);
  if (dots == 0) return kDotsWithoutLimit;
  return static_cast<std::uint32_t>(std::clamp<std::uint64_t>(dots, kFewestDots, kMostDots));
}

}  // namespace

SelfTestPage drawSelfTestPage(const Settings& settings) {
  Roll roll(widthOf(settings));
  addTitle(roll, settings);
  addWidths(roll);
  addGrid(roll);
  addRamps(roll);
  addSettings(roll, settings);
  if (roll.width() >= barCodeDots()) {
    addBarCode(roll);
    addQrCode(roll);
  }
  return roll.take();
}

}  // namespace wren::job
