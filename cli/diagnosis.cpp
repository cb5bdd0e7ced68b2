// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/diagnosis.h"

#include <cstdio>
#include <utility>

#include "cli/console.h"

namespace wren::cli {
namespace {

std::string wordFor(Verdict verdict) {
  switch (verdict) {
    case Verdict::kGood:
      return coloured("ok", Colour::kGreen) + "    ";
    case Verdict::kBad:
      return coloured("BAD", Colour::kRed) + "   ";
    case Verdict::kNote:
      break;
  }
  return coloured("--", Colour::kYellow) + "    ";
}

}  // namespace

void Diagnosis::add(Check check) {
  if (check.verdict == Verdict::kBad) ++faults_;
  if (!quiet_) {
    say(wordFor(check.verdict) + check.text);
    if (!check.fix.empty()) say("      fix: " + check.fix);
    // A search for printers takes seconds.
    std::fflush(stdout);
  }
  checks_.push_back(std::move(check));
}

}  // namespace wren::cli
