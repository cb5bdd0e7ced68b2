// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What is needed to turn a document of any format into pages.

#pragma once

#include <functional>
#include <string>

#include "app/page_target.h"
#include "app/text_language.h"
#include "common/cancel_check.h"

namespace wren::app {

struct DocumentRequest {
  std::string path;  ///< a file that can be read from any position
  PageTarget target;
  unsigned charactersPerInch = 10;             ///< of text: 10 or 14
  TextLanguage language = TextLanguage::kAny;  ///< of text
  /// Asked at least every 100 ms.
  CancelCheck cancel;
  /// Takes a line for the log of the job, without a line feed. Called from the thread that reads
  /// the document; may be empty.
  std::function<void(const std::string&)> log;
};

}  // namespace wren::app
