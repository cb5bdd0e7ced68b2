// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Suppressions of the leak sanitizer: the PPD reader of CUPS leaks a short text when it rejects
// some malformed PPDs. The filter opens one PPD per process.

extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
  return "leak:_ppdOpen\n";
}
