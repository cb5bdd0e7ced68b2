// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/print_job.h"

#include <cstring>

#include "app/blank_gaps.h"
#include "common/log.h"

namespace wren::app {
namespace {

constexpr double kMillimetresPerInch = 25.4;

unsigned rowsOf(std::uint32_t millimetres) {
  return static_cast<unsigned>(millimetres * kDotsPerInch / kMillimetresPerInch);
}

cups_page_header2_s headerOf(unsigned widthPx, unsigned heightPx) {
  cups_page_header2_s header = {};
  header.HWResolution[0] = header.HWResolution[1] = kDotsPerInch;
  header.NumCopies = 1;
  header.cupsWidth = header.cupsBytesPerLine = widthPx;
  header.cupsHeight = heightPx;
  header.cupsBitsPerColor = header.cupsBitsPerPixel = 8;
  header.cupsColorOrder = CUPS_ORDER_CHUNKED;
  header.cupsColorSpace = CUPS_CSPACE_K;
  header.cupsNumColors = 1;
  header.PageSize[0] = widthPx * 72 / kDotsPerInch;
  header.PageSize[1] = heightPx * 72 / kDotsPerInch;
  header.cupsPageSize[0] = static_cast<float>(widthPx) * 72.0F / kDotsPerInch;
  header.cupsPageSize[1] = static_cast<float>(heightPx) * 72.0F / kDotsPerInch;
  return header;
}

// One page that is in memory already.
class MemoryPage : public job::PageSource {
 public:
  MemoryPage(const cups_page_header2_s& header, const std::uint8_t* levels)
      : header_(header), levels_(levels) {}

  bool readHeader(cups_page_header2_s& header) override {
    header = header_;
    return true;
  }

  bool readPixels(std::uint8_t* pixels, unsigned size) override {
    std::memcpy(pixels, levels_, size);
    return true;
  }

 private:
  cups_page_header2_s header_;
  const std::uint8_t* levels_;
};

void passMessage(void* context, const char* text, std::size_t length) {
  const auto& onMessage = *static_cast<const std::function<void(std::string_view)>*>(context);
  std::string_view line(text, length);
  while (!line.empty() && line.back() == '\n') line.remove_suffix(1);
  if (onMessage) onMessage(line);
}

}  // namespace

PrintJob::PrintJob(const Plan& plan, const Surroundings& surroundings)
    : plan_(plan), out_(surroundings), job_(plan_.settings.core, printer_, out_.out, out_.cancel) {
  printer_.setContrast(plan_.settings.contrast);
}

bool PrintJob::beginPage(unsigned widthPx, unsigned heightPx) {
  if (!pagesAreWhole_ || !canWrite()) return false;
  pagesAreWhole_ = false;
  composer_.emplace(plan_.target, widthPx, heightPx);
  return true;
}

void PrintJob::addRow(const std::uint8_t* ink) {
  if (composer_) composer_->addRow(ink);
}

bool PrintJob::endPage() {
  pagesAreWhole_ = printComposed();
  return pagesAreWhole_;
}

bool PrintJob::printComposed() {
  if (!composer_ || !composer_->isComplete() || !canWrite()) return false;
  std::vector<std::uint8_t> levels = std::move(composer_->levels());
  unsigned heightPx = composer_->heightPx();
  composer_.reset();
  if (plan_.settings.longestGapMm != 0) {
    heightPx = shortenBlankGaps(levels, plan_.target.headWidthPx, heightPx,
                                rowsOf(plan_.settings.longestGapMm));
  }
  if (plan_.copies > 1 && !spool(levels, heightPx)) {
    return failBecause("the pages of the copies cannot be kept on disk");
  }
  return print(levels.data(), heightPx);
}

bool PrintJob::print(const std::uint8_t* levels, unsigned heightPx) {
  const MessageSink sink(passMessage, &out_.onMessage);
  const cups_page_header2_s header = headerOf(plan_.target.headWidthPx, heightPx);
  if (out_.keeper != nullptr && !out_.keeper->keep(plan_.job, header, levels)) {
    return failBecause("the page cannot be kept on disk");
  }
  if (!begin()) return false;
  MemoryPage page(header, levels);
  if (job_.printPage(page) != job::Job::PageOutcome::kPrinted) return false;
  ++pagesPrinted_;
  // Paper moves while the next page is rendered.
  std::fflush(out_.out);
  if (std::ferror(out_.out) != 0) return false;
  if (out_.onPage) out_.onPage();
  return true;
}

bool PrintJob::failBecause(const char* reason) {
  fault_ = reason;
  return false;
}

bool PrintJob::begin() {
  if (begun_) return true;
  if (out_.onBegin && !out_.onBegin()) return false;
  begun_ = true;
  job_.begin();
  return true;
}

bool PrintJob::spool(const std::vector<std::uint8_t>& levels, unsigned heightPx) {
  if (spooled_ == nullptr) spooled_.reset(std::tmpfile());
  if (spooled_ == nullptr) return false;
  spooledHeights_.push_back(heightPx);
  return std::fwrite(levels.data(), 1, levels.size(), spooled_.get()) == levels.size();
}

bool PrintJob::printCopies() {
  std::vector<std::uint8_t> levels;
  for (unsigned copy = 1; copy < plan_.copies; ++copy) {
    if (std::fseek(spooled_.get(), 0, SEEK_SET) != 0) return false;
    for (const unsigned heightPx : spooledHeights_) {
      levels.resize(std::size_t{plan_.target.headWidthPx} * heightPx);
      if (!canWrite()) return false;
      if (std::fread(levels.data(), 1, levels.size(), spooled_.get()) != levels.size()) {
        return failBecause("the pages of the copies cannot be read again");
      }
      if (!print(levels.data(), heightPx)) return false;
    }
  }
  return true;
}

bool PrintJob::finish(bool documentIsGood) {
  if (!begun_) return false;
  const bool isWhole =
      documentIsGood && pagesAreWhole_ && (spooled_ == nullptr || printCopies()) && canWrite();
  const MessageSink sink(passMessage, &out_.onMessage);
  if (isWhole) {
    job_.end();
  } else {
    job_.endCancelled();
  }
  std::fflush(out_.out);
  return isWhole && std::ferror(out_.out) == 0;
}

bool PrintJob::canWrite() const {
  return !out_.cancel.isCancelled() && std::ferror(out_.out) == 0;
}

}  // namespace wren::app
