// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/golden/page_source.h"

#include <cstddef>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace golden {

namespace {

using Bytes = std::vector<std::uint8_t>;

struct Size {
  std::uint32_t rowBytes;
  std::uint32_t height;
};

// xorshift64*: Marsaglia, "Xorshift RNGs", 2003, with the multiplier of Vigna, 2016.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15U + 1) {}

  std::uint8_t next() {
    state_ ^= state_ >> 12;
    state_ ^= state_ << 25;
    state_ ^= state_ >> 27;
    return static_cast<std::uint8_t>((state_ * 0x2545F4914F6CDD1DU) >> 56);
  }

 private:
  std::uint64_t state_;
};

template <typename Level>
Bytes filled(Size size, Level level) {
  Bytes pixels;
  for (std::uint32_t y = 0; y < size.height; ++y) {
    for (std::uint32_t x = 0; x < size.rowBytes; ++x) pixels.push_back(level(x, y));
  }
  return pixels;
}

Bytes flat(Size size, const std::string& argument) {
  return Bytes(std::size_t{size.rowBytes} * size.height,
               static_cast<std::uint8_t>(std::stoul(argument)));
}

Bytes ramp(Size size) {
  const std::uint32_t last = size.rowBytes > 1 ? size.rowBytes - 1 : 1;
  return filled(size, [last](std::uint32_t x, std::uint32_t) {
    return static_cast<std::uint8_t>(x * 255 / last);
  });
}

Bytes noise(Size size, const std::string& argument) {
  Random random(std::stoul(argument));
  return filled(size, [&random](std::uint32_t, std::uint32_t) { return random.next(); });
}

Bytes sparse(Size size, const std::string& argument) {
  Random random(std::stoul(argument));
  return filled(size, [&random](std::uint32_t, std::uint32_t) {
    return static_cast<std::uint8_t>(random.next() < 16 ? 255 : 0);
  });
}

Bytes photo(Size size, const std::string& argument) {
  Random random(std::stoul(argument));
  const std::uint32_t steps = size.rowBytes + 2 * size.height;
  return filled(size, [&random, steps](std::uint32_t x, std::uint32_t y) {
    return static_cast<std::uint8_t>((x + 2 * y) * 224 / steps + random.next() % 32);
  });
}

Bytes rows(Size size, const std::string& argument) {
  Bytes pixels(std::size_t{size.rowBytes} * size.height, 0);
  std::istringstream list(argument);
  for (std::string row; std::getline(list, row, ',');) {
    for (std::uint32_t x = 0; x < size.rowBytes; ++x)
      pixels.at(std::stoul(row) * size.rowBytes + x) = 255;
  }
  return pixels;
}

Bytes column(Size size, const std::string& argument) {
  const unsigned long at = std::stoul(argument);
  return filled(size, [at](std::uint32_t x, std::uint32_t) {
    return static_cast<std::uint8_t>(x == at ? 255 : 0);
  });
}

Bytes bytes(Size size, const std::string& argument) {
  Bytes pixels;
  for (std::size_t i = 0; i + 1 < argument.size(); i += 2)
    pixels.push_back(static_cast<std::uint8_t>(std::stoul(argument.substr(i, 2), nullptr, 16)));
  if (pixels.size() != std::size_t{size.rowBytes} * size.height)
    throw std::runtime_error("bytes:" + argument + " is not a page of that size");
  return pixels;
}

Bytes pgm(Size size, const std::string& path) {
  std::ifstream file(path);
  std::string magic;
  unsigned width = 0;
  unsigned height = 0;
  unsigned largest = 0;
  file >> magic >> width >> height >> largest;
  if (magic != "P2" || width != size.rowBytes || height != size.height || largest != 255)
    throw std::runtime_error(path + " is not a plain PGM of the page's size");
  Bytes pixels;
  for (unsigned level = 0; file >> level;) pixels.push_back(static_cast<std::uint8_t>(level));
  if (pixels.size() != std::size_t{width} * height)
    throw std::runtime_error(path + " is too short");
  return pixels;
}

}  // namespace

std::vector<std::uint8_t> pagePixels(const std::string& source, std::uint32_t rowBytes,
                                     std::uint32_t height, const std::string& folder) {
  const Size size = {rowBytes, height};
  const auto colon = source.find(':');
  const std::string name = source.substr(0, colon);
  const std::string argument = colon == std::string::npos ? "" : source.substr(colon + 1);
  if (name == "flat") return flat(size, argument);
  if (name == "ramp") return ramp(size);
  if (name == "noise") return noise(size, argument);
  if (name == "sparse") return sparse(size, argument);
  if (name == "photo") return photo(size, argument);
  if (name == "rows") return rows(size, argument);
  if (name == "column") return column(size, argument);
  if (name == "bytes") return bytes(size, argument);
  if (name == "pgm") return pgm(size, folder + "/" + argument);
  throw std::runtime_error("no page source is called " + source);
}

}  // namespace golden
