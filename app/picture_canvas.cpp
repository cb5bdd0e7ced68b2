// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/picture_canvas.h"

#include <algorithm>
#include <utility>

#include "app/document_error.h"

namespace wren::app {
namespace {

// Where the first row and the first column of the stored picture are when it is looked at, by the
// EXIF tag Orientation (CIPA DC-008, 4.6.4).
struct Turn {
  bool swapsAxes;
  bool flipsX;  // of what is seen
  bool flipsY;
};

constexpr Turn kTurns[8] = {
    {false, false, false}, {false, true, false}, {false, true, true}, {false, false, true},
    {true, false, false},  {true, true, false},  {true, true, true},  {true, false, true},
};

const Turn& turnOf(int orientation) {
  return kTurns[orientation - 1];
}

}  // namespace

PictureCanvas::PictureCanvas(const PageTarget& target, unsigned widthPx, unsigned heightPx,
                             int orientation)
    : widthPx_(widthPx),
      heightPx_(heightPx),
      orientation_(orientation >= 1 && orientation <= 8 ? orientation : 1),
      isScaled_(target.fitWidePages) {
  const bool swapsAxes = turnOf(orientation_).swapsAxes;
  const std::uint64_t seenWidthPx = swapsAxes ? heightPx : widthPx;
  const std::uint64_t seenHeightPx = swapsAxes ? widthPx : heightPx;
  std::uint64_t pageWidthPx = std::min<std::uint64_t>(seenWidthPx, target.headWidthPx);
  std::uint64_t pageHeightPx = seenHeightPx;
  if (isScaled_) {
    pageWidthPx = target.headWidthPx;
    pageHeightPx = (seenHeightPx * pageWidthPx + seenWidthPx / 2) / seenWidthPx;
    pageHeightPx = std::max<std::uint64_t>(pageHeightPx, 1);
  }
  if (pageHeightPx > target.maxHeightPx) {
    throw DocumentError(DocumentError::Kind::kUnprintable, "the picture is too long");
  }
  canvasWidthPx_ = static_cast<unsigned>(swapsAxes ? pageHeightPx : pageWidthPx);
  canvasHeightPx_ = static_cast<unsigned>(swapsAxes ? pageWidthPx : pageHeightPx);
}

void PictureCanvas::begin(unsigned decodedWidthPx, unsigned decodedHeightPx) {
  rowsTaken_ = 0;
  canvas_.assign(std::size_t{canvasWidthPx_} * canvasHeightPx_, 0);
  if (!isScaled_) return;
  scaler_.emplace(decodedWidthPx, decodedHeightPx, canvasWidthPx_, canvasHeightPx_, canvas_.data());
}

void PictureCanvas::addRow(const std::uint8_t* ink) {
  if (isScaled_) {
    scaler_->addRow(ink);
  } else {
    copyRow(ink);
  }
}

// The middle of the picture.
void PictureCanvas::copyRow(const std::uint8_t* ink) {
  const unsigned firstRow = (heightPx_ - canvasHeightPx_) / 2;
  const unsigned row = rowsTaken_++;
  if (row < firstRow || row - firstRow >= canvasHeightPx_) return;
  std::copy_n(ink + (widthPx_ - canvasWidthPx_) / 2, canvasWidthPx_,
              canvas_.data() + std::size_t{row - firstRow} * canvasWidthPx_);
}

bool PictureCanvas::deliver(const CancelCheck& cancel, PageSink& sink) const {
  const Turn& turn = turnOf(orientation_);
  const unsigned pageWidthPx = turn.swapsAxes ? canvasHeightPx_ : canvasWidthPx_;
  const unsigned pageHeightPx = turn.swapsAxes ? canvasWidthPx_ : canvasHeightPx_;
  if (!sink.beginPage(pageWidthPx, pageHeightPx)) return false;
  std::vector<std::uint8_t> row(pageWidthPx);
  for (unsigned y = 0; y < pageHeightPx; ++y) {
    if (cancel.isCancelled()) return false;
    const unsigned seenY = turn.flipsY ? pageHeightPx - 1 - y : y;
    for (unsigned x = 0; x < pageWidthPx; ++x) {
      const unsigned seenX = turn.flipsX ? pageWidthPx - 1 - x : x;
      const std::size_t at = turn.swapsAxes ? std::size_t{seenX} * canvasWidthPx_ + seenY
                                            : std::size_t{seenY} * canvasWidthPx_ + seenX;
      row[x] = canvas_[at];
    }
    sink.addRow(row.data());
  }
  return sink.endPage();
}

}  // namespace wren::app
