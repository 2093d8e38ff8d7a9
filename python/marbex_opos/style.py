"""Escape sequences of print data.

They hold until NORMAL or the end of the text; CENTER and RIGHT for their line.
"""

NORMAL = "\x1b|N"
BOLD = "\x1b|bC"
UNDERLINE = "\x1b|uC"
ITALIC = "\x1b|iC"
WIDE = "\x1b|2C"
TALL = "\x1b|3C"
BIG = "\x1b|4C"
CENTER = "\x1b|cA"
RIGHT = "\x1b|rA"
