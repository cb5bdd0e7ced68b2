// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The comparison with other printer filters: each of them against the floor program, and the
// filter, without debug images as theirs, against each of them.

#pragma once

#include <map>
#include <string>
#include <vector>

#include "bench/rounds.h"

namespace wren::bench {

class PeerTable {
 public:
  /// @param setup has to exist as long as the table.
  explicit PeerTable(const Setup& setup);

  /// Measures and prints; false, after a message, when a program failed. Without peers it prints
  /// nothing.
  bool run();

 private:
  // CPU time of one round, in the order of the setup's peers and of kHalftones.
  struct Round {
    double floorMs = 0;
    std::vector<double> peerMs;
    std::vector<double> filterMs;
  };

  // Medians over the rounds of one workload.
  struct Result {
    std::vector<double> peerToFloor;
    std::vector<double> peerMs;
    std::vector<std::vector<double>> filterToPeer;  // by halftone and peer
  };

  bool measureRound(const Workload& workload, Round& round) const;
  bool measureWorkload(const Workload& workload);
  void printPeers() const;
  void printFilter() const;

  const Setup& setup_;
  std::vector<Result> results_;  // by workload
};

}  // namespace wren::bench
