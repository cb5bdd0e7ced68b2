// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// wren-bench-rasters FOLDER
//
// Writes the uncompressed rasters of `./wren bench`:
//   empty.ras    no page
//   R1.ras       20 receipts of 576 x 1200
//   R1-long.ras  100 such receipts
//   R2.ras       one roll of 576 x 40000
//   R3.ras       20 photos of 832 x 2000
// and for each NAME.1bit.ras, the same pages thresholded at 128 with one bit per pixel, for
// printer filters that only encode.

#include <cups/raster.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "bench/sample_pages.h"

namespace {

using wren::bench::Noise;
using wren::bench::Page;

// An open raster file; closed by the destructor.
class RasterFile {
 public:
  explicit RasterFile(const std::string& path)
      : descriptor_(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666)),
        stream_(cupsRasterOpen(descriptor_, CUPS_RASTER_WRITE)) {}
  ~RasterFile() {
    if (stream_ != nullptr) cupsRasterClose(stream_);
    if (descriptor_ != -1) close(descriptor_);
  }
  RasterFile(const RasterFile&) = delete;
  RasterFile& operator=(const RasterFile&) = delete;

  bool isOpen() const { return stream_ != nullptr; }
  bool write(const Page& page, unsigned bitsPerPixel);

 private:
  int descriptor_;
  cups_raster_t* stream_;
};

constexpr unsigned kDotsPerInch = 203;

cups_page_header2_t headerOf(const Page& page, unsigned bitsPerPixel) {
  cups_page_header2_t header{};
  header.HWResolution[0] = header.HWResolution[1] = kDotsPerInch;
  header.PageSize[0] = static_cast<unsigned>(page.width) * 72 / kDotsPerInch;
  header.PageSize[1] = static_cast<unsigned>(page.height) * 72 / kDotsPerInch;
  header.NumCopies = 1;
  header.cupsWidth = static_cast<unsigned>(page.width);
  header.cupsHeight = static_cast<unsigned>(page.height);
  header.cupsBitsPerColor = header.cupsBitsPerPixel = bitsPerPixel;
  header.cupsBytesPerLine = (header.cupsWidth * bitsPerPixel + 7) / 8;
  header.cupsColorSpace = CUPS_CSPACE_K;
  header.cupsNumColors = 1;
  header.cupsRowCount = 8;  // the peers write bands of eight rows as well
  header.cupsRowStep = 1;
  return header;
}

std::vector<std::uint8_t> packed(const Page& page) {
  const std::size_t rowBytes = (static_cast<std::size_t>(page.width) + 7) / 8;
  std::vector<std::uint8_t> bits(rowBytes * static_cast<std::size_t>(page.height));
  for (int y = 0; y < page.height; ++y) {
    const std::uint8_t* row = page.pixels.data() + static_cast<std::size_t>(y) * page.width;
    for (int x = 0; x < page.width; ++x) {
      if (row[x] >= 128) bits[y * rowBytes + x / 8] |= static_cast<std::uint8_t>(0x80 >> x % 8);
    }
  }
  return bits;
}

bool RasterFile::write(const Page& page, unsigned bitsPerPixel) {
  cups_page_header2_t header = headerOf(page, bitsPerPixel);
  if (cupsRasterWriteHeader2(stream_, &header) == 0) return false;
  std::vector<std::uint8_t> bytes = bitsPerPixel == 8 ? page.pixels : packed(page);
  const auto count = static_cast<unsigned>(bytes.size());
  return cupsRasterWritePixels(stream_, bytes.data(), count) == count;
}

Page makeReceipt(Noise& noise) {
  Page page(576, 1200);
  drawReceipt(page, 0, page.height, noise);
  return page;
}

Page makeRoll(Noise& noise) {
  Page page(576, 40000);
  constexpr int kReceiptRows = 1250;
  for (int top = 0; top < page.height; top += kReceiptRows) {
    drawReceipt(page, top, kReceiptRows, noise);
  }
  return page;
}

Page makePhoto(Noise& noise) {
  Page page(832, 2000);
  drawPhoto(page, noise);
  return page;
}

struct Workload {
  const char* name;
  int pages;
  Page (*make)(Noise&);
  std::uint64_t seed;
};

constexpr Workload kWorkloads[] = {
    {"empty", 0, nullptr, 0}, {"R1", 20, makeReceipt, 1}, {"R1-long", 100, makeReceipt, 1},
    {"R2", 1, makeRoll, 2},   {"R3", 20, makePhoto, 3},
};

bool writeWorkload(const std::string& folder, const Workload& workload) {
  RasterFile grey(folder + "/" + workload.name + ".ras");
  RasterFile bits(folder + "/" + workload.name + ".1bit.ras");
  if (!grey.isOpen() || !bits.isOpen()) return false;
  Noise noise(workload.seed);
  for (int i = 0; i < workload.pages; ++i) {
    const Page page = workload.make(noise);
    if (!grey.write(page, 8) || !bits.write(page, 1)) return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "Usage: %s FOLDER\n", argv[0]);
    return 2;
  }
  for (const Workload& workload : kWorkloads) {
    if (!writeWorkload(argv[1], workload)) {
      std::fprintf(stderr, "%s: cannot write the raster %s\n", argv[0], workload.name);
      return 1;
    }
  }
  return 0;
}
