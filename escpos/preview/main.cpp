// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/preview/file_run.h"
#include "escpos/preview/listen_run.h"
#include "escpos/preview/options.h"

int main(int argc, char** argv) {
  const preview::ParsedOptions parsed = preview::parseOptions(argc, argv);
  if (!parsed.options) return parsed.exitStatus;
  const preview::Options& options = *parsed.options;
  return options.listen ? preview::runListener(options) : preview::runFile(options);
}
