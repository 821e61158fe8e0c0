"""Finds the places of a source where a small change is a fault, and writes all changes into one copy.

Each change is a mutant with a number. In the copy every place asks `Mutation::is(number)`, so that
one build holds all mutants and the environment chooses one (Mutation.h). What is evaluated by the
compiler cannot ask: constexpr functions and variables, template arguments, static_assert, the
conditions of if constexpr, case labels. Nor can what a macro declares.
"""

import glob
import json
import os
import re
import shlex
from dataclasses import dataclass, field

from clang.cindex import Config, CursorKind as Kind, Diagnostic, Index, TypeKind

Config.set_library_file(sorted(glob.glob("/usr/lib/llvm-*/lib/libclang.so.1"))[-1])

IS = "Mutation::is(\0)"  # \0 stands for the mutant's number, \1 for the next one
BY_COMPILER = re.compile(r"\b(constexpr|consteval|constinit)\b")
MACRO = re.compile(r"(SM|KEL)_[A-Z]+\(")
FUNCTIONS = {
    Kind.FUNCTION_DECL, Kind.FUNCTION_TEMPLATE, Kind.CXX_METHOD, Kind.CONSTRUCTOR,
    Kind.DESTRUCTOR, Kind.CONVERSION_FUNCTION,
}
SCOPES = {
    Kind.NAMESPACE, Kind.CLASS_DECL, Kind.STRUCT_DECL, Kind.CLASS_TEMPLATE,
    Kind.CLASS_TEMPLATE_PARTIAL_SPECIALIZATION, Kind.UNEXPOSED_DECL, Kind.LINKAGE_SPEC,
}
NO_CODE = {
    Kind.STATIC_ASSERT, Kind.ENUM_DECL, Kind.TYPE_ALIAS_DECL, Kind.TYPEDEF_DECL, Kind.PARM_DECL,
    Kind.CONCEPT_DECL if hasattr(Kind, "CONCEPT_DECL") else Kind.STATIC_ASSERT,
    Kind.TYPE_REF, Kind.TEMPLATE_REF, Kind.NAMESPACE_REF,
}
STATEMENTS = {
    Kind.CALL_EXPR, Kind.BINARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR, Kind.UNARY_OPERATOR,
    Kind.CXX_THROW_EXPR, Kind.CXX_DELETE_EXPR, Kind.UNEXPOSED_EXPR, Kind.CONTINUE_STMT,
    Kind.BREAK_STMT, Kind.FOR_STMT, Kind.CXX_FOR_RANGE_STMT, Kind.WHILE_STMT,
}
INTEGERS = {
    TypeKind.USHORT, TypeKind.UINT, TypeKind.ULONG, TypeKind.ULONGLONG, TypeKind.UCHAR,
    TypeKind.SHORT, TypeKind.INT, TypeKind.LONG, TypeKind.LONGLONG,
}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "<<": ">>", ">>": "<<",
              "&": "|", "|": "&"}
STEPS = {"++": "--", "--": "++", "+=": "-=", "-=": "+=", "|=": "&=", "&=": "|="}


@dataclass
class Mutant:
    file: str
    line: int
    code: str  # the line in the source
    change: str
    # What is written around which bytes: (begin, end, before, after).
    wraps: list = field(default_factory=list)

    def key(self):
        return self.file, self.code, self.change


class Source:
    """One file, and the mutants found in it."""

    def __init__(self, name):
        self.name = name
        with open(name, "rb") as file:
            self.bytes = file.read()
        self.mutants = []
        self.seen = set()

    def text(self, begin, end):
        return self.bytes[begin:end].decode()

    def add(self, change, *wraps):
        if (wraps, change) in self.seen:
            return False
        self.seen.add((wraps, change))
        begin = wraps[0][0]
        line = self.bytes.count(b"\n", 0, begin) + 1
        code = " ".join(self.bytes.splitlines()[line - 1].decode().split())
        self.mutants.append(
            Mutant(self.name, line, code, " ".join(change.split()), list(wraps)))
        return True

    def mutated(self, first):
        """The copy, in which the mutants have the numbers from `first` on."""
        wraps = [(begin, end, *(text.replace("\0", str(number)).replace("\1", str(number + 1))
                                for text in around))
                 for number, mutant in enumerate(self.mutants, first)
                 for begin, end, *around in mutant.wraps]
        wraps.sort(key=lambda wrap: (wrap[0], -wrap[1]))
        out, at, open_wraps = [], 0, []

        def advance(to):
            nonlocal at
            out.append(self.text(at, to))
            at = to

        def close(until):
            while open_wraps and open_wraps[-1][0] <= until:
                end, after = open_wraps.pop()
                advance(end)
                out.append(after)

        for begin, end, before, after in wraps:
            close(begin)
            if open_wraps and end > open_wraps[-1][0]:
                raise ValueError(f"{self.name}: bytes {begin} to {end} cross {open_wraps[-1]}")
            advance(begin)
            out.append(before)
            open_wraps.append((end, after))
        close(len(self.bytes))
        advance(len(self.bytes))
        return re.sub(r"\bconstinit\b", "", "".join(out))


class Finder:
    """Walks the syntax tree of one file."""

    def __init__(self, source):
        self.source = source

    def text(self, node):
        return self.source.text(node.extent.start.offset, node.extent.end.offset)

    def wrap(self, node, before, after):
        return node.extent.start.offset, node.extent.end.offset, before, after

    def either(self, node, other):
        """The node, or what the mutant has in its place."""
        return self.wrap(node, f"({IS} ? {other} : ", ")")

    # Declarations.

    def declaration(self, node):
        text = self.text(node)
        if node.kind in NO_CODE or MACRO.match(text):
            return
        if node.kind in SCOPES:
            for child in node.get_children():
                self.declaration(child)
        elif node.kind in FUNCTIONS or node.kind in (Kind.VAR_DECL, Kind.FIELD_DECL):
            self.definition(node)
        elif node.kind == Kind.FRIEND_DECL:
            return

    def definition(self, node):
        """A function or a variable: what stands behind its name is code."""
        name = node.location.offset
        head = self.source.text(node.extent.start.offset, name)
        if BY_COMPILER.search(head) or name + len(node.spelling) > node.extent.end.offset:
            return
        result = None
        if node.kind in FUNCTIONS and not re.search(r"\bauto\b", head):
            result = node.result_type.get_canonical()
        children = [child for child in node.get_children() if child.extent.start.offset >= name]
        if node.kind == Kind.FIELD_DECL and node.is_bitfield():
            children = children[1:]
        for child in children:
            # What the compiler writes by itself has the place of the declaration.
            if child.kind == Kind.COMPOUND_STMT and not self.text(child).startswith("{"):
                continue
            self.code(child, node, result)

    # Statements and expressions.

    def code(self, node, parent, result):
        if node.kind in NO_CODE:
            return
        children = list(node.get_children())
        if node.kind == Kind.LAMBDA_EXPR:
            returned = re.match(r"\[[^\]]*\]\s*\([^{]*\)\s*->([^{]*)\{", self.text(node))
            result = returned.group(1).strip() if returned else None
        elif node.kind == Kind.VAR_DECL:
            if BY_COMPILER.search(self.source.text(node.extent.start.offset, node.location.offset)):
                return
            children = [c for c in children if c.extent.start.offset > node.location.offset]
        elif node.kind in (Kind.DECL_REF_EXPR, Kind.MEMBER_REF_EXPR):
            self.name(node)
            children = [c for c in children if c.kind not in (
                Kind.INTEGER_LITERAL, Kind.CXX_BOOL_LITERAL_EXPR, Kind.DECL_REF_EXPR)
                or node.kind == Kind.MEMBER_REF_EXPR and c.extent.start == node.extent.start]
        elif node.kind == Kind.IF_STMT:
            children = self.branch(node, children)
        elif node.kind == Kind.CONDITIONAL_OPERATOR:
            self.condition(children[0])
        elif node.kind == Kind.CASE_STMT:
            children = children[1:]
        elif node.kind == Kind.RETURN_STMT:
            self.returning(node, children, parent, result)
        elif node.kind in (Kind.BINARY_OPERATOR, Kind.CALL_EXPR) and self.binary(node, children):
            pass
        elif node.kind in (Kind.UNARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR):
            self.step(node, children)
        elif node.kind in (Kind.CALL_EXPR, Kind.INIT_LIST_EXPR):
            self.arguments(node, children)
        elif node.kind == Kind.INTEGER_LITERAL:
            text = self.text(node)
            if text[:1].isdigit():
                self.source.add(f"{text} -> {text} + 1", self.either(node, f"{text} + 1"))
                if not re.fullmatch("0[uUlL]*", text):
                    self.source.add(f"{text} -> {text} - 1", self.either(node, f"{text} - 1"))
        elif node.kind == Kind.CXX_BOOL_LITERAL_EXPR:
            text = self.text(node)
            if text in ("true", "false"):
                other = "false" if text == "true" else "true"
                self.source.add(f"{text} -> {other}", self.either(node, other))
        if node.kind == Kind.COMPOUND_STMT:
            self.statements(node, children, parent)
        for child in children:
            self.code(child, node, result)

    def statements(self, node, children, parent):
        """Without each of them, but for those whose mutant the condition of an if has already."""
        if len(children) == 1 and parent.kind == Kind.IF_STMT:
            bodies = [c for c in parent.get_children() if c.kind == Kind.COMPOUND_STMT]
            if len(bodies) == 1 or node == bodies[1]:
                return
        for child in children:
            self.statement(child)

    def statement(self, node):
        text = self.text(node)
        if node.kind not in STATEMENTS and text != "return":
            return
        begin, end = node.extent.start.offset, node.extent.end.offset
        if not text.endswith("}"):
            end = self.source.bytes.index(b";", end) + 1
        what = text if len(text) < 60 else text[:57] + "..."
        self.source.add(f"without: {what}", (begin, end, f"if (!{IS}) {{ ", " }"))

    def condition(self, node):
        self.source.add("the condition is true", self.wrap(node, f"({IS} || (", "))"))
        self.source.add("the condition is false", self.wrap(node, f"(!{IS} && (", "))"))

    def branch(self, node, children):
        """The parts of an if that are code of their own."""
        if re.match(r"if\s+constexpr\b", self.text(node)):
            return children[1:]
        first = children[:1] if children[0].kind == Kind.DECL_STMT else []
        children = children[len(first):]
        if children[0].kind == Kind.VAR_DECL:
            end, name = children[0].extent.end.offset, children[0].spelling
            # One text for both; the second has none of its own.
            if self.source.add("the condition is true",
                               (end, end, f"; {IS} || (!Mutation::is(\1) && {name})", "")):
                self.source.add("the condition is false", (end, end, "", ""))
            bodies = children[2:]
            children = [children[0], *bodies]
        else:
            self.condition(children[0])
            bodies = children[1:]
        if len(bodies) == 2 and bodies[1].kind == Kind.COMPOUND_STMT:
            self.source.add("without the else branch", self.wrap(bodies[1], f"if (!{IS}) ", ""))
        return first + children

    def returning(self, node, children, parent, result):
        if not children or result is None:
            return
        text = self.text(children[0])
        kind = None if isinstance(result, str) else result.kind
        if result == "bool" or kind == TypeKind.BOOL:
            if text not in ("true", "false"):
                self.source.add("returns the opposite", self.wrap(
                    children[0], f"{IS} != static_cast<bool>(", ")"))
        elif (kind not in (TypeKind.VOID, TypeKind.LVALUEREFERENCE, TypeKind.ENUM)
              and text not in ("nullptr", "{}", "0")
              and parent.kind in (Kind.COMPOUND_STMT, Kind.CASE_STMT)):
            begin = node.extent.start.offset
            self.source.add("returns {}", (begin, begin, f"if ({IS}) {{ return {{}}; }} ", ""))

    def binary(self, node, children):
        """Whether it is an operator between two operands."""
        if node.kind == Kind.CALL_EXPR:
            if not re.match(r"operator\W", node.spelling) or len(children) != 3:
                return False
            left, sign, right = children[0], self.text(children[1]), children[2]
        elif len(children) == 2:
            left, right = children
            sign = self.source.text(left.extent.end.offset, right.extent.start.offset).strip()
        else:
            return False
        if left.extent.end.offset > right.extent.start.offset:
            return False  # what the compiler makes of a < b, where there is only a <=> b
        l, r = self.text(left), self.text(right)
        if sign in ("&&", "||"):
            ask = f"({IS} || (" if sign == "&&" else f"(!{IS} && ("
            for operand, text in ((left, l), (right, r)):
                self.source.add(f"without operand: {text}", self.wrap(operand, ask, "))"))
            other = "||" if sign == "&&" else "&&"
            self.source.add(f"{sign} -> {other}", self.either(node, f"(({l}) {other} ({r}))"))
        elif sign in ("==", "!=", "<", "<=", ">", ">="):
            opposite = {"==": "!=", "!=": "==", "<": ">=", "<=": ">", ">": "<=", ">=": "<"}[sign]
            self.source.add(f"{sign} -> {opposite}", self.either(node, f"!({self.text(node)})"))
            if sign not in ("==", "!="):
                edge = {"<": "<=", "<=": "<", ">": ">=", ">=": ">"}[sign]
                self.source.add(f"{sign} -> {edge}", self.either(node, f"!(({r}) {sign} ({l}))"))
        elif sign in ARITHMETIC and node.type.get_canonical().kind in INTEGERS:
            other = ARITHMETIC[sign]
            self.source.add(f"{sign} -> {other}", self.either(node, f"(({l}) {other} ({r}))"))
        return True

    def step(self, node, children):
        text, operand = self.text(node), self.text(children[0])
        sign = re.match(r"\+\+|--", text) or re.match(r"\s*(\+\+|--|\+=|-=|\|=|&=)",
                                                     text[len(operand):])
        sign = sign.group().strip() if sign else None
        if sign and children[0].type.get_canonical().kind in INTEGERS:
            other = STEPS[sign]
            self.source.add(f"{sign} -> {other}",
                            self.either(node, f"({text.replace(sign, other, 1)})"))

    def arguments(self, node, children):
        """Neighbours of the same type in each other's place."""
        if node.kind == Kind.CALL_EXPR:
            children = list(node.get_arguments())
            if re.match(r"operator\W", node.spelling):
                return
        for one, two in zip(children, children[1:]):
            first, second = self.text(one), self.text(two)
            kinds = [each.type.get_canonical().spelling for each in (one, two)]
            if (kinds[0] == kinds[1] and "dependent" not in kinds[0] and first != second
                    and first and second and "{" not in first + second
                    and not re.fullmatch(r'("[^"]*"\s*)+|[\d\W]*', first)):
                self.source.add(f"{first}, {second} in each other's place",
                                self.either(one, second), self.either(two, first))

    def name(self, node):
        """An enumerator, or the id of an attribute."""
        text = self.text(node)
        if node.referenced is not None and node.referenced.kind == Kind.ENUM_CONSTANT_DECL:
            self.source.add(f"{text} -> the next one", self.either(
                node, f"static_cast<decltype({text})>(static_cast<int>({text}) + 1)"))
        elif node.kind == Kind.MEMBER_REF_EXPR and text.endswith("Attr.id"):
            self.source.add(f"{text} -> {text} + 1", self.either(
                node, f"static_cast<std::remove_cvref_t<decltype({text})>>({text} + 1)"))


def find_in_unit(job):
    """The sources that one compilation reads, by name, with their mutants."""
    command, names = job
    options = [word for word in shlex.split(command["command"]) if re.match(r"-(I|D|std)", word)]
    unit = Index.create().parse(command["file"], args=options)
    errors = [str(d) for d in unit.diagnostics if d.severity >= Diagnostic.Error]
    if errors:
        raise ValueError(f"{command['file']}: {errors[0]}")
    sources = {}
    for node in unit.cursor.get_children():
        name = node.location.file and os.path.relpath(os.path.realpath(node.location.file.name))
        if name in names:
            source = sources.setdefault(name, Source(name))
            Finder(source).declaration(node)
    return sources


def find(compile_commands, folders):
    """All sources of the folders with their mutants, by name."""
    with open(compile_commands, encoding="utf-8") as file:
        commands = {os.path.relpath(os.path.realpath(c["file"])): c for c in json.load(file)}
    commands = {name: c for name, c in commands.items() if name.startswith(folders)}
    # A header is looked at in the first source that reads it.
    headers = {h for folder in folders for h in glob.glob(f"{folder}*.h")}
    sources = {}
    for name, command in commands.items():
        sources |= find_in_unit((command, {name} | headers - sources.keys()))
    return dict(sorted(sources.items()))
