// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The printer application with one printer, and a client that prints to it by IPP.

#pragma once

#include <sys/types.h>

#include <string>

#include "common/handles.h"

namespace wren::bench {

class PrinterApplication {
 public:
  /// Starts it. Throws std::runtime_error if it does not answer within ten seconds.
  /// @param folder is created, for its state, and for the pages below `pages` if they are kept.
  /// @param port of a network printer on this machine.
  PrinterApplication(const std::string& program, const std::string& folder, int port,
                     bool keepsPages);
  PrinterApplication(const PrinterApplication&) = delete;
  PrinterApplication& operator=(const PrinterApplication&) = delete;
  ~PrinterApplication();

  /// Sends a document as one request and returns when it is answered. Throws std::runtime_error
  /// if it is refused.
  void print(const std::string& document, const std::string& format) const;

  /// The receipt as the one page of PWG raster that the application makes of it. Throws
  /// std::runtime_error unless exactly one page was kept.
  std::string keptPageAsPwg() const;

 private:
  std::string folder_;
  pid_t process_ = -1;
  std::string uri_;
  int port_ = 0;
};

}  // namespace wren::bench
