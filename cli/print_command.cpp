// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/print_command.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <nlohmann/json.hpp>

#include "cli/console.h"
#include "cli/document.h"
#include "cli/failure.h"
#include "cli/installation.h"
#include "cli/interruption.h"
#include "cli/output_file.h"
#include "cli/page_fit.h"
#include "cli/print_results.h"
#include "cli/printing.h"
#include "cli/rendering.h"
#include "cli/report.h"
#include "common/handles.h"
#include "escpos/reader.h"
#include "filter/cancel_signal.h"
#include "job/option_table.h"
#include "preview/job_picture.h"

namespace wren::cli {

namespace fs = std::filesystem;

namespace {

// The option of CUPS with the same name (in per cent) would render a picture at 10 %, so this
// value goes to the filter alone.
JobOptions optionsForCups(const JobOptions& options, const std::string& type) {
  JobOptions kept;
  for (const auto& option : options) {
    const bool isOurs =
        type.starts_with("image/") && filter::isSameName(option.first, "Brightness");
    if (!isOurs) kept.push_back(option);
  }
  return kept;
}

// The PPDs leave the debug images off; a trial print shows them unless told otherwise.
JobOptions optionsForFilter(JobOptions options) {
  if (!hasOption(options, job::kDebugImagesOption)) {
    options.emplace_back(job::kDebugImagesOption, "On");
  }
  return options;
}

bool wantsImages(const JobOptions& options) {
  return std::none_of(options.begin(), options.end(), [](const auto& option) {
    return filter::isSameName(option.first, job::kDebugImagesOption) &&
           filter::isSameName(option.second, job::kDebugImagesOff);
  });
}

// Piece by piece: the bytes may be larger than the memory, and a signal may come.
void readBytes(const std::string& path, escpos::Reader& reader) {
  const FilePtr in(std::fopen(path.c_str(), "rb"));
  if (in == nullptr) throw Failure(kFailed, "'" + path + "' cannot be read");
  std::uint8_t part[65536];
  std::size_t count = 0;
  while ((count = std::fread(part, 1, sizeof part, in.get())) > 0) {
    failIfInterrupted();
    if (!reader.feed({part, count})) break;
  }
  reader.finish();
}

// The files of one run until they are in their places.
struct Work {
  TemporaryFolder folder;
  std::string raster = folder.pathOf("raster");
  std::string log = folder.pathOf("log");
  std::string bytes = folder.pathOf("bytes");
  std::string images = folder.pathOf("");
};

// The bytes are complete; only the picture is not made.
std::string describeLeftOutPicture(const escpos::VirtualPrinter& printer,
                                   const PrintPlaces& places) {
  constexpr std::uint64_t kUnitsPerMetre = std::uint64_t{203} * escpos::kUnitsPerRow * 10000 / 254;
  const std::uint64_t metres = printer.paper().lengthUnits / kUnitsPerMetre + 1;
  if (printer.stopped()) return "no picture: the paper holds more than can be drawn";
  std::string line = "no picture: " + std::to_string(metres) + " m of paper are too much for one";
  std::error_code ignored;
  if (fs::is_other(places.bytes, ignored) || places.bytes == kStandardOutput) return line;
  return line + "; wren preview " + shellWord(places.bytes) + " --split --max-length " +
         std::to_string(metres * 1000) + " draws the pages";
}

// Draws the paper from the printer bytes. The memory is bounded whatever its length.
void drawPaper(const Work& work, const PrintPlaces& places, PrintResults& results,
               std::vector<std::string>& notes) {
  escpos::PaperLimits limits;
  const std::uint64_t longestPicture = limits.lengthUnits;
  limits.lengthUnits = std::numeric_limits<std::uint64_t>::max() / 2;
  escpos::Reader reader(limits);
  readBytes(work.bytes, reader);
  const escpos::VirtualPrinter& printer = reader.printer();
  const escpos::Paper& paper = printer.paper();
  if (!printer.stopped() && !printer.problems().empty()) {
    throw Failure(kFailed,
                  "the printer bytes cannot be read back whole: " + printer.problems()[0].text);
  }
  if (printer.stopped() || paper.lengthUnits > longestPicture) {
    notes.push_back(describeLeftOutPicture(printer, places));
    results.leaveOutPicture();
    return;
  }
  preview::Options options;
  options.style.marks = true;
  filter::CancelSignal interruption;
  interruption.flag = interruptionFlag();
  preview::PictureRules rules;
  rules.cancel = interruption.check();
  const auto written = preview::writePictures(paper, options, results.picturePath(), rules);
  failIfInterrupted();
  if (!written.errors.empty()) {
    // Each begins with the path that was drawn to.
    throw Failure(kFailed, "'" + places.picture + "' cannot be written" +
                               written.errors[0].substr(results.picturePath().size()));
  }
  if (written.files.empty()) results.leaveOutPicture();
}

PrintedPages printPages(const PrintArguments& arguments, const std::string& ppd,
                        const JobOptions& options, const Work& work) {
  FilePtr out(std::fopen(work.bytes.c_str(), "wb"));
  if (out == nullptr) failToWrite(work.bytes, errno);
  PrintedPages printed = printRasterFile(ppd, joinJobOptions(optionsForFilter(options)),
                                         work.raster, out.get(), work.images);
  const bool isWhole = std::ferror(out.get()) == 0;
  if (std::fclose(out.release()) != 0 || !isWhole) failToWrite(work.bytes, errno);
  if (!printed.success) {
    throw Failure(kDocument, "'" + arguments.document + "' has no page that can be printed" +
                                 (printed.error.empty() ? "" : ": " + printed.error));
  }
  return printed;
}

void report(const PrintArguments& arguments, unsigned pages, std::uintmax_t bytes,
            const PrintPlaces& made, const std::vector<std::string>& notes) {
  // Standard output may have the printer bytes.
  std::FILE* const to = made.bytes == kStandardOutput ? stderr : stdout;
  if (arguments.json) {
    printJson({{"pages", pages},
               {"bytes", bytes},
               {"output", made.bytes},
               {"picture", textOrNull(made.picture)},
               {"raster", textOrNull(made.raster)},
               {"debugImages", textOrNull(made.images)},
               {"notes", notes}},
              to);
    return;
  }
  say(std::to_string(pages) + " page(s), " + std::to_string(bytes) + " bytes: " + made.bytes, to);
  if (!made.raster.empty()) say("raster: " + made.raster, to);
  if (!made.images.empty()) say("debug images: " + made.images, to);
  if (!made.picture.empty()) say("picture: " + made.picture, to);
  for (const std::string& line : notes) note(line);
}

}  // namespace

int runPrint(const PrintArguments& arguments) {
  const std::string type(checkDocument(arguments.document));
  std::vector<std::string> notes;
  const PrintPlaces places = choosePlaces(arguments, notes);
  const std::string ppd = ppdForPrinting(arguments.paper);
  const filter::PrinterDescription printer = describePrinter(ppd);
  JobOptions options = parseJobOptions(arguments.options);
  checkJobOptions(printer, options);
  const JobOptions asked = options;
  const NewFolder folder(arguments.folder);
  PrintResults results(places, wantsImages(options));

  const Work work;
  addReceiptDefaults(options, type);
  renderDocument({arguments.document, type, ppd, arguments.copies, optionsForCups(options, type)},
                 work.raster, work.log);
  const PrintedPages printed = printPages(arguments, ppd, options, work);
  if (type == "application/pdf") {
    const std::string fit =
        describePageFit(arguments.document, work.raster, asked, printer.customSize);
    if (!fit.empty()) notes.push_back(fit);
  }
  results.takeRaster(work.raster);
  results.takeImages(work.images);
  drawPaper(work, places, results, notes);
  const std::uintmax_t bytes = fs::file_size(work.bytes);
  results.takeBytes(work.bytes);
  report(arguments, printed.pages, bytes, results.commit(), notes);
  return kDone;
}

}  // namespace wren::cli
