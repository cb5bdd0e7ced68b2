// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/job_messages.h"

#include <algorithm>
#include <map>
#include <sstream>

#include "app/each_job.h"

namespace wren::app {
namespace {

constexpr const char* kNotKept = "failed before the restart; the reason was not kept";

using Messages = std::map<JobKey, std::string>;

void addLine(pappl_job_t* job, void* lines) {
  const char* const message = papplJobGetMessage(job);
  if (message == nullptr || *message == '\0') return;
  std::string text = message;
  std::replace(text.begin(), text.end(), '\n', ' ');
  const JobKey key = keyOf(job);
  *static_cast<std::string*>(lines) +=
      std::to_string(key.printerId) + ' ' + std::to_string(key.jobId) + ' ' + text + '\n';
}

void restoreOne(pappl_job_t* job, void* data) {
  const Messages& messages = *static_cast<const Messages*>(data);
  const auto found = messages.find(keyOf(job));
  if (found != messages.end()) {
    papplJobSetMessage(job, "%s", found->second.c_str());
  } else if (papplJobGetState(job) == IPP_JSTATE_ABORTED) {
    papplJobSetMessage(job, "%s", kNotKept);
  }
}

}  // namespace

std::string endedMessages(pappl_system_t* system) {
  std::string lines;
  forEachEndedJob(system, addLine, &lines);
  return lines;
}

void restoreMessages(pappl_system_t* system, const std::string& text) {
  Messages messages;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    std::istringstream words(line);
    JobKey key;
    std::string message;
    if (words >> key.printerId >> key.jobId && std::getline(words >> std::ws, message)) {
      messages[key] = message;
    }
  }
  forEachEndedJob(system, restoreOne, &messages);
}

}  // namespace wren::app
