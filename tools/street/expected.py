# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""What each document has to print: the bytes of the same shell on a calm day.

Every document is printed once, alone, on a printer without faults. That these bytes are
the right ones is for other tests (tests/queue, tests/app) to say.
"""

import signal
import time
from concurrent.futures import ThreadPoolExecutor

from . import documents, ipp, paper
from .printers import Printer

_SECONDS = 120
_PRINTERS = 4


def expected_bytes(shell, preview, folder, jobs, seed, progress):
    """@return the number of a document -> bytes"""
    shares = [jobs[i::_PRINTERS] for i in range(_PRINTERS)]
    printers = [Printer(preview, folder / f"calm{i}", "fast") for i in range(_PRINTERS)]
    try:
        shell.start()
        for till, printer in enumerate(printers):
            shell.add_till(till, printer.port)
        with ThreadPoolExecutor(_PRINTERS) as pool:
            tasks = [pool.submit(_print_all, shell.client(till, "nobody"), share, seed)
                     for till, share in enumerate(shares)]
            while not all(task.done() for task in tasks):
                progress("printing the documents on a calm day")
                time.sleep(0.5)
            for task in tasks:
                task.result()
        shell.stop(signal.SIGTERM)
        for printer in printers:
            printer.finish()
    finally:
        shell.kill()
        for printer in printers:
            printer.kill()
    found = {}
    for share, printer in zip(shares, printers):
        pieces = [piece for stream, _ in printer.streams() for piece in paper.pieces_of(stream)]
        if len(pieces) != len(share):
            raise RuntimeError(f"{len(pieces)} pieces of paper for {len(share)} documents on a calm day")
        found.update({job.number: piece for job, piece in zip(share, pieces)})
    return found


def _print_all(client, jobs, seed):
    for job in jobs:
        data = documents.document(job.number, job.kind, job.format, seed)
        name = f"receipt {job.number}"
        number = client.print_job(name, job.format, data)
        until = time.monotonic() + _SECONDS
        while (state := client.state(number, name)) and not state.has_ended:
            if time.monotonic() > until:
                raise RuntimeError(f"document {job.number} does not print on a calm day: {state.message}")
            time.sleep(0.02)
        if not state:
            raise RuntimeError(f"document {job.number} was accepted as job {number}, which is unknown then")
        if state.state != ipp.COMPLETED:
            raise RuntimeError(f"document {job.number} fails on a calm day: {state.message}")
