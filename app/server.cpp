// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/server.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "app/client_timeout.h"
#include "app/command_job.h"
#include "app/document_callbacks.h"
#include "app/document_types.h"
#include "app/lock_order.h"
#include "app/printer_driver.h"
#include "app/status_page.h"
#include "app/web/web_pages.h"
#include "common/handles.h"

namespace wren::app {
namespace {

namespace fs = std::filesystem;

constexpr pappl_soptions_t kSystemOptions = PAPPL_SOPTIONS_MULTI_QUEUE |
                                            PAPPL_SOPTIONS_WEB_INTERFACE | PAPPL_SOPTIONS_WEB_LOG |
                                            PAPPL_SOPTIONS_WEB_SECURITY;

std::string makePrivateFolder(const std::string& path) {
  std::error_code error;
  fs::create_directories(path, error);
  if (error) throw std::runtime_error("cannot make the folder " + path + ": " + error.message());
  fs::permissions(path, fs::perms::owner_all, error);
  return path;
}

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : value;
}

bool isShared(const std::string& host) {
  return host != "localhost" && host != "127.0.0.1" && host != "::1";
}

// Who listens on this machine alone needs no encryption, and IPP wants one address for each kind
// of security.
pappl_soptions_t systemOptions(const std::string& host) {
  return kSystemOptions | (isShared(host) ? PAPPL_SOPTIONS_NONE : PAPPL_SOPTIONS_NO_TLS);
}

pappl_version_t firmwareVersion() {
  pappl_version_t version = {{}, {}, {}, {WREN_VERSION_NUMBERS}};
  std::snprintf(version.name, sizeof version.name, "Wren");
  std::snprintf(version.sversion, sizeof version.sversion, "%s", WREN_VERSION);
  return version;
}

}  // namespace

Server::Server(const ServerOptions& options)
    : keeper_(options.pagesFolder),
      state_(makePrivateFolder(options.stateFolder)),
      origins_(isShared(options.host)),
      commands_(options.stateFolder),
      documents_(options.stateFolder),
      papers_(options.stateFolder + "/papers"),
      services_{&keeper_, &state_, &origins_, &commands_, &documents_, &papers_} {
  setClientTimeout(std::chrono::seconds(options.clientTimeoutSeconds));
  if (!options.pagesFolder.empty()) makePrivateFolder(options.pagesFolder);
  const std::string spool = makePrivateFolder(options.stateFolder + "/spool");
  system_ = papplSystemCreate(systemOptions(options.host), options.name.c_str(), options.port,
                              "_print,_universal", spool.c_str(), options.logFile.c_str(),
                              options.logLevel, nullptr, false);
  if (system_ == nullptr) throw std::runtime_error("cannot create the printer application");
  keepLockOrder(system_);
  const auto drivers = printerDrivers();
  papplSystemSetPrinterDrivers(system_, static_cast<int>(drivers.size()), drivers.data(),
                               driverForDevice, addStatusPages, describeDriver, &services_);
  papplSystemSetEventCallback(system_, onEvent, this);
  acceptDocuments(system_, kPrinterFormat, services_);
  acceptCommands(system_, kPrinterFormat, services_);
  knowDocumentTypes(system_);
  pappl_version_t version = firmwareVersion();
  papplSystemSetVersions(system_, 1, &version);
  papplSystemSetFooterHTML(system_, "");
  web::addSharedFiles(system_);
  watchKeptPapers(system_, papers_);
  state_.start(system_);
  listen(options);
  if (papplSystemGetDNSSDName(system_, nullptr, 0) == nullptr) {
    papplSystemSetDNSSDName(system_, options.name.c_str());
  }
}

// Without a password, the web pages of PAPPL let every client add and delete printers.
void Server::listen(const ServerOptions& options) {
  std::string host = options.host;
  char password[256] = "";
  papplSystemGetPassword(system_, password, sizeof password);
  if (isShared(host) && password[0] == '\0') {
    papplLog(system_, PAPPL_LOGLEVEL_ERROR,
             "Not shared: set a password on http://localhost:%d/security and start again.",
             papplSystemGetHostPort(system_));
    host = "localhost";
  }
  if (!papplSystemAddListeners(system_, host == "*" ? nullptr : host.c_str())) {
    throw std::runtime_error("cannot listen on " + host + ", port " + std::to_string(options.port));
  }
}

// A system has one event callback.
void Server::onEvent(pappl_system_t* /*system*/, pappl_printer_t* /*printer*/, pappl_job_t* job,
                     pappl_event_t event, void* server) {
  auto* const self = static_cast<Server*>(server);
  self->origins_.note(job, event);
  self->state_.noteChange();
}

std::string defaultStateFolder() {
  if (std::string given = environment("STATE_DIRECTORY"); !given.empty()) return given;
  constexpr const char* kName = "/wren-printer-app";
  if (::getuid() == 0) return std::string("/var/lib") + kName;
  if (std::string state = environment("XDG_STATE_HOME"); !state.empty()) return state + kName;
  return environment("HOME") + "/.local/state" + kName;
}

int freePort() {
  const FileDescriptor probe(::socket(AF_INET, SOCK_STREAM, 0));
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  auto* const name = reinterpret_cast<sockaddr*>(&address);
  if (!probe || ::bind(probe.get(), name, length) != 0) return 0;
  if (::getsockname(probe.get(), name, &length) != 0) return 0;
  return ntohs(address.sin_port);
}

}  // namespace wren::app
