// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// The options of a job as `lp -o` takes them, and the check that neither CUPS nor the printer
// ignores one in silence.

#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "filter/printer_description.h"

namespace wren::cli {

/// Names and values, each name once; sorted by name where they are parsed.
using JobOptions = std::vector<std::pair<std::string, std::string>>;

/// Reads options as lp does: a name alone is "true", with a leading "no" it is "false". What is no
/// option is skipped.
JobOptions readJobOptions(const std::string& text);

/// Reads the values of `-o`. One value may hold several options; the last one of a name counts.
/// Throws a Failure if a value holds none.
JobOptions parseJobOptions(const std::vector<std::string>& texts);

/// The options in one text, as the fifth argument of a filter.
std::string joinJobOptions(const JobOptions& options);

/// Whether an option of this name is given, without regard to case.
bool hasOption(const JobOptions& options, std::string_view name);

/// Whether CUPS or its filters know an option of this name for every printer.
bool isCupsOption(std::string_view name);

/// The description of a PPD; throws a Failure if it cannot be read.
filter::PrinterDescription describePrinter(const std::string& ppd);

/// What is wrong with an option; empty if nothing is: it is an option of the printer with one of
/// its choices, or one of CUPS.
std::string problemOfOption(const filter::PrinterDescription& printer, const std::string& name,
                            const std::string& value);

/// Throws a Failure about the first option that has a problem.
void checkJobOptions(const filter::PrinterDescription& printer, const JobOptions& options);

}  // namespace wren::cli
