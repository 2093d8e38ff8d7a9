"""The service objects of Marbex OPOS for Python: a receipt printer with its cash drawer and customer display.

    from marbex_opos import Printer

    with Printer("Till1") as printer:
        printer.print("Grüße, 5 €")
        printer.cut()
"""

from . import style
from .cash_drawer import CashDrawer
from .line_display import LineDisplay
from .messages import message_descriptor, run_messages, run_messages_until
from .printer import (
    Alignment,
    BarCode,
    BarCodeText,
    ErrorAnswer,
    Printer,
    Rotation,
    State,
    Status,
    Symbology,
)
from .result import OposError, Result

__all__ = [
    "Alignment",
    "BarCode",
    "BarCodeText",
    "CashDrawer",
    "ErrorAnswer",
    "LineDisplay",
    "OposError",
    "Printer",
    "Result",
    "Rotation",
    "State",
    "Status",
    "Symbology",
    "message_descriptor",
    "run_messages",
    "run_messages_until",
    "style",
]
