// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// How a command of `wren` ends early: an exception with an exit status and one line for the
// user.

#pragma once

#include <stdexcept>
#include <string>

namespace wren::cli {

enum ExitStatus {
  kDone = 0,
  kFailed = 1,    ///< it was tried and failed
  kUsage = 2,     ///< wrong usage
  kDocument = 3,  ///< the document cannot be used
  kSetup = 4,     ///< something that is needed is missing
};

class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& line) : std::runtime_error(line), status_(status) {}
  ExitStatus status() const { return status_; }

 private:
  ExitStatus status_;
};

}  // namespace wren::cli
