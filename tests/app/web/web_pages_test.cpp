// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What all our web pages have in common: their head, their language, text from outside, and the
// password.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "tests/app/running_app.h"
#include "tests/app/running_server.h"
#include "tests/app/web/web_client.h"

namespace wren_test {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string asText(std::string html) {
  const std::pair<const char*, char> references[] = {
      {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&amp;", '&'}};
  for (const auto& [reference, letter] : references) {
    for (auto at = html.find(reference); at != std::string::npos;
         at = html.find(reference, at + 1)) {
      html.replace(at, std::string(reference).size(), 1, letter);
    }
  }
  return html;
}

const std::vector<std::string> kPages = {"halftone", "paper", "printer"};

TEST(WebPages, HaveAHeadThatLoadsNothingFromElsewhere) {
  RunningApp app;
  const WebClient client(app.port());
  for (const std::string& page : kPages) {
    SCOPED_TRACE(page);
    const WebAnswer answer = client.get("/wren/" + page);
    EXPECT_EQ(answer.status, 200);
    EXPECT_THAT(answer.type, HasSubstr("text/html"));
    EXPECT_THAT(answer.body, HasSubstr("<html lang=\"en\">"));
    EXPECT_THAT(answer.body, HasSubstr("default-src &#39;none&#39;; script-src &#39;self&#39;; "
                                       "style-src &#39;self&#39;;"));
    EXPECT_THAT(answer.body, Not(HasSubstr("unsafe-inline")));
    EXPECT_THAT(answer.body, Not(HasSubstr("://")));
    EXPECT_THAT(answer.body, Not(HasSubstr(" style=")));
    EXPECT_THAT(answer.body, Not(HasSubstr(" onclick=")));
  }
  for (const std::string file : {"/wren-pages.css", "/wren-pages.js"}) {
    const WebAnswer answer = client.get(file);
    EXPECT_EQ(answer.status, 200) << file;
    EXPECT_THAT(answer.body, Not(HasSubstr("://"))) << file;
  }
}

TEST(WebPages, OfferTheExamples) {
  RunningApp app;
  const WebClient client(app.port());
  for (const std::string name : {"photo.png", "drawing.png", "receipt.pdf"}) {
    const std::string served = client.get("/wren-examples/" + name).body;
    EXPECT_EQ(served.size(), readFile(std::string(WREN_EXAMPLES) + "/" + name).size()) << name;
  }
}

struct Spoken {
  const char* acceptLanguage;
  const char* tag;
};

TEST(WebPages, SpeakTheLanguageOfTheBrowser) {
  RunningApp app;
  WebClient client(app.port());
  const Spoken rows[] = {{"", "en"},
                         {"fr", "en"},
                         {"de", "de"},
                         {"de-AT,de;q=0.9,en;q=0.8", "de"},
                         {"en-GB,en;q=0.9,de;q=0.8", "en"},
                         {"fr-CH, fr;q=0.9, en;q=0.4, de;q=0.7, *;q=0.5", "de"},
                         {"DE", "de"},
                         {"deu", "en"},
                         {"de;q=0", "en"},
                         {";;;,,,q=", "en"}};
  for (const Spoken& row : rows) {
    client.speak(row.acceptLanguage);
    EXPECT_THAT(client.get("/wren/halftone").body,
                HasSubstr(std::string("<html lang=\"") + row.tag + "\">"))
        << row.acceptLanguage;
  }
  client.speak("de");
  // The words of the PPDs.
  EXPECT_THAT(client.get("/wren/halftone").body,
              HasSubstr("Schablone (Strichzeichnungen, Tattoo-Vorlagen)"));
}

TEST(WebPages, StandBesideThoseOfPappl) {
  RunningApp app;
  const WebClient client(app.port());
  for (const std::string path : {"/", "/wren", "/wren/printing", "/wren/media", "/wren/status"}) {
    EXPECT_EQ(client.get(path).status, 200) << path;
  }
  for (const std::string& page : kPages) {
    EXPECT_THAT(client.get("/wren").body, HasSubstr("href=\"/wren/" + page + "\"")) << page;
    for (const std::string path : {"/wren", "/wren/printing", "/wren/media", "/wren/status"}) {
      EXPECT_THAT(client.get("/wren/" + page).body, HasSubstr("href=\"" + path + "\""))
          << page << " " << path;
    }
  }
}

TEST(WebPages, EscapeTheNameOfThePrinter) {
  RunningServer server;
  const std::string name = "\"><script>alert('1')</script>&amp;";
  server.ask({"add", "-d", name, "-m", "wren80", "-v", "socket://127.0.0.1:9/"});
  const WebClient client(server.port());
  // PAPPL makes the path of the name.
  const std::string list = client.get("/").body;
  ASSERT_THAT(list, HasSubstr("/media\""));
  const auto end = list.find("/media\"");
  const auto start = list.rfind("href=\"", end) + 6;
  const std::string path = asText(list.substr(start, end - start));
  for (const std::string& page : kPages) {
    const std::string body = client.get(path + "/" + page).body;
    EXPECT_THAT(body,
                HasSubstr("&quot;&gt;&lt;script&gt;alert(&#39;1&#39;)&lt;/script&gt;&amp;amp;"));
    EXPECT_THAT(body, Not(HasSubstr("<script>")));
  }
}

// The state of a server with a password that nobody knows.
void setPassword(RunningServer& server) {
  ASSERT_TRUE(server.waitUntilSaved("till"));
  server.stop(SIGTERM);
  const std::string state = readFile(server.stateFolder() / "state");
  std::ofstream(server.stateFolder() / "state") << "Password 0123~0123\n" << state;
  server.start();
}

TEST(WebPages, ShowAndChangeNothingWithoutThePassword) {
  RunningServer server;
  server.ask({"add", "-d", "till", "-m", "wren80", "-v", "socket://127.0.0.1:9"});
  const WebClient client(server.port());
  const std::string token = client.tokenOf("/till/printer");
  ASSERT_NE(token, "");
  setPassword(server);
  for (const std::string& page : kPages) {
    SCOPED_TRACE(page);
    const std::string body = client.get("/till/" + page).body;
    EXPECT_THAT(body, HasSubstr("type=\"password\""));
    EXPECT_THAT(body, Not(HasSubstr("data-method")));
    EXPECT_THAT(body, Not(HasSubstr("doc-cut-type")));
    EXPECT_THAT(body, Not(HasSubstr("kept-papers")));
  }
  for (const std::string& session : {token, client.tokenOf("/till/printer")}) {
    client.postForm("/till/printer", {{"session", session}, {"doc-cut-type", "full"}});
    client.postForm("/till/printer/action", {{"session", session}, {"action", "drawer"}});
    client.postForm("/till/paper", {{"session", session}, {"kept-papers", "5"}});
    client.postForm("/till/halftone", {{"session", session},
                                       {"halftone-type", "stucki"},
                                       {"brightness", "0"},
                                       {"contrast", "0"}});
    client.post("/till/halftone/print",
                encodedFields({{"session", session}, {"halftone-type", "stucki"}}) + "\n");
  }
  EXPECT_EQ(server.attributeOf("till", "doc-cut-type-default"), "partial");
  EXPECT_EQ(server.attributeOf("till", "kept-papers-default"), "0");
  EXPECT_EQ(server.attributeOf("till", "halftone-type-default"), "threshold");
  EXPECT_EQ(server.jobAttribute("till", 1, "job-state"), "");
}

}  // namespace
}  // namespace wren_test
