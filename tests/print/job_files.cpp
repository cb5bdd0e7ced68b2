// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/print/job_files.h"

#include <cups/raster.h>
#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <stdexcept>

namespace job_files {

namespace {

// Null if the PPD has no such option.
reference::PpdOption* findOption(reference::JobOptions& options, const std::string& keyword) {
  for (auto& option : options.ppd) {
    if (option.keyword == keyword) return &option;
  }
  return nullptr;
}

void readPpdLine(const std::string& line, reference::JobOptions& options) {
  static const std::regex open(R"(\*OpenUI \*(\w+)[/:].*)");
  static const std::regex fallback(R"(\*Default(\w+): *(\S+))");
  static const std::regex choice(R"(\*(\w+) ([^/:" ]+)[/:].*)");
  static const std::regex width(R"re(\*MaxMediaWidth: *"([^"]*)")re");
  std::smatch match;
  if (std::regex_match(line, match, open)) {
    options.ppd.push_back({match[1], {}, {}});
  } else if (std::regex_match(line, match, width)) {
    options.maxMediaWidth = match[1];
  } else if (std::regex_match(line, match, fallback)) {
    auto* option = findOption(options, match[1]);
    if (option != nullptr) option->defaultChoice = match[2];
  } else if (std::regex_match(line, match, choice)) {
    auto* option = findOption(options, match[1]);
    if (option != nullptr) option->choices.push_back(match[2]);
  }
}

reference::Page readPage(cups_raster_t* raster, const cups_page_header2_t& header) {
  reference::Page page;
  page.bitsPerPixel = header.cupsBitsPerPixel;
  page.bytesPerLine = header.cupsBytesPerLine;
  page.width = header.cupsWidth;
  page.height = header.cupsHeight;
  page.hwResolutionX = header.HWResolution[0];
  page.numCopies = header.NumCopies;
  page.pixels.resize(std::size_t{page.bytesPerLine} * page.height);
  const auto size = static_cast<unsigned>(page.pixels.size());
  page.readable = cupsRasterReadPixels(raster, page.pixels.data(), size) == size;
  return page;
}

}  // namespace

reference::Bytes bytesOfFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("cannot read " + path);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::vector<reference::Page> rasterPages(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) throw std::runtime_error("cannot read " + path);
  cups_raster_t* raster = cupsRasterOpen(descriptor, CUPS_RASTER_READ);
  std::vector<reference::Page> pages;
  cups_page_header2_t header;
  while (raster != nullptr && cupsRasterReadHeader2(raster, &header) != 0) {
    pages.push_back(readPage(raster, header));
  }
  if (raster != nullptr) cupsRasterClose(raster);
  close(descriptor);
  return pages;
}

reference::JobOptions ppdOptions(const std::string& path) {
  std::ifstream in(path);
  if (!in) throw std::runtime_error("cannot read " + path);
  reference::JobOptions options;
  for (std::string line; std::getline(in, line);) readPpdLine(line, options);
  return options;
}

reference::Bytes expectedBytes(const reference::JobOptions& options,
                               const std::vector<reference::Page>& pages) {
  return reference::bytesOf(reference::runJob(options, pages).commands);
}

std::vector<Picture> printedPages(const wren::escpos::Paper& paper,
                                  const std::vector<reference::Page>& pages) {
  std::vector<std::uint64_t> starts;
  for (const auto& mark : paper.marks) {
    if (mark.kind == wren::escpos::MarkKind::kPage)
      starts.push_back(mark.atUnits / wren::escpos::kUnitsPerRow);
  }
  std::vector<Picture> pictures;
  for (std::size_t i = 0; i < starts.size() && i < pages.size(); ++i) {
    Picture picture{pages[i].width, pages[i].height, {}};
    for (std::uint32_t y = 0; y < picture.height; ++y) {
      std::vector<std::uint8_t> row(picture.width);
      wren::escpos::renderRow(paper, starts[i] + y, row);
      picture.dots.insert(picture.dots.end(), row.begin(), row.end());
    }
    pictures.push_back(std::move(picture));
  }
  return pictures;
}

}  // namespace job_files
