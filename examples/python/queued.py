"""Asynchronous output in asyncio: calls return at once, the printer prints what is queued, and events tell what became
of it. An error waits for an answer; the program's loop goes on meanwhile.

python3 queued.py Till1
"""

import asyncio
import sys

from marbex_opos import ErrorAnswer, OposError, Printer, Result
from marbex_opos.result import result_advice, result_name

RECEIPTS = 3
MOST_ATTEMPTS = 100


async def sell(device: str) -> None:
    attempts = 0

    def completed(output_id: int) -> None:
        nonlocal attempts
        attempts = 0
        print("output", output_id, "is printed", flush=True)

    # Output that failed is attempted again from its beginning, half a second after the answer.
    def failed(error: Result) -> ErrorAnswer:
        nonlocal attempts
        if attempts == 0:
            print(f"waiting: {result_name(error)}: {result_advice(error)}", flush=True)
        attempts += 1
        return ErrorAnswer.RETRY if attempts < MOST_ATTEMPTS else ErrorAnswer.CLEAR

    async with Printer(device) as printer:
        printer.on_output_complete = completed
        printer.on_error = failed
        printer.set_async(True)
        for number in range(1, RECEIPTS + 1):
            # As a transaction, so that a receipt whose end fails is repeated as a whole.
            printer.begin_transaction()
            printer.print(f"Receipt {number}\n")
            printer.print("1 x Espresso                        2,20 €\n")
            printer.cut()
            printer.end_transaction()
            print("receipt", number, "is queued as", printer.output_id, flush=True)
        await printer.drain()


try:
    asyncio.run(sell(sys.argv[1] if len(sys.argv) > 1 else "Till1"))
except OposError as error:
    sys.exit(f"what was queued has been dropped: {error}")
