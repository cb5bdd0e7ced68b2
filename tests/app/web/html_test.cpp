// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/web/html.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <regex>
#include <string>
#include <vector>

namespace wren::app::web {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::array kVoidElements = {"input", "link", "meta"};

/// What is wrong with the tags of a page; "" if each is whole and closed in turn.
std::string faultIn(const std::string& html) {
  static const std::regex kTag(R"(<(/?)([a-z0-9]+)((?: [a-z-]+(?:="[^"<>]*")?)*)>)");
  std::vector<std::string> open;
  std::string text = html;
  if (text.starts_with("<!DOCTYPE html>\n")) text.erase(0, 16);
  std::size_t end = 0;
  for (std::sregex_iterator at(text.begin(), text.end(), kTag), last; at != last; ++at) {
    const auto begin = static_cast<std::size_t>(at->position());
    const std::string between = text.substr(end, begin - end);
    if (between.find_first_of("<>") != std::string::npos) return "not a tag: " + between;
    end = begin + static_cast<std::size_t>(at->length());
    const std::string name = (*at)[2];
    if (std::find(kVoidElements.begin(), kVoidElements.end(), name) != kVoidElements.end())
      continue;
    if ((*at)[1].length() == 0) {
      open.push_back(name);
    } else if (open.empty() || open.back() != name) {
      return "closed out of turn: " + name;
    } else {
      open.pop_back();
    }
  }
  if (text.find_first_of("<>", end) != std::string::npos) return "not a tag: " + text.substr(end);
  return open.empty() ? "" : "left open: " + open.back();
}

std::vector<std::string> allOf(const std::string& text, const std::string& pattern) {
  const std::regex wanted(pattern);
  std::vector<std::string> found;
  for (std::sregex_iterator at(text.begin(), text.end(), wanted), last; at != last; ++at) {
    found.push_back((*at)[1]);
  }
  return found;
}

Frame frameOf(Language language) {
  Frame frame;
  frame.language = language;
  frame.title = "Paper & \"dots\"";
  frame.printerName = "Bar <1>";
  frame.links = {{"/bar", "Printer", false}, {"/bar/paper?a=1&b=2", "Paper's", true}};
  return frame;
}

TEST(Html, IsAWholeDocument) {
  const std::string page = htmlPage(frameOf(Language::kEnglish), "<p>body</p>\n");
  EXPECT_EQ(faultIn(page), "");
  EXPECT_THAT(page, testing::StartsWith("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n"));
  EXPECT_THAT(page, HasSubstr("<p>body</p>\n</main>"));
  EXPECT_THAT(allOf(page, "<title>(.*)</title>"),
              ElementsAre("Paper &amp; &quot;dots&quot; – Bar &lt;1&gt;"));
  EXPECT_THAT(allOf(page, "<h1 class=\"title\">(.*)</h1>"),
              ElementsAre("Paper &amp; &quot;dots&quot;"));
}

TEST(Html, LoadsNothingFromElsewhereAndRunsNothingInline) {
  const std::string page = htmlPage(frameOf(Language::kEnglish), "");
  EXPECT_THAT(page,
              HasSubstr("<meta charset=\"utf-8\">\n<meta http-equiv=\"Content-Security-Policy\" "
                        "content=\"default-src &#39;none&#39;; "));
  EXPECT_THAT(allOf(page, " (?:href|src)=\"([^\"]*)\""),
              ElementsAre("/favicon.png", "/style.css", kStylePath, kScriptPath, "#main", "/bar"));
  EXPECT_THAT(allOf(page, "<script (.*)></script>"),
              ElementsAre("src=\"" + std::string(kScriptPath) + "\" defer"));
}

TEST(Html, NamesThePageThatIsShownWithoutALink) {
  const std::string page = htmlPage(frameOf(Language::kEnglish), "");
  EXPECT_THAT(allOf(page, "<a class=\"btn\" (.*)</a>"), ElementsAre("href=\"/bar\">Printer"));
  EXPECT_THAT(allOf(page, "aria-current=\"page\">(.*)</span>"), ElementsAre("Paper&#39;s"));
}

TEST(Html, SpeaksTheLanguageOfItsReader) {
  const std::string page = htmlPage(frameOf(Language::kGerman), "");
  EXPECT_THAT(page, HasSubstr("<html lang=\"de\">"));
  EXPECT_THAT(allOf(page, "class=\"skip\" href=\"#main\">(.*)</a>"), ElementsAre("Zum Inhalt"));
  EXPECT_THAT(allOf(page, "aria-label=\"(.*)\">"), ElementsAre("Seiten des Druckers"));
}

TEST(Html, HasNoTextThatIsTakenForMarkup) {
  EXPECT_EQ(escaped("<a href=\"x\" id='y'>&amp;\x01\x1F\n\x7F ä"),
            "&lt;a href=&quot;x&quot; id=&#39;y&#39;&gt;&amp;amp;\n\x7F ä");
  EXPECT_EQ(optionElement("\"", "<", false), "<option value=\"&quot;\">&lt;</option>");
  EXPECT_EQ(optionElement("a", "A", true), "<option value=\"a\" selected>A</option>");
  EXPECT_EQ(hiddenField("<", "\""), "<input type=\"hidden\" name=\"&lt;\" value=\"&quot;\">\n");
}

}  // namespace
}  // namespace wren::app::web
