"""How events come to the program.

They arrive on the thread that opened the device, while that thread runs its messages: inside a call that waits for the
printer, in run_messages_until(), or whenever a loop of the program's own finds message_descriptor() readable and calls
run_messages(). With asyncio, "async with" of a printer does the last. What an event handler raises comes out of the
call during which the handler ran.
"""

from __future__ import annotations

import asyncio
import contextlib
import select
import threading
import time
from typing import Callable, Dict, Iterator, Optional

from ._automation import library

_raised = threading.local()
_watched: Dict[asyncio.AbstractEventLoop, int] = {}


def keep_for_caller(error: BaseException) -> None:
    """Keeps what an event handler of this thread has raised."""
    _raised.error = error


def raise_what_handlers_raised() -> None:
    """Raises it, once."""
    error: Optional[BaseException] = getattr(_raised, "error", None)
    if error is not None:
        _raised.error = None
        raise error


def message_descriptor() -> int:
    """A descriptor that is readable while messages wait for the calling thread; never read or close it."""
    return int(library().MarbexMessageDescriptor())


def run_messages() -> int:
    """Runs the messages that wait for the calling thread, and returns how many ran."""
    run = int(library().MarbexRunMessages(0))
    raise_what_handlers_raised()
    return run


def run_messages_until(done: Callable[[], bool], timeout: Optional[float] = None) -> bool:
    """Runs messages until done() is true or so many seconds have passed, and returns whether it is.

    None has no end.
    """
    end = None if timeout is None else time.monotonic() + timeout
    messages = select.poll()
    messages.register(message_descriptor(), select.POLLIN)
    while not done():
        if run_messages() > 0:
            continue
        left = None if end is None else end - time.monotonic()
        if left is not None and left <= 0:
            return done()
        messages.poll(None if left is None else left * 1000)
    return True


@contextlib.contextmanager
def messages_in_loop() -> Iterator[None]:
    """While it lasts, the running asyncio loop runs the messages of its thread."""
    loop = asyncio.get_running_loop()
    if loop not in _watched:
        loop.add_reader(message_descriptor(), run_messages)
    _watched[loop] = _watched.get(loop, 0) + 1
    try:
        yield
    finally:
        _watched[loop] -= 1
        if _watched[loop] == 0:
            del _watched[loop]
            loop.remove_reader(message_descriptor())
