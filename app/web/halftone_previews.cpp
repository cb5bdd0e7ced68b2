// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/web/halftone_previews.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdio>
#include <future>
#include <span>
#include <thread>
#include <vector>

#include "app/print_job.h"
#include "common/memory_file.h"
#include "escpos/reader.h"
#include "preview/paper_picture.h"
#include "preview/png_file.h"

namespace wren::app::web {
namespace {

constexpr double kMillimetresPerInch = 25.4;

std::span<const std::uint8_t> asBytes(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::uint64_t dotsOf(const escpos::Paper& paper) {
  std::uint64_t dots = 0;
  for (const escpos::Stripe& stripe : paper.stripes) {
    for (const std::uint8_t column : stripe.columns) {
      dots += static_cast<std::uint64_t>(std::popcount(column)) * stripe.columnWidthDots;
    }
  }
  return dots;
}

double shareOf(std::uint64_t dots, std::uint64_t places) {
  return places == 0 ? 0.0 : static_cast<double>(dots) / static_cast<double>(places);
}

}  // namespace

std::string printedBytes(const GreyPages& pages, const JobSettings& settings,
                         const PageTarget& target) {
  MemoryFile out;
  PrintJob::Surroundings surroundings;
  surroundings.out = out.stream();
  PrintJob job({.settings = settings, .target = target}, surroundings);
  job.finish(sendPages(pages, job));
  return out.take();
}

std::string digestOf(const std::string& bytes) {
  std::uint64_t hash = 0xCBF29CE484222325U;
  for (const char byte : bytes) {
    hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
  }
  std::array<char, 17> text;
  std::snprintf(text.data(), text.size(), "%016llx", static_cast<unsigned long long>(hash));
  return text.data();
}

Preview previewOf(const std::string& bytes, unsigned headWidthPx) {
  escpos::Reader reader;
  reader.feed(asBytes(bytes));
  reader.finish();
  escpos::Paper paper = reader.printer().paper();
  // Blank paper is as wide as any other.
  paper.widthDots = std::max(paper.widthDots, headWidthPx);
  const escpos::Piece whole = escpos::wholeStrip(paper);
  preview::PaperPicture picture(paper, whole, {});
  Preview preview;
  preview::PngRules rules;
  rules.isFast = true;
  preview.png = preview::pngBytes(picture, rules);
  preview.bytes = bytes.size();
  preview.digest = digestOf(bytes);
  preview.lengthMm = static_cast<double>(paper.lengthUnits) / escpos::kUnitsPerRow *
                     kMillimetresPerInch / kDotsPerInch;
  preview.blackShare = shareOf(dotsOf(paper), whole.rows.end * paper.widthDots);
  return preview;
}

std::array<Preview, kHalftoneCount> drawPreviews(const GreyPages& pages,
                                                 const JobSettings& settings,
                                                 const PageTarget& target) {
  std::array<Preview, kHalftoneCount> previews;
  // From the last one on: the stencil takes longest.
  std::atomic<int> left = kHalftoneCount;
  const auto work = [&] {
    for (int method = --left; method >= 0; method = --left) {
      JobSettings ofMethod = settings;
      ofMethod.core.halftoneType = static_cast<DitherType>(method);
      previews[static_cast<std::size_t>(method)] =
          previewOf(printedBytes(pages, ofMethod, target), target.headWidthPx);
    }
  };
  std::vector<std::future<void>> others;
  const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 1U, 4U);
  for (unsigned i = 1; i < threads; ++i) others.push_back(std::async(std::launch::async, work));
  work();
  for (std::future<void>& other : others) other.get();
  return previews;
}

}  // namespace wren::app::web
