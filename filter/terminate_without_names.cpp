// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Only for a filter with the C++ library inside. Takes the place of the library's last
// words on an exception that nobody catches: these name its type, and the decoder of
// type names would be half of the program and brings unchecked formatted output along.

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
