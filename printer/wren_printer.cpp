// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "printer/wren_printer.h"

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include "printer/dump_names.h"

namespace {

// "MFT:" and 55 bytes in hexadecimal: a sentence that says what the engine is.
const char* const kIdentification =
    "MFT:57 72 65 6E 3A 20 67 72 65 79 20 72 61 73 74 65 72 20 70 61 "
    "67 65 73 20 74 6F 20 64 6F 74 73 20 66 6F 72 20 45 53 43 2F "
    "50 4F 53 20 70 72 69 6E 74 65 72 73 2E 20 01";

}  // namespace

WrenPrinter::WrenPrinter() : outputStreams{stdout} {
  useImageFileFormat(kPrintedDumpFormat);
}

WrenPrinter::~WrenPrinter() {
  outputStreams.clear();
}

void WrenPrinter::useImageFileFormat(const char* format) {
  std::snprintf(imageFileFormat, sizeof imageFileFormat, "%s", format);
}

void WrenPrinter::setBrightness(int value) {
  brightness = std::clamp(value, -100, 100);
}

void WrenPrinter::setContrast(int value) {
  contrast = std::clamp(value, -100, 100);
}

void WrenPrinter::setPrintSpeed(const char* text) {
  printSpeed = std::clamp(std::atoi(text), 1, 15);  // NOLINT(cert-err34-c): no number is 0, so 1
}

void WrenPrinter::setPrintDensity(int value) {
  printDensity = std::clamp(value, 0, 15);
}

const char* WrenPrinter::getCopyRight() const {
  return kIdentification;
}

void WrenPrinter::printBytes(const unsigned char* bytes, unsigned long count) {
  for (FILE* stream : outputStreams) static_cast<void>(std::fwrite(bytes, count, 1, stream));
}

void WrenPrinter::printStr(const char* text) {
  for (FILE* stream : outputStreams) std::fprintf(stream, "%s", text);
}

void WrenPrinter::printByte(unsigned char byte) {
  for (FILE* stream : outputStreams) std::fputc(byte, stream);
}

int WrenPrinter::printFormat(const char* format, ...) {
  int result = 0;
  for (FILE* stream : outputStreams) {
    std::va_list arguments;
    va_start(arguments, format);
    result = std::vfprintf(stream, format, arguments);
    va_end(arguments);
  }
  return result;
}
