// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/file_run.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <random>
#include <thread>

#include "common/handles.h"
#include "tests/escpos/printer_streams.h"
#include "tests/preview/png_reading.h"
#include "tests/preview/scratch_folder.h"

namespace wren::preview {
namespace {

using streams::bitImage;
using streams::Bytes;
using streams::feed;
using streams::hex;
using streams::operator+;

const Bytes kPage = hex("1B3C") + bitImage(1, hex("80 40 20 10 08 04 02 01")) + feed(16) + feed(16);

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

Outcome run(const Options& options) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int status = runFile(options);
  Outcome outcome{status, testing::internal::GetCapturedStdout(),
                  testing::internal::GetCapturedStderr()};
  return outcome;
}

Options optionsFor(const std::string& input) {
  Options options;
  options.input = input;
  return options;
}

TEST(FileRun, WritesThePictureBesideTheFileAndPrintsASummary) {
  const ScratchFolder folder;
  const std::string file = folder.write("job.prn", streams::job(kPage + hex("1D5600")));
  const Outcome outcome = run(optionsFor(file));
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  // 16 rows at 203 dpi are 2.0 mm.
  EXPECT_EQ(outcome.out, file + ": 1 page, 2.0 mm, 1 cut, 0 drawer pulses, 0 beeps, 111 bytes\n" +
                             folder.file("job.png") + "\n");
  EXPECT_EQ(readPng(folder.file("job.png")).text(),
            "#.......\n.#......\n..#.....\n...#....\n....#...\n.....#..\n......#.\n.......#\n"
            "........\n........\n........\n........\n........\n........\n........\n........\n");
}

TEST(FileRun, ShowsWhatWasPrintedBeforeTheFault) {
  const ScratchFolder folder;
  const std::string file = folder.write("cut off.prn", kPage + hex("1B2A01"));
  const Outcome outcome = run(optionsFor(file));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "wren-preview: " + file +
                ": offset 21: the stream ends inside a command, after 3 bytes of it\n");
  EXPECT_EQ(readPng(folder.file("cut off.png")).height, 16u);
}

TEST(FileRun, StopsAtThePaperLimit) {
  const ScratchFolder folder;
  Options options = optionsFor(folder.write("long.prn", kPage + kPage));
  options.style.dpi = 254;  // ten rows to a millimetre
  options.maxLengthMm = 2;
  const Outcome outcome = run(options);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.err.find("offset 36: the paper limit is reached, printing stops here"),
            std::string::npos)
      << outcome.err;
  EXPECT_EQ(readPng(folder.file("long.png")).height, 16u);
}

TEST(FileRun, MakesNoPictureOfNoPaper) {
  const ScratchFolder folder;
  const Outcome outcome = run(optionsFor(folder.write("pulse.prn", hex("1B40 1B70003232"))));
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "wren-preview: no paper was fed, no picture\n");
  EXPECT_FALSE(std::filesystem::exists(folder.file("pulse.png")));
}

TEST(FileRun, SplitsIntoNumberedPictures) {
  const ScratchFolder folder;
  Options options = optionsFor(folder.write("two.prn", kPage + hex("1D5600") + kPage));
  options.split = true;
  options.output = folder.file("piece.png");
  EXPECT_EQ(run(options).status, 0);
  EXPECT_EQ(readPng(folder.file("piece-1.png")).height, 16u);
  EXPECT_EQ(readPng(folder.file("piece-2.png")).height, 16u);
  EXPECT_FALSE(std::filesystem::exists(folder.file("piece-3.png")));
  EXPECT_FALSE(std::filesystem::exists(folder.file("piece.png")));
}

TEST(FileRun, ListsEveryCommand) {
  const ScratchFolder folder;
  Options options = optionsFor(folder.write("job.prn", hex("1B40 1B76")));
  options.list = true;
  const std::string listing =
      "         0        0  1B 40                       initialise the printer\n"
      "         2        2  1B 76                       ask for the paper status\n";
  EXPECT_EQ(run(options).out.substr(0, listing.size()), listing);
}

TEST(FileRun, GivesThePictureItsResolution) {
  const ScratchFolder folder;
  Options options = optionsFor(folder.write("job.prn", kPage));
  options.style.scale = 2;
  options.style.marks = true;
  EXPECT_EQ(run(options).status, 0);
  const auto png = bytesOfFile(folder.file("job.png"));
  // The pHYs chunk: 406 dpi are 15984 (3E70) pixels per metre in x and y; unit 1 is the metre.
  const auto resolution = hex("70485973 00003E70 00003E70 01");
  EXPECT_NE(std::search(png.begin(), png.end(), resolution.begin(), resolution.end()), png.end());
}

TEST(FileRun, NeverOverwritesItsInput) {
  const ScratchFolder folder;
  const std::string file = folder.write("job.png", kPage);
  EXPECT_EQ(run(optionsFor(file)).status, 1);
  Options options = optionsFor(folder.write("job.prn", kPage));
  options.output = folder.path() + "/./job.prn";
  EXPECT_EQ(run(options).status, 1);
  EXPECT_EQ(bytesOfFile(file), kPage);
  EXPECT_EQ(bytesOfFile(folder.file("job.prn")), kPage);
}

TEST(FileRun, ReportsFilesItCannotReadOrWrite) {
  const ScratchFolder folder;
  EXPECT_EQ(run(optionsFor(folder.file("absent.prn"))).status, 1);
  const Outcome aFolder = run(optionsFor(folder.path()));
  EXPECT_EQ(aFolder.status, 1);
  EXPECT_NE(aFolder.err.find("cannot be read to its end"), std::string::npos) << aFolder.err;
  Options options = optionsFor(folder.write("job.prn", kPage));
  options.output = folder.file("no/such/folder.png");
  const Outcome unwritable = run(options);
  EXPECT_EQ(unwritable.status, 1);
  EXPECT_EQ(unwritable.err, "wren-preview: " + options.output + ": No such file or directory\n");
}

TEST(FileRun, StopsAtAWriteErrorInTheMiddleOfAPicture) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
  // Noise compresses badly, so the file exceeds the buffer of the C library.
  std::mt19937 random(3);
  Bytes stream;
  for (int band = 0; band < 50; ++band) {
    Bytes columns(400);
    for (auto& column : columns) column = static_cast<std::uint8_t>(random());
    stream = stream + bitImage(1, columns) + feed(16);
  }
  const ScratchFolder folder;
  Options options = optionsFor(folder.write("noise.prn", stream));
  options.output = "/dev/full";
  const Outcome outcome = run(options);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "wren-preview: /dev/full: Write Error\n");
}

TEST(FileRun, CountsTheProblemsThatItDoesNotShow) {
  const ScratchFolder folder;
  Bytes stream;
  for (int i = 0; i < 103; ++i) stream = stream + hex("41 1B40");
  const Outcome outcome = run(optionsFor(folder.write("bad.prn", stream)));
  EXPECT_NE(outcome.err.find("bad.prn: 3 more like these\n"), std::string::npos) << outcome.err;
}

TEST(FileRun, NamesWhatItCannotDo) {
  const ScratchFolder folder;
  const std::string absent = folder.file("absent.prn");
  const Outcome missing = run(optionsFor(absent));
  EXPECT_EQ(missing.err, "wren-preview: " + absent + ": No such file or directory\n");
  EXPECT_EQ(missing.out, "");
  const std::string picture = folder.write("job.png", kPage);
  const Outcome same = run(optionsFor(picture));
  EXPECT_EQ(same.err, "wren-preview: " + picture +
                          ": the picture would replace its input, name another with -o\n");
  EXPECT_EQ(same.out, "");
}

// Longer than what is read at once, in both directions from a multiple of it.
TEST(FileRun, ReadsALongStreamToItsEnd) {
  const ScratchFolder folder;
  for (const std::size_t zeros : {131'068U, 131'069U, 131'070U, 300'000U}) {
    const std::string file = folder.write("long.prn", streams::repeat(zeros, 0) + feed(16));
    const Outcome outcome = run(optionsFor(file));
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, file + ": 0 pages, 1.0 mm, 0 cuts, 0 drawer pulses, 0 beeps, " +
                               std::to_string(zeros + 3) + " bytes\n" + folder.file("long.png") +
                               "\n");
  }
}

// The sender keeps its pipe open until the run has ended.
TEST(FileRun, DoesNotReadBeyondTheEndOfThePaper) {
  const ScratchFolder folder;
  const std::string path = folder.file("pipe.prn");
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  std::atomic<bool> hasEnded = false;
  bool endedByItself = false;
  std::thread sender([&] {
    const FileDescriptor pipe(::open(path.c_str(), O_WRONLY));
    Bytes stream;
    for (int i = 0; i < 30'000; ++i) stream = std::move(stream) + feed(255);
    ::signal(SIGPIPE, SIG_IGN);
    [[maybe_unused]] const ssize_t count = ::write(pipe.get(), stream.data(), stream.size());
    for (int i = 0; i < 2000 && !hasEnded; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    endedByItself = hasEnded;
  });
  Options options = optionsFor(path);
  options.maxLengthMm = 100;
  const Outcome outcome = run(options);
  hasEnded = true;
  sender.join();
  EXPECT_TRUE(endedByItself);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.err.find("the paper limit is reached"), std::string::npos) << outcome.err;
}

// Part of the output was lost, although there was room again at the end.
TEST(FileRun, RemembersThatItsOutputCouldNotBeWritten) {
  const ScratchFolder folder;
  const Options options = optionsFor(folder.write("job.prn", kPage));
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  std::fgetc(stdout);  // sets the error flag of a stream that is for writing
  const int status = runFile(options);
  std::clearerr(stdout);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "wren-preview: standard output cannot be written\n");
  EXPECT_EQ(status, 1);
}

TEST(FileRun, ReportsProblemsBesideAJsonDocumentToo) {
  const ScratchFolder folder;
  Options options = optionsFor(folder.write("bad.prn", kPage + hex("41")));
  options.json = true;
  const Outcome outcome = run(options);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "wren-preview: " + options.input + ": offset 21: 1 unknown byte\n");
  EXPECT_EQ(outcome.out.substr(0, 12), "{\"schema\":1,");
}

// The listing comes first, then the summary, then the pictures; no picture hides the next error.
TEST(FileRun, PrintsInThisOrder) {
  const ScratchFolder folder;
  Options options = optionsFor(folder.write("two.prn", feed(16) + hex("1D5600") + feed(16)));
  options.list = true;
  options.split = true;
  const Outcome outcome = run(options);
  EXPECT_EQ(outcome.out,
            "         0        0  1B 4A 10                    print and feed 16 units (8 rows)\n"
            "         3        3  1D 56 00                    full cut\n"
            "         6        6  1B 4A 10                    print and feed 16 units (8 rows)\n" +
                options.input + ": 0 pages, 2.0 mm, 1 cut, 0 drawer pulses, 0 beeps, 9 bytes\n" +
                folder.file("two-1.png") + "\n" + folder.file("two-2.png") + "\n");
}

TEST(FileRun, DoesNotRemoveADeviceAfterAnError) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
  const ScratchFolder folder;
  Options options = optionsFor(folder.write("job.prn", kPage));
  options.output = "/dev/full";
  const Outcome outcome = run(options);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err.substr(0, 25), "wren-preview: /dev/full: ");
  EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

}  // namespace
}  // namespace wren::preview
