// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A job received from a connection: written to a .prn file and decoded while it
// arrives, rendered as a .png file at its end.

#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "common/cancel_check.h"
#include "common/handles.h"
#include "escpos/reader.h"
#include "preview/options.h"

namespace wren::preview {

/// Existing files are never overwritten, whether an earlier run or another program made them.
class ReceivedJob {
 public:
  /// Creates "job-NNNN.prn" with the first number from `number` on that neither a stream nor a
  /// picture has.
  /// @param options must outlive the job.
  /// @param number becomes the number after the one used.
  ReceivedJob(const Options& options, unsigned& number);

  /// The last error of the file; empty if there was none.
  const std::string& error() const { return error_; }

  /// Stores and decodes the next bytes.
  void take(std::span<const std::uint8_t> bytes);

  /// Writes what the stream's file has not got yet, so that others can read it while the job waits.
  void flush();

  /// The last bytes were taken: closes the .prn file.
  void endStream();

  /// Memory of its paper, about.
  std::uint64_t paperBytes() const { return reader_.printer().paperBytes(); }

  /// "job-0001.prn: 12345 bytes, 80.1 mm so far".
  std::string progress() const;

  /// Writes the picture and prints problems on standard error, after `endStream`.
  /// @param ending why the job ended early, or empty.
  /// @param cancel stops the drawing of a picture that takes long.
  /// @return the line about the job: file, summary, number of problems, ending, pictures, errors.
  std::string finish(const std::string& ending, CancelCheck cancel);

 private:
  void createFile(unsigned& number);

  const Options& options_;
  std::string path_;
  FilePtr file_;
  std::string error_;
  escpos::Reader reader_;
  std::uint64_t bytesTaken_ = 0;
};

}  // namespace wren::preview
