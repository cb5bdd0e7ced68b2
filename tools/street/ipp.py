# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""The few IPP requests of a client to a scheduler or to the application, by libcups."""

import ctypes
import dataclasses
import re

_cups = ctypes.CDLL("libcups.so.2")
for _name in ("httpConnect2", "ippNewRequest", "ippAddString", "ippAddInteger", "cupsGetResponse",
              "ippFindAttribute", "ippFirstAttribute", "ippNextAttribute"):
    getattr(_cups, _name).restype = ctypes.c_void_p
_cups.ippGetString.restype = ctypes.c_char_p
_cups.ippGetName.restype = ctypes.c_char_p

_OPERATION, _INTEGER, _KEYWORD, _URI, _NAME, _MIME = 0x01, 0x21, 0x44, 0x45, 0x42, 0x49
_CONNECT_MS = 5000
_NOT_FOUND = 0x0406
_HTTP_CONTINUE = 100
PRINT_JOB, CANCEL_JOB, GET_JOB_ATTRIBUTES, GET_JOBS = 0x0002, 0x0008, 0x0009, 0x000A
BUSY = 0x0507  # server-error-busy
_SECONDS = 60.0

# job-state, RFC 8011
PENDING, HELD, PROCESSING, STOPPED, CANCELLED, ABORTED, COMPLETED = range(3, 10)
ENDED = (CANCELLED, ABORTED, COMPLETED)
_SAYS_NOTHING = re.compile(r"job (aborted|cancell?ed|stopped)\.?$", re.I)


class Refused(Exception):
    """The server answered with an error; `status` is its IPP status."""

    def __init__(self, status, message):
        super().__init__(message or f"IPP status {status:#06x}")
        self.status = status


class Unknown(Exception):
    """The request was sent, but the answer was lost: nobody knows whether it was obeyed."""


@dataclasses.dataclass(frozen=True)
class JobState:
    state: int
    message: str       # job-state-message, for people
    reasons: str = ""  # job-state-reasons, for programs

    @property
    def has_ended(self):
        return self.state in ENDED

    @property
    def says_why(self):
        """Whether a person learns more than that the job has ended."""
        return bool(self.message) and not _SAYS_NOTHING.match(self.message)


class Client:
    """One user at one queue. Raises OSError if nothing was sent."""

    def __init__(self, host, port, path, user):
        self._host, self._port, self._path, self._user = host, port, path, user
        self._uri = f"ipp://{host}:{port}{path}"

    def print_job(self, name, format, data):
        """@return the job-id"""
        return self._ask(PRINT_JOB, [(_NAME, "job-name", name), (_MIME, "document-format", format)], data,
                         lambda answer: self._number(answer, "job-id"))

    def cancel(self, job):
        self._ask(CANCEL_JOB, [(_INTEGER, "job-id", job)])

    def state(self, job, name):
        """@return None if the server does not know the job, or gave its number to one of another name."""
        try:
            return self._ask(GET_JOB_ATTRIBUTES, [(_INTEGER, "job-id", job)], b"",
                             lambda answer: self.state_in(answer, name))
        except Refused as refusal:
            if refusal.status == _NOT_FOUND:
                return None
            raise

    def find(self, name):
        """@return the job-id of the last job of this name, ended ones included; 0 if there is none"""
        wanted = [(_KEYWORD, "which-jobs", "all"), (_KEYWORD, "requested-attributes", "all")]
        return self._ask(GET_JOBS, wanted, b"", lambda answer: self.names_in(answer).get(name, 0))

    @staticmethod
    def names_in(answer):
        """@return job-name -> job-id"""
        names, job = {}, {}
        found = ctypes.c_void_p(_cups.ippFirstAttribute(answer))
        while found:
            key = _cups.ippGetName(found)
            if key is None:
                job = {}  # between two jobs
            elif key == b"job-id":
                job["id"] = _cups.ippGetInteger(found, 0)
            elif key == b"job-name":
                job["name"] = (_cups.ippGetString(found, 0, None) or b"").decode()
            if len(job) == 2:
                names[job["name"]] = max(job["id"], names.get(job["name"], 0))
            found = ctypes.c_void_p(_cups.ippNextAttribute(answer))
        return names

    def state_in(self, answer, name):
        if name not in self._texts(answer, "job-name"):
            return None
        return JobState(self._number(answer, "job-state"), " ".join(self._texts(answer, "job-state-message")),
                        " ".join(self._texts(answer, "job-state-reasons")))

    def _ask(self, operation, attributes, data=b"", read=lambda answer: None):
        http = ctypes.c_void_p(_cups.httpConnect2(self._host.encode(), self._port, None, 0, 0, 1, _CONNECT_MS, None))
        if not http:
            raise ConnectionError(f"nobody listens on port {self._port}")
        _cups.httpSetTimeout(http, ctypes.c_double(_SECONDS), None, None)
        request = ctypes.c_void_p(_cups.ippNewRequest(operation))
        answer = None
        try:
            for tag, name, value in ((_URI, "printer-uri", self._uri), (_NAME, "requesting-user-name", self._user),
                                     *attributes):
                if tag == _INTEGER:
                    _cups.ippAddInteger(request, _OPERATION, tag, name.encode(), value)
                else:
                    _cups.ippAddString(request, _OPERATION, tag, name.encode(), None, value.encode())
            answer = self._exchange(http, request, data)
            if not answer:
                raise Unknown("no answer")
            status = _cups.ippGetStatusCode(answer)
            if status > 0xFF:
                raise Refused(status, ", ".join(self._texts(answer, "status-message")))
            return read(answer)
        finally:
            _cups.ippDelete(answer)
            _cups.ippDelete(request)
            _cups.httpClose(http)

    def _exchange(self, http, request, data):
        path = self._path.encode()
        length = ctypes.c_size_t(_cups.ippLength(request) + len(data))
        if _cups.cupsSendRequest(http, request, path, length) != _HTTP_CONTINUE:
            return ctypes.c_void_p(_cups.cupsGetResponse(http, path))
        if data:
            _cups.cupsWriteRequestData(http, data, ctypes.c_size_t(len(data)))
        return ctypes.c_void_p(_cups.cupsGetResponse(http, path))

    @staticmethod
    def _number(answer, name):
        found = ctypes.c_void_p(_cups.ippFindAttribute(answer, name.encode(), 0))
        return _cups.ippGetInteger(found, 0) if found else 0

    @staticmethod
    def _texts(answer, name):
        found = ctypes.c_void_p(_cups.ippFindAttribute(answer, name.encode(), 0))
        count = _cups.ippGetCount(found) if found else 0
        return [(_cups.ippGetString(found, i, None) or b"").decode() for i in range(count)]
