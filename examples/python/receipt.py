"""A receipt, printed line by line. Every call returns when the printer has taken what it was given, or raises.

python3 receipt.py Till1
"""

import sys

from marbex_opos import OposError, Printer, style

COLUMNS = 42


def line(left: str, right: str) -> str:
    return left + right.rjust(COLUMNS - len(left)) + "\n"


def main() -> int:
    try:
        with Printer(sys.argv[1] if len(sys.argv) > 1 else "Till1") as printer:
            printer.print(style.CENTER + style.BIG + "Corner Coffee\n")
            printer.print(style.CENTER + "Torstraße 118, Berlin\n\n")
            printer.print(line("2 x Flat White", "7,80 €"))
            printer.print(line("1 x Grüner Tee", "12,50 €"))
            printer.print(line("3 x Crème brûlée", "10,20 €"))
            printer.print("-" * COLUMNS + "\n")
            printer.print(style.BOLD + line("SUMME", "30,50 €"))
            printer.print("\nΕυχαριστούμε! Спасибо!\n")
            printer.cut()
            print("printed by", printer.description)
    except OposError as error:
        print(error, file=sys.stderr)
        return 1
    return 0


sys.exit(main())
