// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// The scheduler of CUPS, asked through IPP requests: its queues, their PPDs, and the printers
// that its backends find. Nobody is asked for a password: what needs one fails.

#pragma once

#include <cups/cups.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace wren::cli {

struct Queue {
  std::string name;
  std::string uri;
  std::string makeAndModel;
  bool isStopped = false;
  bool takesJobs = false;
  std::map<std::string, std::string> defaults;  ///< job options, without "-default"

  /// Whether it prints with a PPD of Wren's.
  bool isOurs() const { return makeAndModel.starts_with("Wren "); }
};

/// A queue as it has to be.
struct QueueSetup {
  std::string name;
  std::string uri;
  std::string ppdPath;
  std::map<std::string, std::string> defaults;
  std::vector<std::string> removedDefaults;
};

/// A printer that a backend has found.
struct Device {
  std::string kind;  ///< "direct" or "network"
  std::string uri;
  std::string makeAndModel;
  std::string info;
};

/// A job that the scheduler remembers, with the options it was given.
struct RememberedJob {
  int id = 0;
  std::map<std::string, std::string> options;
};

/// What came of a request that only some users may make.
struct Answer {
  bool done = false;
  bool isRefused = false;  ///< this user may not
  std::string reason;
};

class Scheduler {
 public:
  /// Connects to the server of CUPS_SERVER or client.conf, by default the local one.
  Scheduler();

  bool runs() const { return http_ != nullptr; }
  std::vector<Queue> queues();
  std::optional<Queue> find(const std::string& name);
  /// Stores the queue's own copy of its PPD.
  bool fetchPpd(const std::string& queue, const std::string& path);
  /// The last jobs of a queue. Options of other users' jobs may be hidden.
  std::vector<RememberedJob> jobs(const std::string& queue);

  /// Adds a queue or changes it; it takes and prints jobs afterwards.
  Answer put(const QueueSetup& setup);
  Answer remove(const std::string& name);
  /// Sends a job of commands (application/vnd.cups-command), which needs no rights.
  /// @param job its number.
  Answer sendCommands(const std::string& queue, const std::string& title, const std::string& text,
                      int& job);
  /// @param schemes such as "usb"; empty for all.
  Answer findDevices(const std::string& schemes, int seconds, std::vector<Device>& devices);

 private:
  struct CloseHttp {
    void operator()(http_t* http) const { httpClose(http); }
  };
  std::unique_ptr<http_t, CloseHttp> http_;
};

/// The command that starts the scheduler, for root.
std::string startSchedulerHint();

}  // namespace wren::cli
