// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/network_device.h"

#include <dlfcn.h>

#include <chrono>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string_view>
#include <utility>

#include "app/printer_session.h"
#include "app/usb_questions.h"

namespace wren::app {
namespace {

using std::chrono::milliseconds;

// PAPPL holds the printer's lock while its status callback runs.
constexpr milliseconds kIdleConnect(250);
constexpr milliseconds kAskInterval(5'000);

constexpr pappl_preason_t kShownReasons = PAPPL_PREASON_OTHER | PAPPL_PREASON_COVER_OPEN |
                                          PAPPL_PREASON_MEDIA_EMPTY | PAPPL_PREASON_MEDIA_LOW |
                                          PAPPL_PREASON_OFFLINE;

/// A device of PAPPL, from open to close.
struct NetworkDevice {
  NetworkDevice(const NetworkAddress& address, std::shared_ptr<KnownPrinter> printer,
                bool asksStatus)
      : session(address, std::move(printer), asksStatus) {}

  PrinterSession session;
  bool saysWhy = false;  ///< the job's message says what it waits for
};

/// PAPPL gives a device callback nothing but the device, so what is behind them is kept here.
class NetworkDevices {
 public:
  /// Only the devices in it have data of type NetworkDevice.
  NetworkDevice* find(pappl_device_t* device) {
    const std::lock_guard lock(mutex_);
    if (!open_.contains(device)) return nullptr;
    return static_cast<NetworkDevice*>(papplDeviceGetData(device));
  }
  void add(pappl_device_t* device) {
    const std::lock_guard lock(mutex_);
    open_.insert(device);
  }
  void remove(pappl_device_t* device) {
    const std::lock_guard lock(mutex_);
    open_.erase(device);
  }
  KnownPrinters& printers() { return printers_; }

 private:
  std::mutex mutex_;
  std::set<pappl_device_t*> open_;
  KnownPrinters printers_;
};

NetworkDevices& networkDevices() {
  static NetworkDevices devices;
  return devices;
}

bool asksStatus(std::string_view uri) {
  const auto query = uri.find('?');
  return query == std::string_view::npos ||
         uri.substr(query).find("status=off") == std::string_view::npos;
}

std::optional<NetworkAddress> addressOf(const char* uri) {
  const std::string_view text = uri == nullptr ? "" : uri;
  return text.starts_with("socket://") ? parseNetworkUri(text) : std::nullopt;
}

pappl_preason_t reasonsOf(const PrinterCondition& condition) {
  // A printer that says why it takes no bytes is not away.
  const bool isReady = !condition.status || condition.status->isReady();
  pappl_preason_t reasons = PAPPL_PREASON_NONE;
  if (condition.away || (condition.stalled && isReady)) reasons |= PAPPL_PREASON_OFFLINE;
  if (!condition.status) return reasons;
  const PrinterStatus& status = *condition.status;
  if (status.coverOpen) reasons |= PAPPL_PREASON_COVER_OPEN;
  if (status.paperOut) reasons |= PAPPL_PREASON_MEDIA_EMPTY;
  if (status.paperNearEnd && !status.paperOut) reasons |= PAPPL_PREASON_MEDIA_LOW;
  if (status.cutterError || status.otherError) reasons |= PAPPL_PREASON_OTHER;
  if (status.offline && reasons == PAPPL_PREASON_NONE) reasons |= PAPPL_PREASON_OFFLINE;
  return reasons;
}

void showReasons(pappl_printer_t* printer, pappl_preason_t reasons) {
  papplPrinterSetReasons(printer, reasons, kShownReasons & ~reasons);
}

std::shared_ptr<KnownPrinter> usbPrinterOf(pappl_job_t* job) {
  return findUsbPrinter(papplPrinterGetDeviceURI(papplJobGetPrinter(job)));
}

// What a device that is not ours answered last. PAPPL knows the state of its port, if it did not.
void showDeviceStatus(pappl_device_t* device, pappl_job_t* job) {
  const auto usb = usbPrinterOf(job);
  const PrinterCondition condition = usb == nullptr ? PrinterCondition() : usb->condition();
  showReasons(papplJobGetPrinter(job), condition.status
                                           ? reasonsOf(condition)
                                           : papplDeviceGetStatus(device) & kShownReasons);
}

// What the job waits for; empty if it does not wait.
std::string waitingFor(const PrinterCondition& condition) {
  if (condition.away) return "the printer cannot be reached";
  const bool isReady = !condition.status || condition.status->isReady();
  if (!isReady) return describe(*condition.status);
  return condition.stalled ? "the printer takes no data" : "";
}

// The message is taken away only if it is ours: a refused job has one too.
void showCondition(bool& saysWhy, pappl_job_t* job, const PrinterCondition& condition) {
  showReasons(papplJobGetPrinter(job), reasonsOf(condition));
  const std::string wait = waitingFor(condition);
  if (wait.empty() && !saysWhy) return;
  saysWhy = !wait.empty();
  if (wait.empty()) {
    papplJobSetReasons(job, PAPPL_JREASON_NONE, PAPPL_JREASON_PRINTER_STOPPED);
    papplJobSetMessage(job, "%s", "");
    return;
  }
  papplJobSetReasons(job, PAPPL_JREASON_PRINTER_STOPPED, PAPPL_JREASON_NONE);
  papplJobSetMessage(job, "Waiting: %s.", wait.c_str());
  papplLogJob(job, PAPPL_LOGLEVEL_WARN, "Waiting: %s.", wait.c_str());
}

// A system that ends lets its jobs print; when it does not wait any longer, it does not run.
bool isOver(const void* context) {
  auto* job = static_cast<pappl_job_t*>(const_cast<void*>(context));
  pappl_printer_t* printer = papplJobGetPrinter(job);
  return papplJobIsCanceled(job) || papplPrinterIsDeleted(printer) ||
         !papplSystemIsRunning(papplPrinterGetSystem(printer));
}

// Nothing that is thrown may reach PAPPL, which is not compiled to pass it on.
template <typename Result, typename Work>
Result guarded(pappl_device_t* device, Result failed, Work work) {
  try {
    return work();
  } catch (const std::exception& error) {
    papplDeviceError(device, "%s", error.what());
    return failed;
  }
}

// Does nothing for a device that is neither ours nor at a USB port.
bool beginUsbJob(pappl_device_t* device, pappl_job_t* job) {
  const auto usb = usbPrinterOf(job);
  if (usb == nullptr) return true;
  bool saysWhy = false;
  return waitForUsbPrinter(device, usb, {isOver, job}, [&](const PrinterCondition& condition) {
    if (condition.status || saysWhy) showCondition(saysWhy, job, condition);
  });
}

// Only one that answered at the begin is asked: the first question of all belongs there.
void endUsbJob(pappl_device_t* device, pappl_job_t* job) {
  const auto usb = usbPrinterOf(job);
  if (usb == nullptr || !usb->condition().status || isOver(job)) return;
  askUsbPrinter(device, usb);
}

bool openDevice(pappl_device_t* device, const char* uri, const char* /*name*/) {
  return guarded(device, false, [&] {
    const auto address = addressOf(uri);
    if (!address) {
      papplDeviceError(device, "Not an address of a network printer: %s", uri);
      return false;
    }
    auto opened = std::make_unique<NetworkDevice>(
        *address, networkDevices().printers().find(*address), asksStatus(uri));
    networkDevices().add(device);
    papplDeviceSetData(device, opened.release());
    return true;
  });
}

void closeDevice(pappl_device_t* device) {
  const std::unique_ptr<NetworkDevice> closed(networkDevices().find(device));
  if (closed == nullptr) return;
  networkDevices().remove(device);
  papplDeviceSetData(device, nullptr);
  guarded(device, false, [&] { return closed->session.end(); });
}

ssize_t writeDevice(pappl_device_t* device, const void* buffer, std::size_t count) {
  NetworkDevice* opened = networkDevices().find(device);
  if (opened == nullptr) return -1;
  return guarded(device, ssize_t{-1}, [&] {
    const std::span bytes(static_cast<const std::uint8_t*>(buffer), count);
    return opened->session.write(bytes) ? static_cast<ssize_t>(count) : ssize_t{-1};
  });
}

// What a printer sends back belongs to the session.
ssize_t readDevice(pappl_device_t* /*device*/, void* /*buffer*/, std::size_t /*count*/) {
  return -1;
}

pappl_preason_t deviceStatus(pappl_device_t* device) {
  NetworkDevice* opened = networkDevices().find(device);
  return opened == nullptr ? 0 : reasonsOf(opened->session.condition());
}

bool listDevices(pappl_device_cb_t /*found*/, void* /*data*/, pappl_deverror_cb_t /*failed*/,
                 void* /*failedData*/) {
  return false;
}

// PAPPL adds its own schemes only to an empty list, all at once, `socket` among them. The
// functions that add one kind are exported without being declared.
bool addBuiltInScheme(const char* symbol) {
  const auto add = reinterpret_cast<void (*)()>(::dlsym(RTLD_DEFAULT, symbol));
  if (add != nullptr) add();
  return add != nullptr;
}

}  // namespace

bool addDeviceSchemes(bool withFiles) {
  papplDeviceAddScheme2("socket", PAPPL_DEVTYPE_SOCKET, listDevices, openDevice, closeDevice,
                        readDevice, writeDevice, deviceStatus, nullptr, nullptr);
  const bool haveFiles = !withFiles || addBuiltInScheme("_papplDeviceAddFileScheme");
  return addBuiltInScheme("_papplDeviceAddUSBScheme") && haveFiles;
}

void attachJob(pappl_device_t* device, pappl_job_t* job) {
  NetworkDevice* opened = networkDevices().find(device);
  if (opened == nullptr) {
    showDeviceStatus(device, job);
    return;
  }
  opened->session.attach({isOver, job}, [opened, job](const PrinterCondition& condition) {
    showCondition(opened->saysWhy, job, condition);
  });
}

bool beginDeviceJob(pappl_device_t* device, pappl_job_t* job) {
  NetworkDevice* opened = networkDevices().find(device);
  if (opened != nullptr) return guarded(device, false, [&] { return opened->session.begin(); });
  return guarded(device, false, [&] { return beginUsbJob(device, job); });
}

void betweenPages(pappl_device_t* device) {
  papplDeviceFlush(device);
  NetworkDevice* opened = networkDevices().find(device);
  if (opened == nullptr) return;
  guarded(device, true, [&] {
    opened->session.betweenCommands();
    return true;
  });
}

bool endDeviceJob(pappl_device_t* device, pappl_job_t* job) {
  papplDeviceFlush(device);
  NetworkDevice* opened = networkDevices().find(device);
  if (opened != nullptr) return guarded(device, false, [&] { return opened->session.end(); });
  return guarded(device, true, [&] {
    endUsbJob(device, job);
    showDeviceStatus(device, job);
    return true;
  });
}

std::string deviceFault(pappl_device_t* device) {
  const NetworkDevice* opened = networkDevices().find(device);
  return opened == nullptr || opened->session.wasCancelled() ? "" : opened->session.fault();
}

bool showPrinterCondition(pappl_printer_t* printer) {
  const char* uri = papplPrinterGetDeviceURI(printer);
  try {
    const auto address = addressOf(uri);
    if (!address) return true;
    const auto known = networkDevices().printers().find(*address);
    if (asksStatus(uri) && known->isDue(kAskInterval)) {
      askIdlePrinter(*address, known, kIdleConnect);
    }
    showReasons(printer, reasonsOf(known->condition()));
  } catch (const std::exception& error) {
    papplLogPrinter(printer, PAPPL_LOGLEVEL_ERROR, "%s", error.what());
  }
  return true;
}

PrinterCondition printerConditionAt(const char* deviceUri) {
  if (const auto usb = findUsbPrinter(deviceUri); usb != nullptr) return usb->condition();
  const auto address = addressOf(deviceUri);
  return address ? networkDevices().printers().find(*address)->condition() : PrinterCondition();
}

}  // namespace wren::app
