// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "job/job.h"

#include "common/log.h"
#include "job/control_commands.h"

namespace wren::job {
namespace {

constexpr int kLeadingZeroBytes = 64;
constexpr unsigned char kAllBlankEdges = 15;

}  // namespace

Job::Job(const Settings& settings, WrenPrinter& printer, FILE* out, CancelCheck cancel)
    : settings_(settings), printer_(printer), out_(out), cancel_(cancel) {
  printer_.getOutputStreams() = {out};
  printer_.setCancelCheck(cancel);
  if (!settings.debugImages) printer_.setDebugImageFolder({});
}

void Job::begin() {
  for (int i = 0; i < kLeadingZeroBytes; ++i) std::putc(0, out_);
  writeJobSetup(out_, settings_);
}

bool Job::printPages(PageSource& source) {
  PageOutcome outcome = PageOutcome::kPrinted;
  while (outcome == PageOutcome::kPrinted) outcome = printPage(source);
  if (outcome == PageOutcome::kUnsupported) return false;
  if (outcome != PageOutcome::kCancelled) return end();
  endCancelled();
  return true;
}

Job::PageOutcome Job::printPage(PageSource& source) {
  ReceivedPage page;
  const std::optional<PageOutcome> failure = receivePage(source, page);
  if (!failure) printReceivedPage(page);
  // Whatever went wrong with a page of a cancelled job is due to the cancelling.
  return cancel_.isCancelled() ? PageOutcome::kCancelled : failure.value_or(PageOutcome::kPrinted);
}

std::optional<Job::PageOutcome> Job::receivePage(PageSource& source, ReceivedPage& page) {
  if (cancel_.isCancelled() || !source.readHeader(page.header)) return PageOutcome::kNoMorePages;
  if (cancel_.isCancelled()) return PageOutcome::kCancelled;
  if (const auto failure = checkHeader(page.header)) return failure;
  const cups_page_header2_s& header = page.header;
  page.geometry = {header.cupsWidth, header.cupsHeight, header.cupsBytesPerLine};
  page.excessPx =
      printer::excessPx(header.cupsBytesPerLine,
                        printer::printableWidthPx(settings_.maxMediaWidth, header.HWResolution[0]));
  wrenLogCommon(1, "Try print page: %d %d", pagesPrinted_ + 1, static_cast<int>(header.NumCopies));
  writePageSetup(out_, settings_);
  if (const char* fault = printer::pageFault(page.geometry, page.excessPx)) {
    wrenLogCommon(3, "Unable to print page %d: %s!", pagesPrinted_ + 1, fault);
    return PageOutcome::kRefused;
  }
  const unsigned size = header.cupsHeight * header.cupsBytesPerLine;
  pixels_.resize(size);
  if (source.readPixels(pixels_.data(), size)) return std::nullopt;
  if (!cancel_.isCancelled()) wrenLogCommon(3, "Failed to get %d page data!", pagesPrinted_ + 1);
  return PageOutcome::kIncomplete;
}

std::optional<Job::PageOutcome> Job::checkHeader(const cups_page_header2_s& header) const {
  if (header.cupsBitsPerPixel != 8) {
    wrenLogCommon(3, "Unsupported bits per pixel : %d ! Requires 8 bits per pixel!",
                  static_cast<int>(header.cupsBitsPerPixel));
    return PageOutcome::kUnsupported;
  }
  if (header.cupsHeight == 0 || header.cupsBytesPerLine == 0) return PageOutcome::kNoMorePages;
  return std::nullopt;
}

void Job::printReceivedPage(ReceivedPage& page) {
  printer::centrePage(pixels_.data(), page.geometry, page.excessPx);
  configurePrinter(page);
  printer_.printImage(pixels_.data(), page.header.cupsBytesPerLine, page.header.cupsHeight,
                      page.header.cupsWidth);
  if (cancel_.isCancelled()) return;
  writePageEnd(out_, settings_);
  ++pagesPrinted_;
}

void Job::configurePrinter(ReceivedPage& page) {
  printer_.setPageHeader(&page.header);
  printer_.setRemoveBlankEdges(settings_.pageType == 1 ? 0 : kAllBlankEdges);
  printer_.setHalftoneType(settings_.halftoneType);
  printer_.setSkipRightPixels(page.excessPx);
  printer_.setBrightness(settings_.brightness);
}

bool Job::end() {
  writeJobEnd(out_, settings_);
  if (pagesPrinted_ == 0) {
    wrenLogCommon(3, "No pages found!");
    return false;
  }
  wrenLogCommon(1, "Ready to print.");
  return true;
}

void Job::endCancelled() {
  writeCancelledJobEnd(out_, settings_);
}

}  // namespace wren::job
