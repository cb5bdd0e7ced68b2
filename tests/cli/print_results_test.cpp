// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// What `wren print` leaves behind: all results or none, and no file that it did not make.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "escpos/reader.h"
#include "tests/cli/wren_program.h"
#include "tests/support/raster_stream.h"
#include "tests/support/same_bytes.h"

namespace wren::cli {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;

// A PDF of pages of width x length in points, each with the same drawing.
std::string pdfOf(const std::vector<std::pair<int, int>>& pages, const std::string& drawing = "") {
  std::string kids;
  std::vector<std::string> objects = {
      "<</Type/Catalog/Pages 2 0 R>>", "",
      "<</Length " + std::to_string(drawing.size()) + ">>stream\n" + drawing + "\nendstream "};
  for (const auto& [width, length] : pages) {
    objects.push_back("<</Type/Page/Parent 2 0 R/Resources<<>>/Contents 3 0 R/MediaBox[0 0 " +
                      std::to_string(width) + " " + std::to_string(length) + "]>>");
    kids += std::to_string(objects.size()) + " 0 R ";
  }
  objects[1] = "<</Type/Pages/Kids[" + kids + "]/Count " + std::to_string(pages.size()) + ">>";
  std::string text = "%PDF-1.4\n";
  std::string table = "0000000000 65535 f \n";
  for (std::size_t i = 0; i < objects.size(); ++i) {
    char entry[32];
    std::snprintf(entry, sizeof entry, "%010zu 00000 n \n", text.size());
    table += entry;
    text += std::to_string(i + 1) + " 0 obj" + objects[i] + "endobj\n";
  }
  const std::string start = std::to_string(text.size());
  const std::string size = std::to_string(objects.size() + 1);
  return text + "xref\n0 " + size + "\n" + table + "trailer<</Size " + size +
         "/Root 1 0 R>>\nstartxref\n" + start + "\n%%EOF\n";
}

class WrenProgramResults : public WrenProgram {
 protected:
  std::vector<std::string> namesIn(const std::string& name) const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(pathOf(name))) {
      names.push_back(entry.path().filename());
    }
    return names;
  }

  // cupsfilter that leaves a trace.
  void noticeWork() { standIn("cupsfilter", "touch " + pathOf("worked") + "\nexit 1\n"); }
  void expectNoWork() const { EXPECT_FALSE(fs::exists(pathOf("worked"))); }

  // cupsfilter that makes these pages of anything.
  void renderAs(const std::vector<wren_test::RasterPage>& pages) {
    folder_.write("bin.ras", wren_test::rasterStream(wren_test::RasterKind::kV2, pages));
    standIn("cupsfilter", "exec cat " + pathOf("bin.ras") + "\n");
  }
};

using WrenProgramStandardOutput = WrenProgramResults;

TEST_F(WrenProgramStandardOutput, GetsThePrinterBytesAlone) {
  done({"print", example("order.txt"), "--out", "order.prn"});
  const auto result = done({"print", example("order.txt"), "--out", "-", "--into", "b"});
  EXPECT_THAT(result.out, wren_test::SameBytes(bytesOf("order.prn")));
  EXPECT_EQ(result.err, "1 page(s), " + std::to_string(result.out.size()) +
                            " bytes: -\ndebug images: b/order.images\npicture: b/order.png\n");
  EXPECT_FALSE(fs::exists(pathOf("-")));
  const auto asJson = done({"print", example("order.txt"), "--out", "-", "--json"});
  EXPECT_THAT(asJson.out, wren_test::SameBytes(result.out));
  EXPECT_EQ(nlohmann::json::parse(asJson.err)["output"], "-");
}

TEST_F(WrenProgramStandardOutput, IsNoTerminal) {
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_GE(terminal, 0);
  ASSERT_EQ(grantpt(terminal), 0);
  ASSERT_EQ(unlockpt(terminal), 0);
  const std::string name = ptsname(terminal);
  beforeExec_ = [name] { dup2(open(name.c_str(), O_RDWR | O_NOCTTY), STDOUT_FILENO); };
  noticeWork();
  EXPECT_EQ(refusal(2, {"print", example("order.txt"), "--out", "-"}),
            "printer bytes are not for a terminal; send them to a file or a pipe");
  expectNoWork();
  close(terminal);
}

TEST_F(WrenProgramStandardOutput, IsAnErrorWhenItsReaderGoesAway) {
  fs::create_directory(pathOf("tmp"));
  environment_ = {"TMPDIR=" + pathOf("tmp")};
  beforeExec_ = [] {
    int ends[2];
    if (pipe(ends) == 0) dup2(ends[1], STDOUT_FILENO);
    close(ends[0]);
  };
  EXPECT_EQ(refusal(1, {"print", example("order.txt"), "--out", "-"}),
            "standard output cannot be written: Broken pipe");
  EXPECT_THAT(namesIn("tmp"), IsEmpty());
  EXPECT_THAT(namesIn("."), ElementsAre("tmp"));
}

TEST_F(WrenProgramResults, AreCheckedBeforeWorkBegins) {
  noticeWork();
  const std::string document = example("order.txt");
  folder_.write("file", "mine");
  fs::create_directory(pathOf("folder"));
  const std::string longName(252, 'n');
  EXPECT_EQ(refusal(1, {"print", document, "--images", "file"}),
            "'file' cannot be created: Not a directory");
  EXPECT_EQ(refusal(1, {"print", document, "--images", "file/x"}),
            "'file/x' cannot be created: Not a directory");
  EXPECT_EQ(refusal(1, {"print", document, "--into", "file"}),
            "'file' cannot be created: Not a directory");
  EXPECT_EQ(refusal(1, {"print", document, "--out", "folder"}),
            "'folder' cannot be written: Is a directory");
  EXPECT_EQ(refusal(1, {"print", document, "--raster", "folder"}),
            "'folder' cannot be written: Is a directory");
  EXPECT_EQ(refusal(1, {"print", document, "--raster", "none/x.ras"}),
            "'none/x.ras' cannot be written: No such file or directory");
  EXPECT_THAT(refusal(1, {"print", document, "--out", longName}),
              EndsWith("cannot be written: File name too long"));
  EXPECT_THAT(refusal(1, {"print", document, "--into", "new/a/" + longName + "more"}),
              EndsWith("cannot be created: File name too long"));
  folder_.write(longName + ".x", "text\n");
  EXPECT_THAT(refusal(1, {"print", longName + ".x"}),
              EndsWith(".images' cannot be created: File name too long"));
  expectNoWork();
  EXPECT_THAT(namesIn("."), UnorderedElementsAre("bin", "file", "folder", longName + ".x"));
  EXPECT_EQ(bytesOf("file"), "mine");
}

TEST_F(WrenProgramResults, AreLeftOutTogether) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
  for (const char* option : {"--raster", "--out"}) {
    EXPECT_EQ(
        refusal(1, {"print", example("order.txt"), "--into", "new/folder", option, "/dev/full"}),
        "'/dev/full' cannot be written: No space left on device");
    EXPECT_THAT(namesIn("."), IsEmpty()) << option;
  }
}

// The bytes of a short job reach the device when its file is closed.
TEST_F(WrenProgramResults, OfAShortJobAreLeftOutTogether) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
  renderAs({wren_test::flatPage(8, 8, 255)});
  const auto result = done({"print", example("order.txt"), "--out", "job.prn"});
  ASSERT_LT(bytesOf("job.prn").size(), 512U) << result.out;
  for (const char* option : {"--raster", "--out"}) {
    EXPECT_EQ(refusal(1, {"print", example("order.txt"), "--into", "new", option, "/dev/full"}),
              "'/dev/full' cannot be written: No space left on device");
    EXPECT_FALSE(fs::exists(pathOf("new"))) << option;
  }
}

// The picture and the images go to a disk of 300 kB, which the printer bytes fill already.
TEST_F(WrenProgramResults, LeaveNothingOnAFullDisk) {
  renderAs({wren_test::noisePage(576, 4000, 1)});
  wren_test::ProcessSpec spec;
  spec.program = "/usr/bin/env";
  spec.arguments = {"env", "unshare", "-rm", "true"};
  spec.environment = {"PATH=/usr/bin:/bin"};
  if (wren_test::runProcess(spec).exitStatus != 0) GTEST_SKIP() << "no mounts for this user";
  fs::create_directory(pathOf("full"));
  const std::string print =
      WREN_PROGRAM " print " + example("order.txt") + " --into full -o HalftoneType=Burkes";
  spec.arguments = {"env",
                    "unshare",
                    "-rm",
                    "sh",
                    "-c",
                    "mount -t tmpfs -o size=300k none full && { " + print +
                        "; status=$?; ls -A full; exit $status; }"};
  spec.environment = {"PATH=" + pathOf("bin") + ":/usr/sbin:/usr/bin:/bin"};
  spec.workingFolder = folder_.path();
  const auto result = wren_test::runProcess(spec);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.err, testing::MatchesRegex(
                              "wren: 'full/[^\n]*' cannot be written: No space left on device\n"));
  EXPECT_EQ(result.out, "");
}

TEST_F(WrenProgramResults, OfAFailedRunLeaveTheOldOnes) {
  folder_.write("order.txt", "first\n");
  done({"print", "order.txt"});
  const std::string before = bytesOf("order.prn");
  const auto images = namesIn("order.images");
  ASSERT_EQ(images.size(), 2U);
  standIn("cupsfilter", "exit 1\n");
  refusal(3, {"print", "order.txt"});
  EXPECT_EQ(bytesOf("order.prn"), before);
  EXPECT_THAT(namesIn("order.images"), testing::UnorderedElementsAreArray(images));
}

TEST_F(WrenProgramResults, ReplaceTheImagesOfAnEarlierRun) {
  folder_.write("order.txt", "first\n");
  done({"print", "order.txt"});
  for (const char* name : {"origin_1.bmp", "dithered_1.bmp"}) {
    folder_.write(std::string("order.images/") + name, "old");
  }
  done({"print", "order.txt"});
  EXPECT_EQ(namesIn("order.images").size(), 2U);
  EXPECT_FALSE(fs::exists(pathOf("order.images/origin_1.bmp")));
  EXPECT_FALSE(fs::exists(pathOf("order.images/dithered_1.bmp")));
  done({"print", "order.txt", "-o", "DebugImages=Off"});
  EXPECT_THAT(namesIn("order.images"), IsEmpty());
}

// Its files hold receipts: what the chain keeps while it works is for this user alone.
TEST_F(WrenProgramResults, ArePrivateWhileTheyAreMade) {
  fs::create_directory(pathOf("tmp"));
  environment_ = {"TMPDIR=" + pathOf("tmp")};
  beforeExec_ = [] { umask(0); };
  standIn("cupsfilter",
          "cd " + pathOf("tmp") + " && stat -c '%a %F' * */* >" + pathOf("modes") + "\nexit 1\n");
  refusal(3, {"print", example("order.txt")});
  EXPECT_THAT(bytesOf("modes"), testing::MatchesRegex("700 directory\n(600 regular.*file\n)+"));
}

class WrenProgramPlaces : public WrenProgramResults {
 protected:
  void SetUp() override { folder_.write("order.txt", "text\n"); }
};

TEST_F(WrenProgramPlaces, ClashBeforeWorkBegins) {
  noticeWork();
  folder_.write("old.prn", "old");
  fs::create_symlink("old.prn", pathOf("link.prn"));
  const std::vector<std::vector<std::string>> kClashes = {
      {"--out", "a.prn", "--raster", "a.prn"},
      {"--out", "a", "--raster", "./a"},
      {"--out", "a.prn", "--raster", "a.png"},
      {"--out", "old.prn", "--raster", "link.prn"},
      {"--out", "a.prn", "--images", "a.prn"},
      {"--out", "a.prn", "--images", "a.png"},
      {"--raster", "a.ras", "--images", "a.ras"},
      {"--out", "order.images"},
      {"--raster", "order.prn"},
      {"--raster", "order.png"},
  };
  for (const auto& clash : kClashes) {
    std::vector<std::string> arguments = {"print", "order.txt"};
    arguments.insert(arguments.end(), clash.begin(), clash.end());
    EXPECT_THAT(refusal(2, arguments), HasSubstr("is another result"));
  }
  expectNoWork();
  EXPECT_EQ(bytesOf("old.prn"), "old");
}

TEST_F(WrenProgramPlaces, ThatClashAreNamedWithTheirOption) {
  const std::string words = " is another result; name another ";
  EXPECT_EQ(refusal(2, {"print", "order.txt", "--raster", "order.prn"}),
            "'order.prn'" + words + "--raster");
  EXPECT_EQ(refusal(2, {"print", "order.txt", "--images", "order.prn"}),
            "'order.prn'" + words + "--out or --images");
  EXPECT_EQ(refusal(2, {"print", "order.txt", "--out", "a", "--images", "./a"}),
            "'./a'" + words + "--out or --images");
}

// A device takes several results one after the other.
TEST_F(WrenProgramPlaces, MayBeADeviceTwice) {
  EXPECT_THAT(done({"print", "order.txt", "--out", "/dev/null", "--raster", "/dev/null"}).out,
              HasSubstr("raster: /dev/null\n"));
}

TEST_F(WrenProgramPlaces, AreNamedAfterTheOutput) {
  const std::pair<const char*, const char*> kPictures[] = {
      {"a.prn", "a.png"}, {"b", "b.png"}, {"c.bin", "c.bin.png"}, {"x.y.prn", "x.y.png"}};
  for (const auto& [out, picture] : kPictures) {
    EXPECT_THAT(done({"print", "order.txt", "--out", out}).out,
                EndsWith(std::string("picture: ") + picture + "\n"));
    EXPECT_TRUE(fs::exists(pathOf(picture)));
  }
  EXPECT_THAT(done({"print", "order.txt", "--out", "a.prn", "--into", "b-folder"}).out,
              HasSubstr("debug images: b-folder/order.images\npicture: a.png\n"));
  EXPECT_THAT(done({"print", "order.txt", "--out", "/dev/null", "--into", "d"}).out,
              HasSubstr("picture: d/order.png\n"));
}

// A link that leads nowhere is a file of somebody, too.
TEST_F(WrenProgramPlaces, KeepALinkThatIsNotOurs) {
  fs::create_symlink("nowhere", pathOf("order.png"));
  EXPECT_THAT(done({"print", "order.txt"}).out, HasSubstr("picture: order.paper.png\n"));
  EXPECT_TRUE(fs::is_symlink(pathOf("order.png")));
  EXPECT_FALSE(fs::exists(pathOf("nowhere")));
}

TEST_F(WrenProgramPlaces, KeepAPictureThatIsNotOurs) {
  folder_.write("order.png", "mine");
  folder_.write("order.paper.png", "mine too");
  fs::create_directory(pathOf("x.png"));
  const auto result = done({"print", "order.txt"});
  EXPECT_THAT(result.out, HasSubstr("picture: order.paper-2.png\n"));
  EXPECT_EQ(result.err,
            "wren: 'order.png' is no picture of wren's and stays; the paper is in "
            "'order.paper-2.png'\n");
  EXPECT_EQ(bytesOf("order.png"), "mine");
  EXPECT_EQ(bytesOf("order.paper.png"), "mine too");
  const auto report =
      nlohmann::json::parse(done({"print", "order.txt", "--out", "x.prn", "--json"}).out);
  EXPECT_EQ(report["picture"], "x.paper.png");
  EXPECT_THAT(report["notes"].at(0), StartsWith("'x.png' is no picture of wren's"));
}

TEST_F(WrenProgramPlaces, ReplaceThePictureOfAnEarlierRun) {
  done({"print", "order.txt"});
  const std::string first = bytesOf("order.png");
  folder_.write("order.txt", "another text\nof two lines\n");
  EXPECT_EQ(done({"print", "order.txt"}).err, "");
  EXPECT_NE(bytesOf("order.png"), first);
  EXPECT_FALSE(fs::exists(pathOf("order.paper.png")));
}

// A picture of ours is a document like any other.
TEST_F(WrenProgramPlaces, KeepAPictureOfOursThatIsTheDocument) {
  done({"print", "order.txt"});
  const std::string picture = bytesOf("order.png");
  EXPECT_THAT(done({"print", "order.png"}).out, HasSubstr("picture: order.paper.png\n"));
  EXPECT_EQ(bytesOf("order.png"), picture);
}

using WrenProgramDocuments = WrenProgramResults;

TEST_F(WrenProgramDocuments, ThatCannotBeUsedAreRefusedWithTheCauseOfTheRenderer) {
  ASSERT_EQ(std::system(("gs -q -sDEVICE=pdfwrite -sOwnerPassword=a -sUserPassword=b "
                         "-dEncryptionR=3 -dKeyLength=128 -o " +
                         pathOf("locked.pdf") + " " + example("receipt.pdf"))
                            .c_str()),
            0);
  const std::string pdf = wren_test::readFile(example("receipt.pdf"));
  const std::string png = wren_test::readFile(example("photo.png"));
  folder_.write("none.pdf", pdfOf({}));
  // Without its catalogue, which stands at the end: newer renderers repair a file that has one.
  folder_.write("cut.pdf", pdf.substr(0, pdf.size() / 4));
  folder_.write("cut.png", png.substr(0, png.size() / 2));
  const std::pair<const char*, const char*> kCauses[] = {
      {"locked.pdf", "'locked.pdf' cannot be rendered: invalid password"},
      {"none.pdf", "'none.pdf' has no page that can be printed: No pages found!"},
      {"cut.pdf",
       "'cut.pdf' cannot be rendered: unable to find trailer dictionary while recovering damaged "
       "file"},
      {"cut.png", "'cut.png' cannot be rendered: libpng error: Read Error"},
  };
  for (const auto& [document, cause] : kCauses) {
    EXPECT_EQ(refusal(3, {"print", document}), cause);
    refusal(3, {"halftones", document});
  }
  EXPECT_EQ(namesIn(".").size(), 4U) << "a part of a result is left";
}

TEST_F(WrenProgramDocuments, LargerThanThePaperAreSaidToBeShrunk) {
  const std::string document = folder_.write("roll.pdf", pdfOf({{204, 400}, {204, 28346}}));
  const auto result = done({"print", "roll.pdf"});
  EXPECT_EQ(result.err,
            "wren: page 2 (72 x 10000 mm) was shrunk to fit the paper of 80 x 200 mm; no page can "
            "be longer than 3000 mm, so only a document of several pages prints at its length\n");
  folder_.write("bon.pdf", pdfOf({{204, 1000}}));
  const auto asJson = done({"print", "bon.pdf", "--json"});
  EXPECT_EQ(asJson.err, "");
  const auto report = nlohmann::json::parse(asJson.out);
  EXPECT_THAT(report["notes"],
              ElementsAre("page 1 (72 x 353 mm) was shrunk to fit the paper of 80 x 200 mm; -o "
                          "PageSize=Custom.72x353mm prints it at its length"));
  for (const char* option : {"PageSize=Custom.72x353mm", "fit-to-page", "print-scaling=none"}) {
    EXPECT_EQ(done({"print", "bon.pdf", "-o", option}).err, "") << option;
  }
  EXPECT_EQ(done({"print", example("receipt.pdf")}).err, "");
}

// The words agree with what CUPS does: at the limit of 2 %, a frame of 150 mm is shrunk or not.
TEST_F(WrenProgramDocuments, AreSaidToBeShrunkWhenTheyAre) {
  const struct {
    int widthPt;
    int lengthPt;
    bool isShrunk;
  } kPages[] = {{227, 570, false}, {227, 590, true}, {231, 500, false}, {238, 500, true}};
  for (const auto& [width, length, isShrunk] : kPages) {
    folder_.write("page.pdf", pdfOf({{width, length}}, "100 10 m 100 435 l 4 w S"));
    const auto result = done({"print", "page.pdf", "-o", "PageType=1", "-o", "HalftoneType=None"});
    EXPECT_EQ(result.err.find("was shrunk") != std::string::npos, isShrunk)
        << width << " x " << length << ": " << result.err;
    const std::string bytes = bytesOf("page.prn");
    const auto paper =
        escpos::readAll({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}).paper;
    unsigned rows = 0;
    std::vector<std::uint8_t> dots(paper.widthDots);
    for (std::uint64_t row = 0; row < paper.allRows().end; ++row) {
      escpos::renderRow(paper, row, dots);
      rows += std::count(dots.begin(), dots.end(), 1) > 0 ? 1 : 0;
    }
    // 425 points are 1198 rows.
    if (isShrunk) {
      EXPECT_LT(rows, 1190U) << width << " x " << length;
    } else {
      EXPECT_NEAR(rows, 1198, 3) << width << " x " << length;
    }
  }
}

TEST_F(WrenProgramDocuments, LongerThanTheLongestPictureArePrintedWithoutOne) {
  // 5 pages of 16.1 m.
  renderAs(std::vector(5, wren_test::flatPage(8, 129000, 255)));
  const auto result = done({"print", example("order.txt"), "--out", "roll.prn"});
  EXPECT_THAT(result.out, StartsWith("5 page(s), "));
  EXPECT_THAT(result.out, testing::Not(HasSubstr("picture")));
  EXPECT_EQ(result.err,
            "wren: no picture: 81 m of paper are too much for one; wren preview roll.prn --split "
            "--max-length 81000 draws the pages\n");
  EXPECT_FALSE(fs::exists(pathOf("roll.png")));
  EXPECT_EQ(wren({"preview", "roll.prn", "--split", "--max-length", "81000"}).exitStatus, 0);
  EXPECT_TRUE(fs::exists(pathOf("roll-5.png")));
  const auto report = nlohmann::json::parse(
      done({"print", example("order.txt"), "--out", "/dev/null", "--json"}).out);
  EXPECT_EQ(report["picture"], nullptr);
  EXPECT_THAT(report["notes"], ElementsAre("no picture: 81 m of paper are too much for one"));
  const auto piped = done({"print", example("order.txt"), "--out", "-"});
  EXPECT_THAT(piped.err, EndsWith("wren: no picture: 81 m of paper are too much for one\n"));
  EXPECT_THAT(done({"print", example("order.txt"), "--out", "my roll.prn"}).err,
              HasSubstr("; wren preview 'my roll.prn' --split --max-length 81000 draws"));
}

// 80 m are 639370 dot rows of 203 dpi.
TEST_F(WrenProgramDocuments, AsLongAsTheLongestPictureHaveOne) {
  renderAs(std::vector(4, wren_test::flatPage(8, 128000, 255)));
  const auto result = done({"print", example("order.txt"), "--out", "roll.prn"});
  EXPECT_THAT(result.out, HasSubstr("picture: roll.png\n"));
  EXPECT_EQ(result.err, "");
}

// The renderers do not say that they had no room.
TEST_F(WrenProgramDocuments, AreNotBlamedForAFullDisk) {
  wren_test::ProcessSpec spec;
  spec.program = "/usr/bin/env";
  spec.arguments = {"env", "unshare", "-rm", "true"};
  spec.environment = {"PATH=/usr/bin:/bin"};
  if (wren_test::runProcess(spec).exitStatus != 0) GTEST_SKIP() << "no mounts for this user";
  standIn("cupsfilter", "head -c 1000000 /dev/zero 2>/dev/null; exit 1\n");
  fs::create_directory(pathOf("tmp"));
  spec.workingFolder = folder_.path();
  spec.environment = {"PATH=" + pathOf("bin") + ":/usr/sbin:/usr/bin:/bin",
                      "TMPDIR=" + pathOf("tmp")};
  for (const char* size : {"300k", "30m"}) {
    spec.arguments = {"env",
                      "unshare",
                      "-rm",
                      "sh",
                      "-c",
                      std::string("mount -t tmpfs -o size=") + size + " none tmp && exec " +
                          WREN_PROGRAM + " print " + example("order.txt")};
    const auto result = wren_test::runProcess(spec);
    const bool isFull = std::string(size) == "300k";
    EXPECT_EQ(result.exitStatus, isFull ? 1 : 3);
    EXPECT_EQ(result.err,
              isFull
                  ? "wren: '" + pathOf("tmp") + "' cannot be written: No space left on device\n"
                  : "wren: '" + example("order.txt") + "' cannot be rendered; it may be damaged\n");
  }
}

// The pieces in which the bytes are read have 65536 bytes: neither a piece that is just full nor a
// last one of a single byte is taken for the end.
TEST_F(WrenProgramDocuments, OfAnyNumberOfBytesAreReadToTheLast) {
  constexpr unsigned kWidth = 500;
  // The bytes of a job whose first page has `bands` bands and whose second is `width` dots wide.
  const auto bytesFor = [&](unsigned bands, unsigned width) {
    renderAs({wren_test::flatPage(kWidth, 8 * bands, 255), wren_test::flatPage(width, 8, 255)});
    done({"print", example("order.txt"), "--out", "job.prn"});
    return bytesOf("job.prn");
  };
  const std::size_t ofABand = bytesFor(2, 68).size() - bytesFor(1, 68).size();
  ASSERT_GT(ofABand, kWidth);
  const std::size_t least = bytesFor(1, 68).size();
  for (const std::size_t wanted : {65535U, 65536U, 65537U}) {
    const auto bands = static_cast<unsigned>((wanted - least) / ofABand);
    const auto more = static_cast<unsigned>((wanted - least) % ofABand);
    ASSERT_LE(68 + more, 576U);
    const std::string bytes = bytesFor(1 + bands, 68 + more);
    ASSERT_EQ(bytes.size(), wanted) << "the job has another size than its bands";
  }
}

// The filter says that the data of the page are missing, and at last that it printed none.
TEST_F(WrenProgramDocuments, ThatAreCutOffAreRefusedWithTheLastWordOfTheFilter) {
  wren_test::RasterPage page = wren_test::flatPage(64, 64, 255);
  page.pixels.resize(64 * 32);
  renderAs({page});
  const std::string words = " has no page that can be printed: No pages found!";
  EXPECT_EQ(refusal(3, {"print", example("order.txt")}), "'" + example("order.txt") + "'" + words);
  EXPECT_EQ(refusal(3, {"halftones", example("order.txt")}), "the document" + words);
  EXPECT_THAT(namesIn("."), UnorderedElementsAre("bin", "bin.ras"));
}

TEST_F(WrenProgramDocuments, OfOtherFiltersPassOnTheirStatus) {
  standIn("cupsfilter", "echo 'ERROR: out of paste' >&2\nexit 3\n");
  EXPECT_EQ(refusal(3, {"print", example("order.txt")}),
            "'" + example("order.txt") + "' cannot be rendered: out of paste");
  // A chain that ends well with nothing in its output.
  standIn("cupsfilter", "exit 0\n");
  EXPECT_EQ(refusal(3, {"print", example("order.txt")}),
            "'" + example("order.txt") + "' has no page that can be printed: No pages found!");
  EXPECT_EQ(refusal(3, {"halftones", example("order.txt")}),
            "the document has no page that can be printed: No pages found!");
  EXPECT_THAT(namesIn("."), ElementsAre("bin"));
}

}  // namespace
}  // namespace wren::cli
