// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What libraries keep to the end of a process is no finding: fontconfig does, with some fonts.

#ifdef __SANITIZE_ADDRESS__
extern "C" const char* __lsan_default_suppressions() {  // NOLINT(readability-identifier-naming)
  return "leak:libfontconfig\n";
}
#endif
