// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/queue_plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/failure.h"
#include "cli/output_file.h"
#include "cli/queue_access.h"
#include "tests/support/temporary_folder.h"

namespace wren::cli {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

PaperPpd ppdOf(int paper) {
  const std::string path = WREN_PPD_DIR "/wren" + std::to_string(paper) + ".ppd";
  return {paper, readWholeFile(path), describePrinter(path)};
}

QueueSpec specOf(JobOptions options = {}, bool isComplete = false) {
  return {"till", "usb://Wren/80", 80, std::move(options), isComplete};
}

// The queue that a plan makes.
ExistingQueue madeBy(const QueueSpec& spec, const QueuePlan& plan) {
  const wren_test::TemporaryFolder folder;
  const std::string path = folder.write("queue.ppd", plan.ppdText);
  Queue queue = {spec.name, spec.uri, "Wren 80 mm", false, true, plan.defaults};
  // What the scheduler adds by itself.
  queue.defaults["copies"] = "1";
  queue.defaults["job-sheets"] = "none,none";
  queue.defaults["media-col"] = "{media-size={x-dimension=8000 y-dimension=20000}}";
  return {queue, plan.ppdText, describePrinter(path)};
}

ExistingQueue queueWith(const JobOptions& options, int paper = 80) {
  QueueSpec spec = specOf(options);
  spec.paper = paper;
  return madeBy(spec, planQueue(spec, std::nullopt, ppdOf(paper)));
}

std::string defaultOf(const QueuePlan& plan, const std::string& keyword) {
  const std::string line = "\n*Default" + keyword + ": ";
  const auto at = plan.ppdText.find(line);
  if (at == std::string::npos) return {};
  const auto value = at + line.size();
  return plan.ppdText.substr(value, plan.ppdText.find('\n', value) - value);
}

TEST(QueuePlan, OfANewQueueHasTheReceiptDefaultsAndItsOptions) {
  const QueuePlan plan =
      planQueue(specOf({{"halftonetype", "burkes"}, {"cpi", "14"}}), std::nullopt, ppdOf(80));
  EXPECT_TRUE(plan.isNew);
  for (const int paper : {58, 80, 112}) {
    EXPECT_EQ(planQueue(specOf({}), std::nullopt, ppdOf(paper)).paper, paper);
  }
  EXPECT_EQ(defaultOf(plan, "HalftoneType"), "Burkes");
  EXPECT_EQ(defaultOf(plan, "DocCutType"), "2");
  EXPECT_THAT(plan.defaults, testing::UnorderedElementsAre(
                                 Pair("cpi", "14"), Pair("position", "top"),
                                 Pair("pdfAutoRotate", "no"), Pair("orientation-requested", "3")));
}

TEST(QueuePlan, SetsASizeInEveryLineThatFollowsFromIt) {
  const QueuePlan plan = planQueue(specOf({{"PageSize", "X80MMY600MM"}}), std::nullopt, ppdOf(80));
  for (const char* keyword : {"PageSize", "PageRegion", "ImageableArea", "PaperDimension"}) {
    EXPECT_EQ(defaultOf(plan, keyword), "X80MMY600MM") << keyword;
  }
}

TEST(QueuePlan, ChangesNothingInAQueueThatIsAsAskedFor) {
  for (const bool isComplete : {false, true}) {
    const JobOptions options = {
        {"HalftoneType", "Burkes"}, {"cpi", "14"}, {"PageSize", "X80MMY600MM"}};
    const QueuePlan plan = planQueue(specOf(options, isComplete), queueWith(options), ppdOf(80));
    EXPECT_THAT(plan.changes, IsEmpty());
    EXPECT_THAT(plan.removedDefaults, IsEmpty());
    EXPECT_FALSE(plan.changesPaper);
  }
}

TEST(QueuePlan, SaysWhatChanges) {
  ExistingQueue existing = queueWith({{"HalftoneType", "Burkes"}});
  existing.queue.uri = "usb://old";
  existing.queue.isStopped = true;
  existing.queue.takesJobs = false;
  existing.queue.defaults["position"] = "center";
  existing.queue.defaults.erase("pdfAutoRotate");
  const QueuePlan plan = planQueue(specOf({{"HalftoneType", "Stucki"}}), existing, ppdOf(80));
  EXPECT_THAT(plan.changes,
              ElementsAre("address usb://old -> usb://Wren/80", "HalftoneType Burkes -> Stucki",
                          "pdfAutoRotate (none) -> no", "position center -> top", "it is started",
                          "it takes jobs"));
}

TEST(QueuePlan, KeepsTheOptionsOfAQueueThatItDoesNotName) {
  const auto existing = queueWith({{"HalftoneType", "Burkes"}, {"cpi", "14"}});
  const QueuePlan plan = planQueue(specOf(), existing, ppdOf(80));
  EXPECT_THAT(plan.changes, IsEmpty());
  EXPECT_EQ(defaultOf(plan, "HalftoneType"), "Burkes");
  EXPECT_THAT(plan.removedDefaults, IsEmpty());
}

TEST(QueuePlan, OfAFileTakesAllOtherOptionsBack) {
  const auto existing = queueWith({{"HalftoneType", "Burkes"}, {"cpi", "14"}});
  const QueuePlan plan = planQueue(specOf({}, true), existing, ppdOf(80));
  EXPECT_THAT(plan.changes, ElementsAre("HalftoneType Burkes -> None", "cpi 14 -> (none)"));
  EXPECT_THAT(plan.removedDefaults, ElementsAre("cpi")) << "not what CUPS gives every queue";
  EXPECT_EQ(defaultOf(plan, "HalftoneType"), "None");
}

TEST(QueuePlan, PassesOverWhatCupsGivesEveryQueue) {
  ExistingQueue existing = queueWith({});
  for (const char* name :
       {"job-sheets", "copies", "document-format", "job-cancel-after", "job-hold-until",
        "job-priority", "number-up", "notify-lease-duration", "notify-events", "print-color-mode",
        "print-quality", "sides", "output-bin", "printer-resolution", "finishings", "media",
        "media-col"}) {
    existing.queue.defaults[name] = "x";
  }
  EXPECT_THAT(ownOptions(existing, ppdOf(80).printer), IsEmpty());
  const QueuePlan plan = planQueue(specOf({}, true), existing, ppdOf(80));
  EXPECT_THAT(plan.changes, IsEmpty());
  EXPECT_THAT(plan.removedDefaults, IsEmpty());
}

TEST(QueuePlan, ChangesOptionsBesideThePpdOfAnotherVersion) {
  ExistingQueue existing = queueWith({{"HalftoneType", "Burkes"}});
  existing.ppdText += "*WrenOld: \"1\"\n";
  const QueuePlan plan = planQueue(specOf({{"PageType", "1"}}), existing, ppdOf(80));
  EXPECT_THAT(plan.changes, ElementsAre("the PPD of this version", "PageType 0 -> 1"));
  EXPECT_EQ(defaultOf(plan, "HalftoneType"), "Burkes");
}

TEST(QueuePlan, TakesTheOptionOfTheUserForThatOfTheQueue) {
  const auto existing = queueWith({{"HalftoneType", "Burkes"}, {"PageSize", "Custom.72x350mm"}});
  const QueuePlan plan = planQueue(specOf({{"halftonetype", "stucki"}}), existing, ppdOf(80));
  EXPECT_THAT(plan.changes, ElementsAre("HalftoneType Burkes -> Stucki"));
  EXPECT_EQ(defaultOf(plan, "HalftoneType"), "Stucki");
  EXPECT_EQ(defaultOf(plan, "PageSize"), "Custom.72x350mm") << "a size of its own is kept";
  EXPECT_EQ(defaultOf(plan, "PageRegion"), "Custom.72x350mm");
}

TEST(OwnOptions, HaveWhatDiffersFromTheReceiptDefaults) {
  ExistingQueue existing = queueWith({});
  existing.queue.defaults["position"] = "center";
  EXPECT_THAT(ownOptions(existing, ppdOf(80).printer), ElementsAre(Pair("position", "center")));
}

TEST(QueuePlan, WithAnotherPaperKeepsAllButTheSize) {
  const auto existing = queueWith({{"HalftoneType", "Burkes"}, {"PageSize", "X58MMY600MM"}}, 58);
  const QueuePlan plan = planQueue(specOf(), existing, ppdOf(80));
  EXPECT_TRUE(plan.changesPaper);
  EXPECT_THAT(plan.changes, ElementsAre("paper 58 -> 80 mm"));
  EXPECT_EQ(defaultOf(plan, "PageSize"), "X80MMY200MM");
  EXPECT_EQ(defaultOf(plan, "HalftoneType"), "Burkes");
}

TEST(QueuePlan, ReplacesAnOldPpdAndDropsWhatTheNewOneDoesNotKnow) {
  ExistingQueue existing = queueWith({});
  existing.ppdText += "*WrenOld: \"1\"\n";
  existing.printer.options.push_back({"Perfume", "Perfume", "Rose", {{"Rose", "Rose"}}});
  const QueuePlan plan = planQueue(specOf(), existing, ppdOf(80));
  EXPECT_THAT(plan.changes, ElementsAre("the PPD of this version"));
  EXPECT_THAT(plan.ppdText, Not(HasSubstr("WrenOld")));
}

TEST(QueuePlan, RefusesOptionsWithoutEffect) {
  EXPECT_THROW(planQueue(specOf({{"HalftoneType", "Stuki"}}), std::nullopt, ppdOf(80)), Failure);
  EXPECT_THROW(planQueue(specOf({{"zork", "1"}}), std::nullopt, ppdOf(80)), Failure);
}

TEST(PaperFor, IsThatOfTheQueueUnlessAnotherIsAskedFor) {
  QueueSpec spec = specOf();
  spec.paper.reset();
  EXPECT_EQ(paperFor(spec, std::nullopt), 80);
  EXPECT_EQ(paperFor(spec, queueWith({}, 58)), 58);
  spec.paper = 112;
  EXPECT_EQ(paperFor(spec, queueWith({}, 58)), 112);
}

TEST(OwnOptions, AreEnoughToMakeTheQueueAgain) {
  const JobOptions options = {
      {"HalftoneType", "Burkes"}, {"PageSize", "X80MMY600MM"}, {"cpi", "14"}};
  EXPECT_THAT(ownOptions(queueWith(options), ppdOf(80).printer),
              testing::UnorderedElementsAreArray(options));
  EXPECT_THAT(ownOptions(queueWith({}), ppdOf(80).printer), IsEmpty());
}

}  // namespace
}  // namespace wren::cli
