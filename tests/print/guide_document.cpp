// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "tests/print/guide_document.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "escpos/reader.h"

namespace print_chain {

Ink inkOf(const reference::Page& page) {
  Ink ink;
  bool any = false;
  for (std::uint32_t y = 0; y < page.height; ++y) {
    for (std::uint32_t x = 0; x < page.width; ++x) {
      if (page.pixels[static_cast<std::size_t>(y) * page.bytesPerLine + x] == 0) continue;
      if (!any) ink = {y, y, x, x};
      any = true;
      ink.bottom = y;
      ink.left = std::min(ink.left, x);
      ink.right = std::max(ink.right, x);
    }
  }
  return ink;
}

double millimetres(std::uint64_t units) {
  return static_cast<double>(units) / wren::escpos::kUnitsPerRow / 203.0 * 25.4;
}

std::string Guide::pdf(unsigned width, unsigned length, const std::string& drawing) {
  const std::string path = pathOf("page-" + std::to_string(++documents_) + ".pdf");
  const std::string command =
      "gs -q -dBATCH -dNOPAUSE -sDEVICE=pdfwrite -dAutoRotatePages=/None -o " + path +
      " -c '<</PageSize [" + std::to_string(width) + " " + std::to_string(length) +
      "]>> setpagedevice " + drawing + " showpage' >/dev/null";
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  return path;
}

std::string Guide::framedPdf(unsigned width, unsigned length) {
  return pdf(width, length,
             "4 setlinewidth 20 20 " + std::to_string(width - 40) + " " +
                 std::to_string(length - 40) + " rectstroke");
}

std::string Guide::twoPages() {
  const std::string path = pathOf("two-pages.pdf");
  const std::string command =
      "cd " WREN_SOURCE_DIR "/examples && pdfunite receipt.pdf receipt-58mm.pdf " + path;
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  return path;
}

std::string Guide::textFile(const std::string& text) {
  const std::string path = pathOf("text-" + std::to_string(++documents_) + ".txt");
  std::ofstream(path) << text << "\n";
  return path;
}

wren::escpos::Paper Guide::paperOf(const Printed& printed) {
  auto reading = wren::escpos::readAll(printed.bytes);
  EXPECT_TRUE(reading.problems.empty());
  return std::move(reading.paper);
}

wren::escpos::Paper Guide::paperOf(const std::string& document, const Options& jobOptions,
                                   int copies) {
  return paperOf(print(document, 80, jobOptions, copies));
}

double Guide::shareOfDots(const std::string& document, const Options& jobOptions) {
  return shareOfDots(print(document, 80, jobOptions));
}

double Guide::shareOfDots(const Printed& printed) {
  const auto paper = paperOf(printed);
  std::uint64_t rows = 0;
  std::uint64_t dots = 0;
  std::vector<std::uint8_t> row(576);
  const auto bottom =
      paper.stripes.empty() ? 0 : paper.stripes.back().topUnits / wren::escpos::kUnitsPerRow + 8;
  for (; rows < bottom; ++rows) {
    wren::escpos::renderRow(paper, rows, row);
    dots += static_cast<std::uint64_t>(std::count(row.begin(), row.end(), 1));
  }
  return rows == 0 ? 0 : static_cast<double>(dots) / static_cast<double>(rows * row.size());
}

}  // namespace print_chain
