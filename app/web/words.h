// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The languages of the web pages, and the words of the options: those of the PPDs.

#pragma once

#include <string>
#include <string_view>

#include "app/vendor_option.h"

namespace wren::app::web {

enum class Language { kEnglish, kGerman };

/// A text in every language.
struct Text {
  const char* english;
  const char* german;

  constexpr const char* in(Language language) const {
    return language == Language::kGerman ? german : english;
  }
};

/// The language that suits a browser best.
/// @param acceptLanguage the field of that name, as in RFC 9110; English if it names none of ours.
Language languageFor(std::string_view acceptLanguage);

/// "en" or "de".
const char* languageTag(Language language);

/// The text of the PPDs for an option, or for one of its choices.
/// @param choice empty: the option itself.
/// @return empty if the PPDs have none.
std::string ppdText(std::string_view option, std::string_view choice, Language language);

/// The name of an option as the PPDs have it, or ours; its attribute if there is neither.
std::string optionText(const VendorOption& option, Language language);

/// The same for a value of the option.
std::string valueText(const VendorOption& option, std::int32_t value, Language language);

/// A number with one decimal: "157.2" or "157,2".
std::string decimalText(double number, Language language);

}  // namespace wren::app::web
