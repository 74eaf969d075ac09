#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks the machine code of the patch kernels: each specialisation contains only the code of its own path.

Usage: check_kernels.py SwiftStroke.so

For optimised builds only. The exit status is 0 if all checks pass; otherwise it is 1, and the reasons are printed.
"""
import re
import subprocess
import sys

SWITCHES = 10
# Bits in the kernel index.
STAMP, LAYER, NOTIFY = 1, 16, 256


def kernel_index(name):
    """Returns the index of a demangled kernel or of its loop. The name omits trailing false members."""
    found = re.search(r"(?:PatchKernel|MoveBatch)<trovik::KernelSwitches\{([^}]*)\}>", name)
    if not found:
        return None
    words = [word.strip() for word in found.group(1).split(",") if word.strip()]
    return sum(1 << bit for bit, word in enumerate(words) if word == "true")


def functions(path):
    """Returns the instructions of the kernels by index, and the names of all functions."""
    listing = subprocess.run(["objdump", "-dC", "--no-show-raw-insn", path], check=True,
                             capture_output=True, text=True).stdout
    kernels, names, body = {}, [], None
    for line in listing.splitlines():
        head = re.match(r"^[0-9a-f]+ <(.*)>:$", line)
        if head:
            names.append(head.group(1))
            index = kernel_index(head.group(1))
            cold = "[clone .cold" in head.group(1)
            body = kernels.setdefault(index, []) if index is not None and not cold else None
        elif body is not None and "\t" in line:
            body.append(line.split("\t", 1)[1])
    return kernels, names


def count(body, pattern):
    return sum(1 for instruction in body if re.search(pattern, instruction))


def main():
    kernels, names = functions(sys.argv[1])
    wrong = []
    if sorted(kernels) != list(range(1 << SWITCHES)):
        wrong.append(f"{len(kernels)} kernels instead of {1 << SWITCHES}")
    if any("StepVertex" in name for name in names):
        wrong.append("the vertex step is not inlined")
    indirect = r"call.*\*"
    plain = kernels[0]
    # A stamp needs a projective division, rounding to pixels, and mirrored reads.
    for what, pattern in (("divides by a stamp matrix", r"\bv?divps\b"),
                          ("rounds to pixels", r"\bv?cvtss2si\b"),
                          ("reads a mirrored stamp", "MirroredStartPosition")):
        if count(plain, pattern):
            wrong.append(f"kernel 0 {what}")
        if not count(kernels[STAMP], pattern):
            wrong.append(f"kernel {STAMP}, with a stamp, does not contain the code that {what}")
    # Layers and renderers are accessed only by virtual calls.
    for index, what in ((LAYER, "layer"), (NOTIFY, "renderer")):
        if count(kernels[index], indirect) <= count(plain, indirect):
            wrong.append(f"kernel {index} does not make more virtual calls than kernel 0, which has no {what}")
    # Indirect calls are allowed only for the mask, the tool and its bias, each once per patch.
    if count(plain, indirect) > 4:
        wrong.append(f"kernel 0 makes {count(plain, indirect)} virtual calls")
    for reason in wrong:
        print(reason)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
