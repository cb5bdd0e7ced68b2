// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/band_requests.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "app/printer_status.h"
#include "escpos/reader.h"

namespace wren::app {
namespace {

using Bytes = std::vector<std::uint8_t>;
using escpos::CommandKind;

void append(Bytes& to, const Bytes& bytes) {
  to.insert(to.end(), bytes.begin(), bytes.end());
}

// A bit image whose data looks like feeds and requests, and the feed that prints it.
Bytes band(unsigned columns) {
  Bytes bytes = {0x1B, 0x2A, 0x01, static_cast<std::uint8_t>(columns % 256),
                 static_cast<std::uint8_t>(columns / 256)};
  const Bytes data = {0x1B, 0x4A, 0x10, 0x10, 0x04, 0x02};
  for (unsigned column = 0; column < columns; ++column) bytes.push_back(data[column % data.size()]);
  append(bytes, {0x1B, 0x4A, 0x10});
  return bytes;
}

Bytes page(unsigned columns, unsigned bands) {
  Bytes bytes = {0x1B, 0x40, 0x1B, 0x3C};
  for (unsigned i = 0; i < bands; ++i) append(bytes, band(columns));
  append(bytes, {0x1B, 0x4A, 0xC0, 0x1D, 0x56, 0x01});
  return bytes;
}

/// What comes out if the bytes come in pieces.
BandRequests::Mixed mixedInPieces(const Bytes& bytes, std::size_t piece) {
  BandRequests requests;
  BandRequests::Mixed all;
  for (std::size_t at = 0; at < bytes.size(); at += piece) {
    const auto part = std::span(bytes).subspan(at, std::min(piece, bytes.size() - at));
    const BandRequests::Mixed mixed = requests.mix(part);
    append(all.bytes, mixed.bytes);
    all.requests += mixed.requests;
  }
  return all;
}

struct Found {
  Bytes others;  ///< the bytes without the requests
  unsigned requests = 0;
  std::uint64_t widestGap = 0;  ///< bytes between two requests, or one and an end
  bool eachAfterAFeed = true;
};

Found find(const Bytes& bytes) {
  Found found;
  std::uint64_t last = 0;
  CommandKind before = CommandKind::kNul;
  for (const auto& command : escpos::readAll(bytes).commands) {
    const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(command.offset);
    const Bytes own(first, first + static_cast<std::ptrdiff_t>(command.length));
    if (command.kind == CommandKind::kRealTimeStatus) {
      EXPECT_THAT(own, testing::ElementsAreArray(kCauseRequest));
      ++found.requests;
      found.eachAfterAFeed = found.eachAfterAFeed && before == CommandKind::kFeed;
      found.widestGap = std::max(found.widestGap, command.offset - last);
      last = command.offset + command.length;
    } else {
      append(found.others, own);
    }
    before = command.kind;
  }
  found.widestGap = std::max(found.widestGap, bytes.size() - last);
  return found;
}

TEST(BandRequests, StandBetweenBandsAndChangeNothingElse) {
  for (const unsigned columns : {384U, 576U, 832U}) {
    const Bytes job = page(columns, 60);
    const BandRequests::Mixed whole = mixedInPieces(job, job.size());
    const Found found = find(whole.bytes);
    EXPECT_THAT(found.others, testing::ContainerEq(job)) << columns;
    EXPECT_TRUE(found.eachAfterAFeed) << columns;
    EXPECT_EQ(found.requests, whole.requests) << columns;
    // A buffer of 4 KiB that was empty when the printer stopped takes at least one whole request.
    EXPECT_LE(found.widestGap + kCauseRequest.size(), 4096U) << columns;
    EXPECT_GE(job.size() / found.requests, BandRequests::kSpacing) << columns;
  }
}

TEST(BandRequests, AreTheSameHoweverTheBytesAreCutIntoPieces) {
  const Bytes job = page(576, 20);
  const Bytes whole = mixedInPieces(job, job.size()).bytes;
  for (const std::size_t piece : {1U, 2U, 3U, 583U, 584U, 4096U}) {
    EXPECT_THAT(mixedInPieces(job, piece).bytes, testing::ContainerEq(whole)) << piece;
  }
}

TEST(BandRequests, AreNotPutIntoAJobWithoutAPage) {
  const Bytes drawer = {0x1B, 0x70, 0x00, 0x32, 0x32};
  BandRequests requests;
  const BandRequests::Mixed mixed = requests.mix(drawer);
  EXPECT_THAT(mixed.bytes, testing::ContainerEq(drawer));
  EXPECT_EQ(mixed.requests, 0U);
}

}  // namespace
}  // namespace wren::app
