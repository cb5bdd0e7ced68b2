# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""The process of a shell: started, awaited, ended."""

import subprocess
import time

_START_SECONDS = 30


class ServerProcess:
    _process = None

    def _launch(self, command, answers, log, **how):
        """Returns when answers() holds; `log` is the file that tells why it never did."""
        self._process = subprocess.Popen(command, stdin=subprocess.DEVNULL, **how)
        for _ in range(_START_SECONDS * 20):
            if answers():
                return
            if self._process.poll() is not None:
                break
            time.sleep(0.05)
        raise RuntimeError(f"{command[0]} does not start: see {log}")

    @property
    def pid(self):
        return self._process.pid

    def stop(self, signal):
        """The server alone gets the signal; its filters live on, as after a crash."""
        self._process.send_signal(signal)
        self._process.wait()

    def kill(self):
        """For the end of a run that failed. Harmless if it has ended."""
        if self._process:
            self._process.kill()
            self._process.wait()
