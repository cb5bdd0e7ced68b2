// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Pages from memory as the source of a job.

#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "job/page_source.h"
#include "tests/support/raster_stream.h"

namespace wren_test {

class PageList : public wren::job::PageSource {
 public:
  explicit PageList(std::vector<RasterPage> pages) : pages_(std::move(pages)) {}

  bool readHeader(cups_page_header2_s& header) override {
    if (next_ == pages_.size()) return false;
    header = pages_[next_++].header;
    if (cancelAtHeader != nullptr) *cancelAtHeader = true;
    return true;
  }
  bool readPixels(std::uint8_t* pixels, unsigned size) override {
    const std::string& bytes = pages_[next_ - 1].pixels;
    sizes.push_back(size);
    if (cancelAtPixels != nullptr) *cancelAtPixels = true;
    if (bytes.size() < size) return false;
    std::copy_n(bytes.begin(), size, pixels);
    return true;
  }

  std::vector<unsigned> sizes;     ///< of the pixels asked for, page by page
  bool* cancelAtHeader = nullptr;  ///< set when a header is read; not owned
  bool* cancelAtPixels = nullptr;  ///< set when pixels are read; not owned

 private:
  std::vector<RasterPage> pages_;
  std::size_t next_ = 0;
};

/// A page of one level whose header says what it is told, true or not.
inline RasterPage pageOf(unsigned width, unsigned height, unsigned bytesPerLine) {
  RasterPage page = {greyHeader(width, height), {}};
  page.header.cupsBytesPerLine = bytesPerLine;
  page.pixels.assign(std::min<std::size_t>(std::size_t{bytesPerLine} * height, 100000), '\x90');
  return page;
}

}  // namespace wren_test
