"""The cash drawer on the printer's connector."""

from __future__ import annotations

from ctypes import c_int32

from ._companion import Companion
from ._service import milliseconds

_ON_TIME = 257
_OFF_TIME = 258


class CashDrawer(Companion):
    _prog_id = b"Service.MarbexOposCashDrawerDriver"
    _device_class = "CashDrawer"

    def open_drawer(self) -> None:
        """Queued behind the printer's output in its asynchronous mode."""
        self._output("OpenDrawer")

    def set_pulse(self, on: float, off: float) -> None:
        """How long the pulse is and the pause after it: 0.05 to 0.51 seconds each, 0.1 at the start."""
        for command, time in ((_ON_TIME, on), (_OFF_TIME, off)):
            self._do("DirectIO", command, c_int32(milliseconds(time)), "")
