"""Type checkers accept a program, and find the mistakes in another."""

from __future__ import annotations

import re
import subprocess
import sys
from pathlib import Path

import pytest

HERE = Path(__file__).parent
CHECKERS = {
    "mypy": [sys.executable, "-m", "mypy", "--strict", "--no-incremental", "--config-file", "/dev/null"],
    "pyright": [sys.executable, "-m", "pyright", "--pythonpath", sys.executable],
}


def check(checker: str, program: str) -> subprocess.CompletedProcess[str]:
    # In another folder: the checkers look for configurations where they run.
    return subprocess.run([*CHECKERS[checker], HERE / program], capture_output=True, text=True, cwd="/")


@pytest.mark.parametrize("checker", CHECKERS)
def test_right_program(checker: str) -> None:
    done = check(checker, "sample_program.py")
    assert done.returncode == 0, done.stdout + done.stderr


@pytest.mark.parametrize("checker", CHECKERS)
def test_wrong_program(checker: str) -> None:
    done = check(checker, "wrong_program.py")
    found = {int(line) for line in re.findall(r"wrong_program\.py:(\d+)(?::\d+)?(?: - error|: error)", done.stdout)}
    lines = (HERE / "wrong_program.py").read_text().splitlines()
    mistakes = {i for i, line in enumerate(lines, 1) if line.startswith("    ")}
    assert mistakes <= found, done.stdout


def test_program_runs(tmp_path: Path) -> None:
    photo = HERE.parents[1] / "examples/photos/coffee.png"
    done = subprocess.run(
        [sys.executable, HERE / "sample_program.py", photo, tmp_path / "out.jpg"], capture_output=True, text=True
    )
    assert done.returncode == 0, done.stderr
    assert (tmp_path / "out.jpg").exists()
