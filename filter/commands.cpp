// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "filter/commands.h"

#include <cstdio>

void outputCommand(command cmd) {
  wren::job::writeCommand(stdout, cmd);
}

void jobSetup(Settings s) {
  wren::job::writeJobSetup(stdout, s);
}

void pageSetup(Settings s, cups_page_header2_s /*header*/) {
  wren::job::writePageSetup(stdout, s);
}

void endPage(Settings s) {
  wren::job::writePageEnd(stdout, s);
}

void endJob(Settings s) {
  wren::job::writeJobEnd(stdout, s);
}
