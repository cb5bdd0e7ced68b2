// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Runs a program and collects its output. Standard output and standard error are unlinked
// temporary files, so the program never blocks on a full pipe.

#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace wren_test {

struct ProcessSpec {
  std::string program;                   ///< path of the executable
  std::vector<std::string> arguments;    ///< argv[0] included
  std::vector<std::string> environment;  ///< NAME=VALUE; nothing is inherited
  std::string inputPath;                 ///< standard input; empty: a pipe
  std::string workingFolder;             ///< empty: that of the test
  std::function<void()> beforeExec;      ///< runs in the child; may close or replace descriptors
  double timeoutSeconds = 60.0;
};

struct ProcessResult {
  std::string out;
  std::string err;
  int exitStatus = -1;     ///< -1 if a signal ended it
  int signal = 0;          ///< 0 if it exited
  bool timedOut = false;   ///< killed after `timeoutSeconds`
  long peakKilobytes = 0;  ///< peak resident set size

  bool exited(int status) const { return exitStatus == status; }
};

/// A running program. If `inputPath` is empty, its standard input is a pipe that `feed` writes to.
class Process {
 public:
  explicit Process(const ProcessSpec& spec);
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  /// Kills the program if it still runs.
  ~Process();

  /// Writes to the pipe. It is no error if the program has closed its end.
  void feed(const std::string& bytes);
  void closeInput();
  void signal(int number) const;
  pid_t id() const { return pid_; }
  /// Peak resident set size of the running program; -1 if unknown.
  long peakKilobytesSoFar() const;
  /// The output so far.
  std::string outSoFar() const;
  std::string errSoFar() const;
  /// Waits until the text appears on standard error; false after the timeout.
  bool waitForError(const std::string& text, double seconds = 20.0) const;
  /// Waits until standard output has this many bytes; false after the timeout.
  bool waitForOutput(std::size_t bytes, double seconds = 20.0) const;
  bool hasEnded();
  /// Closes the input and waits for the end of the program.
  ProcessResult finish();

 private:
  void collect(int status, long peakKilobytes);

  pid_t pid_ = -1;
  int inputDescriptor_ = -1;
  int outDescriptor_ = -1;
  int errDescriptor_ = -1;
  double timeoutSeconds_;
  ProcessResult result_;
};

/// Runs a program to its end.
/// @param input is written to its standard input if `inputPath` is empty.
ProcessResult runProcess(const ProcessSpec& spec, const std::string& input = {});

}  // namespace wren_test
