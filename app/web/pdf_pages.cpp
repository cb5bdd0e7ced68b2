// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/web/pdf_pages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <optional>

#include "app/document_error.h"
#include "app/page_composer.h"
#include "app/pdf_document.h"
#include "common/handles.h"

namespace wren::app::web {
namespace {

// Nobody waits longer for a page in a browser.
constexpr unsigned kProcessorSeconds = 20;

[[noreturn]] void failMemory() {
  throw DocumentError(DocumentError::Kind::kSystem, "there is no memory for the PDF");
}

void writeAll(const FileDescriptor& file, const std::string& bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t count = ::write(file.get(), bytes.data() + done, bytes.size() - done);
    if (count <= 0) failMemory();
    done += static_cast<std::size_t>(count);
  }
}

#ifdef __linux__
// A file without a name in any folder; the child that draws opens it through its parent.
class UnnamedFile {
 public:
  explicit UnnamedFile(const std::string& bytes) : file_(::memfd_create("pdf", MFD_CLOEXEC)) {
    if (!file_) failMemory();
    writeAll(file_, bytes);
  }
  std::string path() const {
    return "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(file_.get());
  }

 private:
  FileDescriptor file_;
};
#else
class UnnamedFile {
 public:
  explicit UnnamedFile(const std::string& bytes)
      : path_((std::filesystem::temp_directory_path() / "wren-XXXXXX").string()),
        file_(::mkstemp(path_.data())) {
    if (!file_) failMemory();
    writeAll(file_, bytes);
  }
  UnnamedFile(const UnnamedFile&) = delete;
  UnnamedFile& operator=(const UnnamedFile&) = delete;
  ~UnnamedFile() { ::unlink(path_.c_str()); }
  std::string path() const { return path_; }

 private:
  std::string path_;
  FileDescriptor file_;
};
#endif

// Collects pages in the width of the head.
class Collector : public PageSink {
 public:
  explicit Collector(const PageTarget& target) : target_(target) {
    pages_.widthPx = target.headWidthPx;
  }

  bool beginPage(unsigned widthPx, unsigned heightPx) override {
    composer_.emplace(target_, widthPx, heightPx);
    isTooLong_ = isTooLong_ || pages_.rows() + composer_->heightPx() > kMaxGreyRows;
    return !isTooLong_;
  }
  void addRow(const std::uint8_t* ink) override { composer_->addRow(ink); }
  bool endPage() override {
    const std::vector<std::uint8_t>& ink = composer_->levels();
    const std::size_t before = pages_.levels.size();
    pages_.levels.resize(before + ink.size());
    std::transform(ink.begin(), ink.end(),
                   pages_.levels.begin() + static_cast<std::ptrdiff_t>(before),
                   [](std::uint8_t level) { return static_cast<std::uint8_t>(255 - level); });
    pages_.heightsPx.push_back(composer_->heightPx());
    return true;
  }

  bool isTooLong() const { return isTooLong_; }
  GreyPages take() { return std::move(pages_); }

 private:
  PageTarget target_;
  GreyPages pages_;
  std::optional<PageComposer> composer_;
  bool isTooLong_ = false;
};

}  // namespace

GreyPages readPdfPages(const std::string& pdf, const PageTarget& target) {
  const UnnamedFile file(pdf);
  DocumentRequest request;
  request.path = file.path();
  request.target = target;
  request.target.maxHeightPx = kMaxGreyRows;
  PdfSettings settings;
  settings.maxFileBytes = kMaxPdfBytes;
  settings.limits.processorSeconds = kProcessorSeconds;
  Collector pages(target);
  readPdf(request, settings, pages);
  if (pages.isTooLong()) {
    throw DocumentError(DocumentError::Kind::kUnprintable,
                        "the pages of the PDF are longer than 2 m together");
  }
  return pages.take();
}

}  // namespace wren::app::web
