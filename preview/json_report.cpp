// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/json_report.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace wren::preview {
namespace {

// Keeps the order in which keys are added.
using Json = nlohmann::ordered_json;

const char* nameOf(escpos::CommandKind kind) {
  switch (kind) {
    case escpos::CommandKind::kNul:
      return "nul";
    case escpos::CommandKind::kInitialise:
      return "initialise";
    case escpos::CommandKind::kHome:
      return "home";
    case escpos::CommandKind::kBitImage:
      return "bitImage";
    case escpos::CommandKind::kFeed:
      return "feed";
    case escpos::CommandKind::kCut:
      return "cut";
    case escpos::CommandKind::kDrawerPulse:
      return "drawerPulse";
    case escpos::CommandKind::kDirection:
      return "direction";
    case escpos::CommandKind::kBeep:
      return "beep";
    case escpos::CommandKind::kBuzzerSetup:
      return "buzzerSetup";
    case escpos::CommandKind::kStatusRequest:
      return "statusRequest";
    case escpos::CommandKind::kRealTimeStatus:
      return "realTimeStatus";
    case escpos::CommandKind::kRealTimeRecovery:
      return "realTimeRecovery";
    case escpos::CommandKind::kRealTimePulse:
      return "realTimePulse";
    case escpos::CommandKind::kTransmitStatus:
      return "transmitStatus";
    case escpos::CommandKind::kUnknown:
      return "unknown";
    case escpos::CommandKind::kTruncated:
      return "truncated";
  }
  return "";
}

// Millimetres with one decimal, as in the summary.
double millimetres(std::uint64_t units, unsigned dpi) {
  const double inches = static_cast<double>(units) / escpos::kUnitsPerRow / dpi;
  return std::round(inches * 254.0) / 10.0;
}

// Without the columns of a bit image.
std::string hexOf(const escpos::Command& command) {
  const bool isBitImage = command.kind == escpos::CommandKind::kBitImage;
  const std::size_t shown =
      isBitImage ? escpos::kBitImageHeaderBytes : std::size_t{command.bytes.size()};
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (std::size_t i = 0; i < shown; ++i) {
    text += kDigits[command.bytes[i] >> 4];
    text += kDigits[command.bytes[i] & 15];
  }
  return text;
}

Json eventOf(const escpos::Mark& mark, unsigned dpi) {
  Json event = {{"atMm", millimetres(mark.atUnits, dpi)}, {"offset", mark.offset}};
  switch (mark.kind) {
    case escpos::MarkKind::kPage:
      event["kind"] = "page";
      break;
    case escpos::MarkKind::kFullCut:
      event["kind"] = "fullCut";
      break;
    case escpos::MarkKind::kPartialCut:
      event["kind"] = "partialCut";
      break;
    case escpos::MarkKind::kDrawerPulse:
      event["kind"] = "drawerPulse";
      event["pin"] = drawerPin(mark.first);
      event["onMs"] = mark.second;
      break;
    case escpos::MarkKind::kBeep:
      event["kind"] = "beep";
      event["count"] = mark.first;
      break;
  }
  return event;
}

Json eventsOf(const escpos::Paper& paper, unsigned dpi) {
  Json events = Json::array();
  for (const escpos::Mark& mark : paper.marks) events.push_back(eventOf(mark, dpi));
  return events;
}

Json problemsOf(const escpos::VirtualPrinter& printer) {
  Json problems = Json::array();
  for (const escpos::Problem& problem : printer.problems()) {
    problems.push_back({{"offset", problem.offset}, {"text", problem.text}});
  }
  return problems;
}

// A file name need not be UTF-8.
std::string textOf(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

JsonReport::JsonReport(std::FILE* output, const Options& options)
    : output_(output), options_(options) {
  std::fprintf(output_, "{\"schema\":%d,\n\"file\":%s,\n", kJsonSchema,
               textOf(options.input).c_str());
  if (options.list) std::fputs("\"commands\":[\n", output_);
}

void JsonReport::addCommand(const escpos::Command& command) {
  const Json json = {{"offset", command.offset},
                     {"length", command.length},
                     {"kind", nameOf(command.kind)},
                     {"bytes", hexOf(command)},
                     {"meaning", escpos::describe(command)}};
  std::fprintf(output_, "%s%s", hasCommands_ ? ",\n" : "", textOf(json).c_str());
  hasCommands_ = true;
}

void JsonReport::finish(const escpos::Reader& reader, const WrittenPictures& written) {
  if (options_.list) std::fputs("],\n", output_);
  const escpos::VirtualPrinter& printer = reader.printer();
  const escpos::Totals& totals = printer.totals();
  const unsigned dpi = options_.style.dpi;
  const Json rest = {{"bytes", reader.bytesTaken()},
                     {"dpi", dpi},
                     {"widthDots", printer.paper().widthDots},
                     {"lengthMm", millimetres(printer.paper().lengthUnits, dpi)},
                     {"pages", totals.pages},
                     {"cuts", totals.cuts},
                     {"drawerPulses", totals.drawerPulses},
                     {"beeps", totals.beeps},
                     {"events", eventsOf(printer.paper(), dpi)},
                     {"problemCount", totals.problems},
                     {"problems", problemsOf(printer)},
                     {"pictures", written.files},
                     {"pictureErrors", written.errors}};
  // The members follow those that are written already.
  std::fprintf(output_, "%s\n", textOf(rest).c_str() + 1);
}

}  // namespace wren::preview
