// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/cli/scheduler_stand_in.h"

#include <fcntl.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

namespace wren::cli {
namespace {

std::string lastPart(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

std::string textOf(ipp_attribute_t* attribute) {
  std::array<char, 8192> text = {};
  ippAttributeString(attribute, text.data(), text.size());
  return text.data();
}

std::string valueOf(ipp_t* ipp, const char* name) {
  ipp_attribute_t* attribute = ippFindAttribute(ipp, name, IPP_TAG_ZERO);
  return attribute == nullptr ? "" : textOf(attribute);
}

// The name of the queue that a request is for.
std::string queueOf(ipp_t* request) {
  return lastPart(valueOf(request, "printer-uri"));
}

std::string nickNameOf(const std::string& ppd) {
  const std::string line = "*NickName: \"";
  const auto at = ppd.find(line);
  if (at == std::string::npos) return {};
  const auto begin = at + line.size();
  return ppd.substr(begin, ppd.find('"', begin) - begin);
}

void setText(ipp_t* ipp, ipp_tag_t tag, const char* name, const std::string& text) {
  if (ipp_attribute_t* old = ippFindAttribute(ipp, name, IPP_TAG_ZERO)) {
    ippDeleteAttribute(ipp, old);
  }
  ippAddString(ipp, IPP_TAG_PRINTER, tag, name, nullptr, text.c_str());
}

}  // namespace

SchedulerStandIn::SchedulerStandIn(const std::string& socketPath)
    : listener_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (socketPath.size() >= sizeof address.sun_path) throw std::runtime_error("path is too long");
  socketPath.copy(address.sun_path, sizeof address.sun_path - 1);
  // Programs of the test may run as another user.
  if (bind(listener_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      chmod(socketPath.c_str(), 0777) != 0 || ::listen(listener_.get(), 8) != 0) {
    throw std::runtime_error("no socket at " + socketPath);
  }
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  wakeUp_[0] = FileDescriptor(ends[0]);
  wakeUp_[1] = FileDescriptor(ends[1]);
  thread_ = std::thread([this] { listen(); });
}

SchedulerStandIn::~SchedulerStandIn() {
  wakeUp_[1].reset();
  thread_.join();
  {
    const std::lock_guard lock(mutex_);
    for (const int connection : connections_) shutdown(connection, SHUT_RDWR);
  }
  for (std::thread& client : clients_) client.join();
}

void SchedulerStandIn::listen() {
  for (;;) {
    pollfd waited[] = {{listener_.get(), POLLIN, 0}, {wakeUp_[0].get(), POLLIN, 0}};
    if (poll(waited, 2, -1) < 0) continue;
    if (waited[1].revents != 0) return;
    http_t* http = httpAcceptConnection(listener_.get(), 1);
    if (http == nullptr) continue;
    fcntl(httpGetFd(http), F_SETFD, FD_CLOEXEC);
    const std::lock_guard lock(mutex_);
    connections_.push_back(httpGetFd(http));
    clients_.emplace_back([this, http] { serve(http); });
  }
}

void SchedulerStandIn::serve(http_t* http) {
  while (answerOne(http)) {
  }
  const std::lock_guard lock(mutex_);
  std::erase(connections_, httpGetFd(http));
  httpClose(http);
}

bool SchedulerStandIn::answerOne(http_t* http) {
  std::array<char, 1024> resource = {};
  http_state_t state = HTTP_STATE_WAITING;
  while (state == HTTP_STATE_WAITING) {
    state = httpReadRequest(http, resource.data(), resource.size());
    if (httpError(http) != 0) return false;
  }
  if (state != HTTP_STATE_GET && state != HTTP_STATE_POST) return false;
  http_status_t status = HTTP_STATUS_CONTINUE;
  while (status == HTTP_STATUS_CONTINUE) status = httpUpdate(http);
  if (status != HTTP_STATUS_OK) return false;
  if (state == HTTP_STATE_GET) {
    sendPpd(http, resource.data());
  } else {
    sendAnswer(http, resource.data());
  }
  return httpError(http) == 0;
}

void SchedulerStandIn::sendPpd(http_t* http, const std::string& resource) {
  std::string ppd;
  {
    const std::lock_guard lock(mutex_);
    requests_.push_back({"GET", resource});
    std::string name = lastPart(resource);
    if (name.ends_with(".ppd")) name.resize(name.size() - 4);
    if (const Kept* queue = find(name)) ppd = queue->ppd;
  }
  httpClearFields(http);
  httpSetLength(http, ppd.size());
  httpWriteResponse(http, ppd.empty() ? HTTP_STATUS_NOT_FOUND : HTTP_STATUS_OK);
  httpWrite2(http, ppd.data(), ppd.size());
  httpFlushWrite(http);
}

void SchedulerStandIn::sendAnswer(http_t* http, const std::string& resource) {
  if (httpGetExpect(http) == HTTP_STATUS_CONTINUE) httpWriteResponse(http, HTTP_STATUS_CONTINUE);
  const Ipp request(ippNew());
  ipp_state_t state = IPP_STATE_IDLE;
  while (state != IPP_STATE_DATA) {
    state = ippRead(http, request.get());
    if (state == IPP_STATE_ERROR) return;
  }
  std::string data;
  std::array<char, 4096> part;
  for (ssize_t count = 0; httpGetState(http) == HTTP_STATE_POST_RECV &&
                          (count = httpRead2(http, part.data(), part.size())) > 0;) {
    data.append(part.data(), static_cast<std::size_t>(count));
  }
  const std::lock_guard lock(mutex_);
  httpClearFields(http);
  if (refusal_ == Refusal::kNeedsPassword && isRefused(ippGetOperation(request.get()))) {
    httpSetField(http, HTTP_FIELD_WWW_AUTHENTICATE, "Basic realm=\"CUPS\"");
    httpSetLength(http, 0);
    httpWriteResponse(http, HTTP_STATUS_UNAUTHORIZED);
    httpFlushWrite(http);
    return;
  }
  const Ipp answer = answerTo(request.get(), resource, data);
  httpSetField(http, HTTP_FIELD_CONTENT_TYPE, "application/ipp");
  httpSetLength(http, ippLength(answer.get()));
  httpWriteResponse(http, HTTP_STATUS_OK);
  ippWrite(http, answer.get());
  httpFlushWrite(http);
}

bool SchedulerStandIn::isRefused(ipp_op_t operation) const {
  return refusal_ != Refusal::kNone && refusal_ != Refusal::kConflicts &&
         (operation == IPP_OP_CUPS_ADD_MODIFY_PRINTER || operation == IPP_OP_CUPS_DELETE_PRINTER ||
          operation == IPP_OP_CUPS_GET_DEVICES);
}

SchedulerStandIn::Ipp SchedulerStandIn::answerTo(ipp_t* request, const std::string& resource,
                                                 const std::string& data) {
  const ipp_op_t operation = ippGetOperation(request);
  Request seen = {ippOpString(operation), resource, {}, data};
  for (ipp_attribute_t* at = ippFirstAttribute(request); at != nullptr;
       at = ippNextAttribute(request)) {
    if (ippGetName(at) != nullptr) seen.attributes[ippGetName(at)] = textOf(at);
  }
  requests_.push_back(seen);
  Ipp answer(ippNewResponse(request));
  const std::string name = queueOf(request);
  const auto fail = [&](ipp_status_t status, const char* words) {
    ippSetStatusCode(answer.get(), status);
    ippAddString(answer.get(), IPP_TAG_OPERATION, IPP_TAG_TEXT, "status-message", nullptr, words);
  };
  if (isRefused(operation)) {
    if (refusal_ == Refusal::kNotAuthorized) fail(IPP_STATUS_ERROR_NOT_AUTHORIZED, "Not you");
    if (refusal_ == Refusal::kNotAuthenticated) fail(IPP_STATUS_ERROR_NOT_AUTHENTICATED, "Who");
    if (refusal_ == Refusal::kForbidden) fail(IPP_STATUS_ERROR_FORBIDDEN, "Forbidden here");
    if (refusal_ == Refusal::kFails) fail(IPP_STATUS_ERROR_DEVICE, "Out of paste");
  } else if (operation == IPP_OP_CUPS_GET_PRINTERS) {
    addQueues(answer.get());
  } else if (operation == IPP_OP_GET_JOBS) {
    addJobs(answer.get(), name);
  } else if (operation == IPP_OP_CUPS_GET_DEVICES) {
    addDevices(answer.get());
    if (devices_.empty()) fail(IPP_STATUS_ERROR_NOT_FOUND, "No devices");
  } else if (operation == IPP_OP_CUPS_ADD_MODIFY_PRINTER) {
    put(request, data);
    if (refusal_ == Refusal::kConflicts) fail(IPP_STATUS_OK_CONFLICTING, "Other values");
  } else if (operation == IPP_OP_CUPS_DELETE_PRINTER) {
    std::erase_if(queues_, [&](const Kept& queue) { return queue.name == name; });
  } else if (operation == IPP_OP_PRINT_JOB && !refusesCommands_) {
    ippAddInteger(answer.get(), IPP_TAG_JOB, IPP_TAG_INTEGER, "job-id", 217);
  } else {
    fail(IPP_STATUS_ERROR_DOCUMENT_FORMAT_NOT_SUPPORTED, "Unsupported here");
  }
  return answer;
}

void SchedulerStandIn::put(ipp_t* request, const std::string& data) {
  const std::string name = queueOf(request);
  Kept* queue = find(name);
  if (queue == nullptr) {
    queues_.push_back({name, Ipp(ippNew()), ""});
    queue = &queues_.back();
    setText(queue->attributes.get(), IPP_TAG_NAME, "printer-name", name);
  }
  ipp_t* kept = queue->attributes.get();
  for (ipp_attribute_t* at = ippFirstAttribute(request); at != nullptr;
       at = ippNextAttribute(request)) {
    if (ippGetGroupTag(at) != IPP_TAG_PRINTER || ippGetName(at) == nullptr) continue;
    if (ipp_attribute_t* old = ippFindAttribute(kept, ippGetName(at), IPP_TAG_ZERO)) {
      ippDeleteAttribute(kept, old);
    }
    if (ippGetValueTag(at) != IPP_TAG_DELETEATTR) ippCopyAttribute(kept, at, 0);
  }
  if (data.empty()) return;
  queue->ppd = data;
  setText(kept, IPP_TAG_TEXT, "printer-make-and-model", nickNameOf(data));
}

void SchedulerStandIn::addQueues(ipp_t* answer) const {
  for (const Kept& queue : queues_) {
    ippAddSeparator(answer);
    ippCopyAttributes(answer, queue.attributes.get(), 0, nullptr, nullptr);
  }
}

void SchedulerStandIn::addJobs(ipp_t* answer, const std::string& queue) const {
  for (const Job& job : jobs_) {
    if (job.queue != queue) continue;
    ippAddSeparator(answer);
    ippAddInteger(answer, IPP_TAG_JOB, IPP_TAG_INTEGER, "job-id", job.id);
    for (const auto& [name, value] : job.options) {
      ippAddString(answer, IPP_TAG_JOB, IPP_TAG_NAME, name.c_str(), nullptr, value.c_str());
    }
  }
}

void SchedulerStandIn::addDevices(ipp_t* answer) const {
  for (const Device& device : devices_) {
    ippAddSeparator(answer);
    const std::pair<const char*, const char*> kTexts[] = {
        {"device-info", device.info},
        {"device-make-and-model", device.makeAndModel},
        {"device-id", "MFG:Maker;MDL:Model;"},
        {"device-location", "Back room"}};
    ippAddString(answer, IPP_TAG_PRINTER, IPP_TAG_KEYWORD, "device-class", nullptr, device.kind);
    for (const auto& [name, text] : kTexts) {
      ippAddString(answer, IPP_TAG_PRINTER, IPP_TAG_TEXT, name, nullptr, text);
    }
    ippAddString(answer, IPP_TAG_PRINTER, IPP_TAG_URI, "device-uri", nullptr, device.uri);
  }
}

SchedulerStandIn::Kept* SchedulerStandIn::find(const std::string& name) {
  const auto found = std::find_if(queues_.begin(), queues_.end(), [&](const Kept& queue) {
    return strcasecmp(queue.name.c_str(), name.c_str()) == 0;
  });
  return found == queues_.end() ? nullptr : &*found;
}

void SchedulerStandIn::add(const Queue& queue) {
  Kept kept = {queue.name, Ipp(ippNew()), queue.ppd};
  ipp_t* ipp = kept.attributes.get();
  setText(ipp, IPP_TAG_NAME, "printer-name", queue.name);
  setText(ipp, IPP_TAG_URI, "device-uri", queue.uri);
  setText(ipp, IPP_TAG_TEXT, "printer-make-and-model", nickNameOf(queue.ppd));
  ippAddInteger(ipp, IPP_TAG_PRINTER, IPP_TAG_ENUM, "printer-state",
                queue.isStopped ? IPP_PSTATE_STOPPED : IPP_PSTATE_IDLE);
  ippAddBoolean(ipp, IPP_TAG_PRINTER, "printer-is-accepting-jobs", queue.takesJobs ? 1 : 0);
  // What a real one gives each queue by itself, of several kinds.
  ippAddInteger(ipp, IPP_TAG_PRINTER, IPP_TAG_INTEGER, "copies-default", 1);
  const std::array<const char*, 2> kSheets = {"none", "none"};
  ippAddStrings(ipp, IPP_TAG_PRINTER, IPP_TAG_NAME, "job-sheets-default", 2, nullptr,
                kSheets.data());
  ippAddOutOfBand(ipp, IPP_TAG_PRINTER, IPP_TAG_NOVALUE, "job-hold-until-default");
  ippAddOutOfBand(ipp, IPP_TAG_PRINTER, IPP_TAG_NOVALUE, "print-scaling-default");
  const Ipp media(ippNew());
  ippAddInteger(media.get(), IPP_TAG_ZERO, IPP_TAG_INTEGER, "media-top-margin", 0);
  ippAddCollection(ipp, IPP_TAG_PRINTER, "media-col-default", media.get());
  cups_option_t* options = nullptr;
  int count = 0;
  for (const auto& [name, value] : queue.defaults) {
    count = cupsAddOption((name + "-default").c_str(), value.c_str(), count, &options);
  }
  cupsEncodeOptions2(ipp, count, options, IPP_TAG_PRINTER);
  cupsFreeOptions(count, options);
  const std::lock_guard lock(mutex_);
  queues_.push_back(std::move(kept));
}

void SchedulerStandIn::add(const Job& job) {
  const std::lock_guard lock(mutex_);
  jobs_.push_back(job);
}

void SchedulerStandIn::setDevices(const std::vector<Device>& devices) {
  const std::lock_guard lock(mutex_);
  devices_ = devices;
}

void SchedulerStandIn::refuse(Refusal refusal) {
  const std::lock_guard lock(mutex_);
  refusal_ = refusal;
}

void SchedulerStandIn::refuseCommands() {
  const std::lock_guard lock(mutex_);
  refusesCommands_ = true;
}

std::vector<std::string> SchedulerStandIn::queueNames() {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> names;
  for (const Kept& queue : queues_) names.push_back(queue.name);
  return names;
}

std::string SchedulerStandIn::attribute(const std::string& queue, const std::string& name) {
  const std::lock_guard lock(mutex_);
  const Kept* kept = find(queue);
  return kept == nullptr ? "" : valueOf(kept->attributes.get(), name.c_str());
}

std::string SchedulerStandIn::ppdOf(const std::string& queue) {
  const std::lock_guard lock(mutex_);
  const Kept* kept = find(queue);
  return kept == nullptr ? "" : kept->ppd;
}

std::vector<SchedulerStandIn::Request> SchedulerStandIn::requests(const std::string& operation) {
  const std::lock_guard lock(mutex_);
  std::vector<Request> found;
  for (const Request& request : requests_) {
    if (request.operation == operation) found.push_back(request);
  }
  return found;
}

}  // namespace wren::cli
