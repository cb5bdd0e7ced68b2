// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Truncated rasters: the complete pages are printed, and the job ends normally.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <random>

#include "tests/filter/expected_bytes.h"
#include "tests/support/filter_job.h"
#include "tests/support/ppd_text.h"
#include "tests/support/raster_stream.h"

namespace wren_test {
namespace {

namespace fs = std::filesystem;

#ifdef __SANITIZE_ADDRESS__
constexpr std::size_t kCutStep = 31;  // the sanitizer starts slowly
#else
constexpr std::size_t kCutStep = 1;
#endif

// The expected result of a job of 16 x 16 pages whose stream ends after `cut` bytes.
struct CutJob {
  static constexpr std::size_t kPages = 3;
  static constexpr std::size_t kHeader = sizeof(cups_page_header2_t);
  static constexpr std::size_t kPage = kHeader + 256;

  static std::string raster() {
    return rasterStream(RasterKind::kV3, std::vector(kPages, flatPage(16, 16, 255)));
  }
  static std::size_t wholePages(std::size_t cut) { return cut < 4 ? 0 : (cut - 4) / kPage; }
  static bool endsInPixels(std::size_t cut) {
    return cut >= 4 + kHeader && (cut - 4) % kPage >= kHeader;
  }
  static std::string out(std::size_t cut) {
    std::string bytes = jobStart();
    for (std::size_t i = 0; i < wholePages(cut); ++i) bytes += solidPage(16, 16);
    return bytes + jobEnd();
  }
  static std::string lastLines(std::size_t cut) {
    const std::string number = std::to_string(wholePages(cut) + 1);
    return (endsInPixels(cut) ? "ERROR:Failed to get " + number + " page data!\n" : "") +
           (wholePages(cut) == 0 ? "ERROR:No pages found!\n" : "DEBUG:Ready to print.\n");
  }
  static int status(std::size_t cut) { return wholePages(cut) == 0 ? 1 : 0; }
};

// Runs the filter many times in one private spool folder, with little overhead.
class ManyRuns {
 public:
  ManyRuns() {
    fs::create_directory(folder.path() / "spool");
    ppd = "PPD=" + folder.write("printer.ppd", fullPpd().text()).string();
    input = open((folder.path() / "page.ras").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    out = open((folder.path() / "out").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_APPEND, 0600);
    err = open((folder.path() / "err").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_APPEND, 0600);
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, 0);
    posix_spawn_file_actions_adddup2(&actions, out, 1);
    posix_spawn_file_actions_adddup2(&actions, err, 2);
    if (chdir(folder.path().c_str()) != 0) _exit(124);
    enterPrivateSpool(folder.path(), SpoolKind::kPrivate);
  }

  int run(const std::string& raster) {
    if (ftruncate(input, 0) != 0 || ftruncate(out, 0) != 0 || ftruncate(err, 0) != 0) return -1;
    if (pwrite(input, raster.data(), raster.size(), 0) < 0) return -1;
    lseek(input, 0, SEEK_SET);
    std::string words[] = {"queue", "1", "user", "title", "1", ""};
    std::string zone = "TZ=UTC";
    char* const arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(),
                               words[4].data(), words[5].data(), nullptr};
    char* const environment[] = {ppd.data(), zone.data(), nullptr};
    pid_t pid = -1;
    int status = -1;
    if (posix_spawn(&pid, program.c_str(), &actions, nullptr, arguments, environment) != 0) {
      return -1;
    }
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  std::string outBytes() const { return readFile(folder.path() / "out"); }
  std::string errText() const { return readFile(folder.path() / "err"); }

 private:
  TemporaryFolder folder;
  std::string program = filterProgram();
  std::string ppd;
  int input = -1;
  int out = -1;
  int err = -1;
  posix_spawn_file_actions_t actions;
};

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// The cuts with a wrong result, with their exit status.
std::string wrongCuts(const std::vector<std::size_t>& cuts) {
  ManyRuns runs;
  const std::string raster = CutJob::raster();
  std::string wrong;
  for (const std::size_t cut : cuts) {
    const int status = runs.run(raster.substr(0, cut));
    const bool right =
        status == CutJob::status(cut) && runs.outBytes() == CutJob::out(cut) &&
        endsWith(runs.errText(), CutJob::lastLines(cut)) &&
        (CutJob::endsInPixels(cut) || runs.errText().find("Failed") == std::string::npos);
    if (!right) wrong += std::to_string(cut) + " (status " + std::to_string(status) + ") ";
  }
  return wrong;
}

// In a process of its own, because a process cannot leave its private spool folder.
void expectRightAtAllCuts(const std::vector<std::size_t>& cuts) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    const std::string wrong = wrongCuts(cuts).substr(0, 4000);
    const bool told = write(ends[1], wrong.data(), wrong.size()) >= 0;
    _exit(told ? 0 : 1);
  }
  close(ends[1]);
  std::string wrong(4000, '\0');
  std::size_t length = 0;
  for (ssize_t got = 0; (got = read(ends[0], &wrong[length], wrong.size() - length)) > 0;) {
    length += static_cast<std::size_t>(got);
  }
  close(ends[0]);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(wrong.substr(0, length), "");
  EXPECT_EQ(status, 0);
}

std::vector<std::size_t> everyCut(std::size_t first, std::size_t last) {
  std::vector<std::size_t> cuts;
  for (std::size_t cut = first; cut <= last; cut += kCutStep) cuts.push_back(cut);
  return cuts;
}

TEST(Fault, RasterCutAtEveryByteOfItsFirst2KiB) {
  expectRightAtAllCuts(everyCut(0, 2048));
}

TEST(Fault, RasterCutAtEveryByteOfItsNext2KiB) {
  expectRightAtAllCuts(everyCut(2049, 4096));
}

TEST(Fault, RasterCutAt200RandomPlaces) {
  std::mt19937 numbers(20);
  std::vector<std::size_t> cuts;
  for (int i = 0; i < 200; ++i) cuts.push_back(numbers() % (CutJob::raster().size() + 1));
  expectRightAtAllCuts(cuts);
}

}  // namespace
}  // namespace wren_test
