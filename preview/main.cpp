// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/file_run.h"
#include "preview/listen_run.h"
#include "preview/options.h"
#include "preview/tell_run.h"

int main(int argc, char** argv) {
  const wren::preview::ParsedOptions parsed = wren::preview::parseOptions(argc, argv);
  if (!parsed.options.has_value()) return parsed.exitStatus;
  const wren::preview::Options& options = *parsed.options;
  if (!options.tellAddress.empty()) return wren::preview::runTell(options);
  return options.listen ? wren::preview::runListener(options) : wren::preview::runFile(options);
}
