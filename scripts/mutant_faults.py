"""The faults that scripts/mutants can plant: which lines may carry one, and what each operator
makes of a line.

An operator gets the file and the number of a line and answers with every edit that it can make
there, each a map from line number to new text. Comments, directives, static assertions and
diagnostic lines are nobody's fault: they are blanked in `code`, which the operators search and
which has the length of the text.
"""
import re

COMMENT_OR_TEXT = re.compile(
    r'//[^\n]*|/\*.*?\*/|L?"(?:[^"\\\n]|\\.)*"|L?\'(?:[^\'\\\n]|\\.)+\'', re.S
)
NEVER = re.compile(
    r"^[ \t]*#[ \t]*(?!define \w+ \d)[^\n]*|"
    r"\b(?:static_assert|DebugLog|OutputDebugString\w)\(.*?;",
    re.S | re.M,
)
PAIRS = {"(": ")", "[": "]", "{": "}"}


class Source:
    def __init__(self, name, text):
        self.name = name
        self.text = text.split("\n")
        blanked = COMMENT_OR_TEXT.sub(
            lambda m: re.sub(r"[^\n]", " " if m[0][0] == "/" else '"', m[0]), text
        )
        blanked = NEVER.sub(lambda m: re.sub(r"[^\n]", " ", m[0]), blanked)
        self.code = blanked.split("\n")

    def ends(self, line, marks):
        """Whether a line is blank or ends with one of these."""
        code = self.code[line].rstrip()
        return not code or code[-1] in marks

    def span(self, line):
        """The lines of the statement or row that `line` is part of, as far as their ends tell."""
        first = last = line
        while first > 0 and not self.ends(first - 1, ";{}:"):
            first -= 1
        while last + 1 < len(self.code) and not self.ends(last, ";{}"):
            last += 1
        return range(first, last + 1)


def closing(code, start):
    """Where the bracket at `start` closes on its line, or -1."""
    depth = 0
    for at in range(start, len(code)):
        depth += (code[at] in PAIRS) - (code[at] in ")]}")
        if depth == 0:
            return at
    return -1


def cells(source, line, start, end):
    """The ranges between the commas of one bracket level, without blanks around them."""
    found, depth, begin = [], 0, start
    for at in range(start, end + 1):
        char = source.code[line][at] if at < end else ","
        depth += (char in PAIRS) - (char in ")]}")
        if char == "," and depth == 0:
            part = source.text[line][begin:at]
            left = begin + len(part) - len(part.lstrip())
            found.append((left, left + len(part.strip())))
            begin = at + 1
    return found


def exchanged(source, one, other):
    """The edit that exchanges two ranges, each a line and two columns, if they differ."""
    (l1, a1, b1), (l2, a2, b2) = sorted((one, other))
    first, second = source.text[l1][a1:b1], source.text[l2][a2:b2]
    if first == second or not first or not second:
        return []
    if l1 != l2:
        return [{l1: source.text[l1][:a1] + second + source.text[l1][b1:],
                 l2: source.text[l2][:a2] + first + source.text[l2][b2:]}]
    text = source.text[l1]
    return [{l1: text[:a1] + second + text[b1:a2] + first + text[b2:]}]


def replaces(pattern, replacement):
    """An operator that replaces one match by what a table or a function of the match says."""
    new = replacement if callable(replacement) else lambda match: [replacement[match[0]]]

    def operator(source, line):
        text = source.text[line]
        return [{line: text[: m.start()] + by + text[m.end() :]}
                for m in re.finditer(pattern, source.code[line]) for by in new(m)]

    return operator


def moved_number(match):
    number = int(match[1], 0)
    shown = hex if match[1][:2].lower() == "0x" else str
    return [shown(n) + match[2] for n in (number + 1, number - 1) if n >= 0]


def dropped_statement(source, line):
    code = source.code[line].rstrip()
    if not source.name.endswith(".cpp") or not code.endswith(";"):
        return []
    start = re.match(r"\s*(?:(?:if|for|while) (?=\())?", code).end()
    if start and code[start - 1] == " " and code.lstrip()[:2] in ("if", "fo", "wh"):
        start = closing(code, start) + 1
    start += len(code[start:]) - len(code[start:].lstrip())
    is_call = re.match(r"(?:\(void\))?(?:::)?[\w:]+(?:<\w+>)?(?:(?:\.|->)\w+)*\(", code[start:])
    is_assignment = re.match(r"[\w.\->*\[\]]+ [-+|&^]?= ", code[start:])
    if not (is_call and closing(code, start + is_call.end() - 1) == len(code) - 2 or is_assignment):
        return []
    return [{line: source.text[line][:start] + "{}"}]


def negated_condition(source, line):
    found = re.search(r"\bif \(", source.code[line])
    end = closing(source.code[line], found.end() - 1) if found else -1
    text = source.text[line]
    if end < 0 or "=" in re.sub(r"[=!<>]=", "", text[found.end() : end]):
        return []
    return [{line: f"{text[:found.end()]}!({text[found.end():end]}){text[end:]}"}]


def exchanged_arguments(source, line):
    edits = []
    for call in re.finditer(r"\w\(", source.code[line]):
        end = closing(source.code[line], call.end() - 1)
        inside = cells(source, line, call.end(), end) if end > 0 else []
        if any(re.fullmatch(r"[\w:<> ]+[&* ]+\w+", source.text[line][a:b]) for a, b in inside):
            continue
        for (a1, b1), (a2, b2) in zip(inside, inside[1:]):
            edits += exchanged(source, (line, a1, b1), (line, a2, b2))
    return edits


def row_cells(source, line):
    """A row's kind and the ranges of its cells: of a table, a resource list, numbered names."""
    code = source.code[line].rstrip()
    if not source.name.startswith("res/"):
        brace = re.match(r"\s*\{(?=.*\},?$)", code)
        end = len(code.rstrip(",").rstrip("}"))
        return ("{", cells(source, line, brace.end(), end)) if brace else None
    kind = re.match(r"\s+[A-Z]+ (?=\S)|\s+(?=IDS_)|#define (?=\w+ \d)", code)
    if kind and kind[0].strip() in ("", "#define"):
        return kind[0], [re.search(r"[^ ]+$", code).span()]
    return (kind[0], cells(source, line, kind.end(), len(code))) if kind else None


def exchanged_rows(source, line):
    """A cell of a row against the next row's."""
    one = row_cells(source, line)
    other = row_cells(source, line + 1) if one and line + 1 < len(source.text) else None
    if not other or one[0] != other[0]:
        return []
    return [edit for first, second in zip(one[1], other[1])
            for edit in exchanged(source, (line, *first), (line + 1, *second))]


def exchanged_members(source, line):
    """Two members that a statement or two neighbouring lines name."""
    member = re.compile(r"(?:\.|->|&\w+::)([a-z]\w*)\b(?![(<])")
    named = [(n, *found.span(1)) for n in (line, line + 1) if n < len(source.code)
             for found in member.finditer(source.code[n])]
    return [edit for one, other in zip(named, named[1:]) if one[0] == line
            for edit in exchanged(source, one, other)]


OPPOSITE = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==",
            "&&": "||", "||": "&&", "+": "-", "-": "+",
            "true": "false", "false": "true", "TRUE": "FALSE", "FALSE": "TRUE"}
OPERATORS = {
    "comparison": replaces(r"(?<= )(?:[<>]=?|[=!]=)(?= )", OPPOSITE),
    "number": replaces(
        r"(?<![\w.\"'])(0[xX][0-9a-fA-F]+|[1-9]\d*|0)([uUlLz]*)(?![\w.'\"])", moved_number),
    "and-or": replaces(r"&&(?= )|\|\|", OPPOSITE),
    "true-false": replaces(r"\b(?:true|false|TRUE|FALSE)\b", OPPOSITE),
    "plus-minus": replaces(r"(?<= )[-+](?==? )", OPPOSITE),
    "dropped": dropped_statement,
    "negated": negated_condition,
    "returned": replaces(r"(?<=\breturn )(?!true|false|null)[^;{}]+(?=;)", lambda m: ["{}"]),
    "arguments": exchanged_arguments,
    "rows": exchanged_rows,
    "members": exchanged_members,
}
