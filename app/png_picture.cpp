// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include <png.h>

#include <csetjmp>
#include <optional>
#include <string>
#include <vector>

#include "app/document_error.h"
#include "app/picture_canvas.h"
#include "app/picture_document.h"
#include "app/picture_file.h"

namespace wren::app {
namespace {

using Kind = DocumentError::Kind;

constexpr std::size_t kSignatureBytes = 8;
constexpr png_uint_32 kMaxSidePx = 1'000'000;
// Of a single chunk, such as text or a colour profile.
constexpr png_alloc_size_t kMaxChunkBytes = png_alloc_size_t{8} << 20;

class PngReader {
 public:
  PngReader(const DocumentRequest& request, const PictureSettings& settings)
      : request_(request),
        settings_(settings),
        file_(openPicture(request, settings)),
        png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning)) {
    if (png_ != nullptr) info_ = png_create_info_struct(png_);
    if (info_ == nullptr) {
      png_destroy_read_struct(&png_, nullptr, nullptr);
      throw std::bad_alloc();
    }
  }
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;
  ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }

  /// Reads the header and all chunks before the pixels.
  void readHeader() {
    std::uint8_t signature[kSignatureBytes];
    if (std::fread(signature, 1, kSignatureBytes, file_.get()) != kSignatureBytes ||
        png_sig_cmp(signature, 0, kSignatureBytes) != 0) {
      throw DocumentError(Kind::kFormat, "this is not a PNG");
    }
    guarded([this] {
      png_init_io(png_, file_.get());
      png_set_sig_bytes(png_, kSignatureBytes);
      png_set_user_limits(png_, kMaxSidePx, kMaxSidePx);
      png_set_chunk_malloc_max(png_, kMaxChunkBytes);
      png_read_info(png_, info_);
    });
    checkPictureSize(widthPx(), heightPx(), settings_);
  }

  unsigned widthPx() const { return png_get_image_width(png_, info_); }
  unsigned heightPx() const { return png_get_image_height(png_, info_); }

  /// By what was read so far.
  int orientation() {
    png_uint_32 size = 0;
    png_bytep data = nullptr;
    if (png_get_eXIf_1(png_, info_, &size, &data) == 0) return 1;
    return exifOrientation(data, size);
  }

  /// Reads the pixels and what is behind them.
  /// @return false if it was cancelled.
  bool readPixels(PictureCanvas& canvas) {
    const bool isInterlaced = png_get_interlace_type(png_, info_) != PNG_INTERLACE_NONE;
    guarded([this] {
      // 1, 2, 3 or 4 channels of 8 bits: grey or red, green and blue, each with or without alpha.
      png_set_expand(png_);
      png_set_scale_16(png_);
      png_read_update_info(png_, info_);
    });
    channels_ = png_get_channels(png_, info_);
    canvas.begin(widthPx(), heightPx());
    if (!(isInterlaced ? readPasses(canvas) : readRows(canvas))) return false;
    guarded([this] { png_read_end(png_, info_); });
    return true;
  }

 private:
  [[noreturn]] static void onError(png_structp png, png_const_charp message) {
    static_cast<PngReader*>(png_get_error_ptr(png))->error_ = message;
    png_longjmp(png, 1);
  }
  static void onWarning(png_structp, png_const_charp) {}

  // An error in libpng jumps back to here and skips destructors: `work` has nothing that needs one.
  template <typename Work>
  void guarded(Work work) {
    if (setjmp(png_jmpbuf(png_)) != 0) {
      throw DocumentError(Kind::kFormat, "the PNG is damaged: " + error_);
    }
    work();
  }

  void readRow(std::vector<std::uint8_t>& row) {
    guarded([&] { png_read_row(png_, row.data(), nullptr); });
  }

  const std::uint8_t* pixelOf(const std::vector<std::uint8_t>& row, unsigned x) const {
    return row.data() + std::size_t{x} * channels_;
  }

  bool readRows(PictureCanvas& canvas) {
    std::vector<std::uint8_t> row(png_get_rowbytes(png_, info_));
    std::vector<std::uint8_t> ink(widthPx());
    for (unsigned y = 0; y < heightPx(); ++y) {
      if (request_.cancel.isCancelled()) return false;
      readRow(row);
      for (unsigned x = 0; x < widthPx(); ++x) ink[x] = inkAt(pixelOf(row, x));
      canvas.addRow(ink.data());
    }
    return true;
  }

  // The passes of Adam7 are small pictures of every second to eighth pixel. Their ink is collected
  // in one plane, a byte a pixel.
  bool readPasses(PictureCanvas& canvas) {
    if (std::uint64_t{widthPx()} * heightPx() > settings_.maxMemoryBytes) {
      throw DocumentError(Kind::kUnprintable, "the PNG is interlaced and too large");
    }
    std::vector<std::uint8_t> plane(std::size_t{widthPx()} * heightPx());
    std::vector<std::uint8_t> row(png_get_rowbytes(png_, info_));
    for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass) {
      const unsigned columns = PNG_PASS_COLS(widthPx(), pass);
      const unsigned rows = columns == 0 ? 0 : PNG_PASS_ROWS(heightPx(), pass);
      for (unsigned y = 0; y < rows; ++y) {
        if (request_.cancel.isCancelled()) return false;
        readRow(row);
        std::uint8_t* line = plane.data() + std::size_t{PNG_ROW_FROM_PASS_ROW(y, pass)} * widthPx();
        for (unsigned x = 0; x < columns; ++x) {
          line[PNG_COL_FROM_PASS_COL(x, pass)] = inkAt(pixelOf(row, x));
        }
      }
    }
    for (unsigned y = 0; y < heightPx(); ++y) {
      canvas.addRow(plane.data() + std::size_t{y} * widthPx());
    }
    return true;
  }

  std::uint8_t inkAt(const std::uint8_t* pixel) const {
    const std::uint8_t ink =
        channels_ < 3 ? inkOf(pixel[0], pixel[0], pixel[0]) : inkOf(pixel[0], pixel[1], pixel[2]);
    return channels_ % 2 == 0 ? onPaper(ink, pixel[channels_ - 1]) : ink;
  }

  const DocumentRequest& request_;
  const PictureSettings& settings_;
  FilePtr file_;
  png_structp png_;
  png_infop info_ = nullptr;
  unsigned channels_ = 0;
  std::string error_;
};

}  // namespace

bool readPng(const DocumentRequest& request, const PictureSettings& settings, PageSink& sink) {
  // EXIF may stand behind the pixels. If it turns the picture, the file is read once more.
  std::optional<int> known;
  for (;;) {
    PngReader reader(request, settings);
    reader.readHeader();
    const int orientation = known.value_or(reader.orientation());
    PictureCanvas canvas(request.target, reader.widthPx(), reader.heightPx(), orientation);
    if (!reader.readPixels(canvas)) return false;
    if (known || reader.orientation() == orientation) return canvas.deliver(request.cancel, sink);
    known = reader.orientation();
  }
}

}  // namespace wren::app
