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


def judge(sent, pieces, may_print_again):
    """@param may_print_again whether a job in progress may be lost or come twice when something breaks"""
    report = Report([], collections.Counter())
    by_number = collections.defaultdict(list)
    for piece in pieces:
        by_number[piece.number].append(piece)
    for piece in by_number.pop(0, []):
        _judge_unnamed(report, sent, piece, may_print_again)
    for job in sent:
        _judge_job(report, job, by_number.pop(job.plan.number, []), job.breaks if may_print_again else 0)
    for number, strangers in by_number.items():
        report.faults.append(f"job {number} was printed and never planned: {strangers[0].file}")
    return report


# The first dots of a job that was stopped, before any code.
def _judge_unnamed(report, sent, piece, may_print_again):
    stopped = [job for job in sent if job.plan.till == piece.till and
               (job.breaks and may_print_again or not (job.state and job.state.state == ipp.COMPLETED))]
    if piece.kind == paper.PARTIAL and stopped:
        report.counts["partial copies without a code"] += 1
    else:
        report.faults.append(f"paper of till {piece.till} names no job: {piece.file}")


def _judge_job(report, job, pieces, allowance):
    name = f"job {job.plan.number} (till {job.plan.till}, {job.plan.kind}, {job.plan.format})"
    whole = [p for p in pieces if p.kind == paper.WHOLE]
    partial = [p for p in pieces if p.kind == paper.PARTIAL]
    for piece in pieces:
        if piece.kind == paper.WRONG:
            report.faults.append(f"{name} is garbled: {piece.file}")
        if piece.till != job.plan.till:
            report.faults.append(f"{name} came out at till {piece.till}: {piece.file}")
    problems = [("second copies", f"{name} was printed twice: {extra.file}") for extra in whole[1:]]
    outcome = _outcome(job)
    if outcome == "completed":
        if not whole:
            problems.append(("lost behind a raw port", f"{name} is lost: completed, nothing whole came out"))
        problems += [("partial copies", f"{name} completed and came out in part: {p.file}") for p in partial]
    elif outcome == "not known any more" and len(whole) != 1:
        problems.append(("lost", f"{name} is lost: the shell does not know it, {len(whole)} whole copies"))
    elif outcome == "refused" and pieces:
        report.faults.append(f"{name} was refused ({job.refused}) and printed: {pieces[0].file}")
    elif outcome == "not ended":
        report.faults.append(f"{name} did not end: {job.state.message if job.state else 'never accepted'}")
    elif outcome in ("cancelled by its user", "ended with a reason") and not job.state.message:
        report.faults.append(f"{name} ended without a reason")
    for index, (word, fault) in enumerate(problems):
        if index < 2 * allowance:
            report.counts[word] += 1
        else:
            report.faults.append(fault)
    report.counts[outcome] += 1
    report.counts["whole copies"] += len(whole)


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
