// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// TCP sockets on loopback addresses, which other computers cannot reach.

#pragma once

#include <optional>
#include <string>
#include <string_view>

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
  FileDescriptor socket;  ///< none after an error; one that listens is non-blocking
  std::string name;       ///< the address with the actual port, such as "127.0.0.1:9100"
  std::string error;      ///< empty on success
};

/// Listens on the address. It is an error if this is not a loopback address (127.0.0.0/8 or ::1).
LoopbackSocket openLoopbackSocket(const ListenAddress& address);

/// The same without listening: connections are refused, and no other program gets the port.
LoopbackSocket reserveLoopbackSocket(const ListenAddress& address);

/// Listens on a reserved socket.
bool startListening(int socket);

/// Connects to a loopback address.
/// @return a blocking socket, or the error.
LoopbackSocket connectLoopbackSocket(const ListenAddress& address);

/// Sends all bytes without waiting.
/// @return false if the other side is gone or does not read.
bool sendNow(int socket, std::string_view bytes);

}  // namespace wren::preview
