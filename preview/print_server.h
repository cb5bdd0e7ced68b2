// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A virtual network printer on a loopback port, for the socket:// backend of
// CUPS. Each connection is a job with limits of size and time; connections are
// served one after another.

#pragma once

#include <string>

#include "preview/loopback_socket.h"
#include "preview/options.h"

namespace wren::preview {

class PrintServer {
 public:
  /// @param options must outlive the server.
  /// @param stopDescriptor stops the server when it becomes readable; not owned.
  PrintServer(const Options& options, int stopDescriptor);

  /// Starts to listen.
  /// @return the error message, or an empty string.
  std::string open();

  /// The address with the actual port, after `open`.
  const std::string& name() const { return listener_.name; }

  /// Serves jobs until it is stopped. One line per job goes to standard output, progress and
  /// problems to standard error.
  /// @return false if the listening socket failed.
  bool serve();

 private:
  void receive(FileDescriptor connection);

  const Options& options_;
  int stopDescriptor_;
  LoopbackSocket listener_;
  unsigned nextNumber_ = 1;
};

}  // namespace wren::preview
