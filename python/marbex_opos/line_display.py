"""The customer display on the printer."""

from __future__ import annotations

from ._companion import Companion

_COLUMNS = 5002
_ROWS = 5016
_NORMAL = 0


class LineDisplay(Companion):
    """Queued behind the printer's output in its asynchronous mode."""

    _prog_id = b"Service.MarbexOposLineDisplayDriver"
    _device_class = "LineDisplay"

    def clear(self) -> None:
        self._output("ClearText")

    def show(self, text: str) -> None:
        """At the cursor."""
        self._output("DisplayText", text, _NORMAL)

    def show_at(self, row: int, column: int, text: str) -> None:
        self._output("DisplayTextAt", row, column, text, _NORMAL)

    @property
    def rows(self) -> int:
        return self._number(_ROWS)

    @property
    def columns(self) -> int:
        return self._number(_COLUMNS)
