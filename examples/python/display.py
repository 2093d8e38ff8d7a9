"""The customer display of the models that have one (NESTO, VELA PC, ARGO PC TURBO): what is sold appears while it is
rung up.

python3 display.py Till1
"""

import sys

from marbex_opos import LineDisplay, OposError, Printer

try:
    with Printer(sys.argv[1] if len(sys.argv) > 1 else "Till1") as printer, LineDisplay(printer) as display:
        display.clear()
        display.show_at(0, 0, "Flat White" + "3,90".rjust(display.columns - 10))
        if display.rows > 1:
            display.show_at(1, 0, "TOTAL" + "7,80".rjust(display.columns - 5))
        print(f"{display.rows} x {display.columns} characters")
except OposError as error:
    sys.exit(str(error))
