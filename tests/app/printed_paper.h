// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What a software printer has executed of all its connections, questions about its status left out.

#pragma once

#include <filesystem>
#include <string>

#include "tests/app/printed_commands.h"
#include "tests/preview/running_printer.h"

namespace wren_test {

/// The bytes of the commands in their order, job after job. Stops the printer.
inline std::string printedBytes(RunningPrinter& printer) {
  printer.stop();
  std::string all;
  for (unsigned job = 1; std::filesystem::exists(printer.fileOf(job, ".prn")); ++job) {
    const auto bytes = printer.printed(job);
    all += withoutQuestions({bytes.begin(), bytes.end()});
  }
  return all;
}

}  // namespace wren_test
