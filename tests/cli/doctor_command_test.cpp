// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// wren doctor: each check with its fault and its cure.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/cli/queue_program.h"

namespace wren::cli {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Refusal = SchedulerStandIn::Refusal;

constexpr char kReinstall[] =
    "sudo apt install --reinstall ./printer-driver-wren_*.deb   # the package of Wren";

// A port of a printer that answers.
class Listener {
 public:
  Listener() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    EXPECT_EQ(bind(socket_.get(), generic, length), 0);
    EXPECT_EQ(listen(socket_.get(), 8), 0);
    EXPECT_EQ(getsockname(socket_.get(), generic, &length), 0);
    port_ = std::to_string(ntohs(address.sin_port));
  }
  const std::string& port() const { return port_; }

 private:
  FileDescriptor socket_;
  std::string port_;
};

class WrenProgramDoctorQueue : public WrenProgramQueues {
 protected:
  // The true ones are slow; another test has them.
  void SetUp() override {
    standIn("cupstestppd", "exit 0\n");
    standIn("fc-list", "echo 'DejaVu Sans Mono'; echo 'AR PL UMing CN'\n");
  }

  json report(std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.begin(), {"doctor", "--json"});
    return json::parse(wren(here(arguments)).out);
  }

  static std::vector<std::string> linesOf(const json& checks) {
    std::vector<std::string> lines;
    for (const json& check : checks) {
      std::string line =
          check["state"].get<std::string>() + ": " + check["text"].get<std::string>();
      if (check.contains("fix")) line += " | " + check["fix"].get<std::string>();
      lines.push_back(line);
    }
    return lines;
  }

  // "state: text | fix" of each check of the queue.
  std::vector<std::string> checksOf(const std::string& queue) {
    const json document = report({queue});
    EXPECT_EQ(document["queues"].size(), 1U);
    EXPECT_EQ(document["queues"][0]["name"], queue);
    return linesOf(document["queues"][0]["checks"]);
  }

  // The same without those that are in order.
  std::vector<std::string> findingsOf(const std::string& queue) {
    std::vector<std::string> lines = checksOf(queue);
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("ok: "); });
    return lines;
  }

  // A queue whose printer CUPS knows, with other settings or another PPD.
  void addUsbQueue(const std::map<std::string, std::string>& changed, const std::string& ppd) {
    std::map<std::string, std::string> defaults = {
        {"position", "top"}, {"pdfAutoRotate", "no"}, {"orientation-requested", "3"}};
    for (const auto& [name, value] : changed) defaults[name] = value;
    scheduler_.setDevices({{"direct", "usb://Wren/80", "Wren 80", "Wren 80"}});
    scheduler_.add(SchedulerStandIn::Queue{"till", "usb://Wren/80", ppd, defaults});
  }
};

TEST_F(WrenProgramDoctorQueue, FindsNothingInASoundQueue) {
  const Listener printer;
  addQueue("till", "socket://127.0.0.1:" + printer.port() + "/");
  EXPECT_THAT(checksOf("till"),
              ElementsAre("ok: the queue 'till' has the PPD for 80 mm of this version",
                          "ok: the queue 'till' has no saved option that its PPD does not know",
                          "ok: the queue 'till' keeps receipts upright and at the top",
                          "ok: the queue 'till' takes and prints jobs",
                          "ok: the printer of 'till' answers at 127.0.0.1 port " + printer.port()));
}

TEST_F(WrenProgramDoctorQueue, ReportsTheWordsThatAddQueueReads) {
  addUsbQueue(
      {{"cpi", "14"}, {"orientation-requested", "4"}},
      withLine(withLine(ppdText(58), "*DefaultHalftoneType", "*DefaultHalftoneType: Burkes"),
               "*DefaultPageSize", "*DefaultPageSize: X58MMY600MM"));
  scheduler_.add(SchedulerStandIn::Queue{"other", "usb://o", "*NickName: \"Other\"\n"});
  const json document = report();
  EXPECT_EQ(document["schema"], 1);
  ASSERT_EQ(document["queues"].size(), 1U) << "queues of others are not checked unasked";
  const json& queue = document["queues"][0];
  EXPECT_EQ(queue["name"], "till");
  EXPECT_EQ(queue["uri"], "usb://Wren/80");
  EXPECT_EQ(queue["makeAndModel"], "Wren 58 mm receipt printer, 3.13");
  EXPECT_EQ(queue["paper"], 58);
  EXPECT_EQ(queue["options"], (json{{"HalftoneType", "Burkes"},
                                    {"PageSize", "X58MMY600MM"},
                                    {"cpi", "14"},
                                    {"orientation-requested", "4"}}));
  const json other = report({"other"})["queues"][0];
  EXPECT_EQ(other["uri"], "usb://o");
  EXPECT_EQ(other["makeAndModel"], "Other");
  EXPECT_FALSE(other.contains("paper"));
  EXPECT_FALSE(other.contains("options"));
}

TEST_F(WrenProgramDoctorQueue, MakesTheSameQueueAgain) {
  addUsbQueue({{"cpi", "14"}},
              withLine(ppdText(80), "*DefaultHalftoneType", "*DefaultHalftoneType: Burkes"));
  folder_.write("shop.json", wren(here({"doctor", "--json"})).out);
  EXPECT_EQ(done(here({"add-queue", "--from", "shop.json"})).out,
            "the queue 'till' is as asked for; nothing is changed\n");
}

// Faults and notes of the machine and of each queue; the status is 1 for faults alone.
TEST_F(WrenProgramDoctorQueue, CountsTheFaultsOfAllQueues) {
  const json sound = report();
  EXPECT_THAT(linesOf(sound["checks"]), Contains("ok: the scheduler runs"));
  EXPECT_THAT(linesOf(sound["checks"]),
              Contains("note: no queue prints with Wren; add one with: sudo wren add-queue NAME "
                       "ADDRESS [58|80|112]"));
  const int ofTheMachine = sound["faults"];
  EXPECT_EQ(wren(here({"doctor"})).exitStatus, ofTheMachine == 0 ? 0 : 1);
  if (geteuid() == 0) {
    EXPECT_EQ(ofTheMachine, 0) << sound;
  }

  scheduler_.setDevices({{"direct", "usb://Wren/80", "Wren 80", "Wren 80"}});
  addQueue("till", "usb://Wren/80");
  scheduler_.add(SchedulerStandIn::Queue{"bar", "usb://Wren/80", ppdText(80), {}, true});
  const json document = report();
  EXPECT_EQ(document["faults"], ofTheMachine + 2);
  ASSERT_EQ(document["queues"].size(), 2U);
  EXPECT_EQ(document["queues"][0]["name"], "till");
  EXPECT_EQ(document["queues"][1]["name"], "bar");
  EXPECT_THAT(linesOf(document["checks"]), Not(Contains(HasSubstr("no queue prints"))));
  EXPECT_THAT(linesOf(document["checks"]), Not(Contains(HasSubstr("the queue '"))));
  EXPECT_EQ(wren(here({"doctor"})).exitStatus, 1);
  EXPECT_EQ(report({"till"})["faults"], ofTheMachine);
}

TEST_F(WrenProgramDoctorQueue, SaysOnPaperWhatItSaysAsJson) {
  addUsbQueue({{"position", "center"}}, ppdText(80));
  const std::string text = wren(here({"doctor"})).out;
  EXPECT_THAT(text, HasSubstr("ok    the scheduler runs\n"));
  EXPECT_THAT(text, HasSubstr("BAD   the queue 'till' lets CUPS centre or turn receipts\n"
                              "      fix: sudo lpadmin -p till -o position-default=top\n"));
  EXPECT_THAT(text, HasSubstr("ok    the printer of 'till' is plugged in\n"));
}

TEST_F(WrenProgramDoctorQueue, FindsQueuesThatAreNotThereOrNotOurs) {
  EXPECT_THAT(checksOf("gone"), ElementsAre("bad: there is no queue 'gone' | sudo wren add-queue "
                                            "gone ADDRESS"));
  scheduler_.add(SchedulerStandIn::Queue{"till", "usb://x", "*NickName: \"Other\"\n"});
  EXPECT_THAT(
      checksOf("till"),
      ElementsAre("bad: the queue 'till' does not print with a PPD of Wren's | sudo lpadmin "
                  "-p till -P " +
                  installedPpd(80)));
}

TEST_F(WrenProgramDoctorQueue, FindsAPpdOfAnotherVersion) {
  scheduler_.setDevices({{"direct", "usb://Wren/80", "Wren 80", "Wren 80"}});
  for (const int paper : {58, 80, 112}) {
    const std::string name = "till" + std::to_string(paper);
    addQueue(name, "usb://Wren/80", paper);
    EXPECT_THAT(findingsOf(name), IsEmpty());
    scheduler_.add(SchedulerStandIn::Queue{
        name + "old",
        "usb://Wren/80",
        withLine(ppdText(paper), "*FileVersion", "*FileVersion: \"1.0\""),
        {{"position", "top"}, {"pdfAutoRotate", "no"}, {"orientation-requested", "3"}}});
    EXPECT_THAT(findingsOf(name + "old"), ElementsAre("bad: the queue '" + name +
                                                      "old' has the PPD of another version | "
                                                      "sudo lpadmin -p " +
                                                      name + "old -P " + installedPpd(paper)));
  }
}

// What is missing is a fault of the machine, not of the queue.
TEST_F(WrenProgramDoctorQueue, DoesNotCompareWithAPpdThatIsMissing) {
  addUsbQueue({{"cpi", "14"}},
              withLine(ppdText(80), "*DefaultHalftoneType", "*DefaultHalftoneType: Burkes"));
  fs::remove(installedPpd(80));
  EXPECT_THAT(findingsOf("till"), IsEmpty());
  EXPECT_THAT(checksOf("till"), Not(Contains(HasSubstr("of this version"))));
  const json queue = report()["queues"][0];
  EXPECT_EQ(queue["paper"], 80);
  EXPECT_EQ(queue["options"], (json{{"cpi", "14"}}));
}

TEST_F(WrenProgramDoctorQueue, SaysThatAPpdCannotBeRead) {
  scheduler_.setDevices({{"direct", "usb://Wren/80", "Wren 80", "Wren 80"}});
  addUsbQueue({}, "*NickName: \"Wren 80\"\n");
  EXPECT_THAT(findingsOf("till"), ElementsAre("note: the PPD of the queue 'till' cannot be read"));
}

TEST_F(WrenProgramDoctorQueue, FindsEachReceiptSettingThatIsMissing) {
  const std::pair<const char*, const char*> kSettings[] = {
      {"position", "top"}, {"pdfAutoRotate", "no"}, {"orientation-requested", "3"}};
  for (const auto& [name, value] : kSettings) {
    addUsbQueue({{name, "6"}}, ppdText(80));
    EXPECT_THAT(findingsOf("till"),
                ElementsAre(std::string("bad: the queue 'till' lets CUPS centre or turn receipts | "
                                        "sudo lpadmin -p till -o ") +
                            name + "-default=" + value));
    done({"remove-queue", "till"});
  }
  scheduler_.add(SchedulerStandIn::Queue{"till", "usb://Wren/80", ppdText(80)});
  EXPECT_THAT(findingsOf("till"),
              ElementsAre("bad: the queue 'till' lets CUPS centre or turn receipts | sudo lpadmin "
                          "-p till -o position-default=top -o pdfAutoRotate-default=no -o "
                          "orientation-requested-default=3"));
}

TEST_F(WrenProgramDoctorQueue, FindsSavedOptionsWithoutEffect) {
  addUsbQueue({{"HalftoneType", "Stuki"}, {"lpi", "6"}, {"notify-recipient", "x"}},
              withLine(ppdText(80), "*DefaultHalftoneType", "*DefaultHalftoneType: Bogus"));
  fs::create_directories(pathOf(".cups"));
  folder_.write(".cups/lpoptions", "Dest till PageType=7 cpi=14\nDest bar PageType=8\n");
  folder_.write("root/etc/cups/lpoptions", "Default till zork=1\n");
  const std::string machineFile = root() + "/etc/cups/lpoptions";
  const auto findings = findingsOf("till");
  ASSERT_EQ(findings.size(), 4U) << testing::PrintToString(findings);
  EXPECT_EQ(findings[0],
            "bad: the queue 'till' has a default that its PPD does not know: HalftoneType=Bogus | "
            "sudo lpadmin -p till -o HalftoneType=None");
  EXPECT_THAT(findings[1],
              testing::StartsWith("bad: the queue 'till' has a saved option without effect: "
                                  "HalftoneType has no choice 'Stuki', did you mean 'Stucki'?"));
  EXPECT_THAT(findings[1], testing::EndsWith(" | sudo lpadmin -p till -R HalftoneType-default"));
  EXPECT_THAT(findings[2],
              testing::StartsWith("bad: " + machineFile +
                                  " has an option for 'till' without effect: "
                                  "'zork' is no option of this printer or of CUPS | sudo sed -i "));
  EXPECT_THAT(findings[2], testing::EndsWith(" " + machineFile));
  EXPECT_THAT(findings[3], testing::StartsWith("bad: " + pathOf(".cups/lpoptions") +
                                               " has an option for 'till' without effect: PageType "
                                               "has no choice '7'"));
  EXPECT_THAT(findings[3],
              HasSubstr(geteuid() == 0 ? " | sudo sed -i " : " | lpoptions -p till -r PageType"));
  EXPECT_THAT(checksOf("till"),
              Not(Contains(HasSubstr("has no saved option that its PPD does not know"))));
}

TEST_F(WrenProgramDoctorQueue, KnowsCustomSizesAsDefaults) {
  addUsbQueue(
      {}, withLine(withLine(ppdText(80), "*DefaultPageSize", "*DefaultPageSize: Custom.72x350mm"),
                   "*DefaultPageRegion", "*DefaultPageRegion: Custom.72x350mm"));
  EXPECT_THAT(findingsOf("till"), IsEmpty());
}

TEST_F(WrenProgramDoctorQueue, NotesOptionsOfJobsThatCupsIgnored) {
  addUsbQueue({}, ppdText(80));
  scheduler_.add(SchedulerStandIn::Job{"till", 7, {{"HalftoneType", "Stucki"}, {"zork", "1"}}});
  scheduler_.add(SchedulerStandIn::Job{"till", 8, {{"PageCutType", "9"}}});
  scheduler_.add(SchedulerStandIn::Job{"bar", 9, {{"PageCutType", "9"}}});
  EXPECT_THAT(findingsOf("till"),
              ElementsAre("note: job 8 had an option that CUPS ignored: PageCutType has no choice "
                          "'9'; it has 0 1 2"));
  auto asked = scheduler_.requests("Get-Jobs").back().attributes;
  EXPECT_EQ(asked["printer-uri"], "ipp://localhost/printers/till");
  EXPECT_EQ(asked["which-jobs"], "all");
  EXPECT_EQ(asked["requested-attributes"], "all");
  EXPECT_NE(asked["requesting-user-name"], "");
}

TEST_F(WrenProgramDoctorQueue, FindsClosedQueues) {
  const std::map<std::string, std::string> receipt = {
      {"position", "top"}, {"pdfAutoRotate", "no"}, {"orientation-requested", "3"}};
  scheduler_.setDevices({{"direct", "usb://Wren/80", "Wren 80", "Wren 80"}});
  using Queue = SchedulerStandIn::Queue;
  scheduler_.add(Queue{"stopped", "usb://Wren/80", ppdText(80), receipt, true, true});
  scheduler_.add(Queue{"closed", "usb://Wren/80", ppdText(80), receipt, false, false});
  EXPECT_THAT(findingsOf("stopped"),
              ElementsAre("bad: the queue 'stopped' is stopped | sudo cupsenable stopped"));
  EXPECT_THAT(findingsOf("closed"),
              ElementsAre("bad: the queue 'closed' takes no jobs | sudo cupsaccept closed"));
}

TEST_F(WrenProgramDoctorQueue, FindsPrintersThatAreNotThere) {
  std::string port;
  {
    const Listener gone;
    port = gone.port();
  }
  addQueue("net", "socket://127.0.0.1:" + port + "/?snmp=false");
  EXPECT_THAT(findingsOf("net"),
              ElementsAre("bad: the printer of 'net' does not answer at 127.0.0.1 port " + port +
                          " | ping 127.0.0.1   # then its cable, its power and its address"));
  scheduler_.setDevices({{"direct", "usb://Wren/80", "Wren 80", "Wren 80"},
                         {"direct", "usb://Wren/58", "Wren 58", "Wren 58"}});
  addQueue("here", "usb://Wren/58");
  addQueue("away", "usb://Wren/112");
  addQueue("file", "file:/dev/null");
  EXPECT_THAT(findingsOf("here"), IsEmpty());
  EXPECT_THAT(checksOf("here"), Contains("ok: the printer of 'here' is plugged in"));
  auto asked = scheduler_.requests("CUPS-Get-Devices").back().attributes;
  EXPECT_EQ(asked["include-schemes"], "usb");
  EXPECT_EQ(asked["timeout"], "10");
  EXPECT_THAT(findingsOf("away"),
              ElementsAre("bad: the printer of 'away' is not found at usb://Wren/112 | sudo wren "
                          "devices   # shows what is plugged in; then sudo wren add-queue away "
                          "ADDRESS"));
  EXPECT_THAT(findingsOf("file"),
              ElementsAre("note: whether file:/dev/null (queue 'file') can be reached is not known "
                          "here"));
}

// A printer that is switched off answers nothing at all; five seconds are waited for it.
TEST_F(WrenProgramDoctorQueue, GivesUpOnAPrinterThatDoesNotAnswer) {
  const FileDescriptor silent(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  ASSERT_EQ(bind(silent.get(), generic, length), 0);
  ASSERT_EQ(listen(silent.get(), 0), 0);
  ASSERT_EQ(getsockname(silent.get(), generic, &length), 0);
  // Its queue of connections is full.
  std::vector<FileDescriptor> waiting;
  for (int i = 0; i < 3; ++i) {
    waiting.emplace_back(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    static_cast<void>(connect(waiting.back().get(), generic, length));
  }
  addQueue("till", "socket://127.0.0.1:" + std::to_string(ntohs(address.sin_port)));
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_THAT(findingsOf("till"), Contains(HasSubstr("does not answer at 127.0.0.1 port ")));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(4900));
}

TEST_F(WrenProgramDoctorQueue, SaysThatOnlyRootSeesAUsbPrinter) {
  addQueue("till", "usb://Nobody/has-this");
  scheduler_.refuse(Refusal::kNeedsPassword);
  becomeOrdinary();
  EXPECT_THAT(findingsOf("till"),
              ElementsAre("note: whether the printer of 'till' is plugged in, only root can see: "
                          "sudo wren doctor till"));
}

class WrenProgramDoctorMachine : public WrenProgramDoctorQueue {
 protected:
  std::vector<std::string> findings(const std::vector<std::string>& arguments = {}) {
    std::vector<std::string> lines = linesOf(report(arguments)["checks"]);
    std::erase_if(lines, [](const std::string& line) {
      return line.starts_with("ok: ") || line.find("no queue prints") != std::string::npos ||
             line.find("without the font") != std::string::npos;
    });
    return lines;
  }
  std::string filters() const { return root() + WREN_CUPS_SERVERBIN "/filter"; }
};

TEST_F(WrenProgramDoctorMachine, FindsNothingInASoundInstallation) {
  if (geteuid() != 0) GTEST_SKIP() << "the filter has to belong to root";
  utsname name = {};
  ASSERT_EQ(uname(&name), 0);
  const std::string machine = std::string("(") + name.machine + ")";
  EXPECT_THAT(
      linesOf(report()["checks"]),
      ElementsAre("ok: " + filters() + " belongs to root and only root may change it",
                  "ok: " + filters() + "/rastertowren belongs to root and only root may change it",
                  "ok: the filter runs on this machine " + machine,
                  "ok: " + filters() + "/commandtowren belongs to root and only root may change it",
                  "ok: the filter for commands runs on this machine " + machine,
                  "ok: " + installedPpd(58) + " is sound", "ok: " + installedPpd(80) + " is sound",
                  "ok: " + installedPpd(112) + " is sound",
                  "ok: " + root() + "/var/spool/cups/tmp holds 0 MB of debug images",
                  "ok: the scheduler runs",
                  "note: no queue prints with Wren; add one with: sudo wren add-queue NAME ADDRESS "
                  "[58|80|112]"));
}

TEST_F(WrenProgramDoctorMachine, FindsFiltersThatCupsRefuses) {
  if (geteuid() != 0) GTEST_SKIP() << "the filter has to belong to root";
  for (const std::string& path :
       {filters(), filters() + "/rastertowren", filters() + "/commandtowren"}) {
    const std::string cure = " | sudo chown root: " + path + " && sudo chmod 755 " + path;
    for (const unsigned mode : {0775U, 0757U, 0745U, 0754U, 0455U, 02775U}) {
      fs::permissions(path, fs::perms(mode));
      char octal[8];
      std::snprintf(octal, sizeof octal, "%o", mode);
      EXPECT_THAT(findings(), ElementsAre("bad: " + path + " has owner 0 and mode " + octal +
                                          "; CUPS refuses it" + cure));
    }
    // It stays unread and is not run.
    EXPECT_THAT(linesOf(report()["checks"]), Not(Contains("ok: the filter for commands runs")));
    fs::permissions(path, fs::perms(0755));
    ASSERT_EQ(chown(path.c_str(), 65534, 0), 0);
    EXPECT_THAT(findings(), ElementsAre("bad: " + path +
                                        " has owner 65534 and mode 755; CUPS refuses it" + cure));
    ASSERT_EQ(chown(path.c_str(), 0, 0), 0);
    EXPECT_THAT(findings(), IsEmpty());
  }
}

TEST_F(WrenProgramDoctorMachine, RunsNoFilterThatOthersCouldHaveChanged) {
  const std::string script = "#!/bin/sh\ntouch " + pathOf("ran") + "\nexit 1\n";
  const std::string filter =
      folder_.write("root" WREN_CUPS_SERVERBIN "/filter/rastertowren", script);
  fs::permissions(filter, fs::perms(0757));
  report();
  EXPECT_FALSE(fs::exists(pathOf("ran")));
  fs::permissions(filter, fs::perms(0755));
  fs::permissions(filters(), fs::perms(0757));
  report();
  EXPECT_FALSE(fs::exists(pathOf("ran")));
  fs::permissions(filters(), fs::perms(0755));
  report();
  EXPECT_EQ(fs::exists(pathOf("ran")), geteuid() == 0);
}

TEST_F(WrenProgramDoctorMachine, FindsFiltersThatAreMissingOrDoNotRun) {
  if (geteuid() != 0) GTEST_SKIP() << "the filter has to belong to root";
  utsname name = {};
  ASSERT_EQ(uname(&name), 0);
  const std::pair<const char*, const char*> kFilters[] = {
      {"rastertowren", "the filter"}, {"commandtowren", "the filter for commands"}};
  for (const auto& [file, words] : kFilters) {
    const std::string path = filters() + "/" + file;
    const std::string program = std::string("root") + WREN_CUPS_SERVERBIN "/filter/" + file;
    folder_.write(program, "#!/bin/sh\nexit 4\n");
    EXPECT_THAT(findings(),
                ElementsAre(std::string("bad: ") + words + " does not run on this machine (" +
                            name.machine + ", status 4) | " + kReinstall));
    fs::remove(path);
    EXPECT_THAT(findings(), ElementsAre(std::string("bad: ") + words + " is not installed as " +
                                        path + " | " + kReinstall));
    folder_.write(program, "#!/bin/sh\nexit 1\n");
    fs::permissions(path, fs::perms(0755));
  }
}

TEST_F(WrenProgramDoctorMachine, FindsPpdsThatAreMissingOrDamaged) {
  for (const int paper : {58, 80, 112}) {
    const std::string path = installedPpd(paper);
    const std::string name = path.substr(folder_.path().string().size() + 1);
    const std::string damaged = "bad: the PPD " + path + " is damaged (cupstestppd -I filters " +
                                path + ") | " + kReinstall;
    fs::remove(path);
    EXPECT_THAT(findings(), Contains("bad: the PPD " + path + " is missing | " + kReinstall));
    folder_.write(name, "");
    EXPECT_THAT(findings(), Contains(damaged));
    folder_.write(name, ppdText(paper));
    EXPECT_THAT(findings(), Not(Contains(HasSubstr("the PPD "))));
  }
}

// A PPD that was cut off is one that CUPS still reads: each option of the filter has to be there.
TEST_F(WrenProgramDoctorMachine, FindsEachOptionThatAPpdLacks) {
  const std::string name = installedPpd(80).substr(folder_.path().string().size() + 1);
  std::string text = ppdText(80);
  for (auto at = text.find("*OpenUI *"); at != std::string::npos; at = text.find("*OpenUI *", at)) {
    const std::string keyword = text.substr(at + 9, text.find_first_of("/:", at) - at - 9);
    const auto end = text.find("*CloseUI: *" + keyword, at);
    ASSERT_NE(end, std::string::npos) << keyword;
    const auto next = text.find('\n', end);
    // The filter does not read these.
    if (keyword != "PageRegion" && keyword != "ColorModel" && keyword != "Resolution") {
      folder_.write(name, text.substr(0, at) + text.substr(next + 1));
      EXPECT_THAT(findings(), Contains(HasSubstr("wren80.ppd is damaged"))) << keyword;
    }
    at = next;
  }
}

TEST_F(WrenProgramDoctorMachine, AsksTheTesterOfCupsForEachPpd) {
  standIn("cupstestppd", "echo \"$@\" >>" + pathOf("asked") + "\nexit 1\n");
  std::vector<std::string> expected;
  std::string asked;
  for (const int paper : {58, 80, 112}) {
    const std::string path = installedPpd(paper);
    expected.push_back("bad: the PPD " + path + " is damaged (cupstestppd -I filters " + path +
                       ") | " + kReinstall);
    asked += "-q -I filters " + path + "\n";
  }
  const auto found = findings();
  for (const std::string& line : expected) EXPECT_THAT(found, Contains(line));
  EXPECT_EQ(bytesOf("asked"), asked);
}

TEST_F(WrenProgramDoctorMachine, NamesThePackageOfAMissingProgram) {
  // Programs of administrators are found without PATH, Ghostscript is not.
  environment_.push_back("PATH=" + pathOf("bin"));
  if (fs::exists("/usr/sbin/gs") || fs::exists("/sbin/gs") || fs::exists("/usr/local/sbin/gs")) {
    GTEST_SKIP() << "Ghostscript cannot be hidden here";
  }
  EXPECT_THAT(findings(),
              Contains("bad: the program gs is missing | sudo apt install ghostscript"));
  standIn("gs", "exit 0\n");
  EXPECT_THAT(findings(), Not(Contains(HasSubstr("the program "))));
}

TEST_F(WrenProgramDoctorMachine, AdvisesEachFontThatIsMissing) {
  const std::string mono =
      "note: text files may print with boxes without the font DejaVu Sans Mono: sudo apt install "
      "fonts-dejavu-core";
  const std::string chinese =
      "note: Japanese and Chinese text files print as boxes without the font AR PL UMing CN: sudo "
      "apt install fonts-arphic-uming";
  const auto fonts = [&](const std::string& script) {
    standIn("fc-list", "[ \"$*\" = ': family' ] || exit 9\n" + script);
    std::vector<std::string> lines = linesOf(report()["checks"]);
    std::erase_if(lines, [](const std::string& line) {
      return line.find("without the font") == std::string::npos;
    });
    return lines;
  };
  EXPECT_THAT(fonts("echo Sans\n"), ElementsAre(mono, chinese));
  EXPECT_THAT(fonts("echo 'DejaVu Sans Mono'\n"), ElementsAre(chinese));
  EXPECT_THAT(fonts("echo 'AR PL UMing CN,Uming'\n"), ElementsAre(mono));
  EXPECT_THAT(fonts("exit 1\n"), IsEmpty()) << "nothing is known then";
}

TEST_F(WrenProgramDoctorMachine, WatchesTheFolderOfTheDebugImages) {
  const std::string folder = root() + "/var/spool/cups/tmp";
  const auto about = [&] {
    std::vector<std::string> lines = linesOf(report()["checks"]);
    std::erase_if(lines,
                  [&](const std::string& line) { return line.find(folder) == std::string::npos; });
    return lines;
  };
  const auto write = [&](const std::string& name, std::size_t megabytes) {
    const std::string block(1'000'000, 'x');
    const FilePtr file(std::fopen((folder + "/" + name).c_str(), "wb"));
    for (std::size_t i = 0; i < megabytes; ++i)
      std::fwrite(block.data(), 1, block.size(), file.get());
  };
  write("other_1.bmp", 3);
  write("origin_1.png", 3);
  EXPECT_THAT(about(), ElementsAre("ok: " + folder + " holds 0 MB of debug images"));
  write("origin_1.bmp", 3);
  write("dithered_1.bmp", 2);
  // What a file takes is rounded up to blocks.
  EXPECT_THAT(about(), ElementsAre("ok: " + folder + " holds 4 MB of debug images"));
}

TEST_F(WrenProgramDoctorMachine, NamesTheCureForTooManyDebugImages) {
  const std::string folder = root() + "/var/spool/cups/tmp";
  const auto fill = [&](off_t bytes) {
    const FileDescriptor file(
        open((folder + "/dithered_1.bmp").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    return fallocate(file.get(), 0, 0, bytes) == 0;
  };
  if (!fill(204'000'000)) GTEST_SKIP() << "no room, or a file system that allocates nothing";
  EXPECT_THAT(findings(), Not(Contains(HasSubstr(folder))));
  ASSERT_TRUE(fill(206'000'000));
  for (const char* name : {"/origin_1.bmp", "/origin_1.png", "/other_1.bmp"}) {
    folder_.write("root/var/spool/cups/tmp" + std::string(name), "");
  }
  const std::string found = "bad: " + folder + " holds 201 MB of debug images | sudo ";
  const auto all = findings();
  const auto at = std::find_if(all.begin(), all.end(),
                               [&](const std::string& line) { return line.starts_with(found); });
  ASSERT_NE(at, all.end()) << testing::PrintToString(all);
  ASSERT_EQ(std::system(at->substr(found.size()).c_str()), 0);
  std::vector<std::string> left;
  for (const auto& entry : fs::directory_iterator(folder)) left.push_back(entry.path().filename());
  EXPECT_THAT(left, testing::UnorderedElementsAre("origin_1.png", "other_1.bmp"));
}

TEST_F(WrenProgramDoctorMachine, AsksRootToLookIntoTheSpoolFolder) {
  const std::string spool = root() + "/var/spool/cups";
  becomeOrdinary();
  fs::permissions(spool, fs::perms::none);
  EXPECT_THAT(linesOf(report()["checks"]),
              Contains("note: " + spool +
                       " may not be looked into; for the debug images call: sudo wren doctor"));
  fs::permissions(spool, fs::perms(0755));
}

}  // namespace
}  // namespace wren::cli
