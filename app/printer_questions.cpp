// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/printer_questions.h"

#include <algorithm>
#include <utility>

namespace wren::app {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using Answers = PrinterTraits::Answers;

// The most useful first, for printers that answer only some.
constexpr std::uint8_t kOrder[kStatusRequests] = {1, 4, 2, 3};

milliseconds timeUntil(Clock::time_point when) {
  return std::max(std::chrono::ceil<milliseconds>(when - Clock::now()), milliseconds(0));
}

}  // namespace

LinkResult PrinterQuestions::send(std::span<const std::uint8_t> request, const Patience& patience) {
  std::size_t taken = 0;
  return link_.write(request, patience, taken);
}

void PrinterQuestions::readAnswers() {
  for (const std::uint8_t byte : link_.takeReceived()) {
    const auto answer = reader_.take(byte);
    if (!answer) continue;
    if (answer->kind == AnswerKind::kPrinted) {
      printedSeen_ = true;
      // What stands before an executed request was received: answers still due never come.
      due_.erase(due_.begin(), due_.begin() + static_cast<std::ptrdiff_t>(dueBeforePrinted_));
      dueBeforePrinted_ = 0;
    } else if (!due_.empty()) {
      arrived_[due_.front() - 1] = answer->byte;
      due_.pop_front();
      if (dueBeforePrinted_ > 0) --dueBeforePrinted_;
    }
  }
}

// Asks one question and waits until no answer is due.
LinkResult PrinterQuestions::ask(std::uint8_t n, const Patience& patience) {
  const auto deadline = Clock::now() + patience.limit;
  due_.push_back(n);
  LinkResult result = send(statusRequest(n), patience);
  while (result == LinkResult::kDone) {
    readAnswers();
    if (due_.empty()) return LinkResult::kDone;
    result = link_.waitForAnswer({timeUntil(deadline), patience.cancel});
  }
  readAnswers();
  return due_.empty() ? LinkResult::kDone : result;
}

// Waits until no answer of an earlier question is due. False: nothing else can be asked now.
bool PrinterQuestions::settleDue(const Patience& patience) {
  if (due_.empty()) return true;
  const std::uint8_t n = due_.back();
  if (n != kCause) arrived_[n - 1].reset();
  if (ask(n, patience) == LinkResult::kDone) return true;
  // Requests inside a job may wait in front of a full buffer. Others were lost if a later one of
  // their kind is answered: some printers answer only when they are on-line.
  if (n == kCause || !arrived_[n - 1]) return false;
  due_.clear();
  dueBeforePrinted_ = 0;
  return true;
}

std::optional<PrinterStatus> PrinterQuestions::askStatus(const CancelCheck& cancel) {
  if (traits_.status == Answers::kNever) return std::nullopt;
  readAnswers();
  const auto limit = traits_.status == Answers::kUnknown ? kFirstLimit : kLimit;
  const auto deadline = Clock::now() + limit;
  if (!settleDue({kLimit, cancel})) {
    if (const auto cause = takeCause())
      last_ = withCause(last_, *cause);
    else
      return std::nullopt;
    return last_;
  }
  arrived_ = {};
  LinkResult result = LinkResult::kDone;
  for (const std::uint8_t n : kOrder) {
    result = ask(n, {timeUntil(deadline), cancel});
    if (result != LinkResult::kDone) break;
  }
  const StatusAnswers answers = std::exchange(arrived_, {});
  if (answers[0]) {
    traits_.status = Answers::kYes;
    if (answers[kCause - 1]) traits_.tellsCause = true;
    // One that answers only some of them.
    due_.clear();
    last_ = statusOf(answers);
    return last_;
  }
  if (result == LinkResult::kTimedOut && traits_.status == Answers::kUnknown) {
    traits_.status = Answers::kNever;
  }
  return std::nullopt;
}

std::optional<std::uint8_t> PrinterQuestions::takeCause() {
  readAnswers();
  return std::exchange(arrived_[kCause - 1], std::nullopt);
}

void PrinterQuestions::tryPrinted(const CancelCheck& cancel) {
  if (traits_.printed != Answers::kUnknown) return;
  const Patience patience = {kFirstLimit, cancel};
  if (requestPrinted(patience) != LinkResult::kDone) return;
  const LinkResult result = waitForPrinted(patience);
  if (result == LinkResult::kDone) traits_.printed = Answers::kYes;
  if (result == LinkResult::kTimedOut) traits_.printed = Answers::kNever;
}

LinkResult PrinterQuestions::requestPrinted(const Patience& patience) {
  readAnswers();
  printedSeen_ = false;
  dueBeforePrinted_ = due_.size();
  return send(kPrintedRequest, patience);
}

LinkResult PrinterQuestions::waitForPrinted(const Patience& patience) {
  const auto deadline = Clock::now() + patience.limit;
  for (;;) {
    readAnswers();
    if (printedSeen_) return LinkResult::kDone;
    const LinkResult result = link_.waitForAnswer({timeUntil(deadline), patience.cancel});
    if (result == LinkResult::kDone) continue;
    readAnswers();
    return printedSeen_ ? LinkResult::kDone : result;
  }
}

}  // namespace wren::app
