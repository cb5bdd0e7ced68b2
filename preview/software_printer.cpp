// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/software_printer.h"

#include <algorithm>
#include <utility>

#include "escpos/paper.h"

namespace wren::preview {
namespace {

using escpos::CommandKind;

// A byte with its start bit and its stop bit.
constexpr double kBitsPerByte = 10;

// The serial line delivers what comes in this time at once, so that it costs few wake-ups.
constexpr double kSerialQuantumSeconds = 0.01;

// A late wake-up must not make the mechanism slower than it is told to be.
constexpr auto kLateWakeUp = std::chrono::milliseconds(50);

// More dots than fit any line: these need not wait for their feed.
constexpr std::size_t kMaxLineBytes = std::size_t{256} << 10;

// Bytes between two looks at what the mechanism can print.
constexpr std::size_t kReceivedAtOnce = 256;

// Of a command that is longer than the whole buffer, so much is taken at a time.
constexpr std::size_t kPieceOfLongCommand = 4096;

bool isRun(CommandKind kind) {
  return kind == CommandKind::kNul || kind == CommandKind::kUnknown;
}

std::chrono::steady_clock::duration secondsOf(double seconds) {
  return std::chrono::duration_cast<std::chrono::steady_clock::duration>(
      std::chrono::duration<double>(seconds));
}

// False: the command is about something else.
bool changeSensors(ControlKind kind, PrinterState& state) {
  switch (kind) {
    case ControlKind::kPaperOk:
      state.paper = PaperSupply::kOk;
      return true;
    case ControlKind::kPaperNearEnd:
      state.paper = PaperSupply::kNearEnd;
      return true;
    case ControlKind::kPaperOut:
      state.paper = PaperSupply::kOut;
      return true;
    case ControlKind::kErrorNone:
      state.error = PrinterError::kNone;
      return true;
    case ControlKind::kErrorRecoverable:
      state.error = PrinterError::kRecoverable;
      return true;
    case ControlKind::kErrorCutter:
      state.error = PrinterError::kCutter;
      return true;
    case ControlKind::kErrorUnrecoverable:
      state.error = PrinterError::kUnrecoverable;
      return true;
    case ControlKind::kErrorTemperature:
      state.error = PrinterError::kTemperature;
      return true;
    case ControlKind::kCoverOpen:
    case ControlKind::kCoverClosed:
      state.isCoverOpen = kind == ControlKind::kCoverOpen;
      return true;
    case ControlKind::kButtonHeld:
    case ControlKind::kButtonReleased:
      state.isButtonHeld = kind == ControlKind::kButtonHeld;
      return true;
    case ControlKind::kDrawerHigh:
    case ControlKind::kDrawerLow:
      state.isDrawerHigh = kind == ControlKind::kDrawerHigh;
      return true;
    default:
      return false;
  }
}

}  // namespace

SoftwarePrinter::SoftwarePrinter(PrinterOutput& output, unsigned dpi, Time now)
    : output_(output),
      dpi_(dpi),
      splitter_(
          [this](CommandKind kind, std::span<const std::uint8_t> bytes) { receive(kind, bytes); }),
      mechanismIsFree_(now),
      refilled_(now) {}

void SoftwarePrinter::beginJob(JobId job) {
  receiving_ = job;
}

std::size_t SoftwarePrinter::room(Time now) {
  if (!receiving_ || isStalled_ || !isReachable()) return 0;
  const std::size_t used = bufferedBytes();
  std::size_t room = used < bufferSize_ ? bufferSize_ - used : 0;
  if (room == 0 && queue_.empty() && state_.isOnline()) room = kPieceOfLongCommand;
  for (const Pending& one : pending_) {
    if (one.unit != Trigger::Unit::kBytes) continue;
    room = static_cast<std::size_t>(std::min<std::uint64_t>(room, one.threshold - receivedBytes_));
  }
  if (baud_ == 0) return room;
  refill(now);
  return allowance_ < quantum() ? 0 : std::min(room, static_cast<std::size_t>(allowance_));
}

// A real mechanism runs while bytes come in: a request is answered after what has been printed by
// then, even if it came in the same packet.
void SoftwarePrinter::take(std::span<const std::uint8_t> bytes, Time now) {
  const auto job = receiving_;
  while (!bytes.empty() && receiving_ == job) {
    const auto piece = bytes.first(std::min(bytes.size(), kReceivedAtOnce));
    bytes = bytes.subspan(piece.size());
    receivedBytes_ += piece.size();
    if (baud_ != 0) allowance_ -= static_cast<double>(piece.size());
    splitter_.feed(piece);
    advance(now);
  }
  while (fireBytes()) {
  }
  advance(now);
}

void SoftwarePrinter::endInput(const std::string& ending, Time now) {
  closeConnection(ending);
  advance(now);
}

// Real-time commands are found here: the splitter knows what is data of another command.
void SoftwarePrinter::receive(CommandKind kind, std::span<const std::uint8_t> bytes) {
  if (escpos::isRealTime(kind)) {
    executeRealTime(kind, bytes);
    return;
  }
  queuedBytes_ += bytes.size();
  const bool extendsRun = isRun(kind) && !queue_.empty() && !queue_.back().isEnd &&
                          isRun(queue_.back().kind) && queue_.back().job == *receiving_;
  if (!extendsRun) queue_.push_back({*receiving_, false, kind, {}, {}});
  auto& kept = queue_.back().bytes;
  kept.insert(kept.end(), bytes.begin(), bytes.end());
}

void SoftwarePrinter::executeRealTime(CommandKind kind, std::span<const std::uint8_t> bytes) {
  if (kind == CommandKind::kRealTimeStatus) {
    answer(*receiving_, state_.realTimeStatus(bytes[2]));
  } else if (kind == CommandKind::kRealTimePulse) {
    output_.print(*receiving_, kind, bytes);
  } else {
    recover(bytes);
  }
}

// Has an effect in an error from which the printer can recover, and in no other state.
void SoftwarePrinter::recover(std::span<const std::uint8_t> bytes) {
  if (state_.error != PrinterError::kRecoverable && state_.error != PrinterError::kCutter) return;
  state_.error = PrinterError::kNone;
  if (bytes[2] == 2) {
    dropLine();
    std::erase_if(queue_, [](const Entry& entry) { return !entry.isEnd; });
    queuedBytes_ = 0;
  }
  output_.print(*receiving_, CommandKind::kRealTimeRecovery, bytes);
}

void SoftwarePrinter::answer(JobId job, std::uint8_t byte) {
  if (doesAnswer_) output_.answer(job, byte);
}

std::string SoftwarePrinter::control(const Control& control, Time now) {
  if (!control.trigger) {
    apply(control);
    advance(now);
    return {};
  }
  if (pending_.size() >= kMaxTriggers) return "too many commands wait already";
  Pending pending{control.trigger->unit, control.trigger->count, now, control};
  if (pending.unit == Trigger::Unit::kMillimetres) {
    pending.threshold = printedUnits_ + unitsOf(control.trigger->count);
  } else if (pending.unit == Trigger::Unit::kBytes) {
    pending.threshold = receivedBytes_ + control.trigger->count;
  } else {
    pending.due = now + std::chrono::milliseconds(control.trigger->count);
  }
  pending_.push_back(pending);
  while (fireBytes()) {
  }
  advance(now);
  return {};
}

void SoftwarePrinter::apply(const Control& control) {
  if (changeSensors(control.kind, state_) || changeLimits(control)) return;
  switch (control.kind) {
    case ControlKind::kAnswersOn:
    case ControlKind::kAnswersOff:
      doesAnswer_ = control.kind == ControlKind::kAnswersOn;
      break;
    case ControlKind::kStall:
    case ControlKind::kGo:
      isStalled_ = control.kind == ControlKind::kStall;
      break;
    case ControlKind::kReset:
      resetConnection("cut short: the printer reset the connection");
      break;
    case ControlKind::kVanish:
      isVanished_ = true;
      resetConnection("cut short: the printer vanished");
      break;
    case ControlKind::kReturn:
      isVanished_ = false;
      break;
    case ControlKind::kPowerOff:
      losePower();
      break;
    case ControlKind::kPowerOn:
      isPowered_ = true;
      break;
    default:
      break;
  }
}

// False: the command is about something else.
bool SoftwarePrinter::changeLimits(const Control& control) {
  switch (control.kind) {
    case ControlKind::kBaud:
      baud_ = control.value;
      allowance_ = 0;
      return true;
    case ControlKind::kSpeed:
      millimetresPerSecond_ = control.value;
      mechanismIsFree_ = Time();
      return true;
    case ControlKind::kBuffer:
      bufferSize_ = static_cast<std::size_t>(control.value) << 10;
      return true;
    case ControlKind::kAcceptDelay:
      acceptDelay_ = std::chrono::milliseconds(control.value);
      return true;
    default:
      return false;
  }
}

void SoftwarePrinter::resetConnection(const std::string& ending) {
  if (receiving_) output_.resetConnection(*receiving_);
  closeConnection(ending);
}

// What was received before stays in the buffer and is printed.
void SoftwarePrinter::closeConnection(const std::string& ending) {
  if (!receiving_) return;
  splitter_.finish();
  const JobId job = *std::exchange(receiving_, std::nullopt);
  if (hasWork(job)) {
    queue_.push_back({job, true, CommandKind::kNul, {}, ending});
  } else {
    finishJob(job, ending);
  }
}

void SoftwarePrinter::losePower() {
  isPowered_ = false;
  std::vector<JobId> jobs;
  const auto addJob = [&](JobId job) {
    if (std::find(jobs.begin(), jobs.end(), job) == jobs.end()) jobs.push_back(job);
  };
  for (const Entry& entry : line_) addJob(entry.job);
  for (const Entry& entry : queue_) addJob(entry.job);
  if (receiving_) addJob(*receiving_);
  dropLine();
  queue_.clear();
  queuedBytes_ = 0;
  splitter_.reset();
  receiving_.reset();
  for (const JobId job : jobs) {
    output_.resetConnection(job);
    output_.endJob(job, "cut short by a loss of power");
  }
}

template <class IsDue>
bool SoftwarePrinter::fireFirst(IsDue isDue) {
  const auto found = std::find_if(pending_.begin(), pending_.end(), isDue);
  if (found == pending_.end()) return false;
  const Control control = found->control;
  pending_.erase(found);
  apply(control);
  return true;
}

bool SoftwarePrinter::fireTimes(Time now) {
  return fireFirst([&](const Pending& one) {
    return one.unit == Trigger::Unit::kMilliseconds && one.due <= now;
  });
}

bool SoftwarePrinter::fireBytes() {
  return fireFirst([&](const Pending& one) {
    return one.unit == Trigger::Unit::kBytes && one.threshold <= receivedBytes_;
  });
}

bool SoftwarePrinter::fireBeforeFeed(std::uint64_t units) {
  return fireFirst([&](const Pending& one) {
    return one.unit == Trigger::Unit::kMillimetres && one.threshold < printedUnits_ + units;
  });
}

void SoftwarePrinter::advance(Time now) {
  while (fireTimes(now) || executeNext(now)) {
  }
}

std::optional<SoftwarePrinter::Time> SoftwarePrinter::nextEvent() const {
  std::optional<Time> next;
  const auto consider = [&](Time time) { next = next ? std::min(*next, time) : time; };
  for (const Pending& one : pending_) {
    if (one.unit == Trigger::Unit::kMilliseconds) consider(one.due);
  }
  if (!queue_.empty() && isPowered_ && state_.isOnline()) consider(mechanismIsFree_);
  const bool waitsForLine = receiving_ && baud_ != 0 && !isStalled_ && allowance_ < quantum();
  if (waitsForLine) consider(refilled_ + secondsOf((quantum() - allowance_) / byteRate()));
  return next;
}

// Executes the first entry of the buffer, or lets a fault come before it. False: nothing can be
// executed now.
bool SoftwarePrinter::executeNext(Time now) {
  if (queue_.empty()) return false;
  if (queue_.front().isEnd) {
    const Entry end = std::move(queue_.front());
    queue_.pop_front();
    finishJob(end.job, end.ending);
    return true;
  }
  if (!isPowered_ || !state_.isOnline() || mechanismIsFree_ > now) return false;
  const Entry& first = queue_.front();
  if (first.kind == CommandKind::kFeed && fireBeforeFeed(first.bytes[2])) return true;
  const Entry entry = std::move(queue_.front());
  queue_.pop_front();
  queuedBytes_ -= entry.bytes.size();
  execute(entry, now);
  return true;
}

void SoftwarePrinter::execute(const Entry& entry, Time now) {
  if (entry.kind == CommandKind::kTransmitStatus) {
    answer(entry.job, state_.transmittedStatus(entry.bytes[2]));
  }
  const bool endsLine = entry.kind == CommandKind::kFeed || entry.kind == CommandKind::kInitialise;
  const bool startsLine = entry.kind == CommandKind::kBitImage;
  if (endsLine) flushLine();
  if (startsLine || !line_.empty()) {
    hold(entry);
  } else {
    output_.print(entry.job, entry.kind, entry.bytes);
  }
  if (entry.kind != CommandKind::kFeed) return;
  const unsigned units = entry.bytes[2];
  printedUnits_ += units;
  if (millimetresPerSecond_ == 0) return;
  const double millimetres = units * 25.4 / (dpi_ * escpos::kUnitsPerRow);
  mechanismIsFree_ = std::max(mechanismIsFree_, now - kLateWakeUp) +
                     secondsOf(millimetres / static_cast<double>(millimetresPerSecond_));
}

// Keeps an executed command until the feed of its line, because a loss of power before that feed
// leaves no dots on the paper.
void SoftwarePrinter::hold(const Entry& entry) {
  line_.push_back(entry);
  lineBytes_ += entry.bytes.size();
  if (lineBytes_ > kMaxLineBytes) flushLine();
}

void SoftwarePrinter::flushLine() {
  for (const Entry& entry : line_) output_.print(entry.job, entry.kind, entry.bytes);
  line_.clear();
  lineBytes_ = 0;
}

// What is not dots has been executed: a beep, a pulse.
void SoftwarePrinter::dropLine() {
  std::erase_if(line_, [](const Entry& entry) { return entry.kind == CommandKind::kBitImage; });
  flushLine();
}

bool SoftwarePrinter::hasWork(JobId job) const {
  const auto isOfJob = [&](const Entry& entry) { return entry.job == job; };
  return std::any_of(queue_.begin(), queue_.end(), isOfJob);
}

void SoftwarePrinter::finishJob(JobId job, const std::string& ending) {
  if (!line_.empty() && line_.front().job == job) flushLine();
  output_.endJob(job, ending);
}

void SoftwarePrinter::abandon(const std::string& ending) {
  const bool isDrained = queue_.empty();
  splitter_.finish();
  std::vector<JobId> jobs;
  for (const Entry& entry : queue_) {
    if (isDrained) execute(entry, mechanismIsFree_);
    if (entry.isEnd) jobs.push_back(entry.job);
  }
  if (receiving_) jobs.push_back(*receiving_);
  flushLine();
  queue_.clear();
  queuedBytes_ = 0;
  receiving_.reset();
  for (const JobId job : jobs) output_.endJob(job, ending);
}

// The allowance does not grow while nobody sends.
void SoftwarePrinter::refill(Time now) {
  const std::chrono::duration<double> passed = now - refilled_;
  refilled_ = now;
  allowance_ = std::min(allowance_ + passed.count() * byteRate(), 2 * quantum());
}

double SoftwarePrinter::byteRate() const {
  return static_cast<double>(baud_) / kBitsPerByte;
}

double SoftwarePrinter::quantum() const {
  return std::max(1.0, byteRate() * kSerialQuantumSeconds);
}

std::uint64_t SoftwarePrinter::unitsOf(std::uint64_t millimetres) const {
  return millimetres * 10 * dpi_ * escpos::kUnitsPerRow / 254;
}

}  // namespace wren::preview
