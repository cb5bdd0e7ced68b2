// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A listening TCP socket that only this computer can reach.

#pragma once

#include <optional>
#include <string>

#include "escpos/preview/file_descriptor.h"

namespace preview {

/// Where to listen, in words.
struct ListenAddress {
  std::string host;  ///< a name or a numeric address, without brackets
  std::string port;  ///< decimal, "0" for any free port
};

/// Splits "[HOST:]PORT"; HOST is 127.0.0.1 if it is missing, and in brackets if it has colons.
/// Nothing if there is no port from 0 to 65535.
std::optional<ListenAddress> parseListenAddress(const std::string& text);

struct LoopbackSocket {
  FileDescriptor socket;  ///< listening and non-blocking; none after an error
  std::string name;       ///< "127.0.0.1:9100", with the port that was given to it
  std::string error;      ///< what went wrong
};

/// Listens there, if it is a loopback address (127.0.0.0/8 or ::1); any other one is an error.
LoopbackSocket openLoopbackSocket(const ListenAddress& address);

}  // namespace preview
