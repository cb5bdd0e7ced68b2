// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/debug_image_path.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace wren::printer {

bool makeImageFormat(std::string_view folder, std::string_view name, char* format,
                     std::size_t size) {
  std::string text;
  for (const char character : folder) text.append(character == '%' ? 2 : 1, character);
  if (!text.empty() && text.back() != '/') text += '/';
  text += name;
  const bool fits = text.size() < size;
  std::snprintf(format, size, "%s", fits ? text.c_str() : "");
  return fits;
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"

DebugImagePath formatImagePath(const char* format, const std::tm& when, long number) {
  DebugImagePath path = {};
  std::snprintf(path.text, sizeof path.text, format, when.tm_year + 1900, when.tm_mon + 1,
                when.tm_mday, when.tm_hour, when.tm_min, when.tm_sec, number);
  return path;
}

#pragma GCC diagnostic pop

}  // namespace wren::printer
