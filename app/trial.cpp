// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/trial.h"

#include <pappl/pappl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "app/paper.h"
#include "app/server.h"
#include "common/handles.h"
#include "preview/options.h"
#include "preview/print_server.h"

namespace wren::app {
namespace {

struct TrialOptions {
  ServerOptions server;
  std::string driver = "wren80";
  std::string device;  ///< empty: a software printer of our own
};

constexpr const char* kPrinterName = "wren";
constexpr int kWrongUsage = 2;

// The software printer, in a thread of its own until it is destroyed.
class SoftwarePrinter {
 public:
  explicit SoftwarePrinter(const std::string& folder) {
    int ends[2];
    if (::pipe(ends) != 0) throw std::runtime_error("cannot make a pipe");
    stopEnd_ = FileDescriptor(ends[0]);
    callEnd_ = FileDescriptor(ends[1]);
    options_.listen = true;
    options_.address = "0";
    options_.directory = folder;
    server_ = std::make_unique<preview::PrintServer>(options_, stopEnd_.get());
    const std::string error = server_->open();
    if (!error.empty()) throw std::runtime_error(error);
    thread_ = std::thread([this] { server_->serve(); });
  }
  SoftwarePrinter(const SoftwarePrinter&) = delete;
  SoftwarePrinter& operator=(const SoftwarePrinter&) = delete;
  ~SoftwarePrinter() {
    callEnd_.reset();
    thread_.join();
  }

  // It would print a request for its status.
  std::string uri() const { return "socket://" + server_->name() + "/?status=off"; }

 private:
  preview::Options options_;
  FileDescriptor stopEnd_;
  FileDescriptor callEnd_;
  std::unique_ptr<preview::PrintServer> server_;
  std::thread thread_;
};

void useDevice(pappl_system_t* system, const TrialOptions& options, const std::string& device) {
  pappl_printer_t* old = papplSystemFindPrinter(system, "/ipp/print/wren", 0, nullptr);
  if (old != nullptr) papplPrinterDelete(old);
  pappl_printer_t* printer =
      papplPrinterCreate(system, 0, kPrinterName, options.driver.c_str(), nullptr, device.c_str());
  if (printer == nullptr) {
    throw std::runtime_error("cannot print with " + options.driver + " to " + device);
  }
}

int serve(TrialOptions options) {
  if (options.server.port == 0) options.server.port = freePort();
  Server server(options.server);
  std::unique_ptr<SoftwarePrinter> printer;
  std::string device = options.device;
  if (device.empty()) {
    printer = std::make_unique<SoftwarePrinter>(options.server.stateFolder);
    device = printer->uri();
  }
  useDevice(server.system(), options, device);
  std::printf("ipp://localhost:%d/ipp/print/%s\nhttp://localhost:%d/\n", options.server.port,
              kPrinterName, options.server.port);
  std::fflush(stdout);
  papplSystemRun(server.system());
  papplSystemDelete(server.system());
  return 0;
}

}  // namespace

int runTrial(int argc, char** argv) {
  TrialOptions options;
  std::string paper = "80";
  CLI::App app("One printer in the foreground, on loopback, until SIGTERM",
               "wren-printer-app trial");
  app.add_option("--port", options.server.port, "TCP port; 0 is a free one")
      ->check(CLI::Range(0, 65535));
  app.add_option("--directory", options.server.stateFolder, "Folder for its state and its paper")
      ->required();
  app.add_option("--paper", paper, "Width of the paper in mm")
      ->check(CLI::IsMember({"58", "80", "112"}));
  app.add_option("--device", options.device,
                 "Address of a printer; a software printer if left out");
  app.add_option("--pages", options.server.pagesFolder, "Folder for the pages handed to the core");
  app.add_option("--client-timeout", options.server.clientTimeoutSeconds,
                 "Seconds after which a client that stalls is dropped; 0 is never");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    std::fprintf(stderr, "wren-printer-app: %s\n", error.what());
    return kWrongUsage;
  }
  options.driver = "wren" + paper;
  try {
    return serve(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "wren-printer-app: %s\n", error.what());
    return 1;
  }
}

}  // namespace wren::app
