// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/pdf_document.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "app/document_error.h"
#include "tests/app/collected_pages.h"
#include "tests/app/pdf_text.h"
#include "tests/support/process.h"
#include "tests/support/temporary_folder.h"

namespace wren::app {
namespace {

using Clock = std::chrono::steady_clock;
using Kind = DocumentError::Kind;
using std::chrono::milliseconds;
using testing::ElementsAre;
using wren_test::CollectedPages;
using wren_test::PdfPage;
using wren_test::PdfText;

const std::string kReceipt = WREN_SOURCE_DIR "/examples/receipt.pdf";

bool isSet(const void* flag) {
  return static_cast<const std::atomic<bool>*>(flag)->load();
}

class PdfDocument : public testing::Test {
 protected:
  PdfDocument() {
    request_.log = [this](const std::string& line) { log_.push_back(line); };
  }

  bool read(const std::string& bytes) {
    request_.path = folder_.write("document.pdf", bytes);
    return readPdf(request_, settings_, pages_);
  }
  bool read(const std::vector<PdfPage>& pages) { return read(PdfText(pages).file()); }

  // "kind: text" of the error with which the document fails.
  std::string errorOf(const std::string& bytes) {
    try {
      read(bytes);
    } catch (const DocumentError& error) {
      constexpr const char* kKinds[] = {"format", "password", "unprintable", "system"};
      return std::string(kKinds[static_cast<int>(error.kind())]) + ": " + error.what();
    }
    return "none";
  }

  // A program that takes the place of pdftoppm: a script of the shell, which cannot start others.
  void useProgram(const std::string& script) {
    settings_.program = folder_.write("program", "#!/bin/sh\n" + script + "\n");
    ::chmod(settings_.program.c_str(), 0700);
  }

  wren_test::TemporaryFolder folder_;
  std::vector<std::string> log_;
  DocumentRequest request_;
  PdfSettings settings_;
  CollectedPages pages_;
};

const std::vector<PdfPage> kOnePage = {{144, 72, ""}};

// 226.77 x 425.2 pt at 203 dots per inch.
TEST_F(PdfDocument, PrintsTheReceiptAtItsSize) {
  request_.path = kReceipt;
  EXPECT_TRUE(readPdf(request_, settings_, pages_));
  EXPECT_THAT(pages_.sizes(), ElementsAre("640x1199"));
  EXPECT_TRUE(pages_.complete);
  EXPECT_THAT(pages_.levels(), ElementsAre(0, 255)) << "text and codes are not crisp";
}

TEST_F(PdfDocument, PrintsCodesThatOthersRead) {
  request_.path = kReceipt;
  readPdf(request_, settings_, pages_);
  const std::string page = folder_.write("page.pgm", pages_.pages.at(0).pgm());
  wren_test::ProcessSpec reader;
  reader.program = "/usr/bin/zbarimg";
  reader.arguments = {"zbarimg", "-q", page};
  EXPECT_EQ(wren_test::runProcess(reader).out,
            "QR-Code:https://example.org/r/000042\nCODE-128:WREN-000042\n");
}

// A square inch of ink at the top left of two by one inches.
TEST_F(PdfDocument, PutsInkWhereThePageHasBlack) {
  EXPECT_TRUE(read({{144, 144, "0 72 72 72 re f"}}));
  const wren_test::CollectedPage& page = pages_.pages.at(0);
  EXPECT_EQ(page.widthPx, 406U);
  EXPECT_EQ(page.at(1, 1), 255U);
  EXPECT_EQ(page.at(201, 201), 255U);
  EXPECT_EQ(page.at(205, 1), 0U);
  EXPECT_EQ(page.at(1, 205), 0U);
}

struct Size {
  const char* name;
  bool fitWidePages;
  PdfPage page;
  const char* printed;
};

void PrintTo(const Size& shown, std::ostream* out) {
  *out << shown.name;
}

class PdfPageSize : public PdfDocument, public testing::WithParamInterface<Size> {};

TEST_P(PdfPageSize, IsPrinted) {
  request_.target.fitWidePages = GetParam().fitWidePages;
  EXPECT_TRUE(read({GetParam().page}));
  EXPECT_THAT(pages_.sizes(), ElementsAre(GetParam().printed));
  EXPECT_TRUE(pages_.complete);
}

// 203 / 72 dots a point, rounded up; A4 in the width of the head: 842 x 576 / 595 = 815.1.
INSTANTIATE_TEST_SUITE_P(
    OfAPage, PdfPageSize,
    testing::Values(Size{"OneInch", true, {72, 72, ""}, "203x203"},
                    Size{"PartsOfADot", true, {73, 74, ""}, "206x209"},
                    Size{"PaperInWholePoints", true, {227, 72, ""}, "640x203"},
                    Size{"PaperAndALittle", true, {228, 72, ""}, "640x203"},
                    Size{"A4", true, {595, 842, ""}, "576x816"},
                    Size{"A4Cut", false, {595, 842, ""}, "1678x2374"},
                    Size{"OnItsSide", true, {144, 72, "", "/Rotate 90"}, "203x406"},
                    Size{"A4OnItsSide", true, {595, 842, "", "/Rotate 90"}, "576x408"},
                    Size{"Cropped", true, {595, 842, "", "/CropBox [10 10 82 154]"}, "203x406"}),
    [](const auto& shown) { return shown.param.name; });

TEST_F(PdfDocument, KeepsTheEdgesOfAPageThatIsALittleTooWide) {
  EXPECT_TRUE(read({{227, 72, "0 0 227 72 re f"}}));
  EXPECT_THAT(pages_.levels(), ElementsAre(255));
}

TEST_F(PdfDocument, ScalesTheWideOnesOfItsPages) {
  EXPECT_TRUE(read({{72, 72, ""}, {595, 842, "0 0 595 842 re f"}, {144, 72, ""}, {595, 842, ""}}));
  EXPECT_THAT(pages_.sizes(), ElementsAre("203x203", "576x816", "406x203", "576x816"));
  EXPECT_EQ(pages_.pages[1].at(288, 400), 255U);
  EXPECT_EQ(pages_.pages[3].at(288, 400), 0U);
}

TEST_F(PdfDocument, PrintsAHundredPagesInTheirOrder) {
  std::vector<PdfPage> pages;
  std::vector<std::string> sizes;
  for (unsigned i = 1; i <= 100; ++i) {
    pages.push_back({72, 72 + 72 * (i - 0.5) / 203, ""});
    sizes.push_back("203x" + std::to_string(203 + i));
  }
  EXPECT_TRUE(read(pages));
  EXPECT_EQ(pages_.sizes(), sizes);
}

TEST_F(PdfDocument, StopsWhereTheSinkSaysSo) {
  pages_.stopAtEnd = 2;
  EXPECT_FALSE(read({{72, 72, ""}, {72, 72, ""}, {72, 72, ""}}));
  EXPECT_EQ(pages_.pages.size(), 2U);
}

TEST_F(PdfDocument, SendsNoRowsOfAPageThatTheSinkRefuses) {
  pages_.stopAtBegin = 1;
  pages_.onRow = [] { FAIL() << "a row came"; };
  EXPECT_FALSE(read(kOnePage));
}

// ---- Refused documents ----

// Nobody knows the password that gives these 32 bytes.
std::string lockedPdf() {
  const std::string bytes = "<" + std::string(64, '5') + ">";
  return PdfText(kOnePage).file("/Encrypt << /Filter /Standard /V 1 /R 2 /P -4 /O " + bytes +
                                " /U " + bytes + " >> /ID [" + bytes + bytes + "]");
}

struct Refusal {
  const char* name;
  std::string bytes;
  const char* error;
};

void PrintTo(const Refusal& shown, std::ostream* out) {
  *out << shown.name;
}

class RefusedPdf : public PdfDocument, public testing::WithParamInterface<Refusal> {};

TEST_P(RefusedPdf, PrintsNothing) {
  EXPECT_EQ(errorOf(GetParam().bytes), GetParam().error);
  EXPECT_THAT(pages_.sizes(), ElementsAre());
}

INSTANTIATE_TEST_SUITE_P(
    Document, RefusedPdf,
    testing::Values(
        Refusal{"Empty", "", "unprintable: the PDF is empty"},
        Refusal{"SomethingElse", "GIF89a", "format: this is not a PDF"},
        Refusal{"OnlyItsEnds", "%PDF-1.4\nrubbish\n%%EOF\n", "format: the PDF is damaged"},
        Refusal{"CutOff", "%PDF-1.4\nrubbish\n", "format: the PDF is cut off, its end is missing"},
        Refusal{"NoPages", PdfText({}).file(), "unprintable: the PDF has no pages"},
        Refusal{"Locked", lockedPdf(), "password: the PDF needs a password"},
        Refusal{"TooLong", PdfText({{72, 9400, ""}}).file(),
                "unprintable: page 1 of the PDF is too long"},
        Refusal{"TooLongWhenScaled", PdfText({{300, 20000, ""}}).file(),
                "unprintable: page 1 of the PDF is too long"}),
    [](const auto& shown) { return shown.param.name; });

TEST_F(PdfDocument, RefusesAReceiptThatIsCutOffAnywhere) {
  const std::string receipt = wren_test::readFile(kReceipt);
  for (std::size_t size = 1; size + 5 < receipt.size(); size += 97) {
    EXPECT_THAT(errorOf(receipt.substr(0, size)), testing::StartsWith("format: ")) << size;
  }
  EXPECT_THAT(pages_.sizes(), ElementsAre());
}

TEST_F(PdfDocument, RefusesAPageThatIsTooWideToBeCut) {
  request_.target.fitWidePages = false;
  EXPECT_EQ(errorOf(PdfText({{6000, 72, ""}}).file()),
            "unprintable: page 1 of the PDF is too wide");
}

TEST_F(PdfDocument, RefusesTooManyPagesBeforeTheFirst) {
  settings_.maxPages = 2;
  EXPECT_EQ(errorOf(PdfText({{72, 72, ""}, {72, 72, ""}, {72, 72, ""}}).file()),
            "unprintable: the PDF has more than 2 pages");
  EXPECT_THAT(pages_.sizes(), ElementsAre());
}

TEST_F(PdfDocument, RefusesALargeFile) {
  settings_.maxFileBytes = 1 << 20;
  EXPECT_EQ(errorOf("%PDF-" + std::string(1 << 20, ' ')),
            "unprintable: the PDF is larger than 1 MiB");
}

// 5800 x 9200 pt are 16353 x 25939 dots, 424 million.
TEST_F(PdfDocument, RefusesAPageThatNeedsTooMuchMemory) {
  request_.target.fitWidePages = false;
  settings_.limits.memoryBytes = std::size_t{256} << 20;
  EXPECT_EQ(errorOf(PdfText({{5800, 9200, ""}}).file()),
            "unprintable: drawing the PDF needs more than 256 MiB");
}

TEST_F(PdfDocument, RefusesALoopOfPages) {
  std::string file = PdfText(kOnePage).file();
  file.replace(file.find("[3 0 R ]"), 8, "[2 0 R ]");
  EXPECT_EQ(errorOf(file), "format: page 1 of the PDF is damaged");
  EXPECT_THAT(pages_.sizes(), ElementsAre());
}

TEST_F(PdfDocument, LogsWhatTheProgramSays) {
  EXPECT_TRUE(read({{72, 72, "nonsense"}}));
  EXPECT_THAT(log_, ElementsAre(testing::AllOf(testing::StartsWith("pdftoppm: "),
                                               testing::HasSubstr("nonsense"))));
}

TEST_F(PdfDocument, LogsTwentyLinesAtMost) {
  std::string content;
  for (int i = 0; i < 100; ++i) content += "nonsense" + std::to_string(i) + "\n";
  EXPECT_TRUE(read({{72, 72, content}}));
  EXPECT_EQ(log_.size(), 21U);
  EXPECT_EQ(log_.back(), "pdftoppm: further messages are left out");
}

// ---- A program that misbehaves ----

TEST_F(PdfDocument, NamesAMissingProgram) {
  settings_.program = "/nonexistent/pdftoppm";
  EXPECT_EQ(errorOf(PdfText(kOnePage).file()),
            "system: /nonexistent/pdftoppm cannot be started: No such file or directory");
}

struct Misbehaviour {
  const char* name;
  const char* script;
  const char* error;
};

void PrintTo(const Misbehaviour& shown, std::ostream* out) {
  *out << shown.name;
}

class MisbehavingProgram : public PdfDocument, public testing::WithParamInterface<Misbehaviour> {};

TEST_P(MisbehavingProgram, PrintsNothing) {
  useProgram(GetParam().script);
  settings_.limits.silence = milliseconds(300);
  EXPECT_EQ(errorOf(PdfText(kOnePage).file()), GetParam().error);
  EXPECT_THAT(pages_.sizes(), ElementsAre());
}

INSTANTIATE_TEST_SUITE_P(
    Instead, MisbehavingProgram,
    testing::Values(
        Misbehaviour{"Silent", "exec sleep 60",
                     "unprintable: a page of the PDF takes too long to draw"},
        Misbehaviour{"SilentInMidPage", "printf 'P5\\n9 9\\n255\\nabc'; exec sleep 60",
                     "unprintable: a page of the PDF takes too long to draw"},
        Misbehaviour{"EndlessNonsense", "exec yes", "format: the PDF is damaged"},
        Misbehaviour{"EndInMidPage", "printf 'P5\\n9 9\\n255\\nabc'; echo '1 1 ' >&2",
                     "format: the PDF is damaged"},
        Misbehaviour{"EndlessNumber", "printf 'P5\\n'; exec yes 9999999999",
                     "format: the PDF is damaged"},
        Misbehaviour{"NoWidth", "printf 'P5\\n0 9\\n255\\n'; echo '1 1 ' >&2",
                     "format: the PDF is damaged"},
        Misbehaviour{"Crash", "kill -s SEGV $$; exit 139", "format: the PDF is damaged"},
        Misbehaviour{"PageWithoutCount", "printf 'P5\\n1 2\\n255\\nab'",
                     "format: the PDF is damaged"},
        Misbehaviour{"MissingPage", "echo '1 1 ' >&2", "format: the PDF is damaged"},
        Misbehaviour{"PartsLeftOut",
                     "echo 'Out of memory' >&2; printf 'P5\\n1 2\\n255\\nab'; echo '1 1 ' >&2",
                     "unprintable: drawing the PDF needs more than 512 MiB"}),
    [](const auto& shown) { return shown.param.name; });

TEST_F(PdfDocument, EndsWithinATenthOfASecondWhenCancelled) {
  std::atomic<bool> cancelled{false};
  request_.cancel = CancelCheck(isSet, &cancelled);
  useProgram("exec sleep 60");
  Clock::time_point cancelTime;
  std::thread canceller([&] {
    std::this_thread::sleep_for(milliseconds(100));
    cancelTime = Clock::now();
    cancelled = true;
  });
  EXPECT_FALSE(read(kOnePage));
  const Clock::time_point end = Clock::now();
  canceller.join();
  EXPECT_LT(end - cancelTime, milliseconds(100));
}

TEST_F(PdfDocument, EndsNoPageInWhichItIsCancelled) {
  std::atomic<bool> cancelled{false};
  request_.cancel = CancelCheck(isSet, &cancelled);
  pages_.onRow = [&] { cancelled = true; };
  EXPECT_FALSE(read({{227, 9000, ""}}));
  EXPECT_THAT(pages_.sizes(), ElementsAre());
}

}  // namespace
}  // namespace wren::app
