"""The part of COM that calling a service object needs, with the layout of include/marbex/automation.h."""

from __future__ import annotations

import ctypes
import functools
import os
from ctypes import POINTER, c_char_p, c_double, c_int16, c_int32, c_uint16, c_uint32, c_void_p
from typing import Any, List, Optional, Union

S_OK = 0
E_POINTER = 0x80004003 - (1 << 32)
E_NOINTERFACE = 0x80004002 - (1 << 32)
E_NOTIMPL = 0x80004001 - (1 << 32)
E_FAIL = 0x80004005 - (1 << 32)
DISP_E_UNKNOWNNAME = 0x80020006 - (1 << 32)
DISP_E_MEMBERNOTFOUND = 0x80020003 - (1 << 32)
DISP_E_BADPARAMCOUNT = 0x8002000E - (1 << 32)

VT_I4 = 3
VT_BSTR = 8
VT_DISPATCH = 9
VT_BOOL = 11
VT_BYREF = 0x4000

_DISPATCH_METHOD = 1
_LOCALE_SYSTEM_DEFAULT = 0x0800


class _Record(ctypes.Structure):
    _fields_ = [("record", c_void_p), ("info", c_void_p)]


class _Value(ctypes.Union):
    _fields_ = [
        ("lVal", c_int32),
        ("boolVal", c_int16),
        ("dblVal", c_double),
        ("pointer", c_void_p),
        ("plVal", POINTER(c_int32)),
        ("pbstrVal", POINTER(c_void_p)),
        ("brecVal", _Record),
    ]


class Variant(ctypes.Structure):
    """VARIANT, of 24 bytes where a pointer has eight."""

    _anonymous_ = ("value",)
    _fields_ = [("vt", c_uint16), ("reserved", c_uint16 * 3), ("value", _Value)]


class Parameters(ctypes.Structure):
    """DISPPARAMS. The arguments stand last first."""

    _fields_ = [
        ("rgvarg", POINTER(Variant)),
        ("rgdispidNamedArgs", c_void_p),
        ("cArgs", c_uint32),
        ("cNamedArgs", c_uint32),
    ]


# The places of the methods in the table of an IDispatch, and their types.
QUERY_INTERFACE, ADD_REF, RELEASE, GET_TYPE_INFO_COUNT, GET_TYPE_INFO, GET_IDS_OF_NAMES, INVOKE = range(7)
METHODS: List[Any] = [
    ctypes.CFUNCTYPE(c_int32, c_void_p, c_void_p, POINTER(c_void_p)),
    ctypes.CFUNCTYPE(c_uint32, c_void_p),
    ctypes.CFUNCTYPE(c_uint32, c_void_p),
    ctypes.CFUNCTYPE(c_int32, c_void_p, POINTER(c_uint32)),
    ctypes.CFUNCTYPE(c_int32, c_void_p, c_uint32, c_uint32, POINTER(c_void_p)),
    ctypes.CFUNCTYPE(c_int32, c_void_p, c_void_p, POINTER(c_void_p), c_uint32, c_uint32, POINTER(c_int32)),
    ctypes.CFUNCTYPE(
        c_int32, c_void_p, c_int32, c_void_p, c_uint32, c_uint16, POINTER(Parameters), c_void_p, c_void_p, c_void_p
    ),
]

_NO_INTERFACE_ID = (ctypes.c_uint8 * 16)()


@functools.lru_cache(maxsize=None)
def library() -> ctypes.CDLL:
    """libmarbexopos.so.1: the file that MARBEX_OPOS_LIBRARY names, else the one that is installed."""
    name = os.environ.get("MARBEX_OPOS_LIBRARY") or "libmarbexopos.so.1"
    try:
        loaded = ctypes.CDLL(name)
    except OSError as error:
        raise OSError(
            f"{error}: install the package marbex-opos, or say by MARBEX_OPOS_LIBRARY where the library is"
        ) from None
    for function, result, arguments in (
        ("MarbexCreateService", c_int32, [c_char_p, POINTER(c_void_p)]),
        ("MarbexMessageDescriptor", c_int32, []),
        ("MarbexRunMessages", c_int32, [c_int32]),
        ("MarbexResultName", c_char_p, [c_int32]),
        ("MarbexResultAdvice", c_char_p, [c_int32]),
        ("SysAllocStringLen", c_void_p, [c_char_p, c_uint32]),
        ("SysStringByteLen", c_uint32, [c_void_p]),
        ("VariantClear", c_int32, [POINTER(Variant)]),
    ):
        entry = getattr(loaded, function)
        entry.restype, entry.argtypes = result, arguments
    return loaded


def method(interface: int, place: int) -> Any:
    """A method of a COM object, which takes the object as its first argument."""
    table = ctypes.cast(interface, POINTER(POINTER(c_void_p))).contents
    return METHODS[place](table[place])


def utf16(text: str) -> bytes:
    """What cannot be said in UTF-16 becomes "?"."""
    return text.encode("utf-16-le", "replace")


def text_of(bstr: Optional[int]) -> str:
    """The text of a BSTR."""
    if not bstr:
        return ""
    return ctypes.string_at(bstr, library().SysStringByteLen(bstr)).decode("utf-16-le", "replace")


class Interface(int):
    """The address of a COM object, as an argument."""


Argument = Union[bool, int, str, Interface, c_int32]  # c_int32: by reference, the method may change it
Answer = Union[int, str, None]


def _fill(variant: Variant, argument: Argument) -> None:
    if isinstance(argument, str):
        wide = utf16(argument)
        variant.pointer = library().SysAllocStringLen(wide, len(wide) // 2)
        if not variant.pointer:
            raise MemoryError
        variant.vt = VT_BSTR
    elif isinstance(argument, Interface):
        variant.vt, variant.pointer = VT_DISPATCH, argument
    elif isinstance(argument, c_int32):
        variant.vt, variant.plVal = VT_I4 | VT_BYREF, ctypes.pointer(argument)
    elif isinstance(argument, bool):
        variant.vt, variant.boolVal = VT_BOOL, -argument
    else:
        if not -(1 << 31) <= argument < 1 << 31:
            raise OverflowError(f"{argument} does not fit into 32 bits")
        variant.vt, variant.lVal = VT_I4, argument


def call(interface: int, name: str, *arguments: Argument) -> Answer:
    """Calls a method by its name. What it returns: a number or a text; None when the call itself has failed."""
    wide = ctypes.create_string_buffer(utf16(name) + b"\0")
    number = c_int32()
    names = (c_void_p * 1)(ctypes.addressof(wide))
    found = method(interface, GET_IDS_OF_NAMES)(
        interface, ctypes.addressof(_NO_INTERFACE_ID), names, 1, _LOCALE_SYSTEM_DEFAULT, ctypes.byref(number)
    )
    if found < 0:
        return None
    given = (Variant * max(len(arguments), 1))()
    answer = Variant()
    try:
        for variant, argument in zip(given, reversed(arguments)):
            _fill(variant, argument)
        parameters = Parameters(given, None, len(arguments), 0)
        result = method(interface, INVOKE)(
            interface,
            number.value,
            ctypes.addressof(_NO_INTERFACE_ID),
            _LOCALE_SYSTEM_DEFAULT,
            _DISPATCH_METHOD,
            ctypes.byref(parameters),
            ctypes.addressof(answer),
            None,
            None,
        )
        if result < 0:
            return None
        return text_of(answer.pointer) if answer.vt == VT_BSTR else int(answer.lVal) if answer.vt == VT_I4 else 0
    finally:
        for variant in (*given, answer):
            library().VariantClear(ctypes.byref(variant))
