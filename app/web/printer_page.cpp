// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/web/printer_page.h"

#include <charconv>
#include <optional>
#include <string>
#include <vector>

#include "app/active_job.h"
#include "app/command_job.h"
#include "app/network_device.h"
#include "app/ready_commands.h"
#include "app/web/printer_defaults.h"
#include "app/web/settings_sketch.h"

namespace wren::app::web {
namespace {

using job::CommandKind;

// ---- Words ----

constexpr Text kLead = {
    "How this printer feeds, cuts, opens the drawer and beeps. What you save holds for every job "
    "that asks for nothing else.",
    "Wie dieser Drucker vorschiebt, schneidet, die Lade öffnet und piept. Was Sie speichern, gilt "
    "für jeden Auftrag, der nichts anderes verlangt."};
constexpr Text kNow = {"Now", "Jetzt"};
constexpr Text kTry = {"Do it now", "Sofort ausführen"};
constexpr Text kSettings = {"Settings", "Einstellungen"};
constexpr Text kSketchTitle = {"What is fed and cut where",
                               "Was wo vorgeschoben und geschnitten wird"};
constexpr Text kSave = {"Save", "Speichern"};
constexpr Text kSaved = {"Saved.", "Gespeichert."};
constexpr Text kSent = {"Sent to the printer.", "An den Drucker geschickt."};
constexpr Text kBadValue = {"This printer does not have this value: ",
                            "Diesen Wert hat der Drucker nicht: "};
constexpr Text kNotSent = {"The printer does not take the command now.",
                           "Der Drucker nimmt den Befehl gerade nicht an."};
constexpr Text kMillimetres = {"Millimetres to feed", "Millimeter Vorschub"};

struct Group {
  Text title;
  std::vector<const char*> attributes;
};

const std::vector<Group>& groups() {
  static const std::vector<Group> kGroups = {
      {{"Cutter and feed", "Abschneider und Vorschub"},
       {"page-cut-type", kCutAttribute, "feed-cut-after-job-end", "page-type",
        kLongestGapAttribute}},
      {{"Cash drawer", "Kassenlade"},
       {kDrawerAttribute, "cash-drawer-pulse-width", kDrawerClientsAttribute,
        kDrawerLevelAttribute}},
      {{"Buzzer", "Summer"},
       {"buzzer1-setting", "buzzer1-repeat", "buzzer1-on-time", "buzzer2-setting", "buzzer2-repeat",
        "buzzer2-on-time"}},
      {{"Printing", "Druck"}, {kDirectionAttribute, kTextPitchAttribute}}};
  return kGroups;
}

struct Hint {
  std::string_view attribute;
  Text text;
};

constexpr Hint kHints[] = {
    {kCutAttribute,
     {"A partial cut leaves a small bridge, so that the receipt does not fall.",
      "Ein Teilschnitt lässt einen kleinen Steg stehen, damit der Bon nicht herunterfällt."}},
    {"feed-cut-after-job-end",
     {"The knife sits above the print head: too little feed cuts the last lines.",
      "Das Messer sitzt über dem Druckkopf: Zu wenig Vorschub schneidet die letzten Zeilen ab."}},
    {"page-type",
     {"Receipts end where their text ends; labels keep their length.",
      "Bons enden mit ihrem Text; Etiketten behalten ihre Länge."}},
    {"cash-drawer-pulse-width",
     {"Longer if the drawer does not open every time.",
      "Länger, wenn die Lade nicht jedes Mal aufgeht."}},
    {kDrawerLevelAttribute,
     {"Look at the condition above with the drawer open.",
      "Sehen Sie bei offener Lade oben nach dem Zustand."}},
};

struct Action {
  const char* name;
  CommandKind kind;
  Text label;
};

constexpr Action kActions[] = {
    {"drawer", CommandKind::kOpenDrawer, {"Open drawer", "Lade öffnen"}},
    {"beep", CommandKind::kBeep, {"Beep", "Piepen"}},
    {"cut", CommandKind::kCut, {"Cut", "Schneiden"}},
    {"test", CommandKind::kPrintSelfTestPage, {"Print test page", "Testseite drucken"}},
    {"feed", CommandKind::kFeed, {"Feed", "Vorschieben"}},
};

// ---- What the printer says ----

struct Condition {
  std::string text;
  const char* look;  ///< class of the dot
};

Condition conditionOf(const Request& request) {
  const PrinterCondition condition =
      printerConditionAt(papplPrinterGetDeviceURI(request.printer()));
  const auto say = [&](const Text& text) { return std::string(request.say(text)); };
  if (condition.away) return {say({"cannot be reached", "nicht erreichbar"}), "bad"};
  if (!condition.status) {
    if (condition.stalled) return {say({"takes no data", "nimmt keine Daten an"}), "bad"};
    return {say({"does not say how it is", "sagt nichts über sich"}), "unknown"};
  }
  const PrinterStatus& status = *condition.status;
  struct Fault {
    bool isSet;
    Text text;
  };
  const Fault faults[] = {
      {status.paperOut, {"out of paper", "Papier zu Ende"}},
      {status.coverOpen, {"cover open", "Deckel offen"}},
      {status.cutterError, {"cutter error", "Abschneider gestört"}},
      {status.otherError, {"printer error", "Drucker gestört"}},
      {status.paperNearEnd, {"paper runs out soon", "Papier geht zur Neige"}},
  };
  std::string text;
  for (const Fault& fault : faults) {
    if (fault.isSet) text += (text.empty() ? "" : ", ") + say(fault.text);
  }
  if (text.empty() && status.offline) text = say({"off-line", "offline"});
  if (text.empty()) return {say({"ready", "bereit"}), ""};
  return {text, status.isReady() ? "unknown" : "bad"};
}

std::string drawerOf(const Request& request) {
  const PrinterCondition condition =
      printerConditionAt(papplPrinterGetDeviceURI(request.printer()));
  if (condition.away || !condition.status) return {};
  const std::int32_t level = defaultOf(request.printer(), *findVendorOption(kDrawerLevelAttribute));
  const bool isHigh = condition.status->drawerPinHigh;
  constexpr Text kOpen = {"Drawer open", "Lade offen"};
  constexpr Text kClosed = {"Drawer closed", "Lade geschlossen"};
  constexpr Text kHigh = {"Drawer signal high", "Signal der Lade hoch"};
  constexpr Text kLow = {"Drawer signal low", "Signal der Lade niedrig"};
  if (level == 0) return request.say(isHigh ? kHigh : kLow);
  return request.say(isHigh == (level == 1) ? kOpen : kClosed);
}

std::string conditionHtml(const Request& request) {
  const Condition condition = conditionOf(request);
  const std::string drawer = drawerOf(request);
  std::string html = "<p class=\"panel condition\"><span>";
  html += request.say(kNow);
  html += std::string(":</span><strong><span class=\"dot ") + condition.look + "\"></span>" +
          escaped(condition.text) + "</strong>";
  if (!drawer.empty()) html += "<span>" + escaped(drawer) + "</span>";
  return html + "</p>\n";
}

// ---- The page ----

std::string setting(const Request& request, const VendorOption& option) {
  std::string html = "<label class=\"setting\"><span>" +
                     escaped(optionText(option, request.language())) + "</span>";
  for (const Hint& hint : kHints) {
    if (hint.attribute == option.attribute) {
      html += std::string("<small>") + request.say(hint.text) + "</small>";
    }
  }
  const std::int32_t chosen = defaultOf(request.printer(), option);
  constexpr std::int32_t kMostChoices = 20;
  if (option.highest - option.lowest >= kMostChoices) {
    return html + "<input type=\"number\" name=\"" + option.attribute + "\" min=\"" +
           std::to_string(option.lowest) + "\" max=\"" + std::to_string(option.highest) +
           "\" value=\"" + std::to_string(chosen) + "\"></label>\n";
  }
  html += std::string("<select name=\"") + option.attribute + "\">";
  for (std::int32_t value = option.lowest; value <= option.highest; ++value) {
    html += optionElement(vendorValueText(option, value),
                          valueText(option, value, request.language()), value == chosen);
  }
  return html + "</select></label>\n";
}

std::string settingsForm(const Request& request) {
  std::string html = "<form method=\"post\" action=\"" + escaped(request.path(kPrinterPage)) +
                     "\">\n" + hiddenField(kTokenField, request.token()) +
                     "<div class=\"columns\">\n";
  for (const Group& group : groups()) {
    html += std::string("<section class=\"panel\">\n<h2>") + request.say(group.title) + "</h2>\n";
    for (const char* attribute : group.attributes) {
      html += setting(request, *findVendorOption(attribute));
    }
    html += "</section>\n";
  }
  return html + "</div>\n<p><button class=\"main\">" + request.say(kSave) +
         "</button></p>\n</form>\n";
}

std::string actionForm(const Request& request, const Action& action) {
  std::string html = "<form method=\"post\" action=\"" + escaped(request.path("printer/action")) +
                     "\">" + hiddenField(kTokenField, request.token()) +
                     hiddenField("action", action.name);
  if (action.kind == CommandKind::kFeed) {
    html += std::string(
                "<input type=\"number\" name=\"mm\" min=\"1\" max=\"1000\" value=\"20\" "
                "aria-label=\"") +
            request.say(kMillimetres) + "\">";
  }
  return html + "<button>" + request.say(action.label) + "</button></form>\n";
}

bool showPage(Request& request) {
  std::string html = request.opening(kLead, {{"saved", kSaved}, {"sent", kSent}});
  html += conditionHtml(request);
  html += std::string("<h2 class=\"section\">") + request.say(kTry) +
          "</h2>\n<div class=\"buttons\">\n";
  for (const Action& action : kActions) html += actionForm(request, action);
  html += std::string("</div>\n<h2 class=\"section\">") + request.say(kSketchTitle) + "</h2>\n" +
          settingsSketch(settingsFor(request.printer(), {}, true), targetOf(request.printer()),
                         request.language());
  html += std::string("<h2 class=\"section\">") + request.say(kSettings) + "</h2>\n" +
          settingsForm(request);
  return request.sendPage(kPrinterPage, kPrinterTitle, html);
}

bool saveSettings(Request& request) {
  const auto fields = request.form();
  if (!fields) {
    return request.sendFault(kPrinterPage, kPrinterTitle, request.say(kBadToken),
                             HTTP_STATUS_FORBIDDEN);
  }
  VendorValues values;
  for (const Group& group : groups()) {
    for (const char* attribute : group.attributes) {
      const auto field = fields->find(attribute);
      if (field == fields->end()) continue;
      const VendorOption& option = *findVendorOption(attribute);
      if (!parseVendorValue(option, field->second, values[attribute])) {
        return request.sendFault(
            kPrinterPage, kPrinterTitle,
            request.say(kBadValue) + optionText(option, request.language()) + " " + field->second);
      }
    }
  }
  if (!setDefaults(request.printer(), values)) {
    return request.sendFault(kPrinterPage, kPrinterTitle, request.say(kBadValue),
                             HTTP_STATUS_SERVER_ERROR);
  }
  return request.redirect(request.path(kPrinterPage) + "?saved=1");
}

// ---- Actions ----

// What follows the name of a command in its file; nothing if the form has a wrong one.
std::optional<std::string> argumentOf(const Action& action, const Fields& fields) {
  if (action.kind != CommandKind::kFeed) return std::string();
  const auto field = fields.find("mm");
  if (field == fields.end()) return std::nullopt;
  int millimetres = 0;
  const char* const end = field->second.data() + field->second.size();
  const auto [stop, error] = std::from_chars(field->second.data(), end, millimetres);
  if (error != std::errc() || stop != end || millimetres < 1 || millimetres > job::kMaxFeedMm) {
    return std::nullopt;
  }
  return std::to_string(millimetres);
}

bool sendCommand(const Request& request, const Action& action, const std::string& argument) {
  pappl_pr_driver_data_t data = {};
  papplPrinterGetDriverData(request.printer(), &data);
  const ReadyCommands* const commands = static_cast<const JobServices*>(data.extension)->commands;
  const std::string file = commands == nullptr ? "" : commands->write(action.kind, argument);
  return !file.empty() &&
         papplJobCreateWithFile(request.printer(), request.user().c_str(), kCommandFormat,
                                request.say(action.label), 0, nullptr, file.c_str()) != nullptr;
}

}  // namespace

bool answerPrinterPage(Request& request) {
  if (!request.isAuthorized()) return true;
  return request.isPost() ? saveSettings(request) : showPage(request);
}

bool answerPrinterAction(Request& request) {
  if (!request.isAuthorized()) return true;
  if (!request.isPost()) return request.redirect(request.path(kPrinterPage));
  const auto fields = request.form();
  if (!fields) {
    return request.sendFault(kPrinterPage, kPrinterTitle, request.say(kBadToken),
                             HTTP_STATUS_FORBIDDEN);
  }
  const auto name = fields->find("action");
  for (const Action& action : kActions) {
    if (name == fields->end() || name->second != action.name) continue;
    const auto argument = argumentOf(action, *fields);
    if (!argument) break;
    if (!sendCommand(request, action, *argument)) {
      return request.sendFault(kPrinterPage, kPrinterTitle, request.say(kNotSent),
                               HTTP_STATUS_SERVER_ERROR);
    }
    return request.redirect(request.path(kPrinterPage) + "?sent=1");
  }
  return request.sendFault(kPrinterPage, kPrinterTitle, request.say(kBadValue));
}

}  // namespace wren::app::web
