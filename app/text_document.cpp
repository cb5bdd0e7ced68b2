// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/text_document.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "app/character_cells.h"
#include "app/document_error.h"
#include "app/text_pages.h"

namespace wren::app {
namespace {

using Kind = DocumentError::Kind;

std::string readFile(const DocumentRequest& request, const TextSettings& settings) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(request.path, error);
  std::ifstream file(request.path, std::ios::binary);
  if (error || !file) throw DocumentError(Kind::kSystem, "the text cannot be opened");
  if (size > settings.maxFileBytes) {
    throw DocumentError(
        Kind::kUnprintable,
        "the text is larger than " + std::to_string(settings.maxFileBytes >> 10) + " KiB");
  }
  std::string text(size, '\0');
  file.read(text.data(), static_cast<std::streamsize>(size));
  text.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
    throw DocumentError(Kind::kFormat, "the text is UTF-16, only UTF-8 can be printed");
  }
  return text;
}

class TextPrinter {
 public:
  TextPrinter(const DocumentRequest& request, PageSink& sink)
      : request_(request),
        sink_(sink),
        cells_(kDotsPerInch / request.charactersPerInch, tagOf(request.language)),
        columns_(request.target.headWidthPx / cells_.cellWidthPx()),
        band_(std::size_t{request.target.headWidthPx} * cells_.cellHeightPx()) {}

  bool printAll(std::string text) {
    TextPages pages(std::move(text), columns_, request_.target.maxHeightPx / cells_.cellHeightPx());
    std::optional<TextPage> page = pages.next();
    if (!page) throw DocumentError(Kind::kUnprintable, "the text is empty");
    for (; page; page = pages.next()) {
      if (!printPage(*page)) return false;
    }
    return true;
  }

 private:
  bool printPage(const TextPage& page) {
    const auto lines = static_cast<unsigned>(page.size());
    if (!sink_.beginPage(request_.target.headWidthPx, lines * cells_.cellHeightPx())) return false;
    for (const TextLine& line : page) {
      if (request_.cancel.isCancelled()) return false;
      printLine(line);
    }
    return sink_.endPage();
  }

  void printLine(const TextLine& line) {
    std::fill(band_.begin(), band_.end(), 0);
    for (const TextCell& cell : line) placeCell(cell);
    for (unsigned y = 0; y < cells_.cellHeightPx(); ++y) sink_.addRow(bandRow(y));
  }

  void placeCell(const TextCell& cell) {
    const std::vector<std::uint8_t>& levels = cells_.draw(cell.text, cell.columns);
    const unsigned widthPx = cell.columns * cells_.cellWidthPx();
    for (unsigned y = 0; y < cells_.cellHeightPx(); ++y) {
      std::copy_n(levels.data() + std::size_t{y} * widthPx, widthPx,
                  bandRow(y) + std::size_t{cell.column} * cells_.cellWidthPx());
    }
  }

  std::uint8_t* bandRow(unsigned y) {
    return band_.data() + std::size_t{y} * request_.target.headWidthPx;
  }

  const DocumentRequest& request_;
  PageSink& sink_;
  CharacterCells cells_;
  unsigned columns_;
  std::vector<std::uint8_t> band_;  // one line of text
};

}  // namespace

bool readText(const DocumentRequest& request, const TextSettings& settings, PageSink& sink) {
  return TextPrinter(request, sink).printAll(readFile(request, settings));
}

}  // namespace wren::app
