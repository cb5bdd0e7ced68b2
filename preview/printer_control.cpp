// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/printer_control.h"

#include <algorithm>
#include <charconv>
#include <sstream>
#include <vector>

namespace wren::preview {
namespace {

struct PlainCommand {
  const char* text;
  ControlKind kind;
};

constexpr PlainCommand kPlainCommands[] = {
    {"paper ok", ControlKind::kPaperOk},
    {"paper near-end", ControlKind::kPaperNearEnd},
    {"paper out", ControlKind::kPaperOut},
    {"cover open", ControlKind::kCoverOpen},
    {"cover closed", ControlKind::kCoverClosed},
    {"error none", ControlKind::kErrorNone},
    {"error recoverable", ControlKind::kErrorRecoverable},
    {"error cutter", ControlKind::kErrorCutter},
    {"error unrecoverable", ControlKind::kErrorUnrecoverable},
    {"error temperature", ControlKind::kErrorTemperature},
    {"button held", ControlKind::kButtonHeld},
    {"button released", ControlKind::kButtonReleased},
    {"drawer high", ControlKind::kDrawerHigh},
    {"drawer low", ControlKind::kDrawerLow},
    {"answers on", ControlKind::kAnswersOn},
    {"answers off", ControlKind::kAnswersOff},
    {"stall", ControlKind::kStall},
    {"go", ControlKind::kGo},
    {"reset", ControlKind::kReset},
    {"vanish", ControlKind::kVanish},
    {"return", ControlKind::kReturn},
    {"power off", ControlKind::kPowerOff},
    {"power on", ControlKind::kPowerOn},
};

struct NumberCommand {
  const char* text;
  ControlKind kind;
  std::uint64_t least;
  std::uint64_t most;
};

constexpr NumberCommand kNumberCommands[] = {
    {"baud", ControlKind::kBaud, 0, 10'000'000},
    {"speed", ControlKind::kSpeed, 0, 10'000},
    {"buffer", ControlKind::kBuffer, 4, 64},
    {"accept-delay", ControlKind::kAcceptDelay, 0, 3'600'000},
};

struct UnitName {
  const char* text;
  Trigger::Unit unit;
};

constexpr UnitName kUnits[] = {{"mm", Trigger::Unit::kMillimetres},
                               {"bytes", Trigger::Unit::kBytes},
                               {"ms", Trigger::Unit::kMilliseconds}};

// More than a day, a kilometre or a job has.
constexpr std::uint64_t kMostBeforeTrigger = 1'000'000'000;

std::optional<std::uint64_t> numberOf(const std::string& text) {
  std::uint64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto [next, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || next != end) return std::nullopt;
  return value;
}

ParsedControl refused(const std::string& error) {
  return {std::nullopt, error};
}

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

// The trigger at the end of the words, which are removed.
bool takeTrigger(std::vector<std::string>& words, std::optional<Trigger>& trigger) {
  const auto after = std::find(words.begin(), words.end(), "after");
  if (after == words.end()) return true;
  if (words.end() - after != 3) return false;
  const auto count = numberOf(after[1]);
  const auto* const unit = std::find_if(std::begin(kUnits), std::end(kUnits),
                                        [&](const UnitName& u) { return after[2] == u.text; });
  if (!count || *count > kMostBeforeTrigger || unit == std::end(kUnits)) return false;
  trigger = Trigger{unit->unit, *count};
  words.erase(after, words.end());
  return true;
}

ParsedControl parseNumberCommand(const NumberCommand& command,
                                 const std::vector<std::string>& words) {
  const auto value = words.size() == 2 ? numberOf(words[1]) : std::nullopt;
  if (value && *value >= command.least && *value <= command.most) {
    return {Control{command.kind, *value, {}}, {}};
  }
  return refused(std::string(command.text) + " wants a number from " +
                 std::to_string(command.least) + " to " + std::to_string(command.most));
}

ParsedControl parseCommand(const std::vector<std::string>& words) {
  const std::string text = joined(words);
  for (const PlainCommand& command : kPlainCommands) {
    if (text == command.text) return {Control{command.kind, 0, {}}, {}};
  }
  for (const NumberCommand& command : kNumberCommands) {
    if (!words.empty() && words[0] == command.text) return parseNumberCommand(command, words);
  }
  return refused("'" + text + "' is no command");
}

}  // namespace

ParsedControl parseControl(const std::string& line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  std::optional<Trigger> trigger;
  if (!takeTrigger(words, trigger)) return refused("'after' wants a number and mm, bytes or ms");
  ParsedControl parsed = parseCommand(words);
  if (parsed.control) parsed.control->trigger = trigger;
  return parsed;
}

}  // namespace wren::preview
