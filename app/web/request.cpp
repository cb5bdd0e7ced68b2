// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/web/request.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <exception>
#include <utility>
#include <vector>

namespace wren::app::web {
namespace {

// More than this is not even read to its end.
constexpr std::size_t kMaxReadBytes = std::size_t{64} << 20;

constexpr Text kBack = {"Back", "Zurück"};
constexpr Text kMedia = {"Media", "Papier einlegen"};
constexpr Text kDefaults = {"All settings", "Alle Einstellungen"};
constexpr Text kStatus = {"Status", "Status"};

std::string decoded(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned char byte = 0;
    if (text[i] == '%' && i + 2 < text.size() &&
        std::from_chars(text.data() + i + 1, text.data() + i + 3, byte, 16).ptr ==
            text.data() + i + 3) {
      result += static_cast<char>(byte);
      i += 2;
    } else {
      result += text[i] == '+' ? ' ' : text[i];
    }
  }
  return result;
}

struct FreeOptions {
  explicit FreeOptions(pappl_client_t* client) : count(papplClientGetForm(client, &options)) {}
  FreeOptions(const FreeOptions&) = delete;
  FreeOptions& operator=(const FreeOptions&) = delete;
  ~FreeOptions() { cupsFreeOptions(count, options); }

  cups_option_t* options = nullptr;
  int count;
};

// A browser that sent the token of another session has the page of an earlier run.
bool hasToken(pappl_client_t* client, const Fields& fields) {
  const auto token = fields.find(kTokenField);
  if (token == fields.end()) return false;
  cups_option_t* options = nullptr;
  const int count = cupsAddOption(kTokenField, token->second.c_str(), 0, &options);
  const bool isValid = papplClientIsValidForm(client, count, options);
  cupsFreeOptions(count, options);
  return isValid;
}

std::string fieldText(const char* text) {
  return text == nullptr ? std::string() : text;
}

}  // namespace

Fields parseFields(std::string_view text) {
  Fields fields;
  while (!text.empty()) {
    const auto end = text.find('&');
    const std::string_view field = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    const auto equals = field.find('=');
    if (equals == std::string_view::npos) continue;
    fields.emplace(decoded(field.substr(0, equals)), decoded(field.substr(equals + 1)));
  }
  return fields;
}

Request::Request(pappl_client_t* client, pappl_printer_t* printer)
    : client_(client),
      printer_(printer),
      language_(languageFor(
          fieldText(httpGetField(papplClientGetHTTP(client), HTTP_FIELD_ACCEPT_LANGUAGE)))) {}

std::string Request::token() const {
  std::array<char, 256> token = {};
  papplClientGetCSRFToken(client_, token.data(), token.size());
  return token.data();
}

Fields Request::query() const {
  return parseFields(fieldText(papplClientGetOptions(client_)));
}

std::string Request::opening(const Text& lead,
                             std::initializer_list<std::pair<const char*, Text>> news) const {
  std::string html = std::string("<p class=\"lead\">") + say(lead) + "</p>\n";
  const Fields asked = query();
  for (const auto& [name, text] : news) {
    if (!asked.contains(name)) continue;
    html += std::string("<p class=\"banner\" role=\"status\">") + say(text) + "</p>\n";
  }
  return html;
}

std::optional<Fields> Request::form() const {
  const FreeOptions form(client_);
  if (!papplClientIsValidForm(client_, form.count, form.options)) return std::nullopt;
  Fields fields;
  for (int i = 0; i < form.count; ++i) {
    fields.emplace(form.options[i].name, form.options[i].value);
  }
  return fields;
}

Request::UploadFault Request::readUpload(std::size_t maxBytes, Upload& upload) const {
  http_t* const http = papplClientGetHTTP(client_);
  std::string all;
  std::vector<char> buffer(std::size_t{64} << 10);
  std::size_t total = 0;
  while (total < kMaxReadBytes) {
    const ssize_t count = httpRead2(http, buffer.data(), buffer.size());
    if (count < 0) return UploadFault::kIncomplete;
    if (count == 0) break;
    total += static_cast<std::size_t>(count);
    if (total <= maxBytes) all.append(buffer.data(), static_cast<std::size_t>(count));
  }
  const auto lineEnd = all.find('\n');
  if (lineEnd == std::string::npos) return UploadFault::kToken;
  upload.fields = parseFields(std::string_view(all).substr(0, lineEnd));
  if (!hasToken(client_, upload.fields)) return UploadFault::kToken;
  if (total > maxBytes) return UploadFault::kTooLarge;
  all.erase(0, lineEnd + 1);
  upload.body = std::move(all);
  return UploadFault::kNone;
}

std::string Request::path(const char* page) const {
  std::array<char, 1024> path = {};
  return fieldText(papplPrinterGetPath(printer_, page, path.data(), path.size()));
}

std::string Request::user() const {
  const std::string user = fieldText(papplClientGetUsername(client_));
  return user.empty() ? "web" : user;
}

std::string Request::printerName() const {
  return fieldText(papplPrinterGetName(printer_));
}

bool Request::send(http_status_t status, const char* type, std::string_view body) const {
  if (!papplClientRespond(client_, status, nullptr, type, 0, body.size())) return false;
  return body.empty() || httpWrite2(papplClientGetHTTP(client_), body.data(), body.size()) >= 0;
}

bool Request::sendPage(const char* page, const Text& title, std::string_view body,
                       http_status_t status) const {
  Frame frame;
  frame.language = language_;
  frame.title = say(title);
  frame.printerName = printerName();
  frame.links.push_back({path(nullptr), frame.printerName, false});
  const std::pair<const char*, Text> pages[] = {{kHalftonePage, kHalftoneTitle},
                                                {kPaperPage, kPaperTitle},
                                                {kPrinterPage, kPrinterTitle},
                                                {"status", kStatus},
                                                {"media", kMedia},
                                                {"printing", kDefaults}};
  for (const auto& [name, label] : pages) {
    frame.links.push_back({path(name), say(label), std::string_view(name) == page});
  }
  return send(status, "text/html", htmlPage(frame, body));
}

bool Request::redirect(const std::string& path) const {
  return papplClientRespondRedirect(client_, HTTP_STATUS_SEE_OTHER, path.c_str());
}

bool Request::sendFault(const char* page, const Text& title, std::string_view fault,
                        http_status_t status) const {
  const std::string body = "<p class=\"fault\" role=\"alert\">" + escaped(fault) +
                           "</p>\n<p><a class=\"btn\" href=\"" + escaped(path(page)) + "\">" +
                           say(kBack) + "</a></p>\n";
  return sendPage(page, title, body, status);
}

bool answer(pappl_client_t* client, void* id, bool (*handle)(Request&)) {
  try {
    pappl_printer_t* const printer =
        papplSystemFindPrinter(papplClientGetSystem(client), nullptr,
                               static_cast<int>(reinterpret_cast<std::intptr_t>(id)), nullptr);
    if (printer == nullptr) {
      return papplClientRespond(client, HTTP_STATUS_NOT_FOUND, nullptr, nullptr, 0, 0);
    }
    Request request(client, printer);
    return handle(request);
  } catch (const std::exception& error) {
    papplLogClient(client, PAPPL_LOGLEVEL_ERROR, "%s", error.what());
    return papplClientRespond(client, HTTP_STATUS_SERVER_ERROR, nullptr, nullptr, 0, 0);
  }
}

}  // namespace wren::app::web
