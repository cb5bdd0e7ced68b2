// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Faults of PAPPL 1.3.1 that its callers cannot avoid. Each function here replaces the one of the
// same name for all callers in the process, PAPPL itself above all, and calls it.

#ifndef __APPLE__

#include <cups/array.h>
#include <cups/http.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pappl/pappl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

#include "app/job_lists.h"
#include "common/handles.h"

// PAPPL looks for network printers without asking whether avahi is there, and the function ends
// the process: `devices`, and everyone who opened the web page for a new printer.
// NOLINTNEXTLINE(readability-identifier-naming): avahi's
extern "C" void* avahi_service_browser_new(void* client, int interface, int protocol,
                                           const char* type, const char* domain, int flags,
                                           void* callback, void* data) {
  using Browse = void* (*)(void*, int, int, const char*, const char*, int, void*, void*);
  static const auto kOriginal = reinterpret_cast<Browse>(dlsym(RTLD_NEXT, __func__));
  if (client == nullptr || kOriginal == nullptr) return nullptr;
  return kOriginal(client, interface, protocol, type, domain, flags, callback, data);
}

namespace {

void passId(pappl_printer_t* printer, void* next) {
  int& number = *static_cast<int*>(next);
  number = std::max(number, papplPrinterGetID(printer) + 1);
}

// The job whose document this thread receives into a file.
thread_local pappl_job_t* receivedJob = nullptr;

struct DeleteIpp {
  void operator()(ipp_t* attributes) const { ippDelete(attributes); }
};

// PAPPL closes it, which the thread sanitizer does not see in a library that it leaves out: so it
// must not see the opening either.
int openNowhere() {
  return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, "/dev/null", O_WRONLY | O_CLOEXEC));
}

bool holdsAttributes(int file) {
  const std::unique_ptr<ipp_t, DeleteIpp> attributes(ippNew());
  return ippReadFile(file, attributes.get()) == IPP_STATE_DATA;
}

}  // namespace

// With each save of the state the attributes of each waiting job are written again, in place: who
// is killed then loses them, and the job prints with the defaults of its printer. They never
// change, so they are written once. Also tells httpRead2 of the job.
extern "C" int papplJobOpenFile(pappl_job_t* job, char* name, std::size_t nameSize,
                                const char* directory, const char* extension, const char* mode) {
  using Open = int (*)(pappl_job_t*, char*, std::size_t, const char*, const char*, const char*);
  static const auto kOriginal = reinterpret_cast<Open>(dlsym(RTLD_NEXT, __func__));
  if (kOriginal == nullptr) return -1;
  const bool areAttributes = extension != nullptr && std::strcmp(extension, "ipp") == 0;
  if (!areAttributes && std::strcmp(mode, "w") == 0) receivedJob = job;
  if (areAttributes && std::strcmp(mode, "w") == 0) {
    const wren::FileDescriptor written(kOriginal(job, name, nameSize, directory, extension, "r"));
    if (written && holdsAttributes(written.get())) return openNowhere();
  }
  return kOriginal(job, name, nameSize, directory, extension, mode);
}

namespace {

// Reading leaves a mark of where it is in attributes and in arrays. PAPPL lets threads that only
// read the attributes of a job, the list of jobs or of printers do so at once: one then moves the
// mark of another, which finds nothing where there is an option, saves a part of the attributes, or
// answers that there is no such job or printer. The functions of libcups call each other, and the
// comparing functions of arrays may call them: so a thread may lock again.
class MarkLock {
 public:
  explicit MarkLock(const void* marked) : lock_(mutexOf(marked)) {}

 private:
  static std::recursive_mutex& mutexOf(const void* marked) {
    static std::array<std::recursive_mutex, 64> mutexes;
    return mutexes[std::hash<const void*>()(marked) / alignof(std::max_align_t) % mutexes.size()];
  }

  std::lock_guard<std::recursive_mutex> lock_;
};

}  // namespace

extern "C" void* cupsArrayIndex(cups_array_t* array, int index) {
  using Index = void* (*)(cups_array_t*, int);
  static const auto kOriginal = reinterpret_cast<Index>(dlsym(RTLD_NEXT, __func__));
  if (kOriginal == nullptr) return nullptr;
  const MarkLock lock(array);
  return kOriginal(array, index);
}

extern "C" void* cupsArrayFind(cups_array_t* array, void* item) {
  using Find = void* (*)(cups_array_t*, void*);
  static const auto kOriginal = reinterpret_cast<Find>(dlsym(RTLD_NEXT, __func__));
  if (kOriginal == nullptr) return nullptr;
  const MarkLock lock(array);
  return kOriginal(array, item);
}

extern "C" ipp_attribute_t* ippFindAttribute(ipp_t* attributes, const char* name, ipp_tag_t type) {
  using Find = ipp_attribute_t* (*)(ipp_t*, const char*, ipp_tag_t);
  static const auto kOriginal = reinterpret_cast<Find>(dlsym(RTLD_NEXT, __func__));
  if (kOriginal == nullptr) return nullptr;
  const MarkLock lock(attributes);
  return kOriginal(attributes, name, type);
}

extern "C" ipp_state_t ippWriteFile(int file, ipp_t* attributes) {
  using Write = ipp_state_t (*)(int, ipp_t*);
  static const auto kOriginal = reinterpret_cast<Write>(dlsym(RTLD_NEXT, __func__));
  if (kOriginal == nullptr) return IPP_STATE_ERROR;
  const MarkLock lock(attributes);
  return kOriginal(file, attributes);
}

// A printer that is to choose its number tells clients 0 until the next start, so that `default`
// and `delete` cannot name it.
extern "C" pappl_printer_t* papplPrinterCreate(pappl_system_t* system, int id, const char* name,
                                               const char* driver, const char* deviceId,
                                               const char* deviceUri) {
  using Create = pappl_printer_t* (*)(pappl_system_t*, int, const char*, const char*, const char*,
                                      const char*);
  static const auto kOriginal = reinterpret_cast<Create>(dlsym(RTLD_NEXT, __func__));
  static std::mutex choosing;
  if (kOriginal == nullptr) return nullptr;
  const wren::app::ListsOfNewPrinter lists;
  const std::lock_guard lock(choosing);
  // PAPPL does not count on from a number that it is given.
  int next = id == 0 ? papplSystemGetNextPrinterID(system) : id;
  if (id == 0) papplSystemIteratePrinters(system, passId, &next);
  pappl_printer_t* printer = kOriginal(system, next, name, driver, deviceId, deviceUri);
  lists.belongTo(printer);
  return printer;
}

namespace {

// A connection that ends in the middle of a request: of a length that was announced, or of chunks.
bool isCutOff(http_t* connection) {
  return httpGetRemaining(connection) > 0 || httpError(connection) != 0;
}

}  // namespace

// libcups says the same at the end of a connection as at the end of a document, so that PAPPL would
// print what has come. With an error it does not.
extern "C" ssize_t httpRead2(http_t* connection, char* buffer, size_t size) {
  using Read = ssize_t (*)(http_t*, char*, size_t);
  static const auto kOriginal = reinterpret_cast<Read>(dlsym(RTLD_NEXT, __func__));
  const ssize_t count = kOriginal == nullptr ? -1 : kOriginal(connection, buffer, size);
  if (count > 0 || size == 0) return count;
  pappl_job_t* const job = std::exchange(receivedJob, nullptr);
  if (count == 0 && !isCutOff(connection)) return 0;
  if (job != nullptr) {
    papplJobSetMessage(job, "the connection ended in the middle of the document");
  }
  return -1;
}

#endif
