// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Drops clients that stop in the middle of a request. PAPPL sets no time limit, and a client that
// sends half a page and then nothing would hold its printer for ever.

#pragma once

#include <chrono>

namespace wren::app {

/// From now on a connection is closed when the server has waited so long for its client to send or
/// to take a byte. Has no effect where a program cannot replace a function of a library that it is
/// linked with.
/// @param limit zero waits for ever.
void setClientTimeout(std::chrono::seconds limit);

}  // namespace wren::app
