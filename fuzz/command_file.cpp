// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Command files: any text. What is read stays within its limits, and its bytes are commands that
// the decoder knows.

#include "job/command_file.h"

#include <algorithm>
#include <cstdio>

#include "escpos/reader.h"
#include "fuzz/input.h"

namespace {

using wren::job::CommandKind;
using wren::job::PrinterCommand;

bool isPrintable(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

// Pages are left out: each takes as long as a thousand other inputs.
std::vector<std::uint8_t> bytesOf(const PrinterCommand& command) {
  std::vector<std::uint8_t> bytes(16 * 1024);
  Settings settings;
  settings.docCutType = 2;
  FILE* out = fmemopen(bytes.data(), bytes.size(), "wb");
  fuzz::check(out != nullptr, "a file in memory can be made");
  fuzz::check(writePrinterCommand(out, command, settings) == nullptr, "the command is written");
  bytes.resize(static_cast<std::size_t>(std::ftell(out)));
  std::fclose(out);
  return bytes;
}

void checkCommand(const PrinterCommand& command) {
  const bool isFeed = command.kind == CommandKind::kFeed;
  const std::int32_t value = command.value.value_or(1);
  fuzz::check(!isFeed || command.value.has_value(), "a feed has a length");
  fuzz::check(value >= 1 && value <= (isFeed ? wren::job::kMaxFeedMm : 2), "a value is valid");
  if (command.kind == CommandKind::kPrintSelfTestPage) return;
  const auto bytes = bytesOf(command);
  fuzz::check(!bytes.empty(), "a command has bytes");
  const auto reading = wren::escpos::readAll(bytes);
  fuzz::check(reading.problems.empty(), "the decoder knows the bytes");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto file = wren::job::parseCommandFile(text);
  fuzz::check(file.commands.size() <= wren::job::kMaxCommands, "the commands are limited");
  fuzz::check(file.errors.size() <= size + 1, "at most one error for each line");
  for (const std::string& error : file.errors) {
    fuzz::check(isPrintable(error) && error.size() <= 120, "an error is one short line");
  }
  std::for_each(file.commands.begin(), file.commands.end(), checkCommand);
  return 0;
}
