// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Only for a filter that is linked with the C++ library inside. Replaces the library's
// terminate handler, which prints the type of an uncaught exception: its demangler would be
// half of the program and brings unchecked formatted output along.

#include <cstdlib>

// The library's own names, reserved or not.
// NOLINTBEGIN(bugprone-reserved-identifier)
namespace __gnu_cxx {

void __verbose_terminate_handler();

void __verbose_terminate_handler() {
  std::abort();
}

}  // namespace __gnu_cxx
// NOLINTEND(bugprone-reserved-identifier)
