// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Runs a program and collects what it wrote. Both its outputs go to files without a
// name, so a program that writes much never waits for its reader.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace wren_test {

struct ProcessSpec {
  std::string program;                   ///< path of the executable
  std::vector<std::string> arguments;    ///< argv[0] included
  std::vector<std::string> environment;  ///< NAME=VALUE, complete
  std::string inputPath;                 ///< opened as standard input; empty: a pipe
  std::string workingFolder;             ///< empty: that of the test
  std::function<void()> beforeExec;      ///< runs in the child; may close or replace descriptors
  double timeoutSeconds = 60.0;
};

struct ProcessResult {
  std::string out;
  std::string err;
  int exitStatus = -1;     ///< -1 when a signal ended it
  int signal = 0;          ///< 0 when it exited
  bool timedOut = false;   ///< it was killed by the test
  long peakKilobytes = 0;  ///< largest resident size

  bool exited(int status) const { return exitStatus == status; }
};

/// A running program. With an empty inputPath its standard input is a pipe that the test feeds.
class Process {
 public:
  explicit Process(const ProcessSpec& spec);
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  /// Kills a program that nobody waited for.
  ~Process();

  /// Writes into the pipe; a reader that has left is no error.
  void feed(const std::string& bytes);
  void closeInput();
  void signal(int number) const;
  pid_t id() const { return pid; }
  /// Largest resident size of the running program itself; -1 where that is not known.
  long peakKilobytesSoFar() const;
  /// What has been written so far.
  std::string outSoFar() const;
  std::string errSoFar() const;
  /// Waits until the text appears on standard error; false after the seconds.
  bool waitForError(const std::string& text, double seconds = 20.0) const;
  bool waitForOutput(std::size_t bytes, double seconds = 20.0) const;
  bool hasEnded();
  /// Closes the input and waits for the end.
  ProcessResult finish();

 private:
  void collect(int status, long peakKilobytes);

  pid_t pid = -1;
  int inputDescriptor = -1;
  int outDescriptor = -1;
  int errDescriptor = -1;
  double timeoutSeconds;
  ProcessResult result;
};

/// Runs a program to its end. input is fed through a pipe when no inputPath is named.
ProcessResult runProcess(const ProcessSpec& spec, const std::string& input = {});

}  // namespace wren_test
