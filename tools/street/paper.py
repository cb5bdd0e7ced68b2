# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""What came out of a printer: its bytes as pieces, each held to the document that it names."""

import collections
import dataclasses
import os
import pathlib
import re
import subprocess
from concurrent.futures import ThreadPoolExecutor

from . import documents

# Every job begins with these bytes (docs/OUTPUT.md). A host may keep its connection for several.
BEGIN = b"\0" * 64 + b"\x1b@"
# The question whether everything so far is on paper: after a job, and before the first.
_QUESTION = b"\x1dr\x01"
# The end of a cancelled job: feeds, cut, buzzers off, paper sensor.
_CANCELLED_END = re.compile(
    rb"(?:\x1bJ.){0,2}(?:\x1dV[\x00\x01])?(?:\x1f\x1b\x1fBeep\x06)?(?:\x1bv)?\Z", re.S)
# A question for the status, DLE EOT n, on a connection that broke in its middle. Whole ones are
# answered by the printers and not kept.
_BROKEN_QUESTION = re.compile(rb"\x10\x04?\Z")
_BATCH = 40  # files for one call of a program

WHOLE, PARTIAL, WRONG = "whole", "partial", "wrong"


@dataclasses.dataclass(frozen=True)
class Piece:
    till: int
    file: pathlib.Path  # its bytes, kept for whoever looks into a failed run
    number: int         # of the document; 0 if nothing on it says so
    kind: str
    is_broken: bool = False  # the printer itself broke its connection


@dataclasses.dataclass(frozen=True)
class Printed:
    """The bytes of a piece of paper, before anybody has looked at it."""

    till: int
    data: bytes
    is_broken: bool = False


def pieces_of(stream):
    """The jobs in the bytes of one connection."""
    starts = [m.start() for m in re.finditer(re.escape(BEGIN), stream)]
    parts = [stream[a:b] for a, b in zip([0, *starts], [*starts, len(stream)])]
    pieces = [part.removesuffix(_QUESTION) for part in parts]
    return [piece for piece in pieces if piece.removeprefix(_QUESTION).strip(b"\0")]


class Judge:
    """Names each piece by the codes on it and compares its bytes with the expected ones.

    `expected` maps the number of a document to the bytes that it has to print.
    """

    def __init__(self, preview, folder, expected):
        self._preview, self._folder, self._expected = preview, pathlib.Path(folder), expected
        self._folder.mkdir(parents=True)
        self._by_bytes = {data: number for number, data in expected.items()}

    def judge(self, printed):
        """@param printed a list of `Printed`. @return the pieces, in that order."""
        files = []
        for index, one in enumerate(printed):
            files.append(self._folder / f"piece-{index + 1:06}.prn")
            files[-1].write_bytes(one.data)
        seen = self.read_codes(files)
        return [Piece(one.till, file, *self._name(one.data, seen[file]), one.is_broken)
                for one, file in zip(printed, files)]

    # @return the number of the document and the kind of the piece
    def _name(self, data, seen):
        numbers = {number for number, _ in seen}
        number = self._by_bytes.get(data, 0)
        if len(numbers) > 1 or (number and numbers and numbers != {number}):
            return min(numbers), WRONG
        if number:
            return number, WHOLE if self._codes_hold(number, seen) else WRONG
        number = next(iter(numbers), 0) or self._number_by_prefix(data)
        if self._is_part(data, number):
            return number, PARTIAL
        return number or self._nearest_number(data), WRONG

    def _nearest_number(self, data):
        """The document that begins like this for longer than all others: that of text that is damaged."""
        lengths = sorted((len(os.path.commonprefix((data, whole))), number)
                         for number, whole in self._expected.items())
        return lengths[-1][1] if len(lengths) == 1 or lengths[-2][0] < lengths[-1][0] else 0

    # Text carries no codes.
    @staticmethod
    def _codes_hold(number, seen):
        return not seen or seen == {(number, "top"), (number, "end")}

    def _number_by_prefix(self, data):
        """The one document that begins like this. 0 if there is none, or more than one."""
        body = _common_part(data)
        found = [n for n, whole in self._expected.items() if whole.startswith(body)]
        return found[0] if len(found) == 1 else 0

    def _is_part(self, data, number):
        candidates = [self._expected[number]] if number else self._expected.values()
        body = _common_part(data)
        return any(whole.startswith(body) for whole in candidates)

    def read_codes(self, files):
        batches = [files[i:i + _BATCH] for i in range(0, len(files), _BATCH)]
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            return {file: codes for part in pool.map(self._read_batch, batches)
                    for file, codes in part.items()}

    def _read_batch(self, files):
        pictures = []
        for file in files:
            picture = file.with_suffix(".png")
            done = subprocess.run([self._preview, file, "-o", picture], capture_output=True, check=False)
            if done.returncode == 0 and picture.exists():
                pictures.append(picture)
        codes = collections.defaultdict(set)
        if pictures:
            lines = subprocess.run(["zbarimg", "-q", "--xml", "--nodbus", *pictures],
                                   capture_output=True, text=True, check=False).stdout
            for href, body in re.findall(r"<source href='([^']*)'>(.*?)</source>", lines, re.S):
                for number, place in re.findall(r"wren-(\d+)-(top|end)", body):
                    codes[pathlib.Path(href).with_suffix(".prn")].add((int(number), place))
        for picture in pictures:
            picture.unlink()
        return {file: codes.get(file, set()) for file in files}


def _common_part(data):
    """The piece without the end of a cancelled job, or what else no document has."""
    return _CANCELLED_END.sub(b"", _BROKEN_QUESTION.sub(b"", data))

