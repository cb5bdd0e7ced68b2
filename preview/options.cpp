// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/options.h"

#include <CLI/CLI.hpp>

#include "preview/loopback_socket.h"
#include "preview/message.h"
#include "preview/printer_control.h"

namespace wren::preview {
namespace {

constexpr int kUsageStatus = 2;

std::string problemOfAddress(const std::string& text) {
  return parseListenAddress(text).has_value() ? "" : "'" + text + "' is not [HOST:]PORT";
}

std::string problemOfFault(const std::string& text) {
  return parseControl(text).error;
}

void addPictureOptions(CLI::App& app, Options& options) {
  app.add_flag("--marks", options.style.marks,
               "Show a scale in mm, cuts, drawer pulses and beeps in the margin");
  app.add_flag("--list", options.list, "Print every command with its offset and meaning");
  app.add_flag("--json", options.json,
               "Report as a JSON document; with --list, with every command");
  app.add_flag("--split", options.split, "Write one picture per page or cut piece");
  app.add_option("--dpi", options.style.dpi, "Dots per inch of the printer")
      ->check(CLI::Range(50, 2400))
      ->capture_default_str();
  app.add_option("--scale", options.style.scale, "Draw a dot as N x N pixels")
      ->check(CLI::Range(1, 16))
      ->capture_default_str();
  app.add_option("--max-length", options.maxLengthMm, "Length of the paper in mm")
      ->check(CLI::Range(1, 1'000'000))
      ->capture_default_str();
}

// Both values of `--tell`.
void takeTell(const std::vector<std::string>& tell, Options& options) {
  const std::string problem = problemOfAddress(tell[0]);
  if (!problem.empty()) throw CLI::ValidationError("--tell", problem);
  options.tellAddress = tell[0];
  options.tellCommand = tell[1];
}

void addTellOption(CLI::App& app, Options& options, CLI::Option* file) {
  app.add_option_function<std::vector<std::string>>(
         "--tell", [&options](const std::vector<std::string>& tell) { takeTell(tell, options); },
         "Send a command to the control port of a listening wren-preview")
      ->type_name("[HOST:]PORT COMMAND")
      ->expected(2)
      ->excludes(file)
      ->excludes("--listen");
}

void addListenOptions(CLI::App& app, Options& options, CLI::Option* file) {
  auto* listen = app.add_option("--listen", options.address,
                                "Act as a printer on this loopback port; 0 selects any free one")
                     ->type_name("[HOST:]PORT")
                     ->check(problemOfAddress)
                     ->excludes(file)
                     ->excludes("--output")
                     ->excludes("--list")
                     ->excludes("--json");
  app.add_option("--directory", options.directory, "Existing directory for received jobs")
      ->needs(listen)
      ->check(CLI::ExistingDirectory)
      ->capture_default_str();
  app.add_option("--max-bytes", options.maxBytes, "Maximum size of a job")
      ->needs(listen)
      ->check(CLI::Range(1.0, 1e12))
      ->capture_default_str();
  app.add_option("--max-seconds", options.maxSeconds, "Maximum time for a job")
      ->needs(listen)
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  app.add_option("--control", options.controlAddress,
                 "Obey commands on this loopback port, one a line")
      ->type_name("[HOST:]PORT")
      ->check(problemOfAddress)
      ->needs(listen);
  app.add_option("--fault", options.faults,
                 "Give the printer this command at its start, such as 'paper out after 30 mm'")
      ->type_name("COMMAND")
      ->check(problemOfFault)
      ->allow_extra_args(false)
      ->needs(listen);
}

}  // namespace

std::shared_ptr<CLI::App> makeOptionTree(Options& options) {
  auto app = std::make_shared<CLI::App>(
      "Shows the paper that an ESC/POS byte stream prints, as a PNG picture.", "wren-preview");
  app->footer("Example: wren-preview receipt.prn --marks");
  app->set_version_flag("--version", std::string("wren-preview ") + WREN_VERSION);
  CLI::Option* file = app->add_option("FILE", options.input, "Printer bytes; - is standard input")
                          ->capture_default_str();
  app->add_option("-o,--output", options.output,
                  "Picture to write (default: FILE.png beside FILE)");
  addPictureOptions(*app, options);
  addListenOptions(*app, options, file);
  addTellOption(*app, options, file);
  return app;
}

ParsedOptions parseOptions(int argc, const char* const* argv) {
  Options options;
  const auto app = makeOptionTree(options);
  try {
    app->parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return {std::nullopt, app->exit(error)};
    printMessage(std::string(error.what()) + "; see wren-preview --help");
    return {std::nullopt, kUsageStatus};
  }
  options.listen = !options.address.empty();
  return {options, 0};
}

}  // namespace wren::preview
