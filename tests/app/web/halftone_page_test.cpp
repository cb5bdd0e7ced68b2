// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The page of halftones by HTTP: what is shown is what is printed, and what is not whole, too large
// or without the token changes nothing.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <nlohmann/json.hpp>
#include <string>

#include "escpos/reader.h"
#include "tests/app/running_app.h"
#include "tests/app/sample_documents.h"
#include "tests/app/web/web_client.h"
#include "tests/preview/png_reading.h"
#include "tests/support/process.h"

namespace wren_test {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kPage = "/wren/halftone";
constexpr unsigned kWidthPx = 576;

// A ramp from black to paper, across.
std::string rampLevels(unsigned rows) {
  std::string levels;
  for (unsigned y = 0; y < rows; ++y) {
    for (unsigned x = 0; x < kWidthPx; ++x) {
      levels += static_cast<char>((x * 7 + y * 3) % 256 * (x % 2 + 1) / 2);
    }
  }
  return levels;
}

std::string upload(const WebClient::Fields& fields, const std::string& body) {
  return encodedFields(fields) + "\n" + body;
}

// The first line of an answer, and what follows it.
struct Parts {
  Json head;
  std::string rest;
};
Parts partsOf(const WebAnswer& answer) {
  const auto end = answer.body.find('\n');
  Parts parts{Json::parse(answer.body.substr(0, end), nullptr, false), {}};
  if (end != std::string::npos) parts.rest = answer.body.substr(end + 1);
  return parts;
}

// The picture of each method of a preview.
std::string pngOf(const Parts& parts, const std::string& method) {
  std::size_t at = 0;
  for (const Json& row : parts.head.at("methods")) {
    const std::size_t size = row.at("png");
    if (row.at("method") == method) return parts.rest.substr(at, size);
    at += size;
  }
  return {};
}

std::string digestOf(const Parts& parts, const std::string& method) {
  for (const Json& row : parts.head.at("methods")) {
    if (row.at("method") == method) return row.at("digest");
  }
  return {};
}

class HalftonePage : public testing::Test {
 protected:
  HalftonePage() : client_(app_.port()), token_(client_.tokenOf(kPage)) {}

  WebClient::Fields fields(const std::string& heights) const {
    return {{"session", token_}, {"brightness", "0"}, {"contrast", "0"}, {"heights", heights}};
  }
  std::string page() const { return client_.get(kPage).body; }

  RunningApp app_;
  WebClient client_;
  std::string token_;
};

TEST_F(HalftonePage, PrintsWhatItHasShown) {
  const std::string levels = rampLevels(120) + rampLevels(60);
  WebClient::Fields asked = fields("120,60");
  asked["brightness"] = "-7";
  asked["contrast"] = "31";
  const WebAnswer answer = client_.post(std::string(kPage) + "/preview", upload(asked, levels));
  ASSERT_EQ(answer.status, 200) << answer.body;
  const Parts parts = partsOf(answer);
  ASSERT_EQ(parts.head.at("methods").size(), 9U);
  std::size_t papers = 0;
  for (const std::string method : {"threshold", "stucki", "stencil"}) {
    SCOPED_TRACE(method);
    WebClient::Fields printed = asked;
    printed["halftone-type"] = method;
    printed["digest"] = digestOf(parts, method);
    const WebAnswer job = client_.post(std::string(kPage) + "/print", upload(printed, levels));
    ASSERT_EQ(job.status, 200) << job.body;
    const JobOutcome outcome = app_.waitFor(Json::parse(job.body).at("job"));
    EXPECT_EQ(outcome.state, IPP_JSTATE_COMPLETED) << outcome.message;
    const auto all = app_.waitForPapers(++papers);
    ASSERT_EQ(all.size(), papers);
    const std::string& bytes = all.back();
    const auto paper =
        wren::escpos::readAll({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()})
            .paper;
    const GreyPicture shown = readPngBytes(pngOf(parts, method));
    ASSERT_EQ(shown.width, kWidthPx);
    ASSERT_EQ(shown.height, paper.allRows().end);
    std::vector<std::uint8_t> dots(kWidthPx);
    for (unsigned y = 0; y < shown.height; ++y) {
      renderRow(paper, y, dots);
      for (unsigned x = 0; x < kWidthPx; ++x) {
        ASSERT_EQ(shown.pixels.at(y * kWidthPx + x), dots[x] == 0 ? 255 : 0) << x << ", " << y;
      }
    }
  }
}

TEST_F(HalftonePage, ShowsTwoPeopleTheirOwnPictures) {
  const std::string path = std::string(kPage) + "/preview";
  const std::string ramp = upload(fields("60"), rampLevels(60));
  const std::string black = upload(fields("60"), std::string(60 * kWidthPx, '\0'));
  const std::string ofRamp = client_.post(path, ramp).body;
  const std::string ofBlack = client_.post(path, black).body;
  ASSERT_NE(ofRamp, ofBlack);
  auto other = std::async(std::launch::async, [&] {
    const WebClient second(app_.port());
    for (int i = 0; i < 20; ++i) {
      if (second.post(path, black).body != ofBlack) return i;
    }
    return -1;
  });
  for (int i = 0; i < 20; ++i) EXPECT_TRUE(client_.post(path, ramp).body == ofRamp) << i;
  EXPECT_EQ(other.get(), -1) << "the request that got another answer";
}

TEST_F(HalftonePage, PrintsNothingElseThanWhatWasShown) {
  const std::string levels = rampLevels(40);
  const Parts parts =
      partsOf(client_.post(std::string(kPage) + "/preview", upload(fields("40"), levels)));
  WebClient::Fields printed = fields("40");
  printed["halftone-type"] = "stucki";
  printed["digest"] = digestOf(parts, "burkes");
  EXPECT_EQ(client_.post(std::string(kPage) + "/print", upload(printed, levels)).status, 409);
  // The printer's settings have changed after the pictures were drawn.
  printed["digest"] = digestOf(parts, "stucki");
  client_.postForm("/wren/printing", {{"session", token_}, {"doc-cut-type", "full"}});
  EXPECT_EQ(client_.post(std::string(kPage) + "/print", upload(printed, levels)).status, 409);
  EXPECT_EQ(app_.stateOf(1).status, IPP_STATUS_ERROR_NOT_FOUND);
}

TEST_F(HalftonePage, LeavesNoFileBehind) {
  const std::string levels = rampLevels(40);
  const Parts parts =
      partsOf(client_.post(std::string(kPage) + "/preview", upload(fields("40"), levels)));
  WebClient::Fields printed = fields("40");
  printed["halftone-type"] = "stucki";
  printed["digest"] = digestOf(parts, "stucki");
  const WebAnswer job = client_.post(std::string(kPage) + "/print", upload(printed, levels));
  app_.waitFor(Json::parse(job.body).at("job"));
  app_.waitForPapers(1);
  std::string left;
  for (const auto& entry : std::filesystem::directory_iterator(app_.folder())) {
    if (entry.path().extension() == ".pages") left += entry.path().filename().string() + "\n";
  }
  EXPECT_EQ(left, "");
}

TEST_F(HalftonePage, TurnsAPdfIntoGreyPages) {
  const std::string pdf = readFile(std::string(WREN_EXAMPLES) + "/receipt.pdf");
  const WebAnswer answer =
      client_.post(std::string(kPage) + "/pdf", upload({{"session", token_}}, pdf));
  ASSERT_EQ(answer.status, 200) << answer.body;
  const Parts parts = partsOf(answer);
  std::size_t rows = 0;
  for (const Json& height : parts.head.at("heights")) rows += height.get<std::size_t>();
  EXPECT_EQ(parts.rest.size(), rows * kWidthPx);
  // Black text on paper.
  EXPECT_THAT(parts.rest, HasSubstr(std::string(1, '\0')));
  EXPECT_THAT(parts.rest, HasSubstr(std::string(100, '\xFF')));
}

struct BadUpload {
  const char* name;
  const char* page;
  WebClient::Fields fields;
  std::size_t bytes;
  int status;
  const char* words;
};

class BadUploads : public testing::TestWithParam<BadUpload> {};

TEST_P(BadUploads, AreAnsweredInWordsWithWhatWouldBeAccepted) {
  const BadUpload& bad = GetParam();
  RunningApp app;
  WebClient client(app.port());
  WebClient::Fields fields = {{"session", client.tokenOf(kPage)},
                              {"brightness", "0"},
                              {"contrast", "0"},
                              {"halftone-type", "stucki"}};
  for (const auto& [name, value] : bad.fields) fields[name] = value;
  const WebAnswer answer =
      client.post(std::string(kPage) + bad.page, upload(fields, std::string(bad.bytes, 'x')));
  EXPECT_EQ(answer.status, bad.status);
  const Json json = Json::parse(answer.body, nullptr, false);
  ASSERT_TRUE(json.is_object()) << answer.body.substr(0, 200);
  EXPECT_THAT(json.value("error", ""), HasSubstr(bad.words));
  EXPECT_EQ(app.stateOf(1).status, IPP_STATUS_ERROR_NOT_FOUND);
  // The server goes on.
  EXPECT_EQ(client.get(kPage).status, 200);
}

constexpr const char* kAccepted = "Accepted are grey levels in the width of the print head";

INSTANTIATE_TEST_SUITE_P(
    Uploads, BadUploads,
    testing::Values(
        BadUpload{"NoPages", "/preview", {}, 576, 400, kAccepted},
        BadUpload{"TooFewLevels", "/preview", {{"heights", "2"}}, 576, 400, kAccepted},
        BadUpload{"TooManyLevels", "/preview", {{"heights", "2"}}, 1153, 400, kAccepted},
        BadUpload{"NoNumber", "/preview", {{"heights", "1,x"}}, 576, 400, kAccepted},
        BadUpload{"Negative", "/preview", {{"heights", "-1"}}, 576, 400, kAccepted},
        BadUpload{"EmptyPage", "/preview", {{"heights", "1,0"}}, 576, 400, kAccepted},
        BadUpload{"HugePage", "/preview", {{"heights", "4294967295"}}, 576, 400, kAccepted},
        BadUpload{"ManyHugePages", "/preview", {{"heights", "9000,9000"}}, 576, 400, kAccepted},
        BadUpload{"LargeBody", "/preview", {{"heights", "1"}}, 14'000'000, 413, "up to 2 m"},
        BadUpload{"WildBrightness",
                  "/preview",
                  {{"heights", "1"}, {"brightness", "26"}},
                  576,
                  400,
                  "does not exist"},
        BadUpload{"WildContrast",
                  "/preview",
                  {{"heights", "1"}, {"contrast", "x"}},
                  576,
                  400,
                  "does not exist"},
        BadUpload{"WildMethod",
                  "/print",
                  {{"heights", "1"}, {"halftone-type", "<b>"}},
                  576,
                  400,
                  "does not exist"},
        BadUpload{"NoPdf", "/pdf", {}, 576, 400, "this is not a PDF. Accepted is PDF"},
        BadUpload{"EmptyPdf", "/pdf", {}, 0, 400, "the PDF is empty. Accepted is PDF"},
        BadUpload{"LargePdf", "/pdf", {}, 10'600'000, 413, "PDF up to 10 MiB"}),
    [](const auto& shown) { return shown.param.name; });

TEST_F(HalftonePage, NeedsTheTokenForEveryUpload) {
  const std::string levels = rampLevels(2);
  for (const std::string page : {"/preview", "/print", "/pdf"}) {
    for (const std::string token : {"", "x", "0123456789abcdef"}) {
      WebClient::Fields asked = fields("2");
      asked["session"] = token;
      const WebAnswer answer = client_.post(kPage + page, upload(asked, levels));
      EXPECT_EQ(answer.status, 403) << page << " " << token;
    }
    // No line of fields at all.
    EXPECT_EQ(client_.post(kPage + page, "x").status, 403) << page;
    EXPECT_EQ(client_.post(kPage + page, "").status, 403) << page;
  }
  EXPECT_EQ(app_.stateOf(1).status, IPP_STATUS_ERROR_NOT_FOUND);
}

TEST_F(HalftonePage, ChangesNothingByGet) {
  const std::string before = page();
  EXPECT_EQ(client_.get(std::string(kPage) + "/print").status, 405);
  EXPECT_EQ(client_.get(std::string(kPage) + "/preview").status, 405);
  EXPECT_EQ(client_.get(std::string(kPage) + "/pdf").status, 405);
  client_.get(std::string(kPage) +
              "?halftone-type=stucki&brightness=5&contrast=5&session=" + token_);
  EXPECT_EQ(page(), before);
  EXPECT_EQ(app_.stateOf(1).status, IPP_STATUS_ERROR_NOT_FOUND);
}

TEST_F(HalftonePage, SavesDefaultsThatPapplsPagesShow) {
  const WebAnswer answer = client_.postForm(
      kPage,
      {{"session", token_}, {"halftone-type", "stucki"}, {"brightness", "5"}, {"contrast", "-12"}});
  EXPECT_EQ(answer.status, 303);
  EXPECT_THAT(answer.location, HasSubstr("/wren/halftone?saved=1"));
  EXPECT_THAT(client_.get("/wren/halftone?saved=1").body, HasSubstr("role=\"status\">Saved."));
  const std::string pappls = client_.get("/wren/printing").body;
  EXPECT_THAT(pappls, HasSubstr("<option value=\"stucki\" selected>"));
  EXPECT_THAT(pappls, HasSubstr("name=\"contrast\" min=\"-100\" max=\"100\" value=\"-12\""));
  EXPECT_THAT(pappls, HasSubstr("<option value=\"60\" selected>60%</option>"));
  // The other way round.
  client_.postForm("/wren/printing", {{"session", client_.tokenOf("/wren/printing")},
                                      {"halftone-type", "bayer"},
                                      {"contrast", "7"}});
  const std::string ours = page();
  EXPECT_THAT(ours, HasSubstr("name=\"contrast\" min=\"-100\" max=\"100\" step=\"1\" value=\"7\""));
  const auto card = ours.find("data-method=\"bayer\"");
  EXPECT_THAT(ours.substr(card, ours.find("</li>", card) - card),
              HasSubstr("<span class=\"mark\">"));
}

struct PageWords {
  const char* language;
  std::vector<const char*> ofThePage;
  std::vector<const char*> ofEachMethod;
};

TEST_F(HalftonePage, SaysWhatEachControlDoes) {
  const PageWords rows[] = {
      {"en",
       {"aria-label=\"Document and tone\"", "<span>Choose a picture or PDF</span>",
        "<p>Or an example:</p>", ">Photo</button>", ">Drawing</button>", ">Receipt</button>",
        "<span>Darkness</span>", "<span>Contrast</span>", "> Magnify, dot by dot</label>",
        "<noscript><p>Without JavaScript"},
       {"<p class=\"use\">Good for ", ">Print this one</button>", ">Make default</button>",
        ">✓ Default</span>"}},
      {"de",
       {"aria-label=\"Vorlage und Ton\"", "<span>Bild oder PDF wählen</span>",
        "<p>Oder ein Beispiel:</p>", ">Foto</button>", ">Zeichnung</button>", ">Kassenbon</button>",
        "<span>Schwärzung</span>", "<span>Kontrast</span>", "> Vergrößern, Punkt für Punkt</label>",
        "<noscript><p>Ohne JavaScript"},
       {"<p class=\"use\">Gut für ", ">Dieses drucken</button>", ">Als Standard</button>",
        ">✓ Standard</span>"}}};
  for (const PageWords& row : rows) {
    SCOPED_TRACE(row.language);
    client_.speak(row.language);
    const std::string body = page();
    for (const char* words : row.ofThePage) EXPECT_THAT(body, HasSubstr(words));
    const std::string begin = "<li class=\"card\"";
    int cards = 0;
    for (auto at = body.find(begin); at != std::string::npos; at = body.find(begin, at + 1)) {
      const std::string card = body.substr(at, body.find("</li>", at) - at);
      for (const char* words : row.ofEachMethod) EXPECT_THAT(card, HasSubstr(words));
      ++cards;
    }
    EXPECT_EQ(cards, 9);
  }
}

TEST_F(HalftonePage, RefusesDefaultsWithoutTheTokenOrOutOfRange) {
  const std::string before = page();
  const WebClient::Fields good = {
      {"halftone-type", "stucki"}, {"brightness", "5"}, {"contrast", "5"}};
  struct Change {
    const char* field;
    const char* value;
    int status;
  };
  const Change changes[] = {
      {"session", "x", 403},      {"session", "", 403},      {"halftone-type", "Stucki", 400},
      {"halftone-type", "", 400}, {"brightness", "26", 400}, {"contrast", "101", 400},
      {"contrast", "5;", 400}};
  for (const Change& change : changes) {
    WebClient::Fields fields = good;
    fields["session"] = token_;
    fields[change.field] = change.value;
    const WebAnswer answer = client_.postForm(kPage, fields);
    EXPECT_EQ(answer.status, change.status) << change.field << "=" << change.value;
    EXPECT_THAT(answer.body, HasSubstr("role=\"alert\"")) << change.field;
  }
  EXPECT_EQ(client_.postForm(kPage, good).status, 403);
  EXPECT_EQ(page(), before);
}

}  // namespace
}  // namespace wren_test
