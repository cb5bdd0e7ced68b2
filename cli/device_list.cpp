// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/device_list.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <sstream>

#include "cli/child_process.h"
#include "cli/installation.h"

namespace wren::cli {
namespace {

// The backends that can search for printers.
constexpr std::array<const char*, 3> kSearching = {"usb", "snmp", "dnssd"};

// The next word, or text in quotes with backslashes before quotes, from the front of `rest`.
std::string takeWord(std::string_view& rest) {
  rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  std::string word;
  const bool quoted = rest.starts_with('"');
  std::size_t at = quoted ? 1 : 0;
  for (; at < rest.size() && rest[at] != (quoted ? '"' : ' '); ++at) {
    if (quoted && rest[at] == '\\' && at + 1 < rest.size()) ++at;
    word += rest[at];
  }
  rest.remove_prefix(std::min(at + 1, rest.size()));
  return word;
}

void runBackend(const std::string& name, int seconds, std::vector<Device>& devices) {
  const std::string program = Installation().backendFolder() + "/" + name;
  if (access(program.c_str(), X_OK) != 0) return;
  std::istringstream lines(captureOutput({program}, seconds).text);
  for (std::string line; std::getline(lines, line);) devices.push_back(parseBackendLine(line));
}

}  // namespace

Device parseBackendLine(std::string_view line) {
  Device device;
  device.kind = takeWord(line);
  device.uri = takeWord(line);
  device.makeAndModel = takeWord(line);
  device.info = takeWord(line);
  return device;
}

bool isAddress(std::string_view uri) {
  const auto colon = uri.find(':');
  return colon != uri.npos && uri.find_first_not_of('/', colon + 1) != uri.npos;
}

DeviceList findDevices(const std::string& schemes, int seconds) {
  DeviceList list;
  Scheduler scheduler;
  const Answer answer =
      scheduler.runs() ? scheduler.findDevices(schemes, seconds, list.devices) : Answer();
  // No printer at all is reported as "not found".
  const bool runsBackends = !scheduler.runs() || answer.isRefused;
  list.isPartial = runsBackends && geteuid() != 0;
  for (const char* backend : kSearching) {
    const bool isWanted = schemes.empty() || schemes == backend;
    if (runsBackends && isWanted) runBackend(backend, seconds, list.devices);
  }
  std::erase_if(list.devices, [](const Device& device) { return !isAddress(device.uri); });
  std::stable_sort(list.devices.begin(), list.devices.end(),
                   [](const Device& a, const Device& b) { return a.kind < b.kind; });
  return list;
}

}  // namespace wren::cli
