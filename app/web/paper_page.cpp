// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/web/paper_page.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <ctime>
#include <optional>
#include <string>

#include "app/active_job.h"
#include "app/kept_papers.h"
#include "app/printer_driver.h"
#include "app/ready_documents.h"
#include "app/web/printer_defaults.h"
#include "escpos/reader.h"
#include "preview/paper_picture.h"
#include "preview/png_file.h"

namespace wren::app::web {
namespace {

constexpr Text kLead = {
    "The last jobs as the paper that came out, newest first. Receipts are private, so none are "
    "kept until you say how many.",
    "Die letzten Aufträge als das Papier, das herauskam, der neueste zuerst. Bons sind privat, "
    "darum wird keiner aufgehoben, bis Sie sagen, wie viele."};
constexpr Text kHowMany = {"Jobs to keep (0: none)", "Aufträge, die aufgehoben werden (0: keine)"};
constexpr Text kSave = {"Save", "Speichern"};
constexpr Text kSaved = {"Saved.", "Gespeichert."};
constexpr Text kSent = {"Sent to the printer. The drawer stays closed.",
                        "An den Drucker geschickt. Die Lade bleibt zu."};
constexpr Text kNothing = {"No paper is kept yet.", "Es ist noch kein Papier aufgehoben."};
constexpr Text kAgain = {"Print again", "Noch einmal drucken"};
constexpr Text kBytes = {"Printer bytes", "Druckerbytes"};
constexpr Text kPicture = {"Paper of job", "Papier von Auftrag"};
constexpr Text kJob = {"Job", "Auftrag"};
constexpr Text kWhen = {"Printed", "Gedruckt"};
constexpr Text kWho = {"By", "Von"};
constexpr Text kDarkness = {"Darkness", "Schwärzung"};
constexpr Text kBadNumber = {"Up to 50 jobs can be kept.",
                             "Bis zu 50 Aufträge können aufgehoben werden."};
constexpr Text kGone = {"This paper is no longer kept.", "Dieses Papier ist nicht mehr da."};
constexpr Text kNotSent = {"The printer does not take the job now.",
                           "Der Drucker nimmt den Auftrag gerade nicht an."};

const JobServices& servicesOf(const Request& request) {
  pappl_pr_driver_data_t data = {};
  papplPrinterGetDriverData(request.printer(), &data);
  return *static_cast<const JobServices*>(data.extension);
}

std::optional<int> jobIn(const Fields& fields) {
  const auto field = fields.find("job");
  if (field == fields.end()) return std::nullopt;
  int job = 0;
  const char* const end = field->second.data() + field->second.size();
  const auto [stop, error] = std::from_chars(field->second.data(), end, job);
  if (error != std::errc() || stop != end) return std::nullopt;
  return job;
}

std::optional<std::string> bytesIn(const Request& request, const Fields& fields) {
  KeptPapers* const papers = servicesOf(request).papers;
  const auto job = jobIn(fields);
  if (papers == nullptr || !job) return std::nullopt;
  return papers->bytesOf({papplPrinterGetID(request.printer()), *job});
}

std::string timeText(std::time_t time) {
  std::tm local = {};
  std::array<char, 32> text = {};
  ::localtime_r(&time, &local);
  std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local);
  return text.data();
}

std::string fact(const std::string& name, const std::string& value) {
  return "<dt>" + escaped(name) + "</dt><dd>" + escaped(value) + "</dd>\n";
}

// The halftone and the darkness, and what else is not as in a new printer.
std::string settingFacts(const Request& request, const KeptPaper& paper) {
  std::string html;
  for (const VendorOption& option : vendorOptions()) {
    const auto found = paper.settings.find(option.attribute);
    const bool isHalftone = std::string_view(option.attribute) == kHalftoneAttribute;
    if (found == paper.settings.end() || found->second < option.lowest ||
        found->second > option.highest || (found->second == option.initial && !isHalftone)) {
      continue;
    }
    html += fact(optionText(option, request.language()),
                 valueText(option, found->second, request.language()));
  }
  const auto brightness = paper.settings.find("brightness");
  if (brightness != paper.settings.end() && brightness->second != 0) {
    html += fact(request.say(kDarkness), std::to_string(brightness->second));
  }
  return html;
}

std::string receipt(const Request& request, const KeptPaper& paper) {
  const std::string number = std::to_string(paper.job.jobId);
  const std::string query = "?job=" + number;
  std::string html = "<li class=\"card receipt\">\n<h2>" + escaped(paper.name) + "</h2>\n<dl>\n";
  html += fact(request.say(kJob), number) + fact(request.say(kWhen), timeText(paper.printedAt)) +
          fact(request.say(kWho), paper.user) + settingFacts(request, paper) + "</dl>\n";
  html += "<div class=\"roll\" tabindex=\"0\" role=\"group\" aria-label=\"" +
          escaped(request.say(kPicture) + (" " + number)) + "\"><img src=\"" +
          escaped(request.path("paper/picture") + query) + "\" alt=\"" +
          escaped(request.say(kPicture) + (" " + number)) + "\"></div>\n<div class=\"actions\">";
  html += "<form class=\"inline\" method=\"post\" action=\"" +
          escaped(request.path("paper/again")) + "\">" + hiddenField(kTokenField, request.token()) +
          hiddenField("job", number) + "<button class=\"main\">" + request.say(kAgain) +
          "</button></form>\n";
  html += "<a class=\"btn\" download=\"job-" + number + ".prn\" href=\"" +
          escaped(request.path("paper/bytes") + query) + "\">" + request.say(kBytes) +
          "</a></div>\n</li>\n";
  return html;
}

std::string settingForm(const Request& request) {
  return "<form class=\"panel\" method=\"post\" action=\"" + escaped(request.path(kPaperPage)) +
         "\">\n" + hiddenField(kTokenField, request.token()) + "<label class=\"setting\"><span>" +
         request.say(kHowMany) + "</span><input type=\"number\" name=\"" + kKeptPapersAttribute +
         "\" min=\"0\" max=\"50\" value=\"" + std::to_string(keptPapersOf(request.printer())) +
         "\"></label>\n<button>" + request.say(kSave) + "</button>\n</form>\n";
}

bool showPage(Request& request) {
  std::string html = request.opening(kLead, {{"saved", kSaved}, {"sent", kSent}});
  html += settingForm(request);
  std::string receipts;
  if (const KeptPapers* papers = servicesOf(request).papers) {
    for (const KeptPaper& paper : papers->list(papplPrinterGetID(request.printer()))) {
      receipts += receipt(request, paper);
    }
  }
  html += receipts.empty() ? std::string("<p>") + request.say(kNothing) + "</p>\n"
                           : "<ol class=\"receipts\">\n" + receipts + "</ol>\n";
  return request.sendPage(kPaperPage, kPaperTitle, html);
}

bool refuse(const Request& request, const Text& text, http_status_t status) {
  return request.sendFault(kPaperPage, kPaperTitle, request.say(text), status);
}

bool saveSetting(Request& request) {
  const auto fields = request.form();
  if (!fields) return refuse(request, kBadToken, HTTP_STATUS_FORBIDDEN);
  const auto field = fields->find(kKeptPapersAttribute);
  std::int32_t most = 0;
  if (field == fields->end() ||
      !parseVendorValue(*findVendorOption(kKeptPapersAttribute), field->second, most) ||
      !setDefaults(request.printer(), {{kKeptPapersAttribute, most}})) {
    return refuse(request, kBadNumber, HTTP_STATUS_BAD_REQUEST);
  }
  if (KeptPapers* papers = servicesOf(request).papers) {
    papers->prune(papplPrinterGetID(request.printer()), static_cast<std::size_t>(most));
  }
  return request.redirect(request.path(kPaperPage) + "?saved=1");
}

}  // namespace

bool answerPaperPage(Request& request) {
  if (!request.isAuthorized()) return true;
  return request.isPost() ? saveSetting(request) : showPage(request);
}

bool answerPaperPicture(Request& request) {
  if (!request.isAuthorized()) return true;
  const auto bytes = bytesIn(request, request.query());
  if (!bytes) return refuse(request, kGone, HTTP_STATUS_NOT_FOUND);
  escpos::Reader reader;
  reader.feed({reinterpret_cast<const std::uint8_t*>(bytes->data()), bytes->size()});
  reader.finish();
  escpos::Paper paper = reader.printer().paper();
  // A job that only opens the drawer has a strip of paper to show it on.
  constexpr std::uint64_t kShortestUnits = 100;
  paper.lengthUnits = std::max(paper.lengthUnits, kShortestUnits);
  paper.widthDots = std::max(paper.widthDots, targetOf(request.printer()).headWidthPx);
  preview::PictureStyle style;
  style.marks = true;
  preview::PaperPicture picture(paper, escpos::wholeStrip(paper), style);
  return request.send(HTTP_STATUS_OK, "image/png", preview::pngBytes(picture));
}

bool answerPaperBytes(Request& request) {
  if (!request.isAuthorized()) return true;
  const auto bytes = bytesIn(request, request.query());
  if (!bytes) return refuse(request, kGone, HTTP_STATUS_NOT_FOUND);
  return request.send(HTTP_STATUS_OK, "application/octet-stream", *bytes);
}

bool answerPrintAgain(Request& request) {
  if (!request.isAuthorized()) return true;
  if (!request.isPost()) return request.redirect(request.path(kPaperPage));
  const auto fields = request.form();
  if (!fields) return refuse(request, kBadToken, HTTP_STATUS_FORBIDDEN);
  const auto bytes = bytesIn(request, *fields);
  if (!bytes) return refuse(request, kGone, HTTP_STATUS_NOT_FOUND);
  const ReadyDocuments* const documents = servicesOf(request).documents;
  const std::string file = documents == nullptr ? "" : documents->writeBytes(*bytes);
  if (file.empty() ||
      papplJobCreateWithFile(request.printer(), request.user().c_str(), kPrinterFormat,
                             request.say(kAgain), 0, nullptr, file.c_str()) == nullptr) {
    return refuse(request, kNotSent, HTTP_STATUS_SERVER_ERROR);
  }
  return request.redirect(request.path(kPaperPage) + "?sent=1");
}

}  // namespace wren::app::web
