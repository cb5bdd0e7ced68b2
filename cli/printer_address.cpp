// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/printer_address.h"

#include <cups/cups.h>

#include <array>
#include <cstdlib>
#include <string_view>

namespace wren::cli {
namespace {

struct Scheme {
  std::string_view name;
  int port;
};
constexpr std::array<Scheme, 6> kSchemes = {
    {{"socket", 9100}, {"lpd", 515}, {"ipp", 631}, {"ipps", 631}, {"http", 80}, {"https", 443}}};

// "host", "host:port" or "[host]:port"; 0 if it names no port.
PrinterAddress parseAuthority(std::string_view text) {
  const bool bracketed = text.starts_with('[');
  const auto hostEnd = bracketed ? text.find(']') : text.find(':');
  const std::string_view host = text.substr(bracketed ? 1 : 0, hostEnd - (bracketed ? 1 : 0));
  const auto colon = hostEnd == text.npos ? text.npos : text.find(':', hostEnd);
  const std::string port(colon == text.npos ? "" : text.substr(colon + 1));
  return {std::string(host), static_cast<int>(std::strtol(port.c_str(), nullptr, 10))};
}

}  // namespace

std::optional<PrinterAddress> parsePrinterAddress(const std::string& uri) {
  const auto colon = uri.find("://");
  for (const Scheme& scheme : kSchemes) {
    if (uri.substr(0, colon) != scheme.name || colon == uri.npos) continue;
    std::string_view rest = std::string_view(uri).substr(colon + 3);
    rest = rest.substr(0, rest.find_first_of("/?"));
    if (const auto at = rest.rfind('@'); at != rest.npos) rest.remove_prefix(at + 1);
    PrinterAddress address = parseAuthority(rest);
    if (address.port <= 0 || address.port > 65535) address.port = scheme.port;
    return address;
  }
  return std::nullopt;
}

bool canConnect(const PrinterAddress& address, int seconds) {
  const std::string port = std::to_string(address.port);
  http_addrlist_t* list = httpAddrGetList(address.host.c_str(), AF_UNSPEC, port.c_str());
  int descriptor = -1;
  const bool connected =
      list != nullptr && httpAddrConnect2(list, &descriptor, seconds * 1000, nullptr) != nullptr;
  if (descriptor >= 0) httpAddrClose(nullptr, descriptor);
  httpAddrFreeList(list);
  return connected;
}

}  // namespace wren::cli
