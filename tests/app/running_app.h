// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The real wren-printer-app with one printer and a software printer behind it, in a folder of
// its own, and a client that prints to it by IPP.

#pragma once

#include <cups/cups.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/process.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {

struct DeleteIpp {
  void operator()(ipp_t* message) const { ippDelete(message); }
};
using Ipp = std::unique_ptr<ipp_t, DeleteIpp>;

/// An attribute of a job.
struct JobAttribute {
  std::string name;
  ipp_tag_t type;     ///< IPP_TAG_KEYWORD, IPP_TAG_INTEGER, IPP_TAG_ENUM, ...
  std::string value;  ///< decimal for the integers; several keywords or integers by commas

  static JobAttribute keyword(std::string name, std::string value) {
    return {std::move(name), IPP_TAG_KEYWORD, std::move(value)};
  }
  static JobAttribute integer(std::string name, int value) {
    return {std::move(name), IPP_TAG_INTEGER, std::to_string(value)};
  }
  static JobAttribute number(std::string name, int value) {
    return {std::move(name), IPP_TAG_ENUM, std::to_string(value)};
  }
};

struct JobOutcome {
  int id = 0;  ///< 0 if the request was refused
  ipp_status_t status = IPP_STATUS_ERROR_INTERNAL;
  ipp_jstate_t state = IPP_JSTATE_PENDING;
  std::string reasons;  ///< by commas
  std::string message;  ///< job-state-message
  int impressions = 0;  ///< job-impressions-completed
};

struct AppSetup {
  int paperMm = 80;
  std::string device = {};                ///< empty: a software printer
  std::vector<std::string> options = {};  ///< more arguments of "trial"
  std::string state = {};                 ///< what an earlier run has saved; empty: nothing
  double timeoutSeconds = 100;            ///< ends it after this time
  std::string program = {};               ///< empty: wren-printer-app
};

/// Runs `wren-printer-app` to its end.
ProcessResult runApp(const std::vector<std::string>& arguments);

class RunningApp {
 public:
  /// The others, if `--more-papers` asks for them, are `wren2`, `wren3`, ...
  static constexpr const char* kFirstPrinter = "wren";

  explicit RunningApp(const AppSetup& setup = {});
  RunningApp(const RunningApp&) = delete;
  RunningApp& operator=(const RunningApp&) = delete;

  /// Ends the program with a signal, if it runs, and starts it again in the same folder.
  void restart(int signal);

  /// Ends it and returns what became of it.
  ProcessResult stop(int signal = 15);

  const std::string& printerUri() const { return printerUri_; }
  int port() const { return port_; }
  pid_t id() const { return process_->id(); }
  std::string log() const { return process_->errSoFar(); }
  /// Its peak resident set size so far.
  long peakKilobytes() const { return process_->peakKilobytesSoFar(); }

  /// Sends further requests in this language, as in RFC 5646.
  void speak(const std::string& language) { language_ = language; }

  /// Sends further requests to this address of the machine, not to "localhost".
  void reachBy(const std::string& address) { address_ = address; }

  /// Sends a document as one request and waits for the end of the job.
  JobOutcome print(const std::string& document, const std::string& format,
                   const std::vector<JobAttribute>& attributes = {},
                   const std::string& printer = kFirstPrinter);

  /// Sends a document and returns at once; state and message are those of the answer.
  JobOutcome submit(const std::string& document, const std::string& format,
                    const std::vector<JobAttribute>& attributes = {},
                    const std::string& printer = kFirstPrinter);

  /// Sends a request of the test's own with a document, to the first printer.
  JobOutcome send(Ipp request, const std::string& document);

  /// The same in two requests: a job without a document, and its documents.
  int createJob();
  ipp_status_t sendDocument(int jobId, const std::string& document, const std::string& format,
                            bool isLast);

  /// Waits until the job has ended, at most `seconds`.
  JobOutcome waitFor(int jobId, double seconds = 30.0, const std::string& printer = kFirstPrinter);
  JobOutcome stateOf(int jobId, const std::string& printer = kFirstPrinter);
  void cancel(int jobId);

  /// Waits until the job has this message, at most 30 seconds: a client may see the reasons of a
  /// printer before the message of its job. @return the job at the end of the wait.
  JobOutcome waitForMessage(int jobId, const std::string& message);

  /// The printer's printer-state-reasons, by commas.
  std::string printerReasons();

  /// Waits until the printer has these reasons, at most 30 seconds. @return those at the end.
  std::string waitForReasons(const std::string& reasons);

  /// The printer bytes of each connection to the software printer so far, in order; without the
  /// questions about its status that are not part of the job.
  std::vector<std::string> papers(const std::string& printer = kFirstPrinter) const;

  /// Waits until there are `count` papers, at most 20 seconds.
  std::vector<std::string> waitForPapers(std::size_t count,
                                         const std::string& printer = kFirstPrinter) const;

  /// The raster files of the pages handed to the core, in order, and forgets them.
  std::vector<std::filesystem::path> pages() const;
  void forgetPages() const;

  const std::filesystem::path& folder() const { return folder_.path(); }

 private:
  void start();
  std::string uriOf(const std::string& printer) const;
  std::filesystem::path paperFolder(const std::string& printer) const;
  Ipp exchange(Ipp request, const std::string& document,
               const std::string& printer = kFirstPrinter) const;

  AppSetup setup_;
  TemporaryFolder folder_;
  std::unique_ptr<Process> process_;
  std::string printerUri_;
  std::string address_ = "localhost";
  std::string language_;  // empty: that of the process
  int port_ = 0;
};

}  // namespace wren_test
