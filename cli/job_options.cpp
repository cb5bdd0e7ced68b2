// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/job_options.h"

#include <cups/cups.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <sstream>

#include "cli/failure.h"
#include "cli/nearest_name.h"

namespace wren::cli {
namespace {

using filter::isSameName;
using filter::PrinterDescription;
using filter::PrinterOption;

// What the scheduler, its filters and the IPP standard give a meaning to (lp(1), the filters of
// cups-filters, PWG 5100.x).
constexpr const char* kCupsOptions[] = {
    "blackplot",
    "brightness",
    "collate",
    "columns",
    "copies",
    "cpi",
    "crop-to-fit",
    "document-format",
    "document-password",
    "fidelity",
    "fill",
    "finishings",
    "fit-to-page",
    "fitplot",
    "gamma",
    "hue",
    "ipp-attribute-fidelity",
    "job-account-id",
    "job-accounting-user-id",
    "job-billing",
    "job-cancel-after",
    "job-hold-until",
    "job-name",
    "job-originating-user-name",
    "job-priority",
    "job-sheets",
    "job-uuid",
    "landscape",
    "lpi",
    "media",
    "media-bottom-margin",
    "media-col",
    "media-left-margin",
    "media-right-margin",
    "media-source",
    "media-top-margin",
    "media-type",
    "mirror",
    "multiple-document-handling",
    "natural-scaling",
    "notify-recipient-uri",
    "number-up",
    "number-up-layout",
    "orientation-requested",
    "output-bin",
    "output-order",
    "outputorder",
    "page-border",
    "page-bottom",
    "page-delivery",
    "page-label",
    "page-left",
    "page-logging",
    "page-ranges",
    "page-right",
    "page-set",
    "page-top",
    "pdfAutoRotate",
    "pdftops-renderer",
    "position",
    "ppi",
    "prettyprint",
    "print-color-mode",
    "print-content-optimize",
    "print-quality",
    "print-rendering-intent",
    "print-scaling",
    "printer-resolution",
    "raw",
    "saturation",
    "scaling",
    "sides",
    "wrap",
};

struct Unit {
  std::string_view name;
  double points;
};
constexpr std::array<Unit, 6> kUnits = {{{"", 1.0},
                                         {"pt", 1.0},
                                         {"in", 72.0},
                                         {"ft", 864.0},
                                         {"cm", 72.0 / 2.54},
                                         {"mm", 72.0 / 25.4}}};

struct Size {
  double widthPt;
  double lengthPt;
};

// WIDTHxLENGTHunit; nothing if it is written in another way.
std::optional<Size> parseSize(const std::string& text) {
  const bool startsWithDigit = !text.empty() && text[0] >= '0' && text[0] <= '9';
  char* end = nullptr;
  const double width = std::strtod(text.c_str(), &end);
  if (!startsWithDigit || *end != 'x' || end[1] < '0' || end[1] > '9') return std::nullopt;
  const double length = std::strtod(end + 1, &end);
  for (const Unit& unit : kUnits) {
    if (isSameName(unit.name, end)) return Size{width * unit.points, length * unit.points};
  }
  return std::nullopt;
}

std::string millimetres(float points) {
  return std::to_string(static_cast<long>(points * 25.4F / 72.0F + 0.5F));
}

std::string problemOfCustomSize(const filter::CustomSizeLimits& limits, const std::string& value) {
  const auto size = parseSize(value.substr(std::string_view("Custom.").size()));
  if (!size.has_value()) {
    return "'" + value +
           "' is no size; a custom size is Custom.WIDTHxLENGTHmm, such as Custom.72x350mm";
  }
  // Half a point for the rounding of millimetres. A page that is wider than the print head is cut
  // at both sides, so nothing but the longest side limits its width.
  const auto isWithin = [&](double points, float least) {
    return points > double{least} - 0.5 && points < double{limits.maxLengthPt} + 0.5;
  };
  if (isWithin(size->widthPt, limits.minWidthPt) && isWithin(size->lengthPt, limits.minLengthPt)) {
    return {};
  }
  return "the size '" + value + "' cannot be printed: the smallest is " +
         millimetres(limits.minWidthPt) + " x " + millimetres(limits.minLengthPt) +
         " mm, the longest " + millimetres(limits.maxLengthPt) + " mm";
}

bool isCustomSize(const PrinterDescription& printer, const std::string& value) {
  return isSameName(value.substr(0, 7), "Custom.") && printer.customSize.maxWidthPt > 0;
}

// Of the names in the list, CUPS takes a size, a source and a type.
std::string problemOfMedia(const PrinterDescription& printer, const std::string& value) {
  std::istringstream names(value);
  for (std::string name; std::getline(names, name, ',');) {
    if (!isCustomSize(printer, name)) continue;
    std::string problem = problemOfCustomSize(printer.customSize, name);
    if (!problem.empty()) return problem;
  }
  return {};
}

std::string problemOfChoice(const PrinterOption& option, const std::string& value) {
  if (option.find(value) != nullptr) return {};
  std::vector<std::string> names;
  std::string list;
  for (const auto& choice : option.choices) {
    names.push_back(choice.name);
    list += " " + choice.name;
  }
  return option.keyword + " has no choice '" + value + "'" + suggestion(value, names) +
         (nearestName(value, names).empty() ? "; it" : " It") + " has" + list;
}

std::string problemOfName(const PrinterDescription& printer, const std::string& name) {
  std::vector<std::string> names;
  for (const PrinterOption& option : printer.options) names.push_back(option.keyword);
  names.insert(names.end(), std::begin(kCupsOptions), std::end(kCupsOptions));
  return "'" + name + "' is no option of this printer or of CUPS" + suggestion(name, names);
}

}  // namespace

JobOptions readJobOptions(const std::string& text) {
  cups_option_t* list = nullptr;
  const int count = cupsParseOptions(text.c_str(), 0, &list);
  JobOptions options;
  for (int i = 0; i < count; ++i) options.emplace_back(list[i].name, list[i].value);
  cupsFreeOptions(count, list);
  return options;
}

JobOptions parseJobOptions(const std::vector<std::string>& texts) {
  JobOptions options;
  for (const std::string& text : texts) {
    const JobOptions read = readJobOptions(text);
    if (read.empty()) throw Failure(kUsage, "-o wants NAME=VALUE, not '" + text + "'");
    for (const auto& option : read) {
      std::erase_if(options, [&](const auto& old) { return isSameName(old.first, option.first); });
      options.push_back(option);
    }
  }
  return options;
}

std::string joinJobOptions(const JobOptions& options) {
  std::string text;
  for (const auto& [name, value] : options) {
    if (!text.empty()) text += ' ';
    text += name + "=";
    for (const char c : value) {
      if (std::string_view(" \t\n\"'\\{}").find(c) != std::string_view::npos) text += '\\';
      text += c;
    }
  }
  return text;
}

bool hasOption(const JobOptions& options, std::string_view name) {
  return std::any_of(options.begin(), options.end(),
                     [&](const auto& option) { return isSameName(option.first, name); });
}

bool isCupsOption(std::string_view name) {
  return std::any_of(std::begin(kCupsOptions), std::end(kCupsOptions),
                     [&](const char* known) { return isSameName(known, name); });
}

PrinterDescription describePrinter(const std::string& ppd) {
  auto printer = filter::readPrinterDescription(ppd);
  if (!printer.has_value()) throw Failure(kSetup, "the PPD " + ppd + " is damaged");
  return std::move(*printer);
}

std::string problemOfOption(const PrinterDescription& printer, const std::string& name,
                            const std::string& value) {
  const PrinterOption* option = printer.find(name);
  if (isSameName(name, "media")) return problemOfMedia(printer, value);
  if (option == nullptr) return isCupsOption(name) ? "" : problemOfName(printer, name);
  return isSameName(option->keyword, "PageSize") && isCustomSize(printer, value)
             ? problemOfCustomSize(printer.customSize, value)
             : problemOfChoice(*option, value);
}

void checkJobOptions(const PrinterDescription& printer, const JobOptions& options) {
  for (const auto& [name, value] : options) {
    const std::string problem = problemOfOption(printer, name, value);
    if (!problem.empty()) throw Failure(kUsage, problem);
  }
}

}  // namespace wren::cli
