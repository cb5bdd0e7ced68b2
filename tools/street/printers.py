# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""The software printers of the street: `wren-preview --listen`, each with its manners."""

import json
import pathlib
import socket
import subprocess
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
_FINISH_SECONDS = 60


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
        """Waits until everything that the printer has received is on paper, and ends it."""
        until = time.monotonic() + _FINISH_SECONDS
        while json.loads(self.tell("status"))["unfinishedJobs"]:
            if time.monotonic() > until:
                raise RuntimeError(f"the printer in {self.folder} does not come to an end")
            time.sleep(0.02)
        self._process.terminate()
        self._process.wait()

    def kill(self):
        self._process.kill()
        self._process.wait()

    def streams(self):
        """What was printed, as bytes, one stream for each connection, in their order."""
        return [path.read_bytes() for path in sorted(self.folder.glob("job-*.prn"))]
