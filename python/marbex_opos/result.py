"""What the methods of the service objects answer."""

from __future__ import annotations

import enum

from ._automation import library


class Result(enum.IntEnum):
    """The result codes of OPOS.

    Where the standard answers OPOS_E_EXTENDED and a second number says more, the second number is the result.
    """

    SUCCESS = 0
    CLOSED = 101
    CLAIMED = 102
    NOT_CLAIMED = 103
    NO_SERVICE = 104
    DISABLED = 105
    ILLEGAL = 106
    NO_HARDWARE = 107
    OFFLINE = 108
    NO_EXIST = 109
    EXISTS = 110
    FAILURE = 111
    TIMEOUT = 112
    BUSY = 113
    EXTENDED = 114
    COVER_OPEN = 201
    PAPER_EMPTY = 203

    @classmethod
    def of(cls, code: int) -> Result:
        """FAILURE for a code that the server does not give."""
        try:
            return cls(code)
        except ValueError:
            return cls.FAILURE


def result_name(code: int) -> str:
    """The standard's name of a result code, such as "OPOS_E_NOHARDWARE"."""
    return str(library().MarbexResultName(code).decode())


def result_advice(code: int) -> str:
    """What to do about it, as a sentence in English."""
    return str(library().MarbexResultAdvice(code).decode())


class OposError(Exception):
    """A call has failed: method says which, code and result how, name and advice in words."""

    def __init__(self, code: int, method: str) -> None:
        super().__init__(code, method)
        self.code = int(code)
        self.method = method
        self.result = Result.of(code)
        self.name = result_name(code)
        self.advice = result_advice(code)

    def __str__(self) -> str:
        return f"{self.method}: {self.name} ({self.code}): {self.advice}"
