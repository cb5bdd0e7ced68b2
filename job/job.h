// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// One print job: what is written before its first page, its pages one by one, and what is
// written after the last. It knows no PPD, no standard stream and no process; two jobs may run
// in two threads.

#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>

#include "common/cancel_check.h"
#include "job/page_buffer.h"
#include "job/page_source.h"
#include "job/settings.h"
#include "printer/page_geometry.h"
#include "printer/wren_printer.h"

namespace wren::job {

class Job {
 public:
  /// What became of a page.
  enum class PageOutcome {
    kPrinted,
    kNoMorePages,  ///< there is none; also a header with a height or line length of 0
    kRefused,      ///< its geometry cannot be printed; its pixels were not read
    kIncomplete,   ///< its pixels could not be read
    kUnsupported,  ///< it does not have 8 bits per pixel; the job must not be ended
    kCancelled,
  };

  /// @param printer outlives the job; its streams are set to `out` alone.
  /// @param out receives every printer byte. It stays open and is not flushed; a failed write
  ///   shows in ferror alone.
  Job(const Settings& settings, WrenPrinter& printer, FILE* out, CancelCheck cancel = {});

  /// Writes what precedes every page: 64 zero bytes and the set-up commands.
  void begin();

  /// Reads, prepares and prints one page, with the commands around it. Throws std::bad_alloc
  /// after a complete command; the job can then still be ended by `endCancelled`.
  PageOutcome printPage(PageSource& source);

  /// Prints pages until one is not printed, then ends the job unless its depth is unsupported.
  /// @return whether the filter may report success: a page was printed and none was
  ///   unsupported, or the job was cancelled.
  bool printPages(PageSource& source);

  /// Writes the end of the job and logs whether a page was printed, which it returns.
  bool end();

  /// Writes the end of a cancelled job: feed and document cut, no buzzer, no drawer.
  void endCancelled();

 private:
  // A page in the buffer.
  struct ReceivedPage {
    cups_page_header2_s header = {};
    printer::PageGeometry geometry;
    std::uint64_t excessPx = 0;  // bytes of a row beyond the printable width
  };

  // Nothing once the page is in the buffer, else why it is not.
  std::optional<PageOutcome> receivePage(PageSource& source, ReceivedPage& page);
  std::optional<PageOutcome> checkHeader(const cups_page_header2_s& header) const;
  void printReceivedPage(ReceivedPage& page);
  void configurePrinter(ReceivedPage& page);

  Settings settings_;
  WrenPrinter& printer_;
  FILE* out_;
  CancelCheck cancel_;
  PageBuffer pixels_;
  int pagesPrinted_ = 0;
};

}  // namespace wren::job
