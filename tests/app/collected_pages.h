// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A sink that keeps the pages that were ended.

#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "app/page_sink.h"

namespace wren_test {

struct CollectedPage {
  unsigned widthPx = 0;
  unsigned heightPx = 0;
  std::vector<std::uint8_t> levels;

  unsigned at(unsigned x, unsigned y) const { return levels.at(std::size_t{y} * widthPx + x); }

  /// Rows of '#' for 255, '.' for 0 and '?' for what is between.
  std::vector<std::string> rows() const {
    std::vector<std::string> result(heightPx);
    for (unsigned y = 0; y < heightPx; ++y) {
      for (unsigned x = 0; x < widthPx; ++x) {
        const unsigned level = at(x, y);
        result[y].push_back(level == 255 ? '#' : level == 0 ? '.' : '?');
      }
    }
    return result;
  }

  /// The page as a PGM file, for other programs: ink is black.
  std::string pgm() const {
    std::string file =
        "P5\n" + std::to_string(widthPx) + " " + std::to_string(heightPx) + "\n255\n";
    for (const std::uint8_t level : levels) file.push_back(static_cast<char>(255 - level));
    return file;
  }
};

class CollectedPages final : public wren::app::PageSink {
 public:
  bool beginPage(unsigned widthPx, unsigned heightPx) override {
    page_ = {widthPx, heightPx, {}};
    ++begun;
    return begun != stopAtBegin;
  }

  void addRow(const std::uint8_t* ink) override {
    page_.levels.insert(page_.levels.end(), ink, ink + page_.widthPx);
    if (onRow) onRow();
  }

  bool endPage() override {
    complete = complete && page_.levels.size() == std::size_t{page_.widthPx} * page_.heightPx;
    pages.push_back(page_);
    return pages.size() != stopAtEnd;
  }

  std::set<unsigned> levels() const {
    std::set<unsigned> result;
    for (const CollectedPage& page : pages) result.insert(page.levels.begin(), page.levels.end());
    return result;
  }

  std::vector<std::string> sizes() const {
    std::vector<std::string> result;
    for (const CollectedPage& page : pages) {
      result.push_back(std::to_string(page.widthPx) + "x" + std::to_string(page.heightPx));
    }
    return result;
  }

  std::vector<CollectedPage> pages;
  bool complete = true;  ///< every page that was ended had all its rows
  std::size_t begun = 0;
  std::size_t stopAtBegin = 0;  ///< the page at which beginPage() returns false; 0: none
  std::size_t stopAtEnd = 0;
  std::function<void()> onRow;

 private:
  CollectedPage page_;
};

}  // namespace wren_test
