#!/usr/bin/env python3
"""CITATION.cff is of this version, and cites what it says: check_citation.py SOURCES"""
import pathlib
import re
import sys

SKIP = 77
NEEDED = {"cff-version", "message", "title", "type", "version", "license", "authors", "abstract", "references"}


def problems(root):
    import yaml
    citation = yaml.safe_load((root / "CITATION.cff").read_text(encoding="utf-8"))
    project = (root / "CMakeLists.txt").read_text(encoding="utf-8")
    version = re.search(r"project\(wxl VERSION ([0-9.]+)", project).group(1)
    for key in sorted(NEEDED - set(citation)):
        yield f"CITATION.cff has no {key}"
    if str(citation.get("version")) != version:
        yield f"CITATION.cff is of version {citation.get('version')}, the program of {version}"
    if citation.get("license") != "GPL-2.0-or-later":
        yield f"CITATION.cff names the licence {citation.get('license')}"
    guide = "".join(page.read_text(encoding="utf-8") for page in sorted((root / "docs" / "guide").glob("*.md")))
    methods = (root / "analysis" / "methods_paragraph.cpp").read_text(encoding="utf-8")
    for work in citation.get("references", []):
        author = work["authors"][0]["family-names"]
        if author not in guide or str(work["year"]) not in guide + methods:
            yield f"neither guide nor methods cite {author} {work['year']}"


def main():
    try:
        import yaml  # noqa: F401
    except ImportError:
        print("skipped: python3-yaml is needed")
        return SKIP
    found = list(problems(pathlib.Path(sys.argv[1])))
    print("\n".join(found) if found else "CITATION.cff is true")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
