// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Raster documents as clients of the printer application send them: any bytes, or the fields of a
// stream (`kFieldsMark`). A document without a good page is refused in words.

#include <cups/raster.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "app/raster_pages.h"
#include "app/received_header.h"
#include "fuzz/input.h"
#include "fuzz/raster_fields.h"

namespace {

// Small, so that an input needs little time.
constexpr wren::app::PageTarget kTarget = {.maxHeightPx = 300};

// A client that sends its bytes in pieces, and then ends the document or hangs up.
class Client {
 public:
  Client(std::vector<std::uint8_t> bytes, std::size_t pieceBytes, bool hangsUp)
      : bytes_(std::move(bytes)), pieceBytes_(pieceBytes), hangsUp_(hangsUp) {}

  static ssize_t send(void* self, unsigned char* buffer, std::size_t length) {
    auto& client = *static_cast<Client*>(self);
    const std::size_t left = client.bytes_.size() - client.sent_;
    const std::size_t count = std::min({left, length, client.pieceBytes_});
    if (count == 0) return client.hangsUp_ ? -1 : 0;
    std::memcpy(buffer, client.bytes_.data() + client.sent_, count);
    client.sent_ += count;
    return static_cast<ssize_t>(count);
  }

 private:
  std::vector<std::uint8_t> bytes_;
  std::size_t pieceBytes_;
  bool hangsUp_;
  std::size_t sent_ = 0;
};

void checkWords(const std::string& fault) {
  fuzz::check(!fault.empty() && fault.size() <= 120, "a fault is one short line");
  fuzz::check(std::all_of(fault.begin(), fault.end(), [](char c) { return c >= ' ' && c <= '~'; }),
              "a fault is readable");
}

// @return whether the rows of the page came whole.
bool readRows(cups_raster_t* raster, const cups_page_header2_t& header) {
  std::vector<std::uint8_t> row(header.cupsBytesPerLine);
  for (unsigned y = 0; y < header.cupsHeight; ++y) {
    const auto size = static_cast<unsigned>(row.size());
    if (cupsRasterReadPixels(raster, row.data(), size) != size) return false;
    wren::app::toInk(header, row);
  }
  return true;
}

// In the order in which PAPPL calls.
void receive(cups_raster_t* raster, bool hangsUp) {
  cups_page_header2_t header = {};
  fuzz::check(cupsRasterReadHeader2(raster, &header) != 0, "there is a header to be judged");
  do {
    const cups_page_header2_t* last = wren::app::lastReceivedHeader();
    fuzz::check(last != nullptr && last->cupsWidth == header.cupsWidth &&
                    last->cupsHeight == header.cupsHeight &&
                    last->cupsBytesPerLine == header.cupsBytesPerLine,
                "the last header is that which was received");
    const std::string fault = rasterFault(header, kTarget);
    if (!fault.empty()) {
      checkWords(fault);
      if (!wren::app::receivedFault().empty()) checkWords(wren::app::receivedFault());
      return;
    }
    fuzz::check(wren::app::receivedFault().empty(), "a page that prints has no fault");
    if (!readRows(raster, header)) return;
  } while (cupsRasterReadHeader2(raster, &header) != 0);
  const std::string& fault = wren::app::receivedFault();
  if (hangsUp || !fault.empty()) checkWords(fault);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kPieces[] = {SIZE_MAX, 1, 7, 1796};
  fuzz::Input input(data, size);
  const bool hangsUp = input.below(2) == 1;
  const std::size_t pieceBytes = kPieces[input.below(4)];
  const bool hasFields = input.takeFieldsMark();
  Client client(hasFields ? fuzz::rasterFromFields(input) : input.rest(), pieceBytes, hangsUp);
  cups_raster_t* raster = cupsRasterOpenIO(Client::send, &client, CUPS_RASTER_READ);
  fuzz::check(raster != nullptr, "there is always a stream");
  receive(raster, hangsUp);
  cupsRasterClose(raster);
  return 0;
}
