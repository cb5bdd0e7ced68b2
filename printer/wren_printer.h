// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The abstract printer: the options of a page, the streams that receive every printer byte,
// and the pipeline of a page from grey levels to dots. A subclass turns dots into printer
// commands.

#pragma once

#include <cups/raster.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <list>
#include <string>
#include <string_view>

#include "common/cancel_check.h"
#include "common/halftone_type.h"
#include "common/handles.h"
#include "printer/dot_bands.h"
#include "printer/page_dots.h"
#include "printer/page_memory.h"

class WrenPrinter {
 public:
  /// Data of the caller; not read here.
  struct UserData;

  /// A printer whose only stream is standard output and whose debug images go to
  /// wren::printer::kSpoolFolder.
  WrenPrinter();
  WrenPrinter(const WrenPrinter&) = delete;
  WrenPrinter& operator=(const WrenPrinter&) = delete;
  /// Closes no stream.
  virtual ~WrenPrinter();

  /// Writes a page of dots as printer commands.
  /// @param data rows of bytes; 0 is no dot, everything else a dot. Valid during the call,
  ///   also while another page is printed from within it.
  virtual void doPrintImage(const unsigned char* data, unsigned long bytesPerLine,
                            unsigned long height, unsigned long width) = 0;

  /// Prints one page: measures its blank edges, turns it into dots, saves the two debug images
  /// and passes the dots to doPrintImage.
  /// @param data the page as received: `height` rows of `bytesPerLine` bytes, top row first,
  ///   one byte per pixel, 0 = bare paper; not owned and not changed.
  /// @param width pixels of a row, at most `bytesPerLine`.
  /// A page whose scratch page or page of dots cannot be allocated is dropped: no bytes, no
  /// message, and no debug image of its dots. Throws std::bad_alloc if the halftone method or
  /// the encoder is out of memory.
  void printImage(const unsigned char* data, unsigned long bytesPerLine, unsigned long height,
                  unsigned long width);

  /// Turns a page into dots: tone, orientation, halftone method, negative.
  /// @param type the number of the classic method. Whether the stencil method runs is decided
  ///   by the halftone type of the printer.
  /// @param out `bytesPerLine * height` bytes: the first `width` bytes of each row become 0 or
  ///   255. It may overlap `data`.
  /// A page that is larger than a bitmap can be has no dots and costs one "CRIT:" line. With a
  /// width or height below 1, or rows shorter than `width`, nothing is written.
  /// @return `height * bytesPerLine`.
  long PageProcess(DitherType type, const unsigned char* data, int bytesPerLine, int width,
                   int height, unsigned char* out);

  /// Packs a page of bytes into bits in place, most significant bit first; the pixels to skip
  /// on the right are left out. Each row starts with a new byte. No job calls it.
  /// @return the number of bytes of the packed page.
  int GrayToMono(int bytesPerLine, int height, unsigned char* buffer);

  /// Saves one debug image (printer/debug_image.h) under a name made from `imageFileFormat`.
  /// A file that cannot be opened costs one line. Does nothing while debug images are off.
  /// @param bitsPerPixel 8 for grey levels, 1 for dots.
  void saveImage(const unsigned char* data, unsigned long bytesPerLine, unsigned long height,
                 unsigned long width, unsigned short bitsPerPixel);

  /// The folder of the debug images, which has to exist; an empty text turns them off.
  /// @return false, with debug images off, if the name is too long.
  bool setDebugImageFolder(std::string_view folder);
  bool savesDebugImages() const { return !debugImageFolder_.empty(); }

  void SetPrintWidth(long value) { printWidth_ = value; }
  long GetPrintWidth() const { return printWidth_; }

  /// The header is not copied: it has to exist as long as printImage runs.
  void setPageHeader(cups_page_header2_s* header) { pageHeader_ = header; }
  cups_page_header2_s* getPageHeader() const { return pageHeader_; }

  void setAntiWrinkle(bool value) { antiWrinkle_ = value; }
  bool getAntiWrinkle() const { return antiWrinkle_; }

  void setUseQVDithering(bool value) { useQVDithering_ = value; }
  bool getUseQVDithering() const { return useQVDithering_; }

  void setMaxMediaWidth(int value) { maxMediaWidth_ = value; }
  int getMaxMediaWidth() const { return maxMediaWidth_; }

  void setVBarcodeOpt(int value) { vBarcodeOpt_ = value; }
  int getVBarcodeOpt() const { return vBarcodeOpt_; }

  /// Clamped to -100..100. A positive brightness raises the levels, and a high level is ink.
  void setBrightness(int value);
  int getBrightness() const { return brightness_; }

  /// Clamped to -100..100.
  void setContrast(int value);
  int getContrast() const { return contrast_; }

  /// Decimal text, clamped to 1..15; must not be null.
  void setPrintSpeed(const char* text);
  int getPrintSpeed() const { return printSpeed_; }

  /// Clamped to 0..15.
  void setPrintDensity(int value);
  int getPrintDensity() const { return printDensity_; }

  void setHalftoneType(DitherType type) { halftoneType_ = type; }
  DitherType getHalftoneType() const { return halftoneType_; }

  void setNegativePrint(bool value) { negativePrint_ = value; }
  bool isNegativePrint() const { return negativePrint_; }

  void setRotate180Print(bool value) { rotate180Print_ = value; }
  bool isRotate180Print() const { return rotate180Print_; }

  void setMirrorPrint(bool value) { mirrorPrint_ = value; }
  bool isMirrorPrint() const { return mirrorPrint_; }

  /// The bit of value 2 asks for blank rows to be cut at the top, 8 at the bottom.
  void setRemoveBlankEdges(unsigned char bits) { removeBlankEdges_ = bits; }
  unsigned char getRemoveBlankEdges() const { return removeBlankEdges_; }

  /// Pixels at the right end of each row that are not printed.
  void setSkipRightPixels(unsigned long pixels) { skipRightPixels_ = pixels; }
  unsigned long getSkipRightPixels() const { return skipRightPixels_; }

  void setUserData(UserData* data) { userData_ = data; }
  UserData* getUserData() const { return userData_; }

  /// Asked between the stages of a page and between bands.
  void setCancelCheck(wren::CancelCheck check) { cancelCheck_ = check; }
  bool isCancelled() const { return cancelCheck_.isCancelled(); }

  /// The streams that receive every printer byte, in this order. They are neither owned nor
  /// flushed; a failed write is reported by ferror alone.
  std::list<FILE*>& getOutputStreams() { return outputStreams_; }

  /// The identification text of the engine, a constant of 168 characters.
  const char* getCopyRight() const;

  void printBytes(const unsigned char* bytes, unsigned long count);
  void printStr(const char* text);
  void printByte(unsigned char byte);

  /// @return the result of vfprintf for the last stream, 0 without streams.
  int printFormat(const char* format, ...)
#ifdef __GNUC__
      __attribute__((format(printf, 2, 3)))
#endif
      ;

 protected:
  /// Whether `printImage` may pass a page to `printBands` instead of doPrintImage. It does so
  /// if the rows of the page have no padding and nothing has to be laid out first.
  virtual bool takesBands() const {
    return false;
  }

  /// Writes a page of packed dots as printer commands, those that doPrintImage writes for the
  /// same dots. At least one pixel of a row is not skipped on the right.
  virtual void printBands(const wren::printer::DotBands& /*bands*/) {}

  static constexpr std::size_t kImageFileFormatSize = 1024;

  /// The printf template of the next debug image's path.
  char imageFileFormat[kImageFileFormatSize] = {};

 private:
  // A page and its blank edges. Printed output depends on two things: the counts of the page as
  // received apply to the dots unchanged, rotated or not, and rows are trimmed only if the
  // content ends below its top.
  struct PrintedPage {
    const unsigned char* data;
    unsigned long bytesPerLine;
    unsigned long height;
    unsigned long width;
    unsigned long topBlanks;
    unsigned long bottomBlanks;

    wren::printer::GreyPage levels() const {
      return {data, bytesPerLine, static_cast<std::uint32_t>(width),
              static_cast<std::uint32_t>(height)};
    }
    bool isTrimmed() const { return bottomBlanks > topBlanks; }
    unsigned long firstRow() const { return isTrimmed() ? topBlanks : 0; }
    unsigned long rows() const { return isTrimmed() ? bottomBlanks - topBlanks : height; }
  };

  wren::FileDescriptor openImageFile();
  void savePageImage(const char* name, const unsigned char* data, unsigned long bytesPerLine,
                     unsigned long height, unsigned long width, unsigned short bitsPerPixel);
  void saveBandImage(const wren::printer::DotBands& bands);
  bool canPrintBands(const PrintedPage& page) const;
  void printPackedPage(const PrintedPage& page);
  void printBytePage(const PrintedPage& page);
  void logPage(const PrintedPage& page, const unsigned char* dots) const;

  std::list<FILE*> outputStreams_;
  cups_page_header2_s* pageHeader_ = nullptr;
  int maxMediaWidth_ = 0;
  long printWidth_ = 0;
  int brightness_ = 0;
  int vBarcodeOpt_ = 0;
  int contrast_ = 0;
  int printSpeed_ = 7;
  int printDensity_ = 8;
  DitherType halftoneType_ = None;
  bool negativePrint_ = false;
  bool mirrorPrint_ = false;
  bool rotate180Print_ = false;
  bool antiWrinkle_ = false;
  bool useQVDithering_ = false;
  unsigned char removeBlankEdges_ = 0;
  unsigned long skipRightPixels_ = 0;
  UserData* userData_ = nullptr;
  wren::CancelCheck cancelCheck_;
  std::string debugImageFolder_;
  wren::printer::PageMemory dotsPage_;
  wren::printer::PageMemory dotRows_;
  wren::printer::DotBands bands_;
  wren::printer::PageMemory imageRows_;
};
