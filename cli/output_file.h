// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// Files that appear whole or not at all, and folders that exist while a command works.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace wren::cli {

/// Written beside its target under another name, then renamed. What is not committed is removed.
/// A device or a pipe is written directly.
class OutputFile {
 public:
  /// Throws a Failure with the reason if nothing can be written there.
  explicit OutputFile(std::string target);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  /// Where to write until `commit`.
  const std::string& path() const { return path_; }
  const std::string& target() const { return target_; }

  /// Puts the file in its place. Throws a Failure if that fails.
  void commit();

 private:
  void createBeside(const std::string& place);

  std::string target_;
  std::string place_;  // target_ with symbolic links resolved
  std::string path_;
};

/// A new folder that only this user can enter, removed with its contents at the end.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string pathOf(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

/// The failure of a file that cannot be written, with the reason of `error`.
[[noreturn]] void failToWrite(const std::string& path, int error);

/// A folder with those above it, created as far as they are missing. What was created goes again
/// if it is empty at the end.
class NewFolder {
 public:
  /// Throws a Failure if there is something else or nothing can be created. An empty path is the
  /// current folder.
  explicit NewFolder(const std::string& path);
  ~NewFolder();
  NewFolder(const NewFolder&) = delete;
  NewFolder& operator=(const NewFolder&) = delete;

 private:
  void removeCreated() const;

  std::vector<std::string> created_;  // the inner ones first
};

/// The whole file; throws a Failure if it cannot be read or is longer than `mostBytes`: a device
/// may have no end.
std::string readWholeFile(const std::string& path, std::uintmax_t mostBytes = UINTMAX_MAX);

/// Writes a file through an OutputFile.
void writeWholeFile(const std::string& path, const std::string& bytes);

}  // namespace wren::cli
