// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The page with cutter, drawer, buzzer and feed of a printer, in the words of a shop, with buttons
// that do something at once, and with what the printer says of itself.

#pragma once

#include "app/web/request.h"

namespace wren::app::web {

/// Shows the page, and takes its form: the settings.
bool answerPrinterPage(Request& request);

/// Takes the form of a button: a job of one command.
bool answerPrinterAction(Request& request);

}  // namespace wren::app::web
