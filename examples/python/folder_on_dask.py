"""A folder of pictures through the same calls, on a cluster of dask.distributed: a folder in, a folder out.

    folder_on_dask.py photos small 'Stretch(fit(800, 600))'              a scheduler and workers on this machine
    folder_on_dask.py photos small 'Downsample(4)' --scheduler tcp://host:8786    a cluster that runs; it shares the folders

Names travel, not pictures: workers read and write. A file that fails is a line of the result, and so is one that kills its
worker; the others are done. Run again, it does only what has not been done with the same file, calls and version.
"""

from __future__ import annotations

import argparse
import contextlib
import hashlib
import json
import os
import subprocess
import sys
import tempfile
import uuid
from collections.abc import Callable, Iterator
from dataclasses import asdict, dataclass
from pathlib import Path

import tarvo
from distributed import Client, KilledWorker, as_completed

ENDINGS = {".png", ".jpg", ".jpeg", ".tif", ".tiff", ".webp", ".pbm", ".pgm", ".ppm", ".pam"}
FILES_A_TASK = 8  # a task should take far longer than the scheduler takes for it, some hundred microseconds
PART = ".part-"


@dataclass(frozen=True)
class Record:
    """What became of a file."""

    name: str
    state: str  # done, kept (it was done before), failed, killed (its worker, each time)
    message: str = ""
    code: int = 0


@dataclass(frozen=True)
class Recipe:
    calls: tuple[str, ...]
    ending: str = ".png"

    def target(self, folder: Path, name: str) -> Path:
        return folder / (name + self.ending)


# --- on a worker ---


def put(path: Path, data: bytes) -> None:
    """A name of its own for each attempt: two may run at one time, and one may be killed at any."""
    part = path.with_name(f"{PART}{uuid.uuid4().hex}")
    part.write_bytes(data)
    os.replace(part, path)


def work_on(names: list[str], source: Path, target: Path, recipe: Recipe) -> list[Record]:
    return [work_on_file(name, source, target, recipe) for name in names]


def work_on_file(name: str, source: Path, target: Path, recipe: Recipe) -> Record:
    made = recipe.target(target, name)
    note = target / ".done" / f"{name}.json"
    try:
        data = (source / name).read_bytes()
        done = {"input": hashlib.sha256(data).hexdigest(), "recipe": asdict(recipe), "version": tarvo.__version__}
        told = json.dumps(done)
        if made.exists() and note.exists() and note.read_text() == told:
            return Record(name, "kept")
        put(made, tarvo.decode(data).apply(*recipe.calls).encode(recipe.ending))
        put(note, told.encode())
    except tarvo.Error as error:
        return Record(name, "failed", str(error), error.code)
    except Exception as error:
        return Record(name, "failed", repr(error))
    return Record(name, "done")


# --- here ---


def run(
    client: Client, source: Path, target: Path, recipe: Recipe, tell: Callable[[int, int], object] = lambda done, all: None
) -> list[Record]:
    """One record for each file."""
    if __name__ != "__main__":
        client.upload_file(__file__)  # a module that the cluster does not have
    names = sorted(p.name for p in source.iterdir() if p.suffix.lower() in ENDINGS)
    (target / ".done").mkdir(parents=True, exist_ok=True)
    for part in [*target.glob(f"{PART}*"), *target.glob(f".done/{PART}*")]:
        part.unlink()  # of workers that were killed
    records: dict[str, Record] = {}

    def attempt(groups: list[list[str]]) -> list[str]:
        """Returns the names whose workers died too often."""
        if not groups:
            return []
        # A task may run more than once, so each has its own result, whatever was computed before.
        futures = {
            client.submit(work_on, group, source, target, recipe, pure=False, key=f"files-{uuid.uuid4().hex}"): group
            for group in groups
        }
        died: list[str] = []
        for future in as_completed(futures):
            try:
                records.update((record.name, record) for record in future.result())
            except KilledWorker:
                died += futures[future]
            tell(len(records), len(names))
        return died

    # A file that kills its worker takes others of its task with it, and tasks that wait there; so these are tried again
    # one by one, and at last alone, when the blame is certain.
    died = attempt([names[i : i + FILES_A_TASK] for i in range(0, len(names), FILES_A_TASK)])
    died = attempt([[name] for name in sorted(died)])
    for name in sorted(died):
        if attempt([[name]]):
            records[name] = Record(name, "killed", "its worker died each time")
            tell(len(records), len(names))
    return [records[name] for name in names]


@contextlib.contextmanager
def cluster(workers: int) -> Iterator[Client]:
    """A scheduler and workers on this machine, as processes of their own."""
    with tempfile.TemporaryDirectory() as folder, contextlib.ExitStack() as ends:
        address = Path(folder) / "scheduler.json"
        # One death more and a task is given up: run() tries again, and knows better whom to blame.
        environment = os.environ | {"DASK_DISTRIBUTED__SCHEDULER__ALLOWED_FAILURES": "1"}

        def start(program: str, *arguments: str) -> None:
            command = [sys.executable, "-m", f"distributed.cli.{program}", "--scheduler-file", str(address), *arguments]
            process = subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            ends.callback(process.wait)
            ends.callback(process.terminate)

        start("dask_scheduler", "--host", "127.0.0.1", "--port", "0", "--no-dashboard")
        start(
            "dask_worker", "--nworkers", str(workers), "--nthreads", "1", "--no-dashboard", "--local-directory", folder
        )
        client = ends.enter_context(Client(scheduler_file=str(address), timeout=120))
        client.wait_for_workers(workers, timeout=120)
        yield client


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("source", type=Path)
    parser.add_argument("target", type=Path)
    parser.add_argument("calls", nargs="+", metavar="CALL")
    parser.add_argument("--ending", default=".png", choices=sorted(ENDINGS))
    parser.add_argument("--workers", type=int, default=os.cpu_count() or 1)
    parser.add_argument("--scheduler", help="the address of a cluster that runs")
    told = parser.parse_args()

    def tell(done: int, all: int) -> None:
        print(f"\r{done} of {all}", end="", file=sys.stderr, flush=True)

    recipe = Recipe(tuple(told.calls), told.ending)
    with Client(told.scheduler) if told.scheduler else cluster(told.workers) as client:
        records = run(client, told.source.resolve(), told.target.resolve(), recipe, tell)
    print(file=sys.stderr)
    bad = [record for record in records if record.state in ("failed", "killed")]
    for record in bad:
        print(f"{record.name}: {record.state}: {record.message}")
    print(f"{len(records) - len(bad)} of {len(records)} are there")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
