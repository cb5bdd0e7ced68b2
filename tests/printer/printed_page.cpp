// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/printer/printed_page.h"

#include "common/log.h"
#include "tests/printer/page_options.h"
#include "tests/printer/recording_printer.h"
#include "tests/support/filter_job.h"

namespace wren_test {
namespace {

reference::Bytes bytesIn(const std::string& text) {
  return reference::Bytes(text.begin(), text.end());
}

void append(void* messages, const char* text, std::size_t length) {
  static_cast<std::string*>(messages)->append(text, length);
}

}  // namespace

PageOutput printWithProduct(const reference::PageOptions& options, const TestPage& page,
                            bool packed) {
  const TemporaryFolder folder;
  RecordingPrinter printer(folder.path());
  if (packed) printer.takePackedPages();
  printer.header.HWResolution[0] = options.hwResolutionX;
  applyOptions(options, printer);
  std::string messages;
  {
    const wren::MessageSink sink(append, &messages);
    printer.printImage(page.pixels.data(), page.bytesPerLine, page.height, page.width);
  }
  PageOutput output;
  output.bytes = bytesIn(printer.bytes());
  output.log = messageLines(messages);
  for (const SavedImage& image : savedImages(folder.path())) {
    output.dumps.push_back({image.kind, bytesIn(image.bytes)});
  }
  return output;
}

}  // namespace wren_test
