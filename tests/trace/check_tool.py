#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Tests the trace tool on traces that the command writes."""

import argparse
import json
import os
import subprocess
import sys
import tempfile
import unittest

import numpy

CUBE = (
    "v -1 -1 -1\nv 1 -1 -1\nv -1 1 -1\nv 1 1 -1\nv -1 -1 1\nv 1 -1 1\nv -1 1 1\nv 1 1 1\n"
    "f 1 3 4 2\nf 5 6 8 7\nf 1 2 6 5\nf 3 7 8 4\nf 1 5 7 3\nf 2 4 8 6\n"
)
options = None


def script(radius):
    return {
        "mesh": "cube.obj",
        "levels": 3,
        "mirror": ["x"],
        "renderers": [0],
        "steps": [
            {"set": {"radius": radius}},
            {"stroke": {"surface": [[0.2, 0.1, 1], [0.6, 0.3, 1]]}},
            {"stroke": {"wholeMesh": {"strength": 0.01}}},
            {"tool": "Flatten"},
            {"stroke": {"surface": [[0.4, 0.2, 1]], "open": True}},
        ],
    }


HOST_SCRIPT = {
    "mesh": "cube.obj",
    "levels": 3,
    "mirror": ["x"],
    "steps": [
        {"set": {"radius": 0.6}},
        {"stroke": {"surface": [[0.1, 0.1, 1], [0.3, 0.4, 1]]}},
        {"stroke": {"dabs": [{"face": 0}]}},
        {"undo": 2},
        {"stroke": {"dabs": [{"face": 0}]}},
        {"level": 1},
        {"mirror": "topological"},
        {"stroke": {"dabs": [{"face": 0}]}},
    ],
}


class TraceTool(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.temporary = tempfile.TemporaryDirectory()
        cls.folder = cls.temporary.name
        with open(cls.path("cube.obj"), "w", encoding="ascii") as file:
            file.write(CUBE)
        cls.sculpt("one", script(0.5), "--trace-every", "1")
        cls.sculpt("two", script(0.5), "--trace-every", "1")
        cls.sculpt("other", script(0.5625), "--trace-every", "1")
        cls.sculpt("sparse", script(0.5))
        cls.sculpt("host", HOST_SCRIPT, "--trace-every", "1")

    @classmethod
    def tearDownClass(cls):
        cls.temporary.cleanup()

    @classmethod
    def path(cls, *names):
        return os.path.join(cls.folder, *names)

    @classmethod
    def sculpt(cls, name, steps, *more):
        with open(cls.path("s.json"), "w", encoding="ascii") as file:
            json.dump(steps, file)
        subprocess.run([options.command, "sculpt", cls.path("s.json"), "-q", "-o", cls.folder,
                        "--trace", cls.path(name), *more], check=True)

    def tool(self, *arguments):
        return subprocess.run([sys.executable, options.tool, *arguments], cwd=self.folder, text=True,
                              capture_output=True, check=False)

    def expect_trouble(self, result, *words):
        self.assertEqual(result.returncode, 2, result)
        self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
        for word in words:
            self.assertIn(word, result.stderr)
        self.assertNotIn("Traceback", result.stderr)

    def changed(self, name, change):
        """A copy of trace "one" with one file changed by a function of its bytes."""
        copy = self.path("changed")
        subprocess.run(["rm", "-rf", copy], check=True)
        subprocess.run(["cp", "-r", self.path("one"), copy], check=True)
        path = os.path.join(copy, name)
        with open(path, "rb") as file:
            content = file.read()
        with open(path, "wb") as file:
            file.write(change(content))

    def test_same_script_gives_the_same_trace(self):
        result = self.tool("compare", "one", "two")
        self.assertEqual((result.returncode, result.stderr), (0, ""), result)
        self.assertTrue(result.stdout.startswith("same: "), result.stdout)

    def test_changed_script_differs_at_the_change(self):
        result = self.tool("compare", "one", "other")
        self.assertEqual(result.returncode, 1)
        first = result.stdout.splitlines()[0]
        self.assertEqual(first, "trace.jsonl:3: ApplyDab: in.size: 0.5 / 0.5625")

    def test_limit_holds_and_the_rest_is_counted(self):
        lines = self.tool("compare", "one", "other", "--limit", "3").stdout.splitlines()
        self.assertEqual(len(lines), 4)
        self.assertRegex(lines[3], r"^and \d+ more differences$")

    def test_states_that_only_one_has_are_named(self):
        result = self.tool("compare", "one", "sparse", "--limit", "1000")
        self.assertEqual(result.returncode, 1)
        self.assertIn("dab-000001/m0/normals.npy: only in one", result.stdout)
        self.assertNotIn("trace.jsonl", result.stdout)

    def test_one_bit_of_an_array_is_found(self):
        name = "after/m0/normals.npy"
        self.changed(name, lambda b: b[:-8] + bytes([b[-8] ^ 1]) + b[-7:])
        result = self.tool("compare", "one", "changed")
        self.assertEqual(result.returncode, 1)
        self.assertRegex(result.stdout, rf"^{name}\[385, 0\]: -?\d+ / -?\d+ \(1 of 1544 differ\)\n$")

    def test_field_of_a_record_is_found(self):
        name = "after/m0/records.npy"
        self.changed(name, lambda b: b[:-1] + bytes([b[-1] ^ 1]))
        result = self.tool("compare", "one", "changed")
        self.assertEqual(result.returncode, 1)
        self.assertIn(name, result.stdout)

    def test_negative_zero_is_not_zero(self):
        self.changed("trace.jsonl", lambda b: b.replace(b'"previousPatchPosition":[0.0', b'"previousPatchPosition":[-0.0', 1))
        result = self.tool("compare", "one", "changed")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stdout, "trace.jsonl:3: ApplyDab: in.previousPatchPosition[0]: 0.0 / -0.0\n")

    def test_more_digits_of_the_same_float_are_the_same(self):
        self.changed("trace.jsonl", lambda b: b.replace(b'"size":0.5,', b'"size":0.50000000001,'))
        self.assertEqual(self.tool("compare", "one", "changed").returncode, 0)

    def test_meta_is_compared(self):
        self.changed("before/m0/meta.json", lambda b: b.replace(b'"visitStamp":1,', b'"visitStamp":2,'))
        result = self.tool("compare", "one", "changed")
        self.assertEqual((result.returncode, result.stdout), (1, "before/m0/meta.json: visitStamp: 1 / 2\n"))

    def test_missing_lines_are_counted(self):
        self.changed("trace.jsonl", lambda b: b"\n".join(b.split(b"\n")[:2]) + b"\n")
        result = self.tool("compare", "one", "changed")
        self.assertEqual(result.returncode, 1)
        self.assertRegex(result.stdout, r"trace.jsonl: \d+ lines / 2 lines")

    def test_show_lists_the_calls(self):
        lines = self.tool("show", "one").stdout.splitlines()
        calls = [line.split()[1] for line in lines]
        self.assertEqual(calls[:3], ["SetActiveConfiguration", "BeginStroke", "ApplyDab"])
        self.assertEqual(calls[-1], "ApplyDab")
        self.assertIn("ApplyToWholeMesh", calls)

    def test_show_reports_the_effect_of_a_dab(self):
        result = self.tool("show", "one", "--call", "3")
        self.assertEqual(result.returncode, 0, result)
        for row in (r"call 3: ApplyDab, dab 1", r"  faces tested +\d+, reached \d+", r"  records +\d+",
                    r"  vertices moved +[1-9]\d*; largest displacement 0\.\d+, at vertex \d+",
                    r"  box +\(.*\) to \(.*\)", r"  notices +[1-9]\d*"):
            self.assertRegex(result.stdout, row)

    def test_show_without_states_explains_how_to_get_them(self):
        result = self.tool("show", "sparse", "--call", "3")
        self.assertIn("unknown: the trace was not recorded with --trace-every 1", result.stdout)

    def test_show_does_not_attribute_a_whole_mesh_pass_to_the_next_dab(self):
        calls = [line.split()[1] for line in self.tool("show", "one").stdout.splitlines()]
        after = next(i for i in range(calls.index("ApplyToWholeMesh"), len(calls)) if calls[i] == "ApplyDab")
        result = self.tool("show", "one", "--call", str(after + 1))
        self.assertIn("unknown: there is no state between the previous ApplyToWholeMesh", result.stdout)

    def host_lines(self, call):
        """The numbers of the lines with this call in trace "host", from 1."""
        lines = self.tool("show", "host").stdout.splitlines()
        return [number for number, line in enumerate(lines, 1) if line.split()[1] == call]

    def test_show_lists_host_changes(self):
        output = self.tool("show", "host").stdout
        self.assertRegex(output, r"SettleSymmetry +m0, [1-9]\d* vertices")
        self.assertRegex(output, r"HostChange +m0, undo, state change-000001")
        self.assertRegex(output, r"HostChange +m0, level, mirror, state change-000002")

    def test_show_of_a_change_reports_its_state(self):
        undone, switched = self.host_lines("HostChange")
        result = self.tool("show", "host", "--call", str(undone))
        self.assertEqual(result.returncode, 0, result)
        for row in (r"  reason +undo", r"  state +change-000001", r"  level +3", r"  vertices +386",
                    r"  vertices moved +[1-9]\d*; largest displacement"):
            self.assertRegex(result.stdout, row)
        result = self.tool("show", "host", "--call", str(switched))
        self.assertRegex(result.stdout, r"  level +1")
        self.assertIn("the number of vertices has changed", result.stdout)

    def test_show_of_settled_sides_reports_their_displacement(self):
        result = self.tool("show", "host", "--call", str(self.host_lines("SettleSymmetry")[0]))
        self.assertEqual(result.returncode, 0, result)
        self.assertRegex(result.stdout, r"  vertices moved +[1-9]\d*; largest displacement \d")

    def test_dab_after_a_change_is_compared_with_the_changed_state(self):
        undone = self.host_lines("HostChange")[0]
        dab = next(number for number in self.host_lines("ApplyDab") if number > undone)
        result = self.tool("show", "host", "--call", str(dab))
        moved = int(self.moved_vertices("change-000001", "dab-%06d" % self.dab_of(dab)))
        self.assertRegex(result.stdout, rf"  vertices moved +{moved};")
        self.assertNotEqual(moved, int(self.moved_vertices("dab-%06d" % (self.dab_of(dab) - 1),
                                                           "dab-%06d" % self.dab_of(dab))))

    def dab_of(self, line):
        return self.host_lines("ApplyDab").index(line) + 1

    def moved_vertices(self, before, after):
        arrays = [numpy.load(self.path("host", state, "m0/level-3/positions.npy")) for state in (before, after)]
        return (arrays[0].view("u4") != arrays[1].view("u4")).any(axis=1).sum()

    def test_states_of_changes_are_compared(self):
        subprocess.run(["rm", "-rf", self.path("changed")], check=True)
        subprocess.run(["cp", "-r", self.path("host"), self.path("changed")], check=True)
        self.assertEqual(self.tool("compare", "host", "changed").returncode, 0)
        os.remove(self.path("changed", "change-000002/m0/mirror_corners.npy"))
        result = self.tool("compare", "host", "changed")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stdout, "change-000002/m0/mirror_corners.npy: only in host\n")

    def test_broken_host_lines_are_one_line_errors(self):
        self.changed("trace.jsonl", lambda b: b'{"call":"HostChange","in":{"mesh":"m0","reason":"undo",'
                     b'"state":"change-000009"},"out":{}}\n')
        self.expect_trouble(self.tool("show", "changed", "--call", "1"), "change-000009/m0/meta.json")
        self.changed("trace.jsonl", lambda b: b'{"call":"SettleSymmetry","in":{"mesh":"m0"},'
                     b'"out":{"vertices":[99999],"positions":[[0,0,0]]}}\n')
        self.expect_trouble(self.tool("show", "changed", "--call", "1"), "line 1", "do not match the mesh")
        self.changed("trace.jsonl", lambda b: b'{"call":"SettleSymmetry","in":{},"out":{}}\n')
        self.expect_trouble(self.tool("show", "changed", "--call", "1"), "line 1", "mesh")

    def test_missing_and_broken_files_are_one_line_errors(self):
        self.expect_trouble(self.tool("show", "nowhere"), "nowhere: no such folder")
        self.expect_trouble(self.tool("compare", "one", "."), "trace.jsonl is missing")
        self.expect_trouble(self.tool("show", "one", "--call", "999"), "there is no call 999")
        self.changed("trace.jsonl", lambda b: b[:-20])
        self.expect_trouble(self.tool("show", "changed"), "changed/trace.jsonl: line ")
        self.changed("trace.jsonl", lambda b: b[:-1])
        self.expect_trouble(self.tool("show", "changed"), "truncated")
        self.changed("trace.jsonl", lambda b: b"[1]\n" + b)
        self.expect_trouble(self.tool("show", "changed"), "line 1: not a call in a trace")
        self.changed("trace.jsonl", lambda b: b'{"call":"ApplyDab","in":{},"out":{}}\n')
        self.expect_trouble(self.tool("show", "changed", "--call", "1"), "line 1", "hit")
        for cut in (-1, 100, 5, 0):
            self.changed("after/m0/normals.npy", lambda b, end=cut: b[:end])
            self.expect_trouble(self.tool("compare", "one", "changed"), "after/m0/normals.npy", "truncated")
        self.changed("after/m0/normals.npy", lambda b: b.replace(b"386", b"9" * 3))
        self.expect_trouble(self.tool("compare", "one", "changed"), "truncated")
        self.changed("after/m0/normals.npy", lambda b: b + b"x")
        self.expect_trouble(self.tool("compare", "one", "changed"), "too long")
        self.changed("after/m0/meta.json", lambda b: b[:50])
        self.expect_trouble(self.tool("compare", "one", "changed"), "meta.json: not complete JSON")

    def test_wrong_usage_exits_with_status_two(self):
        for arguments in ((), ("show",), ("compare", "one"), ("show", "one", "--call", "0"), ("draw", "one")):
            self.assertEqual(self.tool(*arguments).returncode, 2, arguments)

    def test_help_documents_commands_and_status(self):
        result = self.tool("--help")
        self.assertEqual(result.returncode, 0)
        for word in ("show", "compare", "Exit status"):
            self.assertIn(word, result.stdout)


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--command", required=True)
    parser.add_argument("--tool", required=True)
    options, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0], *rest])
