#!/usr/bin/env python3
"""Every message of the program stands in the reference of messages: check_messages.py SOURCE_FOLDER

A message is found when all its fixed parts stand in one row (or paragraph) of docs/guide/messages.md. Alternatives of one
call, each a sentence of its own, may stand in rows of their own.
"""
import pathlib
import re
import sys

from message_texts import fragments, messages_of

REFERENCE = "docs/guide/messages.md"


def squeezed(text):
    return re.sub(r"\s+", " ", text.replace("\\|", "|")).strip()


def missing_messages(messages, reference):
    rows = [squeezed(row) for row in reference.splitlines()]

    def is_told(message):
        parts = [squeezed(part) for part in fragments(message)]
        in_one_row = any(all(part in row for part in parts) for row in rows)
        sentences = all(len(part.split()) > 3 for part in parts)
        return in_one_row or (sentences and all(any(part in row for row in rows) for part in parts))

    return [(name, message) for name, message in messages if not is_told(message)]


def main():
    root = pathlib.Path(sys.argv[1])
    messages = messages_of(root)
    if len(messages) < 250:
        print(f"only {len(messages)} messages were found in the sources: does the search still know how they are told?")
        return 1
    missing = missing_messages(messages, (root / REFERENCE).read_text(encoding="utf-8"))
    for name, message in missing:
        print(f"{name}: not in {REFERENCE}: {squeezed(message)}")
    if missing:
        print(f"Please add a row with cause and remedy for each of these {len(missing)} messages.")
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
