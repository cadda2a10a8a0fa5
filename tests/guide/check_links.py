#!/usr/bin/env python3
"""Every link and picture of the documentation leads somewhere, and every page of the guide is linked from its first page.

check_links.py SOURCE_FOLDER
"""
import pathlib
import re
import sys


def anchors_of(page):
    """The anchors that a heading gets where the page is shown."""
    headings = re.findall(r"^#+ (.*)$", page.read_text(encoding="utf-8"), re.M)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def links_of(page):
    text = re.sub(r"^```.*?^```$", "", page.read_text(encoding="utf-8"), flags=re.S | re.M)
    return [link.strip() for link in re.findall(r"\]\(([^)]*)\)", re.sub(r"`[^`]*`", "", text))]


def faults_of(page):
    for link in links_of(page):
        if "://" in link:
            continue
        place, _, anchor = link.partition("#")
        target = (page.parent / place).resolve() if place else page
        if not target.exists():
            yield f"{page}: there is no {link}"
        elif anchor and anchor not in anchors_of(target):
            yield f"{page}: {place or page.name} has no heading for #{anchor}"


def main():
    root = pathlib.Path(sys.argv[1])
    guide = root / "docs/guide"
    pages = [*root.glob("*.md"), *(root / "docs").rglob("*.md")]
    faults = [fault for page in pages for fault in faults_of(page)]
    linked = {link.partition("#")[0] for link in links_of(guide / "index.md")}
    faults += [f"{page.name}: not linked from the first page of the guide" for page in guide.glob("*.md")
               if page.name not in linked | {"index.md"}]
    print("\n".join(faults) or f"the links of {len(pages)} pages are good")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
