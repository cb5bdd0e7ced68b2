// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/web/html.h"

namespace wren::app::web {
namespace {

// No inline script, no inline style, nothing from elsewhere: PAPPL's style sheet asks another
// server for fonts, which this refuses.
constexpr const char* kPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob:; "
    "connect-src 'self'; form-action 'self'; base-uri 'none'";

constexpr Text kSkip = {"To the content", "Zum Inhalt"};
constexpr Text kPagesOf = {"Pages of the printer", "Seiten des Druckers"};

std::string linkElement(const Link& link) {
  if (link.isCurrent) {
    return "<span class=\"active\" aria-current=\"page\">" + escaped(link.label) + "</span>\n";
  }
  return "<a class=\"btn\" href=\"" + escaped(link.path) + "\">" + escaped(link.label) + "</a>\n";
}

std::string head(const Frame& frame) {
  std::string html = "<!DOCTYPE html>\n<html lang=\"";
  html += languageTag(frame.language);
  html +=
      "\">\n<head>\n<meta charset=\"utf-8\">\n<meta http-equiv=\"Content-Security-Policy\" "
      "content=\"";
  html += escaped(kPolicy);
  html += "\">\n<title>" + escaped(frame.title + " – " + frame.printerName) + "</title>\n";
  html += "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n";
  html += "<link rel=\"icon\" href=\"/favicon.png\" type=\"image/png\">\n";
  html += "<link rel=\"stylesheet\" href=\"/style.css\">\n<link rel=\"stylesheet\" href=\"";
  html += kStylePath;
  html += "\">\n<script src=\"";
  html += kScriptPath;
  html += "\" defer></script>\n</head>\n";
  return html;
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string html;
  html.reserve(text.size());
  for (const char letter : text) {
    switch (letter) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      case '\'':
        html += "&#39;";
        break;
      default:
        if (static_cast<unsigned char>(letter) >= 0x20 || letter == '\n') html += letter;
    }
  }
  return html;
}

std::string htmlPage(const Frame& frame, std::string_view body) {
  std::string html = head(frame);
  html += "<body class=\"wren\">\n<a class=\"skip\" href=\"#main\">";
  html += escaped(kSkip.in(frame.language));
  html += "</a>\n<header class=\"header2\"><nav class=\"nav\" aria-label=\"";
  html += escaped(kPagesOf.in(frame.language));
  html += "\">\n";
  for (const Link& link : frame.links) html += linkElement(link);
  html +=
      "</nav></header>\n<main id=\"main\" class=\"content\" tabindex=\"-1\">\n<h1 class=\"title\">";
  html += escaped(frame.title);
  html += "</h1>\n";
  html += body;
  html += "</main>\n</body>\n</html>\n";
  return html;
}

std::string optionElement(std::string_view value, std::string_view text, bool isSelected) {
  return "<option value=\"" + escaped(value) + (isSelected ? "\" selected>" : "\">") +
         escaped(text) + "</option>";
}

std::string hiddenField(std::string_view name, std::string_view value) {
  return "<input type=\"hidden\" name=\"" + escaped(name) + "\" value=\"" + escaped(value) +
         "\">\n";
}

}  // namespace wren::app::web
