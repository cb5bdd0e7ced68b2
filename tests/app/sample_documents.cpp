// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/app/sample_documents.h"

#include <cups/raster.h>

#include "tests/support/temporary_folder.h"

namespace wren_test {
namespace {

ssize_t append(void* text, unsigned char* bytes, size_t count) {
  static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(bytes), count);
  return static_cast<ssize_t>(count);
}

}  // namespace

// Grey levels: 255 is paper.
std::string urf(const std::vector<RasterPage>& pages) {
  std::string bytes;
  cups_raster_t* raster = cupsRasterOpenIO(append, &bytes, CUPS_RASTER_WRITE_APPLE);
  for (const RasterPage& page : pages) {
    cups_page_header2_t header = page.header;
    header.cupsColorSpace = CUPS_CSPACE_SW;
    std::string levels = page.pixels;
    for (char& level : levels) level = static_cast<char>(~level);
    cupsRasterWriteHeader2(raster, &header);
    cupsRasterWritePixels(raster, reinterpret_cast<unsigned char*>(levels.data()),
                          static_cast<unsigned>(levels.size()));
  }
  cupsRasterClose(raster);
  return bytes;
}

std::vector<SampleDocument> sampleDocuments(unsigned seed) {
  const std::vector<RasterPage> pages = {noisePage(300, 90, seed), noisePage(1000, 70, seed + 1)};
  return {{"image/pwg-raster", rasterStream(RasterKind::kPwg, pages), 2},
          {"image/urf", urf(pages), 2},
          {"application/pdf", readFile(WREN_EXAMPLES "/receipt.pdf"), 1},
          {"image/png", readFile(WREN_EXAMPLES "/photo.png"), 1},
          {"image/jpeg", readFile(WREN_SAMPLE_JPEG), 1},
          {"text/plain", readFile(WREN_EXAMPLES "/order.txt"), 1}};
}

}  // namespace wren_test
