#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks the list of public headers, framework/public_headers.txt.

Only the listed headers of the framework are installed, next to the contract in
plugins/SwiftStroke/host. A listed header must exist and may include only listed headers and the
contract; otherwise, programs that use the installed package do not compile.

usage: check_public_headers.py [CHECKOUT]
"""

import re
import sys
from pathlib import Path


def faults(root):
    listing = root / "framework" / "public_headers.txt"
    headers = listing.read_text().split()
    if headers != sorted(set(headers)):
        yield f"{listing}: not in alphabetical order, or a header is listed twice"
    for header in headers:
        file = root / header
        if not file.is_file():
            yield f"{listing}: {header} does not exist"
            continue
        for number, line in enumerate(file.read_text().splitlines(), 1):
            include = re.match(r'\s*#include "([^"]+)"', line)
            if include is None:
                continue
            target = include.group(1)
            if target.startswith("host/"):
                if not (root / "plugins" / "SwiftStroke" / target).is_file():
                    yield f"{file}:{number}: {target} does not exist"
            elif target not in headers:
                yield f"{file}:{number}: a public header includes {target}, which is not public"


def main():
    found = list(faults(Path(sys.argv[1] if len(sys.argv) > 1 else ".")))
    for fault in found:
        print(fault)
    print(f"{len(found)} faults" if found else "The public headers include public headers only.")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
