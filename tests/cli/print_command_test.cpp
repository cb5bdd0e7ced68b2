// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// wren print, from a document to its results.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>

#include "escpos/reader.h"
#include "tests/cli/wren_program.h"
#include "tests/support/raster_stream.h"

namespace wren::cli {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class WrenProgramPrint : public WrenProgram {
 protected:
  // cupsfilter writes its arguments down and then does its work.
  void recordRequests() {
    standIn("cupsfilter", "printf '%s ' \"$@\" >" + pathOf("asked") +
                              "\nPATH=/usr/sbin:/usr/bin:/bin exec cupsfilter \"$@\"\n");
  }

  std::size_t imagesIn(const std::string& name) const {
    std::error_code ignored;
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(pathOf(name), ignored), {}));
  }

  std::size_t filesLeft() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_.path()), {}));
  }

  escpos::Reading readingOf(const std::string& name) const {
    const std::string bytes = bytesOf(name);
    return escpos::readAll({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  }
};

TEST_F(WrenProgramPrint, NamesItsResultsAfterTheDocument) {
  fs::copy(example("receipt.pdf"), pathOf("a receipt.pdf"));
  const auto result = done({"print", "a receipt.pdf"});
  const auto size = bytesOf("a receipt.prn").size();
  EXPECT_EQ(result.out, "1 page(s), " + std::to_string(size) +
                            " bytes: a receipt.prn\ndebug images: a receipt.images\n"
                            "picture: a receipt.png\n");
  EXPECT_EQ(result.err, "");
  EXPECT_GT(size, 10000U);
  EXPECT_TRUE(readingOf("a receipt.prn").problems.empty());
  EXPECT_THAT(bytesOf("a receipt.png"), StartsWith("\x89PNG"));
  EXPECT_EQ(imagesIn("a receipt.images"), 2U);
}

TEST_F(WrenProgramPrint, TakesEveryKindOfDocumentByItsContents) {
  recordRequests();
  ASSERT_EQ(std::system(
                ("convert " + example("photo.png") + " -quality 95 jpg:" + pathOf("jpeg")).c_str()),
            0);
  fs::copy(example("receipt.pdf"), pathOf("pdf"));
  fs::copy(example("photo.png"), pathOf("png"));
  fs::copy(example("order.txt"), pathOf("text"));
  const std::pair<const char*, const char*> kTypes[] = {{"pdf", "application/pdf"},
                                                        {"png", "image/png"},
                                                        {"jpeg", "image/jpeg"},
                                                        {"text", "text/plain"}};
  for (const auto& [name, type] : kTypes) {
    done({"print", name, "-o", "HalftoneType=Burkes"});
    EXPECT_THAT(bytesOf("asked"), HasSubstr(std::string("-i ") + type + " "));
    const auto reading = readingOf(std::string(name) + ".prn");
    EXPECT_TRUE(reading.problems.empty()) << name;
    EXPECT_FALSE(reading.paper.stripes.empty()) << name;
  }
}

TEST_F(WrenProgramPrint, AsksCupsForAReceiptUnlessTold) {
  recordRequests();
  done({"print", example("receipt.pdf"), "-n", "2"});
  EXPECT_THAT(bytesOf("asked"), HasSubstr("-o position=top "));
  EXPECT_THAT(bytesOf("asked"), HasSubstr("-o pdfAutoRotate=no "));
  EXPECT_THAT(bytesOf("asked"), HasSubstr("-n 2 "));
  done({"print", example("receipt.pdf"), "-o", "position=center", "-o", "pdfAutoRotate=yes"});
  EXPECT_THAT(bytesOf("asked"), HasSubstr("-o position=center "));
  EXPECT_THAT(bytesOf("asked"), HasSubstr("-o pdfAutoRotate=yes "));
  EXPECT_THAT(bytesOf("asked"), Not(HasSubstr("position=top")));
  EXPECT_THAT(bytesOf("asked"), Not(HasSubstr("pdfAutoRotate=no")));
}

// The whole command, in the order of cupsfilter(8).
TEST_F(WrenProgramPrint, GivesCupsfilterEveryOptionOnce) {
  standIn("cupsfilter", "printf '%s|' \"$@\" >" + pathOf("asked") + "\nexit 1\n");
  folder_.write("a b.txt", "text\n");
  folder_.write("photo.png", "\x89PNG\r\n\x1a\n");
  const auto after = [&](const std::vector<std::string>& arguments) {
    wren(arguments);
    const std::string asked = bytesOf("asked");
    EXPECT_THAT(asked, StartsWith("-p|/"));
    return asked.substr(asked.find("|-m|") + 1);
  };
  const std::string end = "|" + pathOf("a b.txt") + "|";
  EXPECT_EQ(after({"print", "a b.txt"}),
            "-m|application/vnd.cups-raster|-i|text/plain|-e|-n|1|-o|position=top|-o|"
            "pdfAutoRotate=no" +
                end);
  EXPECT_THAT(bytesOf("asked"), HasSubstr("/wren80.ppd|"));
  EXPECT_EQ(after({"print", "a b.txt", "-n", "9999", "--paper", "112", "-o", "lpi=8 cpi=14", "-o",
                   "Brightness=5", "-o", "job-name=\"a b\""}),
            "-m|application/vnd.cups-raster|-i|text/plain|-e|-n|9999|-o|cpi=14|-o|lpi=8|-o|"
            "Brightness=5|-o|job-name=a\\ b|-o|position=top|-o|pdfAutoRotate=no" +
                end);
  EXPECT_THAT(bytesOf("asked"), HasSubstr("/wren112.ppd|"));
  // The brightness of a picture is for the filter alone: CUPS would take it for per cent.
  EXPECT_EQ(after({"print", "photo.png", "--paper", "58", "-o", "brightness=5", "-o", "cpi=14"}),
            "-m|application/vnd.cups-raster|-i|image/png|-e|-n|1|-o|cpi=14|-o|position=top|-o|"
            "pdfAutoRotate=no|-o|orientation-requested=3|" +
                pathOf("photo.png") + "|");
  EXPECT_THAT(bytesOf("asked"), HasSubstr("/wren58.ppd|"));
  EXPECT_EQ(after({"halftones", "a b.txt", "-o", "cpi=14"}),
            "-m|application/vnd.cups-raster|-i|text/plain|-e|-n|1|-o|cpi=14|-o|position=top|-o|"
            "pdfAutoRotate=no" +
                end);
}

TEST_F(WrenProgramPrint, GivesTheFilterTheOptionsThatCupsDoesNotGet) {
  wren_test::RasterPage page = wren_test::noisePage(64, 48, 1);
  folder_.write("bin.ras", wren_test::rasterStream(wren_test::RasterKind::kV2, {page}));
  standIn("cupsfilter", "exec cat " + pathOf("bin.ras") + "\n");
  folder_.write("photo.png", "\x89PNG\r\n\x1a\n");
  std::set<std::string> different;
  for (const char* brightness : {"-20", "0", "20"}) {
    done({"print", "photo.png", "--out", "a.prn", "-o", "HalftoneType=Burkes", "-o",
          std::string("Brightness=") + brightness});
    different.insert(bytesOf("a.prn"));
  }
  EXPECT_EQ(different.size(), 3U);
  // The debug images are those of the print.
  for (const char* off : {"DebugImages=Off", "debugimages=off"}) {
    EXPECT_THAT(done({"print", "photo.png", "--out", "b.prn", "-o", off}).out,
                Not(HasSubstr("debug images")));
    EXPECT_FALSE(fs::exists(pathOf("photo.images/x"))) << off;
  }
  EXPECT_THAT(
      done({"print", "photo.png", "--out", "b.prn", "--images", "i", "-o", "DebugImages=On"}).out,
      HasSubstr("debug images: i\n"));
  EXPECT_EQ(imagesIn("i"), 2U);
}

TEST_F(WrenProgramPrint, MakesNoFolderForImagesThatAreNotWanted) {
  done({"print", example("order.txt"), "-o", "DebugImages=Off"});
  EXPECT_FALSE(fs::exists(pathOf("order.images")));
}

// The marks of the margin are drawn: the picture is wider than the paper.
TEST_F(WrenProgramPrint, DrawsThePaperWithItsMarks) {
  done({"print", example("order.txt"), "-o", "CashDrawerSetting=1"});
  ASSERT_EQ(wren({"preview", "order.prn", "--marks", "-o", "marks.png"}).exitStatus, 0);
  ASSERT_EQ(wren({"preview", "order.prn", "-o", "bare.png"}).exitStatus, 0);
  EXPECT_EQ(bytesOf("order.png"), bytesOf("marks.png"));
  EXPECT_NE(bytesOf("order.png"), bytesOf("bare.png"));
}

TEST_F(WrenProgramPrint, ReportsEachResultAsJson) {
  const auto report =
      nlohmann::json::parse(done({"print", example("receipt.pdf"), "--json", "-n", "3", "--out",
                                  "o.prn", "--raster", "r.ras", "--images", "i"})
                                .out);
  EXPECT_EQ(report, (nlohmann::json{{"schema", 1},
                                    {"pages", 3},
                                    {"bytes", bytesOf("o.prn").size()},
                                    {"output", "o.prn"},
                                    {"picture", "o.png"},
                                    {"raster", "r.ras"},
                                    {"debugImages", "i"},
                                    {"notes", nlohmann::json::array()}}));
}

// A name may hold any bytes, a report is UTF-8.
TEST_F(WrenProgramPrint, ReportsNamesThatAreNoUtf8) {
  folder_.write("caf\xE9.txt", "text\n");
  const auto report = nlohmann::json::parse(done({"print", "caf\xE9.txt", "--json"}).out);
  EXPECT_EQ(report["output"], "caf\xEF\xBF\xBD.prn");
}

TEST_F(WrenProgramPrint, IsEndedByEachSignalTogetherWithItsChild) {
  fs::create_directory(pathOf("tmp"));
  environment_ = {"TMPDIR=" + pathOf("tmp")};
  // The tests may run where some are ignored, as in the background of a shell.
  beforeExec_ = [] {
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) std::signal(number, SIG_DFL);
  };
  // The signal comes at once, or when wren waits for the child, which goes on until it is ended
  // too.
  for (const char* before : {"", "until grep -q 'State:.S' /proc/$PPID/status; do :; done\n"}) {
    for (const char* signal : {"HUP", "INT", "TERM"}) {
      standIn("cupsfilter", "trap 'touch " + pathOf("ended") + "; exit 9' TERM\n" + before +
                                "kill -" + signal +
                                " $PPID\nn=0\n"
                                "while [ $n -lt 400 ]; do sleep 0.05; n=$((n+1)); done\n");
      EXPECT_EQ(refusal(1, {"print", example("order.txt")}), "interrupted") << signal;
      EXPECT_TRUE(fs::exists(pathOf("ended"))) << signal;
      fs::remove(pathOf("ended"));
      EXPECT_TRUE(fs::is_empty(pathOf("tmp"))) << signal;
    }
  }
}

TEST_F(WrenProgramPrint, SaysThatThereIsNoFolderForTemporaryFiles) {
  environment_ = {"TMPDIR=" + pathOf("none")};
  EXPECT_THAT(refusal(1, {"print", example("order.txt")}),
              StartsWith("no folder for temporary files: "));
}

TEST_F(WrenProgramPrint, NamesAMissingRenderer) {
  if (fs::exists("/usr/sbin/gs") || fs::exists("/sbin/gs") || fs::exists("/usr/local/sbin/gs")) {
    GTEST_SKIP() << "Ghostscript cannot be hidden here";
  }
  environment_ = {"PATH=" + pathOf("bin")};
  for (const char* status : {"0", "1"}) {
    standIn("cupsfilter", std::string("exit ") + status + "\n");
    EXPECT_EQ(refusal(4, {"print", example("receipt.pdf")}),
              "Ghostscript is missing; install it with: sudo apt install ghostscript");
  }
  // Others need none.
  EXPECT_THAT(refusal(3, {"print", example("order.txt")}), HasSubstr("cannot be rendered"));
}

TEST_F(WrenProgramPrint, NamesAMissingCupsfilter) {
  wren_test::ProcessSpec spec;
  spec.program = "/usr/bin/env";
  spec.arguments = {"env", "unshare", "-rm", "sh", "-c", "mount -t tmpfs none /usr/sbin"};
  spec.environment = {"PATH=/usr/sbin:/usr/bin:/sbin:/bin"};
  if (!fs::exists("/usr/sbin/cupsfilter") || wren_test::runProcess(spec).exitStatus != 0) {
    GTEST_SKIP() << "cupsfilter cannot be hidden here";
  }
  spec.arguments.back() += " && exec " WREN_PROGRAM " print " + example("order.txt");
  spec.workingFolder = folder_.path();
  const auto result = wren_test::runProcess(spec);
  EXPECT_EQ(result.exitStatus, 4);
  EXPECT_EQ(result.err, "wren: cupsfilter is missing; install it with: sudo apt install cups\n");
}

TEST_F(WrenProgramPrint, SaysTheReasonOfTheRendererWithoutItsPath) {
  const std::string document = folder_.write("a.txt", "text\n");
  standIn("cupsfilter", "echo 'ERROR: load failed: " + document + ": no trailer' >&2\nexit 1\n");
  EXPECT_EQ(refusal(3, {"print", "a.txt"}), "'a.txt' cannot be rendered: no trailer");
  standIn("cupsfilter", "exit 1\n");
  EXPECT_EQ(refusal(3, {"print", "a.txt"}), "'a.txt' cannot be rendered; it may be damaged");
  standIn("cupsfilter", "echo 'cupsfilter: No filter to convert from a to b.' >&2\nexit 1\n");
  EXPECT_EQ(refusal(4, {"print", "a.txt"}),
            "CUPS has no filter for text/plain here; install it with: sudo apt install "
            "cups-filters");
}

TEST_F(WrenProgramPrint, TakesOptionsWithoutAValue) {
  recordRequests();
  for (const char* option : {"fit-to-page", "landscape"}) {
    done({"print", example("receipt.pdf"), "-o", option});
    EXPECT_THAT(bytesOf("asked"), HasSubstr(std::string("-o ") + option + "=true "));
  }
}

TEST_F(WrenProgramPrint, KeepsThePagesOfTheFilter) {
  const auto result = done(
      {"print", example("receipt.pdf"), "-n", "2", "--out", "twice.prn", "--raster", "pages.ras"});
  EXPECT_THAT(result.out, HasSubstr("2 page(s), "));
  EXPECT_THAT(result.out, HasSubstr("raster: pages.ras\n"));
  EXPECT_THAT(bytesOf("pages.ras"), testing::ContainsRegex("^(3SaR|RaS3|2SaR|RaS2)"));
}

TEST_F(WrenProgramPrint, ReportsAsJson) {
  const auto report = nlohmann::json::parse(
      done({"print", example("receipt.pdf"), "--json", "-o", "DebugImages=Off"}).out);
  EXPECT_EQ(report["schema"], 1);
  EXPECT_EQ(report["pages"], 1);
  EXPECT_EQ(report["bytes"], bytesOf("receipt.prn").size());
  EXPECT_EQ(report["output"], "receipt.prn");
  EXPECT_EQ(report["picture"], "receipt.png");
  EXPECT_EQ(report["raster"], nullptr);
  EXPECT_EQ(report["debugImages"], nullptr);
}

TEST_F(WrenProgramPrint, LeavesOtherFilesInTheFolderOfTheImages) {
  fs::create_directory(pathOf("mine"));
  folder_.write("mine/letter.txt", "dear");
  folder_.write("mine/origin_old.bmp", "old");
  done({"print", example("receipt.pdf"), "--images", "mine"});
  EXPECT_EQ(bytesOf("mine/letter.txt"), "dear");
  EXPECT_FALSE(fs::exists(pathOf("mine/origin_old.bmp")));
  EXPECT_EQ(imagesIn("mine"), 3U);
  for (const auto& entry : fs::directory_iterator(pathOf("mine"))) {
    if (entry.path().extension() != ".bmp") continue;
    EXPECT_EQ(fs::status(entry).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  }
}

TEST_F(WrenProgramPrint, PutsThePictureOfAPictureBesideIt) {
  fs::copy(example("photo.png"), pathOf("photo.png"));
  const std::string before = bytesOf("photo.png");
  EXPECT_THAT(done({"print", "photo.png"}).out, HasSubstr("picture: photo.paper.png\n"));
  EXPECT_EQ(bytesOf("photo.png").size(), before.size());
}

TEST_F(WrenProgramPrint, PutsResultsIntoAFolder) {
  EXPECT_THAT(done({"print", example("receipt.pdf"), "--into", "a/b"}).out,
              HasSubstr("bytes: a/b/receipt.prn\n"));
  EXPECT_TRUE(fs::exists(pathOf("a/b/receipt.png")));
}

TEST_F(WrenProgramPrint, RefusesADamagedDocumentWithTheWordsOfTheRenderer) {
  folder_.write("bad.pdf", "%PDF-1.4\nno PDF at all\n");
  EXPECT_THAT(refusal(3, {"print", "bad.pdf"}), StartsWith("'bad.pdf' cannot be rendered: "));
  EXPECT_THAT(refusal(3, {"print", "bad.pdf"}), HasSubstr("unable to find trailer dictionary"));
  folder_.write("bad.png", "\x89PNG\r\n\x1a\nno PNG at all");
  EXPECT_THAT(refusal(3, {"print", "bad.png"}), HasSubstr("libpng error"));
  EXPECT_EQ(filesLeft(), 2U) << "a part of a result is left";
}

TEST_F(WrenProgramPrint, RefusesDocumentsThatItCannotUse) {
  folder_.write("empty", "");
  folder_.write("binary", std::string("a\0b", 3));
  EXPECT_EQ(refusal(3, {"print", "gone.pdf"}), "there is no file 'gone.pdf'");
  EXPECT_EQ(refusal(3, {"print", "."}), "'.' is not a file");
  EXPECT_EQ(refusal(3, {"print", "empty"}), "'empty' is empty");
  EXPECT_EQ(refusal(3, {"print", "binary"}), "'binary' is neither PDF, PNG, JPEG nor text");
}

TEST_F(WrenProgramPrint, NeverWritesOverTheDocument) {
  folder_.write("good.txt", "text\n");
  folder_.write("logo.png", "\x89PNG broken");
  for (const auto& [document, option, result] :
       std::vector<std::array<std::string, 3>>{{"good.txt", "--out", "good.txt"},
                                               {"good.txt", "--raster", "good.txt"},
                                               {"logo.png", "--out", "logo.prn"},
                                               {pathOf("logo.png"), "--out", "logo"}}) {
    EXPECT_THAT(refusal(2, {"print", document, option, result}),
                HasSubstr("is the document itself"));
  }
  EXPECT_EQ(bytesOf("good.txt"), "text\n");
  EXPECT_EQ(bytesOf("logo.png"), "\x89PNG broken");
}

TEST_F(WrenProgramPrint, NeverWritesOneResultOverAnother) {
  fs::copy(example("order.txt"), pathOf("order.txt"));
  for (const char* raster : {"a.prn", "./a.prn", "a.png"}) {
    EXPECT_THAT(refusal(2, {"print", "order.txt", "--out", "a.prn", "--raster", raster}),
                HasSubstr("is another result"));
  }
  EXPECT_EQ(filesLeft(), 1U);
}

TEST_F(WrenProgramPrint, PutsThePictureOfAPrinterBesideOtherResults) {
  const auto result = done({"print", example("order.txt"), "--out", "/dev/null"});
  EXPECT_THAT(result.out, HasSubstr("bytes: /dev/null\n"));
  EXPECT_THAT(result.out, HasSubstr("picture: order.png\n"));
  EXPECT_THAT(bytesOf("order.png"), StartsWith("\x89PNG"));
}

// A file that is opened as the first one would take the place of standard input.
TEST_F(WrenProgramPrint, WorksWithoutStandardInput) {
  wren_test::ProcessSpec spec;
  spec.program = "/bin/sh";
  spec.arguments = {"sh", "-c",
                    "exec " WREN_PROGRAM " print " + example("order.txt") + " --into " +
                        folder_.path().string() + " <&-"};
  const auto result = wren_test::runProcess(spec);
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_THAT(result.out, StartsWith("1 page(s), "));
}

// As when the terminal is closed.
TEST_F(WrenProgramPrint, LeavesNoTemporaryFilesWhenItIsHungUp) {
  fs::create_directory(pathOf("tmp"));
  environment_ = {"TMPDIR=" + pathOf("tmp")};
  standIn("cupsfilter", "kill -HUP $PPID\nexec sleep 20\n");
  EXPECT_EQ(refusal(1, {"print", example("order.txt")}), "interrupted");
  EXPECT_TRUE(fs::is_empty(pathOf("tmp")));
  EXPECT_EQ(filesLeft(), 2U);  // bin, tmp
}

// As below nohup.
TEST_F(WrenProgramPrint, IsNotEndedByASignalThatItsShellIgnores) {
  beforeExec_ = [] { std::signal(SIGHUP, SIG_IGN); };
  standIn("cupsfilter", "kill -HUP $PPID\nPATH=/usr/sbin:/usr/bin:/bin exec cupsfilter \"$@\"\n");
  EXPECT_THAT(done({"print", example("order.txt")}).out, StartsWith("1 page(s), "));
}

TEST_F(WrenProgramPrint, SaysWhyAResultCannotBeWritten) {
  const std::string document = example("order.txt");
  EXPECT_EQ(refusal(1, {"print", document, "--out", "/nonexistent/x"}),
            "'/nonexistent/x' cannot be written: No such file or directory");
  EXPECT_EQ(refusal(1, {"print", document, "--out", "/dev/full"}),
            "'/dev/full' cannot be written: No space left on device");
}

TEST_F(WrenProgramPrint, RefusesOptionsThatCupsWouldIgnore) {
  const std::string document = example("order.txt");
  EXPECT_THAT(refusal(2, {"print", document, "-o", "Brightnes=5"}),
              HasSubstr("did you mean 'Brightness'?"));
  EXPECT_THAT(refusal(2, {"print", document, "-o", "HalftoneType=Stuki"}),
              HasSubstr("did you mean 'Stucki'?"));
  EXPECT_THAT(refusal(2, {"print", document, "-o", "PageSize=Custom.banana"}),
              HasSubstr("Custom.WIDTHxLENGTHmm"));
}

TEST_F(WrenProgramPrint, NamesThePackageThatIsMissing) {
  standIn("cupsfilter",
          "echo 'cupsfilter: No filter to convert from text/plain to x.' >&2\nexit 1\n");
  EXPECT_THAT(refusal(4, {"print", example("order.txt")}),
              HasSubstr("sudo apt install cups-filters"));
}

TEST_F(WrenProgramPrint, LeavesNoTemporaryFolder) {
  fs::create_directory(pathOf("tmp"));
  environment_ = {"TMPDIR=" + pathOf("tmp")};
  done({"print", example("order.txt")});
  folder_.write("bad.pdf", "%PDF-1.4\nno PDF at all\n");
  refusal(3, {"print", "bad.pdf"});
  EXPECT_TRUE(fs::is_empty(pathOf("tmp")));
}

}  // namespace
}  // namespace wren::cli
