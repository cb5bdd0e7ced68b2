// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Jobs that are cancelled or reset while they come in or print, and documents that come in
// compressed.

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <zlib.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "common/handles.h"
#include "tests/app/filter_of_pages.h"
#include "tests/app/running_app.h"
#include "tests/app/scripted_printer.h"
#include "tests/app/slow_printer.h"
#include "tests/support/printer_bytes.h"
#include "tests/support/raster_stream.h"
#include "tests/support/same_bytes.h"

namespace wren_test {
namespace {

constexpr const char* kPwg = "image/pwg-raster";
constexpr const char* kFeedAndCut = "1B 4A 10 1B 4A C0 1D 56 01 1F 1B 1F 42 65 65 70 06 1B 76";
constexpr int kMostChecks = 2000;
constexpr std::chrono::milliseconds kCheckAgain(10);

const std::vector<JobAttribute> kOpenDrawer = {
    JobAttribute::keyword("cash-drawer-setting", "after")};

std::string pwg(const std::vector<RasterPage>& pages) {
  return rasterStream(RasterKind::kPwg, pages);
}

std::string ippText(char tag, const std::string& name, const std::string& value) {
  const auto length = [](const std::string& text) {
    return std::string{static_cast<char>(text.size() >> 8), static_cast<char>(text.size() & 0xFF)};
  };
  return tag + length(name) + name + length(value) + value;
}

std::string printJobRequest(const std::string& uri, const std::string& more = {},
                            const std::string& format = kPwg) {
  return std::string("\x02\x00\x00\x02\x00\x00\x00\x01\x01", 9) +
         ippText('\x47', "attributes-charset", "utf-8") +
         ippText('\x48', "attributes-natural-language", "en") +
         ippText('\x45', "printer-uri", uri) + ippText('\x42', "requesting-user-name", "tester") +
         ippText('\x49', "document-format", format) + more + '\x03';
}

/// A client that sends a job bit by bit.
class SlowClient {
 public:
  static constexpr std::size_t kChunked = 0;

  /// Announces a job of this many bytes, IPP message included, or one of chunks.
  SlowClient(const RunningApp& app, std::size_t bytes)
      : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(app.port()));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::connect(socket_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    send("POST /ipp/print/wren HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/ipp\r\n" +
         (bytes == kChunked ? "Transfer-Encoding: chunked"
                            : "Content-Length: " + std::to_string(bytes)) +
         "\r\n\r\n");
  }

  void send(const std::string& bytes) {
    EXPECT_EQ(::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }

  /// Waits for the answer. @return its IPP status; -1 if there is none.
  int answer() {
    constexpr char kHeadEnd[] = "\r\n\r\n";
    std::string text;
    for (;;) {
      const auto head = text.find(kHeadEnd);
      // Two bytes of the version stand before the status.
      if (head != std::string::npos && text.size() >= head + 8) {
        return static_cast<unsigned char>(text[head + 6]) * 256 +
               static_cast<unsigned char>(text[head + 7]);
      }
      char part[1024];
      const ssize_t count = ::recv(socket_.get(), part, sizeof part, 0);
      if (count <= 0) return -1;
      text.append(part, static_cast<std::size_t>(count));
    }
  }

  /// Ends the connection with a reset.
  void reset() {
    const linger hard = {1, 0};
    ::setsockopt(socket_.get(), SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
    socket_.reset();
  }

 private:
  wren::FileDescriptor socket_;
};

bool waitForJob(RunningApp& app, int job) {
  for (int i = 0; i < kMostChecks; ++i) {
    if (app.stateOf(job).id == job) return true;
    std::this_thread::sleep_for(kCheckAgain);
  }
  return false;
}

bool waitForProcessing(RunningApp& app, int job) {
  for (int i = 0; i < kMostChecks; ++i) {
    if (app.stateOf(job).state == IPP_JSTATE_PROCESSING) return true;
    std::this_thread::sleep_for(kCheckAgain);
  }
  return false;
}

/// Prints a job of its own, once the printer is free again.
JobOutcome printWhenFree(RunningApp& app) {
  for (;;) {
    const JobOutcome outcome = app.print(pwg({flatPage(576, 80, 255)}), kPwg);
    if (outcome.status != IPP_STATUS_ERROR_BUSY) return outcome;
  }
}

TEST(InterruptedJob, ResetInItsFirstPageWritesNothing) {
  RunningApp app;
  const std::string body = printJobRequest(app.printerUri()) + pwg({noisePage(576, 1600, 1)});
  SlowClient client(app, body.size());
  client.send(body.substr(0, body.size() / 2));
  ASSERT_TRUE(waitForProcessing(app, 1));
  client.reset();
  EXPECT_EQ(app.waitFor(1).state, IPP_JSTATE_ABORTED);
  ASSERT_EQ(printWhenFree(app).state, IPP_JSTATE_COMPLETED) << app.log();
  const auto papers = app.waitForPapers(1);
  ASSERT_EQ(papers.size(), 1U);
  EXPECT_EQ(printedPages(papers[0]).at(0).rows.size(), 80U);
}

TEST(InterruptedJob, ResetInItsSecondPageEndsWithFeedAndCut) {
  RunningApp app;
  const RasterPage first = flatPage(576, 80, 255);
  const std::string body =
      printJobRequest(app.printerUri()) + pwg({first, noisePage(576, 1600, 1)});
  SlowClient client(app, body.size());
  client.send(body.substr(0, body.size() / 2));
  ASSERT_TRUE(waitForProcessing(app, 1));
  client.reset();
  EXPECT_EQ(app.waitFor(1).state, IPP_JSTATE_ABORTED);
  const std::string bytes = app.waitForPapers(1).at(0);
  EXPECT_EQ(printedPages(bytes).size(), 1U);
  EXPECT_THAT(hexOf(bytes), testing::EndsWith(kFeedAndCut));
}

// A document as one chunk of a request, or with its length; the connection ends behind a whole
// line or page, so that nothing is wrong with what has come.
struct LostConnection {
  const char* name;
  const char* format;
  std::string document;
  bool isChunked;
  std::size_t papers;  ///< a page that was whole has printed
};

std::string chunk(const std::string& bytes) {
  char length[20];
  std::snprintf(length, sizeof length, "%zx\r\n", bytes.size());
  return length + bytes + "\r\n";
}

TEST(InterruptedJob, OfAConnectionThatEndsIsNotTakenForAWholeOne) {
  RunningApp app;
  const std::string page = pwg({flatPage(576, 80, 255)});
  const LostConnection cases[] = {
      {"text", "text/plain", "Total 12.50\n", false, 0},
      {"text in chunks", "text/plain", "Total 12.50\n", true, 0},
      {"raster", kPwg, page, false, 1},
      {"raster in chunks", kPwg, page, true, 1},
  };
  int id = 0;
  std::size_t papers = 0;
  for (const LostConnection& row : cases) {
    SCOPED_TRACE(row.name);
    const std::string body = printJobRequest(app.printerUri(), {}, row.format) + row.document;
    {
      SlowClient client(app, row.isChunked ? SlowClient::kChunked : body.size() + 1);
      client.send(row.isChunked ? chunk(body) : body);
      ASSERT_TRUE(waitForJob(app, ++id));
    }
    const JobOutcome outcome = app.waitFor(id);
    EXPECT_EQ(outcome.state, IPP_JSTATE_ABORTED);
    EXPECT_EQ(outcome.message, "the connection ended in the middle of the document");
    ASSERT_EQ(printWhenFree(app).state, IPP_JSTATE_COMPLETED) << app.log();
    ++id;
    papers += row.papers + 1;
    EXPECT_THAT(app.waitForPapers(papers), testing::SizeIs(papers));
  }
}

// Its rows still come: PAPPL reads the request to its end.
TEST(InterruptedJob, CancelledWhileItComesInWritesNothing) {
  RunningApp app;
  const std::string body = printJobRequest(app.printerUri()) + pwg({noisePage(576, 1600, 1)});
  SlowClient client(app, body.size());
  client.send(body.substr(0, body.size() / 2));
  ASSERT_TRUE(waitForProcessing(app, 1));
  app.cancel(1);
  client.send(body.substr(body.size() / 2));
  EXPECT_EQ(app.waitFor(1).state, IPP_JSTATE_CANCELED) << app.log();
  ASSERT_EQ(printWhenFree(app).state, IPP_JSTATE_COMPLETED) << app.log();
  EXPECT_THAT(app.waitForPapers(1), testing::SizeIs(1));
}

// A printer that takes its time: most of the page is still to be written when the cancel comes.
TEST(InterruptedJob, CancelledWhileALongPagePrintsEndsWithFeedAndCutAndNoDrawer) {
  SlowPrinter printer;
  printer.comeBack(50'000);
  RunningApp app({.device = printer.uri()});
  std::thread client([&] { app.submit(pwg({noisePage(576, 23976, 1)}), kPwg, kOpenDrawer); });
  EXPECT_TRUE(printer.waitForBytes(50'000));
  app.cancel(1);
  printer.readOn();
  client.join();
  EXPECT_EQ(app.waitFor(1).state, IPP_JSTATE_CANCELED);
  const auto received = printer.received();
  ASSERT_EQ(received.size(), 1U);
  constexpr std::size_t kWholePage = std::size_t{576} / 8 * 23976;
  EXPECT_LT(received[0].size(), kWholePage);
  EXPECT_THAT(hexOf(received[0]), testing::EndsWith(kFeedAndCut));
}

// Nothing of it was read: PAPPL reads raster while it prints.
TEST(InterruptedJob, ResetWhileItWaitsForAnotherIsCancelledInWords) {
  SlowPrinter printer;
  RunningApp app({.device = printer.uri()});
  app.submit("first\n", "text/plain");
  const std::string body = printJobRequest(app.printerUri()) + pwg({noisePage(576, 80, 1)});
  SlowClient client(app, body.size());
  client.send(body);
  EXPECT_TRUE(wren::app::eventually(
      [&] { return app.stateOf(2).message == "Waiting: jobs before this one."; }));
  client.reset();
  EXPECT_EQ(app.waitFor(2).state, IPP_JSTATE_CANCELED);
  EXPECT_TRUE(wren::app::eventually(
      [&] { return app.stateOf(2).message == "Its client went away; nothing was printed."; }));
  printer.comeBack();
  EXPECT_EQ(app.waitFor(1).state, IPP_JSTATE_COMPLETED);
  ASSERT_EQ(printer.received().size(), 1U);
  EXPECT_EQ(printedPages(printer.received()[0]).size(), 1U);
}

constexpr int kGzipWindow = 15 + 16;
constexpr int kRawWindow = -15;

std::string compressed(const std::string& text, int windowBits) {
  z_stream stream = {};
  EXPECT_EQ(
      deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY),
      Z_OK);
  std::string out(deflateBound(&stream, text.size()), '\0');
  std::string in = text;
  stream.next_in = reinterpret_cast<Bytef*>(in.data());
  stream.avail_in = static_cast<uInt>(in.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
  out.resize(stream.total_out);
  deflateEnd(&stream);
  return out;
}

/// Sends a request as it is, again while the printer is still busy with another job.
int sendWhenFree(const RunningApp& app, const std::string& body) {
  for (;;) {
    SlowClient client(app, body.size());
    client.send(body);
    const int status = client.answer();
    if (status != IPP_STATUS_ERROR_BUSY) return status;
  }
}

struct Compression {
  const char* name;
  int windowBits;
};

TEST(CompressedDocument, PrintsAsThePlainOne) {
  RunningApp app;
  const std::string document = pwg({noisePage(576, 300, 1)});
  ASSERT_EQ(app.print(document, kPwg).state, IPP_JSTATE_COMPLETED);
  const std::string expected = filterBytesOf(app.pages(), {});
  std::size_t jobs = 1;
  for (const Compression& row : {Compression{"gzip", kGzipWindow}, {"deflate", kRawWindow}}) {
    SCOPED_TRACE(row.name);
    const std::string body =
        printJobRequest(app.printerUri(), ippText('\x44', "compression", row.name)) +
        compressed(document, row.windowBits);
    EXPECT_EQ(sendWhenFree(app, body), IPP_STATUS_OK);
    const auto papers = app.waitForPapers(++jobs);
    ASSERT_EQ(papers.size(), jobs) << app.log();
    EXPECT_THAT(papers.back(), SameBytes(expected));
  }
}

}  // namespace
}  // namespace wren_test
