#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Tests the tools of `make check`: phrases, links, and the selection of sources for clang-tidy.

usage: check_tools.py SOURCE_DIR
"""

import json
import os
import re
import subprocess
import sys
import tempfile
import unittest

SOURCE = os.path.abspath(sys.argv.pop(1))
sys.path.insert(0, os.path.join(SOURCE, "tools"))

import check_phrases  # noqa: E402
from source_prose import prose_of  # noqa: E402

PHRASES = check_phrases.compiled()
# The first phrase in the list that consists of two plain words.
FIRST, SECOND = next(
    match.groups() for match in (re.fullmatch(r"\\b(\w+) (\w+)\\b", pattern)
                                 for pattern, _ in check_phrases.PHRASES) if match)
BANNED = f"{FIRST} {SECOND}"


def lines_found(name, text):
    return [line for line, _, _ in check_phrases.findings(name, text, PHRASES)]


class Phrases(unittest.TestCase):
    def test_comments_and_strings_of_cpp_are_searched(self):
        self.assertEqual(lines_found("a.cpp", f"int a;\n// the level {BANNED}\n"), [2])
        self.assertEqual(lines_found("a.h", f"int a;  ///< the level {BANNED}\n"), [1])
        self.assertEqual(lines_found("a.cpp", f"/* one\n * the level {BANNED} */\n"), [2])
        self.assertEqual(lines_found("a.cpp", f'Throw("the level {BANNED}");\n'), [1])
        self.assertEqual(lines_found("a.cpp", f'auto s = R"(the level {BANNED})";\n'), [1])

    def test_phrases_are_found_across_line_breaks(self):
        self.assertEqual(lines_found("a.cpp", f"// the level {FIRST}\n    // {SECOND} is bound\n"), [1])
        self.assertEqual(lines_found("a.cpp", f'Throw("the level {FIRST} "\n      "{SECOND} is bound");\n'), [1])
        self.assertEqual(lines_found("a.md", f"The level {FIRST}\n{SECOND} is bound.\n"), [1])

    def test_code_and_names_are_not_prose(self):
        self.assertEqual(lines_found("a.cpp", f"{BANNED};\n"), [])
        self.assertEqual(lines_found("a.cpp", f"// the field `{BANNED}`\n"), [])
        self.assertEqual(lines_found("a.cpp", f'// the text "{BANNED}"\n'), [])
        self.assertEqual(lines_found("a.cpp", 'json["beside"] = at("/steps/0/shell");\n'), [])
        self.assertEqual(lines_found("a.cpp", f'Read("{FIRST}", "{SECOND} is bound");\n'), [])
        self.assertEqual(lines_found("a.md", f"```cpp\nint {BANNED};\n```\n"), [])
        self.assertEqual(lines_found("a.md", f"[the level]({FIRST}-{SECOND}.md) `{FIRST}\n{SECOND}`\n"), [])

    def test_comments_in_code_of_documents_are_searched(self):
        self.assertEqual(lines_found("a.md", f"```sh\nmake all   # the level {BANNED}\n```\n"), [2])

    def test_other_kinds_of_files_are_searched(self):
        self.assertEqual(lines_found("a.py", f'"""One.\n\nThe level {BANNED}."""\n'), [3])
        self.assertEqual(lines_found("a.py", f"a = 1  # the level {BANNED}\n"), [1])
        self.assertEqual(lines_found("a.sh", f'a=1\necho "The level {BANNED}"\n'), [2])
        self.assertEqual(lines_found("CMakeLists.txt", f"# The level {BANNED}\n"), [1])
        self.assertEqual(lines_found("a.json", f'{{"{BANNED}": "the level {BANNED}"}}\n'), [1, 1])
        self.assertEqual(lines_found("a.1", f".TH X 1\nThe level {BANNED}.\n"), [2])
        self.assertIsNone(prose_of("a.obj", "v 0 0 0\n"))

    def test_idiomatic_uses_are_accepted(self):
        for text in ("the file is in place", "the change takes place", "two decimal places", "in the first place",
                     "defined in two places", "half a unit in the last place",
                     "the function places the dab", "code that places dabs", "is no longer bound", "is no larger than",
                     "there is no level", "two vertices share a face", "laid out in rows", "the rest of the file"):
            self.assertEqual(lines_found("a.md", text + "\n"), [], text)

    def test_every_phrase_has_a_term(self):
        for _, term in check_phrases.PHRASES:
            self.assertTrue(term)


class Checkout(unittest.TestCase):
    """A git repository with a few files."""

    def setUp(self):
        self.temporary = tempfile.TemporaryDirectory()
        self.folder = os.path.realpath(self.temporary.name)
        self.git("init", "-q", "-b", "main")

    def tearDown(self):
        self.temporary.cleanup()

    def git(self, *arguments):
        identity = ["-c", "user.name=test", "-c", "user.email=test@localhost", "-c", "commit.gpgsign=false"]
        subprocess.run(["git", "-C", self.folder, *identity, *arguments], check=True)

    def write(self, name, content):
        path = os.path.join(self.folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as file:
            file.write(content)

    def commit(self):
        self.git("add", "-A")
        self.git("commit", "-q", "-m", "test")

    def tool(self, name, *arguments):
        return subprocess.run([sys.executable, os.path.join(SOURCE, "tools", name), *arguments], text=True,
                              capture_output=True, check=False)


class Links(Checkout):
    def faults(self, document):
        self.write("docs/a.md", document)
        self.write("docs/b.md", "# One two\n\n## `Code` & more\n")
        self.write("framework/mesh/Level.h", "")
        self.git("add", "-A")
        result = self.tool("check_links.py", self.folder)
        self.assertEqual(result.returncode, 1 if "faults" in result.stdout else 0, result)
        return [line.split(":")[1] for line in result.stdout.splitlines()[:-1]]

    def test_links_that_resolve_are_accepted(self):
        self.assertEqual(self.faults(
            "# Here\n\n[a](b.md) [b](b.md#one-two) [c](b.md#code--more) [d](#here) [e](../framework/mesh)\n"
            "[f](https://localhost/x) `framework/mesh/Level.h` `Level.h` `framework/*/x.h` `build/x/y.h`\n"
            "```\n[g](missing.md)\n```\n"), [])

    def test_each_fault_has_its_line(self):
        self.assertEqual(self.faults(
            "[a](missing.md)\n\n[b](b.md#three)\n[c](#none) `framework/mesh/Missing.h`\n`Missing.h`\n"),
            ["1", "3", "4", "4", "5"])


class TidySources(Checkout):
    def setUp(self):
        super().setUp()
        for name in ("a/One.cpp", "a/Two.cpp", "a/One.h", "a/Only.h"):
            self.write(name, "// first\n")
        self.write("a/Two.cpp", '#include "a/Only.h"\n')
        self.write("build/compile_commands.json", json.dumps(
            [{"directory": self.folder, "file": name} for name in ("a/One.cpp", "a/Two.cpp", "build/Made.cpp")]))
        self.write(".gitignore", "/build/\n")
        self.commit()

    def selected(self, *arguments):
        result = self.tool("tidy_sources.py", self.folder, os.path.join(self.folder, "build"), *arguments)
        self.assertEqual(result.returncode, 0, result)
        return [os.path.relpath(name, self.folder) for name in result.stdout.split("\0") if name], result.stderr

    def test_all_sources_exclude_generated_ones(self):
        self.assertEqual(self.selected()[0], ["a/One.cpp", "a/Two.cpp"])
        self.assertEqual(self.selected("--matching", "Two")[0], ["a/Two.cpp"])

    def test_changed_headers_select_a_source(self):
        self.git("checkout", "-q", "-b", "branch")
        self.write("a/One.h", "// second\n")
        self.commit()
        self.write("a/Only.h", "// second\n// third\n")
        self.assertEqual(self.selected("--changed", "main")[0], ["a/Two.cpp", "a/One.cpp"])

    def test_sources_beyond_the_limit_are_counted(self):
        self.git("checkout", "-q", "-b", "branch")
        self.write("a/One.cpp", "// second\n")
        self.write("a/Two.cpp", "// second\n// third\n")
        selected, message = self.selected("--changed", "main", "--limit", "1")
        self.assertEqual(selected, ["a/Two.cpp"])
        self.assertIn("1 more", message)

    def test_product_sources_come_before_tests(self):
        self.write("tests/Test.cpp", "// first\n")
        database = os.path.join(self.folder, "build/compile_commands.json")
        with open(database, encoding="utf-8") as file:
            entries = json.load(file)
        with open(database, "w", encoding="utf-8") as file:
            json.dump(entries + [{"directory": self.folder, "file": "tests/Test.cpp"}], file)
        self.commit()
        self.git("checkout", "-q", "-b", "branch")
        self.write("tests/Test.cpp", "// second\n// third\n// fourth\n")
        self.write("a/One.cpp", "// second\n")
        self.assertEqual(self.selected("--changed", "main")[0], ["a/One.cpp", "tests/Test.cpp"])

    def test_on_the_base_itself_the_last_commit_is_the_change(self):
        self.write("a/One.cpp", "// second\n")
        self.commit()
        self.assertEqual(self.selected("--changed", "main")[0], ["a/One.cpp"])


if __name__ == "__main__":
    unittest.main()
