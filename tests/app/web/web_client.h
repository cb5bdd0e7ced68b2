// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A browser without a face: requests to the web pages of a running application.

#pragma once

#include <cups/http.h>

#include <map>
#include <string>

namespace wren_test {

struct WebAnswer {
  int status = 0;  ///< 0: no answer
  std::string type;
  std::string location;
  std::string cookie;
  std::string body;
};

class WebClient {
 public:
  explicit WebClient(int port) : port_(port) {}

  void speak(const std::string& acceptLanguage) { language_ = acceptLanguage; }
  /// Sends this cookie with each request.
  void carry(const std::string& cookie) { cookie_ = cookie; }

  WebAnswer get(const std::string& path) const;
  WebAnswer post(const std::string& path, const std::string& body,
                 const std::string& type = "application/octet-stream") const;

  using Fields = std::map<std::string, std::string>;
  WebAnswer postForm(const std::string& path, const Fields& fields) const;

  /// The token in the forms of a page; empty if it has none.
  std::string tokenOf(const std::string& path) const;

 private:
  WebAnswer request(bool isPost, const std::string& path, const std::string& body,
                    const std::string& type) const;

  int port_;
  std::string language_;
  std::string cookie_;
};

/// "a=1&b=two%20words".
std::string encodedFields(const WebClient::Fields& fields);

}  // namespace wren_test
