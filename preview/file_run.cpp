// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/file_run.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>

#include "common/handles.h"
#include "escpos/reader.h"
#include "preview/job_picture.h"
#include "preview/json_report.h"
#include "preview/message.h"

namespace wren::preview {
namespace {

bool isStandardInput(const Options& options) {
  return options.input == "-";
}

// Null for standard input, which is not ours to close.
FilePtr openFile(const Options& options) {
  return FilePtr(isStandardInput(options) ? nullptr : std::fopen(options.input.c_str(), "rb"));
}

std::string outputName(const Options& options) {
  if (!options.output.empty()) return options.output;
  return isStandardInput(options) ? "wren-preview.png" : pictureName(options.input);
}

bool wouldOverwriteInput(const Options& options) {
  // Set if the picture does not exist yet, which is no error here.
  std::error_code ignored;
  return !isStandardInput(options) &&
         std::filesystem::equivalent(options.input, outputName(options), ignored);
}

// Reads to the end of the stream or of the paper. False after a read error.
bool readStream(std::FILE* input, escpos::Reader& reader) {
  std::array<std::uint8_t, 65536> buffer;
  for (;;) {
    const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), input);
    if (!reader.feed(std::span(buffer).first(count))) break;
    if (count < buffer.size()) break;
  }
  const bool readable = std::ferror(input) == 0;
  reader.finish();
  return readable;
}

// What to do with each command.
escpos::Decoder::Sink listing(const Options& options, std::optional<JsonReport>& json) {
  if (!options.list) return {};
  if (json.has_value()) return [&json](const escpos::Command& c) { json->addCommand(c); };
  return [](const escpos::Command& c) { std::puts(escpos::listingLine(c).c_str()); };
}

void printPictures(const WrittenPictures& written) {
  for (const std::string& file : written.files) std::printf("%s\n", file.c_str());
}

void printPictureErrors(const WrittenPictures& written) {
  for (const std::string& error : written.errors) printMessage(error);
  if (written.files.empty() && written.errors.empty()) printMessage("no paper was fed, no picture");
}

}  // namespace

int runFile(const Options& options) {
  const FilePtr file = openFile(options);
  std::FILE* const input = isStandardInput(options) ? stdin : file.get();
  if (input == nullptr) {
    printMessage(options.input + ": " + std::strerror(errno));
    return 1;
  }
  if (wouldOverwriteInput(options)) {
    printMessage(options.input + ": the picture would replace its input, name another with -o");
    return 1;
  }
  std::optional<JsonReport> json;
  if (options.json) json.emplace(stdout, options);
  escpos::Reader reader(paperLimits(options), listing(options, json));
  const bool wasRead = readStream(input, reader);
  if (!wasRead) printMessage(options.input + ": cannot be read to its end");
  printProblems(reader.printer(), options.input);
  const WrittenPictures written =
      writePictures(reader.printer().paper(), options, outputName(options));
  if (json.has_value()) {
    json->finish(reader, written);
  } else {
    std::printf("%s: %s\n", options.input.c_str(), summary(reader, options.style.dpi).c_str());
    printPictures(written);
  }
  printPictureErrors(written);
  const bool wasShown = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
  if (!wasShown) printMessage("standard output cannot be written");
  const bool isSound = reader.printer().totals().problems == 0;
  return wasRead && written.errors.empty() && wasShown && isSound ? 0 : 1;
}

}  // namespace wren::preview
