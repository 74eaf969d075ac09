#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Reads the traces that `trovik sculpt SCRIPT --trace DIR` writes (docs/trace.md)."""

import argparse
import json
import os
import sys

try:
    import numpy as np
except ImportError:
    sys.exit("trovik_trace: needs NumPy (Debian: python3-numpy)")

SAME, DIFFERENT, TROUBLE = 0, 1, 2
DABS = ("ApplyDab", "ApplyToWholeMesh")
# Calls for changes that the host makes to a mesh without the brush.
HOST = ("SettleSymmetry", "HostChange")


class TraceError(Exception):
    """Raised when a trace file cannot be read; the message is one line."""


# --- Reading -------------------------------------------------------------------------------------


def read_json(path, text, place):
    try:
        return json.loads(text)
    except (ValueError, RecursionError) as error:
        raise TraceError(f"{path}: {place}not complete JSON: {error}") from None


def read_text(path):
    try:
        with open(path, encoding="utf-8") as file:
            return file.read()
    except UnicodeDecodeError as error:
        raise TraceError(f"{path}: not UTF-8 text at byte {error.start}") from None
    except OSError as error:
        raise TraceError(f"{path}: {error.strerror}") from None


def read_lines(folder):
    """Returns the lines of a trace as (text, object)."""
    path = os.path.join(folder, "trace.jsonl")
    text = read_text(path)
    lines = []
    for number, line in enumerate(text.splitlines(), 1):
        parsed = read_json(path, line, f"line {number}: ")
        if not isinstance(parsed, dict) or not isinstance(parsed.get("call"), str):
            raise TraceError(f"{path}: line {number}: not a call in a trace")
        for part in ("in", "out"):
            if not isinstance(parsed.get(part), dict):
                raise TraceError(f'{path}: line {number}: the call has no "{part}"')
        lines.append((line, parsed))
    if text and not text.endswith("\n"):
        raise TraceError(f"{path}: line {len(lines)}: truncated, the line does not end")
    return lines


def read_array(path):
    """Reads a .npy file of version 1.0 and checks its length against its header before allocating memory."""
    try:
        with open(path, "rb") as file:
            size = os.fstat(file.fileno()).st_size
            if np.lib.format.read_magic(file) != (1, 0):
                raise TraceError(f"{path}: not a .npy file of version 1.0")
            shape, fortran, dtype = np.lib.format.read_array_header_1_0(file)
            if fortran or dtype.hasobject:
                raise TraceError(f"{path}: not an array of plain numbers in C order")
            count = 1
            for extent in shape:
                count *= extent
            wanted = file.tell() + count * dtype.itemsize
            if size != wanted:
                state = "truncated" if size < wanted else "too long"
                raise TraceError(f"{path}: {state}: {size} bytes, but its header requires {wanted}")
            return np.frombuffer(file.read(), dtype=dtype).reshape(shape)
    except OSError as error:
        raise TraceError(f"{path}: {error.strerror}") from None
    except ValueError as error:
        raise TraceError(f"{path}: truncated or not an .npy file: {' '.join(str(error).split())}") from None


def files_below(folder, ending):
    """Returns the relative paths of all files below the folder, sorted."""
    found = []
    for place, _, names in os.walk(folder):
        for name in names:
            if name.endswith(ending):
                found.append(os.path.relpath(os.path.join(place, name), folder))
    return sorted(found)


def check_folder(folder):
    if not os.path.isdir(folder):
        raise TraceError(f"{folder}: no such folder")
    if not os.path.isfile(os.path.join(folder, "trace.jsonl")):
        raise TraceError(f"{folder}: not a trace: trace.jsonl is missing")


# --- Comparing -----------------------------------------------------------------------------------


def is_number(value):
    return isinstance(value, (int, float)) and not isinstance(value, bool)


def same_number(a, b):
    """Compares integers as integers; if either value is a float, compares both as single-precision bits."""
    if isinstance(a, int) and isinstance(b, int):
        return a == b
    with np.errstate(over="ignore"):
        return np.float32(a).tobytes() == np.float32(b).tobytes()


def differences(a, b, place):
    """Yields the paths at which two JSON values differ, as (path, value of a, value of b)."""
    if isinstance(a, dict) and isinstance(b, dict):
        for key in list(a) + [key for key in b if key not in a]:
            where = f"{place}.{key}" if place else key
            if key not in a:
                yield where, "absent", shown(b[key])
            elif key not in b:
                yield where, shown(a[key]), "absent"
            else:
                yield from differences(a[key], b[key], where)
    elif isinstance(a, list) and isinstance(b, list):
        for index, (one, other) in enumerate(zip(a, b)):
            yield from differences(one, other, f"{place}[{index}]")
        if len(a) != len(b):
            yield place, f"{len(a)} entries", f"{len(b)} entries"
    elif is_number(a) and is_number(b):
        if not same_number(a, b):
            yield place, shown(a), shown(b)
    elif type(a) is not type(b) or a != b:
        yield place, shown(a), shown(b)


def shown(value):
    text = json.dumps(value)
    return text if len(text) <= 60 else text[:57] + "..."


class Report:
    """Prints the first differences and counts all of them."""

    def __init__(self, limit):
        self.limit = limit
        self.count = 0

    def add(self, text):
        self.count += 1
        if self.count <= self.limit:
            print(text)

    def close(self, lines, arrays):
        if self.count > self.limit:
            print(f"and {self.count - self.limit} more differences")
        if self.count == 0:
            print(f"same: {lines} lines, {arrays} arrays")
        return DIFFERENT if self.count else SAME


def compare_lines(a, b, report):
    lines_a, lines_b = read_lines(a), read_lines(b)
    for number, ((text_a, line_a), (text_b, line_b)) in enumerate(zip(lines_a, lines_b), 1):
        if text_a == text_b:
            continue
        for place, one, other in differences(line_a, line_b, ""):
            report.add(f"trace.jsonl:{number}: {line_a['call']}: {place}: {one} / {other}")
    if len(lines_a) != len(lines_b):
        report.add(f"trace.jsonl: {len(lines_a)} lines / {len(lines_b)} lines")
    return len(lines_a)


def compare_json_files(a, b, report):
    for name in common_files(a, b, ".json", report):
        one, other = (read_json(p, read_text(p), "") for p in (os.path.join(a, name), os.path.join(b, name)))
        for place, value_a, value_b in differences(one, other, ""):
            report.add(f"{name}: {place}: {value_a} / {value_b}")


def common_files(a, b, ending, report):
    names_a, names_b = files_below(a, ending), files_below(b, ending)
    for name in sorted(set(names_a) ^ set(names_b)):
        report.add(f"{name}: {'only in ' + (a if name in names_a else b)}")
    return [name for name in names_a if name in set(names_b)]


def differing_elements(one, other):
    """Returns the indices at which two arrays of the same type and shape are not bit-identical."""
    width = one.dtype.itemsize
    bytes_a = np.frombuffer(one.tobytes(), np.uint8).reshape(-1, width)
    bytes_b = np.frombuffer(other.tobytes(), np.uint8).reshape(-1, width)
    return np.flatnonzero((bytes_a != bytes_b).any(axis=1))


def compare_arrays(a, b, report):
    names = common_files(a, b, ".npy", report)
    for name in names:
        one, other = read_array(os.path.join(a, name)), read_array(os.path.join(b, name))
        if one.dtype != other.dtype or one.shape != other.shape:
            report.add(f"{name}: {one.dtype}{list(one.shape)} / {other.dtype}{list(other.shape)}")
            continue
        if one.size == 0:
            continue
        which = differing_elements(one, other)
        if which.size == 0:
            continue
        first = np.unravel_index(which[0], one.shape)
        place = ", ".join(str(index) for index in first)
        report.add(f"{name}[{place}]: {one[first]} / {other[first]} ({which.size} of {one.size} differ)")
    return len(names)


def compare(options):
    for folder in (options.a, options.b):
        check_folder(folder)
    report = Report(options.limit)
    lines = compare_lines(options.a, options.b, report)
    compare_json_files(options.a, options.b, report)
    arrays = compare_arrays(options.a, options.b, report)
    return report.close(lines, arrays)


# --- Showing -------------------------------------------------------------------------------------


def dab_numbers(lines):
    """Returns, for each line, its 1-based number among the ApplyDab lines, or None."""
    numbers, count = [], 0
    for _, line in lines:
        if line["call"] == "ApplyDab":
            count += 1
            numbers.append(count)
        else:
            numbers.append(None)
    return numbers


class Unknown(Exception):
    """Raised when a value cannot be derived from a trace; the message is the reason."""


def read_meta(state, mesh):
    path = os.path.join(state, mesh, "meta.json")
    meta = read_json(path, read_text(path), "")
    try:
        return {name: int(meta[name]) for name in ("level", "vertexCount", "faceCount")}
    except (KeyError, TypeError, ValueError) as error:
        raise TraceError(f'{path}: "level", "vertexCount" or "faceCount" is missing: {error}') from None


def bound_positions(folder, state, mesh):
    path = os.path.join(folder, state)
    if not os.path.isdir(path):
        raise Unknown("the trace was not recorded with --trace-every 1")
    level = read_meta(path, mesh)["level"]
    return read_array(os.path.join(path, mesh, f"level-{level}", "positions.npy"))


def settle(positions, line):
    """Returns a copy of the positions after a SettleSymmetry."""
    vertices = np.array(line["out"]["vertices"], dtype=np.int64)
    settled = np.array(line["out"]["positions"], dtype=np.float32).reshape(-1, 3)
    if len(vertices) != len(settled) or (vertices < 0).any() or (vertices >= len(positions)).any():
        raise ValueError("vertices and positions do not match the mesh")
    result = positions.copy()
    result[vertices] = settled
    return result


def dab_state(dab):
    return f"dab-{dab:06d}"


def positions_before(folder, lines, index, mesh):
    """Returns the positions of a mesh's bound level before a line: the last state plus later SettleSymmetry lines."""
    state, settled = "before", []
    dabs = dab_numbers(lines)
    for number in range(index - 1, -1, -1):
        line = lines[number][1]
        if line["call"] == "ApplyToWholeMesh":
            raise Unknown("there is no state between the previous ApplyToWholeMesh and this line")
        if line["call"] == "ApplyDab":
            state = dab_state(dabs[number])
            break
        if line["call"] in HOST and line["in"]["mesh"] == mesh:
            if line["call"] == "HostChange":
                state = line["in"]["state"]
                break
            settled.append(line)
    positions = bound_positions(folder, state, mesh)
    for line in reversed(settled):
        positions = settle(positions, line)
    return positions


def movement(folder, lines, index, mesh, after):
    """Describes the moved vertices; `after` computes the later positions from the earlier ones."""
    try:
        before = positions_before(folder, lines, index, mesh)
        later = after(before)
    except Unknown as reason:
        return f"unknown: {reason}"
    if before.shape != later.shape:
        return "unknown: the number of vertices has changed"
    moved = (before.view(np.uint32) != later.view(np.uint32)).any(axis=1)
    if not moved.any():
        return "0"
    lengths = np.linalg.norm(later.astype(np.float64) - before.astype(np.float64), axis=1)
    farthest = int(np.argmax(lengths))
    return f"{int(moved.sum())}; largest displacement {lengths[farthest]:.6g}, at vertex {farthest}"


def numbers(values):
    return "(" + ", ".join(f"{v:.6g}" if is_number(v) else str(v) for v in values) + ")"


def box_text(box):
    if is_number(box[0]) and is_number(box[3]) and box[0] > box[3]:
        return "empty"
    return f"{numbers(box[:3])} to {numbers(box[3:])}"


def summary(line, dab):
    call, given, out = line["call"], line["in"], line["out"]
    if call == "SetActiveConfiguration":
        return f"tool {given.get('tool')}"
    if call == "BeginStroke":
        return f"{given.get('mesh')}, tool {given.get('tool')}, modifier {given.get('modifier')}"
    if call == "SettleSymmetry":
        return f"{given.get('mesh')}, {len(out.get('vertices', []))} vertices"
    if call == "HostChange":
        return f"{given.get('mesh')}, {given.get('reason')}, state {given.get('state')}"
    if call == "EndStroke":
        return f"{len(out.get('finished', []))} changes finished"
    tested = out.get("facesTested", [])
    text = f"dab {dab}, " if dab is not None else ""
    text += f"{len(tested)} faces tested, {out.get('recordCount')} records"
    return text + (f", error: {out['error']}" if out.get("error") else "")


def show_dab(folder, lines, index, dab):
    line = lines[index][1]
    given, out = line["in"], line["out"]
    hit = given["hit"]
    rows = [("hit", f"{hit['mesh']} face {hit['face']} at {numbers(hit['position'])}"
             + (", mirrored" if hit.get("mirror") else ""))]
    if dab is not None:
        rows.append(("brush", f"radius {given['size']:.6g}, pressure {given['pressure']:.6g}, "
                     f"strength {given['strength']:.6g}"))
    else:
        rows.append(("brush", f"strength {given['strength']:.6g}, by facing: {given['byFacing']}"))
    tested = out["facesTested"]
    rows.append(("faces tested", f"{len(tested)}, reached {sum(1 for visit in tested if visit[1])}"))
    rows.append(("direction", "not set" if out["directionVector"] is None else numbers(out["directionVector"])))
    rows.append(("records", str(out["recordCount"])))
    if dab is not None and out["bound"] is not None:
        rows.append(("vertices moved", movement(folder, lines, index, out["bound"],
                                                lambda _: bound_positions(folder, dab_state(dab), out["bound"]))))
    if "box" in out:
        rows.append(("box", box_text(out["box"])))
    rows.append(("notices", ", ".join(str(len(heard)) for heard in out["notices"]) or "none"))
    rows.append(("visit stamp", str(out["visitStamp"])))
    rows += outcome_rows(out)
    return rows


def show_host(folder, lines, index):
    line = lines[index][1]
    mesh = line["in"]["mesh"]
    if line["call"] == "SettleSymmetry":
        return [("mesh", mesh), ("vertices", str(len(line["out"]["vertices"]))),
                ("vertices moved", movement(folder, lines, index, mesh, lambda before: settle(before, line)))]
    state = line["in"]["state"]
    meta = read_meta(os.path.join(folder, state), mesh)
    return [("mesh", mesh), ("reason", line["in"]["reason"]), ("state", state), ("level", str(meta["level"])),
            ("vertices", str(meta["vertexCount"])), ("faces", str(meta["faceCount"])),
            ("vertices moved", movement(folder, lines, index, mesh, lambda _: bound_positions(folder, state, mesh)))]


def outcome_rows(out):
    rows = [("message", message) for message in out.get("messages", [])]
    if out.get("error"):
        rows.append(("error", out["error"]))
    if "bound" in out:
        rows.append(("bound", str(out["bound"])))
    return rows


def show(options):
    check_folder(options.folder)
    lines = read_lines(options.folder)
    dabs = dab_numbers(lines)
    if options.call is None:
        for number, (_, line) in enumerate(lines, 1):
            print(f"{number:6d}  {line['call']:22s}  {summary(line, dabs[number - 1])}")
        return SAME
    if not 1 <= options.call <= len(lines):
        raise TraceError(f"{options.folder}: there is no call {options.call}; the trace has {len(lines)}")
    index = options.call - 1
    line = lines[index][1]
    dab = dabs[index]
    print(f"call {options.call}: {line['call']}" + (f", dab {dab}" if dab is not None else ""))
    try:
        if line["call"] in DABS:
            rows = show_dab(options.folder, lines, index, dab)
        elif line["call"] in HOST:
            rows = show_host(options.folder, lines, index)
        else:
            rows = [(key, shown(value)) for key, value in line["in"].items()]
            rows += [(key, shown(value)) for key, value in line["out"].items()]
    except (KeyError, TypeError, IndexError, ValueError) as error:
        raise TraceError(f"{options.folder}/trace.jsonl: line {options.call}: a field is missing or "
                         f"has another type: {error}") from None
    width = max(len(name) for name, _ in rows)
    for name, value in rows:
        print(f"  {name:{width}s}  {value}")
    return SAME


# --- The command ---------------------------------------------------------------------------------


def positive(text):
    value = int(text)
    if value < 1:
        raise argparse.ArgumentTypeError("at least 1")
    return value


def parse_arguments():
    parser = argparse.ArgumentParser(
        prog="trovik_trace.py",
        description="Reads the traces that `trovik sculpt SCRIPT --trace DIR` writes. "
        "docs/trace.md describes the format.",
        epilog="Exit status: 0 success, for compare: the traces are the same; 1 the traces differ; 2 invalid usage, or "
        "a file that is missing, truncated or not part of a trace (one line on standard error names the file).",
    )
    commands = parser.add_subparsers(title="commands", required=True, metavar="COMMAND")

    showing = commands.add_parser(
        "show", help="lists the calls in a trace, or shows the effects of one call",
        description="Lists the calls to the brush and the changes by the host, one per line. With --call N, shows line N in "
        "full. For a dab: the tested faces, records, box, notices, and, in a trace recorded with --trace-every 1, the "
        "number of moved vertices and the largest displacement. For a change by the host: the command, the state of "
        "the mesh and the number of moved vertices.")
    showing.add_argument("folder", metavar="DIR", help="folder of the trace")
    showing.add_argument("--call", type=positive, metavar="N", help="line N of trace.jsonl")
    showing.set_defaults(run=show)

    comparing = commands.add_parser(
        "compare", help="compares two traces bit for bit",
        description="Compares two traces: every line of trace.jsonl field by field, every meta.json and every array "
        "bit for bit. Floats are compared as single-precision bits, so that -0.0 is not 0.0. Prints the file, location "
        "and both values of the first differences.")
    comparing.add_argument("a", metavar="A", help="folder of one trace")
    comparing.add_argument("b", metavar="B", help="folder of the other trace")
    comparing.add_argument("--limit", type=positive, default=20, metavar="N",
                           help="print at most N differences (default: 20)")
    comparing.set_defaults(run=compare)
    return parser.parse_args()


def main():
    options = parse_arguments()
    try:
        return options.run(options)
    except TraceError as error:
        print(f"trovik_trace: {error}", file=sys.stderr)
        return TROUBLE
    except BrokenPipeError:
        # The process that reads the output has closed it.
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        return SAME


if __name__ == "__main__":
    sys.exit(main())
