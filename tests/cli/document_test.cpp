// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/document.h"

#include <gtest/gtest.h>

#include "cli/failure.h"
#include "tests/support/temporary_folder.h"

namespace wren::cli {
namespace {

struct Sample {
  const char* what;
  std::string bytes;
  const char* type;
};

const Sample kSamples[] = {
    {"PDF", "%PDF-1.7\n", "application/pdf"},
    {"PNG", "\x89PNG\r\n\x1a\nrest", "image/png"},
    {"JPEG", "\xFF\xD8\xFF\xE0", "image/jpeg"},
    {"text", "two\tcolumns\r\nand a form feed\f\v", "text/plain"},
    {"UTF-8", "caf\xC3\xA9 \xE2\x82\xAC 5\n", "text/plain"},
    {"a zero byte", std::string("a\0b", 3), ""},
    {"an escape", "\x1b[31mred", ""},
    {"a delete", "a\x7F", ""},
    {"a bell before the tabulator", "a\b", ""},
    {"a byte after the carriage return", "a\x0E", ""},
    {"the last control character", "a\x1F", ""},
    {"the first and the last letter", " ~", "text/plain"},
    {"the first byte that is no ASCII", "\x80", "text/plain"},
    {"PDF that does not begin the file", " %PDF-1.7\n", "text/plain"},
    {"a PNG signature after 64 kB", std::string(65536, 'a') + "\xFF\xD8\xFF", "text/plain"},
    {"half a PNG signature", "\x89PNG\r\n", "text/plain"},
    {"a zero byte after 100 kB", std::string(100'000, 'a') + '\0', ""},
    {"nothing", "", ""},
};

TEST(DocumentType, IsFoundByTheContents) {
  const wren_test::TemporaryFolder folder;
  for (const Sample& sample : kSamples) {
    const std::string path = folder.write("document.bin", sample.bytes);
    EXPECT_EQ(documentType(path), sample.type) << sample.what;
  }
}

TEST(CheckDocument, SaysWhatIsWrong) {
  const wren_test::TemporaryFolder folder;
  const std::string empty = folder.write("empty", "");
  const std::string binary = folder.write("binary", std::string("\0", 1));
  const std::string gone = (folder.path() / "gone.pdf").string();
  const std::pair<std::string, std::string> kCases[] = {
      {gone, "there is no file '" + gone + "'"},
      {folder.path(), "'" + folder.path().string() + "' is not a file"},
      {empty, "'" + empty + "' is empty"},
      {binary, "'" + binary + "' is neither PDF, PNG, JPEG nor text"},
      {"/dev/null", "'/dev/null' is not a file"},
  };
  for (const auto& [path, words] : kCases) {
    try {
      checkDocument(path);
      ADD_FAILURE() << "no failure: " << path;
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.status(), kDocument);
      EXPECT_EQ(failure.what(), words);
    }
  }
}

TEST(KeepDocument, SaysWhichResultItIs) {
  const wren_test::TemporaryFolder folder;
  const std::string path = folder.write("logo.png", "x");
  const std::string other = folder.path().string() + "/./logo.png";
  try {
    keepDocument(path, other);
    FAIL() << "no failure";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.status(), kUsage);
    EXPECT_EQ(failure.what(),
              "'" + other + "' is the document itself; nothing may be written there");
  }
}

TEST(KeepDocument, KnowsAFileByAnyOfItsNames) {
  const wren_test::TemporaryFolder folder;
  const std::string path = folder.write("logo.png", "x");
  const std::string link = (folder.path() / "link").string();
  std::filesystem::create_symlink(path, link);
  EXPECT_THROW(keepDocument(path, path), Failure);
  EXPECT_THROW(keepDocument(path, link), Failure);
  EXPECT_THROW(keepDocument(path, folder.path().string() + "/../" +
                                      folder.path().filename().string() + "/logo.png"),
               Failure);
  keepDocument(path, (folder.path() / "other.png").string());
}

TEST(DocumentStem, HasNoFoldersAndNoExtension) {
  EXPECT_EQ(documentStem("/a/b/a receipt.pdf"), "a receipt");
  EXPECT_EQ(documentStem("order"), "order");
  EXPECT_EQ(documentStem("a.b.txt"), "a.b");
}

}  // namespace
}  // namespace wren::cli
