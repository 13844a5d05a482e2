"""Mutation sites of C++ sources for scripts/mutants: a light lexer (comments, literals,
preprocessor lines masked), braced blocks classified as namespace, class, initialiser or
code, and the operators applied to them. Identities and the seeded sample live here too."""

import bisect
import hashlib
import os
import re
import subprocess

SCOPE = ("api", "model", "sdp", "adv", "device", "platform", "emulator")
FAMILIES = ("cmp", "const", "logic", "delete", "return", "string")


def sha(text):
    return hashlib.sha256(text.encode()).hexdigest()


# ---------------------------------------------------------------- lexing

def mask(text):
    """Returns (masked text, string literal spans, preprocessor flag per line).

    The masked text has the length of the source: comments become blanks and the contents
    of string and character literals become '_', so operators are searched in code only.
    String spans are (start, end) offsets of the contents of plain "..." literals."""
    out = list(text)
    strings = []
    i, n = 0, len(text)
    while i < n:
        c = text[i]
        if text.startswith("//", i):
            j = text.find("\n", i)
            j = n if j < 0 else j
            out[i:j] = " " * (j - i)
            i = j
        elif text.startswith("/*", i):
            j = text.find("*/", i + 2)
            j = n if j < 0 else j + 2
            out[i:j] = [ch if ch == "\n" else " " for ch in text[i:j]]
            i = j
        elif c in "\"'":
            j = i + 1
            while j < n and text[j] != c and text[j] != "\n":
                j += 2 if text[j] == "\\" else 1
            if c == '"' and not re.search(r"[\w]$", text[max(0, i - 2):i]):
                strings.append((i + 1, j))
            out[i + 1:j] = "_" * (j - i - 1)
            i = j + 1
        elif c.isalnum() or c == "_":  # a whole identifier or number: a quote after it is a suffix
            j = i
            while j < n and (text[j].isalnum() or text[j] == "_"):
                j += 1
            if text[i:j] in ("R", "u8R", "uR", "UR", "LR") and text.startswith('"', j):
                delim = text[j + 1:text.find("(", j)]
                z = text.find(")" + delim + '"', j)
                z = n if z < 0 else z + len(delim) + 2
                out[j + 1:z - 1] = [ch if ch == "\n" else "_" for ch in text[j + 1:z - 1]]
                i = z  # raw strings are masked and never mutated
                continue
            if c.isdigit():  # digit separators ' stay inside the number
                while j < n and (text[j].isalnum() or text[j] in "_'."):
                    j += 1
            i = j
        else:
            i += 1
    masked = "".join(out)
    pp, cont = [], False
    for line in masked.split("\n"):
        is_pp = cont or line.lstrip().startswith("#")
        pp.append(is_pp)
        cont = is_pp and line.rstrip().endswith("\\")
    return masked, strings, pp


class Block:
    def __init__(self, start, kind, header, parent):
        self.start, self.end, self.kind, self.header, self.parent = start, None, kind, header, parent
        self.function = kind == "code" and (parent is None or parent.kind in ("ns", "class")) and header != ""
        self.lambda_ = kind == "code" and bool(re.search(r"\]\s*(\(.*\))?\s*(mutable\s*)?(noexcept\s*)?(->[^{]*)?$", header, re.S))


def classify(header, parent):
    h = re.sub(r"^\s*template\s*<.*?>\s*", "", " ".join(header.split()))
    pkind = parent.kind if parent else "ns"
    if re.search(r"\bnamespace\b|^extern\s+\"_*\"$", h):
        return "ns"
    if re.search(r"\benum\b", h):
        return "enum"
    if re.match(r"(typedef\s+)?(class|struct|union)\b", h) and "(" not in h:
        return "class"
    if h == "":
        return "code" if pkind in ("code", "class") else pkind if pkind == "init" else "init"
    if re.search(r"(\)|\b(else|do|try|const|override|noexcept|final|mutable)|->\s*[\w:<>,*&\s]+|:)$", h) and not h.endswith("::"):
        return "code" if not re.search(r"[=,(]\s*$", h) else "init"
    return "init"


def blocks_of(masked, pp_lines):
    """Braced blocks with their kinds: ns, class, enum, init (braced initialisers) or code."""
    starts = [0]
    for k, ch in enumerate(masked):
        if ch == "\n":
            starts.append(k + 1)
    stack, blocks, header_from = [], [], 0
    line = 0
    for k, ch in enumerate(masked):
        while line + 1 < len(starts) and starts[line + 1] <= k:
            line += 1
        if pp_lines[line] or ch not in "{};":
            continue
        if ch == "{":
            header = "".join(c for ln, c in _lines_text(masked, header_from, k, starts, pp_lines))
            parent = stack[-1] if stack else None
            b = Block(k, classify(header.strip(), parent), header.strip(), parent)
            stack.append(b)
            blocks.append(b)
        elif ch == "}" and stack:
            stack.pop().end = k
        header_from = k + 1
    return blocks, starts


def _lines_text(masked, a, b, starts, pp_lines):
    """Characters of masked[a:b] that are not on preprocessor lines, with their line."""
    for k in range(a, b):
        ln = bisect.bisect_right(starts, k) - 1
        if not pp_lines[ln]:
            yield ln, masked[k]


def innermost(blocks, pos):
    best = None
    for b in blocks:
        if b.start < pos and (b.end is None or pos <= b.end):
            if best is None or b.start > best.start:
                best = b
    return best


def function_of(block):
    """The function body around a code position, or None inside a lambda or outside code."""
    while block is not None and block.kind == "code":
        if block.lambda_:
            return None
        if block.function:
            return block
        block = block.parent
    return None


def return_kind(header):
    """'void', 'bool', 'value' or None (a reference, auto or unknown return type)."""
    h = re.sub(r"^\s*template\s*<.*?>\s*", "", " ".join(header.split()))
    head = h.split("(", 1)[0].strip()
    if re.search(r"\boperator\s*$", head) or "[" in head:
        return None
    head = re.sub(r"\[\[.*?\]\]|\b(public|private|protected)\s*:|\b(static|inline|constexpr|virtual|explicit|friend|extern)\b", "", head).split()
    if len(head) < 2:
        return "void"  # constructor or destructor
    rtype = " ".join(head[:-1])
    name = head[-1]
    if name.startswith(("*", "&")) or rtype.endswith(("&", "auto")) or rtype in ("auto", "decltype"):
        return None
    return {"void": "void", "bool": "bool"}.get(rtype, "value")


# ---------------------------------------------------------------- sites

class Mutant:
    def __init__(self, path, line, family, op, start, end, repl, desc):
        self.path, self.line, self.family, self.op = path, line, family, op
        self.start, self.end, self.repl, self.desc = start, end, repl, desc
        self.id = self.identity = self.rank = None


def next_char(c):
    if c.isdigit():
        return str((int(c) + 1) % 10)
    if c.isalpha() and c.isascii():
        base = "a" if c.islower() else "A"
        return chr((ord(c) - ord(base) + 1) % 26 + ord(base))
    return "-" if c == "_" else "_"


def short(text, width=48):
    text = " ".join(text.split())
    return text if len(text) <= width else text[:width - 3] + "..."


def around(line, a, z, new):
    """The mutated spot in its line: `left[old -> new]right`."""
    left, right = re.sub(r"\s+", " ", line[:a]).lstrip()[-26:], re.sub(r"\s+", " ", line[z:])[:18]
    return "`%s[%s -> %s]%s`" % (left, line[a:z], new, right.rstrip())


def sites_of(path, text):
    masked, strings, pp = mask(text)
    blocks, starts = blocks_of(masked, pp)
    lines, mlines = text.split("\n"), masked.split("\n")
    found = []

    def add(family, op, start, end, repl, desc):
        ln = bisect.bisect_right(starts, start) - 1
        found.append(Mutant(path, ln + 1, family, op, start, end, repl, desc))

    def ctx(pos):
        b = innermost(blocks, pos)
        return b.kind if b else "ns"

    for ln, (line, ml) in enumerate(zip(lines, mlines)):
        if pp[ln] or "static_assert" in ml:
            continue
        base = starts[ln]
        for m in re.finditer(r"(?<![<>=!-])(<=|>=|==|!=)(?![=>])|(?<= )([<>])(?= )", ml):
            if re.search(r"operator\s*$", ml[:m.start()]) or ctx(base + m.start()) == "ns":
                continue
            old = m.group(0)
            new = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}[old]
            add("cmp", "cmp", base + m.start(), base + m.end(), new,
                around(line, m.start(), m.end(), new))
        for m in re.finditer(r"(?<![\w.'])(0[xX][0-9a-fA-F]+|\d+)([uUlL]*)(?![\w.'])", ml):
            lit = m.group(1)
            if re.search(r"\)\s*(const\s*)?=\s*$", ml[:m.start()]) and lit == "0":
                continue  # pure virtual
            if lit.startswith(("0x", "0X")):
                value, fmt = int(lit, 16), lambda v, w=len(lit) - 2: "0x%0*X" % (w, v)
            elif len(lit) > 1 and lit.startswith("0"):
                value, fmt = int(lit, 8), lambda v: "0%o" % v
            else:
                value, fmt = int(lit), str
            for op, delta in (("const+1", 1), ("const-1", -1)):
                if value + delta < 0:
                    continue
                add("const", op, base + m.start(1), base + m.end(1), fmt(value + delta),
                    around(line, m.start(1), m.end(1), fmt(value + delta)))
        for m in re.finditer(r"(?<= )(&&|\|\|)(?= )", ml):
            new = "||" if m.group(0) == "&&" else "&&"
            add("logic", "logic", base + m.start(), base + m.end(), new,
                around(line, m.start(), m.end(), new))
        for m in re.finditer(r"\breturn\b\s*([^;]*);", ml):
            fn = function_of(innermost(blocks, base + m.start()))
            kind = return_kind(fn.header) if fn else None
            code = m.group(1).strip()  # balanced in code; the replacement keeps the literals of the source
            expr = line[m.start(1):m.end(1)].strip()
            if kind not in ("bool", "value") or not code or code.count("(") != code.count(")") or code.count("{") != code.count("}"):
                continue
            if kind == "bool":
                new = {"true": "false", "false": "true"}.get(expr, "!(%s)" % expr)
            elif expr in ("{}", "nullptr", "0", "false", '""', "std::string()"):
                continue
            else:
                new = "{}"
            add("return", "return-value", base + m.start(1), base + m.start(1) + len(m.group(1).rstrip()), new,
                "return `%s` -> `%s`" % (short(expr, 32), new))
    # a statement deleted: an expression statement (assignment, call, ++/--, break, continue)
    # that starts a statement inside a function body
    prev_end = ""
    for ln, ml in enumerate(mlines):
        code = ml.strip()
        if pp[ln] or not code:
            continue
        pos = starts[ln] + len(ml) - len(ml.lstrip())
        if prev_end in (";", "{", "}", ":") and ctx(pos) == "code" and function_of(innermost(blocks, pos)):
            stmt, last = code, ln
            while not (stmt.endswith(";") and stmt.count("(") == stmt.count(")") and stmt.count("{") == stmt.count("}")) and last - ln < 8:
                last += 1
                if last >= len(mlines) or pp[last]:
                    break
                stmt += " " + mlines[last].strip()
            if stmt.endswith(";") and stmt.count("(") == stmt.count(")") and last < len(mlines):
                simple = re.match(r"[\w.:\[\]()*>-]+\s*(=|\+=|-=|\*=|/=|%=|\|=|&=|\^=|<<=|>>=)\s*[^=]", stmt) \
                    or re.match(r"[\w:.\[\]>-]+\s*(<[^;()]*>)?\s*\(.*\)\s*;$", stmt) \
                    or re.match(r"(\+\+|--)[\w.\[\]>-]+;$|[\w.\[\]>-]+(\+\+|--);$|(break|continue);$", stmt)
                keyword = re.match(r"(return|throw|static_assert|delete|goto|case|default|using|typedef|"
                                   r"if|for|while|switch|do|else|try)\b", stmt) or "{" in stmt
                if simple and not keyword and not re.search(r"=\s*(default|delete)\s*;$", stmt):
                    end = starts[last] + mlines[last].rstrip().rfind(";") + 1
                    add("delete", "delete", pos, end, "\n" * text[pos:end].count("\n"),
                        "delete `%s`" % short(text[pos:end]))
        prev_end = code[-1]
    # an early return at the start of each function body
    for b in blocks:
        if not b.function or b.end is None or not masked[b.start + 1:b.end].strip():
            continue
        kind = return_kind(b.header)
        values = {"void": ["return;"], "bool": ["return true;", "return false;"], "value": ["return {};"]}.get(kind, [])
        name = short(re.sub(r"\s*\(.*", "(...)", " ".join(b.header.split()), flags=re.S), 40)
        for value in values:
            op = "return-" + {"return;": "void", "return {};": "default"}.get(value, value[7:-1])
            add("return", op, b.start + 1, b.start + 1, " %s " % value, "`%s` first in %s" % (value, name))
    # one character of a string literal
    for a, z in strings:
        ln = bisect.bisect_right(starts, a) - 1
        if pp[ln] or z <= a or "static_assert" in mlines[ln] or re.search(r"\bextern\s*$", masked[:a - 1][-20:]):
            continue
        body = text[a:z]
        allowed = [k for k, ch in enumerate(body) if ch not in "\\%" and (k == 0 or body[k - 1] not in "\\%")]
        if allowed:
            add("string", "string", a, z, body, "")  # the character is chosen with the identity below
    return found


def identify(path, text, found):
    lines = text.split("\n")
    occurrence, seen = [], {}
    for line in lines:
        key = line.strip()
        occurrence.append(seen.get(key, 0))
        seen[key] = occurrence[-1] + 1
    starts = [0]
    for line in lines[:-1]:
        starts.append(starts[-1] + len(line) + 1)
    for m in found:
        line = lines[m.line - 1]
        col = m.start - starts[m.line - 1] - (len(line) - len(line.lstrip()))
        m.identity = "\x1f".join([path, line.strip(), str(occurrence[m.line - 1]), m.op, str(col)])
        m.id = sha(m.identity)[:10]
        if m.family == "string":
            body = m.repl
            allowed = [k for k, ch in enumerate(body) if ch not in "\\%" and (k == 0 or body[k - 1] not in "\\%")]
            k = allowed[int(m.id, 16) % len(allowed)]
            m.repl = body[:k] + next_char(body[k]) + body[k + 1:]
            m.desc = '"%s" -> "%s"' % (short(body, 36), short(m.repl, 36))
    return found


def source_files(root, tree):
    """The project's files (tracked and new ones) and, of those, the ones mutated."""
    names = subprocess.run(["git", "-C", root, "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                           check=True, capture_output=True, text=True).stdout.split("\0")
    names = sorted(set(n for n in names if n and os.path.isfile(os.path.join(root, n))))
    return names, [n for n in names if n.split("/")[0] in SCOPE and n.endswith((".cpp", ".h"))
                   and os.path.isfile(os.path.join(tree, n))]


def sample(tree, files, seed, count):
    every = []
    for path in files:
        with open(os.path.join(tree, path), encoding="utf-8") as f:
            text = f.read()
        every += identify(path, text, sites_of(path, text))
    for m in every:
        m.rank = sha("%s\x1f%s" % (seed, m.identity))
    by_family = {f: sorted((m for m in every if m.family == f), key=lambda m: m.rank) for f in FAMILIES}
    quota = {f: 0 for f in FAMILIES}
    left = count
    while left > 0 and any(quota[f] < len(by_family[f]) for f in FAMILIES):
        for f in FAMILIES:  # equal shares; a family without enough sites leaves its share to the others
            if left > 0 and quota[f] < len(by_family[f]):
                quota[f] += 1
                left -= 1
    chosen = [m for f in FAMILIES for m in by_family[f][:quota[f]]]
    sizes = {f: len(by_family[f]) for f in FAMILIES}
    return sorted(chosen, key=lambda m: (m.path, m.line, m.start, m.op)), sizes
