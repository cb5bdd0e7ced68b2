// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// How much memory a page needs, and what happens if there is not enough.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <fstream>

#include "tests/filter/expected_bytes.h"
#include "tests/support/filter_job.h"
#include "tests/support/ppd_text.h"
#include "tests/support/raster_stream.h"

namespace wren_test {
namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr bool kMemoryCounts = false;  // a sanitizer needs much memory itself
#else
constexpr bool kMemoryCounts = true;
#endif

constexpr unsigned kWidth = 576;
constexpr unsigned kHeight = 16000;
constexpr double kPageKilobytes = kWidth * kHeight / 1024.0;

// Written row by row: until exec, a child is charged for the memory of this program.
std::string writeLongPage(const TemporaryFolder& folder, unsigned pages) {
  const std::string path = folder.path() / "long.ras";
  std::ofstream out(path, std::ios::binary);
  out << rasterSync(RasterKind::kV3);
  for (unsigned page = 0; page < pages; ++page) {
    out << rasterPage(RasterKind::kV3, {greyHeader(kWidth, kHeight), {}});
    for (unsigned y = 0; y < kHeight; ++y) {
      std::string row(kWidth, '\0');
      for (unsigned x = 0; x < kWidth; ++x) row[x] = static_cast<char>(x * 7 + y * 3);
      out << row;
    }
  }
  return path;
}

// The largest resident size of the filter up to the encoding of its last page. Read from the
// running process: the value that wait() reports includes the size of this program.
long peakOf(const std::string& type, const std::string& inputPath, unsigned pages) {
  FilterJob job;
  job.ppd = fullPpd(type).text();
  job.via = RasterVia::kPipe;
  RunningFilter filter(job);
  std::ifstream in(inputPath, std::ios::binary);
  std::string block(1 << 20, '\0');
  while (in.read(block.data(), static_cast<std::streamsize>(block.size())), in.gcount() > 0) {
    filter.process().feed(block.substr(0, static_cast<std::size_t>(in.gcount())));
  }
  const std::string last = "Try print page: " + std::to_string(pages) + " ";
  EXPECT_TRUE(filter.process().waitForError(pages == 0 ? "outFile" : last));
  const std::size_t bands = pages == 0 ? 0 : pages * (flatBands(kWidth, kHeight).size() - 65536);
  EXPECT_TRUE(filter.process().waitForOutput(bands));
  const long peak = filter.process().peakKilobytesSoFar();
  filter.finish();
  return peak;
}

class PagePeak : public testing::Test {
 protected:
  // Peak of a long page minus that of an empty job, in pages.
  double pagesInMemory(const std::string& type, unsigned pages = 1) {
    const long full = peakOf(type, writeLongPage(folder, pages), pages);
    const long empty = peakOf(type, folder.write("empty.ras", rasterSync(RasterKind::kV3)), 0);
    return static_cast<double>(full - empty) / kPageKilobytes;
  }
  TemporaryFolder folder;
};

// docs/ARCHITECTURE.md states these figures.
TEST_F(PagePeak, OfTheClassicMethodsIsAtMost1Point4Pages) {
  if (!kMemoryCounts) GTEST_SKIP() << "not measured with a sanitizer";
  for (const char* type : {"None", "FloydSteinberg", "JarvisJudiceNinke", "StevensonArce"}) {
    const double pages = pagesInMemory(type);
    RecordProperty(type, std::to_string(pages));
    EXPECT_LE(pages, 1.4) << type;
    EXPECT_GE(pages, 1.1) << type << ": the measurement itself is in doubt";
  }
}

TEST_F(PagePeak, OfTheStencilMethodIsAtMost1Point4Pages) {
  if (!kMemoryCounts) GTEST_SKIP() << "not measured with a sanitizer";
  const double pages = pagesInMemory("QVDithering");
  RecordProperty("QVDithering", std::to_string(pages));
  EXPECT_LE(pages, 1.4);
}

TEST_F(PagePeak, DoesNotGrowWithTheNumberOfPages) {
  if (!kMemoryCounts) GTEST_SKIP() << "not measured with a sanitizer";
  EXPECT_LE(pagesInMemory("None", 3), 1.4);
}

// --- No memory ---

std::vector<std::string> errorLines(const std::string& err) {
  std::vector<std::string> errors;
  for (const auto& line : linesOf(err)) {
    if (line.rfind("ERROR", 0) == 0 || line.rfind("CRIT", 0) == 0) errors.push_back(line);
  }
  return errors;
}

rlim_t addressSpaceOf(pid_t pid) {
  std::ifstream statm("/proc/" + std::to_string(pid) + "/statm");
  rlim_t pages = 0;
  statm >> pages;
  return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

// Limits the memory of a filter that waits for its first page, then sends the page.
FilterResult runWithSpare(const std::string& type, const std::string& raster, rlim_t spare) {
  FilterJob job;
  job.ppd = fullPpd(type).text();
  job.via = RasterVia::kPipe;
  RunningFilter filter(job);
  filter.process().feed(raster.substr(0, 4));
  EXPECT_TRUE(filter.process().waitForError("outFile"));
  usleep(2000);
  const rlimit limit = {addressSpaceOf(filter.process().id()) + spare, RLIM_INFINITY};
  EXPECT_EQ(prlimit(filter.process().id(), RLIMIT_AS, &limit, nullptr), 0);
  filter.process().feed(raster.substr(4));
  return filter.finish();
}

void expectAnErrorOrAPage(const FilterResult& result, const std::string& what) {
  EXPECT_EQ(result.signal, 0) << what << "\n" << result.err;
  const auto errors = errorLines(result.err);
  if (result.exited(1)) {
    EXPECT_EQ(errors, std::vector<std::string>{"ERROR:Out of memory"}) << what;
  } else {
    EXPECT_TRUE(result.exited(0)) << what;
    EXPECT_TRUE(errors.empty()) << what << " " << errors.front();
    EXPECT_EQ(result.out.substr(0, jobStart().size()), jobStart());
    EXPECT_EQ(result.out.substr(result.out.size() - (pageEnd() + jobEnd()).size()),
              pageEnd() + jobEnd())
        << what;
  }
}

// Each allocation of a page fails at some of these limits: one line and status 1 where the
// filter cannot continue, a page without dots where the page is dropped.
TEST(NoMemory, IsOneLineAndStatus1OrADroppedPage) {
  if (!kMemoryCounts) GTEST_SKIP() << "a sanitizer needs all the address space";
  // The buffer of a smaller page would fit into memory that the PPD has left free in the heap.
  constexpr unsigned kSide = 2048;
  const std::string raster = rasterStream(RasterKind::kV3, {noisePage(kSide, kSide, 4)});
  int refused = 0;
  int emptyPages = 0;
  int printed = 0;
  for (const char* type : {"Burkes", "QVDithering"}) {
    for (int eighths = 0; eighths <= 64; ++eighths) {
      const auto spare = static_cast<rlim_t>(eighths) * (kSide * kSide / 8);
      const auto result = runWithSpare(type, raster, spare);
      expectAnErrorOrAPage(result, std::string(type) + " " + std::to_string(eighths));
      const auto pages = printedPages(result.out);
      refused += result.exited(1) ? 1 : 0;
      emptyPages += result.exited(0) && pages.empty() ? 1 : 0;
      printed += result.exited(0) && pages.size() == 1 ? 1 : 0;
    }
  }
  EXPECT_GT(refused, 0);     // no page buffer
  EXPECT_GT(emptyPages, 0);  // no scratch page, no output page
  EXPECT_GT(printed, 0);
}

// The PPD comes through a named pipe, so that the limit can be set after main has started: the
// loader and the start-up of the libraries are not tested here.
FilterResult runWithSpareForThePpd(const std::string& ppd, rlim_t spare) {
  const TemporaryFolder folder;
  const std::string fifo = folder.path() / "printer.ppd";
  EXPECT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  FilterJob job;
  job.ppdPath = fifo;
  job.raster = rasterStream(RasterKind::kV3, {flatPage(64, 64, 255)});
  job.options = std::string(20000, 'x') + "=1 PageType=1";
  RunningFilter filter(job);
  const int writer = open(fifo.c_str(), O_WRONLY | O_CLOEXEC);  // waits for the filter
  const rlimit limit = {addressSpaceOf(filter.process().id()) + spare, RLIM_INFINITY};
  EXPECT_EQ(prlimit(filter.process().id(), RLIMIT_AS, &limit, nullptr), 0);
  EXPECT_NE(write(writer, ppd.data(), ppd.size()), 0);
  close(writer);
  return filter.finish();
}

// CUPS would crash if memory ran out while it reads a PPD, so the filter checks first.
TEST(NoMemory, InTheMiddleOfAPpdCannotHappen) {
  if (!kMemoryCounts) GTEST_SKIP() << "a sanitizer needs all the address space";
  PpdText ppd = fullPpd();
  for (int i = 0; i < 200; ++i) ppd.option("Wren" + std::to_string(i), {"A", "B"}, "A");
  for (rlim_t kilobytes = 0; kilobytes <= 512; kilobytes += 32) {
    const auto result = runWithSpareForThePpd(ppd.text(), kilobytes * 1024);
    EXPECT_TRUE(result.exited(0)) << kilobytes << " signal " << result.signal << result.err;
  }
}

// With very little memory the loader or a library fails before main. From the first limit at
// which the filter prints or reports an error, every run must do so.
TEST(NoMemory, AtTheStartIsReportedToo) {
  if (!kMemoryCounts) GTEST_SKIP() << "a sanitizer needs all the address space";
  FilterJob job;
  PpdText ppd = fullPpd();
  for (int i = 0; i < 300; ++i) ppd.option("Wren" + std::to_string(i), {"A", "B"}, "A");
  job.ppd = ppd.text();
  job.raster = rasterStream(RasterKind::kV3, {flatPage(64, 64, 255)});
  int refused = 0;
  int printed = 0;
  for (rlim_t kilobytes = 8 * 1024; kilobytes <= 64 * 1024 && printed < 4; kilobytes += 64) {
    job.beforeExec = [kilobytes] {
      const rlimit limit = {kilobytes * 1024, kilobytes * 1024};
      setrlimit(RLIMIT_AS, &limit);
    };
    const auto result = runFilterJob(job);
    const bool spoke = result.exited(0) || result.exited(1);
    if (!spoke && refused + printed == 0) continue;
    EXPECT_TRUE(spoke) << kilobytes << " signal " << result.signal;
    printed += result.exited(0) ? 1 : 0;
    if (!result.exited(1)) continue;
    ++refused;
    EXPECT_EQ(errorLines(result.err), std::vector<std::string>{"ERROR:Out of memory"})
        << kilobytes << "\n"
        << result.err;
  }
  EXPECT_GT(refused, 0);
  EXPECT_GT(printed, 0);
}

}  // namespace
}  // namespace wren_test
