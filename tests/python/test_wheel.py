"""The wheel by itself: in a fresh environment, with nothing of the build and none of the system's picture libraries."""

from __future__ import annotations

import json
import shutil
import subprocess
import sys
import venv
import zipfile
from pathlib import Path

import numpy as np

ROOT = Path(__file__).parents[2]
PROGRAM = """
import json, sys
import numpy as np
import tarvo
photo = tarvo.open(sys.argv[1])
made = tarvo.decode(tarvo.decode(photo.stretch(60, 40).encode("jpg")).encode("png"))
maps = {line.split(None, 5)[5].strip() for line in open("/proc/self/maps") if len(line.split(None, 5)) == 6}
print(json.dumps({"size": made.size, "maps": sorted(maps), "path": sys.path, "file": tarvo.__file__}))
"""


def wheel() -> Path:
    (made,) = (ROOT / "build/wheel").glob("tarvo-*.whl")
    return made


def test_clean_environment(tmp_path: Path) -> None:
    environment = tmp_path / "environment"
    venv.create(environment, symlinks=True)
    (site,) = environment.glob("lib/python3.*/site-packages")
    with zipfile.ZipFile(wheel()) as files:
        files.extractall(site)
    for part in Path(np.__file__).parents[1].glob("numpy*"):
        shutil.copytree(part, site / part.name)
    photo = shutil.copy(ROOT / "examples/photos/rocket.jpg", tmp_path)
    done = subprocess.run(
        [environment / "bin/python", "-I", "-c", PROGRAM, photo], capture_output=True, text=True, cwd="/", env={}
    )
    assert done.returncode == 0, done.stderr
    told = json.loads(done.stdout)
    assert told["size"] == [60, 40] and told["file"].startswith(str(site))
    assert not any(path.startswith(str(ROOT)) for path in [*told["maps"], *told["path"]])
    used = [path for path in told["maps"] if any(name in Path(path).name for name in ("tarvo", "png", "jpeg"))]
    assert len(used) >= 3
    assert all(path.startswith(str(site)) for path in used), used


def test_wheel_is_for_more_than_this_machine() -> None:
    assert "manylinux" in wheel().name and sys.implementation.cache_tag.removeprefix("cpython-") in wheel().name
    with zipfile.ZipFile(wheel()) as files:
        names = files.namelist()
    for needed in ("tarvo/py.typed", "tarvo/_operations.py", "tarvo/_operations.pyi", "tarvo/_native.pyi"):
        assert needed in names
    assert sum("libtarvo" in name for name in names) == 1
    assert any(name.endswith("licenses/LICENSE") for name in names)
