# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""The second shell: the printer application with a printer for each till."""

import os
import pathlib
import socket
import subprocess

from . import documents
from .ipp import Client
from .server_process import ServerProcess

FORMATS = (documents.PDF, documents.PNG, documents.JPEG, documents.TEXT, documents.PWG, documents.URF)
# A job that has begun is never printed again, and none that is called completed is lost.
MAY_PRINT_AGAIN = frozenset()
MAY_LOSE = frozenset()


class AppShell(ServerProcess):
    name = "app"

    def __init__(self, build, folder, port):
        self._program = str(pathlib.Path(build) / "app" / "wren-printer-app")
        self._folder, self.port = pathlib.Path(folder), port

    def client(self, till, user):
        return Client("127.0.0.1", self.port, f"/ipp/print/till{till}", user)

    def add_till(self, till, printer_port):
        self._run("add", "-d", f"till{till}", "-m", "wren80", "-v", f"socket://127.0.0.1:{printer_port}",
                  "-o", "halftone-type=threshold")

    def start(self):
        self._folder.mkdir(parents=True, exist_ok=True)
        with open(self._folder / "log", "a", encoding="utf-8") as log:
            self._launch(
                [self._program, "server", "-o", f"server-port={self.port}",
                 "-o", f"state-directory={self._folder / 'state'}", "-o", "log-file=-"],
                self._answers, log.name, stdout=log, stderr=log, env=self._environment())

    # A server of root has its socket below SNAP_COMMON, one of a user below TMPDIR.
    def _environment(self):
        return {**os.environ, "TMPDIR": str(self._folder), "SNAP_COMMON": str(self._folder), "HOME": str(self._folder)}

    def _socket(self):
        user = "" if os.geteuid() == 0 else str(os.geteuid())
        return self._folder / f"wren-printer-app{user}.sock"

    # Sub-commands that find nobody at the socket would start a server of their own.
    def _answers(self):
        with socket.socket(socket.AF_UNIX) as client:
            return client.connect_ex(str(self._socket())) == 0

    def _run(self, *command):
        done = subprocess.run([self._program, *command], env=self._environment(), check=False,
                              capture_output=True, text=True, timeout=60)
        if done.returncode != 0:
            raise RuntimeError(f"wren-printer-app {command[0]} fails: {done.stderr.strip()}")
