"""The notebook, and the commands of the page."""

from __future__ import annotations

import re
from pathlib import Path

import nbformat
import pytest
from nbclient import NotebookClient

ROOT = Path(__file__).parents[2]


@pytest.mark.parametrize("path", sorted((ROOT / "examples/python").glob("*.ipynb")), ids=lambda p: p.name)
@pytest.mark.filterwarnings("ignore::DeprecationWarning", "ignore::ResourceWarning")
def test_notebook(path: Path) -> None:
    notebook = nbformat.read(path, as_version=4)
    assert not any(cell.get("outputs") for cell in notebook.cells), "kept without what it has shown"
    NotebookClient(notebook, timeout=120, resources={"metadata": {"path": path.parent}}).execute()
    shown = [output for cell in notebook.cells for output in cell.get("outputs", [])]
    assert any("image/png" in output.get("data", {}) for output in shown)


@pytest.mark.parametrize("page", ["docs/python.md", "README.md"])
def test_programs_of_pages(page: str, tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    programs = re.findall(r"```python\n(.*?)```", (ROOT / page).read_text(), re.S)
    assert programs
    (tmp_path / "examples").symlink_to(ROOT / "examples")
    monkeypatch.chdir(tmp_path)
    for program in programs:
        exec(program, {})
    assert (tmp_path / "out.png").exists()
