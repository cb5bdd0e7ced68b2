// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/support/printer_bytes.h"

#include <cstdio>

namespace wren_test {

namespace {

struct Known {
  const char* name;
  const char* start;      // hexadecimal
  std::size_t following;  // parameter bytes
};

constexpr Known kKnown[] = {
    {"initialize", "1B40", 0}, {"buzzer set-up", "1F1B1F42656570", 1},
    {"direction", "1B55", 1},  {"buzzer", "1B42", 2},
    {"drawer", "1B7000", 2},   {"page start", "1B3C", 0},
    {"columns", "1B2A", 3},    {"feed", "1B4A", 1},
    {"cut", "1D56", 1},        {"job end", "1B76", 0},
};

unsigned byteAt(const std::string& bytes, std::size_t at) {
  return static_cast<unsigned char>(bytes[at]);
}

PrinterCommand zeros(const std::string& bytes, std::size_t at) {
  std::size_t end = at;
  while (end < bytes.size() && bytes[end] == '\0') ++end;
  return {"zeros", bytes.substr(at, end - at), static_cast<unsigned>(end - at), {}};
}

// The command at an offset; without bytes if it is truncated.
PrinterCommand complete(const Known& known, const std::string& bytes, std::size_t at) {
  const std::size_t head = fromHex(known.start).size() + known.following;
  if (at + head > bytes.size()) return {};
  PrinterCommand command = {known.name, bytes.substr(at, head), 0, {}};
  if (known.following == 1) command.value = byteAt(bytes, at + head - 1);
  if (command.name != "columns") return command;
  command.value = byteAt(bytes, at + 3) + 256 * byteAt(bytes, at + 4);
  if (at + head + command.value > bytes.size()) return {};
  command.columns = bytes.substr(at + head, command.value);
  command.bytes += command.columns;
  return command;
}

PrinterCommand commandAt(const std::string& bytes, std::size_t at) {
  if (bytes[at] == '\0') return zeros(bytes, at);
  for (const auto& known : kKnown) {
    const std::string start = fromHex(known.start);
    if (bytes.compare(at, start.size(), start) != 0) continue;
    PrinterCommand command = complete(known, bytes, at);
    if (!command.bytes.empty()) return command;
  }
  return {"unknown", bytes.substr(at, 1), byteAt(bytes, at), {}};
}

void addBand(PrintedPage& page, const PrinterCommand& band, unsigned feed) {
  for (unsigned row = 0; row < feed / 2 && row < 8; ++row) {
    std::string text;
    for (const char column : band.columns) {
      text += (static_cast<unsigned char>(column) & (0x80U >> row)) != 0 ? '#' : '.';
    }
    page.rows.push_back(text);
  }
}

}  // namespace

std::vector<PrinterCommand> decodePrinterBytes(const std::string& bytes) {
  std::vector<PrinterCommand> commands;
  for (std::size_t at = 0; at < bytes.size(); at += commands.back().bytes.size()) {
    commands.push_back(commandAt(bytes, at));
  }
  return commands;
}

std::string hexOf(const std::string& bytes) {
  std::string text;
  char pair[4];
  for (const char byte : bytes) {
    std::snprintf(pair, sizeof pair, "%02X", static_cast<unsigned char>(byte));
    text += (text.empty() ? "" : " ") + std::string(pair);
  }
  return text;
}

std::string fromHex(const std::string& text) {
  std::string digits;
  for (const char character : text) {
    if (character != ' ' && character != '\n') digits += character;
  }
  std::string bytes;
  for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
    bytes += static_cast<char>(std::stoul(digits.substr(at, 2), nullptr, 16));
  }
  return bytes;
}

std::vector<std::string> hexLines(const std::string& bytes) {
  std::vector<std::string> lines;
  for (const auto& command : decodePrinterBytes(bytes)) lines.push_back(hexOf(command.bytes));
  return lines;
}

std::vector<PrintedPage> printedPages(const std::string& bytes) {
  std::vector<PrintedPage> pages;
  PrinterCommand band;
  for (const auto& command : decodePrinterBytes(bytes)) {
    if (command.name == "page start") pages.emplace_back();
    if (command.name == "columns" && !pages.empty()) {
      band = command;
      pages.back().mode = byteAt(command.bytes, 2);
    } else if (command.name == "feed" && band.name == "columns") {
      addBand(pages.back(), band, command.value);
      band = {};
    }
  }
  return pages;
}

}  // namespace wren_test
