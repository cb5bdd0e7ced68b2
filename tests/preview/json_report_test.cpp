// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/json_report.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "preview/file_run.h"
#include "tests/escpos/printer_streams.h"
#include "tests/preview/scratch_folder.h"

namespace wren::preview {
namespace {

using nlohmann::json;
using streams::bitImage;
using streams::Bytes;
using streams::feed;
using streams::hex;
using streams::operator+;

// The document of a stream, and of the file it was read from.
json reportOf(const ScratchFolder& folder, const Bytes& stream, bool list,
              const std::string& name = "job.prn", unsigned dpi = 254) {
  Options options;
  options.input = folder.write(name, stream);
  options.json = true;
  options.list = list;
  options.style.dpi = dpi;  // at 254, ten rows are a millimetre
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  runFile(options);
  testing::internal::GetCapturedStderr();
  return json::parse(testing::internal::GetCapturedStdout(), nullptr, false);
}

TEST(JsonReport, ListsEveryCommand) {
  const ScratchFolder folder;
  const json report = reportOf(folder, hex("1B40 0000 1B2A010200FF01 1B4A10 41"), true);
  EXPECT_EQ(report["commands"], json::parse(R"json([
    {"offset": 0, "length": 2, "kind": "initialise", "bytes": "1B40",
     "meaning": "initialise the printer"},
    {"offset": 2, "length": 2, "kind": "nul", "bytes": "0000", "meaning": "2 zero bytes"},
    {"offset": 4, "length": 7, "kind": "bitImage", "bytes": "1B2A010200",
     "meaning": "bit image, double density, 2 columns, 9 dots"},
    {"offset": 11, "length": 3, "kind": "feed", "bytes": "1B4A10",
     "meaning": "print and feed 16 units (8 rows)"
},
    {"offset": 14, "length": 1, "kind": "unknown", "bytes": "41", "meaning": "1 unknown byte"}
  ])json"));
}

TEST(JsonReport, NamesEveryKindOfCommand) {
  const ScratchFolder folder;
  const json report = reportOf(folder,
                               hex("00 1B40 1B3C 1B2A010000 1B4A00 1D5600 1B70000000 1B5501 "
                                   "1B420101 1F1B1F4265657006 1B76 100401 100502 1014010001 "
                                   "1D7201 FF 1B"),
                               true);
  std::vector<std::string> kinds;
  for (const json& command : report["commands"]) kinds.push_back(command["kind"]);
  EXPECT_EQ(kinds,
            (std::vector<std::string>{"nul", "initialise", "home", "bitImage", "feed", "cut",
                                      "drawerPulse", "direction", "beep", "buzzerSetup",
                                      "statusRequest", "realTimeStatus", "realTimeRecovery",
                                      "realTimePulse", "transmitStatus", "unknown", "truncated"}));
}

// 100 rows, that is 10 mm, then the cut, the drawer and the buzzer.
TEST(JsonReport, SaysWhatThePaperShows) {
  const ScratchFolder folder;
  const json report =
      reportOf(folder, hex("1B3C") + feed(200) + hex("1D5601 1B70013232 1B420305"), false);
  json expected = json::parse(R"json({
    "schema": 1, "bytes": 17, "dpi": 254, "widthDots": 0, "lengthMm": 10.0,
    "pages": 1, "cuts": 1, "drawerPulses": 1, "beeps": 3,
    "events": [
      {"atMm": 0.0, "offset": 0, "kind": "page"},
      {"atMm": 10.0, "offset": 5, "kind": "partialCut"},
      {"atMm": 10.0, "offset": 8, "kind": "drawerPulse", "pin": 5, "onMs": 100},
      {"atMm": 10.0, "offset": 13, "kind": "beep", "count": 3}
    ],
    "problemCount": 0, "problems": [], "pictureErrors": []
  })json");
  expected["file"] = folder.file("job.prn");
  expected["pictures"] = {folder.file("job.png")};
  EXPECT_EQ(report, expected);
}

TEST(JsonReport, NamesProblemsAndPictureErrors) {
  const ScratchFolder folder;
  const json problem = reportOf(folder, hex("1B40 41"), false);
  EXPECT_EQ(problem["problemCount"], 1);
  EXPECT_EQ(problem["problems"],
            json::parse(R"json([{"offset": 2, "text": "1 unknown byte"}])json"));
  EXPECT_EQ(problem["pictures"], json::array());
}

// Each number is another one; lengths at 254 dpi are tenths of a millimetre.
TEST(JsonReport, CountsWhatThePrinterDid) {
  const ScratchFolder folder;
  Bytes stream = hex("1B3C") + bitImage(1, hex("FF FF FF")) + feed(202);
  for (int i = 0; i < 2; ++i) stream = stream + hex("1D5600") + feed(20);
  for (int i = 0; i < 3; ++i) stream = stream + hex("1B70003264");
  stream = stream + hex("1B420502");
  const json report = reportOf(folder, stream, false);
  const auto keys = {"widthDots", "lengthMm", "pages", "cuts", "drawerPulses", "beeps"};
  json numbers;
  for (const char* key : keys) numbers[key] = report[key];
  EXPECT_EQ(numbers, json::parse(R"json({"widthDots": 3, "lengthMm": 12.1, "pages": 1, "cuts": 2,
                                         "drawerPulses": 3, "beeps": 5})json"));
  EXPECT_EQ(report["events"], json::parse(R"json([
    {"atMm": 0.0, "offset": 0, "kind": "page"},
    {"atMm": 10.1, "offset": 13, "kind": "fullCut"},
    {"atMm": 11.1, "offset": 19, "kind": "fullCut"},
    {"atMm": 12.1, "offset": 25, "kind": "drawerPulse", "pin": 2, "onMs": 100},
    {"atMm": 12.1, "offset": 30, "kind": "drawerPulse", "pin": 2, "onMs": 100},
    {"atMm": 12.1, "offset": 35, "kind": "drawerPulse", "pin": 2, "onMs": 100},
    {"atMm": 12.1, "offset": 40, "kind": "beep", "count": 5}
  ])json"));
}

TEST(JsonReport, RoundsLengthsToTenthsOfAMillimetre) {
  const ScratchFolder folder;
  const auto lengthAt203Dpi = [&](std::uint8_t units) {
    return reportOf(folder, feed(units), false, "job.prn", 203)["lengthMm"];
  };
  EXPECT_EQ(lengthAt203Dpi(9), 0.6);   // 0.563 mm
  EXPECT_EQ(lengthAt203Dpi(10), 0.6);  // 0.626 mm
  EXPECT_EQ(lengthAt203Dpi(13), 0.8);  // 0.813 mm
}

TEST(JsonReport, NamesThePicturesThatCouldNotBeWritten) {
  const ScratchFolder folder;
  std::filesystem::create_directory(folder.file("job.png"));
  const json report = reportOf(folder, feed(16), false);
  EXPECT_EQ(report["pictures"], json::array());
  EXPECT_EQ(report["pictureErrors"], json::array({folder.file("job.png") + ": Is a directory"}));
}

TEST(JsonReport, CountsTheProblemsThatItDoesNotList) {
  const ScratchFolder folder;
  Bytes stream;
  for (int i = 0; i < 103; ++i) stream = stream + hex("41 1B40");
  const json report = reportOf(folder, stream, false);
  EXPECT_EQ(report["problemCount"], 103);
  EXPECT_EQ(report["problems"].size(), 100u);
}

// It is written while the stream is read: one command a line, then all else in a line.
TEST(JsonReport, HasALineForEachCommand) {
  const ScratchFolder folder;
  Options options;
  options.input = folder.write("job.prn", hex("1B40 1B3C"));
  options.json = true;
  options.list = true;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_EQ(runFile(options), 0);
  testing::internal::GetCapturedStderr();
  std::istringstream text(testing::internal::GetCapturedStdout());
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  ASSERT_EQ(lines.size(), 6u);
  EXPECT_EQ(lines[0], "{\"schema\":1,");
  EXPECT_EQ(lines[1], "\"file\":\"" + options.input + "\",");
  EXPECT_EQ(lines[2], "\"commands\":[");
  EXPECT_EQ(lines[3].substr(0, 22), "{\"offset\":0,\"length\":2");
  EXPECT_EQ(lines[4].substr(0, 22), "{\"offset\":2,\"length\":2");
  EXPECT_EQ(lines[4].substr(lines[4].size() - 3), "}],");
  EXPECT_EQ(lines[5].substr(0, 16), "\"bytes\":4,\"dpi\":");
}

TEST(JsonReport, IsValidForAFileNameThatIsNotUtf8) {
  const ScratchFolder folder;
  const json report = reportOf(folder, feed(16), true, "caf\xE9.prn");
  ASSERT_FALSE(report.is_discarded());
  EXPECT_EQ(report["file"], folder.file("caf\xEF\xBF\xBD.prn"));
}

TEST(JsonReport, HasAnEmptyListForAStreamWithoutCommands) {
  const ScratchFolder folder;
  EXPECT_EQ(reportOf(folder, {}, true)["commands"], json::array());
}

}  // namespace
}  // namespace wren::preview
