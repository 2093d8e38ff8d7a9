"""A printer made of software for the tests, and the device Till1 that leads to it."""

from __future__ import annotations

import atexit
import json
import os
import selectors
import subprocess
import tempfile
import time
import unittest
from typing import Any, Dict, List

LONG_ENOUGH = 20.0
_folder = tempfile.TemporaryDirectory()
atexit.register(_folder.cleanup)
_registry = os.path.join(_folder.name, "registry.reg")
os.environ["MARBEX_OPOS_REGISTRY"] = _registry


class PaperPrinter:
    def __init__(self, model: str) -> None:
        self.events: List[Dict[str, Any]] = []
        self._process = subprocess.Popen(
            [os.environ["MARBEX_VIRTUAL_PRINTER"], "--model", model, "--tcp", "127.0.0.1:0"],
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
        )
        assert self._process.stdout is not None
        os.set_blocking(self._process.stdout.fileno(), False)
        self._selector = selectors.DefaultSelector()
        self._selector.register(self._process.stdout, selectors.EVENT_READ)
        self._rest = b""
        self.port = self.wait_for(event="listening")["port"]

    def wait_for(self, **fields: object) -> Dict[str, Any]:
        """The first event, of the past or to come, with these fields."""
        end = time.monotonic() + LONG_ENOUGH
        seen = 0
        while True:
            for event in self.events[seen:]:
                if fields.items() <= event.items():
                    return event
            seen = len(self.events)
            if not self._selector.select(max(0.0, end - time.monotonic())):
                raise AssertionError(f"{fields} has not happened: {self.events}")
            assert self._process.stdout is not None
            data = self._process.stdout.read()
            if not data:
                raise AssertionError("the printer has ended")
            *lines, self._rest = (self._rest + data).split(b"\n")
            self.events += [json.loads(line) for line in lines]

    def tell(self, command: str) -> None:
        """Returns when it is done."""
        self.events = [event for event in self.events if event.get("command") != command]
        assert self._process.stdin is not None
        self._process.stdin.write(command.encode() + b"\n")
        self._process.stdin.flush()
        self.wait_for(event="command", command=command)

    def lose(self) -> None:
        self.tell("refuse on")
        self.tell("drop")

    def find(self) -> None:
        self.tell("refuse off")

    def end(self) -> None:
        self._process.communicate(b"quit\n", LONG_ENOUGH)
        self._selector.close()


class Bench(unittest.TestCase):
    model = "TALIS ETHERNET"

    def setUp(self) -> None:
        self.paper = PaperPrinter(self.model)
        self.addCleanup(self.paper.end)
        with open(_registry, "w", encoding="utf-8") as file:
            file.write(
                "Windows Registry Editor Version 5.00\n\n"
                "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage]\n"
                '"ACP"="65001"\n\n'
                "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Till1]\n"
                '@="Service.MarbexOposPrnDriver"\n'
                f'"PrinterModel"="{self.model}"\n'
                '"IPAddress"="127.0.0.1"\n"PortType"=dword:00000001\n'
                '"TimeoutTX"=dword:000001f4\n"TimeoutRX"=dword:000003e8\n'
                f'"Port"=dword:{self.paper.port:08x}\n'
            )

    def printed(self, text: str) -> None:
        self.paper.wait_for(event="text", text=text)
