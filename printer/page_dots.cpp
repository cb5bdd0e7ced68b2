// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/page_dots.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "dither/dither_page.h"
#include "dither/level_rows.h"
#include "dither/page.h"
#include "dither/tone_table.h"
#include "printer/page_memory.h"
#include "stencil/stencil_page.h"

namespace wren::printer {
namespace {

using dither::ToneTable;

// What the tone curve takes per unit of the options.
constexpr int kBrightnessFactor = 5;
constexpr int kContrastFactor = 2;

std::uint8_t flipOf(const DotOptions& options) {
  return options.negative ? 0xFF : 0;
}

// The address one past the last byte of the page; the last row may end at its width.
const std::uint8_t* endOf(const std::uint8_t* start, const GreyPage& page) {
  return start + (page.height - 1) * page.strideBytes + page.width;
}

bool overlap(const GreyPage& page, const std::uint8_t* out) {
  return out < endOf(page.levels, page) && page.levels < endOf(out, page);
}

// Every page is read from a buffer of its own: the rows may be read in another order than
// that in which the dots are written.
class SeparateLevels {
 public:
  SeparateLevels(const GreyPage& page, const std::uint8_t* out) : page_(page) {
    if (!overlap(page, out)) return;
    const auto bytes = static_cast<std::size_t>(endOf(page.levels, page) - page.levels);
    copy_.assign(page.levels, page.levels + bytes);
    page_.levels = copy_.data();
  }
  const GreyPage& page() const { return page_; }

 private:
  GreyPage page_;
  std::vector<std::uint8_t> copy_;
};

// The page and its options in the terms of dither/. `tone` has to outlive the result.
dither::Page ditherPageOf(const DotOptions& options, const GreyPage& page, std::uint8_t* out,
                          ToneTable& tone) {
  const auto stride = static_cast<std::ptrdiff_t>(page.strideBytes);
  dither::Page job;
  // A rotated page is read from its last row up, each row from its right end.
  job.levels = options.rotate180 ? page.levels + (page.height - 1) * page.strideBytes : page.levels;
  job.levelStrideBytes = options.rotate180 ? -stride : stride;
  job.mirrored = options.rotate180 != options.mirror;
  job.dots = out;
  job.dotStrideBytes = stride;
  job.width = page.width;
  job.height = page.height;
  job.inverted = options.negative;
  if (options.brightness != 0 || options.contrast != 0) {
    tone = dither::makeToneTable(options.brightness * kBrightnessFactor,
                                 options.contrast * kContrastFactor);
    job.tone = tone.data();
  }
  return job;
}

// Writes the levels, with tone and orientation, to the place of the dots.
void layOutLevels(const dither::Page& job) {
  const dither::LevelRows rows(job);
  for (std::size_t y = 0; y < job.height; ++y) rows.levelsInPlace(y);
}

void runStencil(const std::uint8_t* levels, const dither::Page& job, std::uint8_t* out,
                CancelCheck cancel) {
  const auto width = static_cast<std::ptrdiff_t>(job.width);
  stencil::stencilPage(levels, width, static_cast<int>(job.width), static_cast<int>(job.height),
                       {out, width}, cancel);
}

// The bytes of the rows beyond their width. The stencil method reads them as 0, and the caller
// finds their old values afterwards.
class RowTails {
 public:
  explicit RowTails(const dither::Page& job)
      : job_(job),
        tailBytes_(static_cast<std::size_t>(job.dotStrideBytes) - job.width),
        old_(tailBytes_ * (job.height - 1)) {
    for (std::size_t y = 0; y + 1 < job_.height; ++y) {
      std::memcpy(oldTail(y), tailOf(y), tailBytes_);
      std::memset(tailOf(y), 0, tailBytes_);
    }
  }
  RowTails(const RowTails&) = delete;
  RowTails& operator=(const RowTails&) = delete;
  ~RowTails() {
    for (std::size_t y = 0; y + 1 < job_.height; ++y) {
      std::memcpy(tailOf(y), oldTail(y), tailBytes_);
    }
  }

 private:
  std::uint8_t* tailOf(std::size_t y) const {
    return job_.dots + y * (job_.width + tailBytes_) + job_.width;
  }
  std::uint8_t* oldTail(std::size_t y) { return old_.data() + y * tailBytes_; }

  const dither::Page& job_;
  std::size_t tailBytes_;
  std::vector<std::uint8_t> old_;
};

// Printed output depends on the stencil method taking the first width * height bytes of such a
// page as its pixels, whatever the stride. The result is read at the index at which it was
// written, and what would be read past its end is 0.
void runStencilOnPaddedRows(const dither::Page& job, CancelCheck cancel) {
  const RowTails tails(job);
  layOutLevels(job);
  runStencil(job.dots, job, job.dots, cancel);
  const std::size_t pixels = job.width * job.height;
  for (std::size_t y = 0; y < job.height; ++y) {
    const std::size_t start = y * static_cast<std::size_t>(job.dotStrideBytes);
    const std::size_t known = std::min(job.width, pixels - std::min(start, pixels));
    std::memset(job.dots + start + known, 0, job.width - known);
  }
}

void flipRows(const dither::Page& job) {
  for (std::size_t y = 0; y < job.height; ++y) {
    std::uint8_t* row = job.dots + static_cast<std::ptrdiff_t>(y) * job.dotStrideBytes;
    for (std::size_t x = 0; x < job.width; ++x) row[x] ^= 0xFF;
  }
}

void makeStencilDots(const dither::Page& job, CancelCheck cancel) {
  const auto width = static_cast<std::ptrdiff_t>(job.width);
  if (job.dotStrideBytes != width) {
    runStencilOnPaddedRows(job, cancel);
  } else if (job.tone != nullptr || job.mirrored || job.levelStrideBytes != width) {
    layOutLevels(job);
    runStencil(job.dots, job, job.dots, cancel);
  } else {
    runStencil(job.levels, job, job.dots, cancel);
  }
  if (job.inverted) flipRows(job);
}

void drawNoDots(const GreyPage& page, std::uint8_t flip, std::uint8_t* out) {
  for (std::size_t y = 0; y < page.height; ++y) {
    std::memset(out + y * page.strideBytes, flip, page.width);
  }
}

}  // namespace

bool makePageDots(const DotOptions& options, const GreyPage& page, std::uint8_t* out,
                  CancelCheck cancel) {
  const bool isPrintable = page.levels != nullptr && hasPrintableSize(page.width, page.height);
  if (page.strideBytes < page.width) return isPrintable;
  if (!isPrintable) {
    drawNoDots(page, flipOf(options), out);
    return false;
  }
  const SeparateLevels levels(page, out);
  ToneTable tone;
  const dither::Page job = ditherPageOf(options, levels.page(), out, tone);
  if (options.stencil) {
    makeStencilDots(job, cancel);
  } else {
    while (!dither::ditherPage(options.method, job)) askForMemory();
  }
  return true;
}

namespace {

bool needsNoCopy(const DotOptions& options) {
  return options.brightness == 0 && options.contrast == 0 && !options.rotate180 &&
         !options.mirror && !options.negative;
}

void makeStencilDotRows(const GreyPage& page, const DotRing& ring, CancelCheck cancel) {
  const auto width = static_cast<std::ptrdiff_t>(page.width);
  stencil::stencilPage(page.levels, width, static_cast<int>(page.width),
                       static_cast<int>(page.height),
                       {ring.rows, width, kDotRingRows, ring.finished}, cancel);
}

}  // namespace

bool canMakeDotRows(const DotOptions& options, const GreyPage& page) {
  return page.levels != nullptr && hasPrintableSize(page.width, page.height) &&
         page.strideBytes == page.width && (!options.stencil || needsNoCopy(options));
}

void makeDotRows(const DotOptions& options, const GreyPage& page, std::uint32_t rows,
                 const DotRing& ring, CancelCheck cancel) {
  if (options.stencil) {
    makeStencilDotRows(page, ring, cancel);
    return;
  }
  ToneTable tone;
  dither::Page job = ditherPageOf(options, page, ring.rows, tone);
  job.height = rows;
  job.dotRows = kDotRingRows;
  job.finished = ring.finished;
  while (!dither::ditherPage(options.method, job)) askForMemory();
}

}  // namespace wren::printer
