// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// wren doctor: checks everything between a document and the printer and names, for each fault,
// the command that repairs it. Changes nothing.

#pragma once

#include <string>

namespace wren::cli {

struct DoctorArguments {
  std::string queue;  ///< empty for every queue of Wren's
  bool json = false;
  std::string root;  ///< the folder that stands for "/"
};

/// @return `kDone` without a fault, else `kFailed`.
int runDoctor(const DoctorArguments& arguments);

}  // namespace wren::cli
