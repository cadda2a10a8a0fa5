#!/usr/bin/env python3
"""The texts of all messages of the program, taken from its sources: message_texts.py SOURCE_FOLDER prints them.

A message is what is handed to one of the procedures that tell the user something, and every text named as one. Parts
that are known only when the program runs are written as "...".
"""
import pathlib
import re
import sys

# What tells no messages: programs for developers, and the words of pictures and pages.
SILENT = ("tests", "bench", "fuzz", "build", "adapters/memory", "pictures", "results_page", "analysis/methods_paragraph")

# Procedures that take a message, and constants that hold one.
TELLERS = re.compile(r"^(Raise|RaiseWriting|WrongCall|RuntimeError|Show|ShowWarning|ShowError|ShowUserError|Ask|Problem|Note|Fail"
                     r"|Guarded|GuardedWithDescription|[rR]efuse\w*|[wW]arn\w*|[rR]eject\w*|fail_\w+|raise_\w+|[dD]amaged)$")
NAMED = re.compile(r"^(k\w*(Text|Warning|Advice|Restart|Question|Problem|Failed|Refusal)|kNoTime2|kNo[A-Z]\w*)$")
LABEL_FILES = re.compile(r"error_labels\.h$")
# A sentence, or a text that says so itself, is a message wherever it stands; summaries and descriptions of --help are not.
SENTENCE = re.compile(r"(Error|Warning|ERROR): \w|^wxl: |([^\s]+\s+){3,}[^\s]+[.?!]\s*$"
                      r"|^(?=([^\s]+\s+){3}).*\b(could not|cannot|there is no|is no|more than|names no)\b", re.S)
NO_MESSAGES = re.compile(r"^(Estimates a utilization distribution|Copies a point layer|Makes a table with one row|Number of "
                         r"distributions that could not|Schoener Index|Swihart and Slade Index|Rescaling to unit|Finds and Removes|Version 1|files are read"
                         r"|\.TP|.*Examples?:)", re.S)
DECLARED = ("add_option", "add_flag", "footer", "add_subcommand", "add", "setToolTip", "addParameter", "addOutput")
# Parts of a box that are no message of their own.
ASIDE = re.compile(r"^(Title|Filter|Format)$")

RUN_TIME_ERRORS = "platform/runtime_error.cpp"

TOKEN = re.compile(r'//[^\n]*|/\*.*?\*/|R"(?P<end>\w*)\((?P<raw>.*?)\)(?P=end)"|"(?P<text>(?:\\.|[^"\\])*)"'
                   r"|'(?:\\.|[^'\\])+'|(?P<name>[A-Za-z_]\w*)|#[^\n]*|\d[\w.']*|\S", re.S)
ESCAPE = {"n": "\n", "r": "\n", "t": "\t", '"': '"', "\\": "\\"}


def tokens_of(source):
    """(kind, value) with kind text, name or mark; neighbouring texts are one; comments are left out."""
    tokens = []
    for match in TOKEN.finditer(source):
        word = match.group(0)
        if word.startswith(("//", "/*", "#")):
            continue
        text = match.group("raw")
        if text is None and match.group("text") is not None:
            text = re.sub(r"\\(.)", lambda escaped: ESCAPE.get(escaped.group(1), ""), match.group("text"))
        if text is not None:
            if tokens and tokens[-1][0] == "text":
                tokens[-1] = ("text", tokens[-1][1] + text)
            else:
                tokens.append(("text", text))
        else:
            tokens.append(("name" if match.group("name") else "mark", word))
    return tokens


def argument_end(tokens, start):
    """Index behind the bracket that closes the one at `start`."""
    depth = 0
    for index in range(start, len(tokens)):
        if tokens[index][0] == "mark":
            depth += (tokens[index][1] in "([{") - (tokens[index][1] in ")]}")
            if depth == 0:
                return index + 1
    return len(tokens)


def spoken(tokens):
    """The texts among the tokens as one message, or nothing."""
    parts = []
    for index, (kind, value) in enumerate(tokens):
        aside = index >= 2 and tokens[index - 1][1] == "=" and ASIDE.match(tokens[index - 2][1])
        argument = index >= 2 and tokens[index - 1][1] == "(" and tokens[index - 2][0] == "name" and \
            tokens[index - 2][1] in ("FindField", "HasField", "get_option", "count", "find")
        if kind == "text" and not aside and not argument:
            parts.append(value)
        elif not parts or parts[-1] != "...":
            parts.append("...")
    return re.sub(r"\{[^}]*\}|%\d", "...", "".join(parts)).strip(". ")


def fragments(message):
    """The fixed parts of a message that say something."""
    parts = re.split(r"\.\.\.|\n|%\d", message)
    return [part.strip(" .,:;()\"") for part in parts if re.search(r"[A-Za-z]{3}", part)]


def messages_in(source, name, all_texts=False):
    tokens = tokens_of(source)
    declared = set()
    for index, (kind, value) in enumerate(tokens[:-1]):
        if kind == "name" and value in DECLARED and tokens[index + 1][1] == "(":
            declared.update(range(index, argument_end(tokens, index + 1)))
        if kind == "name" and value in ("Label", "NotMinimised", "FaultText") and tokens[index + 2:index + 3] and \
                tokens[index + 1][1] == "=" and tokens[index + 2][0] == "text":
            yield spoken([tokens[index + 2]])
    for index, (kind, value) in enumerate(tokens[:-1]):
        if index in declared:
            continue
        if kind == "text" and SENTENCE.search(value) and "\n\n" not in value and not NO_MESSAGES.match(value):
            yield spoken([tokens[index]])
        if kind == "name" and value == "return" and name == RUN_TIME_ERRORS and tokens[index + 1][0] == "text":
            yield spoken([tokens[index + 1]])
        if kind != "name":
            continue
        following = tokens[index + 1]
        if all_texts or NAMED.match(value):
            end = next((at for at in range(index, len(tokens)) if tokens[at] == ("mark", ";")), index)
            if following[1] in ("=", "{", "[") and any(token[0] == "text" for token in tokens[index:end]):
                yield spoken(tokens[index + 1:end])
        elif TELLERS.match(value) and following in (("mark", "("), ("mark", "{")):
            yield spoken(tokens[index + 2:argument_end(tokens, index + 1) - 1])


def messages_of(root):
    """[(file, message)] in the order of the sources, each message of a file once."""
    found = []
    rooms = sorted(list_file.parent for list_file in pathlib.Path(root).glob("*/CMakeLists.txt"))
    for room in rooms:
        for file in sorted(room.rglob("*")):
            name = str(file.relative_to(root))
            if file.suffix not in (".cpp", ".h") or name.startswith(SILENT):
                continue
            for message in messages_in(file.read_text(encoding="utf-8"), name, bool(LABEL_FILES.search(name))):
                if fragments(message) and (name, message) not in found:
                    found.append((name, message))
    return found


if __name__ == "__main__":
    for name, message in messages_of(sys.argv[1]):
        print(f"{name}: {message}".replace("\n", " / "))
