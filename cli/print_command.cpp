// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/print_command.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "cli/console.h"
#include "cli/document.h"
#include "cli/failure.h"
#include "cli/installation.h"
#include "cli/interruption.h"
#include "cli/output_file.h"
#include "cli/printing.h"
#include "cli/rendering.h"
#include "cli/report.h"
#include "common/handles.h"
#include "escpos/reader.h"
#include "preview/job_picture.h"

namespace wren::cli {

namespace fs = std::filesystem;

namespace {

struct Results {
  std::string bytes;
  std::string picture;
  std::string raster;
  std::string images;
};

// "receipt.png" for "receipt.prn" and "receipt.png" beside "receipt".
std::string pictureOf(const std::string& bytes) {
  fs::path path = bytes;
  if (path.extension() == ".prn") path.replace_extension();
  return path.string() + ".png";
}

// A picture that is printed in its own folder is not its own result.
std::string pictureBeside(const std::string& stem, const std::string& document) {
  std::error_code ignored;
  const bool isDocument = fs::equivalent(document, stem + ".png", ignored);
  return stem + (isDocument ? ".paper.png" : ".png");
}

// The printer itself (/dev/usb/lp0), or a pipe to it.
bool isDevice(const std::string& path) {
  std::error_code ignored;
  return fs::is_other(path, ignored);
}

bool isSamePlace(const std::string& a, const std::string& b) {
  std::error_code ignored;
  return fs::weakly_canonical(fs::absolute(a, ignored), ignored) ==
         fs::weakly_canonical(fs::absolute(b, ignored), ignored);
}

void refuseSharedPlaces(const Results& results) {
  if (results.raster.empty() || isDevice(results.raster)) return;
  for (const std::string& other : {results.bytes, results.picture}) {
    if (isSamePlace(results.raster, other)) {
      throw Failure(kUsage, "'" + results.raster + "' is another result; name another --raster");
    }
  }
}

Results resultsOf(const PrintArguments& arguments) {
  const std::string stem = (fs::path(arguments.folder) / documentStem(arguments.document)).string();
  const bool isNamed = !arguments.out.empty();
  const bool isPictureNamed = isNamed && !isDevice(arguments.out);
  Results results;
  results.bytes = isNamed ? arguments.out : stem + ".prn";
  results.picture =
      isPictureNamed ? pictureOf(arguments.out) : pictureBeside(stem, arguments.document);
  results.raster = arguments.raster;
  results.images = arguments.images.empty() ? stem + ".images" : arguments.images;
  for (const std::string& path : {results.bytes, results.picture, results.raster}) {
    if (!path.empty()) keepDocument(arguments.document, path);
  }
  refuseSharedPlaces(results);
  return results;
}

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
  if (!hasOption(options, "DebugImages")) options.emplace_back("DebugImages", "On");
  return options;
}

bool isDebugImage(const fs::path& file) {
  const std::string name = file.filename().string();
  for (const char* prefix : kDebugImagePrefixes) {
    if (name.starts_with(prefix) && file.extension() == ".bmp") return true;
  }
  return false;
}

std::vector<fs::path> debugImagesIn(const fs::path& folder) {
  std::vector<fs::path> images;
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(folder, ignored)) {
    if (isDebugImage(entry.path())) images.push_back(entry.path());
  }
  return images;
}

// Replaces the debug images of an earlier run and no other file.
bool keepImages(const std::string& from, const std::string& to) {
  for (const fs::path& old : debugImagesIn(to)) fs::remove(old);
  const auto images = debugImagesIn(from);
  if (images.empty()) return false;
  createFolder(to);
  for (const fs::path& image : images) {
    failIfInterrupted();
    std::error_code failed;
    const fs::path target = fs::path(to) / image.filename();
    fs::copy_file(image, target, fs::copy_options::overwrite_existing, failed);
    if (failed)
      throw Failure(kFailed, "'" + target.string() + "' cannot be written: " + failed.message());
    fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write, failed);
  }
  return true;
}

// Copies a file into its place whole.
void place(const std::string& from, OutputFile& to) {
  const FilePtr in(std::fopen(from.c_str(), "rb"));
  FilePtr out(std::fopen(to.path().c_str(), "wb"));
  if (in == nullptr || out == nullptr) failToWrite(to.target(), errno);
  char part[65536];
  std::size_t count = 0;
  while ((count = std::fread(part, 1, sizeof part, in.get())) > 0) {
    failIfInterrupted();
    if (std::fwrite(part, 1, count, out.get()) != count) failToWrite(to.target(), errno);
  }
  if (std::fclose(out.release()) != 0) failToWrite(to.target(), errno);
  to.commit();
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

// Draws the paper from the printer bytes. False if they are blank paper of length 0.
bool drawPaper(const std::string& bytesPath, const std::string& picturePath) {
  escpos::Reader reader;
  readBytes(bytesPath, reader);
  const auto& problems = reader.printer().problems();
  if (!problems.empty()) {
    throw Failure(kFailed, "the printer bytes cannot be read back whole: " + problems[0].text);
  }
  OutputFile file(picturePath);
  preview::Options options;
  options.style.marks = true;
  const auto written = preview::writePictures(reader.printer().paper(), options, file.path());
  if (!written.errors.empty()) throw Failure(kFailed, "'" + picturePath + "' cannot be written");
  if (written.files.empty()) return false;
  file.commit();
  return true;
}

// The files of one run until they are in their places.
struct Work {
  TemporaryFolder folder;
  std::string raster = folder.pathOf("raster");
  std::string log = folder.pathOf("log");
  std::string bytes = folder.pathOf("bytes");
  std::string images = folder.pathOf("");
};

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

// What was not made is removed from the results.
void placeResults(const Work& work, OutputFile& bytesFile, Results& results) {
  place(work.bytes, bytesFile);
  if (!results.raster.empty()) {
    OutputFile rasterFile(results.raster);
    place(work.raster, rasterFile);
  }
  if (!keepImages(work.images, results.images)) results.images.clear();
  if (!drawPaper(work.bytes, results.picture)) results.picture.clear();
}

void report(const PrintArguments& arguments, unsigned pages, std::uintmax_t bytes,
            const Results& results) {
  if (arguments.json) {
    printJson({{"pages", pages},
               {"bytes", bytes},
               {"output", results.bytes},
               {"picture", textOrNull(results.picture)},
               {"raster", textOrNull(results.raster)},
               {"debugImages", textOrNull(results.images)}});
    return;
  }
  say(std::to_string(pages) + " page(s), " + std::to_string(bytes) + " bytes: " + results.bytes);
  if (!results.raster.empty()) say("raster: " + results.raster);
  if (!results.images.empty()) say("debug images: " + results.images);
  if (!results.picture.empty()) say("picture: " + results.picture);
}

}  // namespace

int runPrint(const PrintArguments& arguments) {
  const std::string type(checkDocument(arguments.document));
  Results results = resultsOf(arguments);
  const std::string ppd = ppdForPrinting(arguments.paper);
  JobOptions options = parseJobOptions(arguments.options);
  checkJobOptions(describePrinter(ppd), options);
  createFolder(arguments.folder);
  OutputFile bytesFile(results.bytes);

  const Work work;
  addReceiptDefaults(options, type);
  renderDocument({arguments.document, type, ppd, arguments.copies, optionsForCups(options, type)},
                 work.raster, work.log);
  const PrintedPages printed = printPages(arguments, ppd, options, work);
  placeResults(work, bytesFile, results);
  report(arguments, printed.pages, fs::file_size(work.bytes), results);
  return kDone;
}

}  // namespace wren::cli
