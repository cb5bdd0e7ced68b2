// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The text in which PAPPL 1.3 saves its printers and jobs, as a killed process left it. PAPPL
// reads a job that was printing back as printing for ever, so such jobs are settled in the text
// before it is loaded.

#pragma once

#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "app/begun_jobs.h"

namespace wren::app {

/// A job that will not be printed any more.
struct EndedJob {
  JobKey job;
  std::string message;  ///< for people: job-state-message
};

struct SettledState {
  std::string text;             ///< for papplSystemLoadState
  std::vector<EndedJob> ended;  ///< by this settlement
  std::vector<JobKey> waiting;  ///< will be printed, or are held
};

/// Settles every job that has not ended: one that had begun is cancelled, one without a document
/// is aborted (it came in page by page, or was not whole), any other waits again.
/// @param text lines `<Printer id="1" ...>`, `Job id="1" state="5" filename="..." ...`,
///        `</Printer>` and others, which stay as they are. Values have `"` and `\` escaped by `\`.
/// @param begun in order. Those that the text does not name yet are added to their printer.
/// @param now is noted as the end of the jobs that end.
SettledState settleJobs(const std::string& text, const std::vector<BegunJob>& begun,
                        std::time_t now);

/// A value as the text has it: `"` and `\` escaped, control characters as spaces.
std::string escapedValue(std::string_view value);

}  // namespace wren::app
