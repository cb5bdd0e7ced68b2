// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// Runs the program wren in a folder of its own.

#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "common/handles.h"
#include "tests/support/process.h"
#include "tests/support/temporary_folder.h"

namespace wren::cli {

class WrenProgram : public testing::Test {
 protected:
  /// Runs a command in `folder_`. PATH begins with the folder "bin" there.
  wren_test::ProcessResult wren(const std::vector<std::string>& arguments);

  /// The same; it has to end with status 0.
  wren_test::ProcessResult done(const std::vector<std::string>& arguments);

  /// It has to end with this status after one line on standard error, which is returned without
  /// "wren: ", and nothing on standard output.
  std::string refusal(int status, const std::vector<std::string>& arguments);

  std::string pathOf(const std::string& name) const { return (folder_.path() / name).string(); }
  std::string bytesOf(const std::string& name) const { return wren_test::readFile(pathOf(name)); }

  /// Puts a script into "bin".
  void standIn(const std::string& name, const std::string& script);

  /// From now on the program does not run as root, wherever its build lies.
  void becomeOrdinary();

  wren_test::TemporaryFolder folder_;
  std::vector<std::string> environment_;  ///< of the program, before PATH, HOME and LC_ALL
  std::function<void()> beforeExec_;      ///< runs in the child; may replace descriptors

 private:
  FileDescriptor program_;  ///< opened as root
};

/// The path of an example document.
std::string example(const std::string& name);

}  // namespace wren::cli
