// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The page with the last jobs of a printer as pictures of paper.

#pragma once

#include "app/web/request.h"

namespace wren::app::web {

/// Shows the page, and takes its form: how many papers are kept.
bool answerPaperPage(Request& request);

/// The picture of a paper, and its bytes; `?job=NUMBER` names it.
bool answerPaperPicture(Request& request);
bool answerPaperBytes(Request& request);

/// Takes the form of a button: prints a paper again, without its drawer pulses.
bool answerPrintAgain(Request& request);

}  // namespace wren::app::web
