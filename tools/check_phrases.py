#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Lists phrases that the project's prose avoids, with the usual term for each.

Documents, comments and strings in tracked files are searched. Names in backticks and quotations are
not prose, so write a phrase in quotation marks if it has to be mentioned.

usage: check_phrases.py [--summary] [FILE...]
"""

import argparse
import re
import subprocess
import sys
from bisect import bisect_right
from pathlib import Path

from source_prose import prose_of

# A word that precedes a noun but not a verb. It distinguishes "its place" from "it places".
NOUN = (
    r"\b(?:a|an|the|its|their|his|this|these|those|each|every|one|two|three|no|some|any|same|whose|own|other"
    r"|another|first|last|next|new|old|right|wrong|[a-z]+'s?) "
)

# A case-insensitive pattern, and the term to write instead. A blank also matches a line break.
PHRASES = (
    # Positions.
    (NOUN + r"places?\b(?! (?:in|of) the code)|\b(?:which|what|that) place\b"
     r"|\b(?<!decimal )places (?:of|where|at|and|are|in|for|that|on)\b"
     r"|\bplace (?:of|where|at|is|and|for|that|on)\b|\bplaces?[.,;:]",
     "position, point, location"),
    (r"\bplacement (?:matrix|matrices|of (?:a|the|its) (?:mesh|object))\b|\b(?:mesh|object)(?:'s|es'?)? placements?\b",
     "transform"),
    # Reporting.
    (r"\b(?:tells?|told|telling)\b", "reports, identifies, specifies, stores, returns, distinguishes"),
    (r"\b(?:take|takes|taken|took|taking) down\b", "records"),
    (r"\banswer(?:s|ed|ing)?\b", "returns, responds"),
    (r"\blearn(?:s|ed|t)? of\b", "caches, is notified of"),
    # Amounts.
    (r"\b(?:a|an|its|their|his|each|every|equal|same|whose|[a-z]+'s?) shares?\b|\bthe shares?\b"
     r"|\bshares? (?:of|by which|between)\b", "fraction, ratio, weight, mask weight"),
    (r"\bnumbers? that (?:is|are) none\b|\b(?:are|is|of) no numbers?\b|\bno numbers? at all\b", "NaN"),
    (r"\bnone (?:\w+ )?below zero\b|\bnot below zero\b", "non-negative"),
    (r"\bthe least of\b", "the minimum of"),
    (r"\bweigh(?:s|ed|ing)?\b", "computes the weight"),
    (r"\bstrengthen(?:s|ed|ing)?\b", "applies the strength"),
    # Negation.
    (r"(?<!there )\b(?:is|are|was|were) no\b(?! more| longer| less| fewer| \w+er than)"
     r"|\bof no\b(?! others?\b| terms\b)",
     "is not a, has no, without"),
    (r"\bwhere (?:there (?:is|are|was|were) (?:no|none|nothing)|none|nothing)\b", "if there is no, if none"),
    # Topology and geometry.
    (r"\b(?:hang|hangs|hung|hanging) together\b", "connected, connectivity, topology"),
    (r"\bshells?\b(?! script| command| completion)", "connected component"),
    (r"\bbends\b|" + NOUN + r"bend\b", "curvature"),
    (r"\bcrowded edges?\b", "non-manifold edge"),
    (r"\bwithout extent\b", "degenerate"),
    (r"\b(?:turns?|turned|turning) (?:the|a|every|its) (?:vector|normal|direction|displacement|frame|offset)s?\b",
     "rotates"),
    # Patches.
    (r"\bresting (?:patch(?:es)?|ones?)\b|\bpatch(?:es)? (?:that )?(?:may |can |must |to )?rests?\b",
     "culled, culled patch"),
    (r"\bknown patch(?:es)?\b", "cached patch, patch cache"),
    (r"\brings? (?:around|of|about) (?:a|the|each|every|its|their) (?:\w+ )?patch(?:es)?\b|\bring cells?\b",
     "ghost cells"),
    # Levels and layers.
    (r"\brows? of levels\b", "level hierarchy, multires stack"),
    (r"\bground (?:under|of|below) (?:a|the|each|every|its) layers?\b|\blayer(?:'s)? ground\b", "layer base"),
    # Strokes.
    (r"\b(?:lays|laid|laying)\b(?! out)|\blay (?:a|an|the|dabs?|copies|one|them|it|maps?|stamps?)\b",
     "places, applies"),
    (r"\bstring (?:that )?pulls\b|\bon (?:a|the) string\b", "stabiliser, lazy brush"),
    # Undo.
    (r"\b(?:take|takes|taken|took|taking)(?: \w+){0,3} back\b", "undoes"),
    (r"\b(?:bring|brings|brought|bringing)(?: \w+){0,3} (?:again|back)\b", "redoes, restores"),
    (r"\b(?:put|puts|putting)(?: \w+){0,3} back\b", "reverts, restores"),
    (r"\bmend(?:s|ed|ing)?\b", "fixes"),
    # Renders.
    (r"\bpictures? (?:of|shows?|with) (?:a|the|its|every|each) (?:\w+ )?"
     r"(?:mesh|model|object|surface|scene|level|sphere)\b|\bsheets? of (?:pictures|renders|views)\b", "render, contact sheet"),
    # Time and manner.
    (r"\bat hand\b", "current"),
    (r"\bat work\b", "active, running"),
    (r"\banew\b", "again, re-"),
    (r"\basks?(?:ed|ing)? (?:ahead|before)\b", "prefetches"),
    (r"\bas (?:it|they) comes?\b", "default"),
    (r"\bkeep(?:s|ing)? (?:its|their|the|his) bits\b|\bto the bit\b", "is bit-identical, bit-exact"),
    # Words that sound foreign or archaic.
    (r"\bbeside\b", "next to, along with"),
    (r"\bwhoever\b|\bfor who\b", "the caller, code that"),
    (r"\bin place of\b", "instead of"),
    (r"\bWorkStopped\b", "Cancelled"),
)

# Idiomatic uses: a phrase is accepted if this pattern matches it together with its context.
IDIOMATIC = re.compile(
    r"in(?:to)? place\b|(?:take|takes|took|taking)(?: \w+)? places?\b|decimal places|in the first place"
    r"|(?:in|at) (?:one|two|several|many|a single) places?\b"
    r"|unit in the last place",
    re.I,
)

# Files in which a word has another meaning: the shell that runs commands, the bend of a shape.
OTHER_MEANING = (
    ("connected component",
     re.compile(r"^(apps/trovik/(Completion|Interruption|CMakeLists)|tests/(cli|install)/|docs/man/|cmake/|scripts/)")),
    ("curvature", re.compile(r"^(stamps|tools/stamps)/")),
)

# Files whose text is not the project's prose: third-party text, data, this list and its tests.
EXCLUDED = re.compile(r"^(LICENSE|NOTICE|fuzz/corpus/|tests/data/.*\.json|tools/check_phrases\.py|tests/checks/)")


def compiled():
    return [(re.compile(pattern, re.I), term) for pattern, term in PHRASES]


def on_one_line(prose):
    """Returns the prose with single blanks between words, the offset of each word in it, and each word's line."""
    words, offsets, lines, offset = [], [], [], 0
    for number, line in enumerate(prose.split("\n"), 1):
        for word in re.sub("\0[\0 \t]*", "\0", line).split():
            words.append(word)
            offsets.append(offset)
            lines.append(number)
            offset += len(word) + 1
    return " ".join(words), offsets, lines


def findings(path, text, phrases):
    prose = prose_of(path, text)
    if prose is None:
        return
    joined, offsets, lines = on_one_line(prose)
    for pattern, term in phrases:
        if any(term == other and where.search(path) for other, where in OTHER_MEANING):
            continue
        for match in pattern.finditer(joined):
            if not IDIOMATIC.search(joined[max(0, match.start() - 12):match.end() + 8]):
                yield lines[bisect_right(offsets, match.start()) - 1], match.group(0), term


def tracked(root):
    listing = subprocess.run(["git", "-C", str(root), "ls-files", "-z"], check=True, capture_output=True)
    return [name for name in listing.stdout.decode().split("\0") if name]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--summary", action="store_true", help="print only the number of findings for each term")
    parser.add_argument("files", nargs="*", help="paths relative to the checkout (default: all tracked files)")
    arguments = parser.parse_args()
    root = Path(__file__).resolve().parent.parent
    phrases = compiled()
    counts, total = {}, 0
    for name in arguments.files or tracked(root):
        if EXCLUDED.search(name) or not (root / name).is_file():
            continue
        text = (root / name).read_bytes().decode("utf-8", "replace").replace("\r\n", "\n")
        for line, phrase, term in sorted(findings(name, text, phrases)):
            total += 1
            counts[term] = counts.get(term, 0) + 1
            if not arguments.summary:
                print(f'{name}:{line}: "{phrase}" → {term}')
    if arguments.summary:
        for term, count in sorted(counts.items(), key=lambda item: -item[1]):
            print(f"{count:6} {term}")
    print(f"{total} phrases to replace" if total else "No phrase of the list is in use.")
    return 1 if total else 0


if __name__ == "__main__":
    sys.exit(main())
