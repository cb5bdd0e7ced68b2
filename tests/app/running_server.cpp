// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/app/running_server.h"

#include <cups/cups.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <sstream>
#include <thread>

#include "app/server.h"
#include "common/handles.h"

namespace wren_test {
namespace {

struct DeleteIpp {
  void operator()(ipp_t* message) const { ippDelete(message); }
};
struct CloseHttp {
  void operator()(http_t* http) const { httpClose(http); }
};
using Http = std::unique_ptr<http_t, CloseHttp>;

template <typename Done>
bool waitUntil(Done done) {
  const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!done()) {
    if (std::chrono::steady_clock::now() > until) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

Http connect(int port) {
  return Http(httpConnect2("localhost", port, nullptr, AF_UNSPEC, HTTP_ENCRYPTION_IF_REQUESTED, 1,
                           10000, nullptr));
}

// Sub-commands that find nobody at the socket start a server of their own.
bool answers(const std::filesystem::path& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::snprintf(address.sun_path, sizeof address.sun_path, "%s", path.c_str());
  const wren::FileDescriptor client(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  return ::connect(client.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
}

}  // namespace

RunningServer::RunningServer(const std::vector<std::string>& options)
    : options_(options), port_(wren::app::freePort()) {
  start();
}

// A server of root has its socket below SNAP_COMMON, one of a user below TMPDIR.
ProcessSpec RunningServer::specOf(const std::vector<std::string>& arguments) const {
  ProcessSpec spec;
  spec.program = WREN_PRINTER_APP;
  spec.arguments = {"wren-printer-app"};
  spec.arguments.insert(spec.arguments.end(), arguments.begin(), arguments.end());
  const std::string folder = folder_.path().string();
  spec.environment = {"PATH=/usr/bin:/bin",
                      "HOME=" + folder,
                      "TMPDIR=" + folder,
                      "SNAP_COMMON=" + folder,
                      "STATE_DIRECTORY=" + stateFolder().string(),
                      "TZ=UTC"};
  return spec;
}

std::filesystem::path RunningServer::socket() const {
  const std::string user = ::getuid() == 0 ? "" : std::to_string(::getuid());
  return folder_.path() / ("wren-printer-app" + user + ".sock");
}

void RunningServer::start() {
  std::vector<std::string> arguments = {"server",
                                        "-o",
                                        "server-port=" + std::to_string(port_),
                                        "-o",
                                        "state-directory=" + stateFolder().string(),
                                        "-o",
                                        "log-file=-"};
  for (const auto& option : options_) arguments.insert(arguments.end(), {"-o", option});
  process_ = std::make_unique<Process>(specOf(arguments));
  const bool isReady = waitUntil([&] { return answers(socket()) || process_->hasEnded(); });
  if (!isReady || process_->hasEnded()) {
    ADD_FAILURE() << "the server did not start: " << process_->errSoFar();
  }
}

ProcessResult RunningServer::stop(int signal) {
  process_->signal(signal);
  return waitForEnd();
}

ProcessResult RunningServer::waitForEnd() {
  return process_->finish();
}

ProcessResult RunningServer::run(const std::vector<std::string>& arguments) const {
  return runProcess(specOf(arguments));
}

std::string RunningServer::ask(const std::vector<std::string>& arguments) const {
  const ProcessResult result = run(arguments);
  EXPECT_EQ(result.exitStatus, 0) << arguments.at(0) << ": " << result.err;
  return result.out;
}

int RunningServer::submit(const std::string& printer, const std::string& file,
                          const std::vector<std::string>& options) const {
  std::vector<std::string> arguments = {"submit", "-d", printer};
  arguments.insert(arguments.end(), options.begin(), options.end());
  arguments.push_back(file);
  const std::string out = run(arguments).out;
  const auto dash = out.rfind('-');
  return dash == std::string::npos ? 0 : std::atoi(out.c_str() + dash + 1);
}

std::string RunningServer::stateOf(const std::string& printer, int job) const {
  std::istringstream lines(run({"jobs", "-d", printer}).out);
  int id = 0;
  for (std::string line, state; std::getline(lines, line);) {
    if ((std::istringstream(line) >> id >> state) && id == job) return state;
  }
  return {};
}

bool RunningServer::waitForState(const std::string& printer, int job,
                                 const std::string& state) const {
  return waitUntil([&] { return stateOf(printer, job) == state; });
}

bool RunningServer::waitUntilSaved(const std::string& text) const {
  return waitUntil(
      [&] { return readFile(stateFolder() / "state").find(text) != std::string::npos; });
}

bool RunningServer::waitForEmptySpool() const {
  return waitUntil([&] { return std::filesystem::is_empty(stateFolder() / "spool"); });
}

std::string RunningServer::attributeOf(const std::string& printer, const std::string& name) const {
  return askByIpp(IPP_OP_GET_PRINTER_ATTRIBUTES, printer, 0, name);
}

std::string RunningServer::jobAttribute(const std::string& printer, int job,
                                        const std::string& name) const {
  return askByIpp(IPP_OP_GET_JOB_ATTRIBUTES, printer, job, name);
}

std::string RunningServer::askByIpp(int operation, const std::string& printer, int job,
                                    const std::string& name) const {
  const Http http = connect(port_);
  ipp_t* request = ippNewRequest(static_cast<ipp_op_t>(operation));
  const std::string path = "/ipp/print/" + printer;
  const std::string uri = "ipp://localhost:" + std::to_string(port_) + path;
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr, uri.c_str());
  if (job != 0) ippAddInteger(request, IPP_TAG_OPERATION, IPP_TAG_INTEGER, "job-id", job);
  const std::unique_ptr<ipp_t, DeleteIpp> response(
      cupsDoRequest(http.get(), request, path.c_str()));
  ipp_attribute_t* found = ippFindAttribute(response.get(), name.c_str(), IPP_TAG_ZERO);
  if (found == nullptr) return {};
  std::vector<char> text(ippAttributeString(found, nullptr, 0) + 1);
  ippAttributeString(found, text.data(), text.size());
  return text.data();
}

}  // namespace wren_test
