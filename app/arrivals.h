// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Documents that come in and are kept on disk until they print: who is told that one is accepted
// may trust in it, even if the process is asked to end or killed at that moment.

#pragma once

#include <functional>
#include <mutex>
#include <shared_mutex>

namespace wren::app {

/// For the thread of a client, while its document comes in.
std::shared_lock<std::shared_mutex> beginArrival();

/// A lock for whoever saves the state for the last time: while it is owned, no document comes in,
/// so no client is told of a job that nobody knows later.
/// @return a lock that is not owned if a document still comes in.
std::unique_lock<std::shared_mutex> holdArrivals();

/// @param keep saves the jobs that have come in, or returns at once if it cannot. With an empty
///        function, this returns once nobody is in the one before.
void setArrivalKeeper(std::function<void()> keep);

/// Calls it; before the client is told that its job is accepted, without a lock of PAPPL.
void keepArrival();

}  // namespace wren::app
