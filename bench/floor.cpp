// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// wren-bench-floor job-id user title copies options file
//
// The lower limit for the time of a filter. It opens and marks the PPD, reads the raster with
// CUPS, measures the blank edges, and writes as many bytes to standard output and, with the option
// DebugImages=On, to the two debug images of a page as the filter, each in one write. Nothing is
// halftoned: the output is not printable.

#include <cups/ppd.h>
#include <cups/raster.h>
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::size_t kPrologueBytes = 64 + 2 + 8 + 3;
constexpr std::size_t kEpilogueBytes = 8 + 2;
constexpr std::size_t kGreyHeaderBytes = 54 + 1024;
constexpr std::size_t kDotHeaderBytes = 54 + 8;
// The folder of the filter's debug images; the relocated build uses another one.
#ifndef WREN_IMAGE_FOLDER
#define WREN_IMAGE_FOLDER "/var/spool/cups/tmp/"
#endif
constexpr const char* kFolder = WREN_IMAGE_FOLDER;

// Never shrinks: after the first page there are no page faults.
struct Buffer {
  std::uint8_t* bytes = nullptr;
  std::size_t size = 0;

  std::uint8_t* atLeast(std::size_t wanted) {
    if (wanted > size) {
      std::free(bytes);
      bytes = static_cast<std::uint8_t*>(std::malloc(wanted));
      size = wanted;
    }
    return bytes;
  }
};

struct Job {
  double maxMediaPoints = 0;  // 0 is no limit
  bool savesImages = false;
};

struct Trim {
  std::size_t first;
  std::size_t rows;
};

bool isBlank(const std::uint8_t* row, std::size_t count) {
  return row[0] == 0 && std::memcmp(row, row + 1, count - 1) == 0;
}

Trim measure(const std::uint8_t* page, std::size_t strideBytes, std::size_t columns,
             std::size_t rows) {
  std::size_t end = rows;
  while (end > 0 && isBlank(page + (end - 1) * strideBytes, columns)) --end;
  if (end == 0) return {0, rows};
  std::size_t first = 0;
  while (first + 1 < end && isBlank(page + (first + 1) * strideBytes, columns)) ++first;
  return {first, end - first};
}

void put(int descriptor, const std::uint8_t* bytes, std::size_t count) {
  if (write(descriptor, bytes, count) != static_cast<ssize_t>(count)) std::exit(1);
}

void writeImage(const char* kind, int number, std::size_t headerBytes, std::uint8_t* pixels,
                std::size_t count) {
  static std::uint8_t header[kGreyHeaderBytes];
  char name[128];
  std::snprintf(name, sizeof name, "%s%s_%d.bmp", kFolder, kind, number);
  const int descriptor = open(name, O_RDWR | O_CREAT | O_TRUNC, 0666);
  if (descriptor == -1) return;
  iovec parts[] = {{header, headerBytes}, {pixels, count}};
  if (writev(descriptor, parts, 2) != static_cast<ssize_t>(headerBytes + count)) std::exit(1);
  close(descriptor);
}

Job readJob(const char* options) {
  ppd_file_t* ppd = ppdOpenFile(std::getenv("PPD"));
  if (ppd == nullptr) std::exit(1);
  ppdMarkDefaults(ppd);
  cups_option_t* list = nullptr;
  const int count = cupsParseOptions(options, 0, &list);
  cupsMarkOptions(ppd, count, list);
  const char* images = cupsGetOption("DebugImages", count, list);
  Job job;
  job.savesImages = images != nullptr && std::strcmp(images, "On") == 0;
  cupsFreeOptions(count, list);
  const ppd_attr_t* attribute = ppdFindAttr(ppd, "MaxMediaWidth", nullptr);
  if (attribute != nullptr && attribute->value != nullptr) {
    job.maxMediaPoints = std::atof(attribute->value);
  }
  ppdClose(ppd);
  return job;
}

// Bytes of the bands of a page and of the commands around them.
std::size_t printerBytes(std::size_t columns, std::size_t rows) {
  const std::size_t bands = (rows + 7) / 8;
  return 2 + bands * (5 + columns + 3) + 3;
}

void printPage(Buffer& page, Buffer& output, const cups_page_header2_t& header, const Job& job,
               int number) {
  const std::size_t strideBytes = header.cupsBytesPerLine;
  const auto printable =
      static_cast<std::size_t>(job.maxMediaPoints / 72.0 * header.HWResolution[0]);
  const std::size_t columns = printable > 0 && strideBytes > printable ? printable : strideBytes;
  if (columns < strideBytes) {
    for (std::size_t y = 0; y < header.cupsHeight; ++y) {
      std::uint8_t* row = page.bytes + y * strideBytes;
      std::memmove(row, row + (strideBytes - columns) / 2, columns);
    }
  }
  const Trim trim = measure(page.bytes, strideBytes, columns, header.cupsHeight);
  if (job.savesImages) {
    writeImage("origin", 2 * number, kGreyHeaderBytes, page.bytes, strideBytes * header.cupsHeight);
  }
  const std::size_t dotRowBytes = job.savesImages ? (strideBytes + 31) / 32 * 4 : 0;
  const std::size_t outputBytes = printerBytes(columns, trim.rows);
  std::uint8_t* bytes = output.atLeast(outputBytes + dotRowBytes * trim.rows);
  if (job.savesImages) {
    writeImage("dithered", 2 * number + 1, kDotHeaderBytes, bytes, dotRowBytes * trim.rows);
  }
  put(STDOUT_FILENO, bytes, outputBytes);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 7) {
    std::fprintf(stderr, "Usage: %s job-id user title copies options file\n", argv[0]);
    return 2;
  }
  const int input = open(argv[6], O_RDONLY);
  if (input == -1) return 1;
  const Job job = readJob(argv[5]);
  static const std::uint8_t commands[kPrologueBytes] = {};
  put(STDOUT_FILENO, commands, kPrologueBytes);
  cups_raster_t* stream = cupsRasterOpen(input, CUPS_RASTER_READ);
  cups_page_header2_t header;
  Buffer page;
  Buffer output;
  int pages = 0;
  while (cupsRasterReadHeader2(stream, &header) != 0) {
    const unsigned size = header.cupsHeight * header.cupsBytesPerLine;
    if (cupsRasterReadPixels(stream, page.atLeast(size), size) == 0) break;
    printPage(page, output, header, job, pages++);
  }
  put(STDOUT_FILENO, commands, kEpilogueBytes);
  cupsRasterClose(stream);
  close(input);
  return pages > 0 ? 0 : 1;
}
