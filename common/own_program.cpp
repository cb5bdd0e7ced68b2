// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/own_program.h"

#include <filesystem>
#include <system_error>

#ifdef __APPLE__
#include <mach-o/dyld.h>

#include <cstdint>
#endif

namespace wren {

std::string ownProgram() {
  std::error_code failed;
#ifdef __APPLE__
  std::string path(4096, '\0');
  auto size = static_cast<std::uint32_t>(path.size());
  if (_NSGetExecutablePath(path.data(), &size) != 0) return {};
  const auto program = std::filesystem::canonical(path.c_str(), failed);
#else
  const auto program = std::filesystem::read_symlink("/proc/self/exe", failed);
#endif
  return failed ? std::string() : program.string();
}

}  // namespace wren
