#!/usr/bin/env python3
"""Fails when a README code block marked <!-- snippet: PATH ... --> differs from PATH."""
import pathlib
import re
import sys

root = pathlib.Path(__file__).resolve().parent.parent
readme = (root / "README.md").read_text()
blocks = re.findall(r"<!-- snippet: (\S+)[^\n]*-->\n```\w*\n(.*?)```\n", readme, re.S)
if not blocks:
    sys.exit("README.md has no snippet block")
for path, block in blocks:
    if (root / path).read_text() != block:
        sys.exit(f"README.md: the block of {path} differs from the file; copy the file into it")
print(f"{len(blocks)} README snippet(s) match their files")
