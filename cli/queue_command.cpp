// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/queue_command.h"

#include "cli/console.h"
#include "cli/failure.h"
#include "cli/queue_access.h"
#include "job/command_file.h"

namespace wren::cli {
namespace {

using job::CommandKind;

CommandKind kindOf(const std::string& name) {
  if (name == "drawer") return CommandKind::kOpenDrawer;
  if (name == "beep") return CommandKind::kBeep;
  if (name == "cut") return CommandKind::kCut;
  if (name == "feed") return CommandKind::kFeed;
  return CommandKind::kPrintSelfTestPage;
}

Queue findQueue(Scheduler& scheduler, const std::string& name) {
  const auto queue = scheduler.find(name);
  if (!queue.has_value()) throw Failure(kFailed, "there is no queue '" + name + "'");
  if (!queue->isOurs()) {
    throw Failure(kFailed, "the queue '" + name + "' is not one of Wren's");
  }
  return *queue;
}

}  // namespace

std::string commandLineFor(const std::string& name, const QueueCommandArguments& arguments) {
  std::string line = job::kCommandNames.at(static_cast<std::size_t>(kindOf(name)));
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
  checkAnswer(answer, "the queue '" + queue.name + "' does not take the command",
              "wren " + name + " " + shellWord(queue.name));
  say("the queue '" + queue.name + "' has taken " + line + " as job " + std::to_string(id));
  if (queue.isStopped) {
    note("the queue '" + queue.name +
         "' is stopped and the command waits; start it with: cupsenable " + shellWord(queue.name));
  }
  return kDone;
}

}  // namespace wren::cli
