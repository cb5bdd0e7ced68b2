// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "bench/printer_application.h"

#include <cups/cups.h>
#include <cups/raster.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace wren::bench {
namespace {

namespace fs = std::filesystem;

constexpr const char* kResource = "/ipp/print/wren";

struct CloseHttp {
  void operator()(http_t* http) const { httpClose(http); }
};
struct DeleteIpp {
  void operator()(ipp_t* message) const { ippDelete(message); }
};
struct CloseRaster {
  void operator()(cups_raster_t* raster) const { cupsRasterClose(raster); }
};
using Http = std::unique_ptr<http_t, CloseHttp>;
using Ipp = std::unique_ptr<ipp_t, DeleteIpp>;
using Raster = std::unique_ptr<cups_raster_t, CloseRaster>;

Http connect(int port) {
  return Http(httpConnect2("localhost", port, nullptr, AF_UNSPEC, HTTP_ENCRYPTION_IF_REQUESTED, 1,
                           1000, nullptr));
}

// The first line, which is the address.
std::string readLine(int descriptor) {
  std::string line;
  for (char c = 0; ::read(descriptor, &c, 1) == 1 && c != '\n';) line += c;
  return line;
}

ssize_t append(void* text, unsigned char* bytes, std::size_t count) {
  static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(bytes), count);
  return static_cast<ssize_t>(count);
}

}  // namespace

PrinterApplication::PrinterApplication(const std::string& program, const std::string& folder,
                                       int port, bool keepsPages)
    : folder_(folder) {
  fs::create_directories(folder);
  const std::string device = "socket://127.0.0.1:" + std::to_string(port) + "/?status=off";
  const std::string pages = folder + "/pages";
  std::vector<const char*> arguments = {program.c_str(), "trial",    "--directory",
                                        folder.c_str(),  "--device", device.c_str()};
  if (keepsPages) arguments.insert(arguments.end(), {"--pages", pages.c_str()});
  arguments.push_back(nullptr);
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
  const FileDescriptor out(ends[0]);
  FileDescriptor in(ends[1]);
  const FileDescriptor log(
      ::open((folder + "/log").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  process_ = ::fork();
  if (process_ == 0) {
    ::dup2(in.get(), STDOUT_FILENO);
    ::dup2(log.get(), STDERR_FILENO);
    ::execv(program.c_str(), const_cast<char**>(arguments.data()));
    ::_exit(127);
  }
  in.reset();
  uri_ = readLine(out.get());
  const auto colon = uri_.rfind(':');
  port_ = colon == std::string::npos ? 0 : std::atoi(uri_.c_str() + colon + 1);
  // The line is printed just before the program listens.
  constexpr int kMostTries = 100;
  for (int i = 0; port_ != 0 && i < kMostTries; ++i) {
    if (connect(port_) != nullptr) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
  throw std::runtime_error(program + " did not start");
}

PrinterApplication::~PrinterApplication() {
  ::kill(process_, SIGTERM);
  ::waitpid(process_, nullptr, 0);
}

void PrinterApplication::print(const std::string& document, const std::string& format) const {
  const Ipp request(ippNewRequest(IPP_OP_PRINT_JOB));
  ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr, uri_.c_str());
  ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_MIMETYPE, "document-format", nullptr,
               format.c_str());
  const Http http = connect(port_);
  const std::size_t size = ippLength(request.get()) + document.size();
  if (http == nullptr ||
      cupsSendRequest(http.get(), request.get(), kResource, size) != HTTP_STATUS_CONTINUE) {
    throw std::runtime_error("the printer application does not answer");
  }
  cupsWriteRequestData(http.get(), document.data(), document.size());
  const Ipp response(cupsGetResponse(http.get(), kResource));
  if (response == nullptr || ippGetStatusCode(response.get()) != IPP_STATUS_OK) {
    throw std::runtime_error(std::string("the job was refused: ") + cupsLastErrorString());
  }
}

std::string PrinterApplication::keptPageAsPwg() const {
  const std::vector<fs::path> pages(fs::directory_iterator(folder_ + "/pages"), {});
  if (pages.size() != 1) throw std::runtime_error("not one page was printed");
  const FileDescriptor file(::open(pages[0].c_str(), O_RDONLY | O_CLOEXEC));
  const Raster in(cupsRasterOpen(file.get(), CUPS_RASTER_READ));
  std::string pwg;
  const Raster out(cupsRasterOpenIO(append, &pwg, CUPS_RASTER_WRITE_PWG));
  cups_page_header2_t header;
  if (in == nullptr || out == nullptr || cupsRasterReadHeader2(in.get(), &header) == 0 ||
      cupsRasterWriteHeader2(out.get(), &header) == 0) {
    throw std::runtime_error("the page cannot be read");
  }
  std::vector<unsigned char> row(header.cupsBytesPerLine);
  const auto size = static_cast<unsigned>(row.size());
  for (unsigned y = 0; y < header.cupsHeight; ++y) {
    if (cupsRasterReadPixels(in.get(), row.data(), size) != size ||
        cupsRasterWritePixels(out.get(), row.data(), size) != size) {
      throw std::runtime_error("the page cannot be read");
    }
  }
  return pwg;
}

}  // namespace wren::bench
