// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// From a stream that was read to pictures, a summary line and messages: what
// the file mode and the listening mode of wren-preview have in common.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "escpos/preview/options.h"
#include "escpos/reader.h"

namespace preview {

/// The limits for a printer of this resolution with so much paper.
escpos::PaperLimits paperLimits(const Options& options);

/// "job.prn" becomes "job.png"; a name without an ending gets one.
std::string pictureName(const std::string& streamName);

/// Pictures that were written and what could not be.
struct WrittenPictures {
  std::vector<std::string> files;
  std::vector<std::string> errors;  ///< each with the name of the picture
};

/// Writes the paper to `path`, or with --split to path-1, path-2 ... before the ending. Paper of no
/// length makes no picture.
WrittenPictures writePictures(const escpos::Paper& paper, const Options& options,
                              const std::string& path);

/// The length of the paper as "157.2 mm".
std::string lengthText(const escpos::Paper& paper, unsigned dpi);

/// "2 pages, 157.2 mm, 1 cut, 0 drawer pulses, 3 beeps, 12345 bytes".
std::string summary(const escpos::Reader& reader, unsigned dpi);

/// Prints every problem as "wren-preview: NAME: offset N: TEXT" on standard error.
void printProblems(const escpos::VirtualPrinter& printer, const std::string& name);

}  // namespace preview
