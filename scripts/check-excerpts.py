#!/usr/bin/env python3
"""Checks that a Markdown page quotes its examples as they are: every fenced block that names a
language (```cpp, ```cmake, ```text; not ```sh command lines) must appear verbatim, as whole
lines, in one of the given files. An edited example then fails this check until the page shows
the new code. Blocks without a language (layouts, sketches) are not checked.

    check-excerpts.py PAGE.md FILE...
"""
import re
import sys

FENCE = re.compile(r"^```(\S*)\s*$")
UNCHECKED = {"", "sh", "console"}


def blocks(page):
    """(line number, language, text) of each fenced block."""
    found, language, start, lines = [], None, 0, []
    for number, line in enumerate(page.splitlines(), 1):
        fence = FENCE.match(line)
        if language is None and fence:
            language, start, lines = fence.group(1), number, []
        elif language is not None and line.rstrip() == "```":
            found.append((start, language, "\n".join(lines) + "\n"))
            language = None
        elif language is not None:
            lines.append(line)
    if language is not None:
        sys.exit(f"unterminated block at line {start}")
    return found


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    page_path, sources = sys.argv[1], sys.argv[2:]
    with open(page_path, encoding="utf-8") as page:
        checked = [b for b in blocks(page.read()) if b[1] not in UNCHECKED]
    texts = []
    for path in sources:
        with open(path, encoding="utf-8") as source:
            texts.append("\n" + source.read())
    stale = [(line, text) for line, _, text in checked
             if not any("\n" + text in source for source in texts)]
    for line, text in stale:
        print(f"{page_path}:{line}: this block is in none of the examples:\n{text}")
    if not checked:
        sys.exit(f"{page_path}: no blocks to check")
    return 1 if stale else 0


if __name__ == "__main__":
    sys.exit(main())
