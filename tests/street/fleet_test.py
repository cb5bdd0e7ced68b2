#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""The recipes of docs/FLEET.md for several machines, with a scheduler of its own for each.

fleet_test.py ROOT BUILD [UNITTEST-ARGUMENT...]
"""

import pathlib
import shutil
import signal
import socket
import sys
import tempfile
import time
import unittest

_ROOT, _BUILD = pathlib.Path(sys.argv.pop(1)), pathlib.Path(sys.argv.pop(1))
sys.path.insert(0, str(_ROOT / "tools"))

try:
    import PIL  # noqa: F401
except ModuleNotFoundError:
    print("skipped: python3-pil is not installed")
    sys.exit(77)
if not shutil.which("cupsd", path="/usr/sbin:/usr/bin"):
    print("skipped: there is no scheduler")
    sys.exit(77)

from street import documents, ipp, paper  # noqa: E402
from street.app_shell import AppShell  # noqa: E402
from street.cups_shell import CupsShell  # noqa: E402
from street.printers import Printer  # noqa: E402

_PREVIEW = str(_BUILD / "preview" / "wren-preview")
_SECONDS = 120


def _free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Fleet(unittest.TestCase):
    def setUp(self):
        self._folder = pathlib.Path(tempfile.mkdtemp(prefix="wren-fleet."))
        self._folder.chmod(0o755)
        self.addCleanup(shutil.rmtree, self._folder, ignore_errors=True)

    def shell(self, kind, name):
        shell = kind(_BUILD, self._folder / name, _free_port())
        shell.start()
        self.addCleanup(shell.kill)
        return shell

    def printer(self, name):
        printer = Printer(_PREVIEW, self._folder / name, "fast")
        self.addCleanup(printer.kill)
        return printer

    def till(self, server, path):
        """A till's own scheduler, with a queue to a printer of the server."""
        till = self.shell(CupsShell, "till")
        till.run("lpadmin", "-p", "till0", "-E", "-v", f"ipp://127.0.0.1:{server.port}{path}", "-m", "everywhere")
        # The scheduler asks the printer in the background; a job before that fails.
        log = self._folder / "till" / "log" / "error"
        until = time.monotonic() + _SECONDS
        while '"till0" is now available' not in log.read_text():
            self.assertLess(time.monotonic(), until, "the queue does not become ready")
            time.sleep(0.05)
        return till

    def wait(self, client, job, name):
        until = time.monotonic() + _SECONDS
        while not (state := client.state(job, name)).has_ended:
            self.assertLess(time.monotonic(), until, state)
            time.sleep(0.05)
        self.assertEqual(state.state, ipp.COMPLETED, state)

    def print(self, client, number):
        name = f"receipt {number}"
        return client.print_job(name, documents.PDF, documents.document(number, "receipt", documents.PDF, 1)), name

    def numbers_on_paper(self, printer):
        """The numbers whose two codes are both on one piece of paper, in order."""
        printer.finish()
        judge = paper.Judge(_PREVIEW, self._folder / f"pieces-{printer.port}", {})
        files = []
        for index, data in enumerate(data for stream, _ in printer.streams() for data in paper.pieces_of(stream)):
            files.append(self._folder / f"pieces-{printer.port}" / f"{index}.prn")
            files[-1].write_bytes(data)
        codes = judge.read_codes(files)
        return [min(codes[file])[0] for file in files if {place for _, place in codes[file]} == {"top", "end"}]


class SpareTest(Fleet):
    def test_a_class_prints_at_the_spare_when_the_printer_is_gone(self):
        shell, own, spare = self.shell(CupsShell, "server"), self.printer("own"), self.printer("spare")
        for till, printer in enumerate((own, spare)):
            shell.add_till(till, printer.port)
            shell.run("lpadmin", "-p", f"till{till}", "-c", "counter")
        shell.run("cupsenable", "counter")
        shell.run("cupsaccept", "counter")
        client = shell.client_at("/classes/counter", "cashier")
        own.tell("vanish")
        jobs = [self.print(client, number) for number in (1, 2, 3)]
        for job, name in jobs:
            self.wait(client, job, name)
        own.tell("return")
        self.assertEqual(sorted(self.numbers_on_paper(spare)), [1, 2, 3])
        self.assertEqual(self.numbers_on_paper(own), [])


class ServerTest(Fleet):
    """A till keeps what it cannot send, and sends it when the server is there again."""

    def _prints_after_an_outage(self, server, path):
        printer = self.printer("printer")
        server.add_till(0, printer.port)
        till = self.till(server, path)
        client = till.client(0, "cashier")
        self.wait(client, *self.print(client, 1))
        server.stop(signal.SIGTERM)
        kept = self.print(client, 2)
        server.start()
        self.wait(client, *kept)
        self.assertEqual(self.numbers_on_paper(printer), [1, 2])

    def test_shared_queue(self):
        server = self.shell(CupsShell, "server")
        self._prints_after_an_outage(server, "/printers/till0")

    def test_central_application(self):
        server = self.shell(AppShell, "server")
        self._prints_after_an_outage(server, "/ipp/print/till0")


if __name__ == "__main__":
    unittest.main(warnings="ignore")
