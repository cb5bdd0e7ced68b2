// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/document_types.h"

#include <string_view>

#include "app/text_pages.h"
#include "job/command_file.h"

namespace wren::app {
namespace {

const char* typeOf(const unsigned char* header, std::size_t size, void* /*data*/) {
  const std::string_view head(reinterpret_cast<const char*>(header), size);
  if (head.starts_with(job::kCommandFileHead)) return "application/vnd.cups-command";
  return isTextHead(head) ? "text/plain" : nullptr;
}

}  // namespace

void knowDocumentTypes(pappl_system_t* system) {
  papplSystemSetMIMECallback(system, typeOf, nullptr);
}

}  // namespace wren::app
