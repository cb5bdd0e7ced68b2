# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""What a run costs: receipts per second, time to the first byte, whose processor time, memory."""

import collections
import json
import math
import os
import socket
import struct
import subprocess
import sys
import threading

from . import ipp

_OURS = {"rastertowren", "commandtowren", "wren-printer-app"}

# <linux/netlink.h>, <linux/genetlink.h>, <linux/taskstats.h>
_NETLINK_GENERIC, _GENL_ID_CTRL, _CTRL_CMD_GETFAMILY, _CTRL_ATTR_FAMILY_NAME, _CTRL_ATTR_FAMILY_ID = 16, 16, 3, 2, 1
_TASKSTATS_CMD_GET, _REGISTER_CPUMASK, _TYPE_AGGR_PID, _TYPE_STATS = 1, 3, 4, 3
_COMM, _PID, _UTIME = 80, 128, 152  # offsets in struct taskstats; times in microseconds
_RECEIVE_BYTES = 8 << 20


def _attribute(kind, data):
    length = 4 + len(data)
    return struct.pack("HH", length, kind) + data + b"\0" * (-length % 4)


def _attributes(data):
    while len(data) >= 4:
        length, kind = struct.unpack_from("HH", data)
        if length < 4:
            return
        yield kind & 0x3FFF, data[4:length]
        data = data[(length + 3) & ~3:]


class Exits(threading.Thread):
    """The processor time of every process that ends on this machine, from the kernel. Needs root."""

    def __init__(self):
        super().__init__(daemon=True)
        self.records = []  # (pid, parent, name, microseconds)
        self._socket = socket.socket(socket.AF_NETLINK, socket.SOCK_RAW, _NETLINK_GENERIC)
        self._socket.setsockopt(socket.SOL_SOCKET, 33, _RECEIVE_BYTES)  # SO_RCVBUFFORCE
        self._socket.bind((0, 0))
        self._send(_GENL_ID_CTRL, _CTRL_CMD_GETFAMILY, _attribute(_CTRL_ATTR_FAMILY_NAME, b"TASKSTATS\0"))
        answer = dict(_attributes(self._socket.recv(1 << 16)[20:]))
        family = struct.unpack("H", answer[_CTRL_ATTR_FAMILY_ID])[0]
        everywhere = f"0-{os.cpu_count() - 1}\0".encode()
        self._send(family, _TASKSTATS_CMD_GET, _attribute(_REGISTER_CPUMASK, everywhere))
        self.start()

    def _send(self, kind, command, attributes):
        body = struct.pack("BBH", command, 1, 0) + attributes
        self._socket.send(struct.pack("IHHII", 16 + len(body), kind, 1, 1, 0) + body)

    def run(self):
        while True:
            message = self._socket.recv(1 << 16)
            for kind, both in _attributes(message[20:]):
                if kind == _TYPE_AGGR_PID:
                    self.records += [self._record(stats) for kind, stats in _attributes(both) if kind == _TYPE_STATS]

    @staticmethod
    def _record(stats):
        name = stats[_COMM:_COMM + 32].partition(b"\0")[0].decode(errors="replace")
        pid, parent = struct.unpack_from("II", stats, _PID)
        return pid, parent, name, sum(struct.unpack_from("QQ", stats, _UTIME))

    def below(self, ancestor):
        """@return the name of a program -> seconds, of the processes that `ancestor` started"""
        parents = {pid: parent for pid, parent, _, _ in self.records}
        seconds = collections.Counter()
        for pid, _, name, microseconds in self.records:
            seen = set()
            while pid in parents and pid not in seen:
                seen.add(pid)
                pid = parents[pid]
                if pid == ancestor:
                    seconds[name] += microseconds / 1e6
                    break
        return seconds


def own_seconds(pid):
    """The processor time of a process that runs, all its threads."""
    with open(f"/proc/{pid}/stat", encoding="ascii", errors="replace") as stat:
        fields = stat.read().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def own_bytes(pid):
    """The memory that belongs to a process alone."""
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as rollup:
        lines = dict(line.split(":", 1) for line in rollup if ":" in line)
    return sum(int(lines[name].split()[0]) * 1024 for name in ("Private_Dirty", "Private_Clean"))


class RelayProcess:
    """The relay between the shell and the printers."""

    def __init__(self, ports):
        self._process = subprocess.Popen(
            [sys.executable, "-B", "-m", "street.relay", *map(str, ports)],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.ports = [int(self._process.stdout.readline()) for _ in ports]

    def finish(self):
        """@return for each printer the times at which its jobs began"""
        self._process.stdin.close()
        times = [json.loads(self._process.stdout.readline()) for _ in self.ports]
        self._process.wait()
        return times


class Measurement:
    """Of one run: made when the shell runs and has no till yet."""

    def __init__(self, shell, server_is_ours):
        self._shell, self._server_is_ours = shell, server_is_ours
        self._empty_bytes = own_bytes(shell.pid)
        self._exits = Exits()

    def attach(self, printers):
        """@return the ports that the shell prints to"""
        self._relay = RelayProcess([printer.port for printer in printers])
        return self._relay.ports

    def begin(self):
        self._idle_bytes = own_bytes(self._shell.pid)
        self._server_seconds = own_seconds(self._shell.pid)
        self._exits.records.clear()

    def end(self):
        """When all jobs have ended, before the shell does."""
        self._server_seconds = own_seconds(self._shell.pid) - self._server_seconds
        self._programs = self._exits.below(self._shell.pid)

    def close(self):
        """When the printers have printed all."""
        self._times = self._relay.finish()

    def figures(self, sent, pieces, seconds, tills):
        waits = first_byte_seconds(sent, pieces, self._times)
        costs = shares(self._programs, self._server_seconds, self._server_is_ours)
        done = len(waits)
        return {
            "receipts per second": round(done / seconds, 2),
            "first byte ms, median": round(1000 * percentile(waits, 0.5), 1),
            "first byte ms, 99 %": round(1000 * percentile(waits, 0.99), 1),
            **{f"processor ms per receipt, {whose}": round(1000 * cost / done, 2) for whose, cost in costs.items()},
            "processor ms per receipt, by program": {
                name: round(1000 * cost / done, 2) for name, cost in
                [("the server", self._server_seconds), *self._programs.most_common()] if cost / done > 1e-5},
            "kB per idle till": round((self._idle_bytes - self._empty_bytes) / tills / 1000, 1),
            "kB of the server without tills": round(self._empty_bytes / 1000),
        }


def percentile(values, share):
    ordered = sorted(values)
    return ordered[max(0, math.ceil(share * len(ordered)) - 1)]


def first_byte_seconds(sent, pieces, times):
    """From the request of a job to its first byte at the printer, for each that completed.

    The pieces of a till come in the order in which their first bytes came.
    """
    asked = {job.plan.number: job.asked_at for job in sent if job.state and job.state.state == ipp.COMPLETED}
    seconds, at = [], collections.Counter()
    for piece in pieces:
        began = times[piece.till][at[piece.till]]
        at[piece.till] += 1
        if piece.number in asked:
            seconds.append(began - asked[piece.number])
    return seconds


def shares(by_program, server_seconds, server_is_ours):
    """@return seconds of: ours, scheduler, renderers (all other programs that the shell starts)"""
    ours = sum(seconds for name, seconds in by_program.items() if name[:15] in {n[:15] for n in _OURS})
    others = sum(by_program.values()) - ours
    if server_is_ours:
        return {"ours": ours + server_seconds, "scheduler": 0.0, "renderers": others}
    return {"ours": ours, "scheduler": server_seconds, "renderers": others}
