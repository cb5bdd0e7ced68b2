// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Printers whose bytes a test can look at.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "printer/dot_matrix_ep_printer.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {

/// An unnamed file as an output stream.
class CaptureFile {
 public:
  CaptureFile() : file(std::tmpfile()) {}
  CaptureFile(const CaptureFile&) = delete;
  CaptureFile& operator=(const CaptureFile&) = delete;
  ~CaptureFile() { std::fclose(file); }
  FILE* stream() { return file; }
  std::string bytes() {
    std::fflush(file);
    std::string result(static_cast<std::size_t>(std::ftell(file)), '\0');
    std::rewind(file);
    result.resize(std::fread(result.data(), 1, result.size(), file));
    return result;
  }

 private:
  FILE* file;
};

/// The real printer, writing into a file instead of standard output.
class RecordingPrinter : public DotMatrixEpPrinter {
 public:
  RecordingPrinter() {
    header.HWResolution[0] = 203;
    setPageHeader(&header);
    getOutputStreams() = {output.stream()};
  }
  std::string bytes() { return output.bytes(); }
  std::string imageFormat() const { return imageFileFormat; }
  void setImageFormat(const std::string& format) {
    std::snprintf(imageFileFormat, sizeof imageFileFormat, "%s", format.c_str());
  }

  cups_page_header2_s header = {};

 private:
  CaptureFile output;
};

/// A working folder with an empty spool/, where this program's debug images go.
class SpoolWorkingFolder {
 public:
  SpoolWorkingFolder() : before(std::filesystem::current_path()) {
    std::filesystem::create_directory(spool());
    std::filesystem::current_path(folder.path());
  }
  SpoolWorkingFolder(const SpoolWorkingFolder&) = delete;
  SpoolWorkingFolder& operator=(const SpoolWorkingFolder&) = delete;
  ~SpoolWorkingFolder() { std::filesystem::current_path(before); }
  std::filesystem::path spool() const { return folder.path() / "spool"; }

 private:
  TemporaryFolder folder;
  std::filesystem::path before;
};

inline const unsigned char* bytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace wren_test
