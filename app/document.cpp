// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/document.h"

#include <algorithm>

#include "app/document_error.h"
#include "app/pdf_document.h"
#include "app/picture_document.h"
#include "app/text_document.h"

namespace wren::app {
namespace {

using Reader = bool (*)(const DocumentRequest& request, PageSink& sink);

struct Format {
  const char* name;
  Reader read;
};

constexpr Format kFormats[] = {
    {"application/pdf",
     [](const DocumentRequest& request, PageSink& sink) { return readPdf(request, {}, sink); }},
    {"image/png",
     [](const DocumentRequest& request, PageSink& sink) { return readPng(request, {}, sink); }},
    {"image/jpeg",
     [](const DocumentRequest& request, PageSink& sink) { return readJpeg(request, {}, sink); }},
    {"text/plain",
     [](const DocumentRequest& request, PageSink& sink) { return readText(request, {}, sink); }},
};

}  // namespace

const std::vector<std::string>& documentFormats() {
  static const std::vector<std::string> kNames = [] {
    std::vector<std::string> result;
    for (const Format& format : kFormats) result.emplace_back(format.name);
    return result;
  }();
  return kNames;
}

bool readDocument(const std::string& format, const DocumentRequest& request, PageSink& sink) {
  const auto* found = std::find_if(std::begin(kFormats), std::end(kFormats),
                                   [&](const Format& known) { return format == known.name; });
  if (found == std::end(kFormats)) {
    throw DocumentError(DocumentError::Kind::kFormat,
                        "documents of type " + format + " are not printed");
  }
  return found->read(request, sink);
}

}  // namespace wren::app
