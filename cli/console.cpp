// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/console.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace wren::cli {
namespace {

bool usesColours() {
  const char* refused = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  return (refused == nullptr || *refused == '\0') && terminal != nullptr &&
         std::string_view(terminal) != "dumb" && isatty(STDOUT_FILENO) != 0;
}

}  // namespace

void say(const std::string& line, std::FILE* to) {
  std::fprintf(to, "%s\n", line.c_str());
}

void note(const std::string& line) {
  std::string text = "wren: " + line;
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }, ' ');
  text += '\n';
  static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
}

std::string coloured(const std::string& text, Colour colour) {
  if (!usesColours()) return text;
  const char* code = colour == Colour::kGreen ? "32" : (colour == Colour::kRed ? "31;1" : "33");
  return std::string("\033[") + code + "m" + text + "\033[0m";
}

std::string shellWord(const std::string& text) {
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-./:=,@%+";
  if (!text.empty() && text.find_first_not_of(kPlain) == std::string::npos) return text;
  std::string word = "'";
  for (const char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return word + "'";
}

}  // namespace wren::cli
