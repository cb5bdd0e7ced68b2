// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Reads one value of an open PPD file, with a default. The functions only read: the caller
// marks the choices.
//
// The texts returned belong to the PPD, or are the caller's default, and live as long as the
// PPD is open. With a null `ppd` every function returns its default.

#pragma once

#include <cups/ppd.h>

extern "C" {

/// The marked choice of an option, else the option's default choice; null if there is no
/// such option or its default is not one of its choices.
ppd_choice_t* wrenPpdGetChoice(ppd_file_t* ppd, const char* keyword);

/// The name of the choice, else `defaultValue`.
const char* wrenPpdGetChoiceAsStrDefault(ppd_file_t* ppd, const char* keyword,
                                         const char* defaultValue);

/// The leading decimal number of the choice's name (0 if it has none), else `defaultValue`.
int wrenPpdGetChoiceAsIntDefault(ppd_file_t* ppd, const char* keyword, int defaultValue);

/// 1 for "true" and "yes", 0 for "false" and "no" (case-insensitive); otherwise the leading number
/// of the name, reduced to a signed byte; `defaultValue` without a choice.
signed char wrenPpdGetChoiceAsBoolDefault(ppd_file_t* ppd, const char* keyword,
                                          signed char defaultValue);

/// The value text of an attribute, else `defaultValue`.
/// @param spec the option keyword after the attribute's name; may be null.
const char* wrenPpdGetAttrAsStrDefault(ppd_file_t* ppd, const char* name, const char* spec,
                                       const char* defaultValue);

/// The value text of an attribute as a number (0.0 if it is not one), else `defaultValue`.
/// @param spec the option keyword after the attribute's name; may be null.
double wrenPpdGetAttrAsFloatDefault(ppd_file_t* ppd, const char* name, const char* spec,
                                    double defaultValue);
}

namespace wren {

/// Deleter for an open PPD file.
struct ClosePpd {
  void operator()(ppd_file_t* ppd) const;
};

}  // namespace wren
