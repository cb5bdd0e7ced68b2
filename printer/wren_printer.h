// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The abstract printer: the options of a page, the streams that receive every
// printer byte, and the way of a page from grey levels to dots. How dots become
// printer commands is left to a subclass.
#pragma once

#include <cups/raster.h>

#include <csignal>
#include <cstdio>
#include <list>

#include "common/halftone_type.h"
#include "printer/page_memory.h"

class WrenPrinter {
 public:
  /// The caller's own data; never looked at here.
  struct UserData;

  /// A printer whose only stream is standard output.
  WrenPrinter();
  WrenPrinter(const WrenPrinter&) = delete;
  WrenPrinter& operator=(const WrenPrinter&) = delete;
  /// Closes no stream.
  virtual ~WrenPrinter();

  /// Writes a page of dots as printer commands.
  /// @param data rows of bytes; 0 is no dot, everything else a dot.
  virtual void doPrintImage(const unsigned char* data, unsigned long bytesPerLine,
                            unsigned long height, unsigned long width) = 0;

  /// Prints one page: measures its blank edges, makes dots of it, writes the two
  /// debug images and hands the dots to doPrintImage.
  /// @param data the page as received, height rows of bytesPerLine bytes, top row
  ///   first, one byte a pixel, 0 = bare paper; not owned and not changed.
  /// @param width pixels of a row, at most bytesPerLine.
  /// A page whose scratch buffer cannot be allocated leaves no trace. Throws
  /// std::bad_alloc when the stencil method or the encoder finds no memory.
  void printImage(const unsigned char* data, unsigned long bytesPerLine, unsigned long height,
                  unsigned long width);

  /// Makes dots of a page: tone, orientation, halftone method, negative.
  /// @param type the method number of the classic methods; whether the stencil
  ///   method runs is decided by the object's own halftone type.
  /// @param out bytesPerLine * height bytes; the first width bytes of each row
  ///   are written with 0 or 255 (with any level when no method could run).
  /// @return height * bytesPerLine.
  long PageProcess(DitherType type, const unsigned char* data, int bytesPerLine, int width,
                   int height, unsigned char* out);

  /// Packs a page of bytes into bits in place, most significant bit first; the
  /// pixels to skip on the right are left out. Each row starts a new byte.
  /// @return the number of bytes that the packed page takes.
  int GrayToMono(int bytesPerLine, int height, unsigned char* buffer);

  /// Writes one debug image; see printer/image_dump.h. A file that cannot be
  /// opened costs one line on standard error.
  /// @param bitsPerPixel 8 for grey levels, 1 for dots.
  void saveImage(const unsigned char* data, unsigned long bytesPerLine, unsigned long height,
                 unsigned long width, unsigned short bitsPerPixel);

  void SetPrintWidth(long value) { printWidth = value; }
  long GetPrintWidth() const { return printWidth; }

  /// The header is not copied: it has to live as long as printImage runs.
  void setPageHeader(cups_page_header2_s* header) { pageHeader = header; }
  cups_page_header2_s* getPageHeader() const { return pageHeader; }

  void setAntiWrinkle(bool value) { antiWrinkle = value; }
  bool getAntiWrinkle() const { return antiWrinkle; }

  void setUseQVDithering(bool value) { useQVDithering = value; }
  bool getUseQVDithering() const { return useQVDithering; }

  void setMaxMediaWidth(int value) { maxMediaWidth = value; }
  int getMaxMediaWidth() const { return maxMediaWidth; }

  void setVBarcodeOpt(int value) { vBarcodeOpt = value; }
  int getVBarcodeOpt() const { return vBarcodeOpt; }

  /// Clamped to -100..100. A positive brightness raises the levels, and a high
  /// level is ink.
  void setBrightness(int value);
  int getBrightness() const { return brightness; }

  /// Clamped to -100..100.
  void setContrast(int value);
  int getContrast() const { return contrast; }

  /// Decimal text, clamped to 1..15; must not be null.
  void setPrintSpeed(const char* text);
  int getPrintSpeed() const { return printSpeed; }

  /// Clamped to 0..15.
  void setPrintDensity(int value);
  int getPrintDensity() const { return printDensity; }

  void setHalftoneType(DitherType type) { halftoneType = type; }
  DitherType getHalftoneType() const { return halftoneType; }

  void setNegativePrint(bool value) { negativePrint = value; }
  bool isNegativePrint() const { return negativePrint; }

  void setRotate180Print(bool value) { rotate180Print = value; }
  bool isRotate180Print() const { return rotate180Print; }

  void setMirrorPrint(bool value) { mirrorPrint = value; }
  bool isMirrorPrint() const { return mirrorPrint; }

  /// Bit 2 asks for blank rows to be cut at the top, bit 8 at the bottom.
  void setRemoveBlankEdges(unsigned char bits) { removeBlankEdges = bits; }
  unsigned char getRemoveBlankEdges() const { return removeBlankEdges; }

  /// Pixels at the right end of each row that are not printed.
  void setSkipRightPixels(unsigned long pixels) { skipRightPixels = pixels; }
  unsigned long getSkipRightPixels() const { return skipRightPixels; }

  void setUserData(UserData* data) { userData = data; }
  UserData* getUserData() const { return userData; }

  /// A flag that somebody else sets once the job is cancelled; null for none. It
  /// is looked at between the stages of a page and between bands. Not owned.
  void setCancelFlag(const volatile std::sig_atomic_t* flag) { cancelFlag = flag; }
  bool isCancelled() const { return cancelFlag != nullptr && *cancelFlag != 0; }

  /// The streams that receive every printer byte, in this order. They are neither
  /// owned nor flushed; a failed write shows in ferror alone.
  std::list<FILE*>& getOutputStreams() { return outputStreams; }

  /// The identification text of the engine, a constant of 168 characters.
  const char* getCopyRight() const;

  void printBytes(const unsigned char* bytes, unsigned long count);
  void printStr(const char* text);
  void printByte(unsigned char byte);

  /// @return what vfprintf gave for the last stream, 0 without streams.
  int printFormat(const char* format, ...)
#ifdef __GNUC__
      __attribute__((format(printf, 2, 3)))
#endif
      ;

 protected:
  static constexpr std::size_t kImageFileFormatSize = 1024;

  /// The template of the next debug image's path.
  char imageFileFormat[kImageFileFormatSize] = {};

 private:
  void useImageFileFormat(const char* format);
  void printDots(const unsigned char* dots, unsigned long bytesPerLine, unsigned long height,
                 unsigned long width, unsigned long topBlanks, unsigned long bottomBlanks);

  std::list<FILE*> outputStreams;
  cups_page_header2_s* pageHeader = nullptr;
  int maxMediaWidth = 0;
  long printWidth = 0;
  int brightness = 0;
  int vBarcodeOpt = 0;
  int contrast = 0;
  int printSpeed = 7;
  int printDensity = 8;
  DitherType halftoneType = None;
  bool negativePrint = false;
  bool mirrorPrint = false;
  bool rotate180Print = false;
  bool antiWrinkle = false;
  bool useQVDithering = false;
  unsigned char removeBlankEdges = 0;
  unsigned long skipRightPixels = 0;
  UserData* userData = nullptr;
  const volatile std::sig_atomic_t* cancelFlag = nullptr;
  PageMemory dotsPage;
  PageMemory dumpRows;
};
