// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/program.h"

#include <pappl/pappl.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>

#include "app/network_device.h"
#include "app/printer_driver.h"
#include "app/server.h"
#include "app/trial.h"

namespace wren::app {
namespace {

constexpr const char* kFooter = "";

pappl_loglevel_t logLevelOf(const char* name) {
  struct Level {
    const char* name;
    pappl_loglevel_t level;
  };
  constexpr Level kLevels[] = {{"debug", PAPPL_LOGLEVEL_DEBUG},
                               {"info", PAPPL_LOGLEVEL_INFO},
                               {"warn", PAPPL_LOGLEVEL_WARN},
                               {"error", PAPPL_LOGLEVEL_ERROR},
                               {"fatal", PAPPL_LOGLEVEL_FATAL}};
  for (const Level& level : kLevels) {
    if (name != nullptr && std::strcmp(level.name, name) == 0) return level.level;
  }
  return PAPPL_LOGLEVEL_WARN;
}

std::string optionOr(const char* name, int count, cups_option_t* options,
                     const std::string& other) {
  const char* value = cupsGetOption(name, count, options);
  return value == nullptr ? other : value;
}

// Throws std::runtime_error.
int portOf(const std::string& text) {
  int port = -1;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, port);
  if (error != std::errc() || stop != end || port < 0 || port > 65535) {
    throw std::runtime_error("server-port cannot be \"" + text + "\" (0 to 65535)");
  }
  return port;
}

// Lives until the process ends: PAPPL frees the system, but our callbacks may still run.
std::unique_ptr<Server>& theServer() {
  static std::unique_ptr<Server> server;
  return server;
}

ServerOptions serverOptionsOf(int count, cups_option_t* options) {
  ServerOptions server;
  server.name = optionOr("server-name", count, options, server.name);
  server.host = optionOr("listen-hostname", count, options, server.host);
  server.port = portOf(optionOr("server-port", count, options, "0"));
  server.stateFolder = optionOr("state-directory", count, options, defaultStateFolder());
  server.logFile = optionOr("log-file", count, options, server.logFile);
  server.logLevel = logLevelOf(cupsGetOption("log-level", count, options));
  server.clientTimeoutSeconds = static_cast<unsigned>(
      std::max(0, std::atoi(optionOr("client-timeout", count, options, "60").c_str())));
  server.pagesFolder = optionOr("pages-directory", count, options, "");
  return server;
}

pappl_system_t* createSystem(int count, cups_option_t* options, void* /*data*/) {
  try {
    theServer() = std::make_unique<Server>(serverOptionsOf(count, options));
    return theServer()->system();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "wren-printer-app: %s\n", error.what());
    return nullptr;
  }
}
}  // namespace

int runProgram(int argc, char** argv) {
  const bool isTrial = argc > 1 && std::strcmp(argv[1], "trial") == 0;
  if (!addDeviceSchemes(isTrial)) {
    std::fprintf(stderr, "wren-printer-app: USB printers cannot be used\n");
  }
  if (isTrial) return runTrial(argc - 1, argv + 1);
  const auto drivers = printerDrivers();
  return papplMainloop(argc, argv, WREN_VERSION, kFooter, static_cast<int>(drivers.size()),
                       drivers.data(), driverForDevice, describeDriver, nullptr, nullptr,
                       createSystem, nullptr, nullptr);
}

}  // namespace wren::app
