// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/program.h"

int main(int argc, char** argv) {
  return wren::cli::runProgram({argv + (argc > 0 ? 1 : 0), argv + argc});
}
