// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/sub_commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "app/app_client.h"
#include "app/command_job.h"
#include "job/command_file.h"

namespace wren::app {
namespace {

using job::CommandKind;

constexpr int kWrongUsage = 2;
constexpr std::chrono::milliseconds kPollInterval(100);
// A command that is done sooner says nothing.
constexpr std::chrono::milliseconds kPatience(1'000);

struct SubCommand {
  const char* name;
  CommandKind kind;
  const char* help;
};

constexpr std::array<SubCommand, 5> kSubCommands = {{
    {"drawer", CommandKind::kOpenDrawer, "Open the cash drawer"},
    {"beep", CommandKind::kBeep, "Sound the buzzer"},
    {"cut", CommandKind::kCut, "Feed and cut the paper"},
    {"feed", CommandKind::kFeed, "Feed paper"},
    {"selftest", CommandKind::kPrintSelfTestPage, "Print a page that shows what the printer can"},
}};

const SubCommand* findSubCommand(std::string_view name) {
  const auto* const found =
      std::find_if(kSubCommands.begin(), kSubCommands.end(),
                   [&](const SubCommand& command) { return name == command.name; });
  return found == kSubCommands.end() ? nullptr : found;
}

struct Arguments {
  std::string printer;
  std::string uri;
  std::string value;
};

void addArguments(CLI::App& app, CommandKind kind, Arguments& arguments) {
  app.add_option("-d", arguments.printer, "Name of the printer; the default printer if left out")
      ->type_name("PRINTER");
  app.add_option("-u", arguments.uri, "Address of a server, or of a printer in place of its name")
      ->type_name("URI");
  if (kind == CommandKind::kCut) {
    app.add_option("cut", arguments.value, "The printer's own cut if left out")
        ->check(CLI::IsMember({"full", "partial"}));
  } else if (kind == CommandKind::kFeed) {
    app.add_option("mm", arguments.value, "How far, in millimetres")
        ->required()
        ->check(CLI::Range(1, static_cast<int>(job::kMaxFeedMm)));
  }
}

AppPrinter choosePrinter(AppClient& client, const Arguments& arguments) {
  const std::vector<AppPrinter> printers = client.printers();
  if (client.isForOnePrinter()) return printers.at(0);
  const std::string name = arguments.printer.empty() ? client.defaultPrinter() : arguments.printer;
  std::string known;
  for (const AppPrinter& printer : printers) {
    if (printer.name == name) return printer;
    known += (known.empty() ? "" : ", ") + printer.name;
  }
  if (known.empty()) throw std::runtime_error("the server has no printers");
  throw std::runtime_error("there is no printer \"" + name + "\"; printers: " + known);
}

// PAPPL makes a message for each job that has none of ours: "Job pending."
bool isWait(const AppJob& job) {
  return job.message.starts_with("Waiting: ");
}

// What the job waits for; empty if it should be done soon.
std::string waitOf(AppClient& client, const AppPrinter& printer, const AppJob& job) {
  if (isWait(job)) return job.message;
  const AppJob first = client.firstJob(printer);
  if (first.id == 0 || first.id == job.id) return {};
  const std::string behind = "Behind job " + std::to_string(first.id) + ".";
  return isWait(first) ? behind + " " + first.message : behind;
}

AppJob waitForEnd(AppClient& client, const AppPrinter& printer, int id) {
  const auto start = std::chrono::steady_clock::now();
  std::string said;
  for (;;) {
    AppJob job = client.job(printer, id);
    if (job.hasEnded()) return job;
    if (std::chrono::steady_clock::now() - start > kPatience) {
      const std::string wait = waitOf(client, printer, job);
      if (!wait.empty() && wait != said) {
        std::fprintf(stderr, "wren-printer-app: job %d on %s waits. %s\n", id, printer.name.c_str(),
                     wait.c_str());
        said = wait;
      }
    }
    std::this_thread::sleep_for(kPollInterval);
  }
}

void sendCommand(const char* program, const SubCommand& command, const Arguments& arguments) {
  AppClient client(program, arguments.uri);
  const AppPrinter printer = choosePrinter(client, arguments);
  std::string text = std::string(job::kCommandFileHead) + "\n" +
                     job::kCommandNames[static_cast<std::size_t>(command.kind)];
  if (!arguments.value.empty()) text += " " + arguments.value;
  const int id = client.submit(printer, command.name, kCommandFormat, text + "\n");
  const AppJob ended = waitForEnd(client, printer, id);
  if (ended.state == IPP_JSTATE_COMPLETED) return;
  const char* const how = ended.state == IPP_JSTATE_CANCELED ? "cancelled" : "aborted";
  throw std::runtime_error("job " + std::to_string(id) + " was " + how +
                           (ended.message.empty() ? "" : ": " + ended.message));
}

}  // namespace

bool isPrinterCommand(std::string_view name) {
  return findSubCommand(name) != nullptr;
}

int runPrinterCommand(int argc, char** argv) {
  const SubCommand& command = *findSubCommand(argv[1]);
  Arguments arguments;
  CLI::App app(command.help, std::string("wren-printer-app ") + command.name);
  addArguments(app, command.kind, arguments);
  try {
    app.parse(argc - 1, argv + 1);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? EXIT_SUCCESS : kWrongUsage;
  }
  try {
    sendCommand(argv[0], command, arguments);
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "wren-printer-app: %s\n", error.what());
    return EXIT_FAILURE;
  }
}

void printConditions(int argc, char** argv) {
  Arguments arguments;
  CLI::App app("", "wren-printer-app status");
  addArguments(app, CommandKind::kBeep, arguments);
  app.allow_extras();
  try {
    app.parse(argc - 1, argv + 1);
    AppClient client(argv[0], arguments.uri);
    for (const AppPrinter& printer : client.printers()) {
      if (!arguments.printer.empty() && printer.name != arguments.printer) continue;
      const std::string path = printer.resource.substr(printer.resource.rfind('/'));
      std::printf("%s: %s", printer.name.c_str(), client.page(path + "/status.txt").c_str());
    }
  } catch (const std::exception&) {
    // PAPPL's own output has told what is wrong with the arguments or the server.
  }
}

}  // namespace wren::app
