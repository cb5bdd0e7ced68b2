// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Builds the text of PPD files.

#pragma once

#include <string>
#include <vector>

namespace wren_test {

class PpdText {
 public:
  /// A PPD with the keywords that CUPS requires and no options.
  PpdText();

  /// Adds an option with its choices. The default need not be one of them.
  PpdText& option(const std::string& keyword, const std::vector<std::string>& choices,
                  const std::string& defaultChoice);
  /// Adds an option with the choices 0 to `last`.
  PpdText& numbers(const std::string& keyword, int last, int defaultChoice);
  /// Adds the line `*name: "value"`.
  PpdText& attribute(const std::string& name, const std::string& value);
  /// Adds the option HalftoneType with its nine choices.
  PpdText& halftoneType(const std::string& defaultName);
  /// Adds the option PageSize.
  PpdText& pageSizes(const std::vector<std::string>& names, const std::string& defaultName);
  /// Adds text without change.
  PpdText& raw(const std::string& text);

  std::string text() const { return content_; }

 private:
  std::string content_;
};

/// A PPD with every option of the filter. All but the method default to their neutral choice.
/// @param maxMediaWidth in points; "0" for no limit.
PpdText fullPpd(const std::string& halftoneType = "None", const std::string& maxMediaWidth = "0");

}  // namespace wren_test
