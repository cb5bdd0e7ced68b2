# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""The software printers of the street: `wren-preview --listen`, each with its manners."""

import json
import pathlib
import socket
import re
import subprocess
import threading
import time

# What a printer is told at its start, and what happens to it later: (seconds between two
# incidents, command, seconds until its end, command that ends it).
MANNERS = {
    "fast": ([], None),
    "serial": (["baud 115200", "buffer 4"], None),
    "paper": ([], (6, "paper out", 3, "paper ok")),
    "vanishing": ([], (8, "vanish", 3, "return")),
    "resetting": (["baud 230400"], (5, "reset", 0, None)),
    "slow-accept": (["accept-delay 700"], None),
}
_FINISH_SECONDS = 900
# What a printer says about a job whose connection it broke itself.
_BROKEN = re.compile(r"(job-\d+\.prn): .*cut short: the printer (?:reset the connection|vanished)")


class Printer:
    def __init__(self, program, folder, manner):
        self.manner = manner
        self.folder = pathlib.Path(folder)
        self.folder.mkdir(parents=True)
        start, self.incident = MANNERS[manner]
        faults = [word for command in start for word in ("--fault", command)]
        self._process = subprocess.Popen(
            [program, "--listen", "127.0.0.1:0", "--control", "127.0.0.1:0", "--directory", folder,
             "--max-seconds", "86400", *faults],
            stdout=subprocess.PIPE, stderr=open(self.folder / "messages", "w"), text=True)
        self.port = self._port_in("listening on ")
        self._control = socket.create_connection(("127.0.0.1", self._port_in("control on ")))
        self._answers = self._control.makefile("r")
        self._broken = set()
        self._listener = threading.Thread(target=self._listen, daemon=True)
        self._listener.start()

    # A printer that nobody listens to stands still once the pipe is full.
    def _listen(self):
        for line in self._process.stdout:
            found = _BROKEN.search(line)
            if found:
                self._broken.add(found[1])

    def _port_in(self, words):
        line = self._process.stdout.readline()
        if not line.startswith(words):
            raise RuntimeError(f"a printer does not start: '{line.strip()}'")
        return int(line.rsplit(":", 1)[1])

    def tell(self, command):
        self._control.sendall(command.encode() + b"\n")
        answer = self._answers.readline().strip()
        if answer.startswith("error"):
            raise RuntimeError(f"a printer refuses '{command}': {answer}")
        return answer

    def finish(self):
        """Waits until everything that was sent to the printer is on paper, and ends it."""
        until = time.monotonic() + _FINISH_SECONDS
        self._wait_for_earlier_connections()
        while not self._has_printed_all():
            if time.monotonic() > until:
                raise RuntimeError(f"the printer in {self.folder} does not come to an end")
            time.sleep(0.02)
        self._process.terminate()
        self._process.wait()
        self._listener.join()

    # Connections that wait for the printer to accept them are taken in their order, so it closes
    # this one after them.
    def _wait_for_earlier_connections(self):
        with socket.create_connection(("127.0.0.1", self.port), _FINISH_SECONDS) as last:
            last.shutdown(socket.SHUT_WR)
            last.recv(1)

    def _has_printed_all(self):
        status = json.loads(self.tell("status"))
        return not status["unfinishedJobs"] and status["storedJobs"] >= len(self._files())

    def kill(self):
        self._process.kill()
        self._process.wait()

    def streams(self):
        """What was printed: for each connection, in their order, the bytes and whether the printer
        broke it."""
        return [(path.read_bytes(), path.name in self._broken) for path in self._files()]

    def _files(self):
        return sorted(self.folder.glob("job-*.prn"), key=lambda path: int(path.stem.partition("-")[2]))
