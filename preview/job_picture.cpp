// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/job_picture.h"

#include <cstdio>
#include <filesystem>

#include "escpos/counted.h"
#include "preview/message.h"
#include "preview/png_file.h"

namespace wren::preview {
namespace {

std::string numberedName(const std::string& path, std::size_t number) {
  const std::filesystem::path whole(path);
  const std::string name = whole.stem().string() + "-" + std::to_string(number);
  return (whole.parent_path() / name).string() + whole.extension().string();
}

void writeOne(const escpos::Paper& paper, const escpos::Piece& piece, const PictureStyle& style,
              const std::string& path, WrittenPictures& written) {
  PaperPicture picture(paper, piece, style);
  const std::string error = writePng(picture, path);
  if (error.empty()) {
    written.files.push_back(path);
  } else {
    written.errors.push_back(path + ": " + error);
  }
}

}  // namespace

escpos::PaperLimits paperLimits(const Options& options) {
  escpos::PaperLimits limits;
  const std::uint64_t tenthsPerInch = 254;
  limits.lengthUnits = std::uint64_t{options.maxLengthMm} * 10 * options.style.dpi *
                       escpos::kUnitsPerRow / tenthsPerInch;
  return limits;
}

std::string pictureName(const std::string& streamName) {
  return std::filesystem::path(streamName).replace_extension(".png").string();
}

WrittenPictures writePictures(const escpos::Paper& paper, const Options& options,
                              const std::string& path) {
  WrittenPictures written;
  if (paper.lengthUnits == 0) return written;
  if (!options.split) {
    writeOne(paper, escpos::wholeStrip(paper), options.style, path, written);
    return written;
  }
  std::size_t number = 0;
  for (const escpos::Piece& piece : escpos::pieces(paper)) {
    writeOne(paper, piece, options.style, numberedName(path, ++number), written);
    if (!written.errors.empty()) break;
  }
  return written;
}

std::string lengthText(const escpos::Paper& paper, unsigned dpi) {
  const double mm = static_cast<double>(paper.lengthUnits) / escpos::kUnitsPerRow * 25.4 /
                    static_cast<double>(dpi);
  char text[32];
  std::snprintf(text, sizeof text, "%.1f mm", mm);
  return text;
}

std::string summary(const escpos::Reader& reader, unsigned dpi) {
  using escpos::counted;
  const escpos::Totals& totals = reader.printer().totals();
  return counted(totals.pages, "page") + ", " + lengthText(reader.printer().paper(), dpi) + ", " +
         counted(totals.cuts, "cut") + ", " + counted(totals.drawerPulses, "drawer pulse") + ", " +
         counted(totals.beeps, "beep") + ", " + counted(reader.bytesTaken(), "byte");
}

void printProblems(const escpos::VirtualPrinter& printer, const std::string& name) {
  for (const escpos::Problem& problem : printer.problems()) {
    printMessage(name + ": offset " + std::to_string(problem.offset) + ": " + problem.text);
  }
  const std::uint64_t more = printer.totals().problems - printer.problems().size();
  if (more > 0) printMessage(name + ": " + std::to_string(more) + " more like these");
}

}  // namespace wren::preview
