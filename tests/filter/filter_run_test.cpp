// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The whole program: arguments, input, exact messages, exit status and every byte, for each way a
// job can end.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "filter/filter_run.h"
#include "tests/filter/expected_bytes.h"
#include "tests/support/bmp_file.h"
#include "tests/support/filter_job.h"
#include "tests/support/ppd_text.h"
#include "tests/support/raster_stream.h"

namespace wren_test {
namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

const Lines kNoPages = {"ERROR:No pages found!"};
const Lines kReady = {"DEBUG:Ready to print."};

FilterJob jobOf(const std::vector<RasterPage>& pages, RasterKind kind = RasterKind::kV3) {
  FilterJob job;
  job.ppd = fullPpd().text();
  job.raster = rasterStream(kind, pages);
  return job;
}

Lines lines(const FilterResult& result) {
  return messageLines(result.err);
}

struct Outcome {
  int status;
  std::string out;
  Lines messages;
};

// The outcome is the same for every raster format and every kind of input.
void expectOutcome(const std::vector<RasterPage>& pages, const Outcome& expected,
                   const std::string& options = {}) {
  for (const auto kind :
       {RasterKind::kV2, RasterKind::kV3, RasterKind::kV3Swapped, RasterKind::kPwg}) {
    for (const auto via : {RasterVia::kFile, RasterVia::kStandardInput, RasterVia::kPipe}) {
      SCOPED_TRACE(rasterSync(kind) + " by way " + std::to_string(static_cast<int>(via)));
      FilterJob job = jobOf(pages, kind);
      job.via = via;
      job.options = options;
      const auto result = runFilterJob(job);
      EXPECT_TRUE(result.exited(expected.status)) << result.exitStatus;
      EXPECT_EQ(hexOf(result.out), hexOf(expected.out));
      EXPECT_EQ(lines(result), expected.messages);
    }
  }
}

TEST(FilterRun, TooFewArgumentsPrintTheUsage) {
  const Lines five = {"/usr/lib/cups\\filter/wren", "1", "user", "title", "1"};
  for (long count = 1; count <= 5; ++count) {
    FilterJob job;
    job.arguments = {five.begin(), five.begin() + count};
    const auto result = runFilterJob(job);
    EXPECT_TRUE(result.exited(1));
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err,
              "wren v3.13.31\n\nUsage:\n\n    wren job_id user title copyies options [file]\n\n");
  }
}

TEST(FilterRun, NoArgumentsAtAllPrintTheUsageToo) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(wren::filter::runFilter(0, nullptr, {}, ""), 1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            " v3.13.31\n\nUsage:\n\n     job_id user title copyies options [file]\n\n");
}

TEST(FilterRun, InputFileThatCannotBeOpenedIsOneLineWithoutANewline) {
  FilterJob job = jobOf({});
  job.inputPath = "/missing/page.ras";
  const auto result = runFilterJob(job);
  EXPECT_TRUE(result.exited(1));
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "ERROR: Unable to open raster file - ");
}

TEST(FilterRun, MissingPpdIsOneErrorLineAndNoByte) {
  for (const char* path : {"-", "/missing/printer.ppd", "/"}) {
    FilterJob job = jobOf({flatPage(8, 8, 255)});
    job.ppdPath = path;  // "-": no variable PPD at all
    const auto result = runFilterJob(job);
    EXPECT_TRUE(result.exited(1));
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err.rfind("ERROR:Unable to open the PPD file", 0), 0U) << result.err;
    EXPECT_EQ(linesOf(result.err).size(), 1U);
    EXPECT_EQ(result.err.back(), '\n');
    EXPECT_TRUE(result.images.empty());
  }
}

TEST(FilterRun, DebugImagesAreSavedUnlessThePpdOrTheJobSaysOff) {
  const struct {
    const char* inPpd;  // null: the PPD does not have the option
    const char* inJob;
    std::size_t images;
  } rows[] = {{nullptr, "", 2},
              {"On", "", 2},
              {"Off", "", 0},
              {"On", "DebugImages=Off", 0},
              {"Off", "DebugImages=On", 2}};
  const auto expected = runFilterJob(jobOf({noisePage(40, 30, 1)}));
  for (const auto& row : rows) {
    FilterJob job = jobOf({noisePage(40, 30, 1)});
    if (row.inPpd != nullptr) {
      job.ppd = fullPpd().option("DebugImages", {"Off", "On"}, row.inPpd).text();
    }
    job.options = row.inJob;
    const auto result = runFilterJob(job);
    EXPECT_TRUE(result.exited(0));
    EXPECT_EQ(result.images.size(), row.images) << row.inJob;
    EXPECT_EQ(hexOf(result.out), hexOf(expected.out));
    EXPECT_EQ(lines(result), lines(expected));
  }
}

TEST(FilterRun, EmptyInputIsAJobWithoutPages) {
  for (const auto via : {RasterVia::kFile, RasterVia::kStandardInput, RasterVia::kPipe}) {
    FilterJob job = jobOf({});
    job.raster.clear();
    job.via = via;
    const auto result = runFilterJob(job);
    EXPECT_TRUE(result.exited(1));
    EXPECT_EQ(hexOf(result.out), hexOf(jobStart() + jobEnd()));
    EXPECT_EQ(lines(result), startLines() + kNoPages);
  }
}

TEST(FilterRun, StreamWithoutPagesOrOfNoKindIsAJobWithoutPages) {
  expectOutcome({}, {1, jobStart() + jobEnd(), startLines() + kNoPages});
  for (const char* raster : {"3SaR", "RaS2", "%!PS-Adobe-3.0\n", "\0\0\0\0\0\0\0\0"}) {
    FilterJob job = jobOf({});
    job.raster = raster;
    const auto result = runFilterJob(job);
    EXPECT_TRUE(result.exited(1));
    EXPECT_EQ(result.out, jobStart() + jobEnd());
    EXPECT_EQ(lines(result), startLines() + kNoPages);
  }
}

TEST(FilterRun, PagesOfEveryRasterKindThroughEveryWayIn) {
  expectOutcome({flatPage(13, 9, 255), flatPage(8, 16, 200)},
                {0, jobStart() + solidPage(13, 9) + solidPage(8, 16) + jobEnd(),
                 startLines() + pageLines(1, 13, 9) + pageLines(2, 8, 16) + kReady});
}

// Standard input contains a page too, which must not be read.
TEST(FilterRun, NamedFileComesBeforeStandardInput) {
  const TemporaryFolder folder;
  FilterJob job = jobOf({flatPage(8, 8, 255)});
  job.inputPath = folder.write("other.ras", rasterStream(RasterKind::kV3, {flatPage(8, 8, 0)}));
  EXPECT_EQ(hexOf(runFilterJob(job).out),
            hexOf(jobStart() + flatBands(8, 8, false) + pageEnd() + jobEnd()));
}

TEST(FilterRun, WritesTwoImagesForEachPage) {
  const auto result = runFilterJob(jobOf({flatPage(16, 9, 255), flatPage(8, 8, 0)}));
  ASSERT_EQ(result.images.size(), 4U);
  const char* const kinds[] = {"origin", "dithered", "origin", "dithered"};
  for (long i = 0; i < 4; ++i) {
    const auto& image = result.images[static_cast<std::size_t>(i)];
    EXPECT_EQ(image.kind, kinds[i]);
    EXPECT_EQ(image.number, i);
    EXPECT_TRUE(readBmp(image.bytes).complete);
  }
  EXPECT_EQ(readBmp(result.images[0].bytes).pixels, std::string(16 * 9, '\xFF'));
  EXPECT_EQ(readBmp(result.images[1].bytes).height, 9);
}

TEST(FilterRun, DepthOtherThan8EndsTheRunAtOnce) {
  for (const unsigned depth : {1U, 24U}) {
    RasterPage page = flatPage(8, 8, 255);
    page.header.cupsBitsPerPixel = depth;
    page.header.cupsBitsPerColor = depth == 1 ? 1 : 8;
    page.header.cupsNumColors = depth == 1 ? 1 : 3;
    page.header.cupsColorSpace = depth == 1 ? CUPS_CSPACE_K : CUPS_CSPACE_RGB;
    page.header.cupsBytesPerLine = depth;
    page.pixels.assign(8 * depth, '\xFF');
    const Lines refused = {"ERROR:Unsupported bits per pixel : " + std::to_string(depth) +
                           " ! Requires 8 bits per pixel!"};
    expectOutcome({page}, {1, jobStart(), startLines() + refused});
    expectOutcome({flatPage(8, 8, 255), page},
                  {1, jobStart() + solidPage(8, 8), startLines() + pageLines(1, 8, 8) + refused});
  }
}

// CUPS rejects such a header itself; the outcome is the same.
TEST(FilterRun, PageOfNoHeightEndsTheJobInTheOrdinaryWay) {
  RasterPage page = flatPage(8, 8, 255);
  page.header.cupsHeight = 0;
  expectOutcome({page}, {1, jobStart() + jobEnd(), startLines() + kNoPages});
  expectOutcome({flatPage(8, 8, 255), page}, {0, jobStart() + solidPage(8, 8) + jobEnd(),
                                              startLines() + pageLines(1, 8, 8) + kReady});
}

// The lines of `startLines` with one option at a choice other than 0.
Lines withChoice(Lines lines, const std::string& keyword, const std::string& choice) {
  const std::string line = "DEBUG:getOptionChoiceIndex: " + keyword + " = ";
  std::replace(lines.begin(), lines.end(), line + "0", line + choice);
  return lines;
}

TEST(FilterRun, PixelsThatEndTooEarlyAfterTwoGoodPages) {
  RasterPage broken = flatPage(8, 8, 255);
  broken.pixels.resize(63);
  const std::string buzzer = fromHex("1B420302");
  const std::string start = std::string(64, '\0') + fromHex("1B40 1F1B1F4265657008 1B5500");
  Lines messages = withChoice(startLines(), "Buzzer1Setting", "1");
  messages = withChoice(messages, "Buzzer1OnTime", "2");
  messages = withChoice(messages, "Buzzer1Repeat", "3");
  const Lines failed = {"DEBUG:Try print page: 3 1", "ERROR:Failed to get 3 page data!"};
  expectOutcome({flatPage(8, 8, 255), flatPage(8, 8, 255), broken},
                {0, start + buzzer + solidPage(8, 8) + buzzer + solidPage(8, 8) + buzzer + jobEnd(),
                 messages + pageLines(1, 8, 8) + pageLines(2, 8, 8) + failed + kReady},
                "Buzzer1Setting=1 Buzzer1OnTime=2 Buzzer1Repeat=3");
}

TEST(FilterRun, PixelsThatEndTooEarlyOnTheFirstPage) {
  RasterPage broken = flatPage(8, 8, 255);
  broken.pixels.resize(1);
  const Lines failed = {"DEBUG:Try print page: 1 1", "ERROR:Failed to get 1 page data!"};
  expectOutcome({broken}, {1, jobStart() + jobEnd(), startLines() + failed + kNoPages});
}

// 204 points at 203 dpi are 575 pixels; of 600 the bytes 12 to 586 are printed.
TEST(FilterRun, OverWidePageKeepsItsCentre) {
  RasterPage page = flatPage(600, 8, 0);
  for (const std::size_t x : {11U, 12U, 300U, 586U, 587U}) page.pixels[x] = '\xFF';
  FilterJob job = jobOf({page});
  job.ppd = fullPpd("None", "204.0").text();
  const auto result = runFilterJob(job);
  EXPECT_TRUE(result.exited(0));
  const auto pages = printedPages(result.out);
  ASSERT_EQ(pages.size(), 1U);
  std::string row(575, '.');
  row[0] = row[288] = row[574] = '#';
  EXPECT_EQ(pages[0].rows[0], row);
  EXPECT_EQ(readBmp(result.images[0].bytes).width, 600);
}

TEST(FilterRun, NoMediaWidthMeansNoLimit) {
  for (const char* width : {"0", "-204.0", "nan", "inf", "1e300", "abc", ""}) {
    FilterJob job = jobOf({flatPage(600, 1, 255)});
    job.ppd = fullPpd("None", width).text();
    EXPECT_EQ(printedPages(runFilterJob(job).out)[0].rows[0].size(), 600U) << width;
  }
  FilterJob job = jobOf({flatPage(600, 1, 255)});
  job.ppd = PpdText().text();
  EXPECT_EQ(printedPages(runFilterJob(job).out)[0].rows[0].size(), 600U);
}

TEST(FilterRun, PageTypeOneKeepsBlankEdges) {
  RasterPage page = flatPage(8, 24, 0);
  page.pixels.replace(8 * 10, 8, 8, '\xFF');
  FilterJob job = jobOf({page});
  EXPECT_EQ(printedPages(runFilterJob(job).out)[0].rows.size(), 2U);
  job.options = "PageType=1";
  EXPECT_EQ(printedPages(runFilterJob(job).out)[0].rows.size(), 24U);
}

TEST(FilterRun, LinesLongerThanTheWidthArePrintedByTheirWidth) {
  RasterPage page = flatPage(8, 8, 255);
  page.header.cupsBytesPerLine = 12;
  page.pixels.assign(12 * 8, '\xFF');
  if (!cupsPassesOn(page)) GTEST_SKIP() << "this CUPS library refuses such lines itself";
  const auto result = runFilterJob(jobOf({page}));
  EXPECT_TRUE(result.exited(0));
  // The dots have a stride of 12 bytes, 8 dots and 4 zeros, but are read with a stride of 8:
  // printed output depends on it.
  const auto rows = printedPages(result.out)[0].rows;
  EXPECT_EQ(rows, (Lines{"########", "....####", "####....", "########", "....####", "####....",
                         "########", "....####"}));
}

TEST(FilterRun, GeometryThatCupsPassesOnIsRefusedWithOneLine) {
  RasterPage narrow = flatPage(576, 8, 255);
  narrow.header.cupsBytesPerLine = 1;
  RasterPage none = flatPage(8, 8, 255);
  none.header.cupsWidth = 0;
  RasterPage tall = flatPage(8, 8, 255);
  tall.header.cupsHeight = 0xFFFFFFFFU;
  int tried = 0;
  for (const auto& [page, reason] :
       {std::pair{narrow, "its width is greater than its bytes per line"},
        {none, "its width is 0"},
        {tall, "it has more than 2147483647 bytes"}}) {
    if (!cupsPassesOn(page)) continue;
    ++tried;
    const auto result = runFilterJob(jobOf({flatPage(8, 8, 255), page}));
    EXPECT_TRUE(result.exited(0));
    EXPECT_EQ(result.out, jobStart() + solidPage(8, 8) + jobEnd());
    const Lines all = lines(result);
    EXPECT_EQ(all[all.size() - 2], std::string("ERROR:Unable to print page 2: ") + reason + "!");
  }
  if (tried == 0) GTEST_SKIP() << "this CUPS library refuses such headers itself";
}

TEST(FilterRun, ColourSpaceIsNotRead) {
  for (const auto space : {CUPS_CSPACE_W, CUPS_CSPACE_SW, CUPS_CSPACE_WHITE}) {
    RasterPage page = flatPage(8, 8, 255);
    page.header.cupsColorSpace = space;
    if (!cupsPassesOn(page)) continue;
    EXPECT_EQ(runFilterJob(jobOf({page})).out, jobStart() + solidPage(8, 8) + jobEnd());
  }
}

// --- The side file ---

struct SideFile {
  FilterResult result;
  std::string content = "none";
  unsigned mode = 0;
};

SideFile runWithOpt(const std::function<void(const fs::path&)>& prepare) {
  FilterJob job = jobOf({flatPage(8, 8, 255)});
  job.prepareFolder = [&](const TemporaryFolder& folder) {
    fs::create_directory(folder.path() / "opt");
    prepare(folder.path() / "opt");
  };
  RunningFilter filter(job);
  SideFile side;
  side.result = filter.finish();
  const fs::path file = filter.folder().path() / "opt/cupsout/cups.out";
  struct stat status = {};
  if (lstat(file.c_str(), &status) == 0) {
    side.mode = status.st_mode & 07777U;
    side.content = readFile(file);
  }
  return side;
}

TEST(FilterRun, SideFileIsCreatedEmptyForItsOwner) {
  if (!canMount()) GTEST_SKIP() << "needs mounts";
  const SideFile side =
      runWithOpt([](const fs::path& opt) { fs::create_directory(opt / "cupsout"); });
  EXPECT_TRUE(side.result.exited(0));
  EXPECT_EQ(side.content, "");
  EXPECT_EQ(side.mode, 0600U);
  EXPECT_EQ(side.result.err.find("(nil)"), std::string::npos);
  EXPECT_EQ(lines(side.result), startLines() + pageLines(1, 8, 8) + kReady);
}

TEST(FilterRun, SideFileIsEmptiedWhenItExists) {
  if (!canMount()) GTEST_SKIP() << "needs mounts";
  const SideFile side = runWithOpt([](const fs::path& opt) {
    fs::create_directory(opt / "cupsout");
    std::ofstream(opt / "cupsout/cups.out") << "old";
  });
  EXPECT_EQ(side.content, "");
}

TEST(FilterRun, SideFileFollowsNoSymbolicLink) {
  if (!canMount()) GTEST_SKIP() << "needs mounts";
  fs::path target;
  std::string kept;
  const SideFile side = runWithOpt([&](const fs::path& opt) {
    fs::create_directory(opt / "cupsout");
    target = opt / "target";
    std::ofstream(target) << "keep";
    fs::create_symlink("../target", opt / "cupsout/cups.out");
  });
  EXPECT_TRUE(side.result.exited(0));
  EXPECT_EQ(side.content, "keep");  // read through the link
  EXPECT_NE(side.result.err.find("DEBUG:outFile cups.out : (nil)\n"), std::string::npos);
}

// --- Descriptors ---

// Each line is one write, so that lines of other filters cannot be mixed into it.
TEST(FilterRun, EachMessageIsOneWrite) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
  FilterJob job = jobOf({flatPage(8, 8, 255), noisePage(20, 20, 1)});
  job.options = "HalftoneType=QVDithering";
  job.spool = SpoolKind::kMissing;
  job.beforeExec = [&] { dup2(ends[1], STDERR_FILENO); };
  const auto result = runFilterJob(job);
  close(ends[1]);
  Lines writes;
  std::string room(65536, '\0');
  for (ssize_t count = 0; (count = recv(ends[0], room.data(), room.size(), 0)) > 0;) {
    writes.push_back(room.substr(0, static_cast<std::size_t>(count)));
  }
  close(ends[0]);
  EXPECT_TRUE(result.exited(0));
  EXPECT_GE(writes.size(), 13U + 2 + 2 * 6 + 1);
  for (const auto& text : writes) {
    EXPECT_EQ(text.back(), '\n') << text;
    const auto end = text.find('\n');
    EXPECT_TRUE(end == text.size() - 1 || text.substr(end) == "\n\n") << text;
  }
}

// Otherwise the next file to be opened would get the descriptor of a closed stream.
TEST(FilterRun, ClosedDescriptorsAreOpenedOnTheNullDevice) {
  const FilterJob plain = jobOf({flatPage(8, 8, 255)});
  const auto expected = runFilterJob(plain);
  for (int closed = 1; closed < 8; ++closed) {
    FilterJob job = plain;
    job.via = RasterVia::kFile;
    job.beforeExec = [closed] {
      for (int i = 0; i < 3; ++i) {
        if ((closed & (1 << i)) != 0) close(i);
      }
    };
    const auto result = runFilterJob(job);
    EXPECT_TRUE(result.exited(0)) << closed;
    EXPECT_EQ(result.out, (closed & 2) != 0 ? "" : expected.out) << closed;
    EXPECT_EQ(lines(result), (closed & 4) != 0 ? Lines{} : lines(expected)) << closed;
    ASSERT_EQ(result.images.size(), 2U) << closed;
    EXPECT_EQ(result.images[0].bytes, expected.images[0].bytes) << closed;
    EXPECT_EQ(result.images[1].bytes, expected.images[1].bytes) << closed;
  }
}

TEST(FilterRun, ClosedStandardInputIsAnEmptyRaster) {
  FilterJob job = jobOf({flatPage(8, 8, 255)});
  job.beforeExec = [] { close(0); };
  const auto result = runFilterJob(job);
  EXPECT_TRUE(result.exited(1));
  EXPECT_EQ(result.out, jobStart() + jobEnd());
  EXPECT_EQ(lines(result), startLines() + kNoPages);
}

TEST(FilterRun, LeavesNoFileBehindButTheImages) {
  RunningFilter filter(jobOf({flatPage(8, 8, 255)}));
  EXPECT_EQ(filter.finish().images.size(), 2U);
  std::size_t files = 0;
  for (const auto& entry : fs::directory_iterator(filter.folder().path() / "spool")) {
    EXPECT_EQ(fs::status(entry).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    ++files;
  }
  EXPECT_EQ(files, 2U);
}

}  // namespace
}  // namespace wren_test
