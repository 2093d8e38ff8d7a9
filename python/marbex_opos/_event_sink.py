"""The control object: what a service object reports its events to, on the thread that opened it.

One table of methods serves all of them and lives as long as the process. Which object is meant is looked up by its
address, so that a call that comes when its owner has gone finds nobody.
"""

from __future__ import annotations

import ctypes
import weakref
from ctypes import c_int32, c_void_p
from typing import Any, Dict, Protocol

from . import _automation as com
from . import messages


class EventHandlers(Protocol):
    """What a device object does with its events."""

    def _output_complete(self, output_id: int) -> None: ...

    def _status_update(self, status: int) -> None: ...

    def _error(self, code: int, extended: int, response: c_int32) -> None: ...


# Names and numbers of arguments; the number of an event is its place here, from 1.
_EVENTS = (("SODirectIO", 3), ("SOError", 4), ("SOOutputComplete", 1), ("SOStatusUpdate", 1))
_IID_IUNKNOWN = bytes(8) + b"\xc0\0\0\0\0\0\0\x46"
_IID_IDISPATCH = b"\0\4\2\0" + _IID_IUNKNOWN[4:]

_handlers: Dict[int, weakref.ref[EventHandlers]] = {}


class _Object(ctypes.Structure):
    _fields_ = [("table", c_void_p)]


class EventSink:
    """A control object. It does not keep its handlers alive."""

    def __init__(self, handlers: EventHandlers) -> None:
        self._object = _Object(ctypes.addressof(_table))
        self.interface = com.Interface(ctypes.addressof(self._object))
        _handlers[self.interface] = weakref.ref(handlers)

    def close(self) -> None:
        """From now on events find nobody."""
        _handlers.pop(self.interface, None)


def _number(argument: com.Variant) -> int:
    return int(argument.plVal[0] if argument.vt & com.VT_BYREF else argument.lVal)


def _query_interface(this: int, interface_id: int, found: Any) -> int:
    if not found:
        return com.E_POINTER
    found[0] = None
    if ctypes.string_at(interface_id, 16) not in (_IID_IUNKNOWN, _IID_IDISPATCH):
        return com.E_NOINTERFACE
    found[0] = this
    return com.S_OK


def _count_reference(_this: int) -> int:
    return 1  # it belongs to its owner, whoever refers to it


def _get_type_info_count(_this: int, count: Any) -> int:
    count[0] = 0
    return com.S_OK


def _get_type_info(_this: int, _which: int, _locale: int, _info: Any) -> int:
    return com.E_NOTIMPL


def _get_ids_of_names(_this: int, _interface_id: int, names: Any, _count: int, _locale: int, ids: Any) -> int:
    for place, (name, _arguments) in enumerate(_EVENTS, 1):
        wide = com.utf16(name) + b"\0\0"
        if ctypes.string_at(names[0], len(wide)) == wide:
            ids[0] = place
            return com.S_OK
    ids[0] = -1
    return com.DISP_E_UNKNOWNNAME


def _deliver(handlers: EventHandlers, event: str, arguments: Any, count: int) -> None:
    """The arguments stand last first."""
    first = _number(arguments[count - 1])
    if event == "SOOutputComplete":
        handlers._output_complete(first)
    elif event == "SOStatusUpdate":
        handlers._status_update(first)
    elif event == "SOError":
        handlers._error(first, _number(arguments[2]), arguments[0].plVal.contents)


def _invoke(
    this: int, event: int, _interface_id: int, _locale: int, _flags: int, parameters: Any, *_unused: int
) -> int:
    try:
        if not 1 <= event <= len(_EVENTS):
            return com.DISP_E_MEMBERNOTFOUND
        name, count = _EVENTS[event - 1]
        if parameters[0].cArgs != count:
            return com.DISP_E_BADPARAMCOUNT
        reference = _handlers.get(this)
        handlers = reference() if reference is not None else None
        if handlers is None:
            return com.E_FAIL
        _deliver(handlers, name, parameters[0].rgvarg, count)
        return com.S_OK
    except BaseException as error:  # nothing may pass through the library
        messages.keep_for_caller(error)
        return com.E_FAIL


_methods = [
    kind(function)
    for kind, function in zip(
        com.METHODS,
        (
            _query_interface,
            _count_reference,
            _count_reference,
            _get_type_info_count,
            _get_type_info,
            _get_ids_of_names,
            _invoke,
        ),
    )
]
_table = (c_void_p * len(_methods))(*[ctypes.cast(method, c_void_p).value for method in _methods])
