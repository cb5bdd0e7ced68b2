// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// The commands for queues: what they ask the scheduler for, and what they say.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/cli/queue_program.h"

namespace wren::cli {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;
using Refusal = SchedulerStandIn::Refusal;

constexpr char kUri[] = "socket://192.0.2.7:9101/?waiteof=false&snmp=false";
constexpr char kPut[] = "CUPS-Add-Modify-Printer";
constexpr char kDelete[] = "CUPS-Delete-Printer";

class WrenProgramAddQueue : public WrenProgramQueues {
 protected:
  std::string added(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "add-queue");
    const auto result = done(here(arguments));
    EXPECT_EQ(result.err, "");
    return result.out;
  }
  std::string refused(int status, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "add-queue");
    return refusal(status, here(arguments));
  }
};

TEST_F(WrenProgramAddQueue, AsksForAQueueThatTakesJobs) {
  EXPECT_EQ(added({"till", kUri}), std::string("the queue 'till' is added: 80 mm, ") + kUri + "\n");
  const auto puts = scheduler_.requests(kPut);
  ASSERT_EQ(puts.size(), 1U);
  EXPECT_EQ(puts[0].resource, "/admin/");
  auto attributes = puts[0].attributes;
  EXPECT_NE(attributes["requesting-user-name"], "");
  for (const char* name :
       {"requesting-user-name", "attributes-charset", "attributes-natural-language"}) {
    attributes.erase(name);
  }
  EXPECT_THAT(
      attributes,
      ElementsAre(Pair("device-uri", kUri), Pair("orientation-requested-default", "portrait"),
                  Pair("pdfAutoRotate-default", "no"), Pair("position-default", "top"),
                  Pair("printer-is-accepting-jobs", "true"), Pair("printer-state", "idle"),
                  Pair("printer-uri", "ipp://localhost/printers/till")));
  EXPECT_EQ(puts[0].data, ppdText(80));
  EXPECT_EQ(added({"till", kUri}), "the queue 'till' is as asked for; nothing is changed\n");
  EXPECT_EQ(scheduler_.requests(kPut).size(), 1U);
}

TEST_F(WrenProgramAddQueue, UsesThePpdOfThePaperWithTheOptionsOfTheUser) {
  for (const int paper : {58, 80, 112}) {
    const std::string name = "till" + std::to_string(paper);
    EXPECT_EQ(
        added({name, "usb://Wren/80", std::to_string(paper), "-o", "HalftoneType=Burkes", "-o",
               "cpi=14"}),
        "the queue '" + name + "' is added: " + std::to_string(paper) + " mm, usb://Wren/80\n");
    EXPECT_EQ(scheduler_.ppdOf(name),
              withLine(ppdText(paper), "*DefaultHalftoneType", "*DefaultHalftoneType: Burkes"));
    EXPECT_EQ(scheduler_.attribute(name, "cpi-default"), "14");
  }
}

TEST_F(WrenProgramAddQueue, ChangesNothingInADryRun) {
  EXPECT_EQ(added({"till", kUri, "58", "--dry-run"}),
            std::string("the queue 'till' would be added: 58 mm, ") + kUri + "\n");
  EXPECT_THAT(scheduler_.queueNames(), IsEmpty());
  addQueue("bar", "usb://old", 58);
  EXPECT_EQ(added({"bar", "usb://new", "80", "--dry-run"}),
            "the queue 'bar' would be changed: address usb://old -> usb://new; "
            "paper 58 -> 80 mm\n");
  EXPECT_THAT(scheduler_.requests(kPut), IsEmpty());
}

TEST_F(WrenProgramAddQueue, OpensAClosedQueue) {
  addQueue("open", "usb://x");
  scheduler_.add(SchedulerStandIn::Queue{
      "till",
      "usb://x",
      ppdText(80),
      {{"position", "top"}, {"pdfAutoRotate", "no"}, {"orientation-requested", "3"}},
      true,
      false});
  EXPECT_EQ(added({"till", "usb://x"}),
            "the queue 'till' is changed: it is started; it takes jobs\n");
  EXPECT_EQ(scheduler_.attribute("till", "printer-state"), "idle");
  EXPECT_EQ(scheduler_.attribute("till", "printer-is-accepting-jobs"), "true");
  EXPECT_EQ(added({"open", "usb://x"}), "the queue 'open' is as asked for; nothing is changed\n");
}

TEST_F(WrenProgramAddQueue, AsksBeforeItChangesThePaper) {
  addQueue("till", "usb://x", 58);
  EXPECT_EQ(refused(1, {"till", "usb://x", "80"}),
            "the queue 'till' is there with another paper; to change it to 80 mm, add --replace");
  EXPECT_THAT(scheduler_.requests(kPut), IsEmpty());
  EXPECT_EQ(added({"till", "usb://x"}), "the queue 'till' is as asked for; nothing is changed\n");
  EXPECT_EQ(added({"till", "usb://x", "80", "--replace"}),
            "the queue 'till' is changed: paper 58 -> 80 mm\n");
  EXPECT_EQ(scheduler_.ppdOf("till"), ppdText(80));
}

TEST_F(WrenProgramAddQueue, KeepsWhatItDoesNotName) {
  addQueue("till", "usb://x");
  added({"till", "usb://x", "-o", "HalftoneType=Burkes", "-o", "cpi=14"});
  EXPECT_EQ(added({"till", "usb://y", "-o", "cpi=12"}),
            "the queue 'till' is changed: address usb://x -> usb://y; cpi 14 -> 12\n");
  EXPECT_THAT(scheduler_.ppdOf("till"), HasSubstr("*DefaultHalftoneType: Burkes\n"));
  EXPECT_EQ(scheduler_.attribute("till", "device-uri"), "usb://y");
  EXPECT_EQ(scheduler_.attribute("till", "cpi-default"), "12");
}

TEST_F(WrenProgramAddQueue, TakesNoQueueOfOthers) {
  scheduler_.add(SchedulerStandIn::Queue{"till", "usb://x", "*NickName: \"Other\"\n"});
  for (const char* name : {"till", "TILL"}) {
    EXPECT_EQ(
        refused(1, {name, "usb://x"}),
        std::string("there is a queue '") + name +
            "' already, not one of Wren's; take another name, or remove it with: lpadmin -x " +
            name);
  }
  EXPECT_THAT(scheduler_.requests(kPut), IsEmpty());
}

TEST_F(WrenProgramAddQueue, ReplacesAQueueWhosePpdCannotBeRead) {
  scheduler_.add(SchedulerStandIn::Queue{"till", "usb://x", "*NickName: \"Wren 80\"\n"});
  EXPECT_EQ(added({"till", "usb://x", "80", "--replace"}),
            "the queue 'till' is changed: paper 0 -> 80 mm; orientation-requested (none) -> 3; "
            "pdfAutoRotate (none) -> no; position (none) -> top\n");
  EXPECT_EQ(scheduler_.ppdOf("till"), ppdText(80));
}

TEST_F(WrenProgramAddQueue, NamesTheCommandForSomebodyWhoMay) {
  const std::string begin =
      "the scheduler did not take the queue 'till': only root or a member of the group lpadmin may "
      "do that: sudo wren add-queue ";
  folder_.write("my shop.json", R"({"schema": 1, "queues": [{"name": "till", "uri": "usb://x"}]})");
  for (const Refusal refusal : {Refusal::kNotAuthorized, Refusal::kNotAuthenticated,
                                Refusal::kForbidden, Refusal::kNeedsPassword}) {
    scheduler_.refuse(refusal);
    EXPECT_EQ(refused(1, {"till", kUri}), begin + "till '" + kUri + "'");
    EXPECT_EQ(refused(1, {"till", "usb://x", "58", "-o", "cpi=14", "-o",
                          "HalftoneType=Burkes lpi=6", "--replace"}),
              begin + "till usb://x 58 -o cpi=14 -o 'HalftoneType=Burkes lpi=6' --replace");
    EXPECT_EQ(refused(1, {"--from", "my shop.json"}), begin + "--from 'my shop.json'");
  }
  scheduler_.refuse(Refusal::kConflicts);
  EXPECT_EQ(added({"bar", "usb://x"}), "the queue 'bar' is added: 80 mm, usb://x\n");
  scheduler_.refuse(Refusal::kFails);
  EXPECT_EQ(refused(1, {"till", kUri}),
            "the scheduler did not take the queue 'till': Out of paste");
}

TEST_F(WrenProgramAddQueue, MakesTheQueuesOfAFile) {
  addQueue("bar", "usb://bar", 58);
  added({"bar", "usb://bar", "-o", "HalftoneType=Burkes", "-o", "cpi=14"});
  folder_.write("shop.json", R"({"schema": 1, "queues": [
      {"name": "till", "uri": "usb://x", "paper": 112, "options": {"lpi": 8}},
      {"name": "bar", "uri": "usb://bar", "paper": 58}]})");
  EXPECT_EQ(added({"--from", "shop.json"}),
            "the queue 'till' is added: 112 mm, usb://x\n"
            "the queue 'bar' is changed: HalftoneType Burkes -> None; cpi 14 -> (none)\n");
  EXPECT_EQ(scheduler_.requests(kPut).back().attributes["cpi-default"], "delete-attribute");
  EXPECT_EQ(scheduler_.attribute("bar", "cpi-default"), "");
  EXPECT_EQ(scheduler_.attribute("bar", "copies-default"), "1");
  EXPECT_EQ(scheduler_.ppdOf("bar"), ppdText(58));
  EXPECT_EQ(scheduler_.attribute("till", "lpi-default"), "8");
  EXPECT_EQ(scheduler_.ppdOf("till"), ppdText(112));
  EXPECT_EQ(added({"--from", "shop.json"}),
            "the queue 'till' is as asked for; nothing is changed\n"
            "the queue 'bar' is as asked for; nothing is changed\n");
}

TEST_F(WrenProgramAddQueue, ChecksEveryQueueOfAFileBeforeItMakesTheFirst) {
  addQueue("bar", "usb://bar", 58);
  folder_.write("paper.json", R"({"schema": 1, "queues": [{"name": "till", "uri": "usb://x"},
      {"name": "bar", "uri": "usb://bar", "paper": 80}]})");
  EXPECT_THAT(refused(1, {"--from", "paper.json"}), HasSubstr("add --replace"));
  folder_.write("option.json", R"({"schema": 1, "queues": [{"name": "till", "uri": "usb://x"},
      {"name": "bar", "uri": "usb://bar", "options": {"HalftoneType": "Stuki"}}]})");
  EXPECT_THAT(refused(2, {"--from", "option.json"}),
              StartsWith("option.json, the queue 'bar': HalftoneType has no choice 'Stuki'"));
  EXPECT_THAT(scheduler_.queueNames(), ElementsAre("bar"));
}

TEST_F(WrenProgramAddQueue, ReadsAFileOfItsLargestSize) {
  constexpr std::size_t kMostBytes = 16777216;  // as the message says
  std::string text = R"({"schema": 1, "queues": [{"name": "till", "uri": "usb://x"}]})";
  text.resize(kMostBytes, ' ');
  folder_.write("large.json", text);
  EXPECT_EQ(added({"--from", "large.json"}), "the queue 'till' is added: 80 mm, usb://x\n");
  folder_.write("large.json", text + " ");
  EXPECT_EQ(refused(3, {"--from", "large.json"}), "'large.json' is longer than 16777216 bytes");
}

TEST_F(WrenProgramAddQueue, NeedsEachPartOfTheInstallation) {
  for (const char* filter : {"rastertowren", "commandtowren"}) {
    const std::string path = root() + WREN_CUPS_SERVERBIN "/filter/" + filter;
    const std::string words =
        "the filter is not installed as " + path + "; install the package printer-driver-wren";
    fs::permissions(path, fs::perms(0644));
    EXPECT_EQ(refused(4, {"till", "usb://x"}), words);
    fs::rename(path, path + ".away");
    EXPECT_EQ(refused(4, {"till", "usb://x"}), words);
    fs::rename(path + ".away", path);
    fs::permissions(path, fs::perms(0755));
  }
  for (const int paper : {58, 80, 112}) {
    fs::rename(installedPpd(paper), pathOf("away"));
    EXPECT_EQ(refused(4, {"till", "usb://x", std::to_string(paper)}),
              "the PPD " + installedPpd(paper) + " is missing or damaged; wren doctor says more");
    fs::rename(pathOf("away"), installedPpd(paper));
  }
  EXPECT_THAT(scheduler_.queueNames(), IsEmpty());
  added({"till", "usb://x"});
}

class WrenProgramRemoveQueue : public WrenProgramQueues {};

TEST_F(WrenProgramRemoveQueue, RemovesTheQueueAlone) {
  addQueue("bar", "usb://x");
  addQueue("till", "usb://x");
  EXPECT_EQ(done({"remove-queue", "till", "--dry-run"}).out, "the queue 'till' would be removed\n");
  EXPECT_THAT(scheduler_.requests(kDelete), IsEmpty());
  EXPECT_EQ(done({"remove-queue", "till"}).out, "the queue 'till' is removed\n");
  EXPECT_THAT(scheduler_.queueNames(), ElementsAre("bar"));
  EXPECT_EQ(scheduler_.requests(kDelete).at(0).resource, "/admin/");
  // The name as the scheduler has it.
  EXPECT_EQ(done({"remove-queue", "BAR"}).out, "the queue 'BAR' is removed\n");
  EXPECT_THAT(scheduler_.queueNames(), IsEmpty());
  EXPECT_EQ(refusal(1, {"remove-queue", "till"}), "there is no queue 'till'");
}

TEST_F(WrenProgramRemoveQueue, TakesNoQueueOfOthers) {
  scheduler_.add(SchedulerStandIn::Queue{"other", "usb://x", "*NickName: \"Wrenlike\"\n"});
  EXPECT_EQ(refusal(1, {"remove-queue", "other"}),
            "the queue 'other' is not one of Wren's; remove it with: lpadmin -x other");
  EXPECT_THAT(scheduler_.queueNames(), ElementsAre("other"));
}

TEST_F(WrenProgramRemoveQueue, NamesTheCommandForSomebodyWhoMay) {
  addQueue("till", "usb://x");
  scheduler_.refuse(Refusal::kForbidden);
  EXPECT_EQ(refusal(1, {"remove-queue", "till"}),
            "the queue 'till' cannot be removed: only root or a member of the group lpadmin may do "
            "that: sudo wren remove-queue till");
  scheduler_.refuse(Refusal::kFails);
  EXPECT_EQ(refusal(1, {"remove-queue", "till"}),
            "the queue 'till' cannot be removed: Out of paste");
}

class WrenProgramQueueCommands : public WrenProgramQueues {};

TEST_F(WrenProgramQueueCommands, SendACommandFile) {
  const struct {
    std::vector<std::string> arguments;
    const char* line;
  } kCommands[] = {
      {{"drawer", "till"}, "OpenDrawer"},
      {{"beep", "till"}, "Beep"},
      {{"cut", "till"}, "Cut"},
      {{"cut", "till", "full"}, "Cut full"},
      {{"cut", "till", "partial"}, "Cut partial"},
      {{"feed", "till", "1"}, "Feed 1"},
      {{"feed", "till", "1000"}, "Feed 1000"},
      {{"selftest", "till"}, "PrintSelfTestPage"},
  };
  addQueue("bar", "usb://x");
  addQueue("till", "usb://x");
  for (const auto& [arguments, line] : kCommands) {
    const auto result = done(arguments);
    EXPECT_EQ(result.out, std::string("the queue 'till' has taken ") + line + " as job 217\n");
    EXPECT_EQ(result.err, "");
    auto job = scheduler_.requests("Print-Job").back();
    EXPECT_EQ(job.resource, "/printers/till");
    EXPECT_EQ(job.attributes["printer-uri"], "ipp://localhost/printers/till");
    EXPECT_EQ(job.attributes["job-name"], "wren " + arguments[0]);
    EXPECT_EQ(job.attributes["document-format"], "application/vnd.cups-command");
    EXPECT_NE(job.attributes["requesting-user-name"], "");
    EXPECT_EQ(job.data, std::string("#CUPS-COMMAND\n") + line + "\n");
  }
  EXPECT_EQ(done({"drawer", "TILL"}).out, "the queue 'till' has taken OpenDrawer as job 217\n");
  EXPECT_EQ(scheduler_.requests("Print-Job").back().resource, "/printers/till");
}

TEST_F(WrenProgramQueueCommands, SayThatTheQueueIsStopped) {
  scheduler_.add(SchedulerStandIn::Queue{"till", "usb://x", ppdText(80), {}, true});
  const auto result = done({"beep", "till"});
  EXPECT_EQ(result.out, "the queue 'till' has taken Beep as job 217\n");
  EXPECT_EQ(result.err,
            "wren: the queue 'till' is stopped and the command waits; start it with: cupsenable "
            "till\n");
}

TEST_F(WrenProgramQueueCommands, AreForQueuesOfWrenAlone) {
  scheduler_.add(SchedulerStandIn::Queue{"other", "usb://x", "*NickName: \"Other\"\n"});
  EXPECT_EQ(refusal(1, {"drawer", "other"}), "the queue 'other' is not one of Wren's");
  EXPECT_EQ(refusal(1, {"cut", "gone"}), "there is no queue 'gone'");
  EXPECT_THAT(scheduler_.requests("Print-Job"), IsEmpty());
  addQueue("till", "usb://x");
  scheduler_.refuseCommands();
  EXPECT_EQ(refusal(1, {"feed", "till", "9"}),
            "the queue 'till' does not take the command: Unsupported here (wren doctor till says "
            "more)");
}

}  // namespace
}  // namespace wren::cli
