// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Writes small PDFs, object by object.

#pragma once

#include <string>
#include <vector>

namespace wren_test {

struct PdfPage {
  double widthPt;
  double heightPt;
  std::string content;       ///< operators
  std::string entries = {};  ///< more entries of the page's dictionary
};

class PdfText {
 public:
  explicit PdfText(const std::vector<PdfPage>& pages) {
    std::string kids;
    for (std::size_t i = 0; i < pages.size(); ++i) kids += std::to_string(3 + 2 * i) + " 0 R ";
    object("<< /Type /Catalog /Pages 2 0 R >>");
    object("<< /Type /Pages /Kids [" + kids + "] /Count " + std::to_string(pages.size()) + " >>");
    for (const PdfPage& page : pages) addPage(page);
  }

  /// The file; `entries` are more entries of the trailer.
  std::string file(const std::string& entries = {}) const {
    const std::string size = std::to_string(offsets_.size() + 1);
    std::string table = "xref\n0 " + size + "\n0000000000 65535 f \n";
    for (const std::size_t offset : offsets_) {
      const std::string digits = std::to_string(offset);
      table += std::string(10 - digits.size(), '0') + digits + " 00000 n \n";
    }
    return text_ + table + "trailer << /Size " + size + " /Root 1 0 R " + entries +
           " >>\nstartxref\n" + std::to_string(text_.size()) + "\n%%EOF\n";
  }

 private:
  void object(const std::string& body) {
    offsets_.push_back(text_.size());
    text_ += std::to_string(offsets_.size()) + " 0 obj\n" + body + "\nendobj\n";
  }

  void addPage(const PdfPage& page) {
    const std::string content = std::to_string(offsets_.size() + 2);
    object("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 " + std::to_string(page.widthPt) + " " +
           std::to_string(page.heightPt) + "] /Contents " + content + " 0 R " + page.entries +
           " >>");
    object("<< /Length " + std::to_string(page.content.size()) + " >>\nstream\n" + page.content +
           "\nendstream");
  }

  std::string text_ = "%PDF-1.4\n";
  std::vector<std::size_t> offsets_;
};

}  // namespace wren_test
