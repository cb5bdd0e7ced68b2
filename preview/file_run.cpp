// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/file_run.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

#include "common/handles.h"
#include "escpos/reader.h"
#include "preview/job_picture.h"
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

// True if every picture was written.
bool reportPictures(const WrittenPictures& written) {
  for (const std::string& file : written.files) std::printf("%s\n", file.c_str());
  for (const std::string& error : written.errors) printMessage(error);
  if (written.files.empty() && written.errors.empty()) printMessage("no paper was fed, no picture");
  return written.errors.empty();
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
  escpos::Decoder::Sink listing;
  if (options.list) {
    listing = [](const escpos::Command& c) { std::puts(escpos::listingLine(c).c_str()); };
  }
  escpos::Reader reader(paperLimits(options), listing);
  const bool wasRead = readStream(input, reader);
  if (!wasRead) printMessage(options.input + ": cannot be read to its end");
  printProblems(reader.printer(), options.input);
  std::printf("%s: %s\n", options.input.c_str(), summary(reader, options.style.dpi).c_str());
  const bool wasWritten =
      reportPictures(writePictures(reader.printer().paper(), options, outputName(options)));
  const bool wasShown = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
  const bool isSound = reader.printer().totals().problems == 0;
  return wasRead && wasWritten && wasShown && isSound ? 0 : 1;
}

}  // namespace wren::preview
