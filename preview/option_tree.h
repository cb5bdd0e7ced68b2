// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The options of wren-preview as a tree: what it parses with, and what the completions of `wren
// preview` are written from.

#pragma once

#include <CLI/CLI.hpp>
#include <memory>

#include "preview/options.h"

namespace wren::preview {

/// The values go to `options`, which has to outlive the tree.
std::shared_ptr<CLI::App> makeOptionTree(Options& options);

}  // namespace wren::preview
