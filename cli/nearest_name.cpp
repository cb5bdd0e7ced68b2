// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/nearest_name.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace wren::cli {

std::size_t editDistance(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (lower(a[i]) == lower(b[j]) ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

namespace {

// A name that was not written to its end is as near as one wrong letter.
std::size_t distanceTo(std::string_view wanted, std::string_view name) {
  constexpr std::size_t kTelling = 4;
  const bool isBeginning = wanted.size() >= kTelling && wanted.size() < name.size() &&
                           editDistance(wanted, name.substr(0, wanted.size())) == 0;
  return isBeginning ? 1 : editDistance(wanted, name);
}

}  // namespace

std::string nearestName(std::string_view wanted, const std::vector<std::string>& names) {
  std::string nearest;
  std::size_t least = wanted.size() / 3 + 1;
  for (const std::string& name : names) {
    const std::size_t distance = distanceTo(wanted, name);
    if (distance >= least) continue;
    least = distance;
    nearest = name;
  }
  return nearest;
}

std::string suggestion(std::string_view wanted, const std::vector<std::string>& names) {
  const std::string nearest = nearestName(wanted, names);
  return nearest.empty() ? "" : ", did you mean '" + nearest + "'?";
}

}  // namespace wren::cli
