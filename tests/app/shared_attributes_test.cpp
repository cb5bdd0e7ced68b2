// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The attributes of one job and the list of jobs, read by the job's own thread, by clients and by
// the save of the state at once.

#include <cups/array.h>
#include <cups/ipp.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

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

// Looks for one thing after the other until it is told to end; counts what it missed.
class Reader {
 public:
  /// @param finds whether it finds the thing of this number, below kAttributes.
  explicit Reader(std::function<bool(int)> finds)
      : finds_(std::move(finds)), thread_([this] { read(); }) {}
  ~Reader() { end(); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  int end() {
    ends_ = true;
    if (thread_.joinable()) thread_.join();
    return missed_;
  }

 private:
  void read() {
    for (int i = 0; !ends_; i = (i + 1) % kAttributes) {
      if (!finds_(i)) ++missed_;
    }
  }

  std::function<bool(int)> finds_;
  std::atomic<bool> ends_ = false;
  int missed_ = 0;
  std::thread thread_;
};

// Finds what is there, and looks for what is not.
auto findIn(ipp_t* attributes) {
  return [attributes](int number) {
    ippFindAttribute(attributes, "none", IPP_TAG_ZERO);
    return ippFindAttribute(attributes, nameOf(number).c_str(), IPP_TAG_INTEGER) != nullptr;
  };
}

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

// Three threads at once.
void expectNoneMissed(int rounds, const std::function<bool(int)>& finds) {
  Reader first(finds);
  Reader second(finds);
  int missed = 0;
  for (int round = 0; round < rounds; ++round) missed += finds(round % kAttributes) ? 0 : 1;
  EXPECT_EQ(missed, 0);
  EXPECT_EQ(first.end(), 0);
  EXPECT_EQ(second.end(), 0);
}

TEST(SharedAttributesThreads, FindEachWhileOthersFind) {
  const Ipp attributes = jobAttributes();
  expectNoneMissed(500 * kRounds, findIn(attributes.get()));
}

TEST(SharedAttributesThreads, AreSavedWholeWhileTheyAreRead) {
  const TemporaryFolder folder;
  const std::string path = folder.path() / "job.ipp";
  const Ipp attributes = jobAttributes();
  Reader reader(findIn(attributes.get()));
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

struct DeleteArray {
  void operator()(cups_array_t* array) const { cupsArrayDelete(array); }
};

int compareNumbers(void* first, void* second, void* /*data*/) {
  return *static_cast<int*>(first) - *static_cast<int*>(second);
}

class SharedListThreads : public testing::Test {
 protected:
  SharedListThreads() : list_(cupsArrayNew(compareNumbers, nullptr)) {
    for (int i = 0; i < kAttributes; ++i) numbers_.push_back(i);
    for (int& number : numbers_) cupsArrayAdd(list_.get(), &number);
  }

  bool givesByIndex(int index) const {
    return cupsArrayIndex(list_.get(), index) == &numbers_[index];
  }
  bool finds(int number) const {
    int none = kAttributes;
    return cupsArrayFind(list_.get(), &none) == nullptr &&
           cupsArrayFind(list_.get(), &number) == &numbers_[number];
  }

 private:
  std::vector<int> numbers_;
  std::unique_ptr<cups_array_t, DeleteArray> list_;
};

TEST_F(SharedListThreads, GiveEachByItsIndexWhileOthersFind) {
  Reader other([this](int number) { return finds(number); });
  expectNoneMissed(5'000'000, [this](int index) { return givesByIndex(index); });
  EXPECT_EQ(other.end(), 0);
}

}  // namespace
}  // namespace wren_test
