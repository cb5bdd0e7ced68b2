// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A stream of the C library on a PAPPL device, for the core. A device that fails sets ferror;
// what was not flushed is then lost with the stream.

#pragma once

#include <pappl/pappl.h>

#include <cstddef>
#include <string>

#include "common/handles.h"

namespace wren::app {

/// A record takes no more bytes than these.
inline constexpr std::size_t kMostRecordedBytes = std::size_t{8} << 20;

/// @param device outlives the stream; not owned.
/// @param record gets what the device has taken, up to `kMostRecordedBytes`; outlives the stream.
///   Null: nothing is recorded.
/// @return null if there is no memory.
FilePtr openDeviceStream(pappl_device_t* device, std::string* record = nullptr);

}  // namespace wren::app
