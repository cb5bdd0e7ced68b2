// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Jobs and control commands in any order for the software printer; with `kFieldsMark`, jobs of
// printer commands too. Nothing may be printed twice or out of order, nothing may be lost but by a
// fault that loses something, and every job ends once.

#include "preview/software_printer.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "fuzz/input.h"
#include "fuzz/printer_commands.h"

namespace wren::preview {
namespace {

using Bytes = std::vector<std::uint8_t>;

// A command is at most a header and 65,535 columns.
constexpr std::size_t kLongestCommand = 65'540;

constexpr const char* kControls[] = {"paper ok",
                                     "paper near-end",
                                     "paper out",
                                     "cover open",
                                     "cover closed",
                                     "error none",
                                     "error recoverable",
                                     "error cutter",
                                     "error temperature",
                                     "button held",
                                     "error unrecoverable",
                                     "button released",
                                     "drawer high",
                                     "drawer low",
                                     "answers on",
                                     "answers off",
                                     "stall",
                                     "go",
                                     "reset",
                                     "vanish",
                                     "return",
                                     "power off",
                                     "power on",
                                     "baud 0",
                                     "baud 9600",
                                     "speed 0",
                                     "speed 100",
                                     "buffer 4",
                                     "buffer 64",
                                     "accept-delay 5"};

constexpr const char* kCures[] = {"paper ok", "cover closed", "error none", "button released", "go",
                                  "power on", "return",       "baud 0",     "speed 0"};

constexpr const char* kUnits[] = {"", " mm", " bytes", " ms"};

// The commands of a stream without those that are executed when they are received.
std::vector<Bytes> turnsOf(const Bytes& stream) {
  std::vector<Bytes> commands;
  escpos::Splitter splitter([&](escpos::CommandKind kind, std::span<const std::uint8_t> bytes) {
    if (!escpos::isRealTime(kind)) commands.emplace_back(bytes.begin(), bytes.end());
  });
  splitter.feed(stream);
  splitter.finish();
  return commands;
}

// Whether all of `part` is in `whole`, in its order.
bool isSubsequence(const std::vector<Bytes>& part, const std::vector<Bytes>& whole) {
  std::size_t found = 0;
  for (const Bytes& one : whole) {
    if (found < part.size() && part[found] == one) ++found;
  }
  return found == part.size();
}

class Run : private PrinterOutput {
 public:
  explicit Run(fuzz::Input input) : input_(input), printer_(*this, 203, now_) {}

  void operator()() {
    hasFields_ = input_.takeFieldsMark();
    const bool isAbandoned = hasFields_ && input_.below(2) == 1;
    for (int step = 0; step < 2000 && input_.left() > 0; ++step) {
      oneStep();
      fuzz::check(printer_.bufferedBytes() <= std::size_t{64 << 10} + kLongestCommand,
                  "the buffer is bounded");
    }
    if (isAbandoned) {
      isLossy_ = true;
      printer_.abandon("the printer is gone");
    } else {
      recover();
    }
    for (auto& [id, job] : jobs_) checkJob(job);
    fuzz::check(printer_.bufferedBytes() == 0, "a printer that is well empties its buffer");
  }

 private:
  struct Job {
    Bytes received;
    std::vector<Bytes> printed;  // commands; the bytes of a run one by one
    int ends = 0;
  };

  void recover() {
    for (const char* cure : kCures) control(cure);
    pass(std::chrono::hours(400));
    for (const char* cure : kCures) control(cure);
    if (printer_.receiving()) printer_.endInput("", now_);
  }

  void oneStep() {
    switch (input_.below(hasFields_ ? 5 : 4)) {
      case 0:
        send(input_.bytes(std::min<std::size_t>(input_.byte(), input_.left())));
        break;
      case 1:
        send(input_.filling(input_.byte() * std::size_t{64}));
        break;
      case 2:
        control(text());
        break;
      case 4:
        send(fuzz::printerCommandsFrom(input_, 1 + input_.below(8)).bytes);
        break;
      default:
        pass(std::chrono::milliseconds(input_.byte() * 10));
        if (input_.below(2) == 1 && printer_.receiving()) printer_.endInput("", now_);
        break;
    }
  }

  std::string text() {
    std::string line = kControls[input_.below(std::size(kControls))];
    const std::uint32_t unit = input_.below(std::size(kUnits));
    if (unit == 0) return line;
    return line + " after " + std::to_string(input_.byte()) + kUnits[unit];
  }

  void control(const std::string& line) {
    const ParsedControl parsed = parseControl(line);
    fuzz::check(parsed.control.has_value(), "the command is known");
    using enum ControlKind;
    if (parsed.control->kind == kPowerOff) isLossy_ = true;
    printer_.control(*parsed.control, now_);
  }

  void pass(std::chrono::milliseconds time) {
    now_ += time;
    printer_.advance(now_);
    static_cast<void>(printer_.room(now_));
    const auto next = printer_.nextEvent();
    fuzz::check(!next || *next > now_, "what is due has happened");
  }

  // What the printer does not take is lost on its way, and no part of the job.
  void send(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
      if (!printer_.receiving() && printer_.isReachable()) printer_.beginJob(++last_);
      const std::size_t count = std::min(printer_.room(now_), bytes.size());
      if (count == 0) return;
      auto& received = jobs_[*printer_.receiving()].received;
      received.insert(received.end(), bytes.begin(), bytes.begin() + count);
      printer_.take(bytes.first(count), now_);
      bytes = bytes.subspan(count);
    }
  }

  void checkJob(const Job& job) const {
    fuzz::check(job.ends == 1, "a job ends once");
    const auto received = turnsOf(job.received);
    fuzz::check(isSubsequence(job.printed, received), "what is printed was received, in its order");
    fuzz::check(isLossy_ || job.printed == received, "nothing is lost without a fault that loses");
  }

  void print(JobId job, escpos::CommandKind kind, std::span<const std::uint8_t> bytes) override {
    // A recovery may clear the buffer.
    if (kind == escpos::CommandKind::kRealTimeRecovery) isLossy_ = true;
    if (escpos::isRealTime(kind)) return;
    Job& one = jobs_[job];
    fuzz::check(one.ends == 0, "nothing is printed after the end of a job");
    const bool isRun = kind == escpos::CommandKind::kNul || kind == escpos::CommandKind::kUnknown;
    const std::size_t size = isRun ? 1 : bytes.size();
    for (; !bytes.empty(); bytes = bytes.subspan(size)) {
      one.printed.emplace_back(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
    }
  }
  void answer(JobId, std::uint8_t byte) override {
    fuzz::check((byte & 0x81) == 0 || byte < 0x10, "an answer is a status byte");
  }
  void endJob(JobId job, const std::string&) override { ++jobs_[job].ends; }
  void resetConnection(JobId job) override {
    fuzz::check(jobs_[job].ends == 0, "a connection is reset before its job ends");
  }

  fuzz::Input input_;
  bool hasFields_ = false;
  SoftwarePrinter::Time now_{std::chrono::hours(1)};
  SoftwarePrinter printer_;
  std::map<JobId, Job> jobs_;
  JobId last_ = 0;
  bool isLossy_ = false;
};

}  // namespace
}  // namespace wren::preview

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  wren::preview::Run(fuzz::Input(data, size))();
  return 0;
}
