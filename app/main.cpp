// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/program.h"

int main(int argc, char** argv) {
  return wren::app::runProgram(argc, argv);
}
