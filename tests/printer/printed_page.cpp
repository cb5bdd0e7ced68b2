// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/printer/printed_page.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "printer/dot_matrix_ep_printer.h"
#include "tests/support/filter_job.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void giveUp(const char* what) {
  std::perror(what);
  std::abort();
}

// Sends standard error to a file while it lives.
class CapturedError {
 public:
  explicit CapturedError(const fs::path& file) : saved(dup(STDERR_FILENO)) {
    const int descriptor = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600);
    if (descriptor < 0 || saved < 0) giveUp("standard error cannot be captured");
    dup2(descriptor, STDERR_FILENO);
    close(descriptor);
  }
  CapturedError(const CapturedError&) = delete;
  CapturedError& operator=(const CapturedError&) = delete;
  ~CapturedError() {
    std::fflush(stderr);
    dup2(saved, STDERR_FILENO);
    close(saved);
  }

 private:
  int saved;
};

// The debug images of this program go to "spool" below the working folder.
class WorkingFolder {
 public:
  explicit WorkingFolder(const fs::path& folder) : before(fs::current_path()) {
    fs::create_directory(folder / "spool");
    fs::current_path(folder);
  }
  WorkingFolder(const WorkingFolder&) = delete;
  WorkingFolder& operator=(const WorkingFolder&) = delete;
  ~WorkingFolder() { fs::current_path(before); }

 private:
  fs::path before;
};

reference::Bytes bytesOf(const std::string& text) {
  return reference::Bytes(text.begin(), text.end());
}

void setOptions(DotMatrixEpPrinter& printer, const reference::PageOptions& options) {
  printer.setRemoveBlankEdges(options.removeBlankEdges);
  printer.setHalftoneType(static_cast<DitherType>(options.halftoneType));
  printer.setSkipRightPixels(options.skipRightPixels);
  printer.setBrightness(options.brightness);
  printer.setContrast(options.contrast);
  printer.setNegativePrint(options.negative);
  printer.setMirrorPrint(options.mirror);
  printer.setRotate180Print(options.rotate180);
}

void print(const reference::PageOptions& options, const TestPage& page, FILE* first, FILE* second) {
  cups_page_header2_t header = {};
  header.HWResolution[0] = options.hwResolutionX;
  DotMatrixEpPrinter printer;
  printer.getOutputStreams() = {first, second};
  setOptions(printer, options);
  printer.setPageHeader(&header);
  printer.printImage(page.pixels.data(), page.bytesPerLine, page.height, page.width);
}

}  // namespace

PageOutcome printWithProduct(const reference::PageOptions& options, const TestPage& page) {
  const TemporaryFolder folder;
  const WorkingFolder inside(folder.path());
  FILE* first = std::fopen("first", "wb");
  FILE* second = std::fopen("second", "wb");
  if (first == nullptr || second == nullptr) giveUp("no output file");
  {
    const CapturedError error("error");
    print(options, page, first, second);
  }
  std::fclose(first);
  std::fclose(second);

  PageOutcome result;
  result.bytes = bytesOf(readFile("first"));
  result.secondStream = bytesOf(readFile("second"));
  result.log = messageLines(readFile("error"));
  for (const SavedImage& image : savedImages("spool"))
    result.dumps.push_back({image.kind, bytesOf(image.bytes)});
  return result;
}

}  // namespace wren_test
