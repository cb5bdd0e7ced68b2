// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/printer_session.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace wren::app {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using Answers = PrinterTraits::Answers;

constexpr const char* kCancelled = "cancelled";
constexpr const char* kTakesNothing = "the printer takes no bytes";

const PrinterCondition kAway = {true, false, std::nullopt};

// For an idle printer to close its side: only its answer was on the way, and it has come.
constexpr milliseconds kIdleClose(100);

}  // namespace

PrinterSession::PrinterSession(NetworkAddress address, std::shared_ptr<KnownPrinter> printer,
                               bool asksStatus, const SessionTimes& times)
    : address_(std::move(address)),
      printer_(std::move(printer)),
      asksStatus_(asksStatus),
      times_(times),
      condition_(printer_->condition()) {}

void PrinterSession::attach(CancelCheck cancel, OnCondition onCondition) {
  hasJob_ = true;
  cancel_ = cancel;
  onCondition_ = std::move(onCondition);
  // PAPPL keeps a device open for the job that follows.
  if (state_ != State::kBegun) state_ = State::kFresh;
  if (state_ == State::kFresh) fault_.clear();
}

bool PrinterSession::fail(const std::string& fault) {
  state_ = State::kFailed;
  fault_ = fault;
  setStalled(false);
  // It may have gone with the connection.
  printer_->makeDue();
  link_.reset();
  questions_.reset();
  bandRequests_.reset();
  turn_.reset();
  return false;
}

void PrinterSession::setCondition(const PrinterCondition& condition) {
  if (condition == condition_) return;
  condition_ = condition;
  printer_->setCondition(condition);
  if (onCondition_) onCondition_(condition);
}

void PrinterSession::setStalled(bool stalled) {
  PrinterCondition condition = condition_;
  condition.stalled = stalled;
  setCondition(condition);
}

void PrinterSession::setStatus(const std::optional<PrinterStatus>& status) {
  if (!status) return;
  PrinterCondition condition = condition_;
  condition.status = status;
  setCondition(condition);
}

// From here on progress is watched. A printer that was stalled is so until it makes some.
void PrinterSession::watch() {
  if (!condition_.stalled) lastProgress_ = Clock::now();
}

// A printer makes progress if it takes bytes or answers what stands between them: a slow one is
// not stalled.
void PrinterSession::noteProgress(bool hasProgressed) {
  PrinterCondition condition = condition_;
  const auto cause = questions_->takeCause();
  if (cause) condition.status = withCause(condition.status.value_or(PrinterStatus()), *cause);
  if (hasProgressed || cause) lastProgress_ = Clock::now();
  condition.stalled = Clock::now() - lastProgress_ >= times_.stalled;
  setCondition(condition);
}

// Bytes without a job wait for a limited time.
bool PrinterSession::hasWaitedEnough() const {
  return !hasJob_ && Clock::now() - lastProgress_ >= times_.unattended;
}

// Waits before another try. False if the job is cancelled meanwhile.
bool PrinterSession::pause() {
  const auto end = Clock::now() + times_.retry;
  while (!cancel_.isCancelled()) {
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now());
    if (left <= milliseconds(0)) return true;
    std::this_thread::sleep_for(std::min(left, NetworkPrinter::kCancelLatency));
  }
  return false;
}

bool PrinterSession::waitForTurn() {
  const auto deadline = Clock::now() + times_.unattended;
  while (!cancel_.isCancelled() && (hasJob_ || Clock::now() < deadline)) {
    turn_ = KnownPrinter::tryTurn(printer_);
    if (turn_ != nullptr) {
      condition_ = printer_->condition();
      if (onCondition_) onCondition_(condition_);
      return true;
    }
    // Short: the other session may be a question that takes milliseconds.
    std::this_thread::sleep_for(milliseconds(5));
  }
  return false;
}

bool PrinterSession::connect() {
  const LinkResult result = link_.connect(address_, {times_.connect, cancel_});
  if (result == LinkResult::kCancelled) return false;
  if (result != LinkResult::kDone) {
    fault_ =
        result == LinkResult::kTimedOut ? "no answer to the attempt to connect" : link_.error();
    // It may be another printer that comes back, or the same one with answers.
    turn_->traits() = {};
    setCondition(kAway);
    return false;
  }
  PrinterCondition condition = condition_;
  condition.away = condition.stalled = false;
  setCondition(condition);
  questions_.emplace(link_, turn_->traits());
  return true;
}

// False if the connection was lost meanwhile; nothing of the job has been sent then.
bool PrinterSession::waitUntilReady() {
  if (!asksStatus_) return true;
  for (;;) {
    const auto status = questions_->askStatus(cancel_);
    if (!link_.isOpen()) return false;
    setStatus(status);
    if (!status) return true;
    if (status->isReady()) break;
    if (!hasJob_) return true;
    if (!pause()) return false;
  }
  questions_->tryPrinted(cancel_);
  return link_.isOpen();
}

// Connects until the printer is ready; only the cancel of the job ends that.
bool PrinterSession::reachPrinter() {
  for (;;) {
    if (connect() && waitUntilReady()) return true;
    if (cancel_.isCancelled()) return fail(kCancelled);
    if (!hasJob_) return fail(fault_);
    if (!pause()) return fail(kCancelled);
  }
}

bool PrinterSession::begin() {
  if (state_ != State::kFresh) return state_ == State::kBegun;
  if (!waitForTurn()) return fail(cancel_.isCancelled() ? kCancelled : "the printer is in use");
  if (!reachPrinter()) return false;
  fault_.clear();
  state_ = State::kBegun;
  if (asksStatus_ && turn_->traits().tellsCause) bandRequests_.emplace();
  return true;
}

bool PrinterSession::write(std::span<const std::uint8_t> bytes) {
  if (!begin()) return false;
  if (!bandRequests_) return writeAll(bytes);
  const BandRequests::Mixed mixed = bandRequests_->mix(bytes);
  questions_->expectCauses(mixed.requests);
  return writeAll(mixed.bytes);
}

bool PrinterSession::writeAll(std::span<const std::uint8_t> bytes) {
  watch();
  while (!bytes.empty()) {
    if (cancel_.isCancelled()) return writeAfterCancel(bytes);
    const std::size_t before = link_.unacknowledged();
    std::size_t taken = 0;
    const LinkResult result = link_.write(bytes, {times_.retry, cancel_}, taken);
    bytes = bytes.subspan(taken);
    if (result == LinkResult::kClosed) return fail(link_.error());
    noteProgress(taken > 0 || link_.unacknowledged() < before);
    if (hasWaitedEnough()) return fail(kTakesNothing);
  }
  return true;
}

bool PrinterSession::writeAfterCancel(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    std::size_t taken = 0;
    const LinkResult result = link_.write(bytes, {times_.cancelGrace}, taken);
    bytes = bytes.subspan(taken);
    if (result == LinkResult::kClosed) return fail(link_.error());
    if (result == LinkResult::kTimedOut && taken == 0) return fail(kCancelled);
  }
  return true;
}

void PrinterSession::betweenCommands() {
  // What waits for the printer stands before a question, which would only be late.
  if (state_ != State::kBegun || !asksStatus_ || turn_->traits().status != Answers::kYes) return;
  if (link_.unacknowledged() > 0) return;
  setStatus(questions_->askStatus(cancel_));
}

bool PrinterSession::drain() {
  watch();
  for (std::size_t before = link_.unacknowledged();;) {
    const LinkResult result = link_.drain({times_.retry, cancel_});
    if (result == LinkResult::kCancelled) return drainAfterCancel();
    if (result == LinkResult::kClosed) return fail(link_.error());
    const std::size_t left = link_.unacknowledged();
    noteProgress(result == LinkResult::kDone || left < before);
    if (result == LinkResult::kDone) return true;
    if (hasWaitedEnough()) return fail(kTakesNothing);
    before = left;
  }
}

bool PrinterSession::drainAfterCancel() {
  for (std::size_t before = link_.unacknowledged();;) {
    const LinkResult result = link_.drain({times_.cancelGrace});
    if (result == LinkResult::kDone) return true;
    if (result == LinkResult::kClosed) return fail(link_.error());
    if (link_.unacknowledged() == before) return fail(kCancelled);
    before = link_.unacknowledged();
  }
}

bool PrinterSession::waitUntilPrinted() {
  if (!asksStatus_ || turn_->traits().printed != Answers::kYes) return true;
  LinkResult result = questions_->requestPrinted({times_.stalled, cancel_});
  watch();
  auto readySince = Clock::now();
  while (result != LinkResult::kClosed && !cancel_.isCancelled()) {
    result = questions_->waitForPrinted({times_.retry, cancel_});
    if (result == LinkResult::kDone) {
      noteProgress(true);
      return true;
    }
    if (result != LinkResult::kTimedOut) continue;
    const auto status = questions_->askStatus(cancel_);
    setStatus(status);
    // It has answered before: what it has taken waits in front of the question.
    noteProgress(status.has_value());
    if (!status || !status->isReady()) readySince = Clock::now();
    if (Clock::now() - readySince < times_.unprinted) continue;
    // It has had the time to print everything it can hold.
    turn_->traits().printed = Answers::kNever;
    return true;
  }
  return cancel_.isCancelled() || fail("the printer went away before it had printed everything");
}

bool PrinterSession::wasCancelled() const {
  return state_ == State::kFailed && fault_ == kCancelled;
}

bool PrinterSession::end() {
  if (state_ == State::kFresh || state_ == State::kEnded) return true;
  if (state_ == State::kFailed) return false;
  if (!drain() || !waitUntilPrinted()) return false;
  if (asksStatus_ && !cancel_.isCancelled() && turn_->traits().status == Answers::kYes) {
    setStatus(questions_->askStatus(cancel_));
  }
  link_.finish({times_.close});
  questions_.reset();
  bandRequests_.reset();
  turn_.reset();
  state_ = State::kEnded;
  return true;
}

void askIdlePrinter(const NetworkAddress& address, const std::shared_ptr<KnownPrinter>& printer,
                    milliseconds connectLimit) {
  const auto turn = KnownPrinter::tryTurn(printer);
  if (turn == nullptr || turn->traits().status == Answers::kNever) return;
  NetworkPrinter link;
  if (link.connect(address, {connectLimit}) != LinkResult::kDone) {
    turn->traits() = {};
    printer->setCondition(kAway);
    return;
  }
  PrinterQuestions questions(link, turn->traits());
  printer->setCondition({false, false, questions.askStatus()});
  link.finish({kIdleClose});
}

}  // namespace wren::app
