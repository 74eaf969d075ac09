# SPDX-License-Identifier: Apache-2.0
"""Extracts the prose of a source file: comments, strings, and paragraphs of documents.

prose_of(path, text) returns a string of the same length and with the same line breaks, in which every
character that is not prose is NUL. A sentence that runs over several lines of a comment, or over several
adjacent string literals, has only white space between its words, so a pattern with \\s+ finds it, and a
match's offset gives its line.

Names are not prose: text in backticks, quotations, paths from a root, strings without a blank, and code
in documents.
"""

import io
import re
import tokenize

CPP_TOKEN = re.compile(
    r"""(?P<raw>R"(?P<mark>[^()\\\s]{0,16})\(.*?\)(?P=mark)")
      | (?P<string>"(?:\\.|[^"\\\n])*")
      | (?P<character>'(?:\\.|[^'\\\n])+')
      | (?P<comment>//[^\n]*|/\*.*?\*/)""",
    re.S | re.X,
)
# Linter directives in comments, and the licence line.
DIRECTIVE = re.compile(r"SPDX|NOLINT|clang-format|IWYU")
NAME = re.compile(r'`[^`\n]*`|"[^"\n]{1,80}"|\\"[^"\n]{1,80}?\\"|“[^”\n]*”|(?<!\S)/[\w/.-]+')
SHELL_PROSE = re.compile(r'(?<![^\s;])(?P<comment>#+ [^\n]*)|"(?P<string>(?:\\.|[^"\\\n])*)"')


def blank(text, fill="\0"):
    return re.sub(r"[^\n]", fill, text)


def without_names(text):
    return NAME.sub(lambda name: blank(name.group(0)), text)


def comment_text(comment):
    if DIRECTIVE.search(comment):
        return blank(comment)
    return without_names(re.sub(r"(?m)^\s*(///?<?|/?\*+/?)|\*/", lambda m: blank(m.group(0), " "), comment))


def string_text(string):
    """Returns the text of a literal with its quotes and escapes blanked; all NUL if it is a name."""
    body = re.sub(r'\\[ntr]', "  ", string)
    if not re.search(r"[A-Za-z,.:;]\s+[A-Za-z]", body) and not re.search(r"^\s|\s$", body):
        return blank(string)
    return without_names(body)


def cpp(text):
    out, end = [], 0
    for token in CPP_TOKEN.finditer(text):
        out.append(re.sub(r"[^\s]", "\0", text[end:token.start()]))
        whole = token.group(0)
        if token.group("comment"):
            out.append(comment_text(whole))
        elif token.group("string"):
            out.append(" " + string_text(whole[1:-1]) + " ")
        elif token.group("raw"):
            edge = len(token.group("mark")) + 3
            out.append(" " * edge + string_text(whole[edge:1 - edge]) + " " * (edge - 1))
        else:
            out.append(blank(whole))
        end = token.end()
    out.append(re.sub(r"[^\s]", "\0", text[end:]))
    return "".join(out)


def python(text):
    starts = [0]
    for line in text.splitlines(keepends=True):
        starts.append(starts[-1] + len(line))
    out = list(blank(text))
    for token in tokenize.generate_tokens(io.StringIO(text).readline):
        if token.type not in (tokenize.COMMENT, tokenize.STRING):
            continue
        start = starts[token.start[0] - 1] + token.start[1]
        end = starts[token.end[0] - 1] + token.end[1]
        piece = text[start:end]
        if token.type == tokenize.COMMENT:
            piece = blank(piece) if DIRECTIVE.search(piece) else without_names(" " + piece[1:])
        else:
            quotes = re.match(r"""[rbfuRBFU]*("{3}|'{3}|"|')""", piece)
            edge, tail = quotes.end(), len(quotes.group(1))
            piece = " " * edge + string_text(piece[edge:-tail]) + " " * tail
        out[start:end] = piece
    return "".join(out)


def shell(text):
    """Handles shell scripts, CMake and make: comments, and double-quoted strings that are sentences."""
    out = list(re.sub(r"[^\s]", "\0", text))
    for match in SHELL_PROSE.finditer(text):
        if match.group("comment"):
            piece = match.group(0)
            piece = blank(piece) if DIRECTIVE.search(piece) else without_names(piece.replace("#", " "))
        else:
            piece = " " + string_text(match.group("string")) + " "
        out[match.start():match.end()] = piece
    return "".join(out)


def json(text):
    return re.sub(
        r'(?s)("(?:\\.|[^"\\\n])*")|([^"\s])',
        lambda m: " " + string_text(m.group(1)[1:-1]) + " " if m.group(1) else "\0",
        text,
    )


def man(text):
    """Handles a man page: bold and italic words are names, and so are example lines."""
    text = re.sub(r"(?ms)^\.(nf|EX)$.*?^\.(fi|EE)$", lambda m: blank(m.group(0)), text)
    text = re.sub(r'(?m)^(\.\\".*|\.(B|I|BR|IR|RB|RI|TH)\b.*|\.[A-Za-z]+)', lambda m: blank(m.group(0)), text)
    text = re.sub(r"\\f[BI].*?\\f[RP]", lambda m: blank(m.group(0)), text)
    return without_names(text.replace("\\-", " -"))


def markdown(text):
    def code(block):
        """Keeps only the comments of a code block."""
        return re.sub(
            r"(?m)^(.*?)(?:((?:^|\s)(?:#|//) )(.*))?$",
            lambda m: blank(m.group(1)) + blank(m.group(2) or "", " ") + (m.group(3) or ""),
            block.group(0),
        )

    text = re.sub(r"(?ms)^\s*(```|~~~).*?^\s*\1", code, text)
    text = re.sub(r"<!--.*?-->|</?[a-z][^>\n]*>", lambda m: blank(m.group(0)), text, flags=re.S)
    # A code span may continue on the next line.
    text = re.sub(r"`[^`]{1,200}`", lambda m: blank(m.group(0)), text)
    text = re.sub(r"\]\([^)\n]*\)", lambda m: blank(m.group(0)), text)
    text = re.sub(r"(?m)^(\s*)>", r"\1 ", text)
    return without_names(text)


READERS = (
    (r"\.(h|cpp|inl)(\.in)?$", cpp),
    (r"\.py$", python),
    (r"\.(sh|cmake|cmake\.in)$|CMakeLists\.txt$|Makefile$|^\.ci/run$|^\.clang-tidy$", shell),
    (r"\.json$", json),
    (r"\.md$", markdown),
    (r"\.1$", man),
)


def prose_of(path, text):
    """Returns the prose of the file, or None if this kind of file has no prose."""
    for pattern, reader in READERS:
        if re.search(pattern, path):
            return reader(text)
    return None
