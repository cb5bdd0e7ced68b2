// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The program commandtowren: commands without a page to printer bytes.

#include "filter/command_run.h"
#include "filter/process.h"

int main(int argc, char** argv) {
  const wren::filter::CancelSignal cancel = wren::filter::prepareProcess();
  return wren::filter::runCommandFilter(argc, argv, cancel);
}
