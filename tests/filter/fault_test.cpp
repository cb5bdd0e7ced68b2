// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Faults around the real filter: failing outputs, unusable inputs, unwritable folders, malformed
// PPDs. The filter must not lose a printable page, hang, or exit without a message.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <ctime>
#include <fstream>

#include "tests/filter/expected_bytes.h"
#include "tests/support/bmp_file.h"
#include "tests/support/filter_job.h"
#include "tests/support/ppd_text.h"
#include "tests/support/raster_stream.h"

namespace wren_test {
namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

#ifdef __SANITIZE_ADDRESS__
constexpr bool kSanitized = true;  // slow, and it needs much memory itself
#else
constexpr bool kSanitized = false;
#endif

FilterJob jobOf(const std::vector<RasterPage>& pages) {
  FilterJob job;
  job.ppd = fullPpd().text();
  job.raster = rasterStream(RasterKind::kV3, pages);
  return job;
}

const Lines kReady = {"DEBUG:Ready to print."};

void expectLines(const FilterResult& result, const Lines& expected) {
  EXPECT_EQ(messageLines(result.err), expected);
}

// --- Standard output ---

TEST(Fault, ClosedOutputLosesNoImageAndNoMessage) {
  FilterJob job = jobOf({flatPage(8, 8, 255)});
  const auto expected = runFilterJob(job);
  job.beforeExec = [] { close(STDOUT_FILENO); };
  const auto result = runFilterJob(job);
  EXPECT_TRUE(result.exited(0));
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(messageLines(result.err), messageLines(expected.err));
  ASSERT_EQ(result.images.size(), 2U);
  EXPECT_EQ(result.images[1].bytes, expected.images[1].bytes);
}

// Write errors are ignored: the exit status depends on the pages only.
TEST(Fault, FullOutputGoesUnnoticed) {
  FilterJob job = jobOf({flatPage(576, 2000, 255)});
  job.beforeExec = [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); };
  const auto result = runFilterJob(job);
  EXPECT_TRUE(result.exited(0));
  expectLines(result, startLines() + pageLines(1, 576, 2000) + kReady);
  EXPECT_EQ(result.images.size(), 2U);
}

// A long page fails in the middle of its bands. A short one fits in the buffer with the whole
// job, so that the only write comes at the end.
TEST(Fault, ReaderThatLeftEndsTheFilterAsByDefault) {
  for (const unsigned height : {8U, 2000U}) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    close(ends[0]);
    FilterJob job = jobOf({flatPage(576, height, 255)});
    job.beforeExec = [&] { dup2(ends[1], STDOUT_FILENO); };
    const auto result = runFilterJob(job);
    close(ends[1]);
    EXPECT_EQ(result.signal, SIGPIPE);
    EXPECT_EQ(result.out, "");
    expectLines(result,
                startLines() + pageLines(1, 576, height) + (height == 8 ? kReady : Lines{}));
  }
}

// --- Inputs other than regular files ---

TEST(Fault, FolderAsInputIsAJobWithoutPages) {
  FilterJob job = jobOf({});
  job.inputPath = "/";
  const auto result = runFilterJob(job);
  EXPECT_TRUE(result.exited(1));
  EXPECT_EQ(result.out, jobStart() + jobEnd());
  EXPECT_EQ(messageLines(result.err), startLines() + Lines{"ERROR:No pages found!"});
}

TEST(Fault, NamedPipeAsInputIsRead) {
  const TemporaryFolder folder;
  const std::string fifo = folder.path() / "page.ras";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  FilterJob job = jobOf({});
  job.inputPath = fifo;
  RunningFilter filter(job);
  std::ofstream(fifo, std::ios::binary)
      << rasterStream(RasterKind::kV3, {flatPage(8, 8, 255)}) << std::flush;
  const auto result = filter.finish();
  EXPECT_TRUE(result.exited(0));
  EXPECT_EQ(result.out, jobStart() + solidPage(8, 8) + jobEnd());
  expectLines(result, startLines() + pageLines(1, 8, 8) + kReady);
}

// No private spool folder: an ordinary user would need a user namespace for it, in which the
// process may read every file. The job writes no image.
TEST(Fault, FileThatMayNotBeReadIsReported) {
  const TemporaryFolder folder;
  const auto file = folder.write("page.ras", "RaS3");
  fs::permissions(file, fs::perms::none);
  ProcessSpec spec;
  // The user "nobody" (65534) cannot read below root's home, where the build may be.
  spec.program = folder.path() / "filter";
  fs::copy_file(filterProgram(), spec.program);
  spec.arguments = {"queue", "1", "user", "title", "1", "", file};
  // With coverage, the counters are written to a folder that "nobody" may write to.
  fs::permissions(folder.path(), fs::perms::all);
  spec.environment = {"GCOV_PREFIX=" + folder.path().string()};
  spec.beforeExec = [] {
    if (geteuid() == 0 && setuid(65534) != 0) _exit(123);  // root may read everything
  };
  const auto result = runProcess(spec);
  EXPECT_TRUE(result.exited(1));
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "ERROR: Unable to open raster file - ");
}

// --- Folders for the debug images ---

void expectPageWithoutImages(const FilterResult& result) {
  EXPECT_TRUE(result.exited(0));
  EXPECT_EQ(result.out, jobStart() + solidPage(8, 8) + solidPage(8, 8) + jobEnd());
  std::vector<std::string> numbers;
  const std::string start =
      std::string("WrenPrinter::saveImage: unable to open the file ") + kRealSpoolFolder;
  for (const auto& line : linesOf(result.err)) {
    if (line.rfind("WrenPrinter", 0) != 0) continue;
    EXPECT_EQ(line.substr(0, start.size()), start);
    numbers.push_back(line.substr(line.rfind('_')));
  }
  EXPECT_EQ(numbers, (Lines{"_0.bmp", "_1.bmp", "_2.bmp", "_3.bmp"}));
  EXPECT_TRUE(result.images.empty());
}

TEST(Fault, MissingSpoolFolderCostsOneLineForEachImage) {
  FilterJob job = jobOf({flatPage(8, 8, 255), flatPage(8, 8, 255)});
  job.spool = SpoolKind::kMissing;
  expectPageWithoutImages(runFilterJob(job));
}

TEST(Fault, ReadOnlySpoolFolderCostsOneLineForEachImage) {
  if (!canMount()) GTEST_SKIP() << "needs mounts";
  FilterJob job = jobOf({flatPage(8, 8, 255), flatPage(8, 8, 255)});
  job.spool = SpoolKind::kReadOnly;
  expectPageWithoutImages(runFilterJob(job));
}

TEST(Fault, FullSpoolFolderCostsNoPage) {
  if (!canMount()) GTEST_SKIP() << "needs mounts";
  FilterJob job = jobOf({flatPage(576, 100, 255), flatPage(576, 100, 255)});
  job.spool = SpoolKind::kFull;
  const auto result = runFilterJob(job);
  EXPECT_TRUE(result.exited(0));
  EXPECT_EQ(result.out, jobStart() + solidPage(576, 100) + solidPage(576, 100) + jobEnd());
  expectLines(result, startLines() + pageLines(1, 576, 100) + pageLines(2, 576, 100) + kReady);
}

// By default a write beyond the file size limit of a process ends it with SIGXFSZ.
TEST(Fault, LimitOnTheSizeOfFilesCostsNoPage) {
  FilterJob job = jobOf({flatPage(576, 100, 255), flatPage(576, 100, 255)});
  job.beforeExec = [] {
    const rlimit limit = {32768, 32768};  // half of an image of the page as received
    setrlimit(RLIMIT_FSIZE, &limit);
  };
  const auto result = runFilterJob(job);
  EXPECT_TRUE(result.exited(0)) << "signal " << result.signal;
  EXPECT_EQ(result.out, jobStart() + solidPage(576, 100) + solidPage(576, 100) + jobEnd());
  expectLines(result, startLines() + pageLines(1, 576, 100) + pageLines(2, 576, 100) + kReady);
}

// The image names that a job can use within the next minute.
std::vector<std::string> nextImageNames() {
  std::vector<std::string> names;
  const std::time_t now = std::time(nullptr);
  for (std::time_t second = now; second < now + 60; ++second) {
    std::tm when = {};
    gmtime_r(&second, &when);
    for (int number = 0; number < 4; ++number) {
      char name[96];
      std::snprintf(name, sizeof name, "%s_%d-%d-%d_%d_%d_%d_%d.bmp",
                    number % 2 == 0 ? "origin" : "dithered", when.tm_year + 1900, when.tm_mon + 1,
                    when.tm_mday, when.tm_hour, when.tm_min, when.tm_sec, number);
      names.emplace_back(name);
    }
  }
  return names;
}

// Another user can predict the next image names and create links with them in the folder.
void expectImagesLeaveAlone(void (*link)(const fs::path& target, const fs::path& name)) {
  FilterJob job = jobOf({flatPage(8, 8, 255), flatPage(8, 8, 255)});
  std::string target;
  job.prepareFolder = [&](const TemporaryFolder& folder) {
    target = folder.write("target", "keep");
    for (const auto& name : nextImageNames()) link(target, folder.path() / "spool" / name);
  };
  RunningFilter filter(job);
  auto result = filter.finish();
  EXPECT_EQ(readFile(target), "keep");
  for (const auto& image : result.images) EXPECT_EQ(image.bytes, "keep");
  result.images.clear();
  expectPageWithoutImages(result);
}

TEST(Fault, ImageNameThatIsASymbolicLinkIsNotFollowed) {
  expectImagesLeaveAlone(
      [](const fs::path& target, const fs::path& name) { fs::create_symlink(target, name); });
}

TEST(Fault, ImageNameThatIsAHardLinkIsNotOverwritten) {
  expectImagesLeaveAlone(
      [](const fs::path& target, const fs::path& name) { fs::create_hard_link(target, name); });
}

// --- Locale and time ---

// With a decimal comma in the locale, the numbers of the PPD still have a decimal point.
TEST(Fault, DecimalCommasDoNotReachThePpd) {
  const TemporaryFolder folder;
  const std::string place = folder.path() / "de_DE.UTF-8";
  const std::string build = "localedef -c -i de_DE -f UTF-8 '" + place + "' >/dev/null 2>&1";
  const std::string check = "LOCPATH='" + folder.path().string() +
                            "' LC_ALL=de_DE.UTF-8 /usr/bin/printf '%.1f' 0,5 2>/dev/null "
                            "| grep -q '^0,5$'";
  if (std::system(build.c_str()) == -1 || std::system(check.c_str()) != 0) {
    GTEST_SKIP() << "no locale with decimal commas can be made here";
  }
  FilterJob job = jobOf({flatPage(600, 8, 255)});
  job.ppd = fullPpd("None", "204.5").text();
  job.environment = {"TZ=UTC", "LOCPATH=" + folder.path().string(), "LC_ALL=de_DE.UTF-8",
                     "LANG=de_DE.UTF-8"};
  // The C library leaks the name of a locale that it finds through LOCPATH.
  if (kSanitized) job.environment.emplace_back("ASAN_OPTIONS=detect_leaks=0");
  const auto result = runFilterJob(job);
  EXPECT_TRUE(result.exited(0));
  EXPECT_EQ(result.out, jobStart() + solidPage(576, 8) + jobEnd());
  EXPECT_EQ(messageLines(result.err).back(), kReady.back());
}

// Uses a time zone in which midnight is two seconds away.
TEST(Fault, JobOverMidnightNamesEachImageByItsOwnMoment) {
  const std::time_t now = std::time(nullptr);
  const std::time_t ahead = 86398 - now % 86400;
  char zone[32];
  std::snprintf(zone, sizeof zone, "TZ=WRN-%02d:%02d:%02d", static_cast<int>(ahead / 3600),
                static_cast<int>(ahead / 60 % 60), static_cast<int>(ahead % 60));
  FilterJob job = jobOf({});
  job.via = RasterVia::kPipe;
  job.environment = {zone};
  RunningFilter filter(job);
  filter.process().feed(rasterStream(RasterKind::kV3, {flatPage(8, 8, 255)}));
  ASSERT_TRUE(filter.process().waitForError("printImage"));
  const bool beforeMidnight = std::time(nullptr) + ahead < now - now % 86400 + 86400;
  sleep(3);
  filter.process().feed(rasterPage(RasterKind::kV3, flatPage(8, 8, 255)));
  const auto result = filter.finish();
  EXPECT_TRUE(result.exited(0));
  EXPECT_EQ(result.out, jobStart() + solidPage(8, 8) + solidPage(8, 8) + jobEnd());
  expectLines(result, startLines() + pageLines(1, 8, 8) + pageLines(2, 8, 8) + kReady);
  ASSERT_EQ(result.images.size(), 4U);
  if (!beforeMidnight) GTEST_SKIP() << "the machine was too busy to print before midnight";
  const auto day = [](const SavedImage& image) {
    const auto start = image.name.find('_') + 1;
    return image.name.substr(start, image.name.find('_', start) - start);
  };
  EXPECT_NE(day(result.images[0]), day(result.images[3]));
  EXPECT_NE(result.images[0].name.find("_23_59_"), std::string::npos) << result.images[0].name;
  EXPECT_NE(result.images[3].name.find("_0_0_"), std::string::npos) << result.images[3].name;
}

// --- Malformed and huge PPDs ---

FilterResult resultWithPpd(const std::string& ppd) {
  FilterJob job = jobOf({flatPage(8, 8, 255)});
  job.ppd = ppd;
  return runFilterJob(job);
}

void expectOrdinaryJob(const FilterResult& result) {
  EXPECT_TRUE(result.exited(0)) << result.exitStatus << " signal " << result.signal << "\n"
                                << result.err;
  EXPECT_EQ(hexOf(result.out), hexOf(jobStart() + solidPage(8, 8) + jobEnd()));
  expectLines(result, startLines() + pageLines(1, 8, 8) + kReady);
}

TEST(Fault, PpdOfTenMebibytes) {
  std::string text = fullPpd().text();
  const std::string line = "*% " + std::string(97, 'x') + "\n";
  while (text.size() < 10U << 20) text += line;
  expectOrdinaryJob(resultWithPpd(text));
}

TEST(Fault, PpdWithTenThousandOptions) {
  PpdText ppd = fullPpd();
  const int options = kSanitized ? 1000 : 10000;
  for (int i = 0; i < options; ++i) ppd.option("Wren" + std::to_string(i), {"A", "B"}, "A");
  expectOrdinaryJob(resultWithPpd(ppd.text()));
}

TEST(Fault, PpdWithLatin1Text) {
  expectOrdinaryJob(resultWithPpd(fullPpd()
                                      .raw("*WrenNote: \"Gr\xFC\xDF"
                                           "e\"\n")
                                      .text()));
}

// CUPS either ignores the NUL bytes (a normal job) or rejects the file (one error line).
TEST(Fault, PpdWithNulBytes) {
  const std::string nul(1, '\0');
  for (const std::string& text :
       {fullPpd().text() + "*WrenNote: \"a" + nul + "b\"\n", nul + fullPpd().text(),
        fullPpd().text() + std::string(5000, '\0'), std::string(5000, '\0')}) {
    const auto result = resultWithPpd(text);
    EXPECT_EQ(result.signal, 0);
    if (result.exited(0)) {
      expectOrdinaryJob(result);
    } else {
      EXPECT_TRUE(result.exited(1));
      EXPECT_EQ(result.out, "");
      EXPECT_EQ(result.err.rfind("ERROR:Unable to open the PPD file", 0), 0U) << result.err;
      EXPECT_EQ(linesOf(result.err).size(), 1U);
    }
  }
}

// --- Many pages, long pages ---

long linesStarting(const std::string& start, const FilterResult& result) {
  const Lines lines = linesOf(result.err);
  return std::count_if(lines.begin(), lines.end(),
                       [&](const std::string& line) { return line.rfind(start, 0) == 0; });
}

TEST(Fault, FourThousandPagesLeaveTheMemoryFlat) {
  const std::string page = rasterPage(RasterKind::kV3, flatPage(64, 64, 255));
  long peaks[2] = {0, 0};
  for (int run = 0; run < 2; ++run) {
    const int pages = run == 0 ? 40 : 4000;
    FilterJob job = jobOf({});
    job.spool = SpoolKind::kMissing;
    job.via = RasterVia::kPipe;
    RunningFilter filter(job);
    filter.process().feed(rasterSync(RasterKind::kV3));
    for (int i = 0; i < pages; ++i) filter.process().feed(page);
    const auto result = filter.finish();
    EXPECT_TRUE(result.exited(0));
    std::string expected = jobStart();
    for (int i = 0; i < pages; ++i) expected += solidPage(64, 64);
    EXPECT_TRUE(result.out == expected + jobEnd());
    EXPECT_EQ(linesStarting("DEBUG:Try print page: ", result), pages);
    EXPECT_EQ(linesStarting("ERROR", result), 0);
    EXPECT_EQ(linesOf(result.err).back(), kReady.back());
    peaks[run] = result.peakKilobytes;
  }
  if (!kSanitized) {
    EXPECT_LT(peaks[1], peaks[0] + 512);
  }
}

TEST(Fault, PageOf576By200000) {
  FilterJob job = jobOf({});
  job.spool = SpoolKind::kMissing;
  job.raster = rasterStream(RasterKind::kV2, {flatPage(576, 200000, 255)});
  const auto result = runFilterJob(job);
  EXPECT_TRUE(result.exited(0));
  EXPECT_TRUE(result.out == jobStart() + solidPage(576, 200000) + jobEnd());
  EXPECT_EQ(linesStarting("ERROR", result), 0);
  EXPECT_EQ(linesOf(result.err).back(), kReady.back());
}

}  // namespace
}  // namespace wren_test
