// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Runs a program that reads a hostile file: its output comes through a pipe, it cannot reach the
// network, start processes, write files or gain privileges, and its time and memory are limited.
// It never outlives its owner.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "common/cancel_check.h"
#include "common/handles.h"

namespace wren::app {

struct ChildLimits {
  std::size_t memoryBytes = std::size_t{512} << 20;  ///< address space
  unsigned processorSeconds = 600;                   ///< of the whole run
  std::chrono::milliseconds silence{60000};          ///< longest wait for its next output
};

/// How a program ended: by itself with a status, or by a signal.
struct ChildExit {
  int status = -1;
  int signal = 0;
};

class SandboxedChild {
 public:
  enum class Read { kBytes, kEnd, kCancelled, kSilent };

  /// Starts `arguments[0]`, a path. Its standard input is empty, its environment is PATH and
  /// LC_ALL=C, its working folder is the root. `errorLine` takes its standard error, line by line,
  /// from within the functions below; lines are cut to `kMaxLineBytes`.
  /// Throws DocumentError (kSystem) if the program or the sandbox cannot be started.
  SandboxedChild(std::vector<std::string> arguments, const ChildLimits& limits,
                 const CancelCheck& cancel, std::function<void(const std::string&)> errorLine);
  SandboxedChild(const SandboxedChild&) = delete;
  SandboxedChild& operator=(const SandboxedChild&) = delete;
  /// Kills the program if it still runs.
  ~SandboxedChild();

  /// Waits for output and reads up to `size` bytes of it.
  /// @param bytesRead at least 1 with kBytes, else 0.
  Read read(std::uint8_t* to, std::size_t size, std::size_t* bytesRead);

  /// Waits until standard error has something, or the program has ended.
  /// @return kBytes, or why there is nothing.
  Read waitForErrorLine();

  /// Reads what is left on standard error and waits for the end; a program that goes on for longer
  /// than the silence limit, or a cancelled one, is killed. To be called after Read::kEnd.
  ChildExit finish();

  static constexpr std::size_t kMaxLineBytes = 400;

 private:
  void start(std::vector<std::string>& arguments, const ChildLimits& limits);
  Read waitFor(bool output);
  void drainErrors();
  void takeErrorBytes(const char* bytes, std::size_t count);
  void endErrorLine();
  void kill();

  pid_t pid_ = -1;
  FileDescriptor output_;
  FileDescriptor errors_;  // closed at its end
  std::chrono::milliseconds silence_;
  CancelCheck cancel_;
  std::function<void(const std::string&)> errorLine_;
  std::string line_;
};

/// The path of a program: in the usual folders of programs, else by PATH; empty if there is none.
std::string findProgram(const std::string& name);

}  // namespace wren::app
