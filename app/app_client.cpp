// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/app_client.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

namespace wren::app {
namespace {

constexpr int kConnectMs = 10'000;
constexpr const char* kSystemResource = "/ipp/system";

std::string environmentOr(const char* name, const char* other) {
  const char* value = std::getenv(name);
  return value == nullptr ? other : value;
}

// Where PAPPL's main loop puts the socket of a server: first that of the user, then that of root.
std::vector<std::string> socketsOf(const char* program) {
  std::string_view name(program);
  name.remove_prefix(std::min(name.rfind('/') + 1, name.size()));
  const std::string base(name);
  std::vector<std::string> paths;
  if (::getuid() != 0) {
    paths.push_back(environmentOr("TMPDIR", "/tmp") + "/" + base + std::to_string(::getuid()) +
                    ".sock");
  }
  paths.push_back(environmentOr("SNAP_COMMON", "/run") + "/" + base + ".sock");
  return paths;
}

http_t* connectTo(const std::string& host, int port) {
  return httpConnect2(host.c_str(), port, nullptr, AF_UNSPEC, HTTP_ENCRYPTION_IF_REQUESTED, 1,
                      kConnectMs, nullptr);
}

std::string textOf(ipp_attribute_t* attribute) {
  const char* text = attribute == nullptr ? nullptr : ippGetString(attribute, 0, nullptr);
  return text == nullptr ? "" : text;
}

AppJob jobOf(ipp_t* response) {
  AppJob job;
  job.id = ippGetInteger(ippFindAttribute(response, "job-id", IPP_TAG_INTEGER), 0);
  if (ipp_attribute_t* state = ippFindAttribute(response, "job-state", IPP_TAG_ENUM)) {
    job.state = static_cast<ipp_jstate_t>(ippGetInteger(state, 0));
  }
  job.message = textOf(ippFindAttribute(response, "job-state-message", IPP_TAG_TEXT));
  return job;
}

// The jobs of an answer with several, each in a group of its own.
std::vector<AppJob> jobsOf(ipp_t* response) {
  std::vector<AppJob> jobs;
  bool isNew = true;
  for (ipp_attribute_t* attribute = ippFirstAttribute(response); attribute != nullptr;
       attribute = ippNextAttribute(response)) {
    if (ippGetGroupTag(attribute) != IPP_TAG_JOB) {
      isNew = true;
      continue;
    }
    if (isNew) jobs.emplace_back();
    isNew = false;
    const std::string name = ippGetName(attribute);
    if (name == "job-id") jobs.back().id = ippGetInteger(attribute, 0);
    if (name == "job-state") {
      jobs.back().state = static_cast<ipp_jstate_t>(ippGetInteger(attribute, 0));
    }
    if (name == "job-state-message") jobs.back().message = textOf(attribute);
  }
  return jobs;
}

struct Address {
  std::array<char, 256> host;
  std::array<char, 1024> resource;
  int port = 0;
};

Address parseAddress(const std::string& uri) {
  Address address;
  std::array<char, 32> scheme;
  std::array<char, 256> user;
  const http_uri_status_t status =
      httpSeparateURI(HTTP_URI_CODING_ALL, uri.c_str(), scheme.data(), scheme.size(), user.data(),
                      user.size(), address.host.data(), address.host.size(), &address.port,
                      address.resource.data(), address.resource.size());
  const std::string_view kind(scheme.data());
  if (status < HTTP_URI_STATUS_OK || (kind != "ipp" && kind != "ipps")) {
    throw std::runtime_error("not the address of a printer (ipp://...): " + uri);
  }
  return address;
}

}  // namespace

AppClient::AppClient(const char* program, const std::string& uri) {
  if (!uri.empty()) {
    const Address address = parseAddress(uri);
    const std::string resource = address.resource.data();
    if (resource.starts_with("/ipp/print/")) resource_ = resource;
    http_.reset(connectTo(address.host.data(), address.port));
    if (http_ == nullptr) throw std::runtime_error("cannot reach " + uri);
    return;
  }
  for (const std::string& path : socketsOf(program)) {
    if (::access(path.c_str(), F_OK) == 0) http_.reset(connectTo(path, 0));
    if (http_ != nullptr) return;
  }
  throw std::runtime_error("the server does not run");
}

AppClient::Ipp AppClient::request(ipp_op_t operation, const std::string& resource) const {
  Ipp message(ippNewRequest(operation));
  const bool isSystem = resource == kSystemResource;
  ippAddString(message.get(), IPP_TAG_OPERATION, IPP_TAG_URI,
               isSystem ? "system-uri" : "printer-uri", nullptr,
               ("ipp://localhost" + resource).c_str());
  ippAddString(message.get(), IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr,
               cupsUser());
  return message;
}

AppClient::Ipp AppClient::send(Ipp message, const std::string& resource) {
  Ipp response(cupsDoRequest(http_.get(), message.release(), resource.c_str()));
  const ipp_status_t status =
      response == nullptr ? cupsLastError() : ippGetStatusCode(response.get());
  if (response != nullptr && status < IPP_STATUS_ERROR_BAD_REQUEST) return response;
  const std::string said = textOf(
      response == nullptr ? nullptr
                          : ippFindAttribute(response.get(), "status-message", IPP_TAG_TEXT));
  throw std::runtime_error(said.empty() ? cupsLastErrorString() : said);
}

std::vector<AppPrinter> AppClient::printers() {
  if (!resource_.empty()) {
    const Ipp response = send(request(IPP_OP_GET_PRINTER_ATTRIBUTES, resource_), resource_);
    return {{textOf(ippFindAttribute(response.get(), "printer-name", IPP_TAG_NAME)), resource_}};
  }
  const Ipp response = send(request(IPP_OP_GET_PRINTERS, kSystemResource), kSystemResource);
  std::vector<AppPrinter> found;
  for (ipp_attribute_t* attribute = ippFirstAttribute(response.get()); attribute != nullptr;
       attribute = ippNextAttribute(response.get())) {
    const char* name = ippGetName(attribute);
    if (name == nullptr) continue;
    if (std::string_view(name) == "printer-name") {
      found.push_back({textOf(attribute), "/ipp/print/" + textOf(attribute)});
    }
  }
  return found;
}

std::string AppClient::defaultPrinter() {
  const Ipp response = send(request(IPP_OP_CUPS_GET_DEFAULT, "/"), "/");
  return textOf(ippFindAttribute(response.get(), "printer-name", IPP_TAG_NAME));
}

int AppClient::submit(const AppPrinter& printer, const std::string& name, const std::string& format,
                      const std::string& document) {
  Ipp message = request(IPP_OP_PRINT_JOB, printer.resource);
  ippAddString(message.get(), IPP_TAG_OPERATION, IPP_TAG_NAME, "job-name", nullptr, name.c_str());
  ippAddString(message.get(), IPP_TAG_OPERATION, IPP_TAG_MIMETYPE, "document-format", nullptr,
               format.c_str());
  const std::size_t length = ippLength(message.get()) + document.size();
  if (cupsSendRequest(http_.get(), message.get(), printer.resource.c_str(), length) ==
      HTTP_STATUS_CONTINUE) {
    cupsWriteRequestData(http_.get(), document.data(), document.size());
  }
  const Ipp response(cupsGetResponse(http_.get(), printer.resource.c_str()));
  const int id = ippGetInteger(ippFindAttribute(response.get(), "job-id", IPP_TAG_INTEGER), 0);
  if (id == 0) throw std::runtime_error(cupsLastErrorString());
  return id;
}

AppJob AppClient::job(const AppPrinter& printer, int id) {
  Ipp message = request(IPP_OP_GET_JOB_ATTRIBUTES, printer.resource);
  ippAddInteger(message.get(), IPP_TAG_OPERATION, IPP_TAG_INTEGER, "job-id", id);
  return jobOf(send(std::move(message), printer.resource).get());
}

AppJob AppClient::firstJob(const AppPrinter& printer) {
  Ipp message = request(IPP_OP_GET_JOBS, printer.resource);
  ippAddString(message.get(), IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "which-jobs", nullptr,
               "not-completed");
  constexpr std::array<const char*, 3> kWanted = {"job-id", "job-state", "job-state-message"};
  ippAddStrings(message.get(), IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes",
                static_cast<int>(kWanted.size()), nullptr, kWanted.data());
  const Ipp answer = send(std::move(message), printer.resource);
  const std::vector<AppJob> jobs = jobsOf(answer.get());
  // PAPPL lists the newest first.
  const auto printing = std::find_if(jobs.begin(), jobs.end(), [](const AppJob& job) {
    return job.state == IPP_JSTATE_PROCESSING;
  });
  if (printing != jobs.end()) return *printing;
  return jobs.empty() ? AppJob() : jobs.back();
}

std::string AppClient::page(const std::string& path) {
  httpClearFields(http_.get());
  if (httpGet(http_.get(), path.c_str()) != 0) throw std::runtime_error("the server went away");
  http_status_t status = HTTP_STATUS_CONTINUE;
  while (status == HTTP_STATUS_CONTINUE) status = httpUpdate(http_.get());
  if (status != HTTP_STATUS_OK) throw std::runtime_error(httpStatus(status));
  std::string text;
  std::array<char, 1024> part;
  ssize_t count = 0;
  while ((count = httpRead2(http_.get(), part.data(), part.size())) > 0) {
    text.append(part.data(), static_cast<std::size_t>(count));
  }
  return text;
}

}  // namespace wren::app
