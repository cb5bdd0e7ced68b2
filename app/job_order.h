// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Jobs of one printer print in the order in which they arrived, one at a time. PAPPL 1.3 takes the
// newest waiting job first, refuses a raster job while another prints, prints one at a paused
// printer, and can start one job twice or two at once when several clients send together.

#pragma once

#include <mutex>
#include <shared_mutex>

namespace wren::app {

/// Documents that are kept on disk are refused once the system is ending. A lock for whoever saves
/// the state for the last time: while it is owned, no such document comes in, so no client is told
/// of a job that nobody knows later.
/// @return a lock that is not owned if a document still comes in.
std::unique_lock<std::shared_mutex> holdArrivals();

/// Lets no further job begin. Call it before the system is deleted; returns once no thread of this
/// unit uses the system any more.
void endJobOrder();

}  // namespace wren::app
