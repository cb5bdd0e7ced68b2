// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/completions.h"

#include <algorithm>
#include <array>
#include <vector>

namespace wren::cli {
namespace {

bool isShown(const CLI::App* command) {
  return !command->get_group().empty();
}

std::vector<CLI::App*> shownCommands(CLI::App& app) {
  std::vector<CLI::App*> shown;
  for (CLI::App* command : app.get_subcommands({})) {
    if (isShown(command)) shown.push_back(command);
  }
  return shown;
}

// "-o", "--option" and so on; empty for arguments without a dash and for hidden options.
std::vector<std::string> namesOf(const CLI::Option* option) {
  std::vector<std::string> names;
  if (option->get_group().empty()) return names;
  for (const std::string& name : option->get_snames()) names.push_back("-" + name);
  for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  return names;
}

std::string wordsOf(CLI::App* command) {
  std::string words;
  for (const CLI::Option* option : command->get_options()) {
    for (const std::string& name : namesOf(option)) words += (words.empty() ? "" : " ") + name;
  }
  return words;
}

// What a user may say after the options that take a name of a list.
constexpr char kBashHead[] = R"sh(# bash completions of wren; written by: wren completions bash
_wren() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} command=${COMP_WORDS[1]}
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W ")sh";

constexpr char kBashCases[] = R"sh(" -- "$word")
    return
  fi
  case $before in
    --paper) mapfile -t COMPREPLY < <(compgen -W "58 80 112" -- "$word"); return ;;
  esac
  if [[ $word != -* ]]; then
    case $COMP_CWORD:$command in
      2:remove-queue | 2:doctor | 2:drawer | 2:beep | 2:cut | 2:feed | 2:selftest)
        mapfile -t COMPREPLY < <(compgen -W "$(lpstat -e 2>/dev/null)" -- "$word") ;;
      3:cut) mapfile -t COMPREPLY < <(compgen -W "full partial" -- "$word") ;;
    esac
  fi
  local options=""
  case $command in
)sh";

constexpr char kBashTail[] = R"sh(  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
  fi
}
complete -o default -F _wren wren
)sh";

std::string forBash(CLI::App& app) {
  std::string names;
  std::string cases;
  for (CLI::App* command : shownCommands(app)) {
    names += command->get_name() + " ";
    cases += "    " + command->get_name() + ") options=\"" + wordsOf(command) + "\" ;;\n";
  }
  return kBashHead + names + wordsOf(&app) + kBashCases + cases + kBashTail;
}

// For a text between single quotes and brackets.
std::string zshText(const std::string& text) {
  std::string safe;
  for (const char c : text) {
    if (c == '[' || c == ']' || c == ':') safe += '\\';
    safe += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return safe;
}

bool takesValue(const CLI::Option* option) {
  return option->get_items_expected_min() > 0 && option->get_type_size() > 0;
}

// What a user may say after an option.
std::string zshValues(const std::string& name) {
  return name == "--paper" ? "(58 80 112)" : "_files";
}

bool takesQueue(const std::string& command) {
  constexpr std::array kCommands = {"remove-queue", "doctor", "drawer",  "beep",
                                    "cut",          "feed",   "selftest"};
  return std::find(kCommands.begin(), kCommands.end(), command) != kCommands.end();
}

// What a user may say beside the options of a command.
std::string zshArguments(const std::string& command) {
  if (!takesQueue(command)) return "'*:file:_files'";
  std::string arguments = R"sh('1:queue:{compadd -- ${(f)"$(lpstat -e 2>/dev/null)"}}')sh";
  if (command == "cut") arguments += " '2:cut:(full partial)'";
  if (command == "feed") arguments += " '2:millimetres: '";
  return arguments;
}

// The asterisk: -o may be repeated.
std::string zshOptions(CLI::App* command) {
  std::string lines;
  for (const CLI::Option* option : command->get_options()) {
    const bool isList = option->get_items_expected_max() > 1;
    for (const std::string& name : namesOf(option)) {
      lines += std::string(" \\\n        '") + (isList ? "*" : "") + name + "[" +
               zshText(option->get_description()) + "]";
      if (takesValue(option)) {
        lines += ":" + zshText(option->get_type_name()) + ":" + zshValues(name);
      }
      lines += "'";
    }
  }
  return lines + " \\\n        " + zshArguments(command->get_name());
}

std::string forZsh(CLI::App& app) {
  std::string text =
      "#compdef wren\n# zsh completions of wren; written by: wren completions zsh\n_wren() {\n"
      "  local -a commands\n  commands=(\n";
  std::string cases;
  for (CLI::App* command : shownCommands(app)) {
    text += "    '" + command->get_name() + ":" + zshText(command->get_description()) + "'\n";
    cases +=
        "    " + command->get_name() + ")\n      _arguments" + zshOptions(command) + "\n      ;;\n";
  }
  return text +
         "  )\n  if ((CURRENT == 2)); then\n    _describe command commands\n    return\n  fi\n"
         "  shift words\n  ((CURRENT--))\n  case $words[1] in\n" +
         cases + "  esac\n}\n_wren \"$@\"\n";
}

}  // namespace

std::string writeCompletions(CLI::App& app, const std::string& shell) {
  return shell == "bash" ? forBash(app) : forZsh(app);
}

}  // namespace wren::cli
