"""Where the tools, the bundled set and, if they are there, more samples are."""

import json
import os
import shutil
import subprocess
from pathlib import Path

import pytest

SOURCE = Path(__file__).resolve().parents[2]
WATER = SOURCE / "examples" / "water"
SAMPLES = SOURCE.parent / "shared" / "samples"
TOOLS = Path(os.environ["STIGRUZ_TOOLS"])

SETS = {"water": WATER}
for name in ("crossing", "dependent", "twosteps"):
    if (SAMPLES / name).is_dir():
        SETS[name] = SAMPLES / name


def jobs_of(directory):
    """The checkpoints of a set, the reference first."""
    all_of = sorted(each.name for each in directory.glob("*.fchk"))
    reference = next(each for each in all_of if each.endswith("_ref.fchk"))
    return reference, [each for each in all_of if each != reference]


def run(tool, *arguments, cwd, statuses=(0, 1)):
    """What a tool writes; its status is for doubts, too, and 2 for damage."""
    done = subprocess.run([TOOLS / tool, *arguments], cwd=cwd, capture_output=True, check=False)
    assert done.returncode in statuses, done.stderr
    return done


def json_of(tool, *arguments, cwd, **how):
    return json.loads(run(tool, "--json=-", *arguments, cwd=cwd, **how).stdout)


@pytest.fixture
def water(tmp_path, monkeypatch):
    """A directory with a copy of the bundled set, which is the working directory."""
    for file in WATER.glob("h2o*"):
        shutil.copyfile(file, tmp_path / file.name)
    monkeypatch.chdir(tmp_path)
    return tmp_path
