// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A request of a browser to a page of a printer: who may ask, what was sent, and the answer.

#pragma once

#include <pappl/pappl.h>

#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "app/web/html.h"
#include "app/web/words.h"

namespace wren::app::web {

using Fields = std::map<std::string, std::string>;

/// The fields of "a=1&b=two%20words"; the first of a name counts.
Fields parseFields(std::string_view text);

/// Names of the form fields that each of our POSTs has.
inline constexpr const char* kTokenField = "session";

class Request {
 public:
  Request(pappl_client_t* client, pappl_printer_t* printer);

  pappl_client_t* client() const { return client_; }
  pappl_printer_t* printer() const { return printer_; }
  Language language() const { return language_; }
  const char* say(const Text& text) const { return text.in(language_); }
  bool isPost() const { return papplClientGetMethod(client_) == HTTP_STATE_POST; }

  /// Whether the client may see and change the printer. If not, PAPPL has answered: with its form
  /// for the password, or with a refusal.
  bool isAuthorized() const { return papplClientHTMLAuthorize(client_); }

  /// The token that a form of this client has to carry.
  std::string token() const;

  /// Fields of the address, behind the question mark.
  Fields query() const;

  /// The fields of a posted form; nothing if they do not carry the token.
  std::optional<Fields> form() const;

  /// The fields in the first line of a posted body, and what follows it.
  struct Upload {
    Fields fields;
    std::string body;
  };
  enum class UploadFault { kNone, kToken, kTooLarge, kIncomplete };
  /// Reads a posted body of at most `maxBytes`. What is too large is read to its end as well, or
  /// the browser would not read the answer.
  UploadFault readUpload(std::size_t maxBytes, Upload& upload) const;

  /// The beginning of a page: what it is for, and what the form sent before has done.
  /// @param news texts by the name of the field of the address that asks for them.
  std::string opening(const Text& lead,
                      std::initializer_list<std::pair<const char*, Text>> news) const;

  /// The path of a page of this printer.
  std::string path(const char* page) const;

  /// The name for jobs: that of the person who logged in, else "web".
  std::string user() const;

  /// What people call the printer.
  std::string printerName() const;

  // Answers; each can be the result of a callback.

  bool send(http_status_t status, const char* type, std::string_view body) const;
  bool sendPage(const char* page, const Text& title, std::string_view body,
                http_status_t status = HTTP_STATUS_OK) const;
  bool redirect(const std::string& path) const;
  /// A page that says what is wrong, with a link back.
  bool sendFault(const char* page, const Text& title, std::string_view fault,
                 http_status_t status = HTTP_STATUS_BAD_REQUEST) const;

 private:
  pappl_client_t* client_;
  pappl_printer_t* printer_;
  Language language_;
};

/// The pages of a printer: names of paths, and titles.
inline constexpr const char* kHalftonePage = "halftone";
inline constexpr const char* kPaperPage = "paper";
inline constexpr const char* kPrinterPage = "printer";
inline constexpr Text kHalftoneTitle = {"Halftone", "Rasterung"};
inline constexpr Text kPaperTitle = {"Paper", "Papier"};
inline constexpr Text kPrinterTitle = {"Printer", "Drucker"};

inline constexpr Text kBadToken = {
    "This page is too old. Open it again and repeat what you did.",
    "Diese Seite ist zu alt. Öffnen Sie sie neu und wiederholen Sie die Eingabe."};

/// Calls `handle(Request&)` for the printer whose number is the data of the callback. PAPPL may
/// delete a printer at any time, so its number alone is known. Nothing thrown may reach PAPPL.
bool answer(pappl_client_t* client, void* id, bool (*handle)(Request&));

template <bool (*Handle)(Request&)>
bool onRequest(pappl_client_t* client, void* id) {
  return answer(client, id, Handle);
}

}  // namespace wren::app::web
