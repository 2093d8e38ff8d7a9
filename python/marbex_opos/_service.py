"""A service object as its application has it, called by name. What Printer, CashDrawer and LineDisplay have in common."""

from __future__ import annotations

import os
import threading
import warnings
import weakref
from ctypes import byref, c_int32, c_void_p
from types import TracebackType
from typing import ClassVar, Optional, Type, TypeVar

from . import _automation as com
from . import messages
from ._event_sink import EventHandlers, EventSink
from .result import OposError, Result

_DEVICE_ENABLED = 3
_FOREVER = -1
_RESULT_CODE_EXTENDED = 7
_LONGEST = 0x7FFFFFFF

_Self = TypeVar("_Self", bound="Service")


def milliseconds(seconds: Optional[float]) -> int:
    """None has no end."""
    if seconds is None:
        return _FOREVER
    if seconds < 0:
        raise ValueError("a time must not be negative")
    return min(round(seconds * 1000), _LONGEST)


class _Handle:
    """The service object and the control object it reports to. They may outlive their owner for a moment."""

    def __init__(self, service: int, handlers: EventHandlers, name: str) -> None:
        self.sink = EventSink(handlers)
        self.name = name
        self.thread = threading.current_thread()
        self._service: Optional[int] = service
        self._process = os.getpid()
        self._lock = threading.Lock()

    def call(self, method: str, *arguments: com.Argument) -> com.Answer:
        """com.call of the service object, which stays alive although an event handler, or another thread, may close it
        meanwhile."""
        with self._lock:
            service = self._service
            if service is None:
                raise OposError(Result.CLOSED, method)
            com.method(service, com.ADD_REF)(service)
        try:
            return com.call(service, method, *arguments)
        finally:
            com.method(service, com.RELEASE)(service)

    def drop(self) -> None:
        """Gives the service object up; from now on events find nobody."""
        self.sink.close()
        with self._lock:
            service, self._service = self._service, None
        if service is not None:
            com.method(service, com.RELEASE)(service)

    def abandon(self) -> None:
        """For an owner that is gone: no handler is called any more."""
        if self._process != os.getpid():
            return  # a child of fork has none of the threads that closing needs
        self.sink.close()
        try:
            code = self.call("CloseService")
        finally:
            self.drop()
        if code == Result.SUCCESS:
            warnings.warn(f"{self.name} was not closed", ResourceWarning)
        else:
            warnings.warn(f"{self.name} was not closed: output that was queued has been dropped", RuntimeWarning)


class Service:
    """Called on the thread that opened it; closed on any. What is not closed is when nobody has it any more, and when
    the program ends."""

    _prog_id: ClassVar[bytes]
    _device_class: ClassVar[str]

    def __init__(self, device_name: str, claim_timeout: Optional[float]) -> None:
        self.device_name = device_name
        self.claim_timeout = claim_timeout
        self._handle: Optional[_Handle] = None

    def open(self) -> None:
        """Makes the service object and opens the device."""
        if self._handle is not None:
            raise OposError(Result.ILLEGAL, "OpenService")
        service = c_void_p()
        if com.library().MarbexCreateService(self._prog_id, byref(service)) != com.S_OK or not service.value:
            raise OposError(Result.NO_SERVICE, "OpenService")
        self._handle = _Handle(service.value, self, f"{self._device_class} {self.device_name}")
        self._finalizer = weakref.finalize(self, self._handle.abandon)
        try:
            self._do("OpenService", self._device_class, self.device_name, self._handle.sink.interface)
        except BaseException:
            self._drop()
            raise

    def claim(self, timeout: Optional[float] = 1.0) -> None:
        """Waits so many seconds until the device is nobody else's in this process; None has no end."""
        self._do("ClaimDevice", milliseconds(timeout))

    def release(self) -> None:
        self._do("ReleaseDevice")

    def enable(self, enabled: bool = True) -> None:
        raise NotImplementedError

    def start(self) -> None:
        """Opens, claims and enables; whatever fails, the device is closed again."""
        self.open()
        try:
            self.claim(self.claim_timeout)
            self.enable()
        except BaseException:
            self.close()
            raise

    def close(self) -> None:
        """Closes the device, whatever comes of it. Output that is queued is printed first; an error that comes up
        meanwhile drops the rest and is raised. Of a closed device nothing happens."""
        handle = self._handle
        if handle is None:
            return
        try:
            code = handle.call("CloseService")
        finally:
            self._drop()
        self._closed(code != Result.SUCCESS)
        messages.raise_what_handlers_raised()
        if code != Result.SUCCESS:
            raise OposError(code if isinstance(code, int) else Result.FAILURE, "CloseService")

    @property
    def is_open(self) -> bool:
        return self._handle is not None

    def __enter__(self: _Self) -> _Self:
        if not self.is_open:
            self.start()
        return self

    def __exit__(
        self,
        kind: Optional[Type[BaseException]],
        error: Optional[BaseException],
        traceback: Optional[TracebackType],
    ) -> None:
        self.close()

    def _drop(self) -> None:
        handle, self._handle = self._handle, None
        if handle is not None:
            self._finalizer.detach()
            handle.drop()

    def _call(self, method: str, *arguments: com.Argument) -> com.Answer:
        handle = self._handle
        if handle is None:
            raise OposError(Result.CLOSED, method)
        if threading.current_thread() is not handle.thread:
            raise RuntimeError(f"{handle.name} is used on the thread that opened it, {handle.thread.name}")
        answer = handle.call(method, *arguments)
        messages.raise_what_handlers_raised()
        return answer

    def _ask(self, method: str, *arguments: com.Argument) -> int:
        """Calls a method whose result is a result code, and returns it."""
        answer = self._call(method, *arguments)
        if not isinstance(answer, int):
            return Result.FAILURE
        return answer if answer != Result.EXTENDED else self._number(_RESULT_CODE_EXTENDED)

    def _do(self, method: str, *arguments: com.Argument) -> None:
        code = self._ask(method, *arguments)
        if code != Result.SUCCESS:
            raise OposError(code, method)

    def _number(self, prop: int) -> int:
        answer = self._call("GetPropertyNumber", prop)
        return answer if isinstance(answer, int) else 0

    def _text(self, prop: int) -> str:
        answer = self._call("GetPropertyString", prop)
        return answer if isinstance(answer, str) else ""

    # What becomes of events; see Printer.
    def _output_complete(self, output_id: int) -> None:
        pass

    def _status_update(self, status: int) -> None:
        pass

    def _error(self, code: int, extended: int, response: c_int32) -> None:
        pass

    def _closed(self, dropped: bool) -> None:
        pass
