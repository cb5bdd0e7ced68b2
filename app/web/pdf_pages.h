// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A PDF from a browser as pages of grey levels. It is kept in memory alone and drawn in the same
// sandbox as the PDF of a job.

#pragma once

#include <string>

#include "app/page_target.h"
#include "app/web/grey_pages.h"

namespace wren::app::web {

inline constexpr std::size_t kMaxPdfBytes = std::size_t{10} << 20;

/// Throws DocumentError, for more than `kMaxGreyRows` too, and std::bad_alloc.
GreyPages readPdfPages(const std::string& pdf, const PageTarget& target);

}  // namespace wren::app::web
