// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The bytes of a job without the questions about the printer's status that stand between its
// commands.

#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "escpos/command.h"
#include "escpos/splitter.h"

namespace wren_test {

inline bool isQuestion(wren::escpos::CommandKind kind) {
  return kind == wren::escpos::CommandKind::kRealTimeStatus ||
         kind == wren::escpos::CommandKind::kTransmitStatus;
}

/// All other bytes in their order, those that are no known command too.
inline std::string withoutQuestions(const std::string& bytes) {
  std::string others;
  wren::escpos::Splitter splitter(
      [&](wren::escpos::CommandKind kind, std::span<const std::uint8_t> command) {
        if (!isQuestion(kind)) others.append(command.begin(), command.end());
      });
  splitter.feed({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  splitter.finish();
  return others;
}

}  // namespace wren_test
