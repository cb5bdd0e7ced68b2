// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The error diffusion of the stencil on one row after the other, for processors without a
// vector level.

#pragma once

#include "stencil/diffusion_state.h"

namespace wren::stencil {

/// Halftones the block of rows from `state.y` on. Uses neither the lines of steps nor the masks.
void diffuseBlockScalar(DiffusionState& state);

}  // namespace wren::stencil
