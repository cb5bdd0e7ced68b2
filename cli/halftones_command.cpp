// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/halftones_command.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string_view>

#include "cli/console.h"
#include "cli/document.h"
#include "cli/failure.h"
#include "cli/installation.h"
#include "cli/output_file.h"
#include "cli/printing.h"
#include "cli/rendering.h"
#include "cli/report.h"
#include "common/memory_file.h"
#include "escpos/reader.h"
#include "preview/contact_sheet.h"
#include "preview/paper_picture.h"
#include "preview/png_file.h"

namespace wren::cli {

namespace fs = std::filesystem;

namespace {

using filter::PrinterDescription;

// What all cells of a sheet have in common.
struct Sheet {
  std::string ppd;
  std::string raster;
  JobOptions options;
  std::optional<preview::Area> crop;
};

// WIDTHxHEIGHT+X+Y
std::optional<preview::Area> parseCrop(const std::string& text) {
  if (text.empty()) return std::nullopt;
  constexpr std::string_view kAfterEach = "x++";
  std::array<std::uint32_t, 4> numbers = {};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const auto [next, error] = std::from_chars(at, end, numbers[i]);
    const bool isLast = i == kAfterEach.size();
    const bool isFollowed = isLast ? next == end : next != end && *next == kAfterEach[i];
    if (error != std::errc() || !isFollowed) {
      throw Failure(kUsage, "--crop wants WIDTHxHEIGHT+X+Y in dots, not '" + text + "'");
    }
    at = isLast ? next : next + 1;
  }
  return preview::Area{numbers[2], numbers[3], numbers[0], numbers[1]};
}

std::vector<std::string> parseBrightness(const std::string& text,
                                         const PrinterDescription& printer) {
  std::istringstream words(text);
  std::vector<std::string> values;
  for (std::string value; words >> value;) {
    const std::string problem = problemOfOption(printer, "Brightness", value);
    if (!problem.empty()) throw Failure(kUsage, problem);
    values.push_back(value);
  }
  if (values.empty()) throw Failure(kUsage, "--brightness wants one number or several in quotes");
  return values;
}

// Each cell sets these itself.
void refuseCellOptions(const JobOptions& options) {
  for (const char* name : {"HalftoneType", "Brightness"}) {
    if (!hasOption(options, name)) continue;
    throw Failure(kUsage, std::string("halftones shows every ") + name + "; -o cannot choose one");
  }
}

std::string printCell(const Sheet& sheet, const std::string& type, const std::string& brightness) {
  JobOptions options = sheet.options;
  options.emplace_back("HalftoneType", type);
  options.emplace_back("Brightness", brightness);
  MemoryFile out;
  const PrintedPages printed =
      printRasterFile(sheet.ppd, joinJobOptions(options), sheet.raster, out.stream(), "");
  if (!printed.success) {
    throw Failure(kDocument, "the document has no page that can be printed" +
                                 (printed.error.empty() ? "" : ": " + printed.error));
  }
  return out.take();
}

preview::SheetCell drawCell(const Sheet& sheet, const std::string& type,
                            const std::string& brightness) {
  const std::string bytes = printCell(sheet, type, brightness);
  const escpos::Reading reading =
      escpos::readAll({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  if (!reading.problems.empty()) {
    throw Failure(kFailed,
                  "the printer bytes cannot be read back whole: " + reading.problems[0].text);
  }
  preview::PaperPicture paper(reading.paper, escpos::wholeStrip(reading.paper), {});
  preview::Picture picture = preview::greyPicture(paper);
  if (sheet.crop.has_value()) picture = preview::cropped(picture, *sheet.crop);
  if (picture.pixels.empty()) throw Failure(kUsage, "--crop shows no part of the paper");
  return {"Brightness=" + brightness, std::move(picture)};
}

// The names do not tell what is printed; the texts of the PPD do.
std::vector<preview::SheetRow> drawRows(const Sheet& sheet, const PrinterDescription& printer,
                                        const std::vector<std::string>& brightness) {
  std::vector<preview::SheetRow> rows;
  for (const auto& type : printer.find("HalftoneType")->choices) {
    preview::SheetRow row;
    row.heading = "HalftoneType=" + type.name + ": " + type.text;
    for (const std::string& value : brightness)
      row.cells.push_back(drawCell(sheet, type.name, value));
    rows.push_back(std::move(row));
  }
  return rows;
}

void writeSheet(const preview::Picture& picture, OutputFile& file) {
  const std::string error = preview::writePng(picture, file.path());
  if (!error.empty()) throw Failure(kFailed, "'" + file.target() + "' cannot be written: " + error);
  file.commit();
}

void report(const HalftonesArguments& arguments, const std::string& out,
            const PrinterDescription& printer, const std::vector<std::string>& brightness) {
  if (!arguments.json) {
    say("sheet: " + out);
    return;
  }
  auto types = nlohmann::ordered_json::array();
  for (const auto& type : printer.find("HalftoneType")->choices) {
    types.push_back({{"name", type.name}, {"prints", type.text}});
  }
  printJson({{"sheet", out}, {"halftoneTypes", types}, {"brightness", brightness}});
}

}  // namespace

int runHalftones(const HalftonesArguments& arguments) {
  const std::string type(checkDocument(arguments.document));
  Sheet sheet;
  sheet.crop = parseCrop(arguments.crop);
  sheet.ppd = ppdForPrinting(arguments.paper);
  sheet.options = parseJobOptions(arguments.options);
  const PrinterDescription printer = describePrinter(sheet.ppd);
  checkJobOptions(printer, sheet.options);
  refuseCellOptions(sheet.options);
  const auto brightness = parseBrightness(arguments.brightness, printer);
  const std::string out =
      arguments.out.empty()
          ? (fs::path(arguments.folder) / (documentStem(arguments.document) + ".halftones.png"))
                .string()
          : arguments.out;
  keepDocument(arguments.document, out);
  const NewFolder folder(arguments.folder);
  OutputFile file(out);

  // CUPS renders the pages once: the halftone type concerns the filter alone.
  const TemporaryFolder work;
  addReceiptDefaults(sheet.options, type);
  sheet.raster = work.pathOf("raster");
  renderDocument({arguments.document, type, sheet.ppd, 1, sheet.options}, sheet.raster,
                 work.pathOf("log"));
  writeSheet(preview::drawContactSheet(drawRows(sheet, printer, brightness), arguments.width),
             file);
  report(arguments, out, printer, brightness);
  return kDone;
}

}  // namespace wren::cli
