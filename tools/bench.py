#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the benchmarks and reports the results.

    bench.py run BUILD OUT [FILTER]   writes all figures to OUT/bench.json and OUT/bench.txt
    bench.py check BUILD RECORDED     measures the ratios and compares them with the recorded ones
    bench.py record BUILD RECORDED [PROGRAM ...]
                                      measures and records the ratios of the given programs
                                      (default: all); the programs are stroke-bench,
                                      document-bench, display-bench and trovik-ladder

BUILD is the folder of an optimised build. Times are CPU times, except that document-bench reports
wall-clock times. The minimum and the median of several runs are reported; ratios use the minimum.
Compare ratios within one run instead of times, because the machine may be busy.
"""
import json
import os
import pathlib
import platform
import re
import statistics
import subprocess
import sys
import tempfile

REPETITIONS = 12
WORSE = 1.15
# The stroke through the command: side of its coarse grid, subdivision levels, and number of dabs.
GRID_SIDE, GRID_LEVELS, DABS = 375, 2, 100


def environment(build):
    data = pathlib.Path(__file__).resolve().parent.parent / "examples"
    return dict(os.environ, TROVIK_PLUGIN_PATH=str((build / "plugins").resolve()), TROVIK_DATA=str(data))


def run_program(build, name, wanted, options=()):
    """Returns the rows of a benchmark program, one per run of each benchmark."""
    done = subprocess.run(
        [build / "bin" / name, "--benchmark_format=json", f"--benchmark_filter={wanted}", *options],
        env=environment(build), check=True, stdout=subprocess.PIPE, text=True)
    # Nothing is printed if the filter matches no benchmark.
    rows = json.loads(done.stdout)["benchmarks"] if done.stdout else []
    wrong = [f"{row['name']}: {row['error_message']}" for row in rows if row.get("error_occurred")]
    if wrong:
        sys.exit("wrong results:\n  " + "\n  ".join(wrong))
    return [row for row in rows if row["run_type"] == "iteration"]


def run_repeated(build, program, wanted=".", repetitions=REPETITIONS):
    """Returns the nanoseconds (minimum, median) and covered vertices of each benchmark, by name."""
    unit = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
    found, times = {}, {}
    options = [f"--benchmark_repetitions={repetitions}", "--benchmark_min_time=0.05",
               "--benchmark_enable_random_interleaving=true"]
    for row in run_program(build, program, wanted, options):
        name = row["run_name"]
        times.setdefault(name, []).append(row["cpu_time"] * unit[row["time_unit"]])
        found[name] = {"vertices": row.get("vertices"), "bytes": row.get("bytes"),
                       "records": row.get("records")}
    for name, row in found.items():
        row["ns"], row["median"] = min(times[name]), statistics.median(times[name])
    return found


def run_document_bench(build, wanted="."):
    """Returns the same figures for document-bench. This program computes the minimum and the median
    itself, because building its largest document takes longer than all measurements on it. Times
    are wall-clock times, because some operations use several threads."""
    found = {}
    for row in run_program(build, "document-bench", wanted):
        name = re.sub("/iterations:.*", "", row["run_name"])
        found[f"document/{name}"] = {"ns": row["fastest_ms"] * 1e6, "median": row["median_ms"] * 1e6,
                                     "vertices": row.get("vertices")}
    return found


def run_display_bench(build, wanted="."):
    found = run_repeated(build, "display-bench", wanted)
    return {"display/" + re.sub("/process_time.*|/real_time", "", name): row for name, row in found.items()}


def write_grid(path, side):
    with open(path, "w", encoding="ascii") as out:
        for row in range(side + 1):
            for column in range(side + 1):
                out.write(f"v {column} {row} 0\n")
        for row in range(side):
            for column in range(side):
                at = row * (side + 1) + column + 1
                out.write(f"f {at} {at + 1} {at + side + 2} {at + side + 1}\n")


def run_command(build, folder, dabs):
    """Returns the CPU seconds and peak memory of a script with this many dabs along the diagonal."""
    radius = GRID_SIDE / 20.0
    cells = [int(GRID_SIDE * (k + 0.5) / DABS) for k in range(dabs)]
    steps = [{"tool": "Sculpt", "set": {"radius": radius, "strength": 5}}]
    if dabs:
        steps.append({"stroke": {"dabs": [{"face": (cell * GRID_SIDE + cell) << 2 * GRID_LEVELS} for cell in cells]}})
    script = folder / f"{dabs}.json"
    script.write_text(json.dumps({"mesh": "grid.obj", "levels": GRID_LEVELS, "steps": steps}))
    with subprocess.Popen([build / "bin" / "trovik", "sculpt", script], env=environment(build),
                          stdout=subprocess.DEVNULL) as command:
        _, status, usage = os.wait4(command.pid, 0)
        command.returncode = os.waitstatus_to_exitcode(status)
    if command.returncode != 0:
        sys.exit(f"trovik sculpt failed with status {command.returncode}")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


def run_whole_stroke(build):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        write_grid(folder / "grid.obj", GRID_SIDE)
        # The runs are interleaved, because both spend most of their time on the same start-up work.
        pairs = [(run_command(build, folder, 0), run_command(build, folder, DABS)) for _ in range(7)]
    seconds = min(dabs[0] for _, dabs in pairs) - min(none[0] for none, _ in pairs)
    return {"dabs per second": DABS / max(seconds, 1e-9), "peak bytes": min(dabs[1] for _, dabs in pairs)}


def table(found):
    lines = [f"{'benchmark':42} {'vertices':>9} {'us':>10} {'median':>10} {'ns/vertex':>10} {'Mvertex/s':>10} {'/ floor':>8}"]
    for name, row in sorted(found.items()):
        line = f"{name:42} {int(row['vertices'] or 0):9} {row['ns'] / 1e3:10.1f} {row['median'] / 1e3:10.1f}"
        if row["vertices"]:
            each = row["ns"] / row["vertices"]
            line += f" {each:10.2f} {1e3 / each:10.1f}"
            floor = found.get("floor/" + name.rsplit("/", 1)[-1])
            if floor and name.startswith(("dab/", "kernel", "first", "grab/")) and "triangles" not in name:
                line += f" {row['ns'] / floor['ns']:8.2f}"
        lines.append(line)
    return "\n".join(lines)


def ratios(found):
    """Returns the ratios that `check` compares, by name. Each grows when performance gets worse."""
    out = {}

    def put(name, above, below):
        if above in found and below in found:
            out[name] = found[above]["ns"] / found[below]["ns"]

    for family in ("pushing", "planing", "pulling", "averaging"):
        for size in (10000, 100000, 1000000):
            put(f"{family} to floor, {size}", f"dab/{family}/plain/{size}", f"floor/{size}")
        for variation in ("stamp", "freeze", "layer", "inactive-layer", "world-space"):
            put(f"{family} with {variation} to plain", f"dab/{family}/{variation}/100000",
                f"dab/{family}/plain/100000")
        put(f"{family}, specialised kernel to switches as values", f"kernel/{family}/plain/100000",
            f"kernel-by-value/{family}/100000")
        put(f"{family}, patch cache to visiting all", f"dab/{family}/plain/100000",
            f"dab-visiting-all/{family}/100000")
    for size in (10000, 100000, 1000000):
        put(f"grab motion to floor, {size}", f"grab/motion/{size}", f"floor/{size}")
    put("grab press to first dab, 100000", "grab/press/100000", "first-dab/pushing/100000")
    put("first dab to its floor, 100000", "first-dab/pushing/100000", "floor-first-touch/100000")
    put("normals to floor", "normals/eight/100000", "floor/100000")
    put("refit to floor", "refit/100000", "floor/100000")
    for work in ("undo", "redo"):
        put(f"{work}, 16 million to 1", f"document/{work}/8/100000", f"document/{work}/6/100000")
    for work in ("switch-down", "switch-up"):
        put(f"{work}, 16 million to 1", f"document/{work}/8/10000", f"document/{work}/6/10000")
    put("switch-up to copying", "document/switch-up/8/10000", "document/copy/10000")
    for place in ("warm", "scattered"):
        put(f"packing a dab, {place}, to copying", f"display/pack-dab/{place}/9/1", "display/copy-dab")
    put("packing a level to copying", "display/pack-all/9/1", "display/copy-all/9")
    return out


def ladder_ratios(path):
    if not path.exists():
        return {}
    steps = json.loads(path.read_text())
    out = {}
    for key in ("dabSeconds", "pickSeconds", "refitSeconds"):
        for above in ("16", "64"):
            if above in steps and "1" in steps:
                out[f"{key}, {above} million to 1"] = steps[above][key] / steps["1"][key]
    for step in steps:
        out[f"bytes per vertex, {step} million"] = steps[step]["bytesPerVertexAfterStroke"]
    return out


def machine():
    text = pathlib.Path("/proc/cpuinfo").read_text()
    model = re.search(r"model name\s*: (.*)", text)
    compiler = subprocess.run(["c++", "--version"], stdout=subprocess.PIPE, text=True).stdout.split("\n")[0]
    return {"processor": model.group(1) if model else platform.machine(), "compiler": compiler}


def measure_ladder(build):
    ladder = build / "bench-results" / "ladder.json"
    if not ladder.exists():
        ladder.parent.mkdir(exist_ok=True)
        subprocess.run([build / "bin" / "trovik-ladder", ladder, "1", "4", "16"], check=True,
                       stdout=subprocess.DEVNULL)
    return ladder_ratios(ladder)


# Each program compares only its own benchmarks with each other.
PROGRAMS = {
    "stroke-bench": lambda build: ratios(
        run_repeated(build, "stroke-bench", "^(dab|floor|first-dab|kernel|normals|refit|grab)")),
    "document-bench": lambda build: ratios(run_document_bench(build, "/[68]/|^copy")),
    "display-bench": lambda build: ratios(
        run_display_bench(build, "^pack-dab/.*/9/1/|^copy-dab|^(pack|copy)-all/9(/1/|/real)")),
    "trovik-ladder": measure_ladder,
}


def measure(build):
    found = {}
    for program in PROGRAMS.values():
        found.update(program(build))
    return found


def record(build, target, programs):
    recorded = json.loads(target.read_text()) if target.exists() else {}
    machines, kept = recorded.get("machines", {}), recorded.get("ratios", {})
    for name in programs or PROGRAMS:
        kept.update(PROGRAMS[name](build))
        machines[name] = machine()
    target.write_text(json.dumps({"machines": machines, "ratios": kept}, indent=1) + "\n")


def check(build, recorded):
    before = json.loads(recorded.read_text())["ratios"]
    now = measure(build)
    worse = 0
    for name in sorted(now):
        if name not in before:
            print(f"  new     {name}: {now[name]:.3g}")
            continue
        mark = "WORSE" if now[name] > before[name] * WORSE else "ok"
        worse += mark == "WORSE"
        print(f"  {mark:7} {name}: {before[name]:.3g} -> {now[name]:.3g}")
    print(f"{worse} of {len(now)} ratios are worse by more than {round((WORSE - 1) * 100)} %.")
    return 1 if worse else 0


def main():
    if len(sys.argv) < 4 or sys.argv[1] not in ("run", "check", "record"):
        sys.exit(__doc__)
    build, target = pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    if sys.argv[1] == "check":
        return check(build, target)
    if sys.argv[1] == "record":
        record(build, target, sys.argv[4:])
        return 0
    wanted = sys.argv[4] if len(sys.argv) > 4 else "."
    found = {**run_repeated(build, "stroke-bench", wanted), **run_document_bench(build, wanted),
             **run_display_bench(build, wanted)}
    text = table(found)
    results = {"machine": machine(), "benchmarks": found, "ratios": ratios(found)}
    if len(sys.argv) == 4:
        stroke = results["stroke"] = run_whole_stroke(build)
        text += (f"\n\n{DABS} dabs across a grid of {GRID_SIDE << GRID_LEVELS} x {GRID_SIDE << GRID_LEVELS}"
                 f" quads through the command: {stroke['dabs per second']:.0f} dabs per second,"
                 f" peak {stroke['peak bytes'] / 2**20:.0f} MiB")
    target.mkdir(parents=True, exist_ok=True)
    (target / "bench.json").write_text(json.dumps(results, indent=1) + "\n")
    (target / "bench.txt").write_text(text + "\n")
    print(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
