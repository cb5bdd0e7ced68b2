// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "job/printer_commands.h"

#include "job/control_commands.h"
#include "job/self_test_page.h"
#include "printer/dot_matrix_ep_printer.h"

namespace wren::job {
namespace {

constexpr char kNoDrawer[] = "the queue has no drawer pulse (CashDrawerPulseWidth)";
constexpr char kNoCut[] = "the queue does not cut (DocCutType); ask for a full or partial cut";

// -1, an option that the printer lacks, would be sent as 255.
std::int32_t buzzerValue(std::int32_t value) {
  return value < 0 ? 1 : value;
}

const char* writeCut(FILE* out, const PrinterCommand& command, const Settings& settings) {
  const std::int32_t type = command.value.value_or(settings.docCutType);
  return writeFeedAndCut(out, settings, type) ? nullptr : kNoCut;
}

void writeFeedOf(FILE* out, const PrinterCommand& command) {
  writeFeed(out, static_cast<std::uint32_t>(command.value.value_or(0)) * kFeedUnitsPerMm);
}

void writeSelfTestPage(FILE* out, const Settings& settings, CancelCheck cancel) {
  const SelfTestPage page = drawSelfTestPage(settings);
  cups_page_header2_t header = {};
  header.HWResolution[0] = header.HWResolution[1] = kSelfTestDpi;
  DotMatrixEpPrinter printer;
  printer.getOutputStreams() = {out};
  printer.setPageHeader(&header);
  printer.setCancelCheck(cancel);
  writeInitialise(out);
  writeDirection(out, settings);
  printer.doPrintImage(page.dots.data(), page.widthPx, page.heightPx, page.widthPx);
  writePageFeed(out);
  writeDocumentCut(out, settings);
}

}  // namespace

const char* writePrinterCommand(FILE* out, const PrinterCommand& command, const Settings& settings,
                                CancelCheck cancel) {
  switch (command.kind) {
    case CommandKind::kOpenDrawer:
      return writeDrawer(out, settings) ? nullptr : kNoDrawer;
    case CommandKind::kBeep:
      writeBeep(out, buzzerValue(settings.buzzer2OnTime), buzzerValue(settings.buzzer2Repeat));
      return nullptr;
    case CommandKind::kCut:
      return writeCut(out, command, settings);
    case CommandKind::kFeed:
      writeFeedOf(out, command);
      return nullptr;
    case CommandKind::kPrintSelfTestPage:
      writeSelfTestPage(out, settings, cancel);
      return nullptr;
  }
  return nullptr;
}

}  // namespace wren::job
