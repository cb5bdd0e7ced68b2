// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Prints the pages of one job through the core. The first good page begins the job; a job
// without one writes nothing. Nothing here knows who asked for the job or where the bytes go.

#pragma once

#include <cups/raster.h>

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/job_settings.h"
#include "app/page_composer.h"
#include "app/page_keeper.h"
#include "app/page_sink.h"
#include "app/page_target.h"
#include "common/cancel_check.h"
#include "common/handles.h"
#include "job/job.h"
#include "printer/dot_matrix_ep_printer.h"

namespace wren::app {

class PrintJob : public PageSink {
 public:
  struct Plan {
    JobSettings settings;
    PageTarget target;
    unsigned copies = 1;  ///< the pages of the document, one after another, so many times
    JobKey job = {};      ///< for the names of kept pages
  };
  /// Everything is optional but the stream.
  struct Surroundings {
    std::FILE* out = nullptr;                         ///< receives every printer byte; not owned
    CancelCheck cancel;                               ///< asked between bands
    PageKeeper* keeper = nullptr;                     ///< not owned
    std::function<bool()> onBegin;                    ///< before the first byte; false: send none
    std::function<void()> onPage;                     ///< called after each printed page
    std::function<void(std::string_view)> onMessage;  ///< a line of the core's log
  };

  PrintJob(const Plan& plan, const Surroundings& surroundings);

  /// Throws std::bad_alloc; the job can still be finished.
  bool beginPage(unsigned widthPx, unsigned heightPx) override;
  void addRow(const std::uint8_t* ink) override;
  bool endPage() override;

  /// Prints the copies that are left and the end of the job; the end of a cancelled job if it
  /// was cancelled, a page was begun and not printed, or `documentIsGood` is false. Writes nothing
  /// if no page was printed. Flushes.
  /// @return whether the whole job was written.
  bool finish(bool documentIsGood);

  unsigned pagesPrinted() const { return pagesPrinted_; }

  /// Why a page or a copy was not printed, as a text for people. Empty if each was; also if the job
  /// was cancelled, a page was not ended or the printer took no more.
  const std::string& fault() const { return fault_; }

  /// Whether a byte was written.
  bool hasBegun() const { return begun_; }

 private:
  bool printComposed();
  bool print(const std::uint8_t* levels, unsigned heightPx);
  bool failBecause(const char* reason);
  bool begin();
  bool spool(const std::vector<std::uint8_t>& levels, unsigned heightPx);
  bool printCopies();
  bool canWrite() const;

  Plan plan_;
  Surroundings out_;
  BandPrinter printer_;
  job::Job job_;
  std::optional<PageComposer> composer_;
  FilePtr spooled_;  // the pages of the document, if more than one copy is wanted
  std::vector<unsigned> spooledHeights_;
  bool begun_ = false;
  bool pagesAreWhole_ = true;  // every page that was begun was printed
  std::string fault_;
  unsigned pagesPrinted_ = 0;
};

}  // namespace wren::app
