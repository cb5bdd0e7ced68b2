// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Pages as a client of the printer application describes and sends them: a header that is
// refused in words, or a page that becomes bytes which the decoder knows.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "app/print_job.h"
#include "app/raster_pages.h"
#include "escpos/reader.h"
#include "fuzz/input.h"

namespace {

using wren::app::PageTarget;
using wren::app::PrintJob;

// Small, so that an input needs little time; the limits are the input's own.
constexpr unsigned kMostRows = 300;
constexpr unsigned kMostPages = 4;

PageTarget targetFrom(fuzz::Input& input) {
  constexpr unsigned kHeads[] = {384, 576, 832};
  constexpr unsigned kPapers[] = {464, 640, 896};
  const std::uint32_t paper = input.below(3);
  return {.headWidthPx = kHeads[paper],
          .paperWidthPx = kPapers[paper],
          .fitWidePages = input.below(2) == 0,
          .maxHeightPx = kMostRows};
}

// Mostly the header of a page that prints: each bit of the first byte leaves one field to the
// input.
cups_page_header2_s headerFrom(fuzz::Input& input) {
  const std::uint8_t wild = input.byte();
  const auto value = [&](int bit, std::uint32_t good) {
    return (wild >> bit & 1) == 0 ? good : input.word();
  };
  cups_page_header2_s header = {};
  const std::uint32_t low = input.byte();
  header.cupsWidth = value(0, 1 + low + 256 * input.below(8));
  header.cupsHeight = value(1, 1 + input.byte());
  header.cupsBytesPerLine = value(2, header.cupsWidth);
  header.HWResolution[0] = value(3, 203);
  header.HWResolution[1] = value(4, 203);
  header.cupsBitsPerPixel = value(5, 8);
  header.cupsBitsPerColor = value(6, 8);
  const cups_cspace_t good = input.below(2) == 0 ? CUPS_CSPACE_K : CUPS_CSPACE_SW;
  // Not by a cast: the type does not have every number.
  const std::uint32_t space = value(7, good);
  std::memcpy(&header.cupsColorSpace, &space, sizeof header.cupsColorSpace);
  return header;
}

PrintJob::Plan planFrom(fuzz::Input& input) {
  PrintJob::Plan plan;
  plan.target = targetFrom(input);
  plan.settings.core.halftoneType = static_cast<DitherType>(input.below(9));
  plan.settings.core.pageCutType = static_cast<std::int32_t>(input.below(3));
  plan.settings.contrast = static_cast<std::int32_t>(input.below(201)) - 100;
  plan.settings.longestGapMm = input.below(4);
  plan.copies = 1 + input.below(3);
  return plan;
}

/// The stream that a job prints to.
class Stream {
 public:
  Stream() : file_(open_memstream(&text_, &size_)) {
    fuzz::check(file_ != nullptr, "a file in memory can be made");
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() {
    std::fclose(file_);
    std::free(text_);
  }
  std::FILE* file() const { return file_; }
  std::vector<std::uint8_t> bytes() const {
    std::fflush(file_);
    return {text_, text_ + size_};
  }

 private:
  char* text_ = nullptr;
  std::size_t size_ = 0;
  std::FILE* file_;
};

// As the callbacks of the application do. @return whether the page was sent whole.
bool sendPage(fuzz::Input& input, const PageTarget& target, PrintJob& job) {
  const cups_page_header2_s header = headerFrom(input);
  if (!wren::app::rasterFault(header, target).empty()) return false;
  fuzz::check(header.cupsHeight <= target.maxHeightPx, "a page that is accepted fits into memory");
  fuzz::check(job.beginPage(header.cupsWidth, header.cupsHeight), "a good job takes a page");
  const bool isCutOff = input.below(8) == 1;
  const unsigned rows = isCutOff ? input.byte() % header.cupsHeight : header.cupsHeight;
  for (unsigned y = 0; y < rows; ++y) {
    std::vector<std::uint8_t> row = input.filling(header.cupsBytesPerLine);
    wren::app::toInk(header, row);
    job.addRow(row.data());
  }
  const bool isPrinted = job.endPage();
  fuzz::check(isPrinted == !isCutOff, "a page prints if it is whole");
  return isPrinted;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const PrintJob::Plan plan = planFrom(input);
  const Stream out;
  PrintJob::Surroundings surroundings;
  surroundings.out = out.file();
  PrintJob job(plan, surroundings);
  unsigned good = 0;
  bool isGood = true;
  for (unsigned page = 0; isGood && page < kMostPages && input.left() > 0; ++page) {
    isGood = sendPage(input, plan.target, job);
    if (isGood) ++good;
  }
  const bool isWhole = job.finish(isGood);
  const std::vector<std::uint8_t> bytes = out.bytes();
  fuzz::check(bytes.empty() == (good == 0), "a job without a good page writes nothing");
  fuzz::check(isWhole == (isGood && good > 0), "a job is whole if its pages are");
  fuzz::check(job.pagesPrinted() == good * (isWhole ? plan.copies : 1), "each copy has each page");
  fuzz::check(wren::escpos::readAll(bytes).problems.empty(), "the decoder knows the bytes");
  return 0;
}
