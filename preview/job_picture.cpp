// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/job_picture.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <utility>

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

std::string millimetresText(double rows, unsigned dpi) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f mm", rows * 25.4 / dpi);
  return text;
}

// Writes the pictures of one stream, within the rules for all of them together.
class PictureWriter {
 public:
  PictureWriter(const escpos::Paper& paper, PictureStyle style, const PictureRules& rules)
      : paper_(paper), style_(style), rules_(rules), pixelsLeft_(rules.maxPixels) {}

  void write(const escpos::Piece& piece, const std::string& path) {
    PaperPicture picture(paper_, piece, style_);
    const std::uint64_t rows = std::min(picture.height(), pixelsLeft_ / picture.width());
    if (++pictures_ > rules_.maxPictures || rows == 0) {
      written_.errors.push_back(path + ": left out; a job has at most " + limitText());
      return;
    }
    pixelsLeft_ -= rows * picture.width();
    const bool mayCancel = rules_.maxPixels - pixelsLeft_ > kUncancelledPixels;
    const std::string error = writePng(
        picture, path, {mayCancel ? rules_.cancel : CancelCheck(), rules_.keepExisting, rows});
    if (!error.empty()) {
      written_.errors.push_back(path + ": " + error);
      return;
    }
    written_.files.push_back(path);
    if (rows == picture.height()) return;
    const std::string length =
        millimetresText(static_cast<double>(rows) / style_.scale, style_.dpi);
    written_.errors.push_back(path + ": ends after " + length + "; a job has at most " +
                              limitText());
  }

  bool failed() const { return !written_.errors.empty(); }
  WrittenPictures result() { return std::move(written_); }

 private:
  std::string limitText() const {
    return std::to_string(rules_.maxPixels) + " pixels in " +
           escpos::counted(rules_.maxPictures, "picture");
  }

  const escpos::Paper& paper_;
  PictureStyle style_;
  const PictureRules& rules_;
  std::uint64_t pixelsLeft_;
  std::uint64_t pictures_ = 0;
  WrittenPictures written_;
};

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
                              const std::string& path, const PictureRules& rules) {
  if (paper.lengthUnits == 0) return {};
  PictureWriter writer(paper, options.style, rules);
  if (!options.split) {
    writer.write(escpos::wholeStrip(paper), path);
    return writer.result();
  }
  std::size_t number = 0;
  for (const escpos::Piece& piece : escpos::pieces(paper)) {
    writer.write(piece, numberedName(path, ++number));
    if (writer.failed()) break;
  }
  return writer.result();
}

std::string lengthText(const escpos::Paper& paper, unsigned dpi) {
  return millimetresText(static_cast<double>(paper.lengthUnits) / escpos::kUnitsPerRow, dpi);
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
