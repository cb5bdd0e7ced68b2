// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/band_requests.h"

#include "app/printer_status.h"

namespace wren::app {

BandRequests::BandRequests()
    : splitter_([this](escpos::CommandKind kind, std::span<const std::uint8_t> bytes) {
        split_ += bytes.size();
        if (kind == escpos::CommandKind::kFeed) feedEnds_.push_back(split_);
      }) {}

BandRequests::Mixed BandRequests::mix(std::span<const std::uint8_t> bytes) {
  feedEnds_.clear();
  splitter_.feed(bytes);
  const std::uint64_t start = passed_;
  passed_ += bytes.size();
  Mixed mixed;
  mixed.bytes.reserve(bytes.size() + kCauseRequest.size() * (1 + bytes.size() / kSpacing));
  std::uint64_t copied = start;
  const auto copyTo = [&](std::uint64_t end) {
    const auto part = bytes.subspan(copied - start, end - copied);
    mixed.bytes.insert(mixed.bytes.end(), part.begin(), part.end());
    copied = end;
  };
  for (const std::uint64_t end : feedEnds_) {
    if (end - lastRequest_ < kSpacing) continue;
    copyTo(end);
    mixed.bytes.insert(mixed.bytes.end(), kCauseRequest.begin(), kCauseRequest.end());
    ++mixed.requests;
    lastRequest_ = end;
  }
  copyTo(passed_);
  return mixed;
}

}  // namespace wren::app
