// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A listening TCP socket on a loopback address, so that other computers cannot
// reach it.

#pragma once

#include <optional>
#include <string>

#include "common/handles.h"

namespace wren::preview {

/// Host and port as text.
struct ListenAddress {
  std::string host;  ///< a name or a numeric address, without brackets
  std::string port;  ///< decimal; "0" for any free port
};

/// Parses "[HOST:]PORT". HOST defaults to 127.0.0.1; one with colons (IPv6) needs brackets.
/// @return nothing if the text does not have this form or the port is not in 0 to 65535.
std::optional<ListenAddress> parseListenAddress(const std::string& text);

struct LoopbackSocket {
  FileDescriptor socket;  ///< listening and non-blocking; none after an error
  std::string name;       ///< the address with the actual port, such as "127.0.0.1:9100"
  std::string error;      ///< empty on success
};

/// Listens on the address. It is an error if this is not a loopback address (127.0.0.0/8 or ::1).
LoopbackSocket openLoopbackSocket(const ListenAddress& address);

}  // namespace wren::preview
