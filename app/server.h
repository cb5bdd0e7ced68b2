// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The PAPPL system of the application: its folders, listeners, drivers and saved state.

#pragma once

#include <pappl/pappl.h>

#include <string>

#include "app/active_job.h"
#include "app/client_origin.h"
#include "app/kept_papers.h"
#include "app/page_keeper.h"
#include "app/ready_commands.h"
#include "app/ready_documents.h"
#include "app/state_keeper.h"

namespace wren::app {

struct ServerOptions {
  std::string name = "Wren";
  std::string host = "localhost";  ///< address to listen on; "*" for all, once a password is set
  int port = 0;                    ///< 0: PAPPL's choice
  std::string stateFolder;         ///< created if it is missing
  std::string logFile = "-";       ///< "-": standard error
  pappl_loglevel_t logLevel = PAPPL_LOGLEVEL_WARN;
  std::string pagesFolder;             ///< keeps the pages handed to the core; empty: does not
  unsigned clientTimeoutSeconds = 60;  ///< drops clients that stall for so long; 0: never
};

class Server {
 public:
  /// Throws std::runtime_error, with one line for people, if a folder cannot be made or the
  /// system cannot be created.
  explicit Server(const ServerOptions& options);

  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  /// The system, owned by PAPPL once it runs; printers of an earlier run are loaded.
  pappl_system_t* system() { return system_; }

 private:
  void listen(const ServerOptions& options);
  static void onEvent(pappl_system_t* system, pappl_printer_t* printer, pappl_job_t* job,
                      pappl_event_t event, void* server);

  PageKeeper keeper_;
  StateKeeper state_;
  JobOrigins origins_;
  ReadyCommands commands_;
  ReadyDocuments documents_;
  KeptPapers papers_;
  JobServices services_;
  pappl_system_t* system_ = nullptr;
};

/// The folder for the state of a server that was given none: that of the service manager, else
/// one below /var/lib for root and below the home folder for others.
std::string defaultStateFolder();

/// A TCP port that nothing listens on now.
/// @return 0 if there is none.
int freePort();

}  // namespace wren::app
