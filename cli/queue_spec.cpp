// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/queue_spec.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "cli/failure.h"
#include "cli/installation.h"
#include "cli/nearest_name.h"
#include "cli/report.h"

namespace wren::cli {
namespace {

using nlohmann::json;

// The last ones are the findings of doctor.
const std::vector<std::string> kWords = {"name",    "uri",    "paper",
                                         "options", "checks", "makeAndModel"};

bool isQueueName(std::string_view name) {
  const auto isNamePart = [](unsigned char c) {
    return c < 0x80 && (std::isalnum(c) != 0 || c == '_' || c == '-');
  };
  return !name.empty() && name[0] != '-' && name.size() <= 127 &&
         std::all_of(name.begin(), name.end(), isNamePart);
}

bool isDeviceUri(std::string_view uri) {
  const auto colon = uri.find(':');
  const auto isSchemePart = [](unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
  };
  if (colon == uri.npos) return false;
  // "localhost:9100" is a host with its port, "socket://" names no printer.
  const std::string_view rest = uri.substr(colon + 1);
  const bool namesPrinter = rest.find_first_not_of('/') != rest.npos &&
                            std::isdigit(static_cast<unsigned char>(rest[0])) == 0;
  return namesPrinter && colon > 0 && std::isalpha(static_cast<unsigned char>(uri[0])) != 0 &&
         std::all_of(uri.begin(), uri.begin() + static_cast<std::ptrdiff_t>(colon), isSchemePart) &&
         std::none_of(uri.begin(), uri.end(),
                      [](unsigned char c) { return c <= ' ' || c == 0x7F; });
}

std::string textAt(const json& entry, const char* word) {
  const auto found = entry.find(word);
  if (found == entry.end() || !found->is_string()) {
    throw Failure(kUsage, std::string("\"") + word + "\" has to be a text");
  }
  return found->get<std::string>();
}

std::string optionText(const json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_number_integer() || value.is_boolean()) return value.dump();
  throw Failure(kUsage, "the value of an option has to be a text or a whole number");
}

void checkWords(const json& entry) {
  for (const auto& [word, value] : entry.items()) {
    if (std::find(kWords.begin(), kWords.end(), word) != kWords.end()) continue;
    throw Failure(kUsage, "a queue has no \"" + word + "\"" + suggestion(word, kWords));
  }
}

QueueSpec readQueue(const json& entry) {
  if (!entry.is_object()) throw Failure(kUsage, "it has to be an object");
  checkWords(entry);
  QueueSpec spec;
  spec.isComplete = true;
  spec.name = textAt(entry, "name");
  spec.uri = textAt(entry, "uri");
  const json paper = entry.value("paper", json(80));
  if (!paper.is_number_integer() || !std::in_range<int>(paper.get<std::int64_t>())) {
    throw Failure(kUsage, "\"paper\" has to be 58, 80 or 112");
  }
  spec.paper = paper.get<int>();
  const json options = entry.value("options", json::object());
  if (!options.is_object()) throw Failure(kUsage, "\"options\" has to be an object");
  for (const auto& [name, value] : options.items()) {
    spec.options.emplace_back(name, optionText(value));
  }
  checkQueueSpec(spec);
  return spec;
}

// CUPS does not tell upper from lower case in the name of a queue.
void refuseSecond(const std::vector<QueueSpec>& earlier, const std::string& name) {
  for (const QueueSpec& spec : earlier) {
    if (!filter::isSameName(spec.name, name)) continue;
    throw Failure(kUsage, "an earlier queue has the name '" + spec.name + "'");
  }
}

json parseDocument(const std::string& text, const std::string& source) {
  try {
    return json::parse(text);
  } catch (const json::parse_error& error) {
    throw Failure(kUsage, source + " is not JSON: error at byte " + std::to_string(error.byte));
  } catch (const json::out_of_range&) {  // 1e999 is JSON
    throw Failure(kUsage, source + " has a number that is too large");
  }
}

const json& queuesOf(const json& document, const std::string& source) {
  const bool isObject = document.is_object();
  if (!isObject || !document.contains("queues") || !document["queues"].is_array()) {
    throw Failure(kUsage, source + " has no list \"queues\"");
  }
  if (document.value("schema", json(nullptr)) != json(kSchema)) {
    throw Failure(kUsage, source + " has not \"schema\": " + std::to_string(kSchema));
  }
  return document["queues"];
}

}  // namespace

void checkQueueSpec(const QueueSpec& spec) {
  if (!isQueueName(spec.name)) {
    throw Failure(kUsage, "a queue name has letters, digits, _ and -, unlike '" + spec.name + "'");
  }
  if (!isDeviceUri(spec.uri)) {
    throw Failure(kUsage, "a device URI begins with its scheme, such as usb: or socket:, unlike '" +
                              spec.uri + "'");
  }
  const int paper = spec.paper.value_or(80);
  if (std::find(kPapers.begin(), kPapers.end(), paper) == kPapers.end()) {
    throw Failure(kUsage,
                  "the paper is 58, 80 or 112 mm wide, not '" + std::to_string(paper) + "'");
  }
}

std::vector<QueueSpec> parseQueues(const std::string& text, const std::string& source) {
  const json document = parseDocument(text, source);
  std::vector<QueueSpec> specs;
  for (const json& entry : queuesOf(document, source)) {
    try {
      QueueSpec spec = readQueue(entry);
      refuseSecond(specs, spec.name);
      specs.push_back(std::move(spec));
    } catch (const Failure& failure) {
      throw Failure(failure.status(),
                    source + ", queue " + std::to_string(specs.size() + 1) + ": " + failure.what());
    }
  }
  return specs;
}

}  // namespace wren::cli
