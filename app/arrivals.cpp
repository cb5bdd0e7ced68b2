// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/arrivals.h"

#include <utility>

namespace wren::app {
namespace {

std::shared_mutex& arrivals() {
  static std::shared_mutex mutex;
  return mutex;
}

struct Keeper {
  std::shared_mutex mutex;  // shared by those who call it
  std::function<void()> keep;
};

Keeper& keeper() {
  static Keeper theKeeper;
  return theKeeper;
}

}  // namespace

std::shared_lock<std::shared_mutex> beginArrival() {
  return std::shared_lock(arrivals());
}

std::unique_lock<std::shared_mutex> holdArrivals() {
#ifdef __APPLE__
  return {};  // nobody tells of arrivals there
#else
  return std::unique_lock(arrivals(), std::try_to_lock);
#endif
}

void setArrivalKeeper(std::function<void()> keep) {
  const std::unique_lock lock(keeper().mutex);
  keeper().keep = std::move(keep);
}

void keepArrival() {
  const std::shared_lock lock(keeper().mutex);
  if (keeper().keep) keeper().keep();
}

}  // namespace wren::app
