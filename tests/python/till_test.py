import asyncio
import gc
import os
import subprocess
import sys
import threading
import unittest
from typing import List

from bench import LONG_ENOUGH, Bench

from marbex_opos import (
    BarCode,
    CashDrawer,
    ErrorAnswer,
    LineDisplay,
    OposError,
    Printer,
    Result,
    State,
    Status,
    Symbology,
    run_messages_until,
    style,
)


class Till(Bench):
    def assertFails(self, result, call, *arguments):
        with self.assertRaises(OposError) as caught:
            call(*arguments)
        self.assertEqual(caught.exception.result, result, caught.exception)
        return caught.exception

    def test_prints_text_bar_codes_and_bytes_as_they_are(self):
        with Printer("Till1") as printer:
            printer.print(style.BOLD + "Grüße, 5 €\n")
            printer.print("lone \ud800 surrogate\n")
            printer.print(BarCode("Voucher {7}"))
            printer.send_bytes(b"\n" * 127 + b"\x80\n\x1b@")
            printer.cut()
            self.assertEqual(printer.state, State.IDLE)
            self.assertIn("TALIS", printer.description)
        self.printed("Grüße, 5 €")
        self.printed("lone ? surrogate")
        self.printed("Ç")
        self.paper.wait_for(event="barcode", text="Voucher {7}")
        self.paper.wait_for(event="cut")
        self.assertFalse(any(event["event"] == "unknown" for event in self.paper.events))

    def test_errors_say_what_has_failed_and_what_to_do(self):
        printer = Printer("Till1")
        self.assertFails(Result.CLOSED, printer.print, "x")
        self.assertFails(Result.ILLEGAL, CashDrawer(printer).start)
        with printer:
            self.assertFails(Result.ILLEGAL, printer.open)
            for result, call, argument in (
                (Result.ILLEGAL, printer.print, "one\0two"),
                (Result.ILLEGAL, printer.print, BarCode("4006381333930", Symbology.EAN_13)),
                (Result.NO_EXIST, printer.print_picture, "/no/such/file.png"),
            ):
                self.assertFails(result, call, argument)
            self.assertFails(Result.ILLEGAL, LineDisplay(printer).start)
            with self.assertRaises(OverflowError):
                printer.cut(1 << 32)
            self.paper.lose()
            error = self.assertFails(Result.NO_HARDWARE, printer.print, "x\n")
            self.assertEqual((error.code, error.name, error.method), (107, "OPOS_E_NOHARDWARE", "PrintNormal"))
            self.assertIn("does not answer", str(error))
            self.assertFalse(printer.is_output_pending)
        self.assertEqual(printer.state, State.CLOSED)
        self.assertFails(Result.FAILURE, Printer("Till1").start)

    def test_queued_output_is_retried_or_dropped_as_the_handler_says(self):
        errors: List[Result] = []
        answers = [ErrorAnswer.RETRY]
        status: List[Status] = []

        def answer(error):
            errors.append(error)
            if answers[0] == ErrorAnswer.RETRY:
                self.paper.find()
            return answers[0]

        with Printer("Till1") as printer:
            printer.on_error, printer.on_status = answer, status.append
            printer.set_async(True)
            self.paper.lose()
            printer.print("queued\n")
            self.assertTrue(printer.is_output_pending)
            self.assertTrue(printer.wait_for_output(LONG_ENOUGH))
            self.assertEqual((errors[0], status), (Result.NO_HARDWARE, [Status.IDLE]))
            self.printed("queued")

            answers[0] = ErrorAnswer.CLEAR
            self.paper.lose()
            printer.print("dropped\n")
            self.assertFails(Result.NO_HARDWARE, printer.wait_for_output, LONG_ENOUGH)

            printer.on_error = None
            printer.print("held up\n")
            self.assertFalse(printer.wait_for_output(0.1))
            printer.clear_output()
            self.assertTrue(printer.wait_for_output(0))
            self.paper.find()
            printer.print("after all\n")
            self.assertTrue(printer.wait_for_output(LONG_ENOUGH))

    def test_what_handlers_raise_comes_out_of_the_call(self):
        def fail(*_):
            raise LookupError("of the handler")

        with Printer("Till1") as printer:
            printer.on_status = fail
            with self.assertRaises(LookupError):
                run_messages_until(lambda: False, LONG_ENOUGH)
            printer.print("goes on\n")
            self.paper.lose()
            printer.on_error = fail
            with self.assertRaises(LookupError):
                printer.print("x\n")
            self.assertFalse(printer.is_output_pending)

    def test_may_be_closed_by_its_own_handler(self):
        printer = Printer("Till1")
        printer.on_output_complete = lambda _: printer.close()
        printer.start()
        printer.print("last\n")
        self.assertTrue(run_messages_until(lambda: not printer.is_open, LONG_ENOUGH))
        self.printed("last")
        printer.on_output_complete = None
        with printer:
            printer.print("again\n")
        self.printed("again")

    def test_closing_tells_that_queued_output_was_dropped(self):
        printer = Printer("Till1")
        printer.start()
        printer.set_async(True)
        self.paper.lose()
        printer.print("x\n")
        self.assertFails(Result.TIMEOUT, printer.close)
        self.assertFalse(printer.is_open)
        printer.close()

    def test_what_nobody_has_any_more_is_closed(self):
        for _ in range(2):  # the second finds the device free
            printer = Printer("Till1")
            printer.start()
            printer.set_async(True)
            printer.on_output_complete = lambda _, printer=printer: None  # a cycle
            printer.print("left behind\n")
            with self.assertWarns(ResourceWarning):
                del printer
                gc.collect()
        self.printed("left behind")

    def test_ending_the_program_prints_what_is_queued(self):
        program = "import marbex_opos as m; p = m.Printer('Till1'); p.start(); p.set_async(True); p.print('the end')"
        subprocess.run([sys.executable, "-c", program], check=True, timeout=LONG_ENOUGH)
        self.printed("the end")

    def test_garbage_collected_at_every_turn_events_still_arrive(self):
        thresholds = gc.get_threshold()
        self.addCleanup(gc.set_threshold, *thresholds)
        gc.set_threshold(1)
        completed: List[int] = []
        with Printer("Till1") as printer:
            printer.on_output_complete = completed.append
            printer.set_async(True)
            for number in range(40):
                printer.print(f"line {number}\n")
            self.assertTrue(printer.wait_for_output(LONG_ENOUGH))
            self.assertEqual(len(completed), 40)

    def test_belongs_to_its_thread_but_is_closed_on_any(self):
        outcome: List[object] = []

        def use(printer):
            try:
                printer.print("elsewhere\n")
            except RuntimeError as error:
                outcome.append(str(error))
            printer.close()

        with Printer("Till1") as printer:
            other = threading.Thread(target=use, args=(printer,))
            other.start()
            other.join(LONG_ENOUGH)
            self.assertIn("MainThread", str(outcome))
            self.assertFalse(printer.is_open)

        def run():
            with Printer("Till1") as mine:
                mine.set_async(True)
                mine.print("of a thread\n")
                outcome.append(mine.wait_for_output(LONG_ENOUGH))

        other = threading.Thread(target=run)
        other.start()
        other.join(LONG_ENOUGH)
        self.assertEqual(outcome[-1], True)
        self.printed("of a thread")

    def test_a_child_of_fork_leaves_the_printer_alone(self):
        with Printer("Till1") as printer:
            child = os.fork()
            if child == 0:
                try:
                    printer._finalizer()
                    os._exit(0)
                finally:
                    os._exit(1)
            self.assertEqual(os.waitpid(child, 0)[1], 0)
            printer.print("still there\n")
        self.printed("still there")

    def test_works_in_asyncio(self):
        async def sell():
            ticks: List[int] = []

            async def tick():
                while True:
                    await asyncio.sleep(0)
                    ticks.append(1)

            def answer(_):
                self.paper.find()
                return ErrorAnswer.RETRY

            async with Printer("Till1") as printer:
                completed: List[int] = []
                printer.on_output_complete = completed.append
                printer.on_error = answer
                printer.set_async(True)
                other = asyncio.ensure_future(tick())
                printer.print("first\n")
                await asyncio.wait_for(printer.drain(), LONG_ENOUGH)
                self.paper.lose()
                printer.print("second\n")
                await asyncio.wait_for(printer.drain(), LONG_ENOUGH)
                self.assertEqual(len(completed), 2)
                self.assertTrue(ticks, "the loop stood still")

                self.paper.lose()
                printer.on_error = lambda _: ErrorAnswer.CLEAR
                printer.print("dropped\n")
                with self.assertRaises(OposError):
                    await asyncio.wait_for(printer.drain(), LONG_ENOUGH)

                printer.on_error = None
                printer.print("held up\n")
                with self.assertRaises(asyncio.TimeoutError):
                    await asyncio.wait_for(printer.drain(), 0.1)
                waiting = asyncio.ensure_future(printer.drain())
                await asyncio.sleep(0)
                printer.clear_output()
                await asyncio.wait_for(waiting, LONG_ENOUGH)
                self.paper.find()
                printer.print("after all\n")
                await asyncio.wait_for(printer.drain(), LONG_ENOUGH)
                other.cancel()

        asyncio.run(sell())
        self.printed("second")
        self.printed("after all")


class Counter(Bench):
    model = "NESTO"

    def test_has_a_drawer_and_a_display(self):
        with Printer("Till1") as printer, CashDrawer(printer) as drawer, LineDisplay(printer) as display:
            with self.assertRaises(OposError):
                drawer.set_pulse(0.2, 0.049)
            drawer.open_drawer()
            self.assertEqual((display.rows, display.columns), (2, 20))
            display.show_at(1, 0, "Total 1,50")
            self.assertEqual(self.paper.wait_for(event="pulse")["on_ms"], 200)
            self.paper.wait_for(event="display", rows=[" " * 20, "Total 1,50".ljust(20)])
            drawer.enable(False)
            with self.assertRaises(OposError) as caught:
                drawer.open_drawer()
            self.assertEqual(caught.exception.result, Result.DISABLED)


if __name__ == "__main__":
    unittest.main()
