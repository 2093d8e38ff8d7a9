"""The receipt printer."""

from __future__ import annotations

import asyncio
import contextlib
import enum
import os
from ctypes import c_int32
from dataclasses import dataclass
from types import TracebackType
from typing import Callable, List, Optional, Type, Union

from . import _automation as com
from . import messages
from ._service import _DEVICE_ENABLED, Service
from .result import OposError, Result

_OUTPUT_ID = 5
_FREEZE_EVENTS = 4
_RESULT_CODE = 6
_STATE = 9
_DEVICE_DESCRIPTION = 1000002
_ASYNC_MODE = 8001
_COVER_OPEN = 8003
_REC_EMPTY = 8014
_REC_LINE_CHARS = 8016
_REC_LINE_WIDTH = 8020
_REC_NEAR_END = 8021

_RECEIPT = 2
_AS_IS = -11
_FULL_CUT = 100
_TRANSACTION, _NORMAL = 11, 12
_OF_BITMAPS = 0x2000
_INTERNAL = 1
_MOST_BYTES = 128


class State(enum.IntEnum):
    CLOSED = 1
    IDLE = 2
    BUSY = 3
    ERROR = 4


class Status(enum.IntEnum):
    """What a status event says. IDLE comes when the device is enabled, too."""

    COVER_OPEN = 11
    COVER_CLOSED = 12
    PAPER_EMPTY = 24
    PAPER_LOW = 25
    PAPER_OK = 26
    IDLE = 1001


class ErrorAnswer(enum.IntEnum):
    """What becomes of output that failed: it is attempted again after half a second, or dropped with all that is
    queued."""

    RETRY = 11
    CLEAR = 12


class Alignment(enum.IntEnum):
    LEFT = -1
    CENTER = -2
    RIGHT = -3


class Rotation(enum.IntEnum):
    NORMAL = 0x001
    RIGHT_90 = 0x101
    LEFT_90 = 0x102
    ROTATE_180 = 0x103


class Symbology(enum.IntEnum):
    UPC_A = 101
    UPC_E = 102
    EAN_8 = 103
    EAN_13 = 104
    ITF = 106
    CODABAR = 107
    CODE_39 = 108
    CODE_93 = 109
    CODE_128 = 110


class BarCodeText(enum.IntEnum):
    NONE = -11
    ABOVE = -12
    BELOW = -13


@dataclass
class BarCode:
    """Height and module in dots, eight a millimetre; module is the narrowest bar, 1 to 3.

    The data of code 128 are ASCII, in set B, unless they begin with the start code "{A", "{B" or "{C".
    """

    data: str
    symbology: Symbology = Symbology.CODE_128
    height: int = 80
    module: int = 2
    alignment: Alignment = Alignment.CENTER
    text: BarCodeText = BarCodeText.BELOW

    def _for_the_printer(self) -> str:
        if self.symbology != Symbology.CODE_128 or self.data[:2] in ("{A", "{B", "{C"):
            return self.data
        return "{B" + self.data.replace("{", "{{")


class Printer(Service):
    """The printer of a device name. "with" and "async with" open, claim, enable and close it.

    Calls that fail raise OposError. In synchronous mode, which is the one at the start, a call returns when the link has
    taken its last byte. Asynchronous output (set_async) is queued; on_output_complete says the same of it later, or
    on_error that it failed. Text with a U+0000 in it, which would end it, is ILLEGAL.

    Event handlers may call any method; printing inside on_error is BUSY. Without on_error, or when it answers None,
    queued output is retried and a call raises its error.
    """

    _prog_id = b"Service.MarbexOposPrnDriver"
    _device_class = "POSPrinter"

    _async: bool
    _completed: int  # the last output reported complete
    _failed: int  # the last one that a call has failed to print
    _queued: int  # the last one of the asynchronous ones before the mode was changed
    _dropped: Optional[int]  # the error that queued output was dropped for

    def __init__(self, device_name: str, claim_timeout: Optional[float] = 1.0) -> None:
        super().__init__(device_name, claim_timeout)
        self.on_output_complete: Optional[Callable[[int], object]] = None
        self.on_status: Optional[Callable[[Status], object]] = None
        self.on_error: Optional[Callable[[Result], Optional[ErrorAnswer]]] = None
        self._waiters: List[asyncio.Future[None]] = []
        self._begin_account()

    def open(self) -> None:
        if not self.is_open:
            self._begin_account()
        super().open()

    def enable(self, enabled: bool = True) -> None:
        self._set(_DEVICE_ENABLED, enabled)

    def print(self, what: Union[str, BarCode]) -> None:
        """Prints text, or a bar code; what the last line of text lacks of a line feed is added."""
        if isinstance(what, str):
            self._output("PrintNormal", _RECEIPT, what)
        else:
            self._output(
                "PrintBarCode",
                _RECEIPT,
                what._for_the_printer(),
                what.symbology,
                what.height,
                what.module,
                what.alignment,
                what.text,
            )

    def print_immediate(self, text: str) -> None:
        """Prints text at once, before what is queued."""
        self._output("PrintImmediate", _RECEIPT, text)

    def print_picture(
        self, file: Union[str, os.PathLike[str]], alignment: Alignment = Alignment.CENTER, width: Optional[int] = None
    ) -> None:
        """A file in BMP, GIF, JPEG or PNG; its width in dots, or as it is. NO_EXIST when there is none."""
        self._output("PrintBitmap", _RECEIPT, os.fspath(file), _AS_IS if width is None else width, alignment)

    def rotate_pictures(self, rotation: Rotation) -> None:
        """Of the pictures that follow."""
        self._do("RotatePrint", _RECEIPT, rotation | _OF_BITMAPS)

    def cut(self, percentage: int = _FULL_CUT) -> None:
        """Feeds to the knife and cuts so many per cent of the paper."""
        self._output("CutPaper", percentage)

    def begin_transaction(self) -> None:
        """What is printed until end_transaction is collected and printed as one job, repeated as a whole when it
        fails."""
        self._do("TransactionPrint", _RECEIPT, _TRANSACTION)

    def end_transaction(self) -> None:
        self._output("TransactionPrint", _RECEIPT, _NORMAL)

    def send_bytes(self, data: bytes) -> None:
        """Bytes of the printer's own language, in pieces of 128 that are queued one after the other."""
        for at in range(0, len(data), _MOST_BYTES):
            piece = data[at : at + _MOST_BYTES]
            self._noted("DirectIO", 0, len(piece), piece.decode("latin-1"))

    def set_async(self, on: bool) -> None:
        if self._async:
            self._queued = self.output_id
        self._set(_ASYNC_MODE, on)
        self._async = on

    @property
    def output_id(self) -> int:
        """The number of the last output."""
        return self._number(_OUTPUT_ID)

    @property
    def is_output_pending(self) -> bool:
        """Whether output has been neither reported complete nor dropped."""
        if not self.is_open:
            return False
        last = self.output_id
        return self._completed < self._queued or last not in (self._completed, self._failed)

    def wait_for_output(self, timeout: Optional[float] = None) -> bool:
        """Runs messages until no output is pending; False when some still is after so many seconds.

        OposError when queued output was dropped since the last wait, because of an error.
        """
        is_done = messages.run_messages_until(lambda: not self.is_output_pending, timeout)
        self._raise_what_dropped()
        return is_done

    async def drain(self) -> None:
        """wait_for_output for asyncio, inside "async with" of the printer."""
        while self.is_output_pending:
            waiter = asyncio.get_running_loop().create_future()
            self._waiters.append(waiter)
            try:
                await waiter
            finally:
                self._waiters.remove(waiter)
        self._raise_what_dropped()

    def clear_output(self) -> None:
        """Drops what is queued, an open transaction and events not delivered yet."""
        self._do("ClearOutput")
        self._nothing_is_pending()

    def freeze_events(self, freeze: bool) -> None:
        """Holds events back."""
        self._set(_FREEZE_EVENTS, freeze)

    @property
    def state(self) -> State:
        return State(self._number(_STATE)) if self.is_open else State.CLOSED

    # As last reported; false while the printer is not enabled.
    @property
    def is_cover_open(self) -> bool:
        return self._number(_COVER_OPEN) != 0

    @property
    def is_paper_empty(self) -> bool:
        return self._number(_REC_EMPTY) != 0

    @property
    def is_paper_low(self) -> bool:
        return self._number(_REC_NEAR_END) != 0

    def check_health(self) -> None:
        """How the last exchange with the printer went."""
        self._do("CheckHealth", _INTERNAL)

    @property
    def description(self) -> str:
        return self._text(_DEVICE_DESCRIPTION)

    @property
    def line_chars(self) -> int:
        return self._number(_REC_LINE_CHARS)

    @property
    def line_width(self) -> int:
        return self._number(_REC_LINE_WIDTH)

    async def __aenter__(self) -> Printer:
        """Opens, claims and enables, which takes the loop up meanwhile; then the loop delivers the events."""
        self._stack = contextlib.ExitStack()
        with contextlib.ExitStack() as stack:
            stack.enter_context(messages.messages_in_loop())
            stack.enter_context(self)
            self._stack = stack.pop_all()
        return self

    async def __aexit__(
        self,
        kind: Optional[Type[BaseException]],
        error: Optional[BaseException],
        traceback: Optional[TracebackType],
    ) -> None:
        self._stack.close()

    def _begin_account(self) -> None:
        self._async = False
        self._completed = self._failed = self._queued = 0
        self._dropped = None

    def _set(self, prop: int, value: int) -> None:
        if self._call("SetPropertyNumber", prop, value) is None:
            raise OposError(Result.FAILURE, "SetPropertyNumber")
        code = self._number(_RESULT_CODE)
        if code != Result.SUCCESS:
            raise OposError(code, "SetPropertyNumber")

    def _output(self, method: str, *arguments: com.Argument) -> None:
        if any(isinstance(argument, str) and "\0" in argument for argument in arguments):
            raise OposError(Result.ILLEGAL, method)
        self._noted(method, *arguments)

    def _noted(self, method: str, *arguments: com.Argument) -> None:
        try:
            self._do(method, *arguments)
        except OposError:
            self._note_failure()
            raise

    def _note_failure(self) -> None:
        """Output that a call has failed to print at once is reported by nothing else."""
        if self.is_open and not self._async:
            self._failed = self.output_id

    def _nothing_is_pending(self, dropped: Optional[int] = None) -> None:
        if dropped is not None and self.is_open and (self._async or self._completed < self._queued):
            self._dropped = dropped
        if self.is_open:
            self._completed = self._queued = self.output_id
        self._wake()

    def _raise_what_dropped(self) -> None:
        code, self._dropped = self._dropped, None
        if code is not None:
            raise OposError(code, "queued output")

    def _wake(self) -> None:
        for waiter in self._waiters:
            loop = waiter.get_loop()
            if not loop.is_closed():
                loop.call_soon_threadsafe(lambda waiter=waiter: waiter.done() or waiter.set_result(None))

    def _output_complete(self, output_id: int) -> None:
        self._completed = output_id
        self._wake()
        if self.on_output_complete is not None:
            self.on_output_complete(output_id)

    def _status_update(self, status: int) -> None:
        if self.on_status is not None:
            self.on_status(Status(status))

    def _error(self, code: int, extended: int, response: c_int32) -> None:
        """A handler that raises has not answered, and the output is dropped."""
        result = extended if code == Result.EXTENDED else code
        try:
            answer = self.on_error(Result.of(result)) if self.on_error is not None else None
            if answer is not None:
                response.value = ErrorAnswer(answer)
        except BaseException:
            self._nothing_is_pending(result)
            raise
        if response.value == ErrorAnswer.CLEAR:
            self._nothing_is_pending(result)

    def _closed(self, dropped: bool) -> None:
        if dropped:
            self._dropped = Result.TIMEOUT
        self._wake()
