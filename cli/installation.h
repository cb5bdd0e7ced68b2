// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// Where the parts of Wren are: installed below the root folder, or in the build tree that this
// program runs from.

#pragma once

#include <array>
#include <string>

namespace wren::cli {

/// The widths of paper in mm that there are PPDs for.
inline constexpr std::array<int, 3> kPapers = {58, 80, 112};

/// The names of the debug images in the spool folder.
inline constexpr std::array<const char*, 2> kDebugImagePrefixes = {"origin_", "dithered_"};

/// The files of an installed Wren.
class Installation {
 public:
  /// @param root the folder that stands for "/"; empty for this system.
  explicit Installation(std::string root = {}) : root_(std::move(root)) {}

  std::string filter() const;
  /// The filter for commands.
  std::string commandFilter() const;
  std::string ppdFolder() const;
  std::string ppd(int paper) const;
  /// Where the print system keeps jobs, and below it the debug images.
  std::string spoolFolder() const { return root_ + "/var/spool/cups"; }
  std::string imageFolder() const { return spoolFolder() + "/tmp"; }
  std::string backendFolder() const;
  /// The list of files of an installation without a package.
  std::string manifest() const;
  std::string pathOf(const std::string& path) const { return root_ + path; }

 private:
  std::string root_;
};

/// The PPD for printing without a queue: that of the build tree, else the installed one. Throws
/// a Failure if it is missing.
std::string ppdForPrinting(int paper);

/// The program wren-preview: of the build tree, else beside this program or in PATH.
std::string previewProgram();

/// The version of the package.
std::string packageVersion();

}  // namespace wren::cli
