#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks the machine code of the functions that a dab runs for each vertex.

Usage: check_kernels.py SwiftStroke.so OBJECT...

- A loop that exists once per kernel contains only the code of its kernel's path.
- A loop that exists once per vector width uses the registers of this width and calls no host code.
- Nothing uses fused multiply-add.
- An object file with instructions beyond the baseline contains them only in templates over lanes. Other functions may
  be shared with the rest of the library, which must run on every CPU.

For optimised builds only. The exit status is 0 if all checks pass; otherwise it is 1, and the reasons are printed.
"""
import re
import subprocess
import sys

SWITCHES = 10
# Bits in the kernel index.
STAMP, LAYER, TILED, NOTIFY = 1, 16, 64, 256
# The loops of one vector width and the number of their instantiations.
LOOPS = {"ComputeWeights": 6, "MoveInAnyOrder": 10, "AverageRows": 2, "PackNormals": 1}
REGISTERS = {4: r"%xmm", 8: r"%ymm"}
INDIRECT = r"^(notrack )?(call|jmp)q?\s+\*"
FUSED = r"\bvf(n?m(add|sub))"
STAMP_CODE = (("divides by a stamp matrix", r"\bv?divps\b"),
              ("rounds to pixels", r"\bv?cvtss2si\b"),
              ("reads a mirrored stamp", "MirroredStartPosition"))


def functions(path):
    """Returns the instructions of each function, without the parts that are rarely executed."""
    listing = subprocess.run(["objdump", "-dC", "--no-show-raw-insn", path], check=True,
                             capture_output=True, text=True).stdout
    found, body = {}, None
    for line in listing.splitlines():
        head = re.match(r"^[0-9a-f]+ <(.*)>:$", line)
        if head:
            body = None if "[clone .cold" in head.group(1) else found.setdefault(head.group(1), [])
        elif body is not None and "\t" in line:
            body.append(line.split("\t", 1)[1])
    return found


def of_kernels(bodies, function):
    """Returns the instructions of the kernels' instances of a function, by kernel index."""
    kernels = {}
    for name, body in bodies.items():
        found = re.search(function + r"<trovik::KernelSwitches\{([^}]*)\}>", name)
        if found:
            # The name omits trailing false members.
            words = [word.strip() for word in found.group(1).split(",") if word.strip()]
            kernels[sum(1 << bit for bit, word in enumerate(words) if word == "true")] = body
    return kernels


def count(body, pattern):
    return sum(1 for instruction in body if re.search(pattern, instruction))


def check_kernels(bodies):
    expected = [i for i in range(1 << SWITCHES) if i & STAMP or not i & TILED]
    if sorted(of_kernels(bodies, "PatchKernel")) != expected:
        yield f"{len(of_kernels(bodies, 'PatchKernel'))} kernels instead of {len(expected)}"
    if any("StepVertex" in name for name in bodies):
        yield "the vertex step is not inlined"
    loops = of_kernels(bodies, "MoveBatch")
    plain, stamped = loops[LAYER], loops[LAYER | STAMP]
    for what, pattern in STAMP_CODE:
        if count(plain, pattern):
            yield f"kernel {LAYER} {what}"
        if not count(stamped, pattern):
            yield f"kernel {LAYER | STAMP}, with a stamp, does not contain the code that {what}"
    # Layers and renderers are accessed only by virtual calls.
    for bit, what in ((LAYER, "layer"), (NOTIFY, "renderer")):
        if count(loops[STAMP | bit], INDIRECT) <= count(loops[STAMP], INDIRECT):
            yield f"kernel {STAMP | bit} does not make more virtual calls than kernel {STAMP}, which has no {what}"


def check_widths(bodies):
    for width, register in REGISTERS.items():
        for loop, instances in LOOPS.items():
            found = {name: body for name, body in bodies.items() if f"{loop}<trovik::Lanes{width}" in name}
            if len(found) != instances:
                yield f"{len(found)} instances of {loop} at width {width} instead of {instances}"
            for name, body in found.items():
                if count(body, register) * 8 < len(body):
                    yield f"{name} hardly uses {register}"
                if count(body, INDIRECT):
                    yield f"{name} makes indirect calls"
                if loop == "MoveInAnyOrder":
                    for what, pattern in STAMP_CODE:
                        if count(body, pattern):
                            yield f"{name} {what}"


def check_objects(paths):
    checked = 0
    for path in paths:
        width = re.search(r"/Stages(\d+)\.cpp\.o$", path)
        if not width or width.group(1) == "4":
            continue
        checked += 1
        for name, body in functions(path).items():
            if f"Lanes{width.group(1)}" not in name and f"32x{width.group(1)}" not in name and count(body, r"^v"):
                yield f"{path}: {name} uses instructions beyond the baseline"
    if checked != len(REGISTERS) - 1:
        yield f"{checked} object files of wider vectors instead of {len(REGISTERS) - 1}"


def main():
    bodies = functions(sys.argv[1])
    wrong = [*check_kernels(bodies), *check_widths(bodies), *check_objects(sys.argv[2:])]
    wrong += [f"{name} uses fused multiply-add" for name, body in bodies.items() if count(body, FUSED)]
    for reason in wrong:
        print(reason)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
