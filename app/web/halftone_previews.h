// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What a document looks like with each halftone method: printed through the core into memory,
// read back, and drawn as paper. Keeps nothing, knows no PAPPL.

#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "app/job_settings.h"
#include "app/page_target.h"
#include "app/web/grey_pages.h"

namespace wren::app::web {

inline constexpr int kHalftoneCount = 9;

/// The paper of one job.
struct Preview {
  std::string png;          ///< the dots as black on white, one pixel each, head-wide
  std::size_t bytes = 0;    ///< sent to the printer
  std::string digest;       ///< `digestOf` these bytes
  double lengthMm = 0.0;    ///< of the paper, feed before the cut included
  double blackShare = 0.0;  ///< dots of all places where one could be, 0 to 1
};

/// The bytes of a job with these pages, from its first to its last. Throws std::bad_alloc.
std::string printedBytes(const GreyPages& pages, const JobSettings& settings,
                         const PageTarget& target);

/// Tells the bytes of one job from those of another: FNV-1a with 64 bits, in hexadecimal.
std::string digestOf(const std::string& bytes);

/// Draws printer bytes. Throws std::bad_alloc.
Preview previewOf(const std::string& bytes, unsigned headWidthPx);

/// All methods in the order of DitherType, on all processors. Everything but the method is as in
/// `settings`. Throws std::bad_alloc.
std::array<Preview, kHalftoneCount> drawPreviews(const GreyPages& pages,
                                                 const JobSettings& settings,
                                                 const PageTarget& target);

}  // namespace wren::app::web
