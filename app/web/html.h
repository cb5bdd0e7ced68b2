// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The frame of our web pages, and text inside them. PAPPL's own frame sends no language and no
// policy of ours, so the pages have a head of their own, with PAPPL's style sheet and classes.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/web/words.h"

namespace wren::app::web {

/// The text with every character that has a meaning in HTML, in an element or in a quoted
/// attribute, written as a reference. Control characters other than line ends are left out.
std::string escaped(std::string_view text);

struct Link {
  std::string path;
  std::string label;
  bool isCurrent = false;
};

struct Frame {
  Language language = Language::kEnglish;
  std::string title;        ///< of this page
  std::string printerName;  ///< as people named it
  std::vector<Link> links;  ///< the other pages of the printer
};

/// A whole page. It loads nothing but the files of `kStylePath` and `kScriptPath`, PAPPL's style
/// sheet and pictures of this server.
/// @param body HTML.
std::string htmlPage(const Frame& frame, std::string_view body);

inline constexpr const char* kStylePath = "/wren-pages.css";
inline constexpr const char* kScriptPath = "/wren-pages.js";

/// `<option>` with a value and a text for people.
std::string optionElement(std::string_view value, std::string_view text, bool isSelected);

/// A hidden field of a form.
std::string hiddenField(std::string_view name, std::string_view value);

}  // namespace wren::app::web
