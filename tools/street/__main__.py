# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""A street of tills on this machine: prints for a while, breaks things, reads all paper.

Exit status: 0 every job came out as promised, 1 one did not, 2 wrong usage.
"""

import argparse
import json
import pathlib
import random
import shutil
import signal
import socket
import sys
import tempfile
import time

from . import app_shell, cups_shell, expected, figures, ipp, paper, plan, run, verdict
from .printers import Printer

_SHELLS = {"cups": (cups_shell, cups_shell.CupsShell), "app": (app_shell, app_shell.AppShell)}
_JOBS_PER_TILL_AND_SECOND = 0.25
_MOST_FAULTS_SHOWN = 20


def _arguments():
    parser = argparse.ArgumentParser(prog="./wren street", description="Tills print on one machine while things break.")
    parser.add_argument("--tills", type=_positive, default=4)
    parser.add_argument("--jobs", type=_positive, help="documents in all (default: one per till every 4 s)")
    parser.add_argument("--minutes", type=_minutes, default=0.33)
    parser.add_argument("--shell", choices=sorted(_SHELLS), default="app")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--break", dest="sabotage", choices=("drop", "double", "flip"), help="must be noticed")
    parser.add_argument("--figures", action="store_true",
                        help="break nothing, and measure: receipts per second, first byte, processor time, memory (as root)")
    parser.add_argument("--build", required=True, type=pathlib.Path, help=argparse.SUPPRESS)
    parser.add_argument("--keep", action="store_true", help="keep the folder of a run without faults as well")
    return parser.parse_args()


def _positive(text):
    number = int(text)
    if number < 1:
        raise argparse.ArgumentTypeError("at least 1")
    return number


def _minutes(text):
    number = float(text)
    if not 0.01 <= number <= 24 * 60:
        raise argparse.ArgumentTypeError("0.01 to 1440")
    return number


class Progress:
    """One line that is overwritten on a terminal; elsewhere a line when the words change kind."""

    def __init__(self):
        self._last = 0.0

    def __call__(self, words):
        if sys.stderr.isatty():
            print(f"\r\033[Kstreet: {words}", end="", file=sys.stderr, flush=True)
        elif time.monotonic() > self._last + 10:
            self._last = time.monotonic()
            print(f"street: {words}", file=sys.stderr, flush=True)


def _free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


# Damages the paper of one job that came out whole and was not in progress when anything broke, so
# that the judge has to name it.
def _sabotage(kind, printed, wanted, sent, seed):
    calm = {wanted[job.plan.number] for job in sent
            if not job.breaks and job.state and job.state.state == ipp.COMPLETED}
    whole = [index for index, one in enumerate(printed) if one.data in calm]
    index = random.Random(seed).choice(whole)
    one = printed[index]
    if kind == "drop":
        del printed[index]
    elif kind == "double":
        printed.insert(index, one)
    else:
        middle = len(one.data) // 2
        flipped = one.data[:middle] + bytes((one.data[middle] ^ 0x10,)) + one.data[middle + 1:]
        printed[index] = paper.Printed(one.till, flipped)


# A connection that the printer broke was broken in its last piece.
def _pieces(till, stream, is_broken):
    pieces = [paper.Printed(till, data) for data in paper.pieces_of(stream)]
    if is_broken and pieces:
        pieces[-1] = paper.Printed(till, pieces[-1].data, True)
    return pieces


def _end_by_signal(number, _):
    sys.exit(128 + number)


def main():
    arguments = _arguments()
    # Whoever ends the street ends its shell and its printers too.
    signal.signal(signal.SIGTERM, _end_by_signal)
    # Not below the checkout: the filters of a scheduler that root starts are another user's.
    folder = pathlib.Path(tempfile.mkdtemp(prefix="wren-street."))
    folder.chmod(0o755)
    try:
        faults = _run(arguments, folder)
    except BaseException:
        print(f"street: stopped; the bytes, the logs and the state: {folder}", file=sys.stderr)
        raise
    if faults or arguments.keep:
        print(f"the bytes, the logs and the state: {folder}")
    else:
        shutil.rmtree(folder)
    return 1 if faults else 0


def _run(arguments, folder):
    module, shell_class = _SHELLS[arguments.shell]
    seconds = arguments.minutes * 60
    jobs = arguments.jobs or max(1, round(arguments.tills * seconds * _JOBS_PER_TILL_AND_SECOND))
    preview = str(arguments.build / "preview" / "wren-preview")
    progress = Progress()
    planned = plan.make_plan(arguments.seed, arguments.tills, jobs, seconds, module.FORMATS,
                             arguments.figures)

    wanted = expected.expected_bytes(shell_class(arguments.build, folder / "calm-shell", _free_port()), preview,
                                     folder / "calm", planned.jobs, arguments.seed, progress)
    printers, shell = [], shell_class(arguments.build, folder / "shell", _free_port())
    try:
        shell.start()
        measurement = figures.Measurement(shell, arguments.shell == "app") if arguments.figures else None
        for till, manner in enumerate(planned.manners):
            printers.append(Printer(preview, folder / f"till{till}", manner))
        ports = measurement.attach(printers) if measurement else [printer.port for printer in printers]
        for till, port in enumerate(ports):
            shell.add_till(till, port)
        if measurement:
            measurement.begin()
        begin = time.monotonic()
        sent = run.run(shell, planned, printers, progress)
        took = time.monotonic() - begin
        if measurement:
            measurement.end()
        shell.stop(signal.SIGTERM)
        for printer in printers:
            printer.finish()
        if measurement:
            measurement.close()
    finally:
        shell.kill()
        for printer in printers:
            printer.kill()
    printed = [one for till, printer in enumerate(printers) for stream in printer.streams()
               for one in _pieces(till, *stream)]
    if arguments.sabotage:
        _sabotage(arguments.sabotage, printed, wanted, sent, arguments.seed)
    progress("reading the paper")
    pieces = paper.Judge(preview, folder / "pieces", wanted).judge(printed)
    report = verdict.judge(sent, pieces, module.MAY_PRINT_AGAIN, module.MAY_LOSE)
    _say(arguments, planned, sent, report, took, folder)
    if measurement and not report.faults:
        print(json.dumps(measurement.figures(sent, pieces, took, arguments.tills), indent=1))
    return report.faults


def _say(arguments, planned, sent, report, took, folder):
    if sys.stderr.isatty():
        print("\r\033[K", end="", file=sys.stderr)
    print(f"{arguments.shell}, seed {arguments.seed}: {arguments.tills} tills, {len(planned.jobs)} jobs, {took:.0f} s")
    for word, count in sorted((+report.counts).items()):
        print(f"  {count:6} {word}")
    for reason, count in report.reasons.items():
        print(f"         {count} told: {reason}")
    for fault in report.faults[:_MOST_FAULTS_SHOWN]:
        print(f"FAULT: {fault}")
    if len(report.faults) > _MOST_FAULTS_SHOWN:
        print(f"FAULT: and {len(report.faults) - _MOST_FAULTS_SHOWN} more")
    (folder / "jobs.json").write_text(json.dumps(sent, default=vars, indent=1) + "\n")
    (folder / "report.json").write_text(json.dumps(
        {"schema": 1, "shell": arguments.shell, "seed": arguments.seed, "tills": arguments.tills,
         "jobs": len(planned.jobs), "seconds": round(took, 1), "counts": report.counts,
         "reasons": report.reasons, "faults": report.faults},
        indent=1) + "\n")


if __name__ == "__main__":
    sys.exit(main())
