// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Reads what a PAPPL job asks for and what its printer has as defaults.

#pragma once

#include <pappl/pappl.h>

#include <optional>
#include <string>

#include "app/job_settings.h"

namespace wren::app {

/// What the job asks for. The look-ups of the result read the job and its printer: call
/// makeJobSettings before either goes away.
JobRequest requestOf(pappl_job_t* job, const pappl_pr_options_t& options);

/// The printer's default of a vendor attribute, by its name without "-default"; nothing if it has
/// none.
std::optional<std::string> printerDefault(pappl_printer_t* printer, const std::string& name);

/// The value of an attribute as text; several values are joined with commas.
std::string attributeText(ipp_attribute_t* attribute);

}  // namespace wren::app
