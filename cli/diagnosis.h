// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// What `wren doctor` finds: one line for each check, with the command that repairs a fault.

#pragma once

#include <string>
#include <vector>

namespace wren::cli {

enum class Verdict { kGood, kBad, kNote };

struct Check {
  Verdict verdict = Verdict::kGood;
  std::string text;
  std::string fix;    ///< a shell command; of faults alone
  std::string queue;  ///< the queue that it is about; empty for the machine
};

class Diagnosis {
 public:
  /// @param quiet do not print the checks as they are made.
  explicit Diagnosis(bool quiet) : quiet_(quiet) {}

  /// The checks that follow are about this queue.
  void beginQueue(const std::string& name) { queue_ = name; }

  void good(const std::string& text) { add({Verdict::kGood, text, "", queue_}); }
  void bad(const std::string& text, const std::string& fix) {
    add({Verdict::kBad, text, fix, queue_});
  }
  void note(const std::string& text) { add({Verdict::kNote, text, "", queue_}); }

  const std::vector<Check>& checks() const { return checks_; }
  int faults() const { return faults_; }

 private:
  void add(Check check);

  bool quiet_;
  std::string queue_;
  std::vector<Check> checks_;
  int faults_ = 0;
};

}  // namespace wren::cli
