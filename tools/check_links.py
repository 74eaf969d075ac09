#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks that the links in the documents have valid targets.

In all tracked Markdown files, it checks relative links, heading anchors, images, and files and
folders that are named in code spans, such as `framework/mesh`. A name with a folder must be a path from
the root of the checkout or from the document; a bare name of a source or document, such as `Command.h`,
must be the name of a tracked file. Names with wildcards and paths in build folders are not checked.

usage: check_links.py [CHECKOUT]
"""

import re
import subprocess
import sys
from pathlib import Path, PurePosixPath

LINK = re.compile(r"!?\[(?:[^\[\]]|\[[^\]]*\])*\]\(([^()\s]+(?:\([^()\s]*\))?)(?:\s+\"[^\"]*\")?\)")
REFERENCE = re.compile(r"^\s*\[[^\]]+\]:\s*(\S+)", re.M)
HTML_LINK = re.compile(r"<(?:a|img)\b[^>]*?\b(?:href|src)=\"([^\"]+)\"")
SPAN = re.compile(r"`([^`\n]+)`")
FENCE = re.compile(r"(?ms)^\s*(```|~~~).*?^\s*\1[^\n]*$")
PATH = re.compile(r"[\w.-]+(?:/[\w.-]+)+/?|[\w.-]+/|[\w-]+\.(?:h|cpp|inl|py|sh|cmake|md|in)")


def heading_anchors(text):
    """Returns the anchors of a document's headings, as code hosts generate them."""
    anchors = set()
    for title in re.findall(r"(?m)^#{1,6}\s+(.*?)\s*#*$", FENCE.sub("", text)):
        title = re.sub(r"!?\[([^\]]*)\]\([^)]*\)", r"\1", title)
        anchor = re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-")
        name, number = anchor, 0
        while name in anchors:
            number += 1
            name = f"{anchor}-{number}"
        anchors.add(name)
    anchors.update(re.findall(r'<a\s+(?:id|name)="([^"]+)"', text))
    return anchors


def line_of(text, offset):
    return text.count("\n", 0, offset) + 1


class Checkout:
    def __init__(self, root):
        self.root = root
        listing = subprocess.run(["git", "-C", str(root), "ls-files", "-z"], check=True, capture_output=True)
        self.files = {name for name in listing.stdout.decode().split("\0") if name}
        self.names = {PurePosixPath(name).name for name in self.files}
        self.folders = {str(parent) for name in self.files for parent in PurePosixPath(name).parents}
        self.top = {name.split("/")[0] for name in self.folders}

    def documents(self):
        return sorted(name for name in self.files if name.endswith(".md"))

    def text(self, name):
        return (self.root / name).read_text("utf-8")

    def has(self, path):
        return path in self.files or path in self.folders

    def resolved(self, document, path):
        """Returns the path from the root, or None if it leads out of the checkout."""
        parts = []
        start = () if path.startswith("/") else PurePosixPath(document).parent.parts
        for part in (*start, *path.split("/")):
            if part == "..":
                if not parts:
                    return None
                parts.pop()
            elif part not in ("", "."):
                parts.append(part)
        return "/".join(parts) or "."


def link_faults(checkout, document, text):
    code = SPAN.sub(lambda span: "`" + " " * len(span.group(1)) + "`", text)
    code = FENCE.sub(lambda fence: re.sub(r"[^\n]", " ", fence.group(0)), code)
    for pattern in (LINK, REFERENCE, HTML_LINK):
        for match in pattern.finditer(code):
            link = match.group(1)
            if re.match(r"[a-z][a-z0-9+.-]*:", link):
                continue
            path, _, anchor = link.partition("#")
            target = checkout.resolved(document, path) if path else document
            where = f"{document}:{line_of(text, match.start())}"
            if target is None or not checkout.has(target):
                yield f"{where}: the link \"{link}\" does not lead to a tracked file"
            elif anchor and target.endswith(".md") and anchor not in heading_anchors(checkout.text(target)):
                yield f"{where}: {target} has no heading for the anchor \"#{anchor}\""


def name_faults(checkout, document, text):
    text = FENCE.sub(lambda fence: re.sub(r"[^\n]", " ", fence.group(0)), text)
    for match in SPAN.finditer(text):
        name = match.group(1)
        if not PATH.fullmatch(name):
            continue
        path = name.rstrip("/")
        if "/" in path:
            known = checkout.has(path) or checkout.has(checkout.resolved(document, path) or "")
            relevant = path.split("/")[0] in checkout.top
        elif name.endswith("/"):
            continue
        else:
            known = path in checkout.names
            relevant = True
        if relevant and not known:
            yield f"{document}:{line_of(text, match.start())}: `{name}` is not a tracked file or folder"


def main():
    checkout = Checkout(Path(sys.argv[1] if len(sys.argv) > 1 else "."))
    faults = []
    for document in checkout.documents():
        text = checkout.text(document)
        faults += link_faults(checkout, document, text)
        faults += name_faults(checkout, document, text)
    for fault in faults:
        print(fault)
    print(f"{len(faults)} faults" if faults else "The links of the documents are in order.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
