// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// `wren-printer-app server` in a folder of its own, and its sub-commands beside it: they find
// the server by its socket in that folder.

#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/process.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {

class RunningServer {
 public:
  /// @param options of the server, each `NAME=VALUE`; port, folders and log are chosen.
  explicit RunningServer(const std::vector<std::string>& options = {});
  RunningServer(const RunningServer&) = delete;
  RunningServer& operator=(const RunningServer&) = delete;

  void start();
  /// Ends it with a signal and waits for its end.
  ProcessResult stop(int signal);
  /// Waits for its end, which something else has asked for.
  ProcessResult waitForEnd();

  /// Runs a sub-command to its end.
  ProcessResult run(const std::vector<std::string>& arguments) const;

  /// Its standard output; fails the test if its status is not 0.
  std::string ask(const std::vector<std::string>& arguments) const;

  /// Sends a document. @return the number of the job; 0 if it was refused.
  int submit(const std::string& printer, const std::string& file,
             const std::vector<std::string>& options = {}) const;

  /// The state that `jobs` shows of a job; empty if it lists none of that number.
  std::string stateOf(const std::string& printer, int job) const;

  /// Waits at most 20 seconds for that state: `pending`, `processing`, `completed`, ...
  /// @return whether it came.
  bool waitForState(const std::string& printer, int job, const std::string& state) const;

  /// Waits at most 20 seconds until the saved state has a text: changes are saved soon, not at
  /// once.
  bool waitUntilSaved(const std::string& text) const;

  /// Waits at most 20 seconds until no document is spooled: that of a job goes after its end.
  bool waitForEmptySpool() const;

  /// The value of an attribute as ippAttributeString writes it; empty if it has none.
  std::string attributeOf(const std::string& printer, const std::string& name) const;
  std::string jobAttribute(const std::string& printer, int job, const std::string& name) const;

  std::filesystem::path stateFolder() const { return folder_.path() / "state"; }
  const std::filesystem::path& folder() const { return folder_.path(); }
  int port() const { return port_; }
  std::string log() const { return process_->errSoFar(); }

 private:
  std::string askByIpp(int operation, const std::string& printer, int job,
                       const std::string& name) const;
  std::filesystem::path socket() const;
  ProcessSpec specOf(const std::vector<std::string>& arguments) const;

  TemporaryFolder folder_;
  std::vector<std::string> options_;
  int port_;
  std::unique_ptr<Process> process_;
};

}  // namespace wren_test
