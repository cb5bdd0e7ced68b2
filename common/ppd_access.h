// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// One value of an open PPD file, with a fallback. The helpers only read: marking
// the choices is the caller's affair.
//
// The texts returned belong to the PPD (or are the caller's own default) and live
// as long as the PPD is open. A null ppd holds nothing, so every helper then
// answers with the default.
#pragma once

#include <cups/ppd.h>

extern "C" {

/// The marked choice of an option, else the option's default choice; null when
/// there is no such option or its default is not among its choices.
ppd_choice_t* wrenPpdGetChoice(ppd_file_t* ppd, const char* keyword);

/// The name of the choice, else defaultValue.
const char* wrenPpdGetChoiceAsStrDefault(ppd_file_t* ppd, const char* keyword,
                                         const char* defaultValue);

/// The leading decimal number of the choice's name (0 without one), else defaultValue.
int wrenPpdGetChoiceAsIntDefault(ppd_file_t* ppd, const char* keyword, int defaultValue);

/// 1 for true and yes, 0 for false and no (in any case of letters), for any other
/// name the low 8 bits of its leading number as a signed byte; else defaultValue.
signed char wrenPpdGetChoiceAsBoolDefault(ppd_file_t* ppd, const char* keyword,
                                          signed char defaultValue);

/// The value text of an attribute, else defaultValue.
/// @param spec the option keyword after the attribute's name; may be null.
const char* wrenPpdGetAttrAsStrDefault(ppd_file_t* ppd, const char* name, const char* spec,
                                       const char* defaultValue);

/// The value text of an attribute read as a number (0.0 when it is none), else defaultValue.
/// @param spec the option keyword after the attribute's name; may be null.
double wrenPpdGetAttrAsFloatDefault(ppd_file_t* ppd, const char* name, const char* spec,
                                    double defaultValue);
}
