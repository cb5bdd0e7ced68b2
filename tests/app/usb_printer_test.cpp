// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Printers at a USB port: what they answer is shown and waited for, those that say nothing are
// asked once, and the bytes of each job are those of the filter.

#include <cups/cups.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "tests/app/filter_of_pages.h"
#include "tests/app/printing_client.h"
#include "tests/app/running_app.h"
#include "tests/support/process.h"
#include "tests/support/raster_stream.h"
#include "tests/support/same_bytes.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPwg = "image/pwg-raster";
constexpr const char* kReady = "12 12 12 12";
constexpr const char* kNoPaper = "1A 32 12 72";

std::string page(unsigned rows = 100) {
  return rasterStream(RasterKind::kPwg, {noisePage(576, rows, 1)});
}

/// The folder behind the printer of usb_printer_app.cpp.
class UsbPrinter {
 public:
  explicit UsbPrinter(const std::string& answers, const std::string& unread = "") {
    setAnswers(answers);
    std::ofstream(path("unread")) << unread;
  }

  // In one step: the program reads the file at any time.
  void setAnswers(const std::string& answers) {
    std::ofstream(path("answers.new")) << answers << '\n';
    fs::rename(path("answers.new"), path("answers"));
  }

  std::string uri() const { return "usb://test" + folder_.path().string(); }

  std::string received() const { return contentOf("received"); }

  long vainReads() const {
    const std::string lines = contentOf("reads");
    return std::count(lines.begin(), lines.end(), '\n');
  }

 private:
  fs::path path(const char* name) const { return folder_.path() / name; }
  std::string contentOf(const char* name) const {
    return fs::exists(path(name)) ? readFile(path(name)) : "";
  }

  TemporaryFolder folder_;
};

bool isQuestion(std::string_view bytes) {
  return bytes.size() == 3 && bytes[0] == 0x10 && bytes[1] == 0x04 && bytes[2] >= 1 &&
         bytes[2] <= 4;
}

/// Without the questions before and after it; those between its bytes stay.
std::string jobOf(std::string_view bytes) {
  while (isQuestion(bytes.substr(0, 3))) bytes.remove_prefix(3);
  while (bytes.size() >= 3 && isQuestion(bytes.substr(bytes.size() - 3))) bytes.remove_suffix(3);
  return std::string(bytes);
}

AppSetup setupOf(const UsbPrinter& printer) {
  AppSetup setup;
  setup.device = printer.uri();
  setup.program = WREN_USB_PRINTER_APP;
  return setup;
}

/// What the status page says of the printer.
std::string statusText(const RunningApp& app) {
  http_t* http = httpConnect2("localhost", app.port(), nullptr, AF_UNSPEC,
                              HTTP_ENCRYPTION_IF_REQUESTED, 1, 10000, nullptr);
  if (http == nullptr) return {};
  std::string text;
  httpClearFields(http);
  if (httpGet(http, "/wren/status.txt") == 0) {
    while (httpUpdate(http) == HTTP_STATUS_CONTINUE) {
    }
    char part[256];
    for (ssize_t count = 0; (count = httpRead2(http, part, sizeof part)) > 0;) {
      text.append(part, static_cast<std::size_t>(count));
    }
  }
  httpClose(http);
  return text;
}

struct Shown {
  const char* name;
  const char* answers;
  const char* unread;
  const char* reasons;
  const char* status;
};

class UsbPrinterThatPrints : public testing::TestWithParam<Shown> {};

TEST_P(UsbPrinterThatPrints, ShowsHowItIsAndGetsTheJobOfTheFilter) {
  const Shown& shown = GetParam();
  const UsbPrinter printer(shown.answers, shown.unread);
  RunningApp app(setupOf(printer));
  const JobOutcome job = app.print(page(), kPwg);
  EXPECT_EQ(job.state, IPP_JSTATE_COMPLETED) << job.message;
  EXPECT_EQ(app.printerReasons(), shown.reasons);
  EXPECT_EQ(statusText(app), shown.status);
  EXPECT_THAT(jobOf(printer.received()), SameBytes(filterBytesOf(app.pages(), {})));
}

constexpr const char* kSaysNothing = "does not say how it is; drawer unknown\n";
constexpr const char* kClosed = "ready; drawer level low\n";
constexpr const char* kOpen = "ready; drawer level high\n";

// Noise: XON, XOFF, text and automatic status. The answers that nobody read are those of a printer
// with its cover open; in reads of their own they shift all that follow.
INSTANTIATE_TEST_SUITE_P(
    Printers, UsbPrinterThatPrints,
    testing::Values(Shown{"Ready", kReady, "", "none", kClosed},
                    Shown{"DrawerHigh", "16 12 12 12", "", "none", kOpen},
                    Shown{"PaperNearItsEnd", "12 12 12 1E", "", "media-low",
                          "paper near its end; drawer level low\n"},
                    Shown{"Silent", "silent", "", "none", kSaysNothing},
                    Shown{"OneWay", "one-way", "", "none", kSaysNothing},
                    Shown{"OnlyNoise", "silent", "11 13\n41 42\n", "none", kSaysNothing},
                    Shown{"Noise", "16 12 12 12", "11 13 41\n14 00 00 0F\n", "none", kOpen},
                    Shown{"UnreadAnswersAtOnce", "16 12 12 12", "1A 16 12 1E\n", "none", kOpen},
                    Shown{"OneUnreadAnswer", "16 12 12 12", "1E\n", "none", kOpen},
                    Shown{"TwoUnreadAnswers", "12 12 12 1E", "1A\n16\n", "media-low",
                          "paper near its end; drawer level low\n"}),
    [](const auto& shown) { return shown.param.name; });

class UsbPrinterThatSaysNothing : public testing::TestWithParam<const char*> {};

TEST_P(UsbPrinterThatSaysNothing, IsAskedOneQuestionInTheLifeOfTheProcess) {
  UsbPrinter printer(GetParam());
  RunningApp app(setupOf(printer));
  for (int job = 0; job < 2; ++job) {
    EXPECT_EQ(app.print(page(), kPwg).state, IPP_JSTATE_COMPLETED);
  }
  EXPECT_EQ(printer.vainReads(), 1);
  EXPECT_THAT(printer.received(),
              SameBytes("\x10\x04\x01" + filterBytesOf({app.pages().at(0)}, {}) +
                        filterBytesOf({app.pages().at(1)}, {})));
}

INSTANTIATE_TEST_SUITE_P(Kinds, UsbPrinterThatSaysNothing, testing::Values("silent", "one-way"));

// Each may cost ten seconds.
TEST(UsbPrinterThatFallsSilent, IsAskedOneQuestionMore) {
  UsbPrinter printer(kReady);
  RunningApp app(setupOf(printer));
  EXPECT_EQ(app.print(page(), kPwg).state, IPP_JSTATE_COMPLETED);
  printer.setAnswers("silent");
  for (int job = 0; job < 3; ++job) {
    EXPECT_EQ(app.print(page(), kPwg).state, IPP_JSTATE_COMPLETED);
  }
  EXPECT_EQ(printer.vainReads(), 2);
  EXPECT_EQ(statusText(app), kSaysNothing);
}

struct Wait {
  const char* name;
  const char* answers;
  const char* reason;
  const char* message;
};

class UsbPrinterThatCannotPrint : public testing::TestWithParam<Wait> {};

TEST_P(UsbPrinterThatCannotPrint, HoldsTheJobUntilItCan) {
  const Wait& wait = GetParam();
  UsbPrinter printer(wait.answers);
  RunningApp app(setupOf(printer));
  PrintingClient client(app, page());
  const JobOutcome waiting = app.waitForMessage(1, wait.message);
  EXPECT_EQ(waiting.message, wait.message);
  EXPECT_EQ(waiting.state, IPP_JSTATE_PROCESSING);
  EXPECT_THAT(waiting.reasons, testing::HasSubstr("printer-stopped"));
  EXPECT_EQ(app.waitForReasons(wait.reason), wait.reason);
  EXPECT_THAT(jobOf(printer.received()), "");
  printer.setAnswers(kReady);
  const JobOutcome job = client.outcome();
  EXPECT_EQ(job.state, IPP_JSTATE_COMPLETED) << job.message;
  EXPECT_EQ(job.message, "");
  EXPECT_EQ(app.printerReasons(), "none");
  EXPECT_THAT(jobOf(printer.received()), SameBytes(filterBytesOf(app.pages(), {})));
}

INSTANTIATE_TEST_SUITE_P(
    Faults, UsbPrinterThatCannotPrint,
    testing::Values(Wait{"NoPaper", kNoPaper, "media-empty", "Waiting: out of paper."},
                    Wait{"CoverOpen", "1A 16 12 12", "cover-open", "Waiting: cover open."},
                    Wait{"CutterError", "1A 52 1A 12", "other", "Waiting: cutter error."}),
    [](const auto& shown) { return shown.param.name; });

TEST(UsbPrinterWithoutPaper, GetsNothingOfAJobThatIsCancelledMeanwhile) {
  UsbPrinter printer(kNoPaper);
  RunningApp app(setupOf(printer));
  {
    PrintingClient client(app, page());
    app.waitForMessage(1, "Waiting: out of paper.");
    app.cancel(1);
    EXPECT_EQ(client.outcome().state, IPP_JSTATE_CANCELED);
  }
  EXPECT_THAT(jobOf(printer.received()), "");
  app.forgetPages();
  printer.setAnswers(kReady);
  EXPECT_EQ(app.print(page(), kPwg).state, IPP_JSTATE_COMPLETED);
  EXPECT_THAT(jobOf(printer.received()), SameBytes(filterBytesOf(app.pages(), {})));
}

TEST(UsbPrinterThatAnswers, IsAskedAtEachJob) {
  UsbPrinter printer(kReady);
  RunningApp app(setupOf(printer));
  EXPECT_EQ(app.print(page(), kPwg).state, IPP_JSTATE_COMPLETED);
  EXPECT_EQ(statusText(app), kClosed);
  printer.setAnswers("12 12 12 1E");
  EXPECT_EQ(app.print(page(), kPwg).state, IPP_JSTATE_COMPLETED);
  EXPECT_EQ(app.printerReasons(), "media-low");
}

}  // namespace
}  // namespace wren_test
