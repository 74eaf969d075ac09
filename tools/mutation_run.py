#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the trovik command on damaged files and checks that it reads or rejects each one cleanly.

    tools/mutation_run.py TROVIK [--count N] [--seed S] [--readers obj,ply] [--keep DIR] [--jobs J]

For each reader, the script creates N files by damaging files from fuzz/corpus/READER. Each file is
passed to the verb that reads it, with a time limit and a limit on the address space. The run fails
if the process

  - is terminated by a signal;
  - exceeds the time limit and then does not exit within seconds of an interrupt (a damaged script may
    request a lot of work, which is reported as slow but is not a failure);
  - exits with a status other than 0, 1 or 2;
  - fails without an error line, or prints output that is not printable UTF-8.

The same seed produces the same files. With --keep, failing files are saved along with the command's output.
"""
import argparse
import concurrent.futures
import os
import pathlib
import random
import resource
import shutil
import signal
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
TIME_LIMIT_S = 10
INTERRUPT_LIMIT_S = 5
ADDRESS_SPACE = 2 << 30
LONGEST_LINE = 2000
SLOW = "slow"
# A mesh that the scripts in the corpus use in addition to those in examples/meshes.
CUBE = """v -1 -1 -1\nv 1 -1 -1\nv -1 1 -1\nv 1 1 -1\nv -1 -1 1\nv 1 -1 1\nv -1 1 1\nv 1 1 1
f 1 3 4 2\nf 5 6 8 7\nf 1 2 6 5\nf 3 7 8 4\nf 1 5 7 3\nf 2 4 8 6\n"""

# Arguments for a damaged file, by reader. OUT is an empty folder for the command's output files.
VERBS = {
    "obj": ["info", "FILE"],
    "ply": ["info", "FILE"],
    "stl": ["info", "FILE"],
    "gltf": ["info", "FILE"],
    "scene": ["info", "FILE"],
    "script": ["sculpt", "FILE", "--quiet", "--output", "OUT"],
    "journal": ["recover", "FILE", "--quiet", "--output", "OUT/recovered.trovik"],
}
# Bytes that have a meaning in file formats.
SIGNIFICANT = b'\x00\x01\x7f\x80\xff"{}[],:-+.eE019/ \n\t'
NUMBERS = [b"1e38", b"-1e39", b"nan", b"inf", b"4294967295", b"-1", b"0", b"1e-30", b"18446744073709551616"]


def damaged(files, rng):
    """Applies one to four edits to a file drawn from the corpus."""
    data = bytearray(rng.choice(files))
    for _ in range(rng.randint(1, 4)):
        if not data:
            break
        at = rng.randrange(len(data))
        end = min(len(data), at + rng.randint(1, 64))
        kind = rng.randrange(8)
        if kind == 0:
            data[at] = rng.randrange(256)
        elif kind == 1:
            data[at] ^= 1 << rng.randrange(8)
        elif kind == 2:
            data[at] = rng.choice(SIGNIFICANT)
        elif kind == 3:
            del data[at:end]
        elif kind == 4:
            data[at:at] = data[at:end]
        elif kind == 5:
            other = rng.choice(files)
            start = rng.randrange(len(other))
            data[at:end] = other[start : start + end - at]
        elif kind == 6:
            data[at : at + rng.randint(0, 3)] = rng.choice(NUMBERS)
        else:
            del data[at:]
    return bytes(data)


def limit_address_space():
    resource.setrlimit(resource.RLIMIT_AS, (ADDRESS_SPACE, ADDRESS_SPACE))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def complaint(status, error):
    """Returns the fault in the exit status or output of the process, or an empty string."""
    if status < 0:
        return f"ended by signal {-status}"
    if status not in (0, 1, 2):
        return f"exit status {status}"
    try:
        text = error.decode("utf-8")
    except UnicodeDecodeError:
        return "output that is not UTF-8"
    if any(not (c.isprintable() or c == "\n") for c in text):
        return "output with control characters"
    lines = text.splitlines()
    if any(len(line) > LONGEST_LINE for line in lines):
        return f"a line of more than {LONGEST_LINE} characters"
    errors = [line for line in lines if "error" in line.lower() or line.startswith("trovik")]
    if status == 1 and not errors:
        return "no error line"
    return ""


def check(trovik, reader, number, data, suffix, folder):
    """Runs the command on one file. Returns the fault, SLOW, or an empty string."""
    case = folder / f"{reader}-{number}"
    case.mkdir()
    file = case / f"damaged{suffix}"
    file.write_bytes(data)
    out = case / "out"
    out.mkdir()
    if reader == "script":
        (case / "meshes").symlink_to(ROOT / "examples/meshes")
        (case / "cube.obj").write_text(CUBE, encoding="ascii")
    arguments = [a.replace("FILE", str(file)).replace("OUT", str(out)) for a in VERBS[reader]]
    environment = dict(os.environ, TROVIK_DATA=str(ROOT / "examples"))
    with subprocess.Popen(
        [trovik, *arguments],
        stdin=subprocess.DEVNULL,
        stdout=subprocess.DEVNULL,
        stderr=subprocess.PIPE,
        cwd=case,
        env=environment,
        preexec_fn=limit_address_space,
    ) as process:
        try:
            output = process.communicate(timeout=TIME_LIMIT_S)[1]
            wrong = complaint(process.returncode, output)
        except subprocess.TimeoutExpired:
            process.send_signal(signal.SIGINT)
            try:
                output = process.communicate(timeout=INTERRUPT_LIMIT_S)[1]
                wrong = SLOW
            except subprocess.TimeoutExpired:
                process.kill()
                output = process.communicate()[1]
                wrong = f"still running {INTERRUPT_LIMIT_S} s after an interrupt"
    if not wrong or wrong == SLOW:
        left = [p.name for p in case.rglob("*.part*")]
        if left:
            wrong = f"left {left[0]} behind"
    if not wrong or wrong == SLOW:
        shutil.rmtree(case)
    else:
        (case / "stderr.txt").write_bytes(output)
    return wrong


def run_reader(options, reader, folder):
    corpus = sorted(p for p in (ROOT / "fuzz/corpus" / reader).iterdir() if p.stat().st_size > 0)
    by_suffix = {}
    for path in corpus:
        by_suffix.setdefault(path.suffix, []).append(path.read_bytes())
    suffixes = sorted(by_suffix)
    rng = random.Random(f"{options.seed} {reader}")
    failures = []
    slow = 0
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        running = {}
        for number in range(options.count):
            suffix = suffixes[number % len(suffixes)]
            data = damaged(by_suffix[suffix], rng)
            running[pool.submit(check, options.trovik, reader, number, data, suffix, folder)] = number
        for done in concurrent.futures.as_completed(running):
            if done.result() == SLOW:
                slow += 1
            elif done.result():
                failures.append((running[done], done.result()))
    print(f"{reader}: {options.count} files, {len(failures)} failures, {slow} slow", flush=True)
    for number, wrong in sorted(failures)[:20]:
        print(f"  {folder / f'{reader}-{number}'}: {wrong}", flush=True)
    return len(failures)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("trovik", help="the command to run")
    parser.add_argument("--count", type=int, default=2000, help="files per reader (default: 2000)")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--readers", default=",".join(VERBS), help="comma-separated readers (default: all)")
    parser.add_argument("--keep", type=pathlib.Path, help="folder for failing files")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="parallel processes")
    options = parser.parse_args()
    options.trovik = str(pathlib.Path(options.trovik).resolve())
    readers = options.readers.split(",")
    unknown = [r for r in readers if r not in VERBS]
    if unknown:
        parser.error(f"unknown reader {unknown[0]}; known: {', '.join(VERBS)}")
    if options.keep:
        options.keep.mkdir(parents=True, exist_ok=True)
        return 1 if sum(run_reader(options, r, options.keep.resolve()) for r in readers) else 0
    with tempfile.TemporaryDirectory(prefix="trovik-mutation-") as folder:
        failures = sum(run_reader(options, r, pathlib.Path(folder)) for r in readers)
    if failures:
        print("Run again with --keep DIR to keep the failing files.")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
