// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include <cstdio>

// Needs <cstdio> before it.
#include <jpeglib.h>

// The numbers of its messages depend on the configuration in jpeglib.h.
#include <jerror.h>

#include <algorithm>
#include <csetjmp>
#include <cstring>
#include <string>
#include <vector>

#include "app/document_error.h"
#include "app/picture_canvas.h"
#include "app/picture_document.h"
#include "app/picture_file.h"

namespace wren::app {
namespace {

using Kind = DocumentError::Kind;

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr std::size_t kExifMarkBytes = 6;
// The sizes in which libjpeg decodes: eighths.
constexpr unsigned kScaleSteps = 8;

// Warnings of libjpeg after which part of the picture is grey or garbage. Others, such as bytes
// between two markers, are harmless and common.
bool isDamage(int code) {
  constexpr int kDamage[] = {JWRN_JPEG_EOF, JWRN_HIT_MARKER, JWRN_HUFF_BAD_CODE, JWRN_MUST_RESYNC,
                             JWRN_ARITH_BAD_CODE};
  return std::find(std::begin(kDamage), std::end(kDamage), code) != std::end(kDamage);
}

class JpegReader {
 public:
  JpegReader(const DocumentRequest& request, const PictureSettings& settings)
      : request_(request), settings_(settings), file_(openPicture(request, settings)) {
    jpeg_.err = jpeg_std_error(&errors_);
    errors_.error_exit = onError;
    errors_.emit_message = onMessage;
    jpeg_.client_data = this;
    progress_.progress_monitor = onProgress;
  }
  JpegReader(const JpegReader&) = delete;
  JpegReader& operator=(const JpegReader&) = delete;
  // Harmless before jpeg_create_decompress(): all is zero.
  ~JpegReader() { jpeg_destroy_decompress(&jpeg_); }

  void readHeader() {
    if (std::fgetc(file_.get()) != 0xFF || std::fgetc(file_.get()) != 0xD8) {
      throw DocumentError(Kind::kFormat, "this is not a JPEG");
    }
    std::rewind(file_.get());
    guarded([this] {
      jpeg_create_decompress(&jpeg_);
      jpeg_.progress = &progress_;
      jpeg_.mem->max_memory_to_use = static_cast<long>(settings_.maxMemoryBytes);
      jpeg_stdio_src(&jpeg_, file_.get());
      jpeg_save_markers(&jpeg_, kExifMarker, 0xFFFF);
      jpeg_read_header(&jpeg_, TRUE);
    });
    checkPictureSize(widthPx(), heightPx(), settings_);
  }

  unsigned widthPx() const { return jpeg_.image_width; }
  unsigned heightPx() const { return jpeg_.image_height; }

  int orientation() const {
    for (const jpeg_marker_struct* marker = jpeg_.marker_list; marker != nullptr;
         marker = marker->next) {
      if (marker->marker != kExifMarker || marker->data_length <= kExifMarkBytes ||
          std::memcmp(marker->data, "Exif\0", kExifMarkBytes) != 0) {
        continue;
      }
      return exifOrientation(marker->data + kExifMarkBytes, marker->data_length - kExifMarkBytes);
    }
    return 1;
  }

  /// Reads the pixels and the end of the file.
  /// @return false if it was cancelled.
  bool readPixels(PictureCanvas& canvas) {
    isInks_ = jpeg_.jpeg_color_space == JCS_CMYK || jpeg_.jpeg_color_space == JCS_YCCK;
    jpeg_.out_color_space = isInks_ ? JCS_CMYK : JCS_GRAYSCALE;
    chooseScale(canvas);
    guarded([this] { jpeg_start_decompress(&jpeg_); });
    if (isCancelled_) return false;
    canvas.begin(jpeg_.output_width, jpeg_.output_height);
    std::vector<std::uint8_t> row(std::size_t{jpeg_.output_width} *
                                  static_cast<unsigned>(jpeg_.output_components));
    std::vector<std::uint8_t> ink(jpeg_.output_width);
    while (jpeg_.output_scanline < jpeg_.output_height) {
      if (request_.cancel.isCancelled()) return false;
      std::uint8_t* rows[] = {row.data()};
      guarded([&] { jpeg_read_scanlines(&jpeg_, rows, 1); });
      if (isCancelled_) return false;
      for (unsigned x = 0; x < jpeg_.output_width; ++x) ink[x] = inkAt(row.data(), x);
      canvas.addRow(ink.data());
    }
    guarded([this] { jpeg_finish_decompress(&jpeg_); });
    return !isCancelled_;
  }

 private:
  static JpegReader& reader(j_common_ptr jpeg) {
    return *static_cast<JpegReader*>(jpeg->client_data);
  }

  [[noreturn]] static void onError(j_common_ptr jpeg) { std::longjmp(reader(jpeg).jump_, 1); }

  static void onMessage(j_common_ptr jpeg, int level) {
    if (level < 0 && isDamage(jpeg->err->msg_code)) onError(jpeg);
  }

  // A progressive JPEG of a few kilobytes can have thousands of scans, each over the whole picture.
  static void onProgress(j_common_ptr jpeg) {
    JpegReader& self = reader(jpeg);
    self.isCancelled_ = self.isCancelled_ || self.request_.cancel.isCancelled();
    self.hasTooManyScans_ = self.jpeg_.input_scan_number > self.settings_.maxScans;
    if (self.isCancelled_ || self.hasTooManyScans_) std::longjmp(self.jump_, 1);
  }

  // An error in libjpeg jumps back to here and skips destructors: `work` has nothing that needs
  // one.
  template <typename Work>
  void guarded(Work work) {
    if (setjmp(jump_) == 0) {
      work();
    } else if (!isCancelled_) {
      fail();
    }
  }

  [[noreturn]] void fail() {
    if (hasTooManyScans_) {
      throw DocumentError(Kind::kUnprintable, "the JPEG has more than " +
                                                  std::to_string(settings_.maxScans) + " scans");
    }
    if (errors_.msg_code == JERR_OUT_OF_MEMORY || errors_.msg_code == JERR_NO_BACKING_STORE) {
      throw DocumentError(Kind::kUnprintable, "the JPEG needs too much memory");
    }
    char message[JMSG_LENGTH_MAX];
    errors_.format_message(reinterpret_cast<j_common_ptr>(&jpeg_), message);
    throw DocumentError(Kind::kFormat, std::string("the JPEG is damaged: ") + message);
  }

  // The smallest size that is not smaller than the page.
  void chooseScale(const PictureCanvas& canvas) {
    jpeg_.scale_denom = kScaleSteps;
    for (jpeg_.scale_num = 1; jpeg_.scale_num < kScaleSteps; ++jpeg_.scale_num) {
      const std::uint64_t step = jpeg_.scale_num;
      if (widthPx() * step >= std::uint64_t{canvas.neededWidthPx()} * kScaleSteps &&
          heightPx() * step >= std::uint64_t{canvas.neededHeightPx()} * kScaleSteps) {
        break;
      }
    }
  }

  // Adobe stores how much light comes through; others how much ink there is.
  std::uint8_t inkAt(const std::uint8_t* row, unsigned x) const {
    if (!isInks_) return static_cast<std::uint8_t>(255 - row[x]);
    const std::uint8_t* pixel = row + std::size_t{4} * x;
    unsigned light[4];
    for (int i = 0; i < 4; ++i) light[i] = jpeg_.saw_Adobe_marker ? pixel[i] : 255U - pixel[i];
    return inkOf((light[0] * light[3] + 127) / 255, (light[1] * light[3] + 127) / 255,
                 (light[2] * light[3] + 127) / 255);
  }

  const DocumentRequest& request_;
  const PictureSettings& settings_;
  FilePtr file_;
  jpeg_decompress_struct jpeg_{};
  jpeg_error_mgr errors_{};
  jpeg_progress_mgr progress_{};
  std::jmp_buf jump_{};
  bool isInks_ = false;
  bool isCancelled_ = false;
  bool hasTooManyScans_ = false;
};

}  // namespace

bool readJpeg(const DocumentRequest& request, const PictureSettings& settings, PageSink& sink) {
  JpegReader reader(request, settings);
  reader.readHeader();
  PictureCanvas canvas(request.target, reader.widthPx(), reader.heightPx(), reader.orientation());
  return reader.readPixels(canvas) && canvas.deliver(request.cancel, sink);
}

}  // namespace wren::app
