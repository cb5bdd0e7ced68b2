// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/web/words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>

#include "app/web/ppd_words.h"
#include "common/halftone_type.h"
#include "job/option_table.h"

namespace wren::app::web {
namespace {

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// Thousandths; 1000 if there is no q. A value that is no number counts as 0.
int qualityOf(std::string_view parameters) {
  const auto at = parameters.find("q=");
  if (at == std::string_view::npos) return 1000;
  const std::string_view text = trimmed(parameters.substr(at + 2));
  int quality = 0;
  int weight = 1000;
  for (const char letter : text) {
    if (letter == '.') continue;
    if (letter < '0' || letter > '9' || weight == 0) break;
    quality += (letter - '0') * weight;
    weight /= 10;
  }
  return quality;
}

// "de" for "de-AT".
bool isLanguage(std::string_view range, std::string_view tag) {
  return range.size() >= tag.size() &&
         std::equal(tag.begin(), tag.end(), range.begin(),
                    [](char a, char b) { return a == (b >= 'A' && b <= 'Z' ? b + 32 : b); }) &&
         (range.size() == tag.size() || range[tag.size()] == '-');
}

const char* translated(const char* english, Language language) {
  if (language == Language::kEnglish) return english;
  for (const PpdTranslation& row : kPpdTranslations) {
    if (std::strcmp(row.english, english) == 0) return row.german;
  }
  return english;
}

// The option of the PPDs behind an attribute; empty if there is none.
std::string_view ppdOptionOf(const VendorOption& option) {
  if (std::string_view(option.attribute) == kHalftoneAttribute) return job::kHalftoneTypeOption;
  for (const job::NumericOption& row : job::kIndexedOptions) {
    if (option.field != nullptr && row.field == option.field) return row.keyword;
  }
  return {};
}

struct OwnText {
  std::string_view attribute;
  std::string_view choice;
  Text text;
};

// What the PPDs do not have.
constexpr OwnText kOwnTexts[] = {
    {kContrastAttribute, "", {"Contrast", "Kontrast"}},
    {kLongestGapAttribute,
     "",
     {"Longest blank stretch, in mm (0: any)", "Längste leere Strecke in mm (0: beliebig)"}},
    {kTextPitchAttribute, "", {"Plain text", "Einfacher Text"}},
    {kTextPitchAttribute, "cpi-10", {"Large letters", "Große Schrift"}},
    {kTextPitchAttribute, "cpi-14", {"Small letters", "Kleine Schrift"}},
    {kDrawerClientsAttribute, "", {"Who may open the drawer", "Wer die Lade öffnen darf"}},
    {kDrawerClientsAttribute, "local", {"Only this machine", "Nur dieser Rechner"}},
    {kDrawerClientsAttribute, "anyone", {"Everyone who may print", "Alle, die drucken dürfen"}},
    {kDrawerLevelAttribute,
     "",
     {"Signal of the drawer while it is open", "Signal der Lade, wenn sie offen ist"}},
    {kDrawerLevelAttribute, "unknown", {"Not known", "Nicht bekannt"}},
    {kDrawerLevelAttribute, "high", {"High", "Hoch"}},
    {kDrawerLevelAttribute, "low", {"Low", "Niedrig"}},
    {kKeptPapersAttribute, "", {"Receipts that are kept", "Bons, die aufgehoben werden"}},
};

std::string ownText(const VendorOption& option, std::string_view choice, Language language) {
  for (const OwnText& row : kOwnTexts) {
    if (row.attribute == option.attribute && row.choice == choice) return row.text.in(language);
  }
  return {};
}

}  // namespace

Language languageFor(std::string_view acceptLanguage) {
  int english = 0;
  int german = 0;
  while (!acceptLanguage.empty()) {
    const auto comma = acceptLanguage.find(',');
    const std::string_view item = acceptLanguage.substr(0, comma);
    acceptLanguage.remove_prefix(comma == std::string_view::npos ? acceptLanguage.size()
                                                                 : comma + 1);
    const auto semicolon = item.find(';');
    const std::string_view range = trimmed(item.substr(0, semicolon));
    const int quality =
        semicolon == std::string_view::npos ? 1000 : qualityOf(item.substr(semicolon + 1));
    if (isLanguage(range, "en")) english = std::max(english, quality);
    if (isLanguage(range, "de")) german = std::max(german, quality);
  }
  return german > english ? Language::kGerman : Language::kEnglish;
}

const char* languageTag(Language language) {
  return language == Language::kGerman ? "de" : "en";
}

std::string ppdText(std::string_view option, std::string_view choice, Language language) {
  for (const PpdText& row : kPpdTexts) {
    if (option == row.option && choice == row.choice) return translated(row.english, language);
  }
  return {};
}

std::string optionText(const VendorOption& option, Language language) {
  std::string text = ppdText(ppdOptionOf(option), "", language);
  if (text.empty()) text = ownText(option, "", language);
  return text.empty() ? option.attribute : text;
}

std::string valueText(const VendorOption& option, std::int32_t value, Language language) {
  const std::string_view ofPpds = ppdOptionOf(option);
  const std::string choice = ofPpds == job::kHalftoneTypeOption
                                 ? wrenHalftoneTypeToStr(static_cast<DitherType>(value))
                                 : std::to_string(value);
  std::string text = ppdText(ofPpds, choice, language);
  if (text.empty()) text = ownText(option, vendorValueText(option, value), language);
  return text.empty() ? vendorValueText(option, value) : text;
}

std::string decimalText(double number, Language language) {
  std::array<char, 32> text;
  std::snprintf(text.data(), text.size(), "%.1f", number);
  std::string result = text.data();
  if (language == Language::kGerman) std::replace(result.begin(), result.end(), '.', ',');
  return result;
}

}  // namespace wren::app::web
