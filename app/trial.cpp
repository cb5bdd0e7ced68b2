// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/trial.h"

#include <pappl/pappl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "app/paper.h"
#include "app/server.h"
#include "common/handles.h"
#include "preview/options.h"
#include "preview/print_server.h"

namespace wren::app {
namespace {

struct TrialOptions {
  ServerOptions server;
  std::vector<std::string> papers;  ///< of wren, wren2, ..., in mm
  std::string device;               ///< empty: a software printer of our own for each printer
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

  std::string uri() const { return "socket://" + server_->name(); }

 private:
  preview::Options options_;
  FileDescriptor stopEnd_;
  FileDescriptor callEnd_;
  std::unique_ptr<preview::PrintServer> server_;
  std::thread thread_;
};

// "wren", "wren2" and so on.
std::string nameOf(int number) {
  return number == 1 ? kPrinterName : kPrinterName + std::to_string(number);
}

void useDevice(pappl_system_t* system, const std::string& name, const std::string& driver,
               const std::string& device) {
  const std::string path = "/ipp/print/" + name;
  pappl_printer_t* old = papplSystemFindPrinter(system, path.c_str(), 0, nullptr);
  if (old != nullptr) papplPrinterDelete(old);
  pappl_printer_t* printer =
      papplPrinterCreate(system, 0, name.c_str(), driver.c_str(), nullptr, device.c_str());
  if (printer == nullptr) {
    throw std::runtime_error("cannot print with " + driver + " to " + device);
  }
}

// The first printer's paper lies beside the state; that of others in a folder of their name.
std::string paperFolder(const TrialOptions& options, int number) {
  const std::string& folder = options.server.stateFolder;
  if (number == 1) return folder;
  std::string other = folder + "/" + nameOf(number);
  std::filesystem::create_directories(other);
  return other;
}

int serve(TrialOptions options) {
  if (options.server.port == 0) options.server.port = freePort();
  Server server(options.server);
  std::vector<std::unique_ptr<SoftwarePrinter>> printers;
  int number = 0;
  for (const std::string& paper : options.papers) {
    const std::string name = nameOf(++number);
    std::string device = options.device;
    if (device.empty()) {
      printers.push_back(std::make_unique<SoftwarePrinter>(paperFolder(options, number)));
      device = printers.back()->uri();
    }
    useDevice(server.system(), name, "wren" + paper, device);
  }
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
  const CLI::IsMember isPaper({"58", "80", "112"});
  app.add_option("--paper", paper, "Width of the paper in mm")->check(isPaper);
  app.add_option("--device", options.device,
                 "Address of a printer; a software printer if left out");
  app.add_option("--pages", options.server.pagesFolder, "Folder for the pages handed to the core");
  app.add_option("--more-papers", options.papers, "Of further printers, wren2, ...: for tests")
      ->check(isPaper)
      ->delimiter(',')
      ->group("");
  app.add_option("--listen", options.server.host, "Address to listen on, * for all: for tests")
      ->group("");
  app.add_option("--client-timeout", options.server.clientTimeoutSeconds,
                 "Seconds after which a client that stalls is dropped; 0 is never");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    std::fprintf(stderr, "wren-printer-app: %s\n", error.what());
    return kWrongUsage;
  }
  options.papers.insert(options.papers.begin(), paper);
  try {
    return serve(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "wren-printer-app: %s\n", error.what());
    return 1;
  }
}

}  // namespace wren::app
