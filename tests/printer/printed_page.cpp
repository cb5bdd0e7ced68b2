// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/printer/printed_page.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "printer/dot_matrix_ep_printer.h"
#include "tests/printer/page_options.h"
#include "tests/printer/recording_printer.h"
#include "tests/support/filter_job.h"

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

reference::Bytes referenceBytes(const std::string& text) {
  return reference::Bytes(text.begin(), text.end());
}

void print(const reference::PageOptions& options, const TestPage& page, FILE* first, FILE* second) {
  cups_page_header2_t header = {};
  header.HWResolution[0] = options.hwResolutionX;
  DotMatrixEpPrinter printer;
  printer.getOutputStreams() = {first, second};
  applyOptions(options, printer);
  printer.setPageHeader(&header);
  printer.printImage(page.pixels.data(), page.bytesPerLine, page.height, page.width);
}

}  // namespace

PageOutcome printWithProduct(const reference::PageOptions& options, const TestPage& page) {
  const SpoolWorkingFolder folder;
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
  result.bytes = referenceBytes(readFile("first"));
  result.secondStream = referenceBytes(readFile("second"));
  result.log = messageLines(readFile("error"));
  for (const SavedImage& image : savedImages("spool"))
    result.dumps.push_back({image.kind, referenceBytes(image.bytes)});
  return result;
}

}  // namespace wren_test
