// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/web/settings_sketch.h"

#include <algorithm>
#include <cstdio>

#include "app/web/halftone_previews.h"
#include "app/web/html.h"
#include "escpos/reader.h"

namespace wren::app::web {
namespace {

constexpr double kMillimetresPerInch = 25.4;
constexpr unsigned kPageRows = 200;
// Of the drawing, in millimetres.
constexpr double kLeft = 5.0;
constexpr double kPaperWidth = 62.0;
constexpr double kWidth = 140.0;
constexpr double kTop = 6.0;
constexpr double kLabelStep = 7.0;
constexpr const char* kFeedColour = "#4a515c";

constexpr Text kFullCut = {"full cut", "Vollschnitt"};
constexpr Text kPartialCut = {"partial cut", "Teilschnitt"};
constexpr Text kDrawer = {"drawer opens", "Lade geht auf"};
constexpr Text kBeep = {"buzzer", "Summer"};
constexpr Text kPage = {"page", "Seite"};
constexpr Text kSketch = {"A job of two pages", "Ein Auftrag mit zwei Seiten"};
constexpr Text kFeed = {"feed", "Vorschub"};

// A page like a receipt: lines of text, as grey bars with blank paper between them.
GreyPages samplePages(unsigned widthPx) {
  GreyPages pages{widthPx, {kPageRows, kPageRows}, {}};
  for (unsigned y = 0; y < 2 * kPageRows; ++y) {
    const unsigned level = y % 40 < 12 ? 0 : 255;
    pages.levels.insert(pages.levels.end(), widthPx, static_cast<std::uint8_t>(level));
  }
  return pages;
}

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", value);
  return text;
}

double millimetres(std::uint64_t units) {
  return static_cast<double>(units) / escpos::kUnitsPerRow * kMillimetresPerInch / kDotsPerInch;
}

std::string rectangle(double x, double y, double width, double height, const char* fill) {
  return "<rect x=\"" + number(x) + "\" y=\"" + number(y) + "\" width=\"" + number(width) +
         "\" height=\"" + number(height) + "\" fill=\"" + fill + "\"/>\n";
}

std::string line(double y, const char* colour, bool isDashed) {
  return "<line x1=\"" + number(kLeft - 3) + "\" x2=\"" + number(kLeft + kPaperWidth + 5) +
         "\" y1=\"" + number(y) + "\" y2=\"" + number(y) + "\" stroke=\"" + colour +
         "\" stroke-width=\"0.9\"" + (isDashed ? " stroke-dasharray=\"4 2.5\"" : "") + "/>\n";
}

struct Event {
  double at;
  std::string text;
  const char* colour;
};

Event eventOf(const escpos::Mark& mark, unsigned& pages, Language language) {
  const double at = millimetres(mark.atUnits);
  switch (mark.kind) {
    case escpos::MarkKind::kFullCut:
      return {at, kFullCut.in(language), "#b01515"};
    case escpos::MarkKind::kPartialCut:
      return {at, kPartialCut.in(language), "#b01515"};
    case escpos::MarkKind::kDrawerPulse:
      return {at, kDrawer.in(language), "#0d5c28"};
    case escpos::MarkKind::kBeep:
      return {at, std::string(kBeep.in(language)) + " × " + std::to_string(mark.first), "#1a3fa8"};
    case escpos::MarkKind::kPage:
      break;
  }
  return {at, std::string(kPage.in(language)) + " " + std::to_string(++pages), "#23272e"};
}

bool isCut(const escpos::Mark& mark) {
  return mark.kind == escpos::MarkKind::kFullCut || mark.kind == escpos::MarkKind::kPartialCut;
}

// The paper that is fed before the cut at the end of a job.
std::string feedArrow(double from, double to) {
  const std::string x = number(kLeft + kPaperWidth / 2);
  return "<path d=\"M" + x + " " + number(kTop + from) + "V" + number(kTop + to - 1) +
         "m-2 -3l2 3l2 -3\" fill=\"none\" stroke=\"" + kFeedColour + "\" stroke-width=\"0.8\"/>\n";
}

std::string label(double y, const std::string& text, const char* colour) {
  return "<text x=\"" + number(kLeft + kPaperWidth + 7) + "\" y=\"" + number(y) + "\" fill=\"" +
         colour + "\" font-size=\"5\">" + escaped(text) + "</text>\n";
}

// The cut at the end of the job; null if it has none.
const escpos::Mark* documentCut(const escpos::Paper& paper, const JobSettings& settings) {
  const escpos::Mark* last = nullptr;
  for (const escpos::Mark& mark : paper.marks) {
    if (settings.core.docCutType != 0 && isCut(mark)) last = &mark;
  }
  return last;
}

std::string stripes(const escpos::Paper& paper) {
  std::string svg;
  for (const escpos::Stripe& stripe : paper.stripes) {
    const bool hasDots = std::any_of(stripe.columns.begin(), stripe.columns.end(),
                                     [](std::uint8_t column) { return column != 0; });
    if (!hasDots) continue;
    svg +=
        rectangle(kLeft + 6, kTop + millimetres(stripe.topUnits), kPaperWidth - 12, 0.9, "#8a929e");
  }
  return svg;
}

}  // namespace

std::string settingsSketch(const JobSettings& settings, const PageTarget& target,
                           Language language) {
  const std::string bytes = printedBytes(samplePages(target.headWidthPx), settings, target);
  const auto reading =
      escpos::readAll({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  const escpos::Paper& paper = reading.paper;
  const double length = millimetres(paper.lengthUnits);
  std::string marks;
  std::string words;
  const escpos::Mark* const lastCut = documentCut(paper, settings);
  double labelAt = 0.0;
  unsigned pages = 0;
  for (const escpos::Mark& mark : paper.marks) {
    const Event event = eventOf(mark, pages, language);
    if (&mark == lastCut && settings.core.feedCutAfterJobEnd > 0) {
      marks += feedArrow(event.at - settings.core.feedCutAfterJobEnd, event.at);
      labelAt = std::max(labelAt + kLabelStep, kTop + event.at - 6.0);
      marks += label(labelAt,
                     std::string(kFeed.in(language)) + " " +
                         std::to_string(settings.core.feedCutAfterJobEnd) + " mm",
                     kFeedColour);
    }
    if (isCut(mark)) {
      marks += line(kTop + event.at, event.colour, mark.kind == escpos::MarkKind::kPartialCut);
    }
    labelAt = std::max(labelAt + kLabelStep, kTop + event.at + 1.5);
    marks += label(labelAt, event.text, event.colour);
    words += (words.empty() ? ": " : ", ") + event.text + " (" + decimalText(event.at, language) +
             " mm)";
  }
  if (settings.core.docCutType != 0 && settings.core.feedCutAfterJobEnd != 0) {
    words += std::string("; ") + kFeed.in(language) + " " +
             std::to_string(settings.core.feedCutAfterJobEnd) + " mm";
  }
  const double height = std::max(kTop + length, labelAt) + 6;
  return "<svg class=\"sketch\" role=\"img\" viewBox=\"0 0 " + number(kWidth) + " " +
         number(height) + "\" aria-label=\"" + escaped(kSketch.in(language) + words) + "\">\n" +
         rectangle(kLeft, kTop, kPaperWidth, std::max(length, 1.0), "#fff") + stripes(paper) +
         marks + "</svg>\n";
}

}  // namespace wren::app::web
