// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/status_page.h"

#include <array>
#include <cstdint>
#include <exception>

#include "app/job_attributes.h"
#include "app/network_device.h"
#include "app/vendor_option.h"
#include "app/web/web_pages.h"

namespace wren::app {
namespace {

constexpr int kRefreshSeconds = 5;

// The device part of the condition.
std::string printerText(const PrinterCondition& condition) {
  if (condition.away) return "cannot be reached";
  if (condition.status) {
    if (std::string text = describe(*condition.status); !text.empty()) return text;
  }
  if (condition.stalled) return "takes no data";
  return condition.status ? "ready" : "does not say how it is";
}

std::string drawerText(const PrinterCondition& condition, std::string_view drawerLevel) {
  if (condition.away || !condition.status) return "unknown";
  const bool isHigh = condition.status->drawerPinHigh;
  if (drawerLevel == "high") return isHigh ? "open" : "closed";
  if (drawerLevel == "low") return isHigh ? "closed" : "open";
  return isHigh ? "level high" : "level low";
}

std::string textOf(pappl_printer_t* printer) {
  showPrinterCondition(printer);
  return conditionText(printerConditionAt(papplPrinterGetDeviceURI(printer)),
                       printerDefault(printer, kDrawerLevelAttribute).value_or(""));
}

// PAPPL may delete the printer at any time, so the pages know its number alone.
pappl_printer_t* printerOf(pappl_client_t* client, void* id) {
  return papplSystemFindPrinter(papplClientGetSystem(client), nullptr,
                                static_cast<int>(reinterpret_cast<std::intptr_t>(id)), nullptr);
}

// Nothing that is thrown may reach PAPPL, which is not compiled to pass it on.
template <typename Work>
bool respond(pappl_client_t* client, void* id, Work work) {
  try {
    pappl_printer_t* printer = printerOf(client, id);
    if (printer == nullptr) {
      return papplClientRespond(client, HTTP_STATUS_NOT_FOUND, nullptr, nullptr, 0, 0);
    }
    return work(printer);
  } catch (const std::exception&) {
    return papplClientRespond(client, HTTP_STATUS_SERVER_ERROR, nullptr, nullptr, 0, 0);
  }
}

bool sendText(pappl_client_t* client, void* id) {
  return respond(client, id, [client](pappl_printer_t* printer) {
    const std::string text = textOf(printer) + "\n";
    if (!papplClientRespond(client, HTTP_STATUS_OK, nullptr, "text/plain", 0, text.size())) {
      return false;
    }
    return httpWrite2(papplClientGetHTTP(client), text.data(), text.size()) >= 0;
  });
}

bool sendPage(pappl_client_t* client, void* id) {
  return respond(client, id, [client](pappl_printer_t* printer) {
    const std::string text = textOf(printer);
    // The header is also the HTTP response.
    papplClientHTMLPrinterHeader(client, printer, "Status", kRefreshSeconds, nullptr, nullptr);
    papplClientHTMLPuts(client, "<p>The printer: ");
    papplClientHTMLEscape(client, text.c_str(), text.size());
    papplClientHTMLPuts(client, ".</p>\n");
    papplClientHTMLPrinterFooter(client);
    return true;
  });
}

std::string pathOf(pappl_printer_t* printer, const char* page) {
  std::array<char, 1024> path;
  return papplPrinterGetPath(printer, page, path.data(), path.size());
}

}  // namespace

std::string conditionText(const PrinterCondition& condition, std::string_view drawerLevel) {
  return printerText(condition) + "; drawer " + drawerText(condition, drawerLevel);
}

void addStatusPages(pappl_printer_t* printer, void* /*data*/) {
  pappl_system_t* system = papplPrinterGetSystem(printer);
  // NOLINTNEXTLINE(performance-no-int-to-ptr): a number, never followed
  void* const id = reinterpret_cast<void*>(std::intptr_t{papplPrinterGetID(printer)});
  const std::string page = pathOf(printer, "status");
  papplSystemAddResourceCallback(system, page.c_str(), "text/html", sendPage, id);
  papplSystemAddResourceCallback(system, (page + ".txt").c_str(), "text/plain", sendText, id);
  papplPrinterAddLink(printer, "Status", page.c_str(),
                      PAPPL_LOPTIONS_NAVIGATION | PAPPL_LOPTIONS_STATUS);
  web::addPrinterPages(printer);
}

}  // namespace wren::app
