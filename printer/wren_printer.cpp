// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/wren_printer.h"

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdlib>
#include <ctime>

#include "common/log.h"
#include "common/private_file.h"
#include "printer/debug_image.h"
#include "printer/debug_image_path.h"

using wren::printer::kDitheredImageName;
using wren::printer::kPrintedImageName;
using wren::printer::kSpoolFolder;

namespace {

// "MFT:" and 55 bytes in hexadecimal, a sentence that says what the engine is.
const char* const kIdentification =
    "MFT:57 72 65 6E 3A 20 67 72 65 79 20 72 61 73 74 65 72 20 70 61 "
    "67 65 73 20 74 6F 20 64 6F 74 73 20 66 6F 72 20 45 53 43 2F "
    "50 4F 53 20 70 72 69 6E 74 65 72 73 2E 20 01";

// Numbers the debug images of the process, whether they could be opened or not.
std::atomic<long> imageCounter = 0;

}  // namespace

WrenPrinter::WrenPrinter() : outputStreams_{stdout} {
  setDebugImageFolder(kSpoolFolder);
}

WrenPrinter::~WrenPrinter() {
  outputStreams_.clear();
}

// Checked with the longest of the names, so that no later one can fail to fit.
bool WrenPrinter::setDebugImageFolder(std::string_view folder) {
  using wren::printer::makeImageFormat;
  const bool fits =
      makeImageFormat(folder, kDitheredImageName, imageFileFormat, sizeof imageFileFormat);
  makeImageFormat(folder, kPrintedImageName, imageFileFormat, sizeof imageFileFormat);
  debugImageFolder_ = fits ? folder : std::string_view();
  return fits;
}

wren::FileDescriptor WrenPrinter::openImageFile() {
  const std::time_t now = std::time(nullptr);
  std::tm when = {};
  localtime_r(&now, &when);
  const auto path = wren::printer::formatImagePath(imageFileFormat, when, imageCounter++);
  wren::FileDescriptor file = wren::openPrivateFile(path.text);
  if (!file) {
    wrenWriteMessage("WrenPrinter::saveImage: unable to open the file %s\n", path.text);
  }
  return file;
}

void WrenPrinter::saveImage(const unsigned char* data, unsigned long bytesPerLine,
                            unsigned long height, unsigned long width,
                            unsigned short bitsPerPixel) {
  if (!savesDebugImages()) return;
  const wren::FileDescriptor file = openImageFile();
  if (!file) return;
  wren::printer::writeImage(file.get(), {data, bytesPerLine, height, width}, bitsPerPixel,
                            imageRows_);
}

void WrenPrinter::savePageImage(const char* name, const unsigned char* data,
                                unsigned long bytesPerLine, unsigned long height,
                                unsigned long width, unsigned short bitsPerPixel) {
  if (!savesDebugImages()) return;
  wren::printer::makeImageFormat(debugImageFolder_, name, imageFileFormat, sizeof imageFileFormat);
  saveImage(data, bytesPerLine, height, width, bitsPerPixel);
}

void WrenPrinter::saveBandImage(const wren::printer::DotBands& bands) {
  if (!savesDebugImages()) return;
  wren::printer::makeImageFormat(debugImageFolder_, kDitheredImageName, imageFileFormat,
                                 sizeof imageFileFormat);
  const wren::FileDescriptor file = openImageFile();
  if (file) wren::printer::writeBandImage(file.get(), bands, imageRows_);
}

void WrenPrinter::setBrightness(int value) {
  brightness_ = std::clamp(value, -100, 100);
}

void WrenPrinter::setContrast(int value) {
  contrast_ = std::clamp(value, -100, 100);
}

void WrenPrinter::setPrintSpeed(const char* text) {
  printSpeed_ = std::clamp(std::atoi(text), 1, 15);  // NOLINT(cert-err34-c): not a number is 0
}

void WrenPrinter::setPrintDensity(int value) {
  printDensity_ = std::clamp(value, 0, 15);
}

const char* WrenPrinter::getCopyRight() const {
  return kIdentification;
}

void WrenPrinter::printBytes(const unsigned char* bytes, unsigned long count) {
  for (FILE* stream : outputStreams_) static_cast<void>(std::fwrite(bytes, count, 1, stream));
}

void WrenPrinter::printStr(const char* text) {
  for (FILE* stream : outputStreams_) std::fprintf(stream, "%s", text);
}

void WrenPrinter::printByte(unsigned char byte) {
  for (FILE* stream : outputStreams_) std::fputc(byte, stream);
}

int WrenPrinter::printFormat(const char* format, ...) {
  int result = 0;
  for (FILE* stream : outputStreams_) {
    std::va_list arguments;
    va_start(arguments, format);
    result = std::vfprintf(stream, format, arguments);
    va_end(arguments);
  }
  return result;
}
