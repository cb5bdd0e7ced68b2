// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/web/halftone_page.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "app/active_job.h"
#include "app/client_origin.h"
#include "app/document_error.h"
#include "app/printer_driver.h"
#include "app/ready_documents.h"
#include "app/web/halftone_previews.h"
#include "app/web/pdf_pages.h"
#include "app/web/printer_defaults.h"

namespace wren::app::web {
namespace {

using Json = nlohmann::json;

// The widest head with the longest pages, and the line of fields before them.
constexpr std::size_t kMaxUploadBytes = std::size_t{832} * kMaxGreyRows + 4096;

// The steps of the PPDs, and of PAPPL's own page.
constexpr std::int32_t kBrightnessStep = 5;

// ---- Words ----

constexpr Text kLead = {
    "Choose a picture or a PDF and see it as this printer would print it, with each of its nine "
    "methods. Every picture is drawn from the bytes that the printer would get.",
    "Wählen Sie ein Bild oder ein PDF und sehen Sie es so, wie dieser Drucker es mit jedem seiner "
    "neun Verfahren druckt. Jedes Bild ist aus den Bytes gezeichnet, die der Drucker bekäme."};
constexpr Text kChoose = {"Choose a picture or PDF", "Bild oder PDF wählen"};
constexpr Text kExamples = {"Or an example:", "Oder ein Beispiel:"};
constexpr Text kPhoto = {"Photo", "Foto"};
constexpr Text kDrawing = {"Drawing", "Zeichnung"};
constexpr Text kReceipt = {"Receipt", "Kassenbon"};
constexpr Text kNoScript = {
    "Without JavaScript there are no pictures here; the settings work all the same.",
    "Ohne JavaScript gibt es hier keine Bilder; die Einstellungen wirken trotzdem."};
constexpr Text kBrightness = {"Darkness", "Schwärzung"};
constexpr Text kContrast = {"Contrast", "Kontrast"};
constexpr Text kMagnify = {"Magnify, dot by dot", "Vergrößern, Punkt für Punkt"};
constexpr Text kControls = {"Document and tone", "Vorlage und Ton"};
constexpr Text kMakeDefault = {"Make default", "Als Standard"};
constexpr Text kDefault = {"Default", "Standard"};
constexpr Text kPrintThis = {"Print this one", "Dieses drucken"};
constexpr Text kSaved = {"Saved. The printer now prints like this.",
                         "Gespeichert. Der Drucker druckt jetzt so."};
constexpr Text kGoodFor = {"Good for", "Gut für"};

// By DitherType; the same as the table in README.md.
constexpr std::array<Text, kHalftoneCount> kUses = {{
    {"text, logos and codes; no shades", "Text, Logos und Codes; keine Grautöne"},
    {"charts and drawings with flat shades", "Diagramme und Zeichnungen mit glatten Flächen"},
    {"photos with soft transitions; fine, even grain",
     "Fotos mit weichen Übergängen; feines, gleichmäßiges Korn"},
    {"photos in general; somewhat crisper edges", "Fotos aller Art; etwas schärfere Kanten"},
    {"photos with little contrast; coarser grain, stronger edges",
     "Fotos mit wenig Kontrast; gröberes Korn, kräftigere Kanten"},
    {"photos where Stucki looks too soft and Jarvis too coarse",
     "Fotos, bei denen Stucki zu weich und Jarvis zu grob wirkt"},
    {"posters seen from a distance, printers that smear single dots",
     "Plakate aus der Ferne, Drucker, die einzelne Punkte verschmieren"},
    {"charts and drawings that are too light with the ordered pattern",
     "Diagramme und Zeichnungen, die mit dem geordneten Muster zu hell sind"},
    {"stencils and photographed line drawings; strong lines, few dots in the background",
     "Schablonen und fotografierte Strichzeichnungen; kräftige Linien, wenige Punkte im Grund"},
}};

// What the script says.
struct ScriptText {
  const char* name;
  Text text;
};
constexpr ScriptText kScriptTexts[] = {
    {"reading", {"Reading the document …", "Die Vorlage wird gelesen …"}},
    {"drawing", {"Drawing …", "Wird gezeichnet …"}},
    {"drawn", {"All nine are drawn.", "Alle neun sind gezeichnet."}},
    {"printing", {"Sending to the printer …", "Wird an den Drucker geschickt …"}},
    {"printed",
     {"Sent to the printer as job {job}.", "Als Auftrag {job} an den Drucker geschickt."}},
    {"saved", kSaved},
    {"unreadable",
     {"This file cannot be shown. Accepted are PDF, PNG, JPEG, WebP and GIF.",
      "Diese Datei lässt sich nicht zeigen. Möglich sind PDF, PNG, JPEG, WebP und GIF."}},
    {"long",
     {"This picture is longer than 2 m of paper. Accepted is up to 2 m.",
      "Dieses Bild ist länger als 2 m Papier. Möglich sind bis zu 2 m."}},
    {"largePdf",
     {"This PDF is larger than 10 MiB. Accepted is up to 10 MiB.",
      "Dieses PDF ist größer als 10 MiB. Möglich sind bis zu 10 MiB."}},
    {"lost",
     {"The printer's server does not answer. Try again.",
      "Der Server des Druckers antwortet nicht. Versuchen Sie es noch einmal."}},
    {"facts", {"{mm} mm of paper, {black} % black", "{mm} mm Papier, {black} % schwarz"}},
    {"shown",
     {"{method}: the document as it prints", "{method}: die Vorlage, wie sie gedruckt wird"}},
};

constexpr Text kTooLarge = {
    "The document is too large. Accepted are up to 2 m of paper, and PDF up to 10 MiB.",
    "Die Vorlage ist zu groß. Möglich sind bis zu 2 m Papier und PDF bis zu 10 MiB."};
constexpr Text kBroken = {
    "The document did not arrive whole. Accepted are grey levels in the width of the print head, "
    "up to 2 m of paper.",
    "Die Vorlage kam nicht vollständig an. Möglich sind Graustufen in der Breite des Druckkopfs, "
    "bis zu 2 m Papier."};
constexpr Text kBadPdf = {
    "This PDF cannot be shown: {why}. Accepted is PDF up to 10 MiB and 2 m of paper, without a "
    "password.",
    "Dieses PDF lässt sich nicht zeigen: {why}. Möglich sind PDF bis zu 10 MiB und 2 m Papier, "
    "ohne Kennwort."};
constexpr Text kBadTone = {"This method or tone does not exist on this printer.",
                           "Dieses Verfahren oder diesen Ton gibt es auf diesem Drucker nicht."};
constexpr Text kChanged = {
    "The settings of the printer have changed meanwhile. The pictures are drawn again; look and "
    "print once more.",
    "Die Einstellungen des Druckers haben sich inzwischen geändert. Die Bilder werden neu "
    "gezeichnet; bitte noch einmal ansehen und drucken."};
constexpr Text kNotPrinted = {"The printer does not take the job now.",
                              "Der Drucker nimmt den Auftrag gerade nicht an."};

std::string replaced(std::string text, std::string_view place, std::string_view by) {
  const auto at = text.find(place);
  if (at != std::string::npos) text.replace(at, place.size(), by);
  return text;
}

// ---- The page ----

std::string wordsAttribute(const Request& request) {
  Json words;
  for (const ScriptText& row : kScriptTexts) words[row.name] = request.say(row.text);
  return escaped(words.dump());
}

std::string slider(const char* name, const char* label, std::int32_t lowest, std::int32_t highest,
                   std::int32_t step, std::int32_t value) {
  const std::string number = std::to_string(value);
  return std::string("<label class=\"slider\"><span>") + label +
         "</span><input type=\"range\" name=\"" + name + "\" min=\"" + std::to_string(lowest) +
         "\" max=\"" + std::to_string(highest) + "\" step=\"" + std::to_string(step) +
         "\" value=\"" + number + "\"><output>" + number + "</output></label>\n";
}

std::string exampleButton(const Request& request, const char* file, const Text& label) {
  return std::string("<button type=\"button\" data-example=\"/wren-examples/") + file + "\">" +
         request.say(label) + "</button>\n";
}

std::string controls(const Request& request, const Tone& tone) {
  const VendorOption& contrast = *findVendorOption(kContrastAttribute);
  std::string html = "<section class=\"panel controls\" aria-label=\"";
  html += request.say(kControls);
  html += "\">\n<div class=\"source\" hidden>\n<label class=\"file\"><span>";
  html += request.say(kChoose);
  html += "</span><input type=\"file\" accept=\"image/*,application/pdf,.pdf\"></label>\n<p>";
  html += request.say(kExamples);
  html += "</p>\n" + exampleButton(request, "photo.png", kPhoto) +
          exampleButton(request, "drawing.png", kDrawing) +
          exampleButton(request, "receipt.pdf", kReceipt) + "</div>\n";
  html += slider("brightness", request.say(kBrightness), job::kBrightnessOption.lowest,
                 job::kBrightnessOption.highest, kBrightnessStep, tone.brightness);
  html += slider("contrast", request.say(kContrast), contrast.lowest, contrast.highest, 1,
                 tone.contrast);
  html += "<label class=\"magnify\" hidden><input type=\"checkbox\"> ";
  html += request.say(kMagnify);
  html += "</label>\n</section>\n";
  return html;
}

std::string card(const Request& request, int method, bool isDefault) {
  const VendorOption& option = *findVendorOption(kHalftoneAttribute);
  const std::string name = vendorValueText(option, method);
  const std::string title = escaped(valueText(option, method, request.language()));
  std::string html = "<li class=\"card\" data-method=\"" + name + "\">\n<h2 id=\"title-" + name +
                     "\">" + title + "</h2>\n<p class=\"use\">";
  html += request.say(kGoodFor);
  html += std::string(" ") + request.say(kUses.at(static_cast<std::size_t>(method)));
  html +=
      "</p>\n<div class=\"view\" hidden tabindex=\"0\" role=\"group\" aria-labelledby=\"title-" +
      name + "\"><img alt=\"\"></div>\n<p class=\"facts\" hidden></p>\n<p class=\"actions\">";
  html += "<button type=\"button\" class=\"print main\" hidden aria-describedby=\"title-" + name +
          "\">";
  html += request.say(kPrintThis);
  html += "</button>\n<button name=\"halftone-type\" value=\"" + name +
          "\" aria-describedby=\"title-" + name + "\">";
  html += request.say(kMakeDefault);
  html += std::string("</button>\n<span class=\"mark\"") + (isDefault ? "" : " hidden") + ">✓ ";
  html += request.say(kDefault);
  html += "</span></p>\n</li>\n";
  return html;
}

bool showPage(Request& request) {
  pappl_printer_t* const printer = request.printer();
  const Tone tone = defaultTone(printer);
  const std::int32_t method = defaultOf(printer, *findVendorOption(kHalftoneAttribute));
  std::string html = request.opening(kLead, {{"saved", kSaved}});
  html += std::string("<noscript><p>") + request.say(kNoScript) + "</p></noscript>\n";
  html += "<form id=\"halftone\" method=\"post\" action=\"" + escaped(request.path(kHalftonePage)) +
          "\" data-width=\"" + std::to_string(targetOf(printer).headWidthPx) +
          "\" data-max-rows=\"" + std::to_string(kMaxGreyRows) + "\" data-max-pdf=\"" +
          std::to_string(kMaxPdfBytes) + "\" data-words=\"" + wordsAttribute(request) + "\">\n" +
          hiddenField(kTokenField, request.token()) + controls(request, tone) +
          "<p id=\"said\" role=\"status\"></p>\n<p id=\"wrong\" class=\"fault\" role=\"alert\" "
          "hidden></p>\n<ol class=\"cards\">\n";
  for (int i = 0; i < kHalftoneCount; ++i) html += card(request, i, i == method);
  html += "</ol>\n</form>\n";
  return request.sendPage(kHalftonePage, kHalftoneTitle, html);
}

std::string valueOf(const Fields& fields, const char* name) {
  const auto found = fields.find(name);
  return found == fields.end() ? std::string() : found->second;
}

std::optional<std::int32_t> methodOf(const Fields& fields) {
  std::int32_t method = 0;
  const VendorOption& option = *findVendorOption(kHalftoneAttribute);
  if (!parseVendorValue(option, valueOf(fields, kHalftoneAttribute), method)) return std::nullopt;
  return method;
}

std::optional<Tone> toneOf(const Fields& fields) {
  return parseTone(valueOf(fields, "brightness"), valueOf(fields, "contrast"));
}

bool saveDefaults(Request& request) {
  const auto fields = request.form();
  if (!fields) {
    return request.sendFault(kHalftonePage, kHalftoneTitle, request.say(kBadToken),
                             HTTP_STATUS_FORBIDDEN);
  }
  const auto method = methodOf(*fields);
  const auto tone = toneOf(*fields);
  if (!method || !tone) {
    return request.sendFault(kHalftonePage, kHalftoneTitle, request.say(kBadTone));
  }
  if (!setDefaults(request.printer(),
                   {{kHalftoneAttribute, *method}, {kContrastAttribute, tone->contrast}},
                   tone->brightness)) {
    return request.sendFault(kHalftonePage, kHalftoneTitle, request.say(kBadTone),
                             HTTP_STATUS_SERVER_ERROR);
  }
  return request.redirect(request.path(kHalftonePage) + "?saved=1");
}

// ---- Uploads ----

bool sendJson(const Request& request, http_status_t status, const Json& json) {
  return request.send(status, "application/json", json.dump());
}

bool sendError(const Request& request, http_status_t status, const std::string& text) {
  return sendJson(request, status, {{"error", text}});
}

// Reads an upload; nothing if there is a fault, which was answered then. Says in `answered` what
// the answer came to.
std::optional<Request::Upload> receive(const Request& request, std::size_t maxBytes,
                                       bool& answered) {
  Request::Upload upload;
  switch (request.readUpload(maxBytes, upload)) {
    case Request::UploadFault::kNone:
      return upload;
    case Request::UploadFault::kToken:
      answered = sendError(request, HTTP_STATUS_FORBIDDEN, request.say(kBadToken));
      break;
    case Request::UploadFault::kTooLarge:
      answered = sendError(request, HTTP_STATUS_REQUEST_TOO_LARGE, request.say(kTooLarge));
      break;
    case Request::UploadFault::kIncomplete:
      answered = sendError(request, HTTP_STATUS_BAD_REQUEST, request.say(kBroken));
      break;
  }
  return std::nullopt;
}

// The pages of an upload; nothing unless they are whole.
std::optional<GreyPages> pagesOf(const Request::Upload& upload, unsigned widthPx) {
  GreyPages pages;
  pages.widthPx = widthPx;
  const std::string heights = valueOf(upload.fields, "heights");
  const char* const end = heights.data() + heights.size();
  for (const char* at = heights.data(); at < end;) {
    unsigned heightPx = 0;
    const auto [stop, error] = std::from_chars(at, end, heightPx);
    if (error != std::errc() || heightPx > kMaxGreyRows) return std::nullopt;
    pages.heightsPx.push_back(heightPx);
    if (pages.rows() > kMaxGreyRows) return std::nullopt;
    if (stop != end && *stop != ',') return std::nullopt;
    at = stop + 1;
  }
  pages.levels.assign(upload.body.begin(), upload.body.end());
  if (!pages.isComplete()) return std::nullopt;
  return pages;
}

// One document at a time: the drawing of one takes all processors.
std::mutex& drawing() {
  static std::mutex mutex;
  return mutex;
}

bool refusesMethod(const Request& request, bool& answered) {
  if (request.isPost()) return false;
  answered = request.send(HTTP_STATUS_METHOD_NOT_ALLOWED, "text/plain", "POST only\n");
  return true;
}

// A document and its tone; nothing if it was answered.
struct Document {
  GreyPages pages;
  Tone tone;
  Fields fields;
};
std::optional<Document> receiveDocument(const Request& request, bool& answered) {
  if (refusesMethod(request, answered)) return std::nullopt;
  const auto upload = receive(request, kMaxUploadBytes, answered);
  if (!upload) return std::nullopt;
  auto pages = pagesOf(*upload, targetOf(request.printer()).headWidthPx);
  const auto tone = toneOf(upload->fields);
  if (!pages || !tone) {
    answered = sendError(request, HTTP_STATUS_BAD_REQUEST, request.say(pages ? kBadTone : kBroken));
    return std::nullopt;
  }
  return Document{std::move(*pages), *tone, upload->fields};
}

JobSettings settingsOf(const Request& request, const Tone& tone, std::int32_t method) {
  JobSettings settings = settingsFor(request.printer(), tone, currentClientIsLocal());
  settings.core.halftoneType = static_cast<DitherType>(method);
  return settings;
}

const ReadyDocuments* documentsOf(pappl_printer_t* printer) {
  pappl_pr_driver_data_t data = {};
  papplPrinterGetDriverData(printer, &data);
  return static_cast<const JobServices*>(data.extension)->documents;
}

// @return the number of the job; 0 if there is none.
int printPages(const Request& request, Document document, std::int32_t method) {
  const ReadyDocuments* const documents = documentsOf(request.printer());
  if (documents == nullptr) return 0;
  const VendorOption& halftone = *findVendorOption(kHalftoneAttribute);
  const std::string file =
      documents->writePages({std::move(document.pages),
                             document.tone.brightness,
                             {{kHalftoneAttribute, vendorValueText(halftone, method)},
                              {kContrastAttribute, std::to_string(document.tone.contrast)}}});
  if (file.empty()) return 0;
  pappl_job_t* const job =
      papplJobCreateWithFile(request.printer(), request.user().c_str(), kPrinterFormat,
                             request.say(kHalftoneTitle), 0, nullptr, file.c_str());
  return job == nullptr ? 0 : papplJobGetID(job);
}

}  // namespace

bool answerHalftonePage(Request& request) {
  if (!request.isAuthorized()) return true;
  return request.isPost() ? saveDefaults(request) : showPage(request);
}

bool answerHalftonePreview(Request& request) {
  if (!request.isAuthorized()) return true;
  bool answered = false;
  const auto document = receiveDocument(request, answered);
  if (!document) return answered;
  const PageTarget target = targetOf(request.printer());
  const std::lock_guard lock(drawing());
  const auto previews =
      drawPreviews(document->pages, settingsOf(request, document->tone, 0), target);
  Json methods = Json::array();
  std::string pictures;
  for (std::size_t i = 0; i < previews.size(); ++i) {
    const Preview& preview = previews.at(i);
    methods.push_back({{"method", vendorValueText(*findVendorOption(kHalftoneAttribute),
                                                  static_cast<std::int32_t>(i))},
                       {"png", preview.png.size()},
                       {"bytes", preview.bytes},
                       {"digest", preview.digest},
                       {"mm", decimalText(preview.lengthMm, request.language())},
                       {"black", decimalText(preview.blackShare * 100, request.language())}});
    pictures += preview.png;
  }
  return request.send(HTTP_STATUS_OK, "application/octet-stream",
                      Json{{"methods", methods}}.dump() + "\n" + pictures);
}

bool answerPdfPages(Request& request) {
  if (!request.isAuthorized()) return true;
  bool answered = false;
  if (refusesMethod(request, answered)) return answered;
  const auto upload = receive(request, kMaxPdfBytes + 4096, answered);
  if (!upload) return answered;
  try {
    const GreyPages pages = readPdfPages(upload->body, targetOf(request.printer()));
    std::string body = Json{{"heights", pages.heightsPx}}.dump() + "\n";
    body.append(pages.levels.begin(), pages.levels.end());
    return request.send(HTTP_STATUS_OK, "application/octet-stream", body);
  } catch (const DocumentError& error) {
    return sendError(request, HTTP_STATUS_BAD_REQUEST,
                     replaced(request.say(kBadPdf), "{why}", error.what()));
  }
}

bool answerHalftonePrint(Request& request) {
  if (!request.isAuthorized()) return true;
  bool answered = false;
  auto document = receiveDocument(request, answered);
  if (!document) return answered;
  const auto method = methodOf(document->fields);
  if (!method) return sendError(request, HTTP_STATUS_BAD_REQUEST, request.say(kBadTone));
  const std::string bytes = printedBytes(
      document->pages, settingsOf(request, document->tone, *method), targetOf(request.printer()));
  if (digestOf(bytes) != valueOf(document->fields, "digest")) {
    return sendError(request, HTTP_STATUS_CONFLICT, request.say(kChanged));
  }
  const int job = printPages(request, std::move(*document), *method);
  if (job == 0) return sendError(request, HTTP_STATUS_SERVER_ERROR, request.say(kNotPrinted));
  return sendJson(request, HTTP_STATUS_OK, {{"job", job}});
}

}  // namespace wren::app::web
