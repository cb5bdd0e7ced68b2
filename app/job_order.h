// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Jobs of one printer print in the order in which they arrived, one at a time. PAPPL 1.3 takes the
// newest waiting job first, refuses a raster job while another prints, prints one at a paused
// printer, and can start one job twice or two at once when several clients send together.

#pragma once

namespace wren::app {

/// Lets no further job begin. Call it before the system is deleted; returns once no thread of this
/// unit uses the system any more.
void endJobOrder();

}  // namespace wren::app
