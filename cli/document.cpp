// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/document.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>

#include "cli/failure.h"
#include "common/handles.h"

namespace wren::cli {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kText = "text/plain";

struct Signature {
  std::string_view bytes;
  std::string_view type;
};
constexpr std::array<Signature, 3> kSignatures = {{
    {"%PDF", "application/pdf"},
    {"\x89PNG\r\n\x1a\n", "image/png"},
    {"\xFF\xD8\xFF", "image/jpeg"},
}};

// Bytes from 0x80 on are letters of one encoding or another.
bool isTextByte(unsigned char byte) {
  return byte >= 0x80 || (byte >= 0x20 && byte < 0x7F) || (byte >= '\t' && byte <= '\r');
}

}  // namespace

std::string_view documentType(const std::string& path) {
  const FilePtr file(std::fopen(path.c_str(), "rb"));
  if (file == nullptr) return {};
  std::array<char, 65536> buffer;
  bool first = true;
  for (;;) {
    const std::string_view part(buffer.data(),
                                std::fread(buffer.data(), 1, buffer.size(), file.get()));
    if (part.empty()) return first || std::ferror(file.get()) != 0 ? "" : kText;
    for (const Signature& signature : kSignatures) {
      if (first && part.starts_with(signature.bytes)) return signature.type;
    }
    if (!std::all_of(part.begin(), part.end(), isTextByte)) return {};
    first = false;
  }
}

std::string_view checkDocument(const std::string& path) {
  const std::string name = "'" + path + "'";
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) throw Failure(kDocument, "there is no file " + name);
  if (!S_ISREG(status.st_mode)) throw Failure(kDocument, name + " is not a file");
  if (access(path.c_str(), R_OK) != 0) throw Failure(kDocument, name + " cannot be read");
  if (status.st_size == 0) throw Failure(kDocument, name + " is empty");
  const std::string_view type = documentType(path);
  if (type.empty()) throw Failure(kDocument, name + " is neither PDF, PNG, JPEG nor text");
  return type;
}

void keepDocument(const std::string& document, const std::string& result) {
  std::error_code ignored;
  if (!fs::equivalent(document, result, ignored)) return;
  throw Failure(kUsage, "'" + result + "' is the document itself; nothing may be written there");
}

std::string documentStem(const std::string& path) {
  return fs::path(path).stem().string();
}

}  // namespace wren::cli
