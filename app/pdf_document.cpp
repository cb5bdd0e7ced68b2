// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/pdf_document.h"

#include <signal.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "app/document_error.h"

namespace wren::app {
namespace {

using Kind = DocumentError::Kind;

// A page of 80 mm that a program rounded up to whole points is a dot or two wider than the paper.
constexpr unsigned kPaperSlackPx = 4;
// The widest page that is drawn at its size: 2 m.
constexpr unsigned kMaxWidthPx = 16384;
constexpr std::size_t kMaxLoggedLines = 20;
constexpr std::size_t kBufferBytes = std::size_t{64} << 10;

// ---- The file ----

std::string readPart(std::ifstream& file, std::uintmax_t from, std::size_t count) {
  std::string part(count, '\0');
  file.seekg(static_cast<std::streamoff>(from));
  file.read(part.data(), static_cast<std::streamsize>(count));
  part.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
  file.clear();
  return part;
}

bool has(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// pdftoppm repairs a file that is cut off and draws what is left. Half a receipt is worse than
// none, so the mark at the end has to be there, as near the end as readers commonly ask.
void checkFile(const DocumentRequest& request, const PdfSettings& settings) {
  constexpr std::size_t kMarkRange = 1024;
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(request.path, error);
  std::ifstream file(request.path, std::ios::binary);
  if (error || !file) throw DocumentError(Kind::kSystem, "the PDF cannot be opened");
  if (size == 0) throw DocumentError(Kind::kUnprintable, "the PDF is empty");
  if (size > settings.maxFileBytes) {
    throw DocumentError(
        Kind::kUnprintable,
        "the PDF is larger than " + std::to_string(settings.maxFileBytes >> 20) + " MiB");
  }
  if (!has(readPart(file, 0, kMarkRange), "%PDF-")) {
    throw DocumentError(Kind::kFormat, "this is not a PDF");
  }
  const std::uintmax_t tail = size - std::min<std::uintmax_t>(size, kMarkRange);
  if (!has(readPart(file, tail, kMarkRange), "%%EOF")) {
    throw DocumentError(Kind::kFormat, "the PDF is cut off, its end is missing");
  }
}

// ---- What the program says ----

// Standard error of pdftoppm: lines of `-progress`, "PAGE PAGES ", and messages.
class Messages {
 public:
  explicit Messages(const DocumentRequest& request) : request_(request) {}

  void take(const std::string& line) {
    if (takeProgress(line)) return;
    if (has(line, "Incorrect password")) lockedSeen_ = true;
    if (has(line, "Wrong page range")) emptySeen_ = true;
    if (has(line, "Out of memory") || has(line, "bad_alloc")) memorySeen_ = true;
    log(line);
  }

  /// The number of pages of the document; 0 until the first page is drawn.
  unsigned pageCount() const { return pageCount_; }
  /// The pages drawn so far.
  unsigned pagesDrawn() const { return pagesDrawn_; }
  bool saysLocked() const { return lockedSeen_; }
  bool saysEmpty() const { return emptySeen_; }
  bool saysMemory() const { return memorySeen_; }

 private:
  bool takeProgress(std::string_view line) {
    unsigned page = 0;
    unsigned pages = 0;
    const char* end = line.data() + line.size();
    auto parsed = std::from_chars(line.data(), end, page);
    if (parsed.ec != std::errc{} || parsed.ptr == end || *parsed.ptr != ' ') return false;
    parsed = std::from_chars(parsed.ptr + 1, end, pages);
    if (parsed.ec != std::errc{} || page == 0 || page > pages) return false;
    ++pagesDrawn_;
    pageCount_ = pages;
    return true;
  }

  void log(const std::string& line) {
    ++lines_;
    if (!request_.log || lines_ > kMaxLoggedLines + 1) return;
    request_.log(lines_ <= kMaxLoggedLines ? "pdftoppm: " + line
                                           : "pdftoppm: further messages are left out");
  }

  const DocumentRequest& request_;
  unsigned pageCount_ = 0;
  unsigned pagesDrawn_ = 0;
  std::size_t lines_ = 0;
  bool lockedSeen_ = false;
  bool emptySeen_ = false;
  bool memorySeen_ = false;
};

// ---- Its pages ----

struct PageSize {
  unsigned widthPx;
  unsigned heightPx;
};

// Thrown and caught in this file.
struct Cancelled {};

// The pages of one run of pdftoppm: a PGM file each, one behind the other.
class PageStream {
 public:
  PageStream(std::vector<std::string> arguments, const DocumentRequest& request,
             const PdfSettings& settings)
      : settings_(settings),
        messages_(request),
        child_(std::move(arguments), settings.limits, request.cancel,
               [this](const std::string& line) { messages_.take(line); }),
        buffer_(kBufferBytes) {}

  /// Reads the header of the next page; nothing at the end of the document.
  std::optional<PageSize> nextPage() {
    if (!fill()) {
      checkEnd();
      return std::nullopt;
    }
    if (byte() != 'P' || byte() != '5') failDrawing();
    const PageSize size{number(), number()};
    if (number() != 255 || size.widthPx == 0 || size.heightPx == 0) failDrawing();
    ++pagesRead_;
    // So it draws a page that it cannot find.
    if (size.widthPx == 1 && size.heightPx == 1) failPage();
    return size;
  }

  /// Reads the next row of the page.
  void readRow(std::vector<std::uint8_t>& row) {
    for (std::size_t done = 0; done < row.size();) {
      if (!fill()) failDrawing();
      const std::size_t count = std::min(row.size() - done, end_ - next_);
      std::copy_n(buffer_.begin() + static_cast<std::ptrdiff_t>(next_), count,
                  row.begin() + static_cast<std::ptrdiff_t>(done));
      next_ += count;
      done += count;
    }
  }

  /// To be called when all rows of a page were read, before it is printed: a page for which there
  /// was too little memory comes with parts left out, and the exit status says nothing.
  /// @return the number of pages of the document.
  unsigned finishPage() {
    while (messages_.pagesDrawn() < pagesRead_) {
      const auto waited = child_.waitForErrorLine();
      if (waited == SandboxedChild::Read::kEnd) failDrawing();
      checkWaiting(waited);
    }
    if (messages_.saysMemory()) failDrawing();
    return messages_.pageCount();
  }

 private:
  // Fills the buffer if it is empty. Returns false at the end.
  bool fill() {
    if (next_ < end_) return true;
    next_ = 0;
    const auto result = child_.read(buffer_.data(), buffer_.size(), &end_);
    checkWaiting(result);
    atEnd_ = result == SandboxedChild::Read::kEnd;
    return !atEnd_;
  }

  void checkWaiting(SandboxedChild::Read result) const {
    if (result == SandboxedChild::Read::kCancelled) throw Cancelled();
    if (result == SandboxedChild::Read::kSilent) {
      throw DocumentError(Kind::kUnprintable, "a page of the PDF takes too long to draw");
    }
  }

  char byte() {
    if (!fill()) failDrawing();
    return static_cast<char>(buffer_[next_++]);
  }

  // A number of a PGM header, after one or more white-space characters. It ends with one.
  unsigned number() {
    char digit = byte();
    while (digit == ' ' || digit == '\n') digit = byte();
    unsigned value = 0;
    for (; digit >= '0' && digit <= '9'; digit = byte()) {
      if (value > 9999999) failDrawing();
      value = value * 10 + static_cast<unsigned>(digit - '0');
    }
    return value;
  }

  void checkEnd() {
    const ChildExit end = exit();
    if (end.status != 0 || pagesRead_ != messages_.pagesDrawn()) failDrawing(end);
    if (pagesRead_ == 0) throw DocumentError(Kind::kUnprintable, "the PDF has no pages");
  }

  // A program that still has output, one that makes no sense, is not waited for.
  ChildExit exit() { return atEnd_ ? child_.finish() : ChildExit{}; }

  // The output stopped or is not what it should be: says why, as far as the program told.
  [[noreturn]] void failPage() const {
    if (messages_.saysMemory()) failMemory();
    throw DocumentError(Kind::kFormat,
                        "page " + std::to_string(pagesRead_) + " of the PDF is damaged");
  }

  [[noreturn]] void failMemory() const {
    throw DocumentError(Kind::kUnprintable, "drawing the PDF needs more than " +
                                                std::to_string(settings_.limits.memoryBytes >> 20) +
                                                " MiB");
  }

  [[noreturn]] void failDrawing() { failDrawing(exit()); }

  [[noreturn]] void failDrawing(const ChildExit& end) const {
    if (messages_.saysLocked()) throw DocumentError(Kind::kPassword, "the PDF needs a password");
    if (messages_.saysEmpty()) throw DocumentError(Kind::kUnprintable, "the PDF has no pages");
    if (end.signal == SIGXCPU) {
      throw DocumentError(Kind::kUnprintable, "the PDF takes too long to draw");
    }
    if (messages_.saysMemory()) failMemory();
    throw DocumentError(Kind::kFormat, "the PDF is damaged");
  }

  const PdfSettings& settings_;
  Messages messages_;
  SandboxedChild child_;
  std::vector<std::uint8_t> buffer_;
  std::size_t next_ = 0;
  std::size_t end_ = 0;
  unsigned pagesRead_ = 0;
  bool atEnd_ = false;
};

// Without anti-aliasing: text and bars of codes are ink or paper, as from the print queue.
std::vector<std::string> basicArguments(const std::string& program) {
  return {program, "-gray", "-aa", "no", "-aaVector", "no", "-cropbox", "-progress"};
}

void add(std::vector<std::string>& arguments, const char* option, unsigned value) {
  arguments.emplace_back(option);
  arguments.push_back(std::to_string(value));
}

class PdfReader {
 public:
  PdfReader(const DocumentRequest& request, const PdfSettings& settings, PageSink& sink)
      : request_(request),
        settings_(settings),
        sink_(sink),
        program_(settings.program.empty() ? findProgram("pdftoppm") : settings.program),
        path_(std::filesystem::absolute(request.path).string()) {
    if (program_.empty()) throw DocumentError(Kind::kSystem, "pdftoppm is not installed");
    const PageTarget& target = request.target;
    // Wider by one dot than a page that is printed 1:1 can be: no more of a wide page is drawn,
    // and its width tells it from the others.
    drawnWidthPx_ = target.fitWidePages ? target.paperWidthPx + kPaperSlackPx + 1 : kMaxWidthPx + 1;
  }

  bool readAll() {
    PageStream pages(sizedArguments(), request_, settings_);
    unsigned page = 0;
    while (const std::optional<PageSize> size = pages.nextPage()) {
      ++page;
      const bool isTooWide = size->widthPx == drawnWidthPx_;
      if (isTooWide && !request_.target.fitWidePages) failSize(page, "wide");
      if (isTooWide) skipPage(pages, *size, page);
      if (!(isTooWide ? printScaled(page) : printPage(pages, *size, page))) return false;
    }
    return true;
  }

 private:
  std::vector<std::string> sizedArguments() const {
    std::vector<std::string> arguments = basicArguments(program_);
    add(arguments, "-r", kDotsPerInch);
    return withArea(std::move(arguments), drawnWidthPx_);
  }

  std::vector<std::string> scaledArguments(unsigned page) const {
    std::vector<std::string> arguments = basicArguments(program_);
    add(arguments, "-f", page);
    add(arguments, "-l", page);
    add(arguments, "-scale-to-x", request_.target.headWidthPx);
    // The last one makes it the width of the page as it is seen, if the page is rotated.
    arguments.insert(arguments.end(), {"-scale-to-y", "-1", "-scale-dimension-before-rotation"});
    return withArea(std::move(arguments), request_.target.headWidthPx);
  }

  // No more of a page is drawn than can be printed, and one row that shows that it is too long.
  std::vector<std::string> withArea(std::vector<std::string> arguments, unsigned widthPx) const {
    add(arguments, "-x", 0);
    add(arguments, "-y", 0);
    add(arguments, "-W", widthPx);
    add(arguments, "-H", request_.target.maxHeightPx + 1);
    arguments.push_back(path_);
    return arguments;
  }

  void skipPage(PageStream& pages, const PageSize& size, unsigned page) const {
    std::vector<std::uint8_t> row(size.widthPx);
    for (unsigned y = 0; y < size.heightPx; ++y) pages.readRow(row);
    finishPage(pages, page);
  }

  bool printScaled(unsigned page) const {
    PageStream scaled(scaledArguments(page), request_, settings_);
    const std::optional<PageSize> size = scaled.nextPage();
    return size && printPage(scaled, *size, page);
  }

  bool printPage(PageStream& pages, const PageSize& size, unsigned page) const {
    if (size.heightPx > request_.target.maxHeightPx) failSize(page, "long");
    const unsigned paperWidthPx = request_.target.paperWidthPx;
    const bool isCut = request_.target.fitWidePages && size.widthPx > paperWidthPx;
    const unsigned widthPx = isCut ? paperWidthPx : size.widthPx;
    if (!sink_.beginPage(widthPx, size.heightPx)) return false;
    std::vector<std::uint8_t> row(size.widthPx);
    for (unsigned y = 0; y < size.heightPx; ++y) {
      pages.readRow(row);
      for (std::uint8_t& level : row) level = static_cast<std::uint8_t>(255 - level);
      sink_.addRow(row.data() + (size.widthPx - widthPx) / 2);
    }
    finishPage(pages, page);
    return sink_.endPage();
  }

  void finishPage(PageStream& pages, unsigned page) const {
    const unsigned pageCount = pages.finishPage();
    if (page > 1 || pageCount <= settings_.maxPages) return;
    throw DocumentError(Kind::kUnprintable,
                        "the PDF has more than " + std::to_string(settings_.maxPages) + " pages");
  }

  [[noreturn]] static void failSize(unsigned page, const char* way) {
    throw DocumentError(Kind::kUnprintable,
                        "page " + std::to_string(page) + " of the PDF is too " + way);
  }

  const DocumentRequest& request_;
  const PdfSettings& settings_;
  PageSink& sink_;
  std::string program_;
  std::string path_;
  unsigned drawnWidthPx_;
};

}  // namespace

bool readPdf(const DocumentRequest& request, const PdfSettings& settings, PageSink& sink) {
  checkFile(request, settings);
  try {
    return PdfReader(request, settings, sink).readAll();
  } catch (const Cancelled&) {
    return false;
  }
}

}  // namespace wren::app
