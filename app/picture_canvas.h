// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Takes the rows of a picture as they are stored and makes a page of them: scaled to the head, or
// cut to it, and turned as the camera was held.

#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "app/area_scaler.h"
#include "app/document_request.h"
#include "app/page_sink.h"

namespace wren::app {

class PictureCanvas {
 public:
  /// A picture of `widthPx` x `heightPx`, as stored, both at least 1.
  /// @param orientation of EXIF, 1 to 8; others count as 1.
  /// Throws DocumentError (kUnprintable) if its page would be too long.
  PictureCanvas(const PageTarget& target, unsigned widthPx, unsigned heightPx, int orientation);

  /// The least size, as stored, in which the picture may be decoded: no finer one is needed.
  unsigned neededWidthPx() const { return isScaled_ ? canvasWidthPx_ : widthPx_; }
  unsigned neededHeightPx() const { return isScaled_ ? canvasHeightPx_ : heightPx_; }

  /// Starts the rows of the picture, decoded in this size. Asks for the memory of the page.
  void begin(unsigned decodedWidthPx, unsigned decodedHeightPx);

  /// Takes the next row, top row first: ink levels.
  void addRow(const std::uint8_t* ink);

  /// Delivers the page once all rows were added.
  /// @return false if it was cancelled or the sink stopped it.
  bool deliver(const CancelCheck& cancel, PageSink& sink) const;

 private:
  void copyRow(const std::uint8_t* ink);

  unsigned widthPx_;
  unsigned heightPx_;
  int orientation_;
  bool isScaled_;
  unsigned canvasWidthPx_;  // the part of the page's size that is stored; not turned yet
  unsigned canvasHeightPx_;
  unsigned rowsTaken_ = 0;
  std::vector<std::uint8_t> canvas_;
  std::optional<AreaScaler> scaler_;
};

}  // namespace wren::app
