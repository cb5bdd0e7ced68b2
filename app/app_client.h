// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What our sub-commands ask of a running server, by its socket or by an address. No server is
// started here.

#pragma once

#include <cups/cups.h>

#include <memory>
#include <string>
#include <vector>

namespace wren::app {

/// A printer of the server, as clients name it.
struct AppPrinter {
  std::string name;
  std::string resource;  ///< of its address: "/ipp/print/till"
};

/// A job as its client sees it.
struct AppJob {
  int id = 0;
  ipp_jstate_t state = IPP_JSTATE_PENDING;
  std::string message;

  bool hasEnded() const { return state >= IPP_JSTATE_CANCELED; }
};

/// For one thread. Every function throws std::runtime_error with one line for people if the
/// server cannot be reached or refuses.
class AppClient {
 public:
  /// @param program argv[0]; the name of the socket follows from it.
  /// @param uri address of a server (ipp://HOST:PORT/ipp/system) or of one of its printers; empty:
  ///   finds the socket.
  AppClient(const char* program, const std::string& uri);

  bool isForOnePrinter() const { return !resource_.empty(); }

  /// All printers, or the one of the address.
  std::vector<AppPrinter> printers();

  /// The name of the default printer; empty if there is none.
  std::string defaultPrinter();

  /// Sends a job. @return its number.
  int submit(const AppPrinter& printer, const std::string& name, const std::string& format,
             const std::string& document);

  AppJob job(const AppPrinter& printer, int id);

  /// The job that prints now or is the first to; `id` is 0 if there is none.
  AppJob firstJob(const AppPrinter& printer);

  /// The text of a page of the web interface.
  std::string page(const std::string& path);

 private:
  struct CloseHttp {
    void operator()(http_t* http) const { httpClose(http); }
  };
  struct DeleteIpp {
    void operator()(ipp_t* message) const { ippDelete(message); }
  };
  using Ipp = std::unique_ptr<ipp_t, DeleteIpp>;

  Ipp request(ipp_op_t operation, const std::string& resource) const;
  Ipp send(Ipp request, const std::string& resource);

  std::unique_ptr<http_t, CloseHttp> http_;
  std::string resource_;  // of a printer, if the address is that of one
};

}  // namespace wren::app
