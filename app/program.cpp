// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/program.h"

#include <pappl/pappl.h>
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "app/network_device.h"
#include "app/printer_driver.h"
#include "app/server.h"
#include "app/sub_commands.h"
#include "app/trial.h"
#include "common/own_program.h"

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

// A number of the command line. Throws std::runtime_error.
int numberOf(const char* name, int count, cups_option_t* options, int initial, int highest) {
  const std::string text = optionOr(name, count, options, std::to_string(initial));
  int number = -1;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || number < 0 || number > highest) {
    throw std::runtime_error(std::string(name) + " cannot be \"" + text + "\" (0 to " +
                             std::to_string(highest) + ")");
  }
  return number;
}

// Where the sub-commands look for a server of the system. A link belongs to the service of the
// package: a second server would answer at its address, with other printers.
constexpr const char* kSystemSocket = "/run/wren-printer-app.sock";

bool isServiceElsewhere() {
  return std::getenv("SNAP_COMMON") == nullptr && std::filesystem::is_symlink(kSystemSocket);
}

// PAPPL names its socket by the user; the link of the package needs one name.
void linkSocket() {
  const char* folder = std::getenv("RUNTIME_DIRECTORY");
  if (folder == nullptr) return;
  const std::string link = std::string(folder) + "/wren-printer-app.sock";
  const std::string socket = "wren-printer-app" + std::to_string(::getuid()) + ".sock";
  ::unlink(link.c_str());
  if (::symlink(socket.c_str(), link.c_str()) != 0) {
    throw std::runtime_error("cannot make the link " + link);
  }
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
  server.port = numberOf("server-port", count, options, 0, 65535);
  server.stateFolder = optionOr("state-directory", count, options, defaultStateFolder());
  server.logFile = optionOr("log-file", count, options, server.logFile);
  server.logLevel = logLevelOf(cupsGetOption("log-level", count, options));
  server.clientTimeoutSeconds =
      static_cast<unsigned>(numberOf("client-timeout", count, options, 60, 86400));
  server.pagesFolder = optionOr("pages-directory", count, options, "");
  return server;
}

pappl_system_t* createSystem(int count, cups_option_t* options, void* /*data*/) {
  const bool isPrivate = cupsGetOption("private-server", count, options) != nullptr;
  if ((isPrivate || ::getuid() == 0) && isServiceElsewhere()) {
    std::fputs("wren-printer-app: the service does not run: systemctl start wren-printer-app\n",
               stderr);
    return nullptr;
  }
  try {
    const ServerOptions server = serverOptionsOf(count, options);
    linkSocket();
    theServer() = std::make_unique<Server>(server);
    return theServer()->system();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "wren-printer-app: %s\n", error.what());
    return nullptr;
  }
}

void showUsage(void* /*data*/) {
  std::fputs(R"(Usage: wren-printer-app SUB-COMMAND [OPTIONS] [FILE]

Sub-commands:
  add -d PRINTER -m DRIVER -v ADDRESS   Adds a printer.
  autoadd          Adds the supported printers that are found.
  beep             Sounds the buzzer of a printer.
  cancel           Cancels one job or, with -a, all.
  cut [full|partial]  Feeds and cuts the paper.
  default          Shows or sets the default printer.
  delete           Deletes a printer.
  devices          Lists printers that can be reached.
  drawer           Opens the cash drawer.
  drivers          Lists the drivers: one for each width of paper.
  feed MM          Feeds paper.
  jobs             Lists the jobs of a printer.
  modify           Changes the defaults of a printer.
  options          Lists the options of a printer.
  pause            Stops printing after the present job.
  printers         Lists the printers.
  resume           Prints again.
  selftest         Prints a page that shows what the printer can.
  server           Serves until it is told to end.
  shutdown         Ends the server after the jobs that print.
  status           Shows whether the server or a printer is idle, and how printers are.
  submit           Prints a file.
  trial            Serves one printer with a software printer behind it (trial --help).

Options:
  -a               All jobs (cancel).
  -d PRINTER       The printer.
  -j NUMBER        The job (cancel).
  -m DRIVER        wren58, wren80 or wren112 (add, modify).
  -n COPIES        Number of copies (submit).
  -o NAME=VALUE    An option of a job, a printer or the server (add, modify, server, submit).
  -u URI           Another server: ipp://HOST:PORT/ipp/system.
  -v ADDRESS       The device: socket: or usb: (add, modify).
  --help           This list.
  --version        The version.

Options of the server (-o):
  client-timeout=SECONDS   drops clients that stall; 60 (default), 0 is never
  listen-hostname=ADDRESS  localhost (default), or * for the network as well
  log-file=FILE            - (default) is standard error
  log-level=LEVEL          debug, info, warn (default), error or fatal
  pages-directory=FOLDER   keeps each printed page, for tests
  server-name=NAME         what clients see
  server-port=PORT         the TCP port
  state-directory=FOLDER   where printers and jobs are kept

The manual page has an example for each: man wren-printer-app
)",
             stdout);
}

}  // namespace

int runProgram(int argc, char** argv) {
  const bool isTrial = argc > 1 && std::strcmp(argv[1], "trial") == 0;
  if (!addDeviceSchemes(isTrial)) {
    std::fprintf(stderr, "wren-printer-app: USB printers cannot be used\n");
  }
  if (isTrial) return runTrial(argc - 1, argv + 1);
  if (argc > 1 && isPrinterCommand(argv[1])) return runPrinterCommand(argc, argv);
  const auto drivers = printerDrivers();
  // PAPPL starts a server by the word that started this process, without looking at PATH.
  std::string path = ownProgram();
  if (argc > 0 && !path.empty()) argv[0] = path.data();
  const int status = papplMainloop(
      argc, argv, WREN_VERSION, kFooter, static_cast<int>(drivers.size()), drivers.data(),
      driverForDevice, describeDriver, nullptr, nullptr, createSystem, showUsage, nullptr);
  if (argc > 1 && std::strcmp(argv[1], "status") == 0) printConditions(argc, argv);
  return status;
}

}  // namespace wren::app
