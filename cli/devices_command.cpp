// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/devices_command.h"

#include <unistd.h>

#include <nlohmann/json.hpp>

#include "cli/console.h"
#include "cli/device_list.h"
#include "cli/failure.h"
#include "cli/report.h"

namespace wren::cli {
namespace {

void printAsJson(const DeviceList& list) {
  auto devices = nlohmann::ordered_json::array();
  for (const Device& device : list.devices) {
    devices.push_back({{"kind", device.kind},
                       {"uri", device.uri},
                       {"makeAndModel", textOrNull(device.makeAndModel)},
                       {"info", textOrNull(device.info)}});
  }
  printJson({{"devices", devices}, {"partial", list.isPartial}});
}

void printAsText(const DeviceList& list) {
  for (const Device& device : list.devices) {
    const std::string& name = device.info.empty() ? device.makeAndModel : device.info;
    say(device.uri);
    say("      " + (name.empty() ? device.kind : name));
  }
  if (list.devices.empty())
    note("no printer was found; a network printer can be added by its address all the same");
}

}  // namespace

int runDevices(const DevicesArguments& arguments) {
  const std::string seconds = std::to_string(arguments.seconds);
  if (isatty(STDERR_FILENO) != 0) note("looking for printers for at most " + seconds + " s");
  const DeviceList list = findDevices("", arguments.seconds);
  if (arguments.json) {
    printAsJson(list);
  } else {
    printAsText(list);
  }
  if (list.isPartial) note("only root sees every USB printer: sudo wren devices");
  return kDone;
}

}  // namespace wren::cli
