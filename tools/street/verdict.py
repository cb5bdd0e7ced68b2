# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""Whether every accepted job came out whole, once, or its user was shown a reason."""

import collections
import dataclasses

from . import ipp, paper


@dataclasses.dataclass
class Report:
    faults: list           # a line each, with the number of the job
    counts: collections.Counter
    reasons: collections.Counter  # what the users of failed jobs were told


def judge(sent, pieces, may_print_again, may_lose):
    """@param may_print_again the kinds of breaks at which the job in progress may come again or in part
    @param may_lose those at which it may be called completed although it did not come out
    """
    report = Report([], collections.Counter(), collections.Counter())
    by_number = collections.defaultdict(list)
    for piece in pieces:
        by_number[piece.number].append(piece)
    for piece in by_number.pop(0, []):
        _judge_unnamed(report, sent, piece, may_print_again)
    for job in sent:
        _judge_job(report, job, by_number.pop(job.plan.number, []),
                   may_print_again, may_lose)
    for number, strangers in by_number.items():
        report.faults.append(f"job {number} was printed and never planned: {strangers[0].file}")
    return report


def _breaks(job, kinds):
    return sum(count for kind, count in job.breaks.items() if kind in kinds)


# The first dots of a job that was stopped, before any code.
def _judge_unnamed(report, sent, piece, may_print_again):
    stopped = [job for job in sent if job.plan.till == piece.till and
               (_breaks(job, may_print_again) or (piece.is_broken and may_print_again)
                or not (job.state and job.state.state == ipp.COMPLETED))]
    if piece.kind == paper.PARTIAL and stopped:
        report.counts["partial copies without a code"] += 1
    else:
        report.faults.append(f"paper of till {piece.till} names no job: {piece.file}")


def _judge_job(report, job, pieces, may_print_again, may_lose):
    # A raw port may be called done long before its printer is: the printer knows what it broke.
    broken = sum(piece.is_broken for piece in pieces) if may_lose else 0
    name = f"job {job.plan.number} (till {job.plan.till}, {job.plan.kind}, {job.plan.format})"
    whole = [p for p in pieces if p.kind == paper.WHOLE]
    partial = [p for p in pieces if p.kind == paper.PARTIAL]
    for piece in pieces:
        if piece.kind == paper.WRONG:
            report.faults.append(f"{name} is garbled: {piece.file}")
        if piece.till != job.plan.till:
            report.faults.append(f"{name} came out at till {piece.till}: {piece.file}")
    copies = [("second copies", f"{name} was printed twice: {extra.file}") for extra in whole[1:]]
    lost = []
    outcome = _outcome(job)
    if outcome == "completed":
        if not whole:
            word = "came out in part only" if partial else "lost behind a raw port"
            lost.append((word, f"{name} is lost: completed, nothing whole came out"))
        copies += [("partial copies", f"{name} completed and came out in part: {p.file}") for p in partial]
    elif outcome == "not known any more" and len(whole) != 1:
        report.faults.append(f"{name} is lost: the shell does not know it, {len(whole)} whole copies")
    elif outcome == "refused" and pieces:
        report.faults.append(f"{name} was refused ({job.refused}) and printed: {pieces[0].file}")
    elif outcome == "not ended":
        report.faults.append(f"{name} did not end: {job.state.message if job.state else 'never accepted'}")
    elif outcome == "ended with a reason" and not job.state.says_why:
        report.faults.append(f"{name} ended without a reason: '{job.state.message}' ({job.state.reasons})")
    _allow(report, copies, 2 * (_breaks(job, may_print_again) + broken))
    _allow(report, lost, _breaks(job, may_lose) + broken)
    if outcome == "ended with a reason":
        report.reasons[job.state.message] += 1
    report.counts[outcome] += 1
    report.counts["answers lost, then found or sent again"] += job.lost_answers
    report.counts["whole copies"] += len(whole)


# At one break a job may come in part and then again.
def _allow(report, problems, allowance):
    for index, (word, fault) in enumerate(problems):
        if index < allowance:
            report.counts[word] += 1
        else:
            report.faults.append(fault)


def _outcome(job):
    if job.unknown:
        return "answer lost"
    if job.refused:
        return "refused"
    if not job.job:
        return "not ended"
    if job.state is None:
        return "not known any more"
    if not job.state.has_ended:
        return "not ended"
    if job.state.state == ipp.COMPLETED:
        return "completed"
    return "cancelled by its user" if job.cancelled_at else "ended with a reason"
