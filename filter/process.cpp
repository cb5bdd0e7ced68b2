// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "filter/process.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace wren::filter {
namespace {

volatile std::sig_atomic_t cancelRequested = 0;
volatile std::sig_atomic_t jobHasBegun = 0;
int wakeUpPipe[2] = {-1, -1};

// Does only what a signal handler may do: sets a flag, and writes a byte that ends a wait for
// input. Before the first printer byte the process may block where neither is looked at: in an
// open of a pipe, or in the CUPS library on a PPD.
extern "C" void onTermination(int /*signal*/) {
  if (jobHasBegun == 0) _exit(EXIT_SUCCESS);
  const int reason = errno;
  cancelRequested = 1;
  static_cast<void>(!write(wakeUpPipe[1], "", 1));
  errno = reason;
}

void setFlags(int descriptor) {
  fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
  fcntl(descriptor, F_SETFD, FD_CLOEXEC);
}

void openWakeUpPipe() {
  if (pipe(wakeUpPipe) != 0) return;
  setFlags(wakeUpPipe[0]);
  setFlags(wakeUpPipe[1]);
}

void installTermination() {
  struct sigaction action = {};
  action.sa_handler = onTermination;
  action.sa_flags = SA_RESTART;
  sigaction(SIGTERM, &action, nullptr);
}

// Otherwise the next file to be opened would get the descriptor of a closed stream, and printer
// bytes or messages would be written to it.
void openClosedDescriptors() {
  int descriptor = 0;
  do {
    descriptor = open("/dev/null", O_RDWR);
  } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
  if (descriptor >= 0) close(descriptor);
}

// By default the C library keeps large blocks in its heap once it has seen their size. The
// fragmentation would cost the memory of several pages from the second page on.
void returnLargeBlocks() {
#ifdef __GLIBC__
  constexpr int kLargestHeapBlock = 4 << 20;
  constexpr int kLargestSpareHeap = 8 << 20;
  mallopt(M_MMAP_THRESHOLD, kLargestHeapBlock);
  mallopt(M_TRIM_THRESHOLD, kLargestSpareHeap);
#endif
}

// Commands that are complete in the buffer are still sent.
void exitOutOfMemory() {
  constexpr char kMessage[] = "ERROR:Out of memory\n";
  static_cast<void>(!write(STDERR_FILENO, kMessage, sizeof kMessage - 1));
  std::exit(EXIT_FAILURE);
}

}  // namespace

CancelSignal prepareProcess() {
  static char outputBuffer[1 << 16];
  installTermination();
  std::signal(SIGXFSZ, SIG_IGN);  // a debug image over a size limit is cut short, as on a full disk
  openClosedDescriptors();
  openWakeUpPipe();
  returnLargeBlocks();
  std::set_new_handler(exitOutOfMemory);
  std::setvbuf(stdout, outputBuffer, _IOFBF, sizeof outputBuffer);
  return {&cancelRequested, wakeUpPipe[0], &jobHasBegun};
}

}  // namespace wren::filter
