// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/saved_state.h"

#include <cups/ipp.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

namespace wren::app {
namespace {

constexpr std::string_view kPrinterLine = "<Printer ";
constexpr std::string_view kPrinterEnd = "</Printer>";
constexpr std::string_view kNextJobLine = "NextJobId ";
constexpr std::string_view kJobLine = "Job ";

// 0 if there is none.
int numberAt(std::string_view text) {
  int number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

constexpr const char* kInterrupted = "interrupted, not printed again";
constexpr const char* kNoDocument = "interrupted before its document was whole";

// The values of one line, in order, still escaped.
class Values {
 public:
  explicit Values(std::string_view text) {
    while (readOne(text)) {
    }
  }

  bool has(std::string_view name) const { return find(name) != values_.end(); }

  int number(std::string_view name) const {
    const auto value = find(name);
    return value == values_.end() ? 0 : numberAt(value->second);
  }

  void set(std::string_view name, long value) {
    remove(name);
    values_.emplace_back(name, std::to_string(value));
  }

  void remove(std::string_view name) {
    std::erase_if(values_, [&](const auto& value) { return value.first == name; });
  }

  std::string text() const {
    std::string line;
    for (const auto& [name, value] : values_) {
      if (!line.empty()) line += ' ';
      line.append(name).append("=\"").append(value).append("\"");
    }
    return line;
  }

 private:
  using Value = std::pair<std::string, std::string>;

  std::vector<Value>::const_iterator find(std::string_view name) const {
    return std::find_if(values_.begin(), values_.end(),
                        [&](const Value& value) { return value.first == name; });
  }

  bool readOne(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    const std::size_t equals = rest.find("=\"");
    if (equals == std::string_view::npos) return false;
    std::size_t end = equals + 2;
    while (end < rest.size() && rest[end] != '"') end += rest[end] == '\\' ? 2 : 1;
    if (end >= rest.size()) return false;
    values_.emplace_back(rest.substr(0, equals), rest.substr(equals + 2, end - equals - 2));
    rest.remove_prefix(end + 1);
    return true;
  }

  std::vector<Value> values_;
};

void end(Values& job, ipp_jstate_t state, std::time_t now) {
  job.remove("filename");
  job.set("state", state);
  job.set("completed", static_cast<long>(now));
}

void settle(Values& job, const JobKey& key, bool hasBegun, std::time_t now, SettledState& result) {
  if (hasBegun) {
    end(job, IPP_JSTATE_CANCELED, now);
    result.ended.push_back({key, kInterrupted});
    return;
  }
  if (!job.has("filename")) {
    end(job, IPP_JSTATE_ABORTED, now);
    result.ended.push_back({key, kNoDocument});
    return;
  }
  result.waiting.push_back(key);
  if (job.number("state") == IPP_JSTATE_HELD) return;
  job.set("state", IPP_JSTATE_PENDING);
  job.remove("processing");
}

/// The jobs of one printer that had begun, as the text goes by.
class BegunOfPrinter {
 public:
  BegunOfPrinter(const std::vector<BegunJob>& begun, int printerId) {
    for (const BegunJob& job : begun) {
      if (job.key.printerId == printerId) lines_[job.key.jobId] = job.line;
    }
  }

  bool has(int jobId) const { return lines_.contains(jobId); }

  /// A number that none of them has.
  int next(int number) const {
    for (const auto& [jobId, line] : lines_) {
      if (!line.empty()) number = std::max(number, jobId + 1);
    }
    return number;
  }

  void noteNamed(int jobId) { named_.insert(jobId); }

  template <typename Act>
  void forEachUnnamed(Act act) const {
    for (const auto& [jobId, line] : lines_) {
      if (!line.empty() && !named_.contains(jobId)) act(jobId, line);
    }
  }

 private:
  std::map<int, std::string> lines_;
  std::set<int> named_;
};

}  // namespace

std::string escapedValue(std::string_view value) {
  std::string escaped;
  for (const char byte : value) {
    if (byte == '"' || byte == '\\') escaped += '\\';
    escaped += static_cast<unsigned char>(byte) < ' ' ? ' ' : byte;
  }
  return escaped;
}

SettledState settleJobs(const std::string& text, const std::vector<BegunJob>& begun,
                        std::time_t now) {
  SettledState result;
  JobKey key;
  BegunOfPrinter ofPrinter(begun, 0);
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with(kPrinterLine)) {
      key.printerId = Values(std::string_view(line).substr(kPrinterLine.size())).number("id");
      ofPrinter = BegunOfPrinter(begun, key.printerId);
    } else if (line.starts_with(kNextJobLine)) {
      const int next = numberAt(std::string_view(line).substr(kNextJobLine.size()));
      line = std::string(kNextJobLine) + std::to_string(ofPrinter.next(next));
    } else if (line.starts_with(kJobLine)) {
      Values job(std::string_view(line).substr(kJobLine.size()));
      key.jobId = job.number("id");
      ofPrinter.noteNamed(key.jobId);
      if (job.number("state") < IPP_JSTATE_CANCELED) {
        settle(job, key, ofPrinter.has(key.jobId), now, result);
        line = std::string(kJobLine) + job.text();
      }
    } else if (line == kPrinterEnd) {
      ofPrinter.forEachUnnamed([&](int jobId, const std::string& unnamed) {
        Values job(unnamed);
        settle(job, {key.printerId, jobId}, true, now, result);
        result.text += std::string(kJobLine) + job.text() + "\n";
      });
    }
    result.text += line + "\n";
  }
  return result;
}

}  // namespace wren::app
