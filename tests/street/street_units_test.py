#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""What the street holds the shells to (tools/street), and that it does not accuse them wrongly.

street_units_test.py ROOT
"""

import collections
import ctypes
import dataclasses
import pathlib
import socket
import sys
import tempfile
import threading
import time
import unittest

sys.path.insert(0, str(pathlib.Path(sys.argv.pop(1)) / "tools"))

try:
    import PIL  # noqa: F401
except ModuleNotFoundError:
    print("skipped: python3-pil is not installed")
    sys.exit(77)

from street import app_shell, cups_shell, documents, ipp, paper, plan, run, verdict  # noqa: E402

_COMPLETED = ipp.JobState(ipp.COMPLETED, "")


def _sent(state=_COMPLETED, breaks=(), **more):
    planned = plan.PlannedJob(7, 0, "receipt", documents.PDF, 0.0, 0.0)
    return run.Sent(planned, job=3, state=state, breaks=collections.Counter(breaks), **more)


def _pieces(*kinds, till=0, number=7):
    return [paper.Piece(till, pathlib.Path("piece.prn"), number, kind) for kind in kinds]


def _judge(shell, job, pieces):
    return verdict.judge([job], pieces, shell.MAY_PRINT_AGAIN, shell.MAY_LOSE)


class Verdict(unittest.TestCase):
    """Each case: shell, what broke, what came out, the word of the fault (none: there is none)."""

    def test_completed_jobs(self):
        whole, part, wrong = paper.WHOLE, paper.PARTIAL, paper.WRONG
        for shell, breaks, pieces, fault in (
                (cups_shell, (), (whole,), None),
                (cups_shell, (), (), "is lost"),
                (cups_shell, (), (whole, whole), "was printed twice"),
                (cups_shell, (), (whole, part), "came out in part"),
                (cups_shell, ("SIGKILL",), (whole, whole), None),
                (cups_shell, ("SIGKILL",), (part, whole), None),
                (cups_shell, ("SIGKILL",), (whole, whole, whole, whole), "was printed twice"),
                (cups_shell, ("SIGKILL",), (), "is lost"),
                (cups_shell, ("SIGKILL",), (wrong,), "is garbled"),
                (cups_shell, ("reset",), (part, whole), None),
                (cups_shell, ("vanish",), (whole, whole), None),
                (cups_shell, ("reset",), (), None),
                (cups_shell, ("paper out",), (whole, whole), "was printed twice"),
                (cups_shell, ("paper out",), (), "is lost"),
                (cups_shell, ("SIGTERM",), (whole, whole), "was printed twice"),
                (cups_shell, ("SIGTERM",), (), "is lost"),
                (app_shell, (), (whole,), None),
                (app_shell, ("SIGKILL",), (whole, whole), "was printed twice"),
                (app_shell, ("SIGKILL",), (part, whole), "came out in part"),
                (app_shell, ("reset",), (), "is lost"),
                (app_shell, ("vanish",), (part,), "came out in part")):
            with self.subTest(shell=shell.__name__, breaks=breaks, pieces=pieces):
                faults = _judge(shell, _sent(breaks=breaks), _pieces(*pieces)).faults
                self.assertEqual(bool(faults), fault is not None, faults)
                if fault:
                    self.assertIn(fault, faults[0])
                    self.assertIn("job 7 (till 0, receipt, application/pdf)", faults[0])

    def test_jobs_that_did_not_complete(self):
        for job, pieces, fault in (
                (_sent(ipp.JobState(ipp.ABORTED, "the printer is off")), (), None),
                (_sent(ipp.JobState(ipp.ABORTED, "")), (), "without a reason"),
                (_sent(ipp.JobState(ipp.ABORTED, "Job aborted.", "aborted-by-system")), (), "without a reason"),
                (_sent(ipp.JobState(ipp.CANCELLED, "Job canceled.")), (), "without a reason"),
                (_sent(ipp.JobState(ipp.CANCELLED, "Job canceled."), cancelled_at=1.0), (), None),
                (_sent(ipp.JobState(ipp.PROCESSING, "printing")), (), "did not end: printing"),
                (_sent(None, is_forgotten=True), (paper.WHOLE,), None),
                (_sent(None, is_forgotten=True), (), "is lost"),
                (_sent(refused="no such format"), (paper.WHOLE,), "was refused")):
            with self.subTest(state=job.state, refused=job.refused, pieces=pieces):
                for shell in (cups_shell, app_shell):
                    faults = _judge(shell, job, _pieces(*pieces)).faults
                    self.assertEqual(bool(faults), fault is not None, faults)
                    if fault:
                        self.assertIn(fault, faults[0])

    def test_what_the_printer_itself_broke(self):
        for shell, kinds, fault in ((cups_shell, (paper.PARTIAL,), None),
                                    (cups_shell, (paper.PARTIAL, paper.WHOLE), None),
                                    (cups_shell, (paper.WRONG,), "is garbled"),
                                    (app_shell, (paper.PARTIAL,), "came out in part")):
            with self.subTest(shell=shell.__name__, kinds=kinds):
                pieces = [dataclasses.replace(p, is_broken=p.kind != paper.WHOLE) for p in _pieces(*kinds)]
                faults = _judge(shell, _sent(), pieces).faults
                self.assertEqual(bool(faults), fault is not None, faults)
                if fault:
                    self.assertIn(fault, faults[0])

    def test_damaged_text_is_named_by_what_it_shares(self):
        with tempfile.TemporaryDirectory() as folder:
            judge = paper.Judge("/bin/false", f"{folder}/pieces", {1: b"receipt 1 ....", 2: b"receipt 2 ...."})
            pieces = judge.judge([paper.Printed(0, b"receipt 2 .x..")])
        self.assertEqual([(piece.number, piece.kind) for piece in pieces], [(2, paper.WRONG)])

    def test_a_connection_that_broke_in_the_middle_of_a_question(self):
        for data, kind in ((b"receipt 2\x10\x04", paper.PARTIAL), (b"receipt 2\x10", paper.PARTIAL),
                           (b"receipt 2\x10\x05", paper.WRONG), (b"receipt 2\x10\x04.", paper.WRONG)):
            with self.subTest(data=data), tempfile.TemporaryDirectory() as folder:
                judge = paper.Judge("/bin/false", f"{folder}/pieces", {1: b"receipt 1 ....", 2: b"receipt 2 ...."})
                pieces = judge.judge([paper.Printed(0, data)])
                self.assertEqual([(piece.number, piece.kind) for piece in pieces], [(2, kind)])

    def test_paper_of_another_till(self):
        faults = _judge(cups_shell, _sent(), _pieces(paper.WHOLE, till=1)).faults
        self.assertIn("came out at till 1", faults[0])


class Followed(unittest.TestCase):
    """A till whose last job is accepted while its jobs are listed has not ended."""

    def test_a_job_that_is_accepted_meanwhile(self):
        accepted = threading.Event()

        class Jobs(list):
            def __iter__(self):
                yield from list.__iter__(self)
                accepted.set()

        class Shell:
            @staticmethod
            def client(till, user):
                return None

        till = run.Till(0, Shell, [], 1, time.monotonic(), threading.Event())
        till.sent = Jobs([_sent(None)])
        till.sent[0].job = 0
        till.is_alive = lambda: not accepted.is_set()
        self.assertFalse(till.follow())


class Answers(unittest.TestCase):
    """What is read from an answer that libcups has built."""

    def setUp(self):
        self._cups = ctypes.CDLL("libcups.so.2")
        self._cups.ippNew.restype = ctypes.c_void_p
        self._answer = ctypes.c_void_p(self._cups.ippNew())
        self.addCleanup(self._cups.ippDelete, self._answer)

    def _add(self, job, name):
        group, integer, text = 0x02, 0x21, 0x42
        self._cups.ippAddInteger(self._answer, group, integer, b"job-id", job)
        self._cups.ippAddInteger(self._answer, group, 0x23, b"job-state", ipp.COMPLETED)
        self._cups.ippAddString(self._answer, group, text, b"job-name", None, name)

    def test_a_number_that_was_given_to_another_job(self):
        self._add(13, b"receipt 18")
        self.assertEqual(_client().state_in(self._answer, "receipt 18"), _COMPLETED)
        self.assertIsNone(_client().state_in(self._answer, "receipt 13"))

    def test_names_of_all_jobs(self):
        self._add(4, b"receipt 1")
        self._cups.ippAddSeparator(self._answer)
        self._add(5, b"receipt 2")
        self.assertEqual(_client().names_in(self._answer), {"receipt 1": 4, "receipt 2": 5})

    def test_the_last_of_two_jobs_of_one_name(self):
        self._add(9, b"receipt 1")
        self._cups.ippAddSeparator(self._answer)
        self._add(4, b"receipt 1")
        self.assertEqual(_client().names_in(self._answer), {"receipt 1": 9})


class LostAnswers(unittest.TestCase):
    """Whether a till sends a job again whose answer was lost."""

    def test_by_what_became_of_it(self):
        for known, state, job in ((0, None, 0), (5, ipp.ABORTED, 0), (5, ipp.PROCESSING, 5), (5, ipp.CANCELLED, 5)):
            class Client:
                @staticmethod
                def find(name):
                    return known

                @staticmethod
                def state(job, name):
                    return ipp.JobState(state, "")

            class Shell:
                @staticmethod
                def client(till, user):
                    return Client

            with self.subTest(known=known, state=state):
                till = run.Till(0, Shell, [], 1, time.monotonic(), threading.Event())
                sent = _sent(None)
                self.assertEqual(till._find(sent), job != 0)
                self.assertEqual(sent.job, job)


def _client():
    return ipp.Client("127.0.0.1", 1, "/", "nobody")


class Starting(unittest.TestCase):
    """A socket of a scheduler that was killed is no scheduler."""

    def test_a_socket_that_nobody_serves(self):
        with tempfile.TemporaryDirectory() as folder, socket.socket(socket.AF_UNIX) as server:
            place = f"{folder}/socket"
            self.assertFalse(cups_shell.is_served(place))
            server.bind(place)
            self.assertFalse(cups_shell.is_served(place))
            server.listen()
            self.assertTrue(cups_shell.is_served(place))
            server.close()
            self.assertFalse(cups_shell.is_served(place))


if __name__ == "__main__":
    unittest.main()
