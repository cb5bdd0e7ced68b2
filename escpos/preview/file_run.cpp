// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/preview/file_run.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include "escpos/preview/job_picture.h"
#include "escpos/reader.h"

namespace preview {
namespace {

struct InputCloser {
  void operator()(std::FILE* file) const {
    if (file != stdin) std::fclose(file);
  }
};
using Input = std::unique_ptr<std::FILE, InputCloser>;

bool isStandardInput(const Options& options) {
  return options.input == "-";
}

Input openInput(const Options& options) {
  return Input(isStandardInput(options) ? stdin : std::fopen(options.input.c_str(), "rb"));
}

std::string outputName(const Options& options) {
  if (!options.output.empty()) return options.output;
  return isStandardInput(options) ? "wren-preview.png" : pictureName(options.input);
}

void complain(const std::string& text) {
  std::fprintf(stderr, "wren-preview: %s\n", text.c_str());
}

// A picture must not take the place of the bytes that it shows.
bool replacesInput(const Options& options) {
  std::error_code absent;
  return !isStandardInput(options) &&
         std::filesystem::equivalent(options.input, outputName(options), absent);
}

// Reads until the end, until the paper runs out, or until an error; false only after the last.
bool readStream(std::FILE* input, escpos::Reader& reader) {
  std::array<std::uint8_t, 65536> buffer;
  for (;;) {
    const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), input);
    if (!reader.feed(std::span(buffer).first(count))) break;
    if (count < buffer.size()) break;
  }
  const bool healthy = std::ferror(input) == 0;
  reader.finish();
  return healthy;
}

// True if every picture could be written.
bool reportPictures(const WrittenPictures& written) {
  for (const std::string& file : written.files) std::printf("%s\n", file.c_str());
  for (const std::string& error : written.errors) complain(error);
  if (written.files.empty() && written.errors.empty()) complain("no paper was fed, no picture");
  return written.errors.empty();
}

}  // namespace

int runFile(const Options& options) {
  const Input input = openInput(options);
  if (!input) {
    complain(options.input + ": " + std::strerror(errno));
    return 1;
  }
  if (replacesInput(options)) {
    complain(options.input + ": the picture would replace its input, name another with -o");
    return 1;
  }
  escpos::Decoder::Sink listing;
  if (options.list) {
    listing = [](const escpos::Command& c) { std::puts(escpos::listingLine(c).c_str()); };
  }
  escpos::Reader reader(paperLimits(options), listing);
  const bool wasRead = readStream(input.get(), reader);
  if (!wasRead) complain(options.input + ": cannot be read to its end");
  printProblems(reader.printer(), options.input);
  std::printf("%s: %s\n", options.input.c_str(), summary(reader, options.style.dpi).c_str());
  const bool wasWritten =
      reportPictures(writePictures(reader.printer().paper(), options, outputName(options)));
  const bool wasShown = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
  const bool healthy = reader.printer().totals().problems == 0;
  return wasRead && wasWritten && wasShown && healthy ? 0 : 1;
}

}  // namespace preview
