// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/report.h"

#include "cli/console.h"

namespace wren::cli {

void printJson(const nlohmann::ordered_json& object, std::FILE* to) {
  nlohmann::ordered_json document = {{"schema", kSchema}};
  document.update(object);
  // File names may hold any bytes; JSON is UTF-8.
  say(document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace), to);
}

nlohmann::ordered_json textOrNull(const std::string& text) {
  return text.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(text);
}

}  // namespace wren::cli
