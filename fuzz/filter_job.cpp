// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A whole job from arbitrary bytes. The input is the job options, a zero byte, the PPD, a zero
// byte, the raster stream; or `kFieldsMark`, the settings, the fields of the raster stream. The
// printer bytes are compared with those of the reference implementation for the settings and pages
// that CUPS reads.

#include <cups/raster.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "filter/raster_input.h"
#include "filter/settings.h"
#include "fuzz/input.h"
#include "fuzz/memory_file.h"
#include "fuzz/raster_fields.h"
#include "job/job.h"
#include "job/option_table.h"
#include "printer/dot_matrix_ep_printer.h"
#include "tests/reference/job.h"

namespace {

using fuzz::check;

// Large enough to reach all code of a page, small enough to be fast.
constexpr std::uint64_t kMostPageBytes = 1 << 13;
constexpr std::size_t kMostPages = 4;

// Passes on and records the pages of a stream. Ends the job at a page above `kMostPageBytes`, which
// would only take time, but passes on pages that are too large to be printed.
class RecordedPages : public wren::job::PageSource {
 public:
  explicit RecordedPages(wren::job::PageSource& source) : source_(source) {}

  bool readHeader(cups_page_header2_s& header) override {
    if (pages.size() == kMostPages || !source_.readHeader(header)) return false;
    const std::uint64_t bytes = std::uint64_t{header.cupsBytesPerLine} * header.cupsHeight;
    if (bytes > kMostPageBytes && bytes <= 0x7FFFFFFF && header.cupsBitsPerPixel == 8) return false;
    reference::Page page;
    page.bitsPerPixel = header.cupsBitsPerPixel;
    page.bytesPerLine = header.cupsBytesPerLine;
    page.width = header.cupsWidth;
    page.height = header.cupsHeight;
    page.hwResolutionX = header.HWResolution[0];
    page.numCopies = header.NumCopies;
    page.readable = false;
    pages.push_back(page);
    return true;
  }

  bool readPixels(std::uint8_t* pixels, unsigned size) override {
    if (!source_.readPixels(pixels, size)) return false;
    pages.back().readable = true;
    pages.back().pixels.assign(pixels, pixels + size);
    return true;
  }

  std::vector<reference::Page> pages;

 private:
  wren::job::PageSource& source_;
};

reference::JobSettings referenceSettings(const Settings& s) {
  reference::JobSettings result;
  result.pageWidth = s.pageWidth;
  result.pageHeight = s.pageHeight;
  result.maxMediaWidth = s.maxMediaWidth;
  result.pageType = s.pageType;
  result.bidiPrinting = s.bidiPrinting;
  result.pageCutType = s.pageCutType;
  result.docCutType = s.docCutType;
  result.buzzer1Setting = s.buzzer1Setting;
  result.buzzer1OnTime = s.buzzer1OnTime;
  result.buzzer1Repeat = s.buzzer1Repeat;
  result.buzzer2Setting = s.buzzer2Setting;
  result.buzzer2OnTime = s.buzzer2OnTime;
  result.buzzer2Repeat = s.buzzer2Repeat;
  result.cashDrawerSetting = s.cashDrawerSetting;
  result.cashDrawerPulseWidth = s.cashDrawerPulseWidth;
  result.feedCutAfterJobEnd = s.feedCutAfterJobEnd;
  result.brightness = s.brightness;
  result.halftoneType = s.halftoneType;
  return result;
}

// One beyond the choices that a printer offers at either end, or any number.
std::int32_t valueOf(const wren::job::NumericOption& option, fuzz::Input& input) {
  const std::uint8_t choice = input.byte();
  if (choice == 255) return static_cast<std::int32_t>(input.word());
  const std::int32_t choices = option.highest - option.lowest + 3;
  return option.lowest - 1 + choice % choices;
}

// Only the options are read for which the first word has a bit.
Settings settingsFrom(fuzz::Input& input) {
  constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
  constexpr double kWidthsPt[] = {0,    136.5, 204.5, 295.5, 72,          0.3,
                                  -1.0, 1e18,  1e300, 24.0,  kNotANumber, 204};
  const std::uint32_t given = input.word();
  const auto isGiven = [given](std::size_t bit) { return (given >> bit & 1) != 0; };
  Settings settings;
  settings.maxMediaWidth = kWidthsPt[input.below(std::size(kWidthsPt))];
  settings.halftoneType = static_cast<DitherType>(input.below(9));
  std::size_t bit = 0;
  for (const auto& option : wren::job::kIndexedOptions) {
    if (isGiven(bit++)) settings.*option.field = valueOf(option, input);
  }
  if (isGiven(bit++)) settings.brightness = valueOf(wren::job::kBrightnessOption, input);
  settings.debugImages = isGiven(bit);
  return settings;
}

void printJob(const Settings& settings, int descriptor) {
  static fuzz::MemoryFile output;
  output.clear();
  BandPrinter printer;
  printer.setDebugImageFolder("/nonexistent/");
  wren::filter::RasterInput raster(descriptor, {});
  RecordedPages source(raster);
  bool success = false;
  {
    const wren::FilePtr out(fdopen(dup(output.descriptor()), "w"));
    wren::job::Job job(settings, printer, out.get());
    job.begin();
    success = job.printPages(source);
  }

  const reference::JobResult expected =
      reference::runJob(referenceSettings(settings), source.pages);
  check(output.content() == reference::bytesOf(expected.commands),
        "the printer bytes are those of the reference implementation");
  check(success == (expected.status == 0), "success means that a page was printed");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::MemoryFile ppd;
  static fuzz::MemoryFile raster;
  fuzz::Input input(data, size);
  if (input.takeFieldsMark()) {
    const Settings settings = settingsFrom(input);
    const std::vector<std::uint8_t> stream = fuzz::rasterFromFields(input);
    raster.fill(stream.data(), stream.size());
    printJob(settings, raster.descriptor());
    return 0;
  }
  const std::string options = input.text();
  const std::string ppdText = input.text();
  const std::vector<std::uint8_t> rasterBytes = input.rest();
  ppd.fill(ppdText.data(), ppdText.size());
  raster.fill(rasterBytes.data(), rasterBytes.size());
  setenv("PPD", ppd.path().c_str(), 1);
  Settings settings;
  if (!initializeSettings(options.c_str(), &settings)) return 0;
  printJob(settings, raster.descriptor());
  return 0;
}
