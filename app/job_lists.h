// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The lists of jobs that PAPPL 1.3 keeps for each printer. It sorts all of them newest first, so
// that the newest waiting job prints next, and it drops the newest of the ended jobs. Here the
// oldest are dropped: those beyond papplPrinterGetMaxCompletedJobs, a minute after their end, as
// clients ask for it, but at once beyond twice as many.

#pragma once

#include <pappl/pappl.h>

namespace wren::app {

/// While it lives, the lists that this thread makes are those of a new printer: its waiting jobs
/// are sorted oldest first.
class ListsOfNewPrinter {
 public:
  ListsOfNewPrinter();
  ListsOfNewPrinter(const ListsOfNewPrinter&) = delete;
  ListsOfNewPrinter& operator=(const ListsOfNewPrinter&) = delete;
  ~ListsOfNewPrinter();

  /// @param printer may be null: there is none.
  void belongTo(pappl_printer_t* printer) const;
};

}  // namespace wren::app
