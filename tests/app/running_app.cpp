// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/app/running_app.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

#include "tests/app/printed_commands.h"

namespace wren_test {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

struct CloseHttp {
  void operator()(http_t* http) const { httpClose(http); }
};
using Http = std::unique_ptr<http_t, CloseHttp>;

template <typename Done>
bool waitUntil(Done done, double seconds) {
  const auto until = Clock::now() + std::chrono::duration<double>(seconds);
  while (!done()) {
    if (Clock::now() > until) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
  }
  return true;
}

Http connect(const std::string& address, int port) {
  return Http(httpConnect2(address.c_str(), port, nullptr, AF_UNSPEC, HTTP_ENCRYPTION_IF_REQUESTED,
                           1, 10000, nullptr));
}

Ipp newRequest(ipp_op_t operation, const std::string& uri) {
  Ipp request(ippNewRequest(operation));
  ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr, uri.c_str());
  ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr,
               "tester");
  return request;
}

void addFormat(ipp_t* request, const std::string& format) {
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_MIMETYPE, "document-format", nullptr,
               format.c_str());
}

std::vector<std::string> split(const std::string& text) {
  std::vector<std::string> parts;
  std::istringstream in(text);
  for (std::string part; std::getline(in, part, ',');) parts.push_back(part);
  return parts;
}

void add(ipp_t* request, const JobAttribute& attribute) {
  const std::vector<std::string> values = split(attribute.value);
  const int count = static_cast<int>(values.size());
  if (attribute.type == IPP_TAG_INTEGER || attribute.type == IPP_TAG_ENUM) {
    std::vector<int> numbers;
    numbers.reserve(values.size());
    for (const auto& value : values) numbers.push_back(std::stoi(value));
    ippAddIntegers(request, IPP_TAG_JOB, attribute.type, attribute.name.c_str(), count,
                   numbers.data());
    return;
  }
  std::vector<const char*> texts;
  texts.reserve(values.size());
  for (const auto& value : values) texts.push_back(value.c_str());
  ippAddStrings(request, IPP_TAG_JOB, attribute.type, attribute.name.c_str(), count, nullptr,
                texts.data());
}

std::string textOf(ipp_t* message, const char* name) {
  ipp_attribute_t* attribute = ippFindAttribute(message, name, IPP_TAG_ZERO);
  if (attribute == nullptr) return {};
  std::vector<char> text(ippAttributeString(attribute, nullptr, 0) + 1);
  ippAttributeString(attribute, text.data(), text.size());
  return text.data();
}

JobOutcome outcomeOf(ipp_t* response) {
  JobOutcome outcome;
  if (response == nullptr) return outcome;
  outcome.status = ippGetStatusCode(response);
  outcome.id = ippGetInteger(ippFindAttribute(response, "job-id", IPP_TAG_INTEGER), 0);
  ipp_attribute_t* state = ippFindAttribute(response, "job-state", IPP_TAG_ENUM);
  if (state != nullptr) outcome.state = static_cast<ipp_jstate_t>(ippGetInteger(state, 0));
  outcome.reasons = textOf(response, "job-state-reasons");
  outcome.message = textOf(response, "job-state-message");
  outcome.impressions =
      ippGetInteger(ippFindAttribute(response, "job-impressions-completed", IPP_TAG_INTEGER), 0);
  return outcome;
}

std::vector<fs::path> sortedFiles(const fs::path& folder, const std::string& extension) {
  std::vector<fs::path> files;
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(folder, ignored)) {
    if (entry.path().extension() == extension) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

ProcessResult runApp(const std::vector<std::string>& arguments) {
  ProcessSpec spec;
  spec.program = WREN_PRINTER_APP;
  spec.arguments = {"wren-printer-app"};
  spec.arguments.insert(spec.arguments.end(), arguments.begin(), arguments.end());
  spec.environment = {"PATH=/usr/bin:/bin"};
  return runProcess(spec);
}

RunningApp::RunningApp(const AppSetup& setup) : setup_(setup) {
  if (!setup.state.empty()) std::ofstream(folder() / "state") << setup.state;
  start();
}

void RunningApp::start() {
  ProcessSpec spec;
  spec.program = setup_.program.empty() ? WREN_PRINTER_APP : setup_.program;
  spec.arguments = {"wren-printer-app", "trial",
                    "--directory",      folder().string(),
                    "--pages",          (folder() / "pages").string(),
                    "--paper",          std::to_string(setup_.paperMm)};
  if (!setup_.device.empty())
    spec.arguments.insert(spec.arguments.end(), {"--device", setup_.device});
  spec.arguments.insert(spec.arguments.end(), setup_.options.begin(), setup_.options.end());
  spec.environment = {"PATH=/usr/bin:/bin", "HOME=" + folder().string(),
                      "TMPDIR=" + folder().string(), "TZ=UTC",
                      // Without a thread sanitizer in the program this says nothing to it.
                      std::string("TSAN_OPTIONS=suppressions=") + WREN_TSAN_SUPPRESSIONS};
  spec.timeoutSeconds = setup_.timeoutSeconds;
  process_ = std::make_unique<Process>(spec);
  const bool started = waitUntil(
      [&] {
        const std::string out = process_->outSoFar();
        return std::count(out.begin(), out.end(), '\n') >= 2 || process_->hasEnded();
      },
      20);
  const std::string out = process_->outSoFar();
  printerUri_ = out.substr(0, out.find('\n'));
  const auto colon = printerUri_.rfind(':');
  port_ = colon == std::string::npos
              ? 0
              : static_cast<int>(std::strtol(printerUri_.c_str() + colon + 1, nullptr, 10));
  // The lines are printed just before the program listens to them.
  if (!started || !waitUntil([&] { return connect(address_, port_) != nullptr; }, 10)) {
    ADD_FAILURE() << "wren-printer-app did not start: " << process_->errSoFar();
  }
}

void RunningApp::restart(int signal) {
  stop(signal);
  start();
}

ProcessResult RunningApp::stop(int signal) {
  process_->signal(signal);
  ProcessResult result = process_->finish();
  return result;
}

std::string RunningApp::uriOf(const std::string& printer) const {
  return printerUri_.substr(0, printerUri_.rfind('/') + 1) + printer;
}

fs::path RunningApp::paperFolder(const std::string& printer) const {
  return printer == kFirstPrinter ? folder() : folder() / printer;
}

// Sends a request with a document behind it.
Ipp RunningApp::exchange(Ipp request, const std::string& document,
                         const std::string& printer) const {
  const std::string resource = "/ipp/print/" + printer;
  const Http http = connect(address_, port_);
  if (http == nullptr) return nullptr;
  const http_status_t sent = cupsSendRequest(http.get(), request.get(), resource.c_str(),
                                             ippLength(request.get()) + document.size());
  if (sent != HTTP_STATUS_CONTINUE) return nullptr;
  if (!document.empty()) cupsWriteRequestData(http.get(), document.data(), document.size());
  return Ipp(cupsGetResponse(http.get(), resource.c_str()));
}

JobOutcome RunningApp::send(Ipp request, const std::string& document) {
  return outcomeOf(exchange(std::move(request), document).get());
}

JobOutcome RunningApp::submit(const std::string& document, const std::string& format,
                              const std::vector<JobAttribute>& attributes,
                              const std::string& printer) {
  Ipp request = newRequest(IPP_OP_PRINT_JOB, uriOf(printer));
  if (!language_.empty()) {
    ipp_attribute_t* language =
        ippFindAttribute(request.get(), "attributes-natural-language", IPP_TAG_LANGUAGE);
    ippSetString(request.get(), &language, 0, language_.c_str());
  }
  addFormat(request.get(), format);
  for (const JobAttribute& attribute : attributes) add(request.get(), attribute);
  return outcomeOf(exchange(std::move(request), document, printer).get());
}

int RunningApp::createJob() {
  return outcomeOf(exchange(newRequest(IPP_OP_CREATE_JOB, printerUri_), {}).get()).id;
}

ipp_status_t RunningApp::sendDocument(int jobId, const std::string& document,
                                      const std::string& format, bool isLast) {
  Ipp request = newRequest(IPP_OP_SEND_DOCUMENT, printerUri_);
  ippAddInteger(request.get(), IPP_TAG_OPERATION, IPP_TAG_INTEGER, "job-id", jobId);
  addFormat(request.get(), format);
  ippAddBoolean(request.get(), IPP_TAG_OPERATION, "last-document", isLast ? 1 : 0);
  return outcomeOf(exchange(std::move(request), document).get()).status;
}

JobOutcome RunningApp::print(const std::string& document, const std::string& format,
                             const std::vector<JobAttribute>& attributes,
                             const std::string& printer) {
  const JobOutcome outcome = submit(document, format, attributes, printer);
  return outcome.id == 0 ? outcome : waitFor(outcome.id, 30.0, printer);
}

JobOutcome RunningApp::stateOf(int jobId, const std::string& printer) {
  Ipp request = newRequest(IPP_OP_GET_JOB_ATTRIBUTES, uriOf(printer));
  ippAddInteger(request.get(), IPP_TAG_OPERATION, IPP_TAG_INTEGER, "job-id", jobId);
  return outcomeOf(exchange(std::move(request), {}, printer).get());
}

JobOutcome RunningApp::waitFor(int jobId, double seconds, const std::string& printer) {
  JobOutcome outcome;
  waitUntil(
      [&] {
        outcome = stateOf(jobId, printer);
        return outcome.state >= IPP_JSTATE_CANCELED;
      },
      seconds);
  return outcome;
}

void RunningApp::cancel(int jobId) {
  Ipp request = newRequest(IPP_OP_CANCEL_JOB, printerUri_);
  ippAddInteger(request.get(), IPP_TAG_OPERATION, IPP_TAG_INTEGER, "job-id", jobId);
  exchange(std::move(request), {});
}

std::string RunningApp::printerReasons() {
  const Http http = connect(address_, port_);
  if (http == nullptr) return {};
  Ipp request = newRequest(IPP_OP_GET_PRINTER_ATTRIBUTES, printerUri_);
  const Ipp response(cupsDoRequest(http.get(), request.release(), "/ipp/print/wren"));
  return textOf(response.get(), "printer-state-reasons");
}

JobOutcome RunningApp::waitForMessage(int jobId, const std::string& message) {
  JobOutcome outcome;
  waitUntil(
      [&] {
        outcome = stateOf(jobId);
        return outcome.message == message;
      },
      30.0);
  return outcome;
}

std::string RunningApp::waitForReasons(const std::string& reasons) {
  std::string seen;
  waitUntil(
      [&] {
        seen = printerReasons();
        return seen == reasons;
      },
      30.0);
  return seen;
}

std::vector<std::string> RunningApp::papers(const std::string& printer) const {
  std::vector<std::string> papers;
  for (const fs::path& file : sortedFiles(paperFolder(printer), ".prn")) {
    papers.push_back(withoutQuestions(readFile(file)));
  }
  return papers;
}

// The picture of a paper is made when its connection has ended.
std::vector<std::string> RunningApp::waitForPapers(std::size_t count,
                                                   const std::string& printer) const {
  waitUntil([&] { return sortedFiles(paperFolder(printer), ".png").size() >= count; }, 20);
  return papers(printer);
}

std::vector<fs::path> RunningApp::pages() const {
  return sortedFiles(folder() / "pages", ".ras");
}

void RunningApp::forgetPages() const {
  for (const fs::path& page : pages()) fs::remove(page);
}

}  // namespace wren_test
