// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/received_header.h"

#ifndef __APPLE__
#include <dlfcn.h>

#include <algorithm>
#include <cstring>

namespace {

// What one thread reads: PAPPL reads a document and calls us on the thread of its client.
struct Received {
  cups_raster_iocb_t read = nullptr;
  void* context = nullptr;
  cups_page_header2_s header = {};
  bool isOpen = false;
  unsigned headers = 0;
  std::size_t headerBytes = 0;  // that the library asks for at first
  // Since the begin of the header:
  std::size_t requestedBytes = 0;  // by the last read
  std::size_t receivedBytes = 0;   // by all
  bool isAtEnd = false;
  bool isLost = false;
  std::string fault;
};
thread_local Received received = {};

ssize_t readCounted(void* context, unsigned char* buffer, std::size_t size) {
  auto& from = *static_cast<Received*>(context);
  const ssize_t count = from.read(from.context, buffer, size);
  from.requestedBytes = size;
  if (from.headerBytes == 0 && from.isOpen) from.headerBytes = size;
  from.isAtEnd = count <= 0;
  from.isLost = count < 0;
  from.receivedBytes += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
  return count;
}

// A document of nothing but the mark at its start.
ssize_t readMark(void* /*context*/, unsigned char* buffer, std::size_t size) {
  constexpr char kMark[] = {'R', 'a', 'S', '2'};
  if (size != sizeof kMark) return 0;
  std::memcpy(buffer, kMark, sizeof kMark);
  return sizeof kMark;
}

ssize_t readNothing(void* /*context*/, unsigned char* /*buffer*/, std::size_t /*size*/) {
  return 0;
}

constexpr const char* kLost = "the connection ended in the middle of the document";

// After a header that could not be read.
std::string faultAtEnd() {
  if (received.isLost) return kLost;
  const bool isFirst = received.headers == 0;
  const std::string name = "the header of page " + std::to_string(received.headers + 1);
  if (!received.isAtEnd) return name + " is damaged";
  // It asks for the rest of a header of which it has a part. If it fills its buffer instead, it may
  // have one too; a document is not refused for that.
  const bool isCutOff =
      received.receivedBytes > 0 || (!isFirst && received.requestedBytes < received.headerBytes);
  if (isCutOff) return name + " is cut off";
  return isFirst ? "the document has no pages" : "";
}

template <typename Function>
Function original(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// These two replace functions of libcups for every caller of the process: PAPPL is the one that
// reads. One that cannot be opened is replaced by one without pages.
extern "C" cups_raster_t* cupsRasterOpenIO(cups_raster_iocb_t io, void* context, cups_mode_t mode) {
  using Open = cups_raster_t* (*)(cups_raster_iocb_t, void*, cups_mode_t);
  static const auto kOpen = original<Open>("cupsRasterOpenIO");
  if (kOpen == nullptr) return nullptr;
  if (mode != CUPS_RASTER_READ) return kOpen(io, context, mode);
  received = {};
  received.read = io;
  received.context = context;
  cups_raster_t* const raster = kOpen(readCounted, &received, mode);
  received.isOpen = raster != nullptr;
  if (received.isOpen) return raster;
  received.fault = received.isLost ? kLost : "this is neither PWG nor Apple raster";
  received.read = readNothing;
  return kOpen(readMark, nullptr, mode);
}

extern "C" unsigned cupsRasterReadHeader2(cups_raster_t* raster, cups_page_header2_t* header) {
  using Read = unsigned (*)(cups_raster_t*, cups_page_header2_t*);
  static const auto kRead = original<Read>("cupsRasterReadHeader2");
  if (kRead == nullptr) return 0;
  received.receivedBytes = 0;
  received.isAtEnd = received.isLost = false;
  const bool isFirst = received.headers == 0;
  if (kRead(raster, header) == 0) {
    if (received.fault.empty()) received.fault = faultAtEnd();
    if (!isFirst) return 0;
    // With a header, PAPPL asks us, and we say what is wrong.
    *header = {};
  }
  received.header = *header;
  ++received.headers;
  return 1;
}

namespace wren::app {

const cups_page_header2_s* lastReceivedHeader() {
  return received.headers == 0 ? nullptr : &received.header;
}

const std::string& receivedFault() {
  return received.fault;
}

}  // namespace wren::app
#else
namespace wren::app {

const cups_page_header2_s* lastReceivedHeader() {
  return nullptr;
}

const std::string& receivedFault() {
  static const std::string kNone;
  return kNone;
}

}  // namespace wren::app
#endif
