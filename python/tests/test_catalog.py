"""The catalog of an archive."""

import collections
import csv
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import time
from typing import Any, Callable, Iterator, Optional

import pytest
from conftest import SAMPLES

import veska
from veska import catalog

Start = Callable[..., "subprocess.Popen[bytes]"]


@pytest.fixture
def archive(tmp_path: pathlib.Path) -> pathlib.Path:
    folder = tmp_path / "アーカイブ"
    folder.mkdir()
    for name in ("empty", "mixed_full", "movie_recorder", "still_camera"):
        shutil.copy(SAMPLES / f"{name}.ifo", folder)
    (folder / "zero.ifo").touch()
    (folder / "cut.ifo").write_bytes((SAMPLES / "movie_recorder.ifo").read_bytes()[:9000])
    (folder / os.fsdecode(b"\xff.ifo")).write_bytes(b"junk")
    return folder


def rows_of(folder: pathlib.Path) -> list[dict[str, Any]]:
    found: list[dict[str, Any]] = []
    for part in sorted(folder.glob("part-*")):
        with open(part, encoding="utf-8", newline="") as text:
            found += csv.DictReader(text) if part.suffix == ".csv" else map(json.loads, text)
    return found


def test_rows(archive: pathlib.Path) -> None:
    found = {row["file"]: row for row in catalog.rows(f"{archive}/*.ifo")}
    assert len(found) == 7 and all(list(row) == veska.columns() for row in found.values())
    status = {pathlib.Path(name).stem: row["status"] for name, row in found.items()}
    assert collections.Counter(status.values()) == {"sound": 4, "damaged": 1, "bad": 2}
    assert status["cut"] == "damaged" and found[f"{archive}/zero.ifo"]["problem"]
    assert found[f"{archive}/movie_recorder.ifo"]["programs"] == 12
    programs = list(catalog.rows([archive / "movie_recorder.ifo"], programs=True))
    assert len(programs) == 12 and list(programs[0]) == veska.columns(programs=True)
    assert [row["status"] for row in catalog.rows(["/no/such/file", archive, f"file://{archive}/no.ifo"])] == ["bad"] * 3


def test_frame_and_urls(archive: pathlib.Path) -> None:
    frame = catalog.frame(f"file://{archive}/m*.ifo")
    assert list(frame.columns) == veska.columns() and frame.programs.tolist() == [5, 12]
    assert frame.file[0].startswith("file://")
    assert list(catalog.frame([]).columns) == veska.columns()


@pytest.mark.parametrize("as_csv", [False, True])
@pytest.mark.parametrize("programs", [False, True])
def test_a_second_run_takes_up_what_changed(archive: pathlib.Path, tmp_path: pathlib.Path, as_csv: bool, programs: bool) -> None:
    to = tmp_path / "catalog"

    def run() -> tuple[int, ...]:
        return catalog.write(f"{archive}/*.ifo", to, programs=programs, csv=as_csv, part=3)

    def expected() -> list[str]:
        found = [str(row["file"]) for row in catalog.rows(f"{archive}/*.ifo", programs)]
        return sorted(found)

    assert run() == (7, 7, 2)
    assert sorted(row["file"] for row in rows_of(to)) == expected()
    times = {part: part.stat().st_mtime_ns for part in to.iterdir()}
    assert run() == (7, 0, 0)
    assert times == {part: part.stat().st_mtime_ns for part in to.iterdir()}

    shutil.copy(SAMPLES / "mixed_full.ifo", archive / "zero.ifo")
    shutil.copy(SAMPLES / "mixed_full.ifo", archive / "new, \"one\".ifo")
    assert run() == (8, 2, 0)
    assert sorted(row["file"] for row in rows_of(to)) == expected()
    assert run() == (8, 0, 0)
    with pytest.raises(ValueError, match="another form"):
        catalog.write([], to, programs=programs, csv=not as_csv)


def test_a_run_that_was_cut_off(archive: pathlib.Path, tmp_path: pathlib.Path) -> None:
    """Whatever of the log and the parts was written when the machine stopped, nothing is lost or twice."""
    to = tmp_path / "catalog"
    catalog.write(f"{archive}/*.ifo", to, part=2)
    whole = sorted(row["file"] for row in rows_of(to))
    log = (to / catalog.LOG).read_bytes()
    lines = log.splitlines(keepends=True)
    parts = {part: part.read_bytes() for part in to.glob("part-*")}
    for end in (len(lines[0]), len(lines[0]) + 9, len(log) - 1, len(log) - len(lines[-1])):
        (to / catalog.LOG).write_bytes(log[:end])
        for part, text in parts.items():
            part.write_bytes(text)
        (to / ".part-000009.jsonl.0").write_bytes(b"unfinished")
        catalog.write(f"{archive}/*.ifo", to, part=2)
        assert not list(to.glob(".part*"))
        assert sorted(row["file"] for row in rows_of(to)) == whole
    (archive / "cut.ifo").write_bytes(b"changed")
    catalog.write(f"{archive}/cut.ifo", to)  # its row stands in a part of its own, and the old one is gone
    log = (to / catalog.LOG).read_bytes()
    parts = {part: part.read_bytes() for part in to.glob("part-*")}
    (to / catalog.LOG).write_bytes(b"".join(log.splitlines(keepends=True)[:-1]))
    old = to / json.loads(log.splitlines()[-1])[0]
    old.write_text(old.read_text() + json.dumps({"file": f"{archive}/cut.ifo"}) + "\n")
    catalog.write([], to)
    assert {part: part.read_bytes() for part in to.glob("part-*")} == parts


def test_the_program(archive: pathlib.Path, tmp_path: pathlib.Path) -> None:
    def run(*arguments: str) -> "subprocess.CompletedProcess[str]":
        return subprocess.run([sys.executable, "-m", "veska.catalog", *arguments], capture_output=True, text=True)

    to = str(tmp_path / "catalog")
    first = run("-o", to, "--csv", "--jobs", "2", f"{archive}/*.ifo")
    assert (first.returncode, first.stdout, first.stderr) == (1, "7 inputs: 7 new or changed, 2 of them bad\n", "")
    assert run("-o", to, "--csv", f"{archive}/*.ifo").returncode == 0
    assert run("-o", to, f"{archive}/*.ifo").returncode == 3
    assert run("-o", str(archive / "zero.ifo" / "x"), "x").returncode == 3
    for wrong in (["x"], ["-o", to], ["-o", to, "--part", "0", "x"], ["-o", to, "--csv", "--encoding", "none such", "x"]):
        assert run(*wrong).returncode == 2


@pytest.fixture
def cluster(tmp_path: pathlib.Path) -> Iterator[tuple[str, Start]]:
    """A scheduler on the loopback, and what starts workers."""
    pytest.importorskip("distributed")
    started: list["subprocess.Popen[bytes]"] = []
    file = tmp_path / "scheduler.json"

    def start(program: str, *options: str, **environment: str) -> "subprocess.Popen[bytes]":
        package = str(pathlib.Path(veska.__file__).parents[1])
        command = [sys.executable, "-W", "ignore", "-m", f"distributed.cli.dask_{program}", "--no-dashboard"]
        command += ["--host", "127.0.0.1", "--scheduler-file", str(file), *options]
        process = subprocess.Popen(
            command, stderr=subprocess.DEVNULL, env={**os.environ, "PYTHONPATH": package, **environment}
        )
        started.append(process)
        return process

    def worker(*options: str) -> "subprocess.Popen[bytes]":
        return start("worker", "--nthreads", "1", *options)

    start("scheduler", "--port", "0", DASK_DISTRIBUTED__SCHEDULER__ALLOWED_FAILURES="1")
    deadline = time.monotonic() + 60
    while not file.exists() or not file.read_text().endswith("}"):
        assert time.monotonic() < deadline
        time.sleep(0.1)
    yield json.loads(file.read_text())["address"], worker
    for process in reversed(started):
        process.terminate()
    for process in started:
        process.wait(30)


def many(folder: pathlib.Path, count: int) -> list[str]:
    folder.mkdir()
    for i in range(count):
        (folder / f"{i}.ifo").symlink_to(SAMPLES / "mixed_full.ifo")
    return sorted(str(path) for path in folder.iterdir())


@pytest.mark.filterwarnings("ignore")
def test_a_worker_is_lost(cluster: tuple[str, Start], tmp_path: pathlib.Path) -> None:
    import distributed

    address, worker = cluster
    names = many(tmp_path / "discs", 4000)
    victim, _ = worker("--no-nanny", "--name", "victim"), worker("--no-nanny")
    to = tmp_path / "catalog"
    with distributed.Client(address) as client:
        client.wait_for_workers(2)
        run = subprocess.Popen(
            [sys.executable, "-m", "veska.catalog", "--scheduler", address, "-o", str(to), "--part", "50"]
            + [f"{tmp_path}/discs/*.ifo"]
        )
        its_address = next(
            one for one, info in client.scheduler_info()["workers"].items() if info["name"] == "victim"
        )
        busy: Optional[object] = None
        while run.poll() is None and not (busy and list(to.glob("part-*"))):
            busy = client.processing().get(its_address)
        victim.send_signal(signal.SIGKILL)
        done = len(list(to.glob("part-*")))
        assert busy and 0 < done < 80
        assert run.wait(120) == 0
    assert victim.wait(10) == -signal.SIGKILL
    assert sorted(row["file"] for row in rows_of(to)) == names


@pytest.mark.filterwarnings("ignore")
def test_an_input_that_kills_workers(cluster: tuple[str, Start], tmp_path: pathlib.Path) -> None:
    address, worker = cluster
    names = many(tmp_path / "discs", 60)
    preload = tmp_path / "preload.py"
    preload.write_text(
        "import os, veska._veska as v\n"
        "listing = getattr(v, '_kept', v.listing)\n"  # a preload is read more than once
        "v._kept = listing\n"
        "v.listing = lambda name, encoding: os.kill(os.getpid(), 9) if '/13.' in name else listing(name, encoding)\n"
    )
    for _ in range(2):
        worker("--nanny", "--preload", str(preload))
    summary = catalog.write(names, tmp_path / "catalog", scheduler=address, part=20)
    assert summary == (60, 60, 1)
    found = rows_of(tmp_path / "catalog")
    assert sorted(row["file"] for row in found) == names
    (bad,) = [row for row in found if row["status"] == "bad"]
    assert bad["file"].endswith("/13.ifo") and bad["problem"] == "the workers that read it were lost"
