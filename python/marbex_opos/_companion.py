"""What hangs on a printer and works through it."""

from __future__ import annotations

from . import _automation as com
from ._service import _DEVICE_ENABLED, Service
from .printer import Printer
from .result import OposError, Result


class Companion(Service):
    """Usable while its printer is open, claimed and enabled; until then, and with a printer that has none, everything
    is ILLEGAL. Called on the printer's thread."""

    def __init__(self, printer: Printer) -> None:
        super().__init__(printer.device_name, claim_timeout=0)
        self._printer = printer

    def enable(self, enabled: bool = True) -> None:
        done = self._call("SetPropertyNumber", _DEVICE_ENABLED, enabled)
        if done is None or (self._number(_DEVICE_ENABLED) != 0) != enabled:
            raise OposError(Result.ILLEGAL, "DeviceEnabled")

    def _output(self, method: str, *arguments: com.Argument) -> None:
        if any(isinstance(argument, str) and "\0" in argument for argument in arguments):
            raise OposError(Result.ILLEGAL, method)
        try:
            self._do(method, *arguments)
        except OposError:
            self._printer._note_failure()
            raise
