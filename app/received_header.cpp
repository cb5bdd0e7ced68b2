// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/received_header.h"

#ifndef __APPLE__
#include <dlfcn.h>

namespace {

struct Received {
  cups_page_header2_s header;
  bool any;
};
// PAPPL reads the header and calls us on one thread.
thread_local Received received = {};

using ReadHeader = unsigned (*)(cups_raster_t*, cups_page_header2_t*);

}  // namespace

// Replaces the function of libcups for every caller of the process: PAPPL is the one.
extern "C" unsigned cupsRasterReadHeader2(cups_raster_t* raster, cups_page_header2_t* header) {
  static const auto kRead = reinterpret_cast<ReadHeader>(dlsym(RTLD_NEXT, "cupsRasterReadHeader2"));
  const unsigned result = kRead == nullptr ? 0 : kRead(raster, header);
  received.any = result != 0;
  if (received.any) received.header = *header;
  return result;
}

namespace wren::app {

const cups_page_header2_s* lastReceivedHeader() {
  return received.any ? &received.header : nullptr;
}

}  // namespace wren::app
#else
namespace wren::app {

const cups_page_header2_s* lastReceivedHeader() {
  return nullptr;
}

}  // namespace wren::app
#endif
