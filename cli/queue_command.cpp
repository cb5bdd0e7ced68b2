// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/queue_command.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "cli/console.h"
#include "cli/failure.h"
#include "cli/queue_access.h"
#include "job/command_file.h"

namespace wren::cli {
namespace {

// In the order of `job::kCommandNames`.
constexpr std::array<std::string_view, job::kCommandNames.size()> kQueueCommands = {
    "drawer", "beep", "cut", "feed", "selftest"};

Queue findQueue(Scheduler& scheduler, const std::string& name) {
  const auto queue = scheduler.find(name);
  if (!queue.has_value()) throw Failure(kFailed, "there is no queue '" + name + "'");
  if (!queue->isOurs()) {
    throw Failure(kFailed, "the queue '" + name + "' is not one of Wren's");
  }
  return *queue;
}

}  // namespace

bool isQueueCommand(const std::string& name) {
  return std::find(kQueueCommands.begin(), kQueueCommands.end(), name) != kQueueCommands.end();
}

std::string commandLineFor(const std::string& name, const QueueCommandArguments& arguments) {
  const auto* command = std::find(kQueueCommands.begin(), kQueueCommands.end(), name);
  std::string line =
      job::kCommandNames.at(static_cast<std::size_t>(command - kQueueCommands.begin()));
  if (!arguments.cut.empty()) line += " " + arguments.cut;
  if (arguments.feedMm > 0) line += " " + std::to_string(arguments.feedMm);
  return line;
}

int runQueueCommand(const std::string& name, const QueueCommandArguments& arguments) {
  Scheduler scheduler;
  needScheduler(scheduler);
  const Queue queue = findQueue(scheduler, arguments.queue);
  const std::string line = commandLineFor(name, arguments);
  int id = 0;
  const Answer answer = scheduler.sendCommands(
      queue.name, "wren " + name, std::string(job::kCommandFileHead) + "\n" + line + "\n", id);
  if (!answer.done) {
    throw Failure(kFailed, "the queue '" + queue.name +
                               "' does not take the command: " + answer.reason + " (wren doctor " +
                               shellWord(queue.name) + " says more)");
  }
  say("the queue '" + queue.name + "' has taken " + line + " as job " + std::to_string(id));
  if (queue.isStopped) {
    note("the queue '" + queue.name +
         "' is stopped and the command waits; start it with: cupsenable " + shellWord(queue.name));
  }
  return kDone;
}

}  // namespace wren::cli
