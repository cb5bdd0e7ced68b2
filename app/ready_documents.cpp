// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/ready_documents.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

#include "app/active_job.h"
#include "app/device_stream.h"
#include "app/guarded.h"
#include "app/network_device.h"
#include "common/handles.h"
#include "escpos/decoder.h"
#include "job/control_commands.h"

namespace wren::app {
namespace {

constexpr const char* kPagesSuffix = ".pages";
constexpr const char* kBytesSuffix = ".bytes";

std::optional<std::string> contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

const JobServices& servicesOf(pappl_job_t* job) {
  pappl_pr_driver_data_t data = {};
  papplPrinterGetDriverData(papplJobGetPrinter(job), &data);
  return *static_cast<const JobServices*>(data.extension);
}

bool printPages(pappl_job_t* job, const PrintPages& document, const pappl_pr_options_t& ofJob,
                pappl_device_t* device, const JobServices& services) {
  pappl_pr_options_t options = ofJob;
  // So that the brightness is that of print-darkness alone.
  options.darkness_configured = kMiddleDarkness;
  options.print_darkness = document.brightness * kDarknessPerBrightness;
  const auto ofDocument = [&](const char* attribute) -> std::optional<std::string> {
    const auto found = document.attributes.find(attribute);
    if (found == document.attributes.end()) return std::nullopt;
    return found->second;
  };
  const auto active = ActiveJob::start(job, options, device, services, ofDocument);
  if (active == nullptr) return false;
  // PAPPL counts one itself.
  const auto more = static_cast<int>(document.pages.heightsPx.size()) - 1;
  if (web::sendPages(document.pages, active->pages()) && more > 0) {
    papplJobSetImpressionsCompleted(job, more);
  }
  return active->finish();
}

// Writes the commands of a stream one by one, so that a cancelled job ends between two of them.
class CommandWriter {
 public:
  CommandWriter(pappl_job_t* job, pappl_device_t* device, std::FILE* out)
      : job_(job), device_(device), out_(out) {}

  void write(const escpos::Command& command, std::string_view bytes) {
    if (isCancelled() || !mayRepeat(command.kind)) return;
    std::fwrite(bytes.data() + command.offset, 1, command.length, out_);
  }

  bool isCancelled() const { return papplJobIsCanceled(job_) || std::ferror(out_) != 0; }

  bool finish(const Settings& settings) {
    if (isCancelled()) job::writeCancelledJobEnd(out_, settings);
    std::fflush(out_);
    const bool isTaken = endDeviceJob(device_, job_) && std::ferror(out_) == 0;
    const std::string fault = deviceFault(device_);
    if (!fault.empty()) refuseJob(job_, PAPPL_JREASON_ABORTED_BY_SYSTEM, "printer: " + fault);
    return isTaken && fault.empty();
  }

 private:
  // A receipt that is printed again is no sale. What the device code asks is not the job's.
  static bool mayRepeat(escpos::CommandKind kind) {
    switch (kind) {
      case escpos::CommandKind::kDrawerPulse:
      case escpos::CommandKind::kRealTimePulse:
      case escpos::CommandKind::kRealTimeRecovery:
      case escpos::CommandKind::kRealTimeStatus:
      case escpos::CommandKind::kTransmitStatus:
      case escpos::CommandKind::kTruncated:
        return false;
      default:
        return true;
    }
  }

  pappl_job_t* job_;
  pappl_device_t* device_;
  std::FILE* out_;
};

bool printBytes(pappl_job_t* job, const std::string& bytes, const pappl_pr_options_t& options,
                pappl_device_t* device, const JobServices& services) {
  const auto settings = settingsOf(job, options, services);
  if (!settings) return false;
  PaperRecord record(job, services.papers);
  const FilePtr stream = openDeviceStream(device, record.bytes());
  if (stream == nullptr) throw std::bad_alloc();
  attachJob(device, job);
  if (!beginDeviceJob(device, job)) return false;
  noteBegin(job, services);
  CommandWriter writer(job, device, stream.get());
  escpos::Decoder decoder([&](const escpos::Command& command) { writer.write(command, bytes); });
  decoder.feed({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  decoder.finish();
  const bool isWritten = writer.finish(settings->core);
  record.finish(*settings);
  return isWritten;
}

}  // namespace

bool ReadyDocuments::isOurs(const std::string& path, std::string_view suffix) const {
  const std::filesystem::path file(path);
  return !folder_.empty() && file.parent_path() == std::filesystem::path(folder_) &&
         file.extension() == suffix;
}

std::string ReadyDocuments::write(const char* suffix, std::string_view head,
                                  std::string_view body) const {
  std::string path = folder_ + "/XXXXXX" + suffix;
  FileDescriptor descriptor(
      ::mkstemps(path.data(), static_cast<int>(std::string_view(suffix).size())));
  const FilePtr file(descriptor ? ::fdopen(descriptor.get(), "w") : nullptr);
  if (file == nullptr) return {};
  descriptor.release();
  for (const std::string_view part : {head, body}) {
    if (!part.empty()) std::fwrite(part.data(), 1, part.size(), file.get());
  }
  if (std::fflush(file.get()) == 0 && std::ferror(file.get()) == 0) return path;
  std::error_code ignored;
  std::filesystem::remove(path, ignored);
  return {};
}

// A line of attributes, a line of sizes, the levels.
std::string ReadyDocuments::writePages(const PrintPages& document) const {
  const web::GreyPages& pages = document.pages;
  std::string head = std::to_string(document.brightness);
  for (const auto& [name, value] : document.attributes)
    head.append(" ").append(name).append(" ").append(value);
  head += "\n" + std::to_string(pages.widthPx);
  for (const unsigned heightPx : pages.heightsPx) head += " " + std::to_string(heightPx);
  return write(kPagesSuffix, head + "\n",
               {reinterpret_cast<const char*>(pages.levels.data()), pages.levels.size()});
}

std::string ReadyDocuments::writeBytes(std::string_view bytes) const {
  return write(kBytesSuffix, {}, bytes);
}

std::optional<PrintPages> ReadyDocuments::readPages(const std::string& path) const {
  if (!isOurs(path, kPagesSuffix)) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  std::string attributes;
  std::string sizes;
  if (!std::getline(file, attributes) || !std::getline(file, sizes)) return std::nullopt;
  PrintPages document;
  std::istringstream words(attributes);
  words >> document.brightness;
  for (std::string name, value; words >> name >> value;) document.attributes[name] = value;
  std::istringstream numbers(sizes);
  numbers >> document.pages.widthPx;
  for (unsigned heightPx = 0; numbers >> heightPx;) document.pages.heightsPx.push_back(heightPx);
  document.pages.levels.assign(std::istreambuf_iterator<char>(file), {});
  if (!document.pages.isComplete()) return std::nullopt;
  return document;
}

std::optional<std::string> ReadyDocuments::readBytes(const std::string& path) const {
  return isOurs(path, kBytesSuffix) ? contentOf(path) : std::nullopt;
}

bool printReadyDocument(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t* device) {
  return guarded(job, [&] {
    const JobServices& services = servicesOf(job);
    const char* name = papplJobGetFilename(job);
    const std::string path = name == nullptr ? "" : name;
    if (services.documents != nullptr) {
      if (const auto pages = services.documents->readPages(path)) {
        return printPages(job, *pages, *options, device, services);
      }
      if (const auto bytes = services.documents->readBytes(path)) {
        return printBytes(job, *bytes, *options, device, services);
      }
    }
    refuseJob(job, PAPPL_JREASON_DOCUMENT_UNPRINTABLE_ERROR, "printer bytes are not accepted");
    return false;
  });
}

}  // namespace wren::app
