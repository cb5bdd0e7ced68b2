// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// Where the results of `wren print` go, and how they get there: all of them or none.

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/output_file.h"
#include "cli/print_arguments.h"

namespace wren::cli {

/// The name of standard output for `--out`.
inline constexpr char kStandardOutput[] = "-";

/// The paths of the results as a user writes them; empty for what is not made.
struct PrintPlaces {
  std::string bytes;  ///< a file, a device or `kStandardOutput`
  std::string picture;
  std::string raster;
  std::string images;  ///< a folder
};

/// Names the results. A picture gets another name, with a line in `notes`, rather than replace a
/// file that is no picture of Wren's.
/// Throws a Failure if two results, or a result and the document, have the same place.
PrintPlaces choosePlaces(const PrintArguments& arguments, std::vector<std::string>& notes);

/// The results of one run. They are written beside their places; only `commit` puts them there.
class PrintResults {
 public:
  /// Throws a Failure if one of the places cannot be written.
  /// @param wantsImages whether there will be debug images.
  PrintResults(const PrintPlaces& places, bool wantsImages);

  /// Where to draw the picture.
  const std::string& picturePath() const { return picture_->path(); }
  void leaveOutPicture() { places_.picture.clear(); }

  /// Takes over a copy of the raster, if it is wanted.
  void takeRaster(const std::string& from);
  /// Takes over a copy of the debug images in a folder; those of an earlier run will go.
  void takeImages(const std::string& from);
  /// A device gets the bytes at once, so this is the last thing before `commit`.
  void takeBytes(const std::string& from);

  /// Puts everything in its place.
  /// @return the places of what was made.
  PrintPlaces commit();

 private:
  PrintPlaces places_;
  std::optional<NewFolder> imageFolder_;
  std::optional<OutputFile> bytes_;
  std::optional<OutputFile> picture_;
  std::optional<OutputFile> raster_;
  std::vector<std::unique_ptr<OutputFile>> images_;
};

}  // namespace wren::cli
