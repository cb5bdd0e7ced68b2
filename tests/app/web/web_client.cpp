// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/app/web/web_client.h"

#include <sys/socket.h>

#include <cstdio>
#include <memory>
#include <vector>

namespace wren_test {
namespace {

struct CloseHttp {
  void operator()(http_t* http) const { httpClose(http); }
};

std::string fieldOf(http_t* http, http_field_t field) {
  const char* const text = httpGetField(http, field);
  return text == nullptr ? "" : text;
}

std::string encoded(const std::string& text) {
  std::string result;
  for (const char letter : text) {
    char code[4];
    std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned char>(letter));
    result += code;
  }
  return result;
}

}  // namespace

std::string encodedFields(const WebClient::Fields& fields) {
  std::string text;
  for (const auto& [name, value] : fields) {
    text += (text.empty() ? "" : "&") + encoded(name) + "=" + encoded(value);
  }
  return text;
}

WebAnswer WebClient::get(const std::string& path) const {
  return request(false, path, {}, {});
}

WebAnswer WebClient::post(const std::string& path, const std::string& body,
                          const std::string& type) const {
  return request(true, path, body, type);
}

WebAnswer WebClient::postForm(const std::string& path, const Fields& fields) const {
  return post(path, encodedFields(fields), "application/x-www-form-urlencoded");
}

WebAnswer WebClient::request(bool isPost, const std::string& path, const std::string& body,
                             const std::string& type) const {
  const std::unique_ptr<http_t, CloseHttp> http(httpConnect2(
      "localhost", port_, nullptr, AF_UNSPEC, HTTP_ENCRYPTION_IF_REQUESTED, 1, 10000, nullptr));
  WebAnswer answer;
  if (http == nullptr) return answer;
  httpClearFields(http.get());
  httpSetField(http.get(), HTTP_FIELD_ACCEPT_LANGUAGE, language_.c_str());
  if (!cookie_.empty()) httpSetCookie(http.get(), cookie_.c_str());
  if (isPost) {
    httpSetField(http.get(), HTTP_FIELD_CONTENT_TYPE, type.c_str());
    // httpSetLength takes 0 for a body in chunks.
    httpSetField(http.get(), HTTP_FIELD_CONTENT_LENGTH, std::to_string(body.size()).c_str());
  }
  const int failed =
      isPost ? httpPost(http.get(), path.c_str()) : httpGet(http.get(), path.c_str());
  if (failed != 0) return answer;
  // A server may answer before it has read all.
  for (std::size_t done = 0; done < body.size();) {
    const ssize_t count = httpWrite2(http.get(), body.data() + done, body.size() - done);
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  http_status_t status = HTTP_STATUS_CONTINUE;
  while (status == HTTP_STATUS_CONTINUE) status = httpUpdate(http.get());
  answer.status = status;
  answer.type = fieldOf(http.get(), HTTP_FIELD_CONTENT_TYPE);
  answer.location = fieldOf(http.get(), HTTP_FIELD_LOCATION);
  if (const char* cookie = httpGetCookie(http.get())) answer.cookie = cookie;
  std::vector<char> buffer(65536);
  for (ssize_t count = 0; (count = httpRead2(http.get(), buffer.data(), buffer.size())) > 0;) {
    answer.body.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return answer;
}

std::string WebClient::tokenOf(const std::string& path) const {
  const std::string body = get(path).body;
  const std::string before = "name=\"session\" value=\"";
  const auto at = body.find(before);
  if (at == std::string::npos) return {};
  const auto start = at + before.size();
  return body.substr(start, body.find('"', start) - start);
}

}  // namespace wren_test
