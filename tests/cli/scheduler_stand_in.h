// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// A scheduler for tests: it answers the requests of `wren` on a socket in the file system, keeps
// queues as the real one does, and remembers what it was asked. It prints nothing.

#pragma once

#include <cups/cups.h>

#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "common/handles.h"

namespace wren::cli {

class SchedulerStandIn {
 public:
  /// A queue at its beginning; what requests change later is in `attributes`.
  struct Queue {
    std::string name;
    std::string uri;
    std::string ppd;  ///< the text; its NickName is the make and model
    std::map<std::string, std::string> defaults = {};
    bool isStopped = false;
    bool takesJobs = true;
  };
  struct Job {
    std::string queue;
    int id = 0;
    std::map<std::string, std::string> options = {};
  };
  struct Device {
    const char* kind;
    const char* uri;
    const char* makeAndModel;
    const char* info;
  };
  struct Request {
    std::string operation;  ///< "CUPS-Get-Printers", or "GET" for a file
    std::string resource;
    std::map<std::string, std::string> attributes = {};
    std::string data = {};
  };
  /// How requests of administrators and searches are answered.
  enum class Refusal {
    kNone,
    kNotAuthorized,
    kNotAuthenticated,
    kForbidden,
    kNeedsPassword,
    kFails,
    kConflicts,  ///< done, but with a word about other values
  };

  /// @param socketPath of the socket; it is the value for CUPS_SERVER.
  explicit SchedulerStandIn(const std::string& socketPath);
  ~SchedulerStandIn();
  SchedulerStandIn(const SchedulerStandIn&) = delete;
  SchedulerStandIn& operator=(const SchedulerStandIn&) = delete;

  void add(const Queue& queue);
  void add(const Job& job);
  void setDevices(const std::vector<Device>& devices);
  void refuse(Refusal refusal);
  /// Takes no more jobs of commands.
  void refuseCommands();

  std::vector<std::string> queueNames();
  /// An attribute of a queue as CUPS writes it; empty if there is none.
  std::string attribute(const std::string& queue, const std::string& name);
  std::string ppdOf(const std::string& queue);
  /// The requests of one kind so far.
  std::vector<Request> requests(const std::string& operation);

 private:
  struct DeleteIpp {
    void operator()(ipp_t* ipp) const { ippDelete(ipp); }
  };
  using Ipp = std::unique_ptr<ipp_t, DeleteIpp>;
  struct Kept {
    std::string name;
    Ipp attributes;
    std::string ppd;
  };

  void listen();
  void serve(http_t* http);
  bool answerOne(http_t* http);
  void sendPpd(http_t* http, const std::string& resource);
  void sendAnswer(http_t* http, const std::string& resource);
  Ipp answerTo(ipp_t* request, const std::string& resource, const std::string& data);
  void put(ipp_t* request, const std::string& data);
  bool isRefused(ipp_op_t operation) const;
  void addQueues(ipp_t* answer) const;
  void addJobs(ipp_t* answer, const std::string& queue) const;
  void addDevices(ipp_t* answer) const;
  Kept* find(const std::string& name);

  FileDescriptor listener_;
  FileDescriptor wakeUp_[2];
  std::mutex mutex_;  // of all below
  std::vector<Kept> queues_;
  std::vector<Job> jobs_;
  std::vector<Device> devices_;
  std::vector<Request> requests_;
  Refusal refusal_ = Refusal::kNone;
  bool refusesCommands_ = false;
  std::list<std::thread> clients_;
  std::vector<int> connections_;
  std::thread thread_;
};

}  // namespace wren::cli
