// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A TCP connection to a printer that may stop taking bytes for minutes: out of paper, cover open.
// Every wait has a time limit and ends soon after a cancel, and what the printer sends back is
// collected meanwhile. It knows nothing of jobs or of the meaning of the bytes.

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/cancel_check.h"
#include "common/handles.h"

struct addrinfo;

namespace wren::app {

/// A host (a name or a numeric address, without brackets) and a port.
struct NetworkAddress {
  std::string host;
  std::string port;

  bool operator==(const NetworkAddress&) const = default;
};

/// Parses "SCHEME://HOST[:PORT][/...]" with any scheme; a numeric IPv6 host stands in brackets and
/// the port is 9100 if there is none.
/// @return nothing if the text does not have this form or the port is not in 1 to 65535.
std::optional<NetworkAddress> parseNetworkUri(std::string_view uri);

/// How an operation on the connection ended.
enum class LinkResult {
  kDone,
  kCancelled,
  kTimedOut,
  kClosed,  ///< no connection: refused, closed or reset by the printer
};

/// How long to wait, and what ends the wait early.
struct Patience {
  static constexpr std::chrono::milliseconds kForever = std::chrono::milliseconds::max();

  std::chrono::milliseconds limit = kForever;
  CancelCheck cancel = {};
};

/// Waits notice a cancel within `kCancelLatency`. No operation raises SIGPIPE.
class NetworkPrinter {
 public:
  static constexpr std::chrono::milliseconds kCancelLatency{50};

  /// What is kept of the printer's answers; older bytes are dropped.
  static constexpr std::size_t kMaxReceived = 4096;

  NetworkPrinter() = default;
  NetworkPrinter(NetworkPrinter&&) = default;
  NetworkPrinter& operator=(NetworkPrinter&&) = default;

  /// Opens the connection, trying the addresses of the host in turn; each gets its share of the
  /// limit. An open connection is reset first.
  LinkResult connect(const NetworkAddress& address, const Patience& patience);

  /// Sends the bytes. The wait for a printer that takes none has no limit by default.
  /// @param taken set to how many bytes the system has taken, all of them if the result is kDone.
  LinkResult write(std::span<const std::uint8_t> bytes, const Patience& patience,
                   std::size_t& taken);

  /// Waits until the printer has sent something, or returns at once if it has already.
  LinkResult waitForAnswer(const Patience& patience);

  /// What the printer has sent since the last call, oldest byte first.
  std::vector<std::uint8_t> takeReceived();

  /// Waits until the printer's side has acknowledged every byte: it then holds all of them.
  LinkResult drain(const Patience& patience);

  /// Ends the connection in order: says that no more bytes come and waits for the printer to close
  /// its side, so that no byte on its way is lost in a reset. Closes in any case.
  LinkResult finish(const Patience& patience);

  /// Closes at once; bytes that the printer has not taken are dropped.
  void reset();

  bool isOpen() const { return static_cast<bool>(socket_); }

  /// Bytes that were written but not acknowledged by the printer's side.
  std::size_t unacknowledged() const;

  /// Why the last operation that returned kClosed did, in words; never empty then.
  const std::string& error() const { return error_; }

 private:
  LinkResult closed(const std::string& why);
  LinkResult connectTo(const addrinfo& address, const Patience& patience);
  LinkResult waitFor(short events, const Patience& patience);
  bool receive();

  FileDescriptor socket_;
  std::vector<std::uint8_t> received_;
  std::string error_;
};

}  // namespace wren::app
