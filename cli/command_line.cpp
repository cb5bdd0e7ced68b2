// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/command_line.h"

#include "cli/console.h"
#include "cli/installation.h"
#include "job/printer_commands.h"
#include "preview/options.h"

namespace wren::cli {
namespace {

constexpr char kFooter[] =
    "Exit status: 0 done; 1 it was tried and failed; 2 wrong usage; 3 the document\n"
    "cannot be used; 4 something that is needed is missing. wren COMMAND --help\n"
    "shows an example.";

CLI::App* addCommand(CLI::App& app, const char* name, const char* summary, const char* example) {
  CLI::App* command = app.add_subcommand(name, summary);
  command->footer(std::string("Example: ") + example);
  return command;
}

void addJson(CLI::App* command, bool& json) {
  command->add_flag("--json", json, "Report as a JSON document");
}

// Not for users: checks and files of a system in another folder.
void addRoot(CLI::App* command, std::string& root) {
  command->add_option("--root", root, "Folder that stands for /")->type_name("FOLDER")->group("");
}

CLI::Option* addJobOptions(CLI::App* command, std::vector<std::string>& options,
                           const char* meaning) {
  return command->add_option("-o,--option", options, meaning)
      ->type_name("NAME=VALUE")
      ->allow_extra_args(false);
}

void addPaper(CLI::App* command, int& paper) {
  command->add_option("--paper", paper, "Width of the paper in mm: 58, 80 or 112")
      ->type_name("MM")
      ->check(CLI::IsMember({58, 80, 112}))
      ->capture_default_str();
}

CLI::Option* addFile(CLI::App* command, const char* name, const char* text, std::string& path,
                     const char* meaning) {
  return command->add_option(name, path, meaning)
      ->type_name(text)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

void addPrint(CLI::App& app, PrintArguments& print) {
  CLI::App* command =
      addCommand(app, "print", "Turn a PDF, PNG, JPEG or text file into printer bytes",
                 "wren print receipt.pdf -o HalftoneType=Burkes --paper 58");
  command->add_option("FILE", print.document, "Document to print")->required();
  command->add_option("-n,--copies", print.copies, "Number of copies")
      ->type_name("COPIES")
      ->check(CLI::Range(1, 9999))
      ->capture_default_str();
  addJobOptions(command, print.options, "Option of the job, as for lp; repeat it for more");
  addPaper(command, print.paper);
  addFile(command, "--out", "FILE.prn", print.out, "Where the printer bytes go");
  addFile(command, "--into", "FOLDER", print.folder, "Folder for what has no path of its own");
  addFile(command, "--raster", "FILE.ras", print.raster, "Keep the pages that the filter gets");
  addFile(command, "--images", "FOLDER", print.images, "Folder for the debug images");
  addJson(command, print.json);
}

void addPreview(CLI::App& app, preview::Options& options) {
  const auto command = preview::makeOptionTree(options);
  command->name("preview");
  command->footer("Example: wren preview receipt.prn --marks");
  command->description("Show the paper that printer bytes print (runs wren-preview)");
  app.add_subcommand(command);
}

void addHalftones(CLI::App& app, HalftonesArguments& halftones) {
  CLI::App* command =
      addCommand(app, "halftones", "Draw a document with all nine halftone types on one sheet",
                 "wren halftones photo.png --brightness \"-10 0 10\" --crop 300x200+0+0");
  command->add_option("FILE", halftones.document, "Document to print")->required();
  addJobOptions(command, halftones.options, "Option of the job, as for lp; repeat it for more");
  addPaper(command, halftones.paper);
  addFile(command, "--out", "FILE.png", halftones.out, "Where the sheet goes");
  addFile(command, "--into", "FOLDER", halftones.folder, "Folder for a sheet without --out");
  command->add_option("--brightness", halftones.brightness, "Brightness values, in quotes")
      ->type_name("NUMBERS")
      ->capture_default_str();
  command->add_option("--crop", halftones.crop, "Show a part of the paper only, in dots")
      ->type_name("WIDTHxHEIGHT+X+Y");
  command->add_option("--width", halftones.width, "Width of the sheet at most")
      ->type_name("PIXELS")
      ->check(CLI::Range(200, 20000))
      ->capture_default_str();
  addJson(command, halftones.json);
}

void addDevices(CLI::App& app, DevicesArguments& devices) {
  CLI::App* command = addCommand(
      app, "devices", "List USB and network printers with their addresses", "sudo wren devices");
  command->add_option("--timeout", devices.seconds, "Seconds to look for network printers")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 300))
      ->capture_default_str();
  addJson(command, devices.json);
}

void addAddQueue(CLI::App& app, AddQueueArguments& queue) {
  CLI::App* command = addCommand(app, "add-queue", "Add a print queue, or several from a file",
                                 "sudo wren add-queue till socket://192.0.2.7:9100 80");
  auto* name = command->add_option("NAME", queue.name, "Name of the queue");
  auto* uri = command->add_option("ADDRESS", queue.uri, "Address of the printer (wren devices)");
  auto* paper =
      command->add_option("PAPER", queue.paper, "Width of the paper: 58, 80 (default) or 112")
          ->check(CLI::IsMember({58, 80, 112}));
  auto* options = addJobOptions(command, queue.options, "Default of the queue; repeat it for more");
  addFile(command, "--from", "FILE.json", queue.file,
          "Make the queues of a file, as doctor --json writes them")
      ->excludes(name, uri, paper, options);
  command->add_flag("--dry-run", queue.dryRun, "Say what would change, and change nothing");
  command->add_flag("--replace", queue.replace, "Allow another paper for a queue that is there");
  addRoot(command, queue.root);
  command->callback([name, uri, &queue] {
    if (!queue.file.empty()) return;
    if (name->count() == 0 || uri->count() == 0) {
      throw CLI::RequiredError("NAME and ADDRESS, or --from FILE.json,");
    }
  });
}

void addRemoveQueue(CLI::App& app, RemoveQueueArguments& queue) {
  CLI::App* command = addCommand(app, "remove-queue", "Remove a print queue of Wren's",
                                 "sudo wren remove-queue till");
  command->add_option("NAME", queue.name, "Name of the queue")->required();
  command->add_flag("--dry-run", queue.dryRun, "Say what would change, and change nothing");
}

CLI::App* addQueueCommand(CLI::App& app, const char* name, const char* summary, const char* example,
                          QueueCommandArguments& command) {
  CLI::App* added = addCommand(app, name, summary, example);
  added->add_option("QUEUE", command.queue, "Name of the queue")->required();
  return added;
}

void addQueueCommands(CLI::App& app, QueueCommandArguments& command) {
  addQueueCommand(app, "drawer", "Open the cash drawer, without paper", "wren drawer till",
                  command);
  addQueueCommand(app, "beep", "Sound the buzzer", "wren beep till", command);
  addQueueCommand(app, "cut", "Cut the paper", "wren cut till full", command)
      ->add_option("KIND", command.cut, "full or partial (default: as the queue cuts)")
      ->check(CLI::IsMember({"full", "partial"}));
  addQueueCommand(app, "feed", "Feed paper", "wren feed till 20", command)
      ->add_option("MM", command.feedMm, "Millimetres, 1 to 1000")
      ->required()
      ->check(CLI::Range(1, job::kMaxFeedMm));
  addQueueCommand(app, "selftest", "Print a page that shows what the printer can do",
                  "wren selftest till", command);
}

void addDoctor(CLI::App& app, DoctorArguments& doctor) {
  CLI::App* command = addCommand(
      app, "doctor", "Check everything between a document and the printer", "wren doctor till");
  command->add_option("QUEUE", doctor.queue, "Queue to check (default: every queue of Wren's)");
  addJson(command, doctor.json);
  addRoot(command, doctor.root);
}

void addUninstall(CLI::App& app, UninstallArguments& uninstall) {
  CLI::App* command = addCommand(app, "uninstall", "Remove the queues of Wren's and Wren itself",
                                 "sudo wren uninstall");
  command->add_flag("--dry-run", uninstall.dryRun, "Say what would be removed, and remove nothing");
  command->add_flag("--keep-queues", uninstall.keepQueues, "Leave the queues as they are");
  addRoot(command, uninstall.root);
}

void addCompletions(CLI::App& app, std::string& shell) {
  CLI::App* command = app.add_subcommand("completions", "Write the completions for a shell");
  command->add_option("SHELL", shell)->required()->check(CLI::IsMember({"bash", "zsh"}));
  command->group("");
}

}  // namespace

std::unique_ptr<CLI::App> makeOptionTree(CommandLine& line) {
  auto app = std::make_unique<CLI::App>(
      "Prints on ESC/POS receipt printers with CUPS: trial prints, pictures, queues.", "wren");
  app->set_version_flag("--version", "wren " + packageVersion());
  app->require_subcommand(1);
  app->footer(kFooter);
  addPrint(*app, line.print);
  addPreview(*app, line.preview);
  addHalftones(*app, line.halftones);
  addDevices(*app, line.devices);
  addAddQueue(*app, line.addQueue);
  addRemoveQueue(*app, line.removeQueue);
  addQueueCommands(*app, line.queueCommand);
  addDoctor(*app, line.doctor);
  addUninstall(*app, line.uninstall);
  addCompletions(*app, line.shell);
  for (CLI::App* command : app->get_subcommands({})) {
    command->set_version_flag("--version", "wren " + packageVersion());
  }
  return app;
}

bool isPreviewCall(const std::vector<std::string>& arguments) {
  return !arguments.empty() && arguments[0] == "preview";
}

}  // namespace wren::cli
