// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What a software printer has executed of all its connections, questions about its status left out.

#pragma once

#include <filesystem>
#include <string>

#include "escpos/reader.h"
#include "tests/preview/running_printer.h"

namespace wren_test {

inline bool isQuestion(wren::escpos::CommandKind kind) {
  return kind == wren::escpos::CommandKind::kRealTimeStatus ||
         kind == wren::escpos::CommandKind::kTransmitStatus;
}

/// The bytes of the commands in their order, job after job. Stops the printer.
inline std::string printedBytes(RunningPrinter& printer) {
  printer.stop();
  std::string all;
  for (unsigned job = 1; std::filesystem::exists(printer.fileOf(job, ".prn")); ++job) {
    const auto bytes = printer.printed(job);
    for (const auto& command : wren::escpos::readAll(bytes).commands) {
      if (isQuestion(command.kind)) continue;
      const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(command.offset);
      all.append(first, first + static_cast<std::ptrdiff_t>(command.length));
    }
  }
  return all;
}

}  // namespace wren_test
