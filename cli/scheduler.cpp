// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/scheduler.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <utility>

#include "common/handles.h"

namespace wren::cli {
namespace {

constexpr int kConnectMs = 5000;
constexpr std::string_view kDefaultSuffix = "-default";

struct DeleteIpp {
  void operator()(ipp_t* ipp) const { ippDelete(ipp); }
};
using Ipp = std::unique_ptr<ipp_t, DeleteIpp>;

const char* noPassword(const char*, http_t*, const char*, const char*, void*) {
  return nullptr;
}

Answer lastAnswer() {
  const ipp_status_t status = cupsLastError();
  Answer answer;
  answer.done = status <= IPP_STATUS_OK_CONFLICTING;
  answer.isRefused = status == IPP_STATUS_ERROR_NOT_AUTHORIZED ||
                     status == IPP_STATUS_ERROR_NOT_AUTHENTICATED ||
                     status == IPP_STATUS_ERROR_FORBIDDEN ||
                     status == IPP_STATUS_ERROR_CUPS_AUTHENTICATION_CANCELED;
  if (!answer.done) answer.reason = cupsLastErrorString();
  return answer;
}

std::string uriOf(const std::string& queue) {
  char uri[HTTP_MAX_URI];
  httpAssembleURIf(HTTP_URI_CODING_ALL, uri, sizeof uri, "ipp", nullptr, "localhost", 0,
                   "/printers/%s", queue.c_str());
  return uri;
}

void addUri(ipp_t* request, const std::string& queue) {
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr,
               uriOf(queue).c_str());
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr,
               cupsUser());
}

// CUPS's own text of an attribute has backslashes before brackets and quotes.
std::string textOf(ipp_attribute_t* attribute) {
  std::string text;
  for (int i = 0; i < ippGetCount(attribute); ++i) {
    const char* value = ippGetString(attribute, i, nullptr);
    if (value != nullptr) text += (i > 0 ? "," : "") + std::string(value);
  }
  if (!text.empty()) return text;
  char other[2048];
  ippAttributeString(attribute, other, sizeof other);
  return other;
}

void takeAttribute(Queue& queue, ipp_attribute_t* attribute) {
  const std::string name = ippGetName(attribute);
  if (name == "printer-name") queue.name = textOf(attribute);
  if (name == "device-uri") queue.uri = textOf(attribute);
  if (name == "printer-make-and-model") queue.makeAndModel = textOf(attribute);
  if (name == "printer-state") {
    queue.isStopped = ippGetInteger(attribute, 0) == IPP_PSTATE_STOPPED;
  }
  if (name == "printer-is-accepting-jobs") queue.takesJobs = ippGetBoolean(attribute, 0) != 0;
  const bool hasValue = ippGetValueTag(attribute) != IPP_TAG_NOVALUE;
  if (name.ends_with(kDefaultSuffix) && hasValue) {
    const std::string option = name.substr(0, name.size() - kDefaultSuffix.size());
    // By its number, as it is given to lp.
    queue.defaults[option] = ippGetValueTag(attribute) == IPP_TAG_ENUM
                                 ? std::to_string(ippGetInteger(attribute, 0))
                                 : textOf(attribute);
  }
}

/// Calls `take` with each attribute of a group, and `next` at the end of each group.
template <typename Take, typename Next>
void forEachGroup(ipp_t* answer, ipp_tag_t group, Take take, Next next) {
  bool inGroup = false;
  for (ipp_attribute_t* at = ippFirstAttribute(answer); at != nullptr;
       at = ippNextAttribute(answer)) {
    const bool belongs = ippGetGroupTag(at) == group && ippGetName(at) != nullptr;
    if (inGroup && !belongs) next();
    inGroup = belongs;
    if (belongs) take(at);
  }
  if (inGroup) next();
}

void addDefaults(ipp_t* request, const QueueSetup& setup) {
  cups_option_t* list = nullptr;
  int count = 0;
  for (const auto& [name, value] : setup.defaults) {
    count = cupsAddOption((name + "-default").c_str(), value.c_str(), count, &list);
  }
  cupsEncodeOptions2(request, count, list, IPP_TAG_PRINTER);
  cupsFreeOptions(count, list);
  for (const std::string& name : setup.removedDefaults) {
    ippAddOutOfBand(request, IPP_TAG_PRINTER, IPP_TAG_DELETEATTR, (name + "-default").c_str());
  }
}

void takeDeviceAttribute(Device& device, ipp_attribute_t* attribute) {
  const std::string name = ippGetName(attribute);
  if (name == "device-class") device.kind = textOf(attribute);
  if (name == "device-uri") device.uri = textOf(attribute);
  if (name == "device-make-and-model") device.makeAndModel = textOf(attribute);
  if (name == "device-info") device.info = textOf(attribute);
}

}  // namespace

Scheduler::Scheduler() {
  cupsSetPasswordCB2(noPassword, nullptr);
  http_.reset(httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(), 1,
                           kConnectMs, nullptr));
}

std::vector<Queue> Scheduler::queues() {
  const Ipp answer(cupsDoRequest(http_.get(), ippNewRequest(IPP_OP_CUPS_GET_PRINTERS), "/"));
  std::vector<Queue> queues;
  Queue queue;
  forEachGroup(
      answer.get(), IPP_TAG_PRINTER, [&](ipp_attribute_t* at) { takeAttribute(queue, at); },
      [&] { queues.push_back(std::exchange(queue, {})); });
  return queues;
}

std::optional<Queue> Scheduler::find(const std::string& name) {
  // CUPS compares the names of queues without case.
  const std::vector<Queue> all = queues();
  const auto found = std::find_if(all.begin(), all.end(), [&](const Queue& queue) {
    return strcasecmp(queue.name.c_str(), name.c_str()) == 0;
  });
  return found == all.end() ? std::nullopt : std::optional<Queue>(*found);
}

bool Scheduler::fetchPpd(const std::string& queue, const std::string& path) {
  const FileDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  char resource[HTTP_MAX_URI];
  std::snprintf(resource, sizeof resource, "/printers/%s.ppd", queue.c_str());
  return file && cupsGetFd(http_.get(), resource, file.get()) == HTTP_STATUS_OK;
}

std::vector<RememberedJob> Scheduler::jobs(const std::string& queue) {
  ipp_t* request = ippNewRequest(IPP_OP_GET_JOBS);
  addUri(request, queue);
  ippAddString(request, IPP_TAG_OPERATION, IPP_CONST_TAG(IPP_TAG_KEYWORD), "which-jobs", nullptr,
               "all");
  ippAddString(request, IPP_TAG_OPERATION, IPP_CONST_TAG(IPP_TAG_KEYWORD), "requested-attributes",
               nullptr, "all");
  const Ipp answer(cupsDoRequest(http_.get(), request, "/"));
  std::vector<RememberedJob> jobs;
  RememberedJob job;
  forEachGroup(
      answer.get(), IPP_TAG_JOB,
      [&](ipp_attribute_t* at) {
        if (std::string_view(ippGetName(at)) == "job-id") job.id = ippGetInteger(at, 0);
        job.options[ippGetName(at)] = textOf(at);
      },
      [&] { jobs.push_back(std::exchange(job, {})); });
  return jobs;
}

Answer Scheduler::put(const QueueSetup& setup) {
  ipp_t* request = ippNewRequest(IPP_OP_CUPS_ADD_MODIFY_PRINTER);
  addUri(request, setup.name);
  ippAddString(request, IPP_TAG_PRINTER, IPP_TAG_URI, "device-uri", nullptr, setup.uri.c_str());
  ippAddInteger(request, IPP_TAG_PRINTER, IPP_TAG_ENUM, "printer-state", IPP_PSTATE_IDLE);
  ippAddBoolean(request, IPP_TAG_PRINTER, "printer-is-accepting-jobs", 1);
  addDefaults(request, setup);
  const Ipp answer(cupsDoFileRequest(http_.get(), request, "/admin/", setup.ppdPath.c_str()));
  return lastAnswer();
}

Answer Scheduler::remove(const std::string& name) {
  ipp_t* request = ippNewRequest(IPP_OP_CUPS_DELETE_PRINTER);
  addUri(request, name);
  const Ipp answer(cupsDoRequest(http_.get(), request, "/admin/"));
  return lastAnswer();
}

Answer Scheduler::sendCommands(const std::string& queue, const std::string& title,
                               const std::string& text, int& job) {
  const Ipp request(ippNewRequest(IPP_OP_PRINT_JOB));
  addUri(request.get(), queue);
  ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_NAME, "job-name", nullptr, title.c_str());
  ippAddString(request.get(), IPP_TAG_OPERATION, IPP_CONST_TAG(IPP_TAG_MIMETYPE), "document-format",
               nullptr, "application/vnd.cups-command");
  const std::string resource = "/printers/" + queue;
  const std::size_t length = ippLength(request.get()) + text.size();
  if (cupsSendRequest(http_.get(), request.get(), resource.c_str(), length) ==
      HTTP_STATUS_CONTINUE) {
    cupsWriteRequestData(http_.get(), text.data(), text.size());
  }
  const Ipp answer(cupsGetResponse(http_.get(), resource.c_str()));
  job = ippGetInteger(ippFindAttribute(answer.get(), "job-id", IPP_TAG_INTEGER), 0);
  return lastAnswer();
}

Answer Scheduler::findDevices(const std::string& schemes, int seconds,
                              std::vector<Device>& devices) {
  ipp_t* request = ippNewRequest(IPP_OP_CUPS_GET_DEVICES);
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr,
               cupsUser());
  ippAddInteger(request, IPP_TAG_OPERATION, IPP_TAG_INTEGER, "timeout", seconds);
  if (!schemes.empty()) {
    ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_NAME, "include-schemes", nullptr,
                 schemes.c_str());
  }
  const Ipp answer(cupsDoRequest(http_.get(), request, "/"));
  Answer result = lastAnswer();
  Device device;
  forEachGroup(
      answer.get(), IPP_TAG_PRINTER, [&](ipp_attribute_t* at) { takeDeviceAttribute(device, at); },
      [&] { devices.push_back(std::exchange(device, {})); });
  return result;
}

std::string startSchedulerHint() {
  struct stat status = {};
  const bool hasSystemd = stat("/run/systemd/system", &status) == 0;
  return hasSystemd ? "systemctl start cups" : "service cups start";
}

}  // namespace wren::cli
