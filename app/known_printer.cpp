// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/known_printer.h"

namespace wren::app {

std::unique_ptr<KnownPrinter::Turn> KnownPrinter::tryTurn(
    const std::shared_ptr<KnownPrinter>& printer) {
  const std::lock_guard lock(printer->mutex_);
  if (printer->taken_) return nullptr;
  auto turn = std::unique_ptr<Turn>(new Turn(printer));
  printer->taken_ = true;
  return turn;
}

KnownPrinter::Turn::~Turn() {
  const std::lock_guard lock(printer_->mutex_);
  printer_->taken_ = false;
}

bool KnownPrinter::isDue(std::chrono::milliseconds age) {
  const auto now = std::chrono::steady_clock::now();
  const std::lock_guard lock(mutex_);
  if (renewed_ && now - *renewed_ < age) return false;
  renewed_ = now;
  return true;
}

void KnownPrinter::makeDue() {
  const std::lock_guard lock(mutex_);
  renewed_.reset();
}

PrinterCondition KnownPrinter::condition() const {
  const std::lock_guard lock(mutex_);
  return condition_;
}

void KnownPrinter::setCondition(const PrinterCondition& condition) {
  const std::lock_guard lock(mutex_);
  condition_ = condition;
  renewed_ = std::chrono::steady_clock::now();
}

std::shared_ptr<KnownPrinter> KnownPrinters::find(const NetworkAddress& address) {
  return find(address.host + " " + address.port);
}

std::shared_ptr<KnownPrinter> KnownPrinters::find(const std::string& name) {
  const std::lock_guard lock(mutex_);
  auto& printer = printers_[name];
  if (printer == nullptr) printer = std::make_shared<KnownPrinter>();
  return printer;
}

}  // namespace wren::app
