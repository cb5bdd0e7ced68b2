// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// What users read: lines on standard output, notes on standard error, and colour where the
// output is a terminal.

#pragma once

#include <cstdio>
#include <string>

namespace wren::cli {

enum class Colour { kGreen, kRed, kYellow };

/// One line on standard output, or where a report goes instead.
void say(const std::string& line, std::FILE* to = stdout);

/// One line on standard error, after "wren: ". Line ends in the text become blanks.
void note(const std::string& line);

/// The text in a colour if standard output is a terminal and the user wants colours: not with
/// NO_COLOR set, not on TERM=dumb.
std::string coloured(const std::string& text, Colour colour);

/// The text as one word of a shell command.
std::string shellWord(const std::string& text);

}  // namespace wren::cli
