// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The tone curve of brightness and contrast as a lookup table. The page path and
// `CxImage::Light` both use it, so that they map every level alike.

#pragma once

#include <array>
#include <cstdint>

namespace wren::dither {

/// New level of each of the 256 grey levels.
using ToneTable = std::array<std::uint8_t, 256>;

/// Tone curve that adds `brightness` to each level and scales its distance from 128 by
/// (100 + `contrast`) percent. Results are truncated and clamped to 0..255. Any arguments
/// are allowed; (0, 0) gives the identity.
ToneTable makeToneTable(std::int32_t brightness, std::int32_t contrast);

}  // namespace wren::dither
