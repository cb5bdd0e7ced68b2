// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Every command in the documents exists and has the options that it is given; the
// ones that need neither a printer nor root are run.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

#include "tests/docs/markdown.h"
#include "tests/docs/shell_words.h"
#include "tests/support/process.h"
#include "tests/support/temporary_folder.h"

namespace wren_test {
namespace {

namespace fs = std::filesystem;

const std::string kBuild = WREN_BUILD_DIR;

// Programs of the system. Their options are their own business, except print options.
const std::set<std::string> kSystemPrograms = {"apt",        "apt-mark",
                                               "cat",        "cmake",
                                               "cupsaccept", "cupsenable",
                                               "ctest",      "cupsctl",
                                               "docker",     "echo",
                                               "git",        "grep",
                                               "jq",         "lp",
                                               "lpadmin",    "lpoptions",
                                               "mkdir",      "nc",
                                               "printf",     "systemctl",
                                               "tee",        "/usr/sbin/cupsfilter"};

// Options of a job that belong to CUPS and not to the PPD.
const std::set<std::string> kCupsOptions = {"raw",
                                            "fit-to-page",
                                            "landscape",
                                            "cpi",
                                            "print-scaling",
                                            "printer-is-shared",
                                            "position-default",
                                            "pdfAutoRotate-default",
                                            "orientation-requested-default"};

// Our programs in the build, by the name in the documents.
std::string builtProgram(const std::string& name) {
  if (name == "wren") return kBuild + "/cli/wren";
  if (name == "wren-preview") return kBuild + "/preview/wren-preview";
  if (name == "wren-printer-app") return kBuild + "/app/wren-printer-app";
  return {};
}

bool exists(const std::string& path) {
  return ::access(path.c_str(), X_OK) == 0;
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// Whether a word is in a text, not as the start of a longer one.
bool hasWord(const std::string& text, const std::string& word) {
  for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
    const std::size_t end = at + word.size();
    const char next = end < text.size() ? text[end] : ' ';
    if (std::isalnum(static_cast<unsigned char>(next)) == 0 && next != '-' && next != '_')
      return true;
  }
  return false;
}

// Standard output of one of our programs.
std::string outputOf(const std::string& program, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), program);
  ProcessSpec spec;
  spec.program = program;
  spec.arguments = std::move(arguments);
  return runProcess(spec).out;
}

// "--out" for "--out=x", "-o" for "-oX=Y"; empty for a word that is no option.
std::string optionOf(const std::string& word) {
  if (word.starts_with("--")) return word.substr(0, word.find('='));
  return word.size() > 1 && word[0] == '-' ? word.substr(0, 2) : "";
}

std::string commandFault(const SimpleCommand& command);

// Behind "--" stands a command of its own.
std::string optionsFault(const SimpleCommand& command, std::size_t from, const std::string& help) {
  for (std::size_t i = from; i < command.size(); ++i) {
    if (command[i] == "--") return commandFault({command.begin() + i + 1, command.end()});
    const std::string option = optionOf(command[i]);
    if (!option.empty() && !hasWord(help, option)) return "has no option " + option;
  }
  return {};
}

std::string programFault(const SimpleCommand& command) {
  const std::string program = builtProgram(command[0]);
  if (command[0] == "wren-printer-app" && command.size() > 1) {
    const std::string help = outputOf(program, {"--help"});
    if (!contains(help, "\n  " + command[1] + " ")) return "has no command " + command[1];
    return optionsFault(command, 2, help);
  }
  const bool hasCommands = command[0] == "wren";
  if (!hasCommands || command.size() < 2 || command[1].starts_with("--")) {
    return optionsFault(command, 1, outputOf(program, {"--help"}));
  }
  // A command that does not exist gets the help of the whole program.
  const std::string help = outputOf(program, {command[1], "--help"});
  if (!contains(help, "wren " + command[1] + " [OPTIONS]") && command[1] != "preview") {
    return "has no command " + command[1];
  }
  return optionsFault(command, 2, help);
}

// Whether the table `case $command in` of the entry point has a command.
bool isInCaseTable(const std::string& script, const std::string& command) {
  std::istringstream lines(script);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream patterns(line.substr(0, line.find(')')));
    const bool isRow = contains(line, ")");
    for (std::string pattern; isRow && std::getline(patterns, pattern, '|');) {
      std::erase(pattern, ' ');
      if (pattern == command) return true;
    }
  }
  return false;
}

// The entry point of a checkout: what it can do is in its text and in tools/. It hands the
// commands of the program `wren` over to that.
std::string frontDoorFault(const SimpleCommand& command) {
  if (command.size() < 2) return {};
  if (exists(builtProgram("wren")) &&
      contains(outputOf(builtProgram("wren"), {"--help"}), "\n  " + command[1] + " ")) {
    SimpleCommand handedOver(command);
    handedOver[0] = "wren";
    return programFault(handedOver);
  }
  std::string text = projectFile("wren");
  if (!isInCaseTable(text, command[1])) return "has no command " + command[1];
  for (const auto& entry : fs::directory_iterator(fs::path(WREN_SOURCE_DIR) / "tools")) {
    if (!entry.is_regular_file()) continue;
    text += readFile(entry.path());
  }
  return optionsFault(command, 2, text);
}

std::string scriptFault(const SimpleCommand& command) {
  const std::string text = projectFile(command[0]);
  return text.empty() ? "is no script" : optionsFault(command, 1, text);
}

// build/PRESET/tests/FOLDER/NAME: a test program of that folder.
std::string testProgramFault(const std::string& path) {
  const fs::path folder = fs::path(path).parent_path();
  const std::string list = projectFile("tests/" + folder.filename().string() + "/CMakeLists.txt");
  const std::string name = fs::path(path).filename().string();
  const bool isProgram =
      hasWord(list, "wren_test(" + name) || hasWord(list, "add_executable(" + name);
  return isProgram ? "" : "is no test program";
}

std::string commandFault(const SimpleCommand& command) {
  if (command.empty()) return "is no command";
  const std::string& program = command[0];
  if (kSystemPrograms.count(program) != 0) return {};
  if (!builtProgram(program).empty()) {
    return exists(builtProgram(program)) ? programFault(command) : "";
  }
  if (program == "./wren") return frontDoorFault(command);
  if (program.starts_with("dev/")) return scriptFault(command);
  if (program.starts_with("build/")) return testProgramFault(program);
  return "is no known program";
}

std::string ppds() {
  std::string text;
  for (const char* paper : {"58", "80", "112"}) {
    text += readFile(fs::path(WREN_PPD_DIR) / ("wren" + std::string(paper) + ".ppd"));
  }
  return text;
}

// Whether the PPDs, or CUPS, know a setting such as "HalftoneType=Burkes".
std::string settingFault(const std::string& setting, const std::string& ppdText) {
  const std::size_t equals = setting.find('=');
  const std::string name = setting.substr(0, equals);
  if (kCupsOptions.count(name) != 0) return {};
  if (!contains(ppdText, "*OpenUI *" + name + "/")) return "sets no option: " + setting;
  const std::string value = equals == std::string::npos ? "" : setting.substr(equals + 1);
  const bool isChoice = contains(ppdText, "*" + name + " " + value + "/");
  return isChoice || value.starts_with("Custom.") ? "" : "sets no choice: " + setting;
}

bool takesSettings(const SimpleCommand& command) {
  const std::set<std::string> programs = {"lp", "lpadmin", "wren", "./wren"};
  return programs.count(command[0]) != 0;
}

std::string settingsFault(const SimpleCommand& command, const std::string& ppdText) {
  if (!takesSettings(command)) return {};
  for (std::size_t i = 1; i + 1 < command.size(); ++i) {
    if (command[i] != "-o") continue;
    const std::string fault = settingFault(command[i + 1], ppdText);
    if (!fault.empty()) return fault;
  }
  return {};
}

// "bash" for "bash|zsh", which a shell would take for a pipe.
std::string withoutAlternatives(const std::string& text) {
  static const std::regex alternatives(R"((\w)(\|\w+)+)");
  return std::regex_replace(text, alternatives, "$1");
}

bool isOurCommand(const std::string& text) {
  for (const char* start : {"wren ", "sudo wren ", "./wren ", "wren-preview ", "wren-printer-app ",
                            "dev/", "build/dev/tests/"}) {
    if (text.starts_with(start) && text != start) return true;
  }
  return false;
}

class DocumentCommands : public testing::TestWithParam<std::string> {};

TEST_P(DocumentCommands, ExistWithTheirOptions) {
  const std::string ppdText = ppds();
  ASSERT_NE(ppdText, "");
  for (const MarkdownLine& line : parseMarkdown(projectFile(GetParam())).commands) {
    for (const SimpleCommand& command : simpleCommands(line.text)) {
      const std::string where = GetParam() + ":" + std::to_string(line.number) + ": " + command[0];
      EXPECT_EQ(commandFault(command), "") << where;
      EXPECT_EQ(settingsFault(command, ppdText), "") << where;
    }
  }
}

// Code in a sentence or an indented block may be anything; only what begins like a command of
// ours is one. Its settings are not looked up: some are examples of wrong ones.
TEST_P(DocumentCommands, InSentencesExistWithTheirOptions) {
  for (const MarkdownLine& line : codeOf(parseMarkdown(projectFile(GetParam())))) {
    if (!isOurCommand(line.text)) continue;
    for (const SimpleCommand& command : simpleCommands(withoutAlternatives(line.text))) {
      EXPECT_EQ(commandFault(command), "") << GetParam() << ":" << line.number << ": " << line.text;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Documents, DocumentCommands, testing::ValuesIn(documentNames()),
                         [](const auto& test) { return testNameOf(test.param); });

TEST(Commands, ThatDoNotExistAreFound) {
  EXPECT_EQ(commandFault({"lp", "-d", "till"}), "");
  EXPECT_EQ(commandFault({"lpx"}), "is no known program");
  EXPECT_EQ(commandFault({"./wren", "test", "--preset", "asan"}), "");
  EXPECT_EQ(commandFault({"./wren", "tests"}), "has no command tests");
  EXPECT_EQ(commandFault({"./wren", "test", "--sanitise"}), "has no option --sanitise");
  EXPECT_EQ(commandFault({"dev/absent"}), "is no script");
  EXPECT_EQ(commandFault({"dev/read_codes", "--absent"}), "has no option --absent");
  EXPECT_EQ(commandFault({"build/dev/tests/docs/docs_test"}), "");
  EXPECT_EQ(commandFault({"build/dev/tests/docs/absent_test"}), "is no test program");
  if (exists(builtProgram("wren"))) {
    EXPECT_EQ(commandFault({"wren", "print", "a.pdf", "--paper", "58"}), "");
    EXPECT_EQ(commandFault({"wren", "prnt", "a.pdf"}), "has no command prnt");
    EXPECT_EQ(commandFault({"wren", "print", "--papers"}), "has no option --papers");
  }
  if (!exists(builtProgram("wren-preview"))) GTEST_SKIP() << "there is no wren-preview";
  EXPECT_EQ(commandFault({"wren-preview", "a.prn", "--marks"}), "");
  EXPECT_EQ(commandFault({"wren-preview", "a.prn", "--mark=1"}), "has no option --mark");
}

TEST(Settings, ThatDoNotExistAreFound) {
  EXPECT_EQ(settingFault("HalftoneType=Burkes", ppds()), "");
  EXPECT_EQ(settingFault("PageSize=Custom.72x150mm", ppds()), "");
  EXPECT_EQ(settingFault("HalftoneType=Stuki", ppds()), "sets no choice: HalftoneType=Stuki");
  EXPECT_EQ(settingFault("Halftone=Stucki", ppds()), "sets no option: Halftone=Stucki");
}

// A line that can be run: our programs on documents, without a listener, a queue or root.
bool canRun(const std::string& line) {
  for (const char* other : {"sudo ", "--listen", "--tell"}) {
    if (contains(line, other)) return false;
  }
  for (const SimpleCommand& command : simpleCommands(line)) {
    const bool isTrial = command[0] == "wren" && command.size() > 1 &&
                         (command[1] == "print" || command[1] == "preview" ||
                          command[1] == "halftones" || command[1] == "--help");
    const bool isOurs = isTrial || command[0] == "wren-preview";
    if (isOurs && !exists(builtProgram(command[0]))) return false;
    if (!isOurs && command[0] != "jq" && command[0] != "mkdir") return false;
    if (command[0] == "jq" && !exists("/usr/bin/jq")) return false;
  }
  return !simpleCommands(line).empty();
}

// Its documents are the examples, under the names that the documents use.
class Workplace {
 public:
  Workplace() {
    const fs::path examples = fs::path(WREN_SOURCE_DIR) / "examples";
    fs::copy(examples / "receipt.pdf", folder_.path());
    fs::copy(examples / "photo.png", folder_.path());
    // A receipt of one dot, a feed, a cut and a pulse for the drawer.
    folder_.write(
        "receipt.prn",
        std::string("\x1B@\x1B<\x1B*\x01\x01\x00\x80\x1BJ\x10\x1DV\x01\x1Bp\x00\x32\x32", 22));
  }

  ProcessResult run(const std::string& line) const {
    ProcessSpec spec;
    spec.program = "/bin/sh";
    spec.arguments = {"sh", "-c", line};
    spec.environment = {"PATH=" + kBuild + "/cli:" + kBuild + "/preview:/usr/bin:/bin",
                        "HOME=" + folder_.path().string()};
    spec.workingFolder = folder_.path().string();
    return runProcess(spec);
  }

 private:
  TemporaryFolder folder_;
};

class RunnableCommands : public testing::TestWithParam<std::string> {};

TEST_P(RunnableCommands, Succeed) {
  const Workplace workplace;
  int count = 0;
  for (const MarkdownLine& line : parseMarkdown(projectFile(GetParam())).commands) {
    if (!canRun(line.text)) continue;
    ++count;
    const ProcessResult result = workplace.run(line.text);
    EXPECT_EQ(result.exitStatus, 0) << GetParam() << ":" << line.number << ": " << line.text << "\n"
                                    << result.err;
  }
  if (count == 0) GTEST_SKIP() << "no command here can be run";
}

INSTANTIATE_TEST_SUITE_P(Documents, RunnableCommands,
                         testing::Values("README.md", "docs/PREVIEW.md", "docs/SHOP.md",
                                         "docs/TILL.md"),
                         [](const auto& test) { return testNameOf(test.param); });

}  // namespace
}  // namespace wren_test
