// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/printer_questions.h"

#include <algorithm>

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

// Returns the last status byte among what has come.
std::optional<std::uint8_t> PrinterQuestions::readAnswers() {
  std::optional<std::uint8_t> status;
  for (const std::uint8_t byte : link_.takeReceived()) {
    const auto answer = reader_.take(byte);
    if (!answer) continue;
    if (answer->kind == AnswerKind::kStatus) status = answer->byte;
    if (answer->kind == AnswerKind::kPrinted) printedSeen_ = true;
  }
  return status;
}

LinkResult PrinterQuestions::waitForStatus(const Patience& patience,
                                           std::optional<std::uint8_t>& byte) {
  const auto deadline = Clock::now() + patience.limit;
  for (;;) {
    const LinkResult result = link_.waitForAnswer({timeUntil(deadline), patience.cancel});
    byte = readAnswers();
    if (byte || result != LinkResult::kDone) return byte ? LinkResult::kDone : result;
  }
}

std::optional<PrinterStatus> PrinterQuestions::askStatus(const CancelCheck& cancel) {
  if (traits_.status == Answers::kNever) return std::nullopt;
  // A late answer to an earlier question must not be taken for one to this.
  readAnswers();
  const auto deadline = Clock::now() + kLimit;
  StatusAnswers answers;
  LinkResult result = LinkResult::kDone;
  for (const std::uint8_t n : kOrder) {
    result = send(statusRequest(n), {timeUntil(deadline), cancel});
    if (result != LinkResult::kDone) break;
    result = waitForStatus({timeUntil(deadline), cancel}, answers[n - 1]);
    if (result != LinkResult::kDone) break;
  }
  if (answers[0]) {
    traits_.status = Answers::kYes;
    return statusOf(answers);
  }
  if (result == LinkResult::kTimedOut && traits_.status == Answers::kUnknown) {
    traits_.status = Answers::kNever;
  }
  return std::nullopt;
}

void PrinterQuestions::tryPrinted(const CancelCheck& cancel) {
  if (traits_.printed != Answers::kUnknown) return;
  const Patience patience = {kLimit, cancel};
  if (requestPrinted(patience) != LinkResult::kDone) return;
  const LinkResult result = waitForPrinted(patience);
  if (result == LinkResult::kDone) traits_.printed = Answers::kYes;
  if (result == LinkResult::kTimedOut) traits_.printed = Answers::kNever;
}

LinkResult PrinterQuestions::requestPrinted(const Patience& patience) {
  readAnswers();
  printedSeen_ = false;
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
