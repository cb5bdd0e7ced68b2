// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The sub-commands of PAPPL's main loop with a server of ours.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "common/handles.h"
#include "tests/app/running_server.h"
#include "tests/app/slow_printer.h"
#include "tests/support/process.h"

namespace wren_test {
namespace {

using testing::HasSubstr;

// Where the name server of the local network does not run, PAPPL alone ends with a signal here.
TEST(SubCommands, ListDevicesWithoutANameService) {
  RunningServer server;
  EXPECT_EQ(server.run({"devices"}).exitStatus, 0);
  EXPECT_EQ(server.run({"autoadd"}).exitStatus, 0);
  EXPECT_EQ(server.ask({"printers"}), "");
}

// PAPPL alone tells the number 0 for each.
TEST(SubCommands, NameAPrinterThatWasJustAdded) {
  SlowPrinter printer;
  RunningServer server;
  for (const char* name : {"till", "bar", "door"}) {
    server.ask({"add", "-d", name, "-m", "wren80", "-v", printer.uri()});
  }
  server.ask({"default", "-d", "bar"});
  EXPECT_EQ(server.ask({"default"}), "bar\n");
  server.ask({"delete", "-d", "till"});
  EXPECT_EQ(server.ask({"printers"}), "bar\ndoor\n");
  EXPECT_EQ(server.ask({"default"}), "bar\n");
}

// The word that starts them has no folder, as in a shell.
TEST(SubCommands, StartAServerWhereNoneRuns) {
  RunningServer server;
  server.ask({"add", "-d", "till", "-m", "wren80", "-v", "socket://127.0.0.1:9"});
  ASSERT_TRUE(server.waitUntilSaved("till"));
  server.stop(SIGTERM);
  EXPECT_EQ(server.ask({"printers"}), "till\n");
  server.ask({"shutdown"});
}

TEST(SubCommands, ControlPrintersAndJobs) {
  SlowPrinter printer;
  RunningServer server;
  server.ask({"add", "-d", "till", "-m", "wren80", "-v", printer.uri()});
  server.ask({"pause", "-d", "till"});
  EXPECT_THAT(server.ask({"status", "-d", "till"}), HasSubstr("paused"));
  const int job = server.submit("till", std::string(WREN_EXAMPLES) + "/receipt.pdf");
  EXPECT_EQ(server.stateOf("till", job), "pending");
  server.ask({"cancel", "-d", "till", "-j", std::to_string(job)});
  EXPECT_EQ(server.stateOf("till", job), "canceled");
  server.ask({"resume", "-d", "till"});
  EXPECT_THAT(server.ask({"status", "-d", "till"}), HasSubstr("idle"));
  EXPECT_THAT(server.ask({"drivers"}), HasSubstr("wren58 "));
  EXPECT_THAT(server.ask({"options", "-d", "till"}), HasSubstr("om_80x200mm"));
  EXPECT_THAT(server.ask({"status"}), HasSubstr("Running"));
}

// All of 127/8 is this machine: an address that nobody listens on unless on every address.
bool listensOnEveryAddress(int port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK + 1);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  const wren::FileDescriptor client(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  return ::connect(client.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
}

TEST(Sharing, NeedsAPassword) {
  RunningServer server({"listen-hostname=*"});
  EXPECT_FALSE(listensOnEveryAddress(server.port()));
  EXPECT_THAT(server.log(), HasSubstr("Not shared: set a password"));
  server.ask({"add", "-d", "till", "-m", "wren80", "-v", "socket://127.0.0.1:9"});
  ASSERT_TRUE(server.waitUntilSaved("till"));
  server.stop(SIGTERM);
  const std::string state = readFile(server.stateFolder() / "state");
  std::ofstream(server.stateFolder() / "state") << "Password 0123~0123\n" << state;
  server.start();
  EXPECT_TRUE(listensOnEveryAddress(server.port())) << server.log();
}

ProcessResult answerTo(std::vector<std::string> arguments) {
  ProcessSpec spec;
  spec.program = WREN_PRINTER_APP;
  spec.arguments = std::move(arguments);
  spec.arguments.insert(spec.arguments.begin(), "wren-printer-app");
  return runProcess(spec);
}

TEST(Trial, TellsItsOptionsAndRefusesOthers) {
  const ProcessResult help = answerTo({"trial", "--help"});
  EXPECT_EQ(help.exitStatus, 0);
  EXPECT_THAT(help.out, HasSubstr("--directory"));
  EXPECT_EQ(help.err, "");
  for (const std::vector<std::string>& wrong :
       {std::vector<std::string>{"trial"},
        {"trial", "--directory", "/nonexistent", "--paper", "81"},
        {"trial", "--directory", "/nonexistent", "--port", "65536"}}) {
    const ProcessResult refused = answerTo(wrong);
    EXPECT_EQ(refused.exitStatus, 2) << refused.err;
    EXPECT_EQ(refused.out, "");
    EXPECT_THAT(refused.err, testing::StartsWith("wren-printer-app: --"));
  }
}

// The names at the start of the lines of `--help` that are indented: sub-commands and options.
std::vector<std::string> namesInHelp(const std::string& help) {
  std::vector<std::string> names;
  std::istringstream lines(help);
  for (std::string line, name; std::getline(lines, line);) {
    const std::size_t option = line.find('=');
    if (line.starts_with("  ") && option < line.find(' ', 2)) {
      names.push_back(line.substr(2, option - 1));
    } else if (line.starts_with("  ") && (std::istringstream(line) >> name))
      names.push_back(name);
  }
  return names;
}

TEST(ManPage, NamesEachSubCommandAndOptionOfTheHelp) {
  const ProcessResult help = answerTo({"--help"});
  ASSERT_EQ(help.exitStatus, 0);
  std::string page = readFile(WREN_MAN_PAGE);
  std::erase(page, '\\');
  const auto names = namesInHelp(help.out);
  EXPECT_THAT(names, testing::IsSupersetOf(
                         {"add", "server", "submit", "trial", "-o", "--help", "server-port="}));
  for (const auto& name : names) {
    if (name.starts_with('-') || name.ends_with('=')) {
      EXPECT_THAT(page, testing::AnyOf(HasSubstr("\n.BI " + name), HasSubstr("\n.B " + name)));
    } else {
      EXPECT_THAT(page, HasSubstr("\n.B wren-printer-app " + name)) << "an example of " << name;
    }
  }
}

TEST(ManPage, NamesTheVersionOfTheProgram) {
  const ProcessResult version = answerTo({"--version"});
  EXPECT_THAT(readFile(WREN_MAN_PAGE),
              HasSubstr("\"Wren " + version.out.substr(0, version.out.find('\n'))));
}

}  // namespace
}  // namespace wren_test
