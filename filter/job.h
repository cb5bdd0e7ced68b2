// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// One print job: what goes out before its first page, its pages one by one, and what
// goes out after the last. It knows nothing of arguments, files and processes.
#pragma once

#include "filter/cancel_signal.h"
#include "filter/page_buffer.h"
#include "filter/page_source.h"
#include "filter/settings.h"
#include "printer/wren_printer.h"

class Job {
 public:
  enum class PageOutcome {
    kPrinted,
    kNoMorePages,  ///< the job ends in the ordinary way
    kUnsupported,  ///< the job ends without its end-of-job commands
    kCancelled,
  };

  /// @param printer outlives the job.
  Job(const Settings& jobSettings, WrenPrinter& jobPrinter, const CancelSignal& cancelSignal);

  /// Reads, prepares and prints one page, with the commands around it.
  PageOutcome printPage(PageSource& source);

  /// Prints pages until there are no more, then ends the job.
  /// @return true when the filter may report success.
  bool printPages(PageSource& source);

 private:
  PageOutcome receivePage(PageSource& source, cups_page_header2_s& header);
  PageOutcome printReceivedPage(cups_page_header2_s& header);
  void configurePrinter(cups_page_header2_s& header, unsigned long skipRightPx);
  bool finish();

  Settings settings;
  WrenPrinter& printer;
  CancelSignal cancel;
  PageBuffer pixels;
  int pagesPrinted = 0;
};

/// Writes what precedes every page: 64 zero bytes and the job's set-up commands.
void beginJob(const Settings& settings);
