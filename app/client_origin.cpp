// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/client_origin.h"

#include <cups/cups.h>
#ifndef __APPLE__
#include <dlfcn.h>
#endif

#include "app/each_job.h"

#ifndef __APPLE__
namespace {

// PAPPL has a thread for each client, which reads its requests and creates its jobs.
thread_local bool clientIsLocal = true;
thread_local wren::app::TextLanguage clientLanguage = wren::app::TextLanguage::kAny;

void noteLanguage(ipp_t* request) {
  ipp_attribute_t* const language =
      ippFindAttribute(request, "attributes-natural-language", IPP_TAG_LANGUAGE);
  const char* const tag = ippGetString(language, 0, nullptr);
  clientLanguage = wren::app::textLanguageOf(tag == nullptr ? "" : tag);
}

using Read = ipp_state_t (*)(http_t*, ipp_t*);

}  // namespace

// Replaces the function of libcups for every caller of the process: PAPPL is the one.
extern "C" ipp_state_t ippRead(http_t* http, ipp_t* message) {
  static const auto kRead = reinterpret_cast<Read>(dlsym(RTLD_NEXT, "ippRead"));
  if (http != nullptr) clientIsLocal = httpAddrLocalhost(httpGetAddress(http)) != 0;
  const ipp_state_t state = kRead == nullptr ? IPP_STATE_ERROR : kRead(http, message);
  if (http != nullptr && state == IPP_STATE_DATA) noteLanguage(message);
  return state;
}
#endif

namespace wren::app {

bool currentClientIsLocal() {
#ifdef __APPLE__
  return false;
#else
  return clientIsLocal;
#endif
}

TextLanguage currentClientLanguage() {
#ifdef __APPLE__
  return TextLanguage::kAny;
#else
  return clientLanguage;
#endif
}

void JobOrigins::note(pappl_job_t* job, pappl_event_t event) {
  if (job == nullptr) return;
  const std::lock_guard lock(mutex_);
  if ((event & PAPPL_EVENT_JOB_CREATED) != 0) {
    origins_[keyOf(job)] = {currentClientIsLocal(), currentClientLanguage()};
  }
  if ((event & PAPPL_EVENT_JOB_COMPLETED) != 0) origins_.erase(keyOf(job));
}

bool JobOrigins::isLocal(pappl_job_t* job) const {
  if (!isShared_) return true;
  const std::lock_guard lock(mutex_);
  const auto found = origins_.find(keyOf(job));
  return found != origins_.end() && found->second.isLocal;
}

TextLanguage JobOrigins::languageOf(pappl_job_t* job) const {
  const std::lock_guard lock(mutex_);
  const auto found = origins_.find(keyOf(job));
  return found == origins_.end() ? TextLanguage::kAny : found->second.language;
}

}  // namespace wren::app
