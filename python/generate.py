"""Makes tarvo._operations, and its stub, of what the built library tells of its operations and classes.

    generate.py LIBTARVO FOLDER
"""

from __future__ import annotations

import ctypes
import json
import re
import sys
import textwrap
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path
from typing import Any

PREFIX = "TRV_"
# What Python writes in another way, or has no use for.
YIELD = "yield"  # is asked by `progress`
CLIENT_PICTURE = "TRV_ClientPicture"  # its forms do what those of pictures do

PARAMETER_TYPES = {
    "integer": "int",
    "double": "float",
    "boolean": "bool",
    "color": "ColorLike",
    "string": "bytes | str",
    "bytes": "bytes",
    "picture": "Picture",
    "integer()": "Sequence[int]",
}
RESULT_TYPES = PARAMETER_TYPES | {"color": "int", "string": "bytes", "text": "str", "integer()": "list[int]"}
KINDS = {
    "integer": "an integer",
    "double": "a number",
    "boolean": "True or False",
    "color": 'a colour: 0xRRGGBB, "#rrggbb" or (red, green, blue)',
    "string": "bytes or text",
    "picture": "a picture",
    "integer()": "a sequence of integers",
    "TRV_Rectangle": "a Rectangle, or (left, top, width, height)",
    "TRV_ColorMatrix": "a ColorMatrix, or 3 x 3 numbers",
    "TRV_Convolution": "a Convolution, or a sequence of integers",
}
LITERALS = {"nil": "None", "true": "True", "false": "False"}


def without_prefix(name: str) -> str:
    return name.removeprefix(PREFIX)


def snake_case(name: str) -> str:
    """AdjustRGB_InPlace: adjust_rgb_in_place. Runs of capitals are one word."""
    name = re.sub(r"([a-z0-9])([A-Z])", r"\1_\2", without_prefix(name))
    return re.sub(r"([A-Z])([A-Z][a-z])", r"\1_\2", name).lower()


@dataclass(frozen=True)
class Parameter:
    told: dict[str, Any]

    @property
    def name(self) -> str:
        return str(self.told["name"])

    @property
    def type(self) -> str:
        return str(self.told["type"])

    @property
    def default(self) -> str | None:
        """As Python writes it; None where it has to be given."""
        if "left out" in self.told:
            return "None"
        told = self.told["default"]
        return None if told is None else LITERALS.get(told, told)

    @property
    def row(self) -> str:
        return repr((self.name, self.type, self.default == "None"))

    @property
    def annotation(self) -> str:
        name = PARAMETER_TYPES.get(self.type) or without_prefix(self.type) + "Like"
        return f"{name} | None" if self.default == "None" else name

    def document(self) -> str:
        text = f"{self.name}: {self.told['text']}"
        facts = [KINDS.get(self.type, self.type)]
        if self.told["unit"]:
            facts.append(f"in {self.told['unit']}")
        if self.told["range"]:
            facts.append(self.told["range"])
        if self.default is not None:
            facts.append("may be left out" if "left out" in self.told else f"{self.default} unless given")
        return f"{text} ({', '.join(facts)})"


class Operation:
    """An operation, or a method of a class, with those of its forms that Python has."""

    def __init__(self, told: dict[str, Any], owner: str = "") -> None:
        self.told = told
        self.owner = owner
        self.name = snake_case(told["name"])
        self.registered = told["name"]
        places = [i for i, form in enumerate(told["forms"]) if form["self"] != CLIENT_PICTURE or owner]
        self.first = told["forms"][places[0]]
        self.self_type: str = self.first["self"]
        self.yields = any(a["name"] == YIELD and set(a["forms"]) & set(places) for a in told["arguments"])
        self.outputs = [a for a in told["arguments"] if a["by_ref"]]
        self.errors = [e for e in told["errors"] if set(e["forms"]) & set(places)]
        forms = [self._parameters(place) for place in places]
        self.forms = self._joined([form for i, form in enumerate(forms) if form not in forms[:i]])

    def _parameters(self, place: int) -> list[Parameter]:
        return [
            Parameter(a)
            for a in self.told["arguments"]
            if place in a["forms"] and not a["by_ref"] and a["name"] != YIELD
        ]

    @staticmethod
    def _joined(forms: list[list[Parameter]]) -> list[list[Parameter]]:
        """One form for two of which the longer one only goes on."""
        if len(forms) == 2:
            short, long = sorted(forms, key=len)
            if [p.name for p in short] == [p.name for p in long[: len(short)]]:
                return [short + [Parameter(p.told | {"left out": True}) for p in long[len(short) :]]]
        return forms

    @property
    def possible(self) -> bool:
        """Whether libtarvo has values to call it on."""
        return self.self_type != "screen"

    @property
    def is_method(self) -> bool:
        return bool(self.owner) or self.self_type == "picture"

    @property
    def full_name(self) -> str:
        return f"{self.owner}.{self.registered}" if self.owner else self.registered

    @property
    def variable(self) -> str:
        return "_" + (snake_case(self.owner) + "_" if self.owner else "") + self.name

    @property
    def result_type(self) -> str:
        """As the extension wants to know it."""
        result = self.first["result"]
        if result == "none":
            return "picture" if self.first["changes_self"] and not self.owner else ""
        # A string with the picture's mask is the picture itself; others are for people.
        return "text" if result == "string" and not self.first["keeps_mask"] else str(result)

    @property
    def gathered(self) -> str:
        """The named tuple of what comes back in arguments."""
        return without_prefix(self.registered) + "Result"

    @property
    def annotation(self) -> str:
        if self.outputs:
            return self.gathered
        if not self.result_type:
            return "None" if not self.owner or self.first["changes_self"] else "str | None"
        return RESULT_TYPES.get(self.result_type) or without_prefix(self.result_type)

    @property
    def fields(self) -> list[tuple[str, str]]:
        """Names and annotations of what the named tuple holds."""
        made = [("result", RESULT_TYPES[self.result_type])] if self.result_type else []
        return made + [(output["name"], RESULT_TYPES[output["type"]]) for output in self.outputs]

    @property
    def self_row(self) -> str:
        if self.owner:
            return repr(("self", self.owner, False))
        if self.self_type == "none":
            return "None"
        return repr((self.self_name, self.self_type, False))

    @property
    def self_name(self) -> str:
        if self.is_method:
            return "self"
        match = re.search(r"\(extends (\w+) as", self.first["declaration"])
        return match[1] if match else ""

    def document(self) -> str:
        lines = [self.told["summary"] + "."]
        if len(self.forms) > 1:
            lines.append("")
            lines += [f"    {self.name}({', '.join(shown(p) for p in form)})" for form in self.forms]
        parameters = {p.name: p for form in self.forms for p in form}
        if parameters:
            lines += ["", "Arguments:", *(item(p.document()) for p in parameters.values())]
            if self.yields:
                lines.append(item("progress: asked while the work goes on; a false answer stops it"))
        if self.outputs:
            lines += ["", "Gives:", *(item(f"{o['name']}: {o['text']}") for o in self.outputs)]
        if self.errors:
            warning = {"picture": "; a warning", "nil": ""}
            texts = [f"{e['code']}: {e['when']}{warning[e['result']]}" for e in self.errors]
            lines += ["", "Errors by code:", *map(item, texts)]
        if self.told["notes"]:
            lines += ["", "Notes:", *map(item, self.told["notes"])]
        return "\n".join(lines)


def item(text: str) -> str:
    return textwrap.fill(text, 96, initial_indent="    ", subsequent_indent="        ")


def shown(parameter: Parameter) -> str:
    return parameter.name if parameter.default is None else f"{parameter.name}={parameter.default}"


def docstring(text: str, indent: str) -> str:
    text = text.replace("\\", "\\\\").replace('"""', '\\"\\"\\"')
    if "\n" not in text:
        return f'{indent}"""{text}"""'
    return textwrap.indent(f'"""{text}\n"""', indent, lambda line: bool(line.strip()))


# --- the module ---


def method_object(operation: Operation) -> str:
    forms = ", ".join(f"[{', '.join(p.row for p in form)}]" for form in operation.forms)
    outputs = [output["name"] for output in operation.outputs]
    gathered = operation.gathered if outputs else "None"
    return (
        f"{operation.variable} = Method({operation.full_name!r}, {operation.name!r}, [{forms}], {operation.self_row}, "
        f"{operation.result_type!r}, {outputs!r}, {gathered})"
    )


def function(operation: Operation, indent: str) -> str:
    first = [operation.self_name] if operation.self_name else []
    this = operation.self_name or "None"
    progress = "progress" if operation.yields else "None"
    only_named = ["*", "progress=None"] if operation.yields else []
    if len(operation.forms) > 1:
        signature = [*first, "/", "*arguments", *only_named[1:], "**named"]
        body = f"{operation.variable}.call_overloaded({this}, {progress}, arguments, named)"
    else:
        signature = list(first)
        optional = False
        for parameter in operation.forms[0]:
            optional = optional or parameter.default is not None
            default = parameter.default or ("required" if optional else None)
            signature.append(f"{parameter.name}={default}" if default else parameter.name)
        signature += only_named
        names = [parameter.name for parameter in operation.forms[0]]
        body = f"{operation.variable}({', '.join([this, progress, *names])})"
    lines = [
        f"def {operation.name}({', '.join(signature)}):",
        docstring(operation.document(), "    "),
        f"    return {body}",
    ]
    if operation.told["forms"][0]["assignable"]:
        names = ", ".join([p.name for p in operation.forms[0]] + ["value"])
        lines += [
            "",
            f"def set_{operation.name}({', '.join([*first, names])}):",
            docstring(f"Sets it. {operation.told['summary']}.", "    "),
            f"    {operation.variable}_set.assign({this}, {names})",
        ]
    lines += ["", f"{operation.registered} = {operation.name}"]
    return textwrap.indent("\n".join(lines), indent, lambda line: bool(line.strip()))


def setter_object(operation: Operation) -> str:
    value = ("value", operation.first["result"], False)
    forms = ", ".join([p.row for p in operation.forms[0]] + [repr(value)])
    return (
        f"{operation.variable}_set = Method({operation.full_name!r}, 'set_{operation.name}', [[{forms}]], "
        f"{operation.self_row}, '', [], None)"
    )


def functions_and_gathered(operations: list[Operation]) -> tuple[list[Operation], list[Operation]]:
    """The operations that are functions of the module, and those whose outputs come as named tuples."""
    return [o for o in operations if not o.is_method], [o for o in operations if o.outputs]


def exports(functions: list[Operation], gathered: list[Operation]) -> str:
    names = [n for o in functions for n in (o.name, o.registered)] + [o.gathered for o in gathered]
    return f"__all__ = {sorted(names)!r}"


def module(operations: list[Operation], classes: list[dict[str, Any]]) -> Iterator[str]:
    yield "# Made by the build of what the library tells of its operations."
    yield "from typing import NamedTuple"
    yield "from ._native import Method, Object, required"
    functions, gathered = functions_and_gathered(operations)
    yield exports(functions, gathered)
    for operation in gathered:
        yield f"class {operation.gathered}(NamedTuple):"
        yield docstring(f"What {operation.name} gives.", "    ")
        yield "\n".join(f"    {name}: {kind}" for name, kind in operation.fields)
    yield "GATHERED = {" + ", ".join(f"{tuple(n for n, _ in o.fields)!r}: {o.gathered}" for o in gathered) + "}"
    for operation in operations:
        yield method_object(operation)
    for operation in functions:
        yield function(operation, "")
    yield "class PictureOperations:\n    __slots__ = ()"
    for operation in operations:
        if operation.is_method:
            yield function(operation, "    ")
    for told in classes:
        methods = [Operation(method, told["name"]) for method in told["methods"]]
        for method in joined_by_name(methods):
            yield method_object(method)
            if method.told["forms"][0]["assignable"]:
                yield setter_object(method)
        for prop in told["properties"]:
            variable = f"_{snake_case(told['name'])}_{snake_case(prop['name'])}"
            own = repr(("self", told["name"], False))
            full = f"{told['name']}.{prop['name']}"
            yield f"{variable} = Method({full!r}, {prop['name']!r}, [[]], {own}, {prop['type']!r}, [], None)"
            value = repr((prop["name"], prop["type"], False))
            yield f"{variable}_set = Method({full!r}, {prop['name']!r}, [[{value}]], {own}, '', [], None)"
        yield f"class {without_prefix(told['name'])}Members(Object):"
        yield docstring(told["summary"] + ".", "    ")
        yield f"    def __init__(self):\n        super().__init__({told['name']!r})"
        for prop in told["properties"]:
            name = snake_case(prop["name"])
            variable = f"_{snake_case(told['name'])}_{name}"
            yield f"    @property\n    def {name}(self):\n{docstring(prop['text'] + '.', '        ')}"
            yield f"        return {variable}(self, None)"
            if not prop["read_only"]:
                yield f"    @{name}.setter\n    def {name}(self, {name}):\n        {variable}_set.assign(self, {name})"
        for method in joined_by_name(methods):
            yield function(method, "    ")


def joined_by_name(operations: list[Operation]) -> list[Operation]:
    return list({operation.name: operation for operation in operations}.values())


# --- the stub ---


def signatures(operation: Operation) -> list[list[str]]:
    """Of each form one, or two where what may be left out stands in front of what has to be given."""
    first = ["self"] if operation.is_method else []
    if operation.self_name and not operation.is_method:
        first = [f"{operation.self_name}: {PARAMETER_TYPES[operation.self_type]}"]
    progress = ["progress: Progress | None = ..."] if operation.yields else []

    def told(parameter: Parameter, optional: bool) -> str:
        shown = f"{parameter.name}: {parameter.annotation}"
        return shown + (" = ..." if optional and parameter.default is not None else "")

    made = []
    for form in operation.forms:
        optional = [parameter.default is not None for parameter in form]
        in_front = any(optional) and not all(optional[optional.index(True) :])
        star = ["*", *progress] if progress else []
        made.append([*first, *(told(parameter, not in_front) for parameter in form), *star])
        if in_front:
            place = optional.index(True)
            plain = [told(parameter, True) for parameter in form[: place + 1]]
            named = [told(parameter, True) for parameter in form[place + 1 :]]
            made.append([*first, *plain, "*", *named, *progress])
    return made


def stub_of_function(operation: Operation, indent: str) -> str:
    lines = []
    told = signatures(operation)
    for name in (operation.name, operation.registered):
        for i, signature in enumerate(told):
            if len(told) > 1:
                lines.append("@overload")
            body = "..."
            if name == operation.name and i == 0:
                body = "\n" + docstring(operation.document(), "    ")
            lines.append(f"def {name}({', '.join(signature)}) -> {operation.annotation}: {body}".replace(": \n", ":\n"))
    if operation.told["forms"][0]["assignable"]:
        names = [f"{p.name}: {p.annotation}" for p in operation.forms[0]]
        value = f"value: {PARAMETER_TYPES[operation.first['result']]}"
        lines.append(f"def set_{operation.name}({', '.join(['self', *names, value])}) -> None: ...")
    return textwrap.indent("\n".join(lines), indent, lambda line: bool(line.strip()))


def stub(operations: list[Operation], classes: list[dict[str, Any]]) -> Iterator[str]:
    yield "# Made by the build of what the library tells of its operations."
    yield "from collections.abc import Sequence"
    yield "from typing import Any, NamedTuple, overload"
    yield "from ._classes import ColorMatrixLike, ConvolutionLike, RectangleLike"
    yield "from ._classes import " + ", ".join(without_prefix(c["name"]) for c in classes)
    yield "from ._native import Object"
    yield "from ._picture import Picture"
    yield "from ._types import ColorLike, Progress"
    functions, gathered = functions_and_gathered(operations)
    yield exports(functions, gathered)
    for operation in gathered:
        yield f"class {operation.gathered}(NamedTuple):"
        yield "\n".join(f"    {name}: {kind}" for name, kind in operation.fields)
    yield "GATHERED: dict[tuple[str, ...], Any]"
    for operation in functions:
        yield stub_of_function(operation, "")
    yield "class PictureOperations:"
    for operation in operations:
        if operation.is_method:
            yield stub_of_function(operation, "    ")
    for told in classes:
        yield f"class {without_prefix(told['name'])}Members(Object):\n    def __init__(self) -> None: ..."
        for prop in told["properties"]:
            name, kind = snake_case(prop["name"]), RESULT_TYPES[prop["type"]]
            yield f"    @property\n    def {name}(self) -> {kind}: ..."
            if not prop["read_only"]:
                yield f"    @{name}.setter\n    def {name}(self, {name}: {kind}) -> None: ..."
        for method in joined_by_name([Operation(m, told["name"]) for m in told["methods"]]):
            yield stub_of_function(method, "    ")


def described_by(library: str) -> dict[str, Any]:
    loaded = ctypes.CDLL(library)
    loaded.tarvo_description.restype = ctypes.c_char_p
    told: dict[str, Any] = json.loads(loaded.tarvo_description())
    return told


def main() -> None:
    library, folder = sys.argv[1:]
    told = described_by(library)
    operations = [operation for o in told["operations"] if (operation := Operation(o)).possible]
    classes = [c for c in told["classes"] if c["name"] != CLIENT_PICTURE]
    made = Path(folder)
    made.mkdir(parents=True, exist_ok=True)
    (made / "_operations.py").write_text("\n\n".join(module(operations, classes)) + "\n")
    (made / "_operations.pyi").write_text("\n".join(stub(operations, classes)) + "\n")


if __name__ == "__main__":
    main()
