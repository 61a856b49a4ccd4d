"""The module, its stub and the description have the same names, and the same arguments under them."""

from __future__ import annotations

import ast
import inspect
import re
from pathlib import Path
from typing import Any

import pytest
import tarvo
from samples import forms_of_pictures, operations

PACKAGE = Path(tarvo.__file__).parent
STUB = ast.parse((PACKAGE / "_operations.pyi").read_text())


def python_name(registered: str) -> str:
    """Another way than the build's: letter by letter."""
    made = ""
    name = registered.removeprefix("TRV_")
    for i, letter in enumerate(name):
        before = name[i - 1] if i else "_"
        after = name[i + 1] if i + 1 < len(name) else ""
        starts = letter.isupper() and (before.islower() or before.isdigit() or (before.isupper() and after.islower()))
        made += ("_" if starts else "") + letter.lower()
    return made


def holder(operation: dict[str, Any]) -> Any:
    return tarvo.Picture if operation["self"] == "picture" else tarvo


def stub_functions(holder: str | None) -> dict[str, list[ast.FunctionDef]]:
    body: list[ast.stmt] = STUB.body
    if holder:
        body = next(s.body for s in STUB.body if isinstance(s, ast.ClassDef) and s.name == holder)
    made: dict[str, list[ast.FunctionDef]] = {}
    for statement in body:
        if isinstance(statement, ast.FunctionDef):
            made.setdefault(statement.name, []).append(statement)
    return made


def names_in_stub(function: ast.FunctionDef) -> list[str]:
    told = function.args
    return [a.arg for a in (*told.posonlyargs, *told.args, *told.kwonlyargs) if a.arg != "self"]


def described_arguments(operation: dict[str, Any], form: int) -> list[str]:
    names = [
        "progress" if a["name"] == "yield" else a["name"]
        for a in operation["arguments"]
        if form in a["forms"] and not a["by_ref"]
    ]
    return sorted(names)


def test_names_of_the_page() -> None:
    expected = {
        "TRV_AdjustContrast": "adjust_contrast",
        "TRV_AdjustContrastWithMask": "adjust_contrast_with_mask",
        "TRV_AdjustRGB": "adjust_rgb",
        "TRV_AdjustRGB_InPlace": "adjust_rgb_in_place",
        "TRV_FreeRotateByShear": "free_rotate_by_shear",
        "TRV_GetAverageHSV": "get_average_hsv",
        "TRV_MakeGradient": "make_gradient",
    }
    for registered, name in expected.items():
        assert python_name(registered) == name
        assert hasattr(tarvo if name == "make_gradient" else tarvo.Picture, name)


@pytest.mark.parametrize("operation", operations(), ids=lambda o: o["name"])
def test_operation(operation: dict[str, Any]) -> None:
    name, registered = python_name(operation["name"]), operation["name"]
    function = getattr(holder(operation), name)
    assert inspect.isfunction(function)
    assert getattr(holder(operation), registered) is function
    assert function.__name__ == name
    assert function.__doc__ and function.__doc__.startswith(operation["summary"])

    functions = stub_functions("PictureOperations" if operation["self"] == "picture" else None)
    in_stub = functions[name]
    assert [ast.dump(f.args) for f in functions[registered]] == [ast.dump(f.args) for f in in_stub]
    own = [] if operation["self"] in ("picture", "none") else ["s"]
    every_stub = [sorted(names_in_stub(f)) for f in in_stub]
    for form in forms_of_pictures(operation):
        described = sorted(own + described_arguments(operation, form))
        # Two forms of which one only goes on are one signature.
        assert any(set(described) <= set(names) for names in every_stub), described
    every_name = {n for form in forms_of_pictures(operation) for n in own + described_arguments(operation, form)}
    assert {n for names in every_stub for n in names} <= every_name | {"progress"}

    parameters = inspect.signature(function).parameters
    if not any(p.kind is p.VAR_KEYWORD for p in parameters.values()):
        assert sorted(set(parameters) - {"self"}) == sorted(set(every_stub[0]))
    for argument in operation["arguments"]:
        if argument["name"] != "yield" and set(argument["forms"]) & set(forms_of_pictures(operation)):
            assert f"    {argument['name']}: " in function.__doc__
            if argument["range"] and not argument["by_ref"]:
                assert argument["range"] in re.sub(r"\s+", " ", function.__doc__)
    for error in operation["errors"]:
        if set(error["forms"]) & set(forms_of_pictures(operation)):
            assert f"    {error['code']}: " in function.__doc__


def test_nothing_but_what_is_described() -> None:
    names = {python_name(o["name"]) for o in operations()}
    registered = {o["name"] for o in operations()}
    made = {n for n, f in vars(tarvo.Picture.__mro__[1]).items() if inspect.isfunction(f)}
    functions = inspect.getmembers(tarvo, inspect.isfunction)
    of_module = {n for n, f in functions if f.__module__ == "tarvo._operations"}
    assert made | of_module == names | registered
    in_stub = stub_functions("PictureOperations").keys() | stub_functions(None).keys()
    assert in_stub == names | registered


CLASSES = [c for c in tarvo.operations()["classes"] if c["name"] != "TRV_ClientPicture"]


@pytest.mark.parametrize("told", CLASSES, ids=lambda c: c["name"])
def test_class(told: dict[str, Any]) -> None:
    made = getattr(tarvo, told["name"].removeprefix("TRV_"))
    stub = stub_functions(made.__mro__[1].__name__)
    for prop in told["properties"]:
        python = inspect.getattr_static(made, python_name(prop["name"]))
        assert isinstance(python, property) and (python.fset is None) == prop["read_only"]
        assert python_name(prop["name"]) in stub
    for method in told["methods"]:
        assert inspect.isfunction(getattr(made, python_name(method["name"])))
        assert python_name(method["name"]) in stub and method["name"] in stub


def test_description() -> None:
    told = tarvo.operations()
    assert told["version"] == tarvo.__version__
    told["operations"].clear()
    assert tarvo.operations()["operations"]


def test_every_name_is_there() -> None:
    for name in tarvo.__all__:
        assert hasattr(tarvo, name)
    assert (PACKAGE / "py.typed").exists()
