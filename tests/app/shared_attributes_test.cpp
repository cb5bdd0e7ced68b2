// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The attributes of one job, read by its own thread, by clients and by the save of the state at
// once.

#include <cups/ipp.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include "tests/support/temporary_folder.h"

namespace wren_test {
namespace {

constexpr int kAttributes = 40;
constexpr int kRounds = 500;

struct DeleteIpp {
  void operator()(ipp_t* attributes) const { ippDelete(attributes); }
};
using Ipp = std::unique_ptr<ipp_t, DeleteIpp>;

std::string nameOf(int number) {
  return "option-" + std::to_string(number);
}

Ipp jobAttributes() {
  Ipp attributes(ippNew());
  for (int i = 0; i < kAttributes; ++i) {
    ippAddInteger(attributes.get(), IPP_TAG_JOB, IPP_TAG_INTEGER, nameOf(i).c_str(), i);
  }
  return attributes;
}

// Looks for what is there and what is not, until it is told to end; counts what it missed.
class Reader {
 public:
  explicit Reader(ipp_t* attributes) : thread_([this, attributes] { read(attributes); }) {}
  ~Reader() { end(); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  int end() {
    ends_ = true;
    if (thread_.joinable()) thread_.join();
    return missed_;
  }

 private:
  void read(ipp_t* attributes) {
    for (int i = 0; !ends_; i = (i + 1) % kAttributes) {
      if (ippFindAttribute(attributes, nameOf(i).c_str(), IPP_TAG_INTEGER) == nullptr) ++missed_;
      ippFindAttribute(attributes, "none", IPP_TAG_ZERO);
    }
  }

  std::atomic<bool> ends_ = false;
  int missed_ = 0;
  std::thread thread_;
};

int countIn(const std::string& path) {
  const Ipp attributes(ippNew());
  const int file = ::open(path.c_str(), O_RDONLY);
  ippReadFile(file, attributes.get());
  ::close(file);
  int count = 0;
  for (ipp_attribute_t* attribute = ippFirstAttribute(attributes.get()); attribute != nullptr;
       attribute = ippNextAttribute(attributes.get())) {
    count += ippGetName(attribute) != nullptr ? 1 : 0;
  }
  return count;
}

TEST(SharedAttributesThreads, FindEachWhileOthersFind) {
  const Ipp attributes = jobAttributes();
  Reader first(attributes.get());
  Reader second(attributes.get());
  int missed = 0;
  for (int round = 0; round < 500 * kRounds; ++round) {
    const std::string name = nameOf(round % kAttributes);
    missed += ippFindAttribute(attributes.get(), name.c_str(), IPP_TAG_INTEGER) == nullptr ? 1 : 0;
  }
  EXPECT_EQ(missed, 0);
  EXPECT_EQ(first.end(), 0);
  EXPECT_EQ(second.end(), 0);
}

TEST(SharedAttributesThreads, AreSavedWholeWhileTheyAreRead) {
  const TemporaryFolder folder;
  const std::string path = folder.path() / "job.ipp";
  const Ipp attributes = jobAttributes();
  Reader reader(attributes.get());
  int whole = 0;
  for (int round = 0; round < kRounds; ++round) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    EXPECT_EQ(ippWriteFile(file, attributes.get()), IPP_STATE_DATA);
    ::close(file);
    whole += countIn(path) == kAttributes ? 1 : 0;
  }
  EXPECT_EQ(whole, kRounds);
  EXPECT_EQ(reader.end(), 0);
}

}  // namespace
}  // namespace wren_test
