// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Pictures, summary line and messages of a stream that was read. Shared by the
// file mode and the listening mode of wren-preview.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/cancel_check.h"
#include "escpos/reader.h"
#include "preview/options.h"

namespace wren::preview {

/// The default limits with the paper length of `--max-length` at the resolution of `--dpi`.
escpos::PaperLimits paperLimits(const Options& options);

/// The name with the extension replaced by ".png", or with ".png" added if it has none.
std::string pictureName(const std::string& streamName);

/// The result of `writePictures`.
struct WrittenPictures {
  std::vector<std::string> files;   ///< pictures that were written
  std::vector<std::string> errors;  ///< messages, each with the name of its picture
};

/// What bounds the drawing of one stream. A roll of 80 m at 203 dpi with a row of 1250 pixels has
/// fewer pixels than this; a stream of a few kilobytes could ask for a thousand times as many.
struct PictureRules {
  std::uint64_t maxPixels = 800'000'000;  ///< of all pictures together
  std::uint64_t maxPictures = 10'000;
  bool keepExisting = false;  ///< an existing file is an error
  CancelCheck cancel;         ///< asked often, once `kUncancelledPixels` are drawn
};

/// Pictures of up to so many pixels are drawn even if the work is cancelled: a receipt takes a few
/// milliseconds.
inline constexpr std::uint64_t kUncancelledPixels = 4'000'000;

/// Writes the paper as one picture, or with `--split` as one picture per piece, numbered "-1", "-2"
/// and so on before the extension. Stops at the first error. Paper of length 0 gives no picture. A
/// picture that would exceed `maxPixels` is cut off, which is an error too.
WrittenPictures writePictures(const escpos::Paper& paper, const Options& options,
                              const std::string& path, const PictureRules& rules = {});

/// The length of the paper as "157.2 mm".
std::string lengthText(const escpos::Paper& paper, unsigned dpi);

/// "2 pages, 157.2 mm, 1 cut, 0 drawer pulses, 3 beeps, 12345 bytes".
std::string summary(const escpos::Reader& reader, unsigned dpi);

/// Prints every problem as the message "NAME: offset N: TEXT".
void printProblems(const escpos::VirtualPrinter& printer, const std::string& name);

}  // namespace wren::preview
