// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/picture_file.h"

#include <libexif/exif-data.h>

#include <cstring>
#include <filesystem>
#include <memory>
#include <vector>

#include "app/document_error.h"

namespace wren::app {
namespace {

using Kind = DocumentError::Kind;

constexpr std::uint8_t kExifMark[] = {'E', 'x', 'i', 'f', 0, 0};
// EXIF fits into a segment of a JPEG.
constexpr std::size_t kMaxExifBytes = 65536;

struct UnrefExif {
  void operator()(ExifData* data) const { exif_data_unref(data); }
};

}  // namespace

FilePtr openPicture(const DocumentRequest& request, const PictureSettings& settings) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(request.path, error);
  FilePtr file(std::fopen(request.path.c_str(), "rbe"));
  if (error || file == nullptr) {
    throw DocumentError(Kind::kSystem, "the picture cannot be opened");
  }
  if (size == 0) throw DocumentError(Kind::kUnprintable, "the picture is empty");
  if (size > settings.maxFileBytes) {
    throw DocumentError(
        Kind::kUnprintable,
        "the picture is larger than " + std::to_string(settings.maxFileBytes >> 20) + " MiB");
  }
  return file;
}

void checkPictureSize(std::uint64_t widthPx, std::uint64_t heightPx,
                      const PictureSettings& settings) {
  // Neither is above 2^31, so the product fits.
  if (widthPx * heightPx <= settings.maxPixels) return;
  throw DocumentError(Kind::kUnprintable, "the picture has more than " +
                                              std::to_string(settings.maxPixels / 1'000'000) +
                                              " million pixels");
}

int exifOrientation(const std::uint8_t* tiff, std::size_t size) {
  if (size == 0 || size > kMaxExifBytes) return 1;
  std::vector<std::uint8_t> bytes(std::begin(kExifMark), std::end(kExifMark));
  bytes.insert(bytes.end(), tiff, tiff + size);
  const std::unique_ptr<ExifData, UnrefExif> data(
      exif_data_new_from_data(bytes.data(), static_cast<unsigned>(bytes.size())));
  if (data == nullptr) return 1;
  const ExifEntry* entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
  if (entry == nullptr || entry->format != EXIF_FORMAT_SHORT || entry->size < 2) return 1;
  const int orientation = exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
  return orientation >= 1 && orientation <= 8 ? orientation : 1;
}

}  // namespace wren::app
