// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Writes the text of PPD files for tests.
#pragma once

#include <string>
#include <vector>

namespace wren_test {

class PpdText {
 public:
  /// A PPD with everything that CUPS asks for and no option but those added.
  PpdText();

  /// Adds an option with its choices; a default that is no choice is written as it is.
  PpdText& option(const std::string& keyword, const std::vector<std::string>& choices,
                  const std::string& defaultChoice);
  /// Adds an option with the choices 0 to last.
  PpdText& numbers(const std::string& keyword, int last, int defaultChoice);
  /// Adds "*name: "value"", for example MaxMediaWidth.
  PpdText& attribute(const std::string& name, const std::string& value);
  /// Adds the option HalftoneType with all nine names.
  PpdText& halftoneType(const std::string& defaultName);
  /// Adds the option PageSize.
  PpdText& pageSizes(const std::vector<std::string>& names, const std::string& defaultName);
  /// Adds text as it stands.
  PpdText& raw(const std::string& text);

  std::string text() const { return content; }

 private:
  std::string content;
};

/// A PPD that offers every option of the filter, each with its first choice, a method by name
/// and a width limit in points ("0" for none).
PpdText fullPpd(const std::string& halftoneType = "None", const std::string& maxMediaWidth = "0");

}  // namespace wren_test
