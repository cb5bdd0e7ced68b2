// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/reference/job.h"

#include <strings.h>

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <utility>

namespace reference {

// Settings ------------------------------------------------------------------------

namespace {

// CUPS ignores case in keywords and choices.
bool sameWord(const std::string& a, const std::string& b) {
  return strcasecmp(a.c_str(), b.c_str()) == 0;
}

const PpdOption* findOption(const JobOptions& options, const std::string& keyword) {
  for (const PpdOption& option : options.ppd) {
    if (sameWord(option.keyword, keyword)) return &option;
  }
  return nullptr;
}

const std::string* findChoice(const PpdOption& option, const std::string& name) {
  for (const std::string& choice : option.choices) {
    if (sameWord(choice, name)) return &choice;
  }
  return nullptr;
}

int getOptionChoiceIndex(const JobOptions& options, const std::string& keyword,
                         std::vector<std::string>& log) {
  const std::string* choice = chosen(options, keyword);
  if (choice == nullptr) return -1;
  const int index = std::atoi(choice->c_str());
  log.push_back("DEBUG:getOptionChoiceIndex: " + keyword + " = " + std::to_string(index));
  // The message ends with a newline of its own: an empty line follows.
  log.push_back("");
  return index;
}

}  // namespace

const std::string* chosen(const JobOptions& options, const std::string& keyword) {
  const PpdOption* option = findOption(options, keyword);
  if (option == nullptr) return nullptr;
  const std::string* choice = findChoice(*option, option->defaultChoice);
  for (const auto& [key, value] : options.job) {
    if (sameWord(key, keyword) && findChoice(*option, value) != nullptr)
      choice = findChoice(*option, value);
  }
  return choice;
}

int wrenHalftoneTypeFromStr(const std::string& name) {
  const char* const names[9] = {"None",   "FloydSteinberg", "Ordered",
                                "Burkes", "Stucki",         "JarvisJudiceNinke",
                                "Sierra", "StevensonArce",  "QVDithering"};
  for (int i = 0; i < 9; ++i) {
    if (name == names[i]) return i;
  }
  return 0;
}

bool parsePageSize(const std::string& name, float& width, float& height) {
  enum { kStart, kWidth, kHeight } state = kStart;
  std::string texts[2];
  width = 0.0F;
  height = 0.0F;
  for (const char c : name) {
    if (state == kStart) {
      if (c != 'X') return false;
      state = kWidth;
      continue;
    }
    std::string& number = texts[state == kWidth ? 0 : 1];
    if (c >= '0' && c <= '9') {
      number += c;
    } else if (c == 'D') {
      number += '.';
    } else if (c == 'M' && state == kHeight) {
      width = static_cast<float>(std::atof(texts[0].c_str()));
      height = static_cast<float>(std::atof(texts[1].c_str()));
      return true;
    } else if (c == 'Y' && state == kWidth) {
      state = kHeight;
    } else if (c != 'M') {
      return false;
    }
    if (number.size() > 19) return false;
  }
  return false;
}

JobSettings readSettings(const JobOptions& options, std::vector<std::string>& log) {
  JobSettings s;
  s.maxMediaWidth = options.maxMediaWidth.empty() ? 0.0 : std::atof(options.maxMediaWidth.c_str());
  s.pageType = getOptionChoiceIndex(options, "PageType", log);
  s.bidiPrinting = getOptionChoiceIndex(options, "BidiPrinting", log);
  s.pageCutType = getOptionChoiceIndex(options, "PageCutType", log);
  s.docCutType = getOptionChoiceIndex(options, "DocCutType", log);
  s.cashDrawerSetting = getOptionChoiceIndex(options, "CashDrawerSetting", log);
  s.cashDrawerPulseWidth = getOptionChoiceIndex(options, "CashDrawerPulseWidth", log);
  s.buzzer1Setting = getOptionChoiceIndex(options, "Buzzer1Setting", log);
  s.buzzer1OnTime = getOptionChoiceIndex(options, "Buzzer1OnTime", log);
  s.buzzer1Repeat = getOptionChoiceIndex(options, "Buzzer1Repeat", log);
  s.buzzer2Setting = getOptionChoiceIndex(options, "Buzzer2Setting", log);
  s.buzzer2OnTime = getOptionChoiceIndex(options, "Buzzer2OnTime", log);
  s.buzzer2Repeat = getOptionChoiceIndex(options, "Buzzer2Repeat", log);
  s.feedCutAfterJobEnd = getOptionChoiceIndex(options, "FeedCutAfterJobEnd", log);
  const std::string* pageSize = chosen(options, "PageSize");
  if (pageSize != nullptr) parsePageSize(*pageSize, s.pageWidth, s.pageHeight);
  const std::string* halftone = chosen(options, "HalftoneType");
  s.halftoneType = halftone == nullptr ? 0 : wrenHalftoneTypeFromStr(*halftone);
  const std::string* brightness = chosen(options, "Brightness");
  s.brightness = brightness == nullptr ? 0 : std::atoi(brightness->c_str());
  return s;
}

// Control commands ------------------------------------------------------------------

namespace {

Command buzzerSwitch(bool on) {
  return {{0x1F, 0x1B, 0x1F, 0x42, 0x65, 0x65, 0x70, static_cast<std::uint8_t>(on ? 0x08 : 0x06)},
          on ? "buzzer set-up: on" : "buzzer set-up: off"};
}

Command buzzerBlock(int onTime, int repeat) {
  if (onTime > 9) onTime = 1;
  if (repeat > 9) repeat = 1;
  return {{0x1B, 0x42, static_cast<std::uint8_t>(repeat & 255),
           static_cast<std::uint8_t>(onTime & 255)},
          "buzzer: repeat " + std::to_string(repeat) + ", on-time " + std::to_string(onTime)};
}

void addCut(std::vector<Command>& commands, int type, const std::string& what) {
  if (type == 1) commands.push_back({{0x1D, 0x56, 0x00}, what + ": full cut"});
  if (type == 2) commands.push_back({{0x1D, 0x56, 0x01}, what + ": partial cut"});
}

void addDrawerPulse(std::vector<Command>& commands, int width) {
  if (width < 0 || width > 8) return;
  commands.push_back({{0x1B, 0x70, 0x00, static_cast<std::uint8_t>(0x32 + 0x19 * width), 0x32},
                      "cash drawer pulse of " + std::to_string(100 + 50 * width) + " ms"});
}

void add(std::vector<Command>& to, const std::vector<Command>& commands) {
  to.insert(to.end(), commands.begin(), commands.end());
}

}  // namespace

std::vector<Command> jobSetup(JobSettings s) {
  std::vector<Command> commands = {{{0x1B, 0x40}, "initialise"}};
  commands.push_back(buzzerSwitch(s.buzzer2Setting != 0 || s.buzzer1Setting != 0));
  if (s.bidiPrinting == 0) commands.push_back({{0x1B, 0x55, 0x00}, "both directions"});
  if (s.bidiPrinting == 1) commands.push_back({{0x1B, 0x55, 0x01}, "one direction"});
  if (s.buzzer2Setting == 1) commands.push_back(buzzerBlock(s.buzzer2OnTime, s.buzzer2Repeat));
  if (s.cashDrawerSetting == 1) addDrawerPulse(commands, s.cashDrawerPulseWidth);
  return commands;
}

std::vector<Command> pageSetup(JobSettings s) {
  std::vector<Command> commands;
  if (s.buzzer1Setting == 1) commands.push_back(buzzerBlock(s.buzzer1OnTime, s.buzzer1Repeat));
  return commands;
}

std::vector<Command> endPage(JobSettings s) {
  std::vector<Command> commands = {{{0x1B, 0x4A, 0x10}, "page end: feed 16"}};
  if (s.buzzer1Setting == 2) commands.push_back(buzzerBlock(s.buzzer1OnTime, s.buzzer1Repeat));
  addCut(commands, s.pageCutType, "page end");
  return commands;
}

std::vector<Command> endJob(JobSettings s) {
  std::vector<Command> commands;
  if (s.docCutType != 0) {
    const unsigned feed = static_cast<unsigned>(s.feedCutAfterJobEnd) * 16 & 255;
    commands.push_back(
        {{0x1B, 0x4A, static_cast<std::uint8_t>(feed)}, "job end: feed " + std::to_string(feed)});
  }
  addCut(commands, s.docCutType, "job end");
  if (s.buzzer2Setting == 2) commands.push_back(buzzerBlock(s.buzzer2OnTime, s.buzzer2Repeat));
  if (s.cashDrawerSetting == 2) addDrawerPulse(commands, s.cashDrawerPulseWidth);
  commands.push_back(buzzerSwitch(false));
  commands.push_back({{0x1B, 0x76}, "job end"});
  return commands;
}

// The run -----------------------------------------------------------------------------

namespace {

constexpr std::int64_t kLargestPage = 2147483647;

// Printable width in pixels; 0: no limit.
std::uint64_t printableWidth(const JobSettings& settings, const Page& page) {
  const double width = settings.maxMediaWidth / 72.0 * page.hwResolutionX;
  if (!std::isfinite(width) || width < 0.0 || width >= 18446744073709551616.0) return 0;
  return static_cast<std::uint64_t>(width);
}

std::uint64_t excessOf(const JobSettings& settings, const Page& page) {
  const std::uint64_t printable = printableWidth(settings, page);
  return printable > 0 && page.bytesPerLine > printable ? page.bytesPerLine - printable : 0;
}

bool hasSaneGeometry(const JobSettings& settings, const Page& page) {
  if (page.width == 0 || page.width > page.bytesPerLine) return false;
  if (std::int64_t{page.height} * page.bytesPerLine > kLargestPage) return false;
  return excessOf(settings, page) < page.width;
}

// Moves the middle of every row to its start; the bytes right of it keep their values.
void centre(Bytes& pixels, const Page& page, std::uint64_t excess) {
  if (excess == 0) return;
  const std::uint64_t shift = excess / 2;
  for (std::uint64_t y = 0; y < page.height; ++y) {
    for (std::uint64_t x = 0; x < page.bytesPerLine - excess; ++x)
      pixels[y * page.bytesPerLine + x] = pixels[y * page.bytesPerLine + shift + x];
  }
}

int clampedTone(int value) {
  return value < -100 ? -100 : value > 100 ? 100 : value;
}

PageResult printPage(const JobSettings& settings, const Page& page) {
  const std::uint64_t excess = excessOf(settings, page);
  Bytes pixels = page.pixels;
  centre(pixels, page, excess);
  PageOptions options;
  options.removeBlankEdges = settings.pageType == 1 ? 0 : 15;
  options.halftoneType = settings.halftoneType;
  options.skipRightPixels = excess;
  options.brightness = clampedTone(settings.brightness);
  options.hwResolutionX = page.hwResolutionX;
  return printImage(options, pixels.data(), page.bytesPerLine, page.height, page.width);
}

void finish(JobResult& result, const JobSettings& settings, int printed) {
  add(result.commands, endJob(settings));
  if (printed > 0) {
    result.log.push_back("DEBUG:Ready to print.");
    result.status = 0;
  } else {
    result.log.push_back("ERROR:No pages found!");
  }
}

}  // namespace

JobResult runJob(const JobSettings& settings, const std::vector<Page>& pages,
                 std::vector<std::string> log) {
  JobResult result;
  result.log = std::move(log);
  result.commands.push_back({Bytes(64, 0), "64 zero bytes"});
  add(result.commands, jobSetup(settings));
  result.log.push_back("fopen() failed.");
  result.log.push_back("DEBUG:outFile cups.out : ADDRESS");
  int printed = 0;
  for (const Page& page : pages) {
    if (page.bitsPerPixel != 8) {
      result.log.push_back("ERROR:Unsupported bits per pixel : " +
                           std::to_string(page.bitsPerPixel) + " ! Requires 8 bits per pixel!");
      return result;
    }
    if (page.height == 0 || page.bytesPerLine == 0) break;
    result.log.push_back("DEBUG:Try print page: " + std::to_string(printed + 1) + " " +
                         std::to_string(page.numCopies));
    add(result.commands, pageSetup(settings));
    if (!hasSaneGeometry(settings, page)) {
      result.log.push_back("ERROR:*");
      break;
    }
    if (!page.readable) {
      result.log.push_back("ERROR:Failed to get " + std::to_string(printed + 1) + " page data!");
      break;
    }
    PageResult printedPage = printPage(settings, page);
    result.log.insert(result.log.end(), printedPage.log.begin(), printedPage.log.end());
    result.dumps.insert(result.dumps.end(), printedPage.dumps.begin(), printedPage.dumps.end());
    add(result.commands, printedPage.commands);
    add(result.commands, endPage(settings));
    printed += 1;
  }
  finish(result, settings, printed);
  return result;
}

JobResult runJob(const JobOptions& options, const std::vector<Page>& pages) {
  std::vector<std::string> log;
  const JobSettings settings = readSettings(options, log);
  return runJob(settings, pages, log);
}

}  // namespace reference
