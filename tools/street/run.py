# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""One run: the tills print what is planned, while printers and the shell break as planned."""

import collections
import dataclasses
import signal
import threading
import time

from . import documents, ipp

_POLL_SECONDS = 0.2
# For so long a printer may print what the shell has called completed.
_BUFFERED_SECONDS = 5
_RETRY_SECONDS = 0.05
# How long the shell may take to end all jobs after the last one was sent.
_SETTLE_SECONDS = 180


@dataclasses.dataclass
class Sent:
    """What became of a planned job."""

    plan: object
    job: int = 0           # at the shell; 0: not accepted
    lost_answers: int = 0
    unknown: bool = False  # the run was over before anybody knew whether it was accepted
    refused: str = ""
    asked_at: float = 0.0
    cancelled_at: float = 0.0
    state: object = None   # ipp.JobState
    is_forgotten: bool = False  # the shell does not know it any more
    ended_at: float = 0.0
    # What broke while it was printed, and how often: a signal to the shell, a fault of the printer.
    breaks: collections.Counter = dataclasses.field(default_factory=collections.Counter)

    @property
    def name(self):
        return f"receipt {self.plan.number}"

    @property
    def has_ended(self):
        return self.is_forgotten or (self.state is not None and self.state.has_ended)


class Till(threading.Thread):
    """Sends the jobs of one till in their order, as a program that waits for each answer."""

    def __init__(self, number, shell, jobs, seed, begin, stop):
        super().__init__(daemon=True)
        self._client = shell.client(number, f"cashier{number}")
        self._begin, self._over, self._seed = begin, stop, seed
        self.number, self.sent = number, [Sent(job) for job in jobs]
        self._lock = threading.Lock()

    def run(self):
        for sent in self.sent:
            if self._over.wait(max(0.0, self._begin + sent.plan.at - time.monotonic())):
                return
            self._send(sent)

    def _send(self, sent):
        plan = sent.plan
        data = documents.document(plan.number, plan.kind, plan.format, self._seed)
        sent.asked_at = time.monotonic()
        while not self._over.is_set():
            try:
                sent.job = self._client.print_job(sent.name, plan.format, data)
                return
            except ipp.Refused as refusal:
                if refusal.status != ipp.BUSY:
                    sent.refused = str(refusal)
                    return
            except ipp.Unknown:
                sent.lost_answers += 1
                if self._find(sent):
                    return
            except OSError:
                pass  # the shell is being restarted
            self._over.wait(_RETRY_SECONDS)
        sent.unknown = sent.lost_answers > 0

    # A job of which nobody knows whether it was accepted is looked for before it is sent again: an
    # aborted one was cut off before its document was whole.
    def _find(self, sent):
        while not self._over.is_set():
            try:
                job = self._client.find(sent.name)
                state = self._client.state(job, sent.name) if job else None
                sent.job = job if state and state.state != ipp.ABORTED else 0
                return sent.job != 0
            except (OSError, ipp.Unknown, ipp.Refused):
                self._over.wait(_RETRY_SECONDS)
        return False

    def follow(self, everything=False):
        """Cancels what is planned and asks for the states of jobs that had not ended.

        @param everything asks for all of them, not only the oldest.
        @return whether every job has ended.
        """
        is_sending = self.is_alive()  # before its jobs are listed: it may end meanwhile
        open_jobs = [s for s in self.sent if s.job and not s.has_ended]
        now = time.monotonic()
        for sent in open_jobs:
            wanted = sent.plan.cancel_after
            if wanted and not sent.cancelled_at and now > sent.asked_at + wanted:
                self._cancel(sent, now)
        for sent in open_jobs if everything else open_jobs[:2]:
            try:
                sent.state = self._client.state(sent.job, sent.name)
            except (OSError, ipp.Refused, ipp.Unknown):
                return False
            sent.is_forgotten = sent.state is None
            if sent.has_ended:
                sent.ended_at = time.monotonic()
        return not is_sending and all(s.has_ended for s in open_jobs)

    def note_break(self, what):
        """Something broke that may cost the job in progress, or one of which a buffer still has a part."""
        now = time.monotonic()
        accepted = [s for s in self.sent if s.job or s.lost_answers]
        ended = [s for s in accepted if s.has_ended]
        opened = [s for s in accepted if not s.has_ended]
        for sent in opened[:2] + [s for s in ended[-1:] if now < s.ended_at + _BUFFERED_SECONDS]:
            sent.breaks[what] += 1

    def _cancel(self, sent, now):
        try:
            self._client.cancel(sent.job)
            sent.cancelled_at = now
        except ipp.Refused:
            sent.cancelled_at = now  # it had ended already
        except (OSError, ipp.Unknown):
            pass


class Incidents(threading.Thread):
    """Lets the printers break and recover."""

    def __init__(self, printers, tills, seconds, begin, stop):
        super().__init__(daemon=True)
        self._printers, self._tills, self._begin, self._over = printers, tills, begin, stop
        self._until = begin + seconds

    def run(self):
        due = []
        for till, printer in enumerate(self._printers):
            if printer.incident:
                due.append((self._begin + printer.incident[0] / 2, till, False))
        while due:
            due.sort()
            at, till, broken = due.pop(0)
            if not broken and at > self._until:
                continue
            if self._over.wait(max(0.0, at - time.monotonic())):
                if not broken:
                    continue
            every, breaks, seconds, mends = self._printers[till].incident
            if broken:
                self._printers[till].tell(mends)
                due.append((at + every, till, False))
                continue
            self._tills[till].note_break(breaks)
            self._printers[till].tell(breaks)
            due.append((at + (seconds if mends else every), till, bool(mends)))


def run(shell, plan, printers, progress):
    """@return the list of `Sent`, one for each planned job"""
    begin, stop = time.monotonic(), threading.Event()
    tills = [Till(n, shell, [j for j in plan.jobs if j.till == n], plan.seed, begin, stop)
             for n in range(len(printers))]
    incidents = Incidents(printers, tills, plan.seconds, begin, stop)
    for thread in (*tills, incidents):
        thread.start()
    restarts, settle_until = list(plan.restarts), None
    while True:
        now = time.monotonic() - begin
        if restarts and now > restarts[0].at:
            kind = signal.Signals(restarts.pop(0).signal)
            progress(f"restarting with {kind.name}")
            for till in tills:
                till.note_break(kind.name)
            shell.stop(kind)
            shell.start()
            continue
        ended = [till.follow() for till in tills]
        done = sum(bool(s.refused or s.unknown or s.has_ended) for t in tills for s in t.sent)
        progress(f"{done} of {len(plan.jobs)} jobs have ended")
        if all(ended) and not restarts:
            break
        if settle_until is None and not any(till.is_alive() for till in tills):
            settle_until = now + _SETTLE_SECONDS
        if settle_until and now > settle_until:
            break
        time.sleep(_POLL_SECONDS)
    stop.set()
    incidents.join()
    for till in tills:
        till.follow(everything=True)
    return [s for till in tills for s in till.sent]
