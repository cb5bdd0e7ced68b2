// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Replaces accept() of this test program, because most of its errors cannot be brought about.

#pragma once

#include <vector>

/// From now on each call of accept() fails with the next of these, then calls succeed again.
void failNextAccepts(const std::vector<int>& errors);
/// How many of them were not taken yet.
std::size_t acceptErrorsLeft();
