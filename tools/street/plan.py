# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""What happens in a run, drawn from its seed: who prints what and when, and what breaks."""

import dataclasses
import random
import signal

from . import documents
from .printers import MANNERS

_CANCELLED_SHARE = 0.04


@dataclasses.dataclass(frozen=True)
class PlannedJob:
    number: int
    till: int
    kind: str
    format: str
    at: float            # seconds from the start
    cancel_after: float  # seconds from its acceptance; 0: never


@dataclasses.dataclass(frozen=True)
class Restart:
    at: float
    signal: int


@dataclasses.dataclass(frozen=True)
class Plan:
    seed: int
    seconds: float
    manners: tuple  # of each till
    jobs: tuple     # in the order of their times
    restarts: tuple


def make_plan(seed, tills, jobs, seconds, formats, is_calm=False):
    """@param is_calm nothing breaks and nobody cancels"""
    rng = random.Random(seed)
    names = list(MANNERS)
    manners = tuple("fast" if is_calm else names[till % len(names)] for till in range(tills))
    planned = []
    times = sorted(rng.uniform(0, seconds) for _ in range(jobs))
    for number, at in enumerate(times, 1):
        cancel = rng.uniform(0.05, 1.5) if not is_calm and rng.random() < _CANCELLED_SHARE else 0.0
        kind = rng.choices(documents.KINDS, (6, 1, 3))[0]
        planned.append(PlannedJob(number, rng.randrange(tills), kind, rng.choice(formats), at, cancel))
    restarts = () if is_calm else (Restart(seconds * rng.uniform(0.25, 0.4), signal.SIGTERM),
                                   Restart(seconds * rng.uniform(0.55, 0.7), signal.SIGKILL))
    return Plan(seed, seconds, manners, tuple(planned), restarts)
