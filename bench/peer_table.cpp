// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "bench/peer_table.h"

#include <cstdio>
#include <iterator>

namespace wren::bench {
namespace {

// The time of a run that printed something; negative, after a message, if it did not.
double printingMs(const Command& command) {
  const Usage usage = measure(command);
  if (usage.status == 0 && usage.outBytes > 0) return usage.cpuMs;
  std::fprintf(stderr, "%s on %s: status %d, %lld bytes\n", command.program.c_str(),
               command.raster.c_str(), usage.status, usage.outBytes);
  return -1;
}

// The share of the peer's time below which the filter has to stay; 0 is no goal.
double goalOf(const std::string& peer, Family family) {
  for (const PeerGoal& goal : kPeerGoals) {
    if (peer == goal.name) return family == Family::kStencil ? goal.stencil : goal.classic;
  }
  return 0;
}

// A case as a list over the rounds.
template <typename Round, typename Figure>
double medianOf(const std::vector<Round>& rounds, Figure figure) {
  std::vector<double> values;
  values.reserve(rounds.size());
  for (const Round& round : rounds) values.push_back(figure(round));
  return median(values);
}

}  // namespace

PeerTable::PeerTable(const Setup& setup) : setup_(setup) {}

bool PeerTable::measureRound(const Workload& workload, Round& round) const {
  const std::string name = workload.name;
  round.floorMs = printingMs(commandOf(setup_, setup_.floor, name, optionsOf(Images::kOn)));
  bool allPrinted = round.floorMs >= 0;
  for (const Peer& peer : setup_.peers) {
    Command command = commandOf(setup_, peer.program, name + (peer.bits == "1" ? ".1bit" : ""), "");
    command.ppd = peer.ppd;
    round.peerMs.push_back(printingMs(command));
    allPrinted = allPrinted && round.peerMs.back() >= 0;
  }
  for (const Halftone& halftone : kHalftones) {
    round.filterMs.push_back(
        printingMs(commandOf(setup_, setup_.filter, name, optionsOf(halftone, Images::kOff))));
    allPrinted = allPrinted && round.filterMs.back() >= 0;
  }
  return allPrinted;
}

// The first round warms the caches and is not counted.
bool PeerTable::measureWorkload(const Workload& workload) {
  std::vector<Round> rounds;
  for (int i = 0; i <= setup_.pairs; ++i) {
    if (!measureRound(workload, rounds.emplace_back())) return false;
  }
  rounds.erase(rounds.begin());
  Result& result = results_.emplace_back();
  result.filterToPeer.resize(std::size(kHalftones));
  for (std::size_t p = 0; p < setup_.peers.size(); ++p) {
    const auto peerMs = [p](const Round& round) { return round.peerMs[p]; };
    result.peerMs.push_back(medianOf(rounds, peerMs));
    result.peerToFloor.push_back(
        medianOf(rounds, [&](const Round& round) { return peerMs(round) / round.floorMs; }));
    for (std::size_t h = 0; h < std::size(kHalftones); ++h) {
      result.filterToPeer[h].push_back(
          medianOf(rounds, [&](const Round& round) { return round.filterMs[h] / peerMs(round); }));
    }
  }
  return true;
}

void PeerTable::printPeers() const {
  std::printf("\n| peer |");
  for (const Workload& w : kWorkloads) {
    std::printf(" %s ratio | %s ms | %s Mpx/s |", w.name, w.name, w.name);
  }
  std::printf("\n|---|--:|--:|--:|--:|--:|--:|--:|--:|--:|\n");
  for (std::size_t p = 0; p < setup_.peers.size(); ++p) {
    std::printf("| %s |", setup_.peers[p].name.c_str());
    for (std::size_t w = 0; w < std::size(kWorkloads); ++w) {
      const double ms = results_[w].peerMs[p];
      std::printf(" %.2f | %.1f | %.0f |", results_[w].peerToFloor[p], ms,
                  megapixels(kWorkloads[w], ms));
    }
    std::printf("\n");
  }
}

void PeerTable::printFilter() const {
  std::printf("\nThe filter, debug images off, to each peer:\n\n| method |");
  for (const Workload& workload : kWorkloads) {
    for (const Peer& peer : setup_.peers) {
      std::printf(" %s %s |", workload.name, peer.name.c_str());
    }
  }
  std::printf("\n|---|");
  for (std::size_t i = 0; i < std::size(kWorkloads) * setup_.peers.size(); ++i) std::printf("--:|");
  std::printf("\n");
  for (std::size_t h = 0; h < std::size(kHalftones); ++h) {
    std::printf("| %s |", kHalftones[h].method);
    for (const Result& result : results_) {
      for (std::size_t p = 0; p < setup_.peers.size(); ++p) {
        const double share = result.filterToPeer[h][p];
        const double goal = goalOf(setup_.peers[p].name, kHalftones[h].family);
        std::printf(" %.2f%s |", share, goal > 0 && share >= goal ? " (missed)" : "");
      }
    }
    std::printf("\n");
  }
}

bool PeerTable::run() {
  if (setup_.peers.empty()) return true;
  for (const Workload& workload : kWorkloads) {
    if (!measureWorkload(workload)) return false;
  }
  printPeers();
  printFilter();
  return true;
}

}  // namespace wren::bench
