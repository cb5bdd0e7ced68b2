// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A printer made of software on a loopback port, for CUPS's socket:// backend:
// each connection is a job, one after another, within limits of size and time.

#pragma once

#include <string>

#include "escpos/preview/loopback_socket.h"
#include "escpos/preview/options.h"

namespace preview {

class PrintServer {
 public:
  /// `stopDescriptor` is not owned; as soon as it can be read, the server ends.
  PrintServer(const Options& options, int stopDescriptor);

  /// Starts to listen. Returns an empty text or what went wrong.
  std::string open();

  /// The address with its port, after `open`.
  const std::string& name() const { return listener_.name; }

  /// Takes jobs until it is told to stop. One line per job goes to standard output, progress and
  /// problems to standard error. False if the socket itself failed.
  bool serve();

 private:
  void receive(FileDescriptor connection);

  const Options& options_;
  int stopDescriptor_;
  LoopbackSocket listener_;
  unsigned nextNumber_ = 1;
};

}  // namespace preview
