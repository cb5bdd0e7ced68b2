// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A stream of the C library on a PAPPL device, for the core. A device that fails sets ferror;
// what was not flushed is then lost with the stream.

#pragma once

#include <pappl/pappl.h>

#include "common/handles.h"

namespace wren::app {

/// @param device outlives the stream; not owned.
/// @return null if there is no memory.
FilePtr openDeviceStream(pappl_device_t* device);

}  // namespace wren::app
