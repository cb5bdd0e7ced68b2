// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/golden/golden_job.h"

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <stdexcept>

#include "tests/golden/page_source.h"

namespace golden {

namespace {

std::vector<std::string> numbers(int first, int last) {
  std::vector<std::string> result;
  for (int i = first; i <= last; ++i) result.push_back(std::to_string(i));
  return result;
}

// Every option at choice 0. Some offer choices outside the useful range, to test how they are
// clamped.
std::vector<reference::PpdOption> standardOptions() {
  return {
      {"PageSize", {"X80MMY200MM", "X58MMY100MM"}, "X80MMY200MM"},
      {"PageType", numbers(0, 1), "0"},
      {"BidiPrinting", numbers(0, 1), "0"},
      {"PageCutType", numbers(0, 4), "0"},
      {"DocCutType", numbers(0, 4), "0"},
      {"CashDrawerSetting", numbers(0, 2), "0"},
      {"CashDrawerPulseWidth", numbers(0, 9), "0"},
      {"Buzzer1Setting", numbers(0, 2), "0"},
      {"Buzzer1OnTime", numbers(0, 12), "1"},
      {"Buzzer1Repeat", numbers(0, 12), "1"},
      {"Buzzer2Setting", numbers(0, 2), "0"},
      {"Buzzer2OnTime", numbers(0, 12), "1"},
      {"Buzzer2Repeat", numbers(0, 12), "1"},
      {"FeedCutAfterJobEnd", numbers(0, 17), "0"},
      {"Brightness", numbers(-101, 101), "0"},
      {"HalftoneType",
       {"None", "FloydSteinberg", "Ordered", "Burkes", "Stucki", "JarvisJudiceNinke", "Sierra",
        "StevensonArce", "QVDithering"},
       "None"},
  };
}

std::string hex(std::uint64_t value, int digits) {
  char text[17];
  std::snprintf(text, sizeof(text), "%0*llX", digits, static_cast<unsigned long long>(value));
  return text;
}

std::string formatPage(const PageInput& page) {
  std::ostringstream out;
  out << "width=" << page.width << " height=" << page.height << " resolution=" << page.resolution
      << " copies=" << page.copies << " bits=" << page.bits;
  if (page.truncated) out << " truncated=1";
  out << " pixels=" << page.pixels << "\n";
  return out.str();
}

std::string formatInput(const JobInput& input) {
  std::string text = "# " + input.description + "\n\n[printer]\n";
  if (!input.maxMediaWidth.empty()) text += "MaxMediaWidth " + input.maxMediaWidth + "\n";
  for (const auto& [keyword, choice] : input.defaults)
    text += "default " + keyword + "=" + choice + "\n";
  for (const std::string& keyword : input.lacks) text += "lacks " + keyword + "\n";
  text += "\n[options]\n";
  for (const auto& [keyword, choice] : input.options) text += keyword + "=" + choice + "\n";
  text += "\n[pages]\n";
  for (const PageInput& page : input.pages) text += formatPage(page);
  return text;
}

// Header of a bit image: 1B 2A m nL nH.
constexpr std::size_t kBitImageHead = 5;

bool isBitImage(const reference::Command& command) {
  return command.bytes.size() >= kBitImageHead && command.bytes[0] == 0x1B &&
         command.bytes[1] == 0x2A;
}

// One or more lines; the comment is at the end of the first.
std::string formatCommand(const reference::Command& command) {
  std::string lines = hexText(command.bytes, isBitImage(command) ? kBitImageHead : 0);
  const auto firstEnd = lines.find('\n');
  const std::size_t at = firstEnd == std::string::npos ? lines.size() : firstEnd;
  lines.insert(at, "  ; " + command.comment);
  return lines + "\n";
}

// Parsing -------------------------------------------------------------------------

Pair splitAt(const std::string& text, char separator) {
  const auto at = text.find(separator);
  if (at == std::string::npos) throw std::runtime_error("'" + text + "' is not understood");
  return {text.substr(0, at), text.substr(at + 1)};
}

std::uint32_t number(const std::string& text) {
  return static_cast<std::uint32_t>(std::stoul(text));
}

PageInput parsePage(const std::string& line) {
  PageInput page;
  std::istringstream words(line);
  for (std::string word; words >> word;) {
    const auto [key, value] = splitAt(word, '=');
    if (key == "width") {
      page.width = number(value);
    } else if (key == "height") {
      page.height = number(value);
    } else if (key == "resolution") {
      page.resolution = number(value);
    } else if (key == "copies") {
      page.copies = number(value);
    } else if (key == "bits") {
      page.bits = number(value);
    } else if (key == "truncated") {
      page.truncated = value == "1";
    } else if (key == "pixels") {
      page.pixels = value;
    } else {
      throw std::runtime_error("no page has a " + key);
    }
  }
  return page;
}

void parsePrinterLine(const std::string& line, JobInput& input) {
  const auto [word, rest] = splitAt(line, ' ');
  if (word == "MaxMediaWidth") {
    input.maxMediaWidth = rest;
  } else if (word == "default") {
    input.defaults.push_back(splitAt(rest, '='));
  } else if (word == "lacks") {
    input.lacks.push_back(rest);
  } else {
    throw std::runtime_error("no printer has a " + word);
  }
}

void parseHexLine(const std::string& line, Bytes& bytes) {
  std::istringstream words(line.substr(0, line.find(';')));
  for (std::string word; words >> word;) {
    const std::size_t count = word.size() > 3 && word[2] == '*' ? std::stoul(word.substr(3)) : 1;
    if (word.size() != 2 && count == 1) throw std::runtime_error(word + " is no byte");
    bytes.insert(bytes.end(), count,
                 static_cast<std::uint8_t>(std::stoul(word.substr(0, 2), nullptr, 16)));
  }
}

ExpectedDump parseDump(const std::string& line) {
  ExpectedDump dump;
  std::istringstream words(line);
  words >> dump.kind;
  for (std::string word; words >> word;) {
    const auto [key, value] = splitAt(word, '=');
    if (key == "size") {
      dump.size = std::stoul(value);
    } else if (key == "fnv1a64") {
      dump.hash = std::stoull(value, nullptr, 16);
    } else {
      throw std::runtime_error("no dump has a " + key);
    }
  }
  return dump;
}

void parseLine(const std::string& section, const std::string& line, GoldenJob& job) {
  if (section == "printer") {
    parsePrinterLine(line, job.input);
  } else if (section == "options") {
    job.input.options.push_back(splitAt(line, '='));
  } else if (section == "pages") {
    job.input.pages.push_back(parsePage(line));
  } else if (section == "stdout") {
    parseHexLine(line, job.output);
  } else if (section == "stderr") {
    job.log.push_back(splitAt(line, '|').second);
  } else if (section == "dumps") {
    job.dumps.push_back(parseDump(line));
  } else if (section == "status") {
    job.status = std::stoi(line);
  } else {
    throw std::runtime_error("the section [" + section + "] is not known");
  }
}

}  // namespace

std::uint64_t fnv1a64(const Bytes& bytes) {
  std::uint64_t hash = 0xCBF29CE484222325U;
  for (const std::uint8_t byte : bytes) {
    hash ^= byte;
    hash *= 0x100000001B3U;
  }
  return hash;
}

reference::JobOptions optionsOf(const JobInput& input) {
  reference::JobOptions options;
  options.maxMediaWidth = input.maxMediaWidth;
  options.job = input.options;
  for (reference::PpdOption option : standardOptions()) {
    if (std::find(input.lacks.begin(), input.lacks.end(), option.keyword) != input.lacks.end())
      continue;
    for (const auto& [keyword, choice] : input.defaults) {
      if (keyword == option.keyword) option.defaultChoice = choice;
    }
    options.ppd.push_back(option);
  }
  return options;
}

std::vector<reference::Page> pagesOf(const JobInput& input, const std::string& folder) {
  std::vector<reference::Page> pages;
  for (const PageInput& source : input.pages) {
    reference::Page page;
    page.bitsPerPixel = source.bits;
    page.bytesPerLine = source.bytesPerLine();
    page.width = source.width;
    page.height = source.height;
    page.hwResolutionX = source.resolution;
    page.numCopies = source.copies;
    page.readable = !source.truncated;
    page.pixels = pagePixels(source.pixels, page.bytesPerLine, page.height, folder);
    pages.push_back(page);
  }
  return pages;
}

std::string optionText(const JobInput& input) {
  std::string text;
  for (const auto& [keyword, choice] : input.options)
    text += (text.empty() ? "" : " ") + keyword + "=" + choice;
  return text;
}

std::string hexText(const Bytes& bytes, std::size_t head) {
  constexpr int kItemsPerLine = 32;
  std::string text;
  int items = 0;
  for (std::size_t i = 0; i < bytes.size();) {
    std::size_t run = 1;
    while (i + run < bytes.size() && bytes[i + run] == bytes[i]) ++run;
    if (run < 4 || i < head) run = 1;
    if (items == kItemsPerLine) {
      text += "\n  ";
      items = 0;
    } else if (!text.empty()) {
      text += " ";
    }
    text += hex(bytes[i], 2);
    if (run > 1) text += "*" + std::to_string(run);
    i += run;
    ++items;
  }
  return text;
}

std::string formatJob(const JobInput& input, const reference::JobResult& result) {
  std::string text = formatInput(input) + "\n[stdout]\n";
  for (const reference::Command& command : result.commands) text += formatCommand(command);
  text += "\n[stderr]\n";
  for (const std::string& line : result.log) text += "|" + line + "\n";
  text += "\n[dumps]\n";
  for (const reference::Dump& dump : result.dumps)
    text += dump.kind + " size=" + std::to_string(dump.bytes.size()) +
            " fnv1a64=" + hex(fnv1a64(dump.bytes), 16) + "\n";
  return text + "\n[status]\n" + std::to_string(result.status) + "\n";
}

GoldenJob parseJob(const std::string& name, const std::string& text) {
  GoldenJob job;
  job.input.name = name;
  std::istringstream lines(text);
  std::string section;
  int lineNumber = 0;
  for (std::string line; std::getline(lines, line);) {
    ++lineNumber;
    try {
      if (line.empty()) continue;
      if (line[0] == '#') {
        job.input.description = line.substr(2);
      } else if (line[0] == '[') {
        section = line.substr(1, line.size() - 2);
      } else {
        parseLine(section, line, job);
      }
    } catch (const std::exception& error) {
      throw std::runtime_error(name + ":" + std::to_string(lineNumber) + ": " + error.what());
    }
  }
  return job;
}

}  // namespace golden
