"""The cash drawer, which hangs on the printer: the printer is open, claimed and enabled before it, and for as long as it.

python3 drawer.py Till1
"""

import sys

from marbex_opos import CashDrawer, OposError, Printer

try:
    with Printer(sys.argv[1] if len(sys.argv) > 1 else "Till1") as printer, CashDrawer(printer) as drawer:
        drawer.set_pulse(0.12, 0.24)  # some drawers want a longer pulse; in seconds
        printer.print("Cash                               60,00 €\n")
        drawer.open_drawer()
        print("the drawer has been kicked; it has no sensor, look whether it is open")
except OposError as error:
    sys.exit(str(error))
