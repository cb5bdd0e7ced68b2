// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "filter/job.h"

#include <cstdio>

#include "common/log.h"
#include "filter/commands.h"
#include "printer/page_geometry.h"

namespace {

constexpr int kLeadingZeroBytes = 64;
constexpr unsigned char kAllBlankEdges = 15;

PageGeometry geometryOf(const cups_page_header2_s& header) {
  return {header.cupsWidth, header.cupsHeight, header.cupsBytesPerLine};
}

unsigned long excessOf(const cups_page_header2_s& header, const Settings& settings) {
  const auto printable = printableWidthPx(settings.maxMediaWidth, header.HWResolution[0]);
  return excessPx(header.cupsBytesPerLine, printable);
}

}  // namespace

void beginJob(const Settings& settings) {
  for (int i = 0; i < kLeadingZeroBytes; ++i) std::putchar(0);
  jobSetup(settings);
}

Job::Job(const Settings& jobSettings, WrenPrinter& jobPrinter, const CancelSignal& cancelSignal)
    : settings(jobSettings), printer(jobPrinter), cancel(cancelSignal) {
  printer.setCancelFlag(cancel.flag);
}

bool Job::printPages(PageSource& source) {
  PageOutcome outcome = PageOutcome::kPrinted;
  while (outcome == PageOutcome::kPrinted) outcome = printPage(source);
  if (outcome == PageOutcome::kUnsupported) return false;
  if (outcome == PageOutcome::kNoMorePages) return finish();
  endCancelledJob(settings);
  return true;
}

Job::PageOutcome Job::printPage(PageSource& source) {
  cups_page_header2_s header = {};
  PageOutcome outcome = receivePage(source, header);
  if (outcome == PageOutcome::kPrinted) outcome = printReceivedPage(header);
  // Whatever went wrong with a page of a cancelled job is the cancelling's doing.
  return cancel.isRequested() ? PageOutcome::kCancelled : outcome;
}

// kPrinted here means that the page is in the buffer and may be printed.
Job::PageOutcome Job::receivePage(PageSource& source, cups_page_header2_s& header) {
  if (cancel.isRequested() || !source.readHeader(header)) return PageOutcome::kNoMorePages;
  if (cancel.isRequested()) return PageOutcome::kCancelled;
  if (header.cupsBitsPerPixel != 8) {
    wrenLogCommon(3, "Unsupported bits per pixel : %d ! Requires 8 bits per pixel!",
                  static_cast<int>(header.cupsBitsPerPixel));
    return PageOutcome::kUnsupported;
  }
  if (header.cupsHeight == 0 || header.cupsBytesPerLine == 0) return PageOutcome::kNoMorePages;
  wrenLogCommon(1, "Try print page: %d %d", pagesPrinted + 1, static_cast<int>(header.NumCopies));
  pageSetup(settings, header);
  if (const char* fault = pageFault(geometryOf(header), excessOf(header, settings))) {
    wrenLogCommon(3, "Unable to print page %d: %s!", pagesPrinted + 1, fault);
    return PageOutcome::kNoMorePages;
  }
  const unsigned size = header.cupsHeight * header.cupsBytesPerLine;
  pixels.resize(size);
  if (!source.readPixels(pixels.data(), size)) {
    if (!cancel.isRequested()) wrenLogCommon(3, "Failed to get %d page data!", pagesPrinted + 1);
    return PageOutcome::kNoMorePages;
  }
  return PageOutcome::kPrinted;
}

Job::PageOutcome Job::printReceivedPage(cups_page_header2_s& header) {
  const unsigned long excess = excessOf(header, settings);
  centrePage(pixels.data(), geometryOf(header), excess);
  configurePrinter(header, excess);
  printer.printImage(pixels.data(), header.cupsBytesPerLine, header.cupsHeight, header.cupsWidth);
  if (cancel.isRequested()) return PageOutcome::kCancelled;
  endPage(settings);
  ++pagesPrinted;
  return PageOutcome::kPrinted;
}

void Job::configurePrinter(cups_page_header2_s& header, unsigned long skipRightPx) {
  printer.setPageHeader(&header);
  printer.setRemoveBlankEdges(settings.pageType == 1 ? 0 : kAllBlankEdges);
  printer.setHalftoneType(settings.halftoneType);
  printer.setSkipRightPixels(skipRightPx);
  printer.setBrightness(settings.brightness);
}

bool Job::finish() {
  endJob(settings);
  if (pagesPrinted == 0) {
    wrenLogCommon(3, "No pages found!");
    return false;
  }
  wrenLogCommon(1, "Ready to print.");
  return true;
}
