// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Reads any bytes as a PNG or a JPEG. Every page that is ended has all its rows.

#include "app/picture_document.h"

#include <vector>

#include "app/document_error.h"
#include "fuzz/input.h"
#include "fuzz/memory_file.h"

namespace {

class CountingSink final : public wren::app::PageSink {
 public:
  bool beginPage(unsigned widthPx, unsigned heightPx) override {
    fuzz::check(widthPx >= 1 && heightPx >= 1, "a page has a size");
    heightPx_ = heightPx;
    return true;
  }
  void addRow(const std::uint8_t*) override { ++rows_; }
  bool endPage() override {
    fuzz::check(rows_ == heightPx_, "a page that is ended has all its rows");
    return true;
  }

 private:
  unsigned heightPx_ = 0;
  unsigned rows_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const bool isPng = data[1] == 'P';
  // The first byte, which both formats prescribe, chooses between scaled and cut.
  std::vector<std::uint8_t> bytes(data, data + size);
  wren::app::DocumentRequest request;
  request.target.fitWidePages = (bytes[0] & 1) != 0;
  request.target.maxHeightPx = 2000;
  bytes[0] = isPng ? 0x89 : 0xFF;
  static fuzz::MemoryFile file;
  file.fill(bytes.data(), bytes.size());
  request.path = file.path();
  wren::app::PictureSettings settings;
  settings.maxPixels = 4'000'000;
  settings.maxMemoryBytes = 16 << 20;
  CountingSink sink;
  try {
    (isPng ? wren::app::readPng : wren::app::readJpeg)(request, settings, sink);
  } catch (const wren::app::DocumentError&) {
  }
  return 0;
}
