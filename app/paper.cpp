// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/paper.h"

#include <algorithm>
#include <array>

#include "app/page_sink.h"

namespace wren::app {
namespace {

constexpr const char* kSizes58[] = {
    "om_58x30mm_58x30mm",   "om_58x40mm_58x40mm",     "om_58x60mm_58x60mm",
    "om_58x100mm_58x100mm", "om_58x200mm_58x200mm",   "om_58x297mm_58x297mm",
    "om_58x600mm_58x600mm", "om_58x1200mm_58x1200mm", "om_48x200mm_48x200mm"};
constexpr const char* kSizes80[] = {
    "om_80x30mm_80x30mm",   "om_80x50mm_80x50mm",     "om_80x80mm_80x80mm",
    "om_80x120mm_80x120mm", "om_80x200mm_80x200mm",   "om_80x297mm_80x297mm",
    "om_80x600mm_80x600mm", "om_80x1200mm_80x1200mm", "om_72x200mm_72x200mm"};
constexpr const char* kSizes112[] = {"om_112x50mm_112x50mm",     "om_112x80mm_112x80mm",
                                     "om_112x150mm_112x150mm",   "om_112x200mm_112x200mm",
                                     "om_112x297mm_112x297mm",   "om_112x600mm_112x600mm",
                                     "om_112x1200mm_112x1200mm", "om_104x200mm_104x200mm"};

// A range of widths: CUPS reckons 80 mm as 226 points, which are 79.72 mm.
constexpr std::array<Paper, 3> kPapers = {{
    {"wren80", "Wren 80 mm receipt printer",
     "MFG:Wren;MDL:80 mm receipt printer;CMD:ESC/POS;CLS:PRINTER;", 80, 576, 25, kSizes80,
     "om_80x200mm_80x200mm", "roll_min_25x10mm", "roll_max_80x3276mm"},
    {"wren58", "Wren 58 mm receipt printer",
     "MFG:Wren;MDL:58 mm receipt printer;CMD:ESC/POS;CLS:PRINTER;", 58, 384, 20, kSizes58,
     "om_58x200mm_58x200mm", "roll_min_20x10mm", "roll_max_58x3276mm"},
    {"wren112", "Wren 112 mm receipt printer",
     "MFG:Wren;MDL:112 mm receipt printer;CMD:ESC/POS;CLS:PRINTER;", 112, 832, 40, kSizes112,
     "om_112x200mm_112x200mm", "roll_min_40x10mm", "roll_max_112x3276mm"},
}};

}  // namespace

std::span<const Paper> papers() {
  return kPapers;
}

const Paper* findPaper(std::string_view driver) {
  const auto* const found = std::find_if(
      kPapers.begin(), kPapers.end(), [&](const Paper& paper) { return driver == paper.driver; });
  return found == kPapers.end() ? nullptr : found;
}

unsigned paperWidthPx(const Paper& paper) {
  constexpr unsigned kTenthsPerInch = 254;
  const unsigned tenths = static_cast<unsigned>(paper.widthMm) * 10;
  return (tenths * kDotsPerInch + kTenthsPerInch - 1) / kTenthsPerInch;
}

}  // namespace wren::app
