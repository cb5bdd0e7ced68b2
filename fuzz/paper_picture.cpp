// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What `wren-preview` shows of arbitrary printer bytes, or of commands (`kFieldsMark`): pictures of
// the paper, the report. Each dot is where the paper has it, and the report is JSON.

#include "preview/paper_picture.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <nlohmann/json.hpp>
#include <span>
#include <vector>

#include "common/handles.h"
#include "escpos/reader.h"
#include "fuzz/input.h"
#include "fuzz/memory_file.h"
#include "fuzz/printer_commands.h"
#include "preview/json_report.h"

namespace wren::preview {
namespace {

// Small, so that an input needs little time.
constexpr escpos::PaperLimits kLimits = {300, 200, 20'000, 20};

PictureStyle styleFrom(fuzz::Input& input) {
  constexpr unsigned kResolutions[] = {203, 180, 300, 72, 100};
  return {.dpi = kResolutions[input.below(std::size(kResolutions))],
          .scale = 1 + input.below(3),
          .marks = input.below(2) == 1};
}

// A row of the picture without marks, from its definition.
std::vector<std::uint8_t> scaledRow(const escpos::Paper& paper, std::uint64_t paperRow,
                                    unsigned scale, std::size_t widthPx) {
  std::vector<std::uint8_t> dots(paper.widthDots);
  escpos::renderRow(paper, paperRow, dots);
  std::vector<std::uint8_t> row(widthPx);
  for (std::size_t x = 0; x < std::min(widthPx, dots.size() * scale); ++x) row[x] = dots[x / scale];
  return row;
}

void checkPicture(const escpos::Paper& paper, const escpos::Piece& piece, PictureStyle style) {
  PaperPicture picture(paper, piece, style);
  const std::uint64_t dotRows = piece.rows.end - piece.rows.first;
  fuzz::check(picture.width() > 0 && picture.height() >= dotRows * style.scale,
              "the picture has room for the paper");
  std::vector<std::uint8_t> pixels(picture.width());
  std::vector<std::uint8_t> expected;
  for (std::uint64_t y = 0; y < picture.height(); ++y) {
    picture.paintRow(y, pixels);
    const std::uint8_t highest = *std::max_element(pixels.begin(), pixels.end());
    fuzz::check(highest < picture.inkCount(), "a pixel has a colour");
    if (style.marks) continue;
    if (y % style.scale == 0) {
      expected = scaledRow(paper, piece.rows.first + y / style.scale, style.scale, pixels.size());
    }
    fuzz::check(pixels == expected, "a dot is where the paper has it");
  }
}

void checkReport(std::span<const std::uint8_t> bytes, const Options& options) {
  static fuzz::MemoryFile output;
  output.clear();
  {
    const FilePtr out(fdopen(dup(output.descriptor()), "w"));
    JsonReport report(out.get(), options);
    escpos::Reader reader(kLimits, [&](const escpos::Command& command) {
      if (options.list) report.addCommand(command);
    });
    reader.feed(bytes);
    reader.finish();
    report.finish(reader, {});
  }
  fuzz::check(nlohmann::json::accept(output.content()), "the report is JSON");
}

void show(std::span<const std::uint8_t> bytes, const Options& options) {
  const escpos::Paper paper = escpos::readAll(bytes, kLimits).paper;
  if (paper.lengthUnits > 0) checkPicture(paper, wholeStrip(paper), options.style);
  if (options.split) {
    for (const escpos::Piece& piece : pieces(paper)) checkPicture(paper, piece, options.style);
  }
  checkReport(bytes, options);
}

}  // namespace
}  // namespace wren::preview

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  wren::preview::Options options;
  options.style = wren::preview::styleFrom(input);
  options.split = input.below(2) == 1;
  options.list = input.below(2) == 1;
  const bool hasFields = input.takeFieldsMark();
  wren::preview::show(hasFields ? fuzz::printerCommandsFrom(input, SIZE_MAX).bytes : input.rest(),
                      options);
  return 0;
}
