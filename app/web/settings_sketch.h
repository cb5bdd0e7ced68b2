// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A drawing of what the settings do at the ends of pages and jobs: where paper is fed and cut, and
// when the drawer opens and the buzzer sounds. Drawn from the bytes of a sample job.

#pragma once

#include <string>

#include "app/job_settings.h"
#include "app/page_target.h"
#include "app/web/words.h"

namespace wren::app::web {

/// An `<svg>` element with a description in words. The sample has two pages.
std::string settingsSketch(const JobSettings& settings, const PageTarget& target,
                           Language language);

}  // namespace wren::app::web
