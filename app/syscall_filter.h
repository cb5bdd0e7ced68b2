// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The system calls that a program which reads hostile files may not make: network, new
// processes, privileges. Linux only; other systems have no filter.

#pragma once

#include <cstdint>
#include <vector>

namespace wren::app {

/// One instruction, laid out as `sock_filter` of <linux/filter.h>.
struct FilterInstruction {
  std::uint16_t code;
  std::uint8_t jumpIfTrue;
  std::uint8_t jumpIfFalse;
  std::uint32_t operand;
};

/// The filter as a program of the kernel, built once. A refused call fails with EACCES. Empty on
/// systems without seccomp. Throws DocumentError (kSystem) if it cannot be built.
const std::vector<FilterInstruction>& syscallFilter();

/// Restricts the calling process, and all it executes, by the filter; it can never gain
/// privileges again. Async-signal-safe: may be called between fork and exec.
/// @return false, with errno, if the kernel refuses.
bool enterSyscallFilter(const std::vector<FilterInstruction>& filter);

}  // namespace wren::app
