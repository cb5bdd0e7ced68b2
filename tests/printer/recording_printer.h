// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Printers whose bytes a test can look at.

#pragma once

#include <cstdio>
#include <string>

#include "common/handles.h"
#include "printer/dot_matrix_ep_printer.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {

/// An unnamed file as an output stream.
class CaptureFile {
 public:
  FILE* stream() { return file_.get(); }
  std::string bytes() {
    std::fflush(stream());
    std::string result(static_cast<std::size_t>(std::ftell(stream())), '\0');
    std::rewind(stream());
    result.resize(std::fread(result.data(), 1, result.size(), stream()));
    return result;
  }

 private:
  wren::FilePtr file_{std::tmpfile()};
};

/// The product's printer at 203 dpi, writing into a file instead of standard output.
class RecordingPrinter : public DotMatrixEpPrinter {
 public:
  /// @param imageFolder where its debug images go; empty for none.
  explicit RecordingPrinter(const std::string& imageFolder = {}) {
    header.HWResolution[0] = 203;
    setPageHeader(&header);
    setDebugImageFolder(imageFolder);
    getOutputStreams() = {output_.stream()};
  }
  /// Takes pages packed, as the printer of a job does.
  void takePackedPages() { takesBands_ = true; }

  std::string bytes() { return output_.bytes(); }
  std::string imageFormat() const { return imageFileFormat; }
  void setImageFormat(const std::string& format) {
    std::snprintf(imageFileFormat, sizeof imageFileFormat, "%s", format.c_str());
  }

  cups_page_header2_s header = {};

 protected:
  bool takesBands() const override { return takesBands_; }
  void printBands(const wren::printer::DotBands& bands) override { writeBands(bands); }

 private:
  bool takesBands_ = false;
  CaptureFile output_;
};

inline const unsigned char* bytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace wren_test
