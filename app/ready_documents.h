// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Documents that the web pages of the application print: pages of grey levels, and printer bytes
// that an earlier job has sent. They have the printers' own format, which no client may send; a
// file of ours is known by its folder, which no client can write to.

#pragma once

#include <pappl/pappl.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "app/web/grey_pages.h"

namespace wren::app {

/// Pages, and the settings with which they print. PAPPL 1.3.1 loses the options of a job that is
/// made from a file.
struct PrintPages {
  web::GreyPages pages;
  std::int32_t brightness = 0;
  std::map<std::string, std::string> attributes;  ///< vendor attributes; no spaces in them
};

class ReadyDocuments {
 public:
  /// @param folder exists and belongs to this process alone.
  explicit ReadyDocuments(std::string folder) : folder_(std::move(folder)) {}

  /// Both write a new file of mode 0600; PAPPL removes it when its job has ended.
  /// @return its path; empty if it cannot be written.
  std::string writePages(const PrintPages& pages) const;
  std::string writeBytes(std::string_view bytes) const;

  /// Reads a file of `writePages` or `writeBytes`; nothing if it is none, or not complete.
  std::optional<PrintPages> readPages(const std::string& path) const;
  std::optional<std::string> readBytes(const std::string& path) const;

 private:
  std::string write(const char* suffix, std::string_view head, std::string_view body) const;
  bool isOurs(const std::string& path, std::string_view suffix) const;

  std::string folder_;
};

/// Prints such a file. Refuses all others in words: bytes that nobody has checked would reach the
/// printer, drawer pulses among them. A callback of type pappl_pr_printfile_cb_t; expects the
/// JobServices of the application as `data.extension`.
bool printReadyDocument(pappl_job_t* job, pappl_pr_options_t* options, pappl_device_t* device);

}  // namespace wren::app
