// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/program.h"

#ifdef __SANITIZE_ADDRESS__
// The main loop of PAPPL leaves what it asked a server for to the end of the process.
extern "C" const char* __lsan_default_suppressions() {  // NOLINT(readability-identifier-naming)
  return "leak:libpappl\nleak:libcups\nleak:papplMainloop\nleak:libfontconfig\n";
}
#endif

int main(int argc, char** argv) {
  return wren::app::runProgram(argc, argv);
}
