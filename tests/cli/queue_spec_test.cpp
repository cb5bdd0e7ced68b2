// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/queue_spec.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/failure.h"

namespace wren::cli {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

std::string refusal(const std::string& text) {
  try {
    parseQueues(text, "shop.json");
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.status(), kUsage);
    return failure.what();
  }
  return "taken";
}

std::string withQueue(const std::string& queue) {
  return R"({"schema": 1, "queues": [{"name": "bar", "uri": "usb://Wren/80"}, )" + queue + "]}";
}

TEST(QueueFile, NamesQueuesWithTheirOptions) {
  const auto queues = parseQueues(R"({"schema": 1, "faults": 0, "checks": [], "queues": [
      {"name": "till", "uri": "socket://192.0.2.7", "makeAndModel": "Wren", "paper": 58,
       "options": {"HalftoneType": "Burkes", "Brightness": 5, "fit-to-page": true}, "checks": []},
      {"name": "bar", "uri": "usb://Wren/80"}]})",
                                  "shop.json");
  ASSERT_EQ(queues.size(), 2U);
  EXPECT_EQ(queues[0].name, "till");
  EXPECT_EQ(queues[0].uri, "socket://192.0.2.7");
  EXPECT_EQ(queues[0].paper, 58);
  EXPECT_TRUE(queues[0].isComplete);
  EXPECT_THAT(queues[0].options,
              testing::UnorderedElementsAre(Pair("HalftoneType", "Burkes"), Pair("Brightness", "5"),
                                            Pair("fit-to-page", "true")));
  EXPECT_EQ(queues[1].paper, 80);
  EXPECT_THAT(queues[1].options, ElementsAre());
}

TEST(QueueFile, MayNameNone) {
  EXPECT_TRUE(parseQueues(R"({"schema": 1, "queues": []})", "shop.json").empty());
}

TEST(QueueFile, SaysWhereItIsWrong) {
  const std::pair<std::string, std::string> kWrong[] = {
      {"", "shop.json is not JSON: error at byte 1"},
      {R"({"schema": 1, "queues": [)", "shop.json is not JSON: error at byte "},
      {R"({"schema": 1, "queues": [1e999]})", "shop.json has a number that is too large"},
      {"[]", "shop.json has no list \"queues\""},
      {R"({"schema": 1, "queues": {}})", "shop.json has no list \"queues\""},
      {R"({"queues": []})", "shop.json has not \"schema\": 1"},
      {R"({"schema": 2, "queues": []})", "shop.json has not \"schema\": 1"},
      {R"({"schema": "1", "queues": []})", "shop.json has not \"schema\": 1"},
      {withQueue("7"), "shop.json, queue 2: it has to be an object"},
      {withQueue(R"({"uri": "usb://x"})"), R"(shop.json, queue 2: "name" has to be a text)"},
      {withQueue(R"({"name": "a", "uri": 7})"), R"(queue 2: "uri" has to be a text)"},
      {withQueue(R"({"name": "a", "uri": "usb://x", "papr": 80})"),
       R"(queue 2: a queue has no "papr", did you mean 'paper'?)"},
      {withQueue(R"({"name": "a", "uri": "usb://x", "paper": "80"})"), "\"paper\" has to be 58"},
      {withQueue(R"({"name": "a", "uri": "usb://x", "paper": 79})"), "not '79'"},
      // 2^32 + 80
      {withQueue(R"({"name": "a", "uri": "usb://x", "paper": 4294967376})"), "has to be 58"},
      {withQueue(R"({"name": "BAR", "uri": "usb://x"})"),
       "queue 2: an earlier queue has the name 'bar'"},
      {withQueue(R"({"name": "a", "uri": "usb://x", "options": []})"), "\"options\" has to be"},
      {withQueue(R"({"name": "a", "uri": "usb://x", "options": {"cpi": 1.5}})"), "a whole number"},
      {withQueue(R"({"name": "a", "uri": "usb://x", "options": {"cpi": null}})"), "a whole number"},
      {withQueue(R"({"name": "my till", "uri": "usb://x"})"), "unlike 'my till'"},
  };
  for (const auto& [text, words] : kWrong) EXPECT_THAT(refusal(text), HasSubstr(words)) << text;
}

TEST(QueueSpec, RefusesNamesAddressesAndPapersThatCannotBe) {
  const auto isTaken = [](const std::string& name, const std::string& uri, int paper) {
    try {
      checkQueueSpec({name, uri, paper, {}, false});
      return true;
    } catch (const Failure&) {
      return false;
    }
  };
  for (const char* name : {"till", "Till_2", "t-1"})
    EXPECT_TRUE(isTaken(name, "usb://x", 80)) << name;
  for (const char* name : {"", "-till", "my till", "a/b", "caf\xC3\xA9", "a;b", "a\nb", "../x"}) {
    EXPECT_FALSE(isTaken(name, "usb://x", 80)) << name;
  }
  const std::string taken = "-0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz";
  for (int c = 0; c < 256; ++c) {
    const bool isNamePart = taken.find(static_cast<char>(c)) != std::string::npos;
    const std::string name = std::string("a") + static_cast<char>(c);
    EXPECT_EQ(isTaken(name, "usb://x", 80), isNamePart) << "byte " << c;
  }
  EXPECT_TRUE(isTaken(std::string(127, 'a'), "usb://x", 80));
  EXPECT_FALSE(isTaken(std::string(128, 'a'), "usb://x", 80));
  for (const char* uri : {"socket://192.0.2.7:9100", "usb://Wren/80?serial=1", "file:/tmp/x"}) {
    EXPECT_TRUE(isTaken("till", uri, 80)) << uri;
  }
  for (const char* uri : {"", "/dev/usb/lp0", ":9100", "SOCKET://x", "9p://x", "usb://a b",
                          "usb://a\nb", "localhost:9100", "socket:", "socket://"}) {
    EXPECT_FALSE(isTaken("till", uri, 80)) << uri;
  }
  for (const int paper : {0, 79, -80}) EXPECT_FALSE(isTaken("till", "usb://x", paper)) << paper;
}

}  // namespace
}  // namespace wren::cli
