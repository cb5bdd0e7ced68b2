// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/print_results.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>

#include "cli/document.h"
#include "cli/failure.h"
#include "cli/installation.h"
#include "cli/interruption.h"
#include "common/handles.h"
#include "preview/png_file.h"

namespace wren::cli {

namespace fs = std::filesystem;

namespace {

// The printer itself (/dev/usb/lp0), a pipe to it or standard output.
bool isDevice(const std::string& path) {
  std::error_code ignored;
  return path == kStandardOutput || fs::is_other(path, ignored);
}

// Symbolic links resolved, as far as the path exists.
fs::path placeOf(const std::string& path) {
  std::error_code failed;
  const fs::path whole = fs::absolute(path, failed);
  const fs::path place = fs::weakly_canonical(whole, failed);
  return failed ? whole.lexically_normal() : place;
}

// "receipt" for "receipt.prn" and for "receipt".
std::string stemOf(const std::string& bytes) {
  fs::path path = bytes;
  if (path.extension() == ".prn") path.replace_extension();
  return path.string();
}

// A picture of an earlier run may be replaced; a picture that is printed is not its own result.
bool isFree(const std::string& picture, const std::string& document) {
  std::error_code ignored;
  if (!fs::exists(fs::symlink_status(picture, ignored))) return true;
  return preview::isOwnPng(picture) && !fs::equivalent(document, picture, ignored);
}

std::string freePicture(const std::string& stem, const std::string& document) {
  std::string picture = stem + ".png";
  for (int i = 1; !isFree(picture, document); ++i) {
    picture = stem + ".paper" + (i > 1 ? "-" + std::to_string(i) : "") + ".png";
  }
  return picture;
}

void notePictureName(const std::string& stem, const PrintPlaces& places,
                     const std::string& document, std::vector<std::string>& notes) {
  const std::string usual = stem + ".png";
  std::error_code ignored;
  if (places.picture == usual || fs::equivalent(document, usual, ignored)) return;
  notes.push_back("'" + usual + "' is no picture of wren's and stays; the paper is in '" +
                  places.picture + "'");
}

void refuseSharedPlaces(const PrintPlaces& places) {
  const std::array<std::string, 4> all = {places.bytes, places.picture, places.images,
                                          places.raster};
  for (auto one = all.begin(); one != all.end(); ++one) {
    const bool isShared = std::any_of(all.begin(), one, [&](const std::string& other) {
      return !isDevice(other) && placeOf(*one) == placeOf(other);
    });
    if (one->empty() || isDevice(*one) || !isShared) continue;
    throw Failure(kUsage, "'" + *one + "' is another result; name another " +
                              (*one == places.raster ? "--raster" : "--out or --images"));
  }
}

// Printer bytes on a terminal would set it to anything.
void refuseTerminal(const PrintPlaces& places) {
  if (places.bytes != kStandardOutput || isatty(STDOUT_FILENO) == 0) return;
  throw Failure(kUsage, "printer bytes are not for a terminal; send them to a file or a pipe");
}

void copyInto(const std::string& from,
              const std::function<void(const char* bytes, std::size_t count)>& write) {
  const FilePtr in(std::fopen(from.c_str(), "rb"));
  if (in == nullptr) throw Failure(kFailed, "'" + from + "' cannot be read");
  char part[65536];
  std::size_t count = 0;
  while ((count = std::fread(part, 1, sizeof part, in.get())) > 0) {
    failIfInterrupted();
    write(part, count);
  }
}

void copyFile(const std::string& from, const OutputFile& to) {
  FilePtr out(std::fopen(to.path().c_str(), "wb"));
  if (out == nullptr) failToWrite(to.target(), errno);
  copyInto(from, [&](const char* bytes, std::size_t count) {
    if (std::fwrite(bytes, 1, count, out.get()) != count) failToWrite(to.target(), errno);
  });
  if (std::fclose(out.release()) != 0) failToWrite(to.target(), errno);
}

// A reader that goes away is an error like any other, not the end of this process.
void copyToStandardOutput(const std::string& from) {
  std::signal(SIGPIPE, SIG_IGN);
  copyInto(from, [](const char* bytes, std::size_t count) {
    for (std::size_t done = 0; done < count;) {
      const ssize_t written = write(STDOUT_FILENO, bytes + done, count - done);
      failIfInterrupted();
      if (written < 0) {
        throw Failure(kFailed,
                      std::string("standard output cannot be written: ") + std::strerror(errno));
      }
      done += static_cast<std::size_t>(written);
    }
  });
}

bool isDebugImage(const fs::path& file) {
  const std::string name = file.filename().string();
  return file.extension() == ".bmp" &&
         std::any_of(kDebugImagePrefixes.begin(), kDebugImagePrefixes.end(),
                     [&](const char* prefix) { return name.starts_with(prefix); });
}

std::vector<fs::path> debugImagesIn(const fs::path& folder) {
  std::vector<fs::path> images;
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(folder, ignored)) {
    if (isDebugImage(entry.path())) images.push_back(entry.path());
  }
  return images;
}

}  // namespace

PrintPlaces choosePlaces(const PrintArguments& arguments, std::vector<std::string>& notes) {
  const std::string& document = arguments.document;
  const std::string stem = (fs::path(arguments.folder) / documentStem(document)).string();
  const bool isNamed = !arguments.out.empty();
  const bool isPictureNamed = isNamed && !isDevice(arguments.out);
  const std::string pictureStem = isPictureNamed ? stemOf(arguments.out) : stem;
  PrintPlaces places;
  places.bytes = isNamed ? arguments.out : stem + ".prn";
  places.raster = arguments.raster;
  places.images = arguments.images.empty() ? stem + ".images" : arguments.images;
  const std::string named = isPictureNamed ? pictureStem + ".png" : "";
  for (const std::string& path : {places.bytes, named, places.raster, places.images}) {
    if (!path.empty()) keepDocument(document, path);
  }
  places.picture = freePicture(pictureStem, document);
  notePictureName(pictureStem, places, document, notes);
  refuseSharedPlaces(places);
  refuseTerminal(places);
  return places;
}

PrintResults::PrintResults(const PrintPlaces& places, bool wantsImages) : places_(places) {
  std::error_code ignored;
  if (wantsImages || fs::exists(places.images, ignored)) imageFolder_.emplace(places.images);
  if (places.bytes != kStandardOutput) bytes_.emplace(places.bytes);
  picture_.emplace(places.picture);
  if (!places.raster.empty()) raster_.emplace(places.raster);
}

void PrintResults::takeRaster(const std::string& from) {
  if (raster_.has_value()) copyFile(from, *raster_);
}

void PrintResults::takeImages(const std::string& from) {
  for (const fs::path& image : debugImagesIn(from)) {
    const std::string target = (fs::path(places_.images) / image.filename()).string();
    images_.push_back(std::make_unique<OutputFile>(target));
    copyFile(image.string(), *images_.back());
    // They show private receipts.
    std::error_code ignored;
    fs::permissions(images_.back()->path(), fs::perms::owner_read | fs::perms::owner_write,
                    ignored);
  }
}

void PrintResults::takeBytes(const std::string& from) {
  if (bytes_.has_value()) {
    copyFile(from, *bytes_);
  } else {
    copyToStandardOutput(from);
  }
}

PrintPlaces PrintResults::commit() {
  for (const fs::path& old : debugImagesIn(places_.images)) {
    std::error_code ignored;
    fs::remove(old, ignored);
  }
  if (bytes_.has_value()) bytes_->commit();
  if (raster_.has_value()) raster_->commit();
  for (const auto& image : images_) image->commit();
  if (!places_.picture.empty()) picture_->commit();
  if (images_.empty()) places_.images.clear();
  return places_;
}

}  // namespace wren::cli
