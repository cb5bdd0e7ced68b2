// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/usb_questions.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <thread>

#include "app/network_printer.h"

namespace wren::app {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using Answers = PrinterTraits::Answers;

constexpr milliseconds kAskAgain(1'000);

// A whole number of USB packets of any size: a packet that does not fit is an error.
constexpr std::size_t kReadBytes = 1024;

// Noise in more reads than this is no answer.
constexpr int kMostReads = 8;

// Each question twice, the second time in reverse. An answer does not say what it answers: if one
// that nobody read is still there, each is taken for that to the question before, and the two
// halves differ, unless all answers are alike and it makes no difference.
constexpr std::array<std::uint8_t, 2 * std::size_t{kStatusRequests}> kRound = {1, 4, 2, 3,
                                                                               3, 2, 4, 1};

// The first two rounds may differ because the printer has changed: a drawer opens at the end of a
// job. After that there is an answer too many.
constexpr int kMostRounds = 4;
constexpr int kRoundsBeforeSkip = 2;

/// The questions of one moment.
class UsbRounds {
 public:
  explicit UsbRounds(pappl_device_t* device) : device_(device) {}

  /// @return nothing if an answer is missing.
  std::optional<StatusAnswers> ask() {
    for (int round = 0; round < kMostRounds; ++round) {
      if (round >= kRoundsBeforeSkip && !readAnswer()) return std::nullopt;
      StatusAnswers answers = {};
      const Outcome outcome = askRound(answers);
      if (outcome == Outcome::kAgree) return answers;
      if (outcome == Outcome::kSilent) return std::nullopt;
    }
    return std::nullopt;
  }

 private:
  enum class Outcome { kAgree, kDiffer, kSilent };

  Outcome askRound(StatusAnswers& answers) {
    bool agree = true;
    for (const std::uint8_t n : kRound) {
      const auto answer = askOne(n);
      if (!answer) return Outcome::kSilent;
      auto& known = answers[n - 1U];
      agree = agree && (!known || known == answer);
      known = answer;
    }
    return agree ? Outcome::kAgree : Outcome::kDiffer;
  }

  std::optional<std::uint8_t> askOne(std::uint8_t n) {
    const auto request = statusRequest(n);
    if (papplDeviceWrite(device_, request.data(), request.size()) < 0) return std::nullopt;
    papplDeviceFlush(device_);
    return readAnswer();
  }

  // What stands before the last answer of a read was there before the question.
  std::optional<std::uint8_t> readAnswer() {
    std::array<std::uint8_t, kReadBytes> bytes;
    for (int reads = 0; reads < kMostReads; ++reads) {
      const ssize_t count = papplDeviceRead(device_, bytes.data(), bytes.size());
      if (count <= 0) return std::nullopt;
      std::optional<std::uint8_t> last;
      std::for_each_n(bytes.begin(), count, [&](std::uint8_t byte) {
        const auto answer = reader_.take(byte);
        if (answer && answer->kind == AnswerKind::kStatus) last = answer->byte;
      });
      if (last) return last;
    }
    return std::nullopt;
  }

  pappl_device_t* device_;
  AnswerReader reader_;
};

// False if the job is cancelled meanwhile.
bool pause(CancelCheck cancel) {
  const auto end = Clock::now() + kAskAgain;
  while (!cancel.isCancelled()) {
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now());
    if (left <= milliseconds(0)) return true;
    std::this_thread::sleep_for(std::min(left, NetworkPrinter::kCancelLatency));
  }
  return false;
}

}  // namespace

std::shared_ptr<KnownPrinter> findUsbPrinter(const char* deviceUri) {
  static KnownPrinters printers;
  const std::string_view uri = deviceUri == nullptr ? "" : deviceUri;
  return uri.starts_with("usb://") ? printers.find(std::string(uri)) : nullptr;
}

std::optional<PrinterStatus> askUsbPrinter(pappl_device_t* device,
                                           const std::shared_ptr<KnownPrinter>& printer) {
  const auto turn = KnownPrinter::tryTurn(printer);
  if (turn == nullptr || turn->traits().status == Answers::kNever) return std::nullopt;
  Answers& answers = turn->traits().status;
  const auto round = UsbRounds(device).ask();
  PrinterCondition condition;
  if (round) {
    condition.status = statusOf(*round);
    answers = Answers::kYes;
  } else {
    answers = answers == Answers::kYes ? Answers::kUnknown : Answers::kNever;
  }
  printer->setCondition(condition);
  return condition.status;
}

bool waitForUsbPrinter(pappl_device_t* device, const std::shared_ptr<KnownPrinter>& printer,
                       CancelCheck cancel,
                       const std::function<void(const PrinterCondition&)>& onCondition) {
  for (;;) {
    const auto status = askUsbPrinter(device, printer);
    onCondition(printer->condition());
    if (!status || status->isReady()) return true;
    if (!pause(cancel)) return false;
  }
}

}  // namespace wren::app
