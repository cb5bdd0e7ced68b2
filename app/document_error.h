// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Why a document, or the rest of it, cannot be printed.

#pragma once

#include <stdexcept>
#include <string>

namespace wren::app {

/// `what()` is one line for the person who printed, without a full stop.
class DocumentError : public std::runtime_error {
 public:
  enum class Kind {
    kFormat,       ///< damaged, cut off or not what its type says
    kPassword,     ///< it needs a password
    kUnprintable,  ///< too large, no pages, more than the limits allow
    kSystem,       ///< nothing is wrong with the document: a program or memory is missing
  };

  DocumentError(Kind kind, const std::string& text) : std::runtime_error(text), kind_(kind) {}

  Kind kind() const { return kind_; }

 private:
  Kind kind_;
};

}  // namespace wren::app
