// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What a document is whose client does not say it ("application/octet-stream").

#pragma once

#include <pappl/pappl.h>

namespace wren::app {

/// Makes the system know command files and plain text by their first bytes; PAPPL knows PDF and
/// pictures. What is neither is refused.
void knowDocumentTypes(pappl_system_t* system);

}  // namespace wren::app
