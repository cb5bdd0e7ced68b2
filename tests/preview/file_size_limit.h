// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A disk that is full: while it lives, no file of this program grows beyond a size.

#pragma once

#include <signal.h>
#include <sys/resource.h>

class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit = {bytes, before_.rlim_max};
    // Otherwise the signal ends the program.
    handler_ = ::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    ::signal(SIGXFSZ, handler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_ = {};
  void (*handler_)(int) = SIG_DFL;
};
