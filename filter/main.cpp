// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
// The process: its descriptors, its way out without memory, and the signal that
// cancels a job. Everything else is in filter_run.
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

#include "filter/filter_run.h"

namespace {

volatile std::sig_atomic_t cancelRequested = 0;
volatile std::sig_atomic_t jobHasBegun = 0;
int wakeUpPipe[2] = {-1, -1};

// Only what a signal handler may do: a flag, and a byte that ends a wait for input. Before
// the first printer byte the process may be waiting where neither is looked at: for the
// writer of a pipe that it opens, or in the CUPS library for a PPD.
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

// Otherwise the next file to be opened would take the place of a closed stream, and
// printer bytes or messages would land in it.
void openClosedDescriptors() {
  int descriptor = 0;
  do {
    descriptor = open("/dev/null", O_RDWR);
  } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
  if (descriptor >= 0) close(descriptor);
}

// Left to itself the C library keeps blocks of any size it has seen once in its heap, and
// the holes between them add up to pages of memory from the second page on.
void giveLargeBlocksBack() {
#ifdef __GLIBC__
  constexpr int kLargestHeapBlock = 4 << 20;
  constexpr int kLargestSpareHeap = 8 << 20;
  mallopt(M_MMAP_THRESHOLD, kLargestHeapBlock);
  mallopt(M_TRIM_THRESHOLD, kLargestSpareHeap);
#endif
}

// Complete commands that are already on their way still reach the printer.
void endWithoutMemory() {
  constexpr char kMessage[] = "ERROR:Out of memory\n";
  static_cast<void>(!write(STDERR_FILENO, kMessage, sizeof kMessage - 1));
  std::exit(EXIT_FAILURE);
}

}  // namespace

int main(int argc, char** argv) {
  static char outputBuffer[1 << 16];
  installTermination();
  std::signal(SIGXFSZ, SIG_IGN);  // an image beyond a limit is cut short, as on a full disk
  openClosedDescriptors();
  openWakeUpPipe();
  giveLargeBlocksBack();
  std::set_new_handler(endWithoutMemory);
  std::setvbuf(stdout, outputBuffer, _IOFBF, sizeof outputBuffer);
  return runFilter(argc, argv, {&cancelRequested, wakeUpPipe[0], &jobHasBegun});
}
