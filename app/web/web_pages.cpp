// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/web/web_pages.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>

#include "app/web/halftone_page.h"
#include "app/web/html.h"
#include "app/web/paper_page.h"
#include "app/web/printer_page.h"
#include "app/web/request.h"
#include "app/web/shared_files.h"

namespace wren::app::web {
namespace {

constexpr const char* kHtml = "text/html";
constexpr const char* kJson = "application/json";

struct Route {
  const char* page;
  const char* type;
  pappl_resource_cb_t callback;
};

constexpr Route kRoutes[] = {
    {kHalftonePage, kHtml, onRequest<answerHalftonePage>},
    {"halftone/preview", kJson, onRequest<answerHalftonePreview>},
    {"halftone/pdf", kJson, onRequest<answerPdfPages>},
    {"halftone/print", kJson, onRequest<answerHalftonePrint>},
    {kPaperPage, kHtml, onRequest<answerPaperPage>},
    {"paper/picture", "image/png", onRequest<answerPaperPicture>},
    {"paper/bytes", "application/octet-stream", onRequest<answerPaperBytes>},
    {"paper/again", kHtml, onRequest<answerPrintAgain>},
    {kPrinterPage, kHtml, onRequest<answerPrinterPage>},
    {"printer/action", kHtml, onRequest<answerPrinterAction>},
};

std::string pathOf(pappl_printer_t* printer, const char* page) {
  std::array<char, 1024> path;
  return papplPrinterGetPath(printer, page, path.data(), path.size());
}

template <std::size_t N>
void addFile(pappl_system_t* system, const char* path, const char* type,
             const unsigned char (&bytes)[N]) {
  papplSystemAddResourceData(system, path, type, bytes, N);
}

}  // namespace

void addSharedFiles(pappl_system_t* system) {
  addFile(system, kStylePath, "text/css", kStyleFile);
  addFile(system, kScriptPath, "text/javascript", kScriptFile);
  addFile(system, "/wren-examples/photo.png", "image/png", kPhotoFile);
  addFile(system, "/wren-examples/drawing.png", "image/png", kDrawingFile);
  addFile(system, "/wren-examples/receipt.pdf", "application/pdf", kReceiptFile);
}

void addPrinterPages(pappl_printer_t* printer) {
  pappl_system_t* const system = papplPrinterGetSystem(printer);
  // NOLINTNEXTLINE(performance-no-int-to-ptr): a number, never followed
  void* const id = reinterpret_cast<void*>(std::intptr_t{papplPrinterGetID(printer)});
  for (const Route& route : kRoutes) {
    papplSystemAddResourceCallback(system, pathOf(printer, route.page).c_str(), route.type,
                                   route.callback, id);
  }
  // PAPPL's frame has no language of ours.
  for (const auto& [page, title] :
       {std::pair(kHalftonePage, kHalftoneTitle), std::pair(kPaperPage, kPaperTitle),
        std::pair(kPrinterPage, kPrinterTitle)}) {
    papplPrinterAddLink(printer, title.english, pathOf(printer, page).c_str(),
                        PAPPL_LOPTIONS_NAVIGATION | PAPPL_LOPTIONS_PRINTER);
  }
}

}  // namespace wren::app::web
