// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The pages of a CUPS raster stream. A wait for input ends when the job is cancelled; the
// CUPS library alone would go on waiting after a signal.

#pragma once

#include "filter/cancel_signal.h"
#include "job/page_source.h"

namespace wren::filter {

class RasterInput : public job::PageSource {
 public:
  /// @param descriptor stays open and is not owned. A stream that cannot be opened has no
  ///   pages.
  RasterInput(int descriptor, const CancelSignal& cancel);
  ~RasterInput() override;

  bool readHeader(cups_page_header2_s& header) override;
  bool readPixels(std::uint8_t* pixels, unsigned size) override;

 private:
  static ssize_t readBytes(void* self, unsigned char* buffer, size_t length);
  bool waitForBytes() const;

  int descriptor_;
  CancelSignal cancel_;
  bool mayWait_;
  cups_raster_t* stream_;
};

}  // namespace wren::filter
