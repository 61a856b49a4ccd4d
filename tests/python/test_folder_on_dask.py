"""The example for clusters: workers die, and one file kills each worker that reads it."""

from __future__ import annotations

import contextlib
import hashlib
import json
import os
import signal
import subprocess
import sys
from pathlib import Path
from typing import Any

import pytest
import tarvo
from samples import picture_of

EXAMPLES = Path(__file__).parents[2] / "examples/python"
COUNT = 300
WORKERS = 3
KILLER = "picture-100.png"
BROKEN = "picture-200.png"
CALLS = ("Stretch(fit(40))", "Downsample(5)")

# Part of every worker: reading one file kills it.
PRELOAD = """
import os, signal, tarvo
from hashlib import sha256
if not hasattr(tarvo, "harmless"):  # it may be loaded twice
    tarvo.harmless = tarvo.decode
def deadly(data, *rest):
    if sha256(data).hexdigest() == "{digest}":
        os.kill(os.getpid(), signal.SIGKILL)
    return tarvo.harmless(data, *rest)
tarvo.decode = deadly
"""


@pytest.fixture
def example(monkeypatch: pytest.MonkeyPatch) -> Any:
    monkeypatch.syspath_prepend(str(EXAMPLES))
    import folder_on_dask

    return folder_on_dask


def folder_of_pictures(folder: Path, count: int) -> Path:
    folder.mkdir()
    for i in range(count):
        picture_of(60, 45, seed=i).save(folder / f"picture-{i:03}.png")
    return folder


def written(folder: Path) -> dict[str, int]:
    """When each file was."""
    return {path.name: path.stat().st_mtime_ns for path in folder.glob("*.png")}


@pytest.mark.filterwarnings("default")
def test_workers_that_die(example: Any, tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    source, target = folder_of_pictures(tmp_path / "in", COUNT), tmp_path / "out"
    (source / BROKEN).write_bytes(b"no picture")
    preload = tmp_path / "deadly.py"
    preload.write_text(PRELOAD.format(digest=hashlib.sha256((source / KILLER).read_bytes()).hexdigest()))
    monkeypatch.setenv("DASK_DISTRIBUTED__WORKER__PRELOAD", json.dumps([str(preload)]))
    recipe = example.Recipe(CALLS)

    with example.cluster(WORKERS) as client:
        pids = client.run(os.getpid)
        assert len(set(pids.values())) == WORKERS
        killed: list[int] = []
        shown: list[tuple[int, int]] = []

        def tell(done: int, all: int) -> None:
            shown.append((done, all))
            if done < 20 or killed:
                return
            for pid in pids.values():
                with contextlib.suppress(ProcessLookupError):  # that file was faster
                    os.kill(pid, signal.SIGKILL)
                    killed.append(pid)
                    return

        records = example.run(client, source, target, recipe, tell)
        assert killed and shown[-1] == (COUNT, COUNT)
        states = {record.name: record.state for record in records}
        assert len(states) == COUNT
        assert {name for name, state in states.items() if state not in ("done", "kept")} == {KILLER, BROKEN}
        assert states[KILLER] == "killed" and states[BROKEN] == "failed"

        made = {path.name for path in target.iterdir() if path.is_file() and not path.name.startswith(".")}
        assert made == {f"{name}.png" for name in states} - {f"{KILLER}.png", f"{BROKEN}.png"}
        for name in states.keys() - {KILLER, BROKEN}:
            assert tarvo.open(target / f"{name}.png") == tarvo.open(source / name).apply(*CALLS)

        # Again: only what is not done, or has changed.
        (source / KILLER).unlink()
        picture_of(60, 45, seed=999).save(source / BROKEN)
        before = written(target)
        assert {record.state for record in example.run(client, source, target, recipe)} <= {"done", "kept"}
        after = written(target)
        assert {name for name in after if after[name] != before.get(name)} == {f"{BROKEN}.png"}
        assert not list(target.glob(".part-*"))
        # With other calls all of it.
        assert {record.state for record in example.run(client, source, target, example.Recipe(CALLS[:1]))} <= {
            "done",
            "kept",  # a task that ran twice
        }
        last = written(target)
        assert not {name for name in last if last[name] == after[name]}


@pytest.mark.filterwarnings("default")
def test_command(tmp_path: Path) -> None:
    source = folder_of_pictures(tmp_path / "in", 5)
    command = [sys.executable, EXAMPLES / "folder_on_dask.py", source, tmp_path / "out", *CALLS, "--workers", "1"]
    done = subprocess.run(command, capture_output=True, text=True, timeout=150)
    assert (done.returncode, done.stdout) == (0, "5 of 5 are there\n"), done.stderr
    assert "5 of 5" in done.stderr
