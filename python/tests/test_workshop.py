"""Files, what the workshop does with them, and why something failed."""

import json
import os
import pathlib
import sys
import threading
from typing import Any

import pytest
from conftest import SAMPLES

import veska

IMAGE = (SAMPLES / "movie_recorder.ifo").read_bytes()


def test_what_a_file_is_loaded_from(tmp_path: pathlib.Path) -> None:
    names = ["VR_MANGR.IFO", "録画 ディスク.ifo", os.fsdecode(b"\xff\xfe.ifo")]
    for path in [tmp_path / name for name in names]:
        path.write_bytes(IMAGE)
        givens: list[Any] = [path, str(path)]
        for given in givens:
            file = veska.load(given)
            file.save(given)
            assert path.read_bytes() == IMAGE
    for data in (IMAGE, bytearray(IMAGE), memoryview(IMAGE)):
        assert veska.load(data) == file
    assert names[1] in repr(veska.load(tmp_path / names[1]))


@pytest.mark.parametrize(
    "source, kind, table",
    [
        ("missing.ifo", "no_file", None),
        ("", "not_a_file", None),
        ("empty", "empty", None),
        (b"", "empty", None),
        (b"something else", "not_management", "header"),
        (IMAGE[:3000], "ends_within_table", "movie"),
        (IMAGE[:12000], "ends_within_table", "original_chain"),
    ],
)
def test_load_errors(tmp_path: pathlib.Path, source: Any, kind: str, table: str) -> None:
    (tmp_path / "empty").touch()
    given = source if isinstance(source, bytes) else tmp_path / source
    with pytest.raises(veska.LoadError) as failed:
        veska.load(given)
    assert (failed.value.kind, failed.value.table) == (kind, table)
    assert kind in veska.FAILURE_KINDS and isinstance(failed.value, OSError)
    if table not in (None, "header"):
        assert 0 < failed.value.offset
    if not isinstance(source, bytes):
        assert str(failed.value).startswith(f"{given}: ") and failed.value.filename == str(given)
        if source != "empty":
            with pytest.raises(veska.LoadError) as failed:
                veska.check(given)
            assert failed.value.kind == kind


@pytest.mark.parametrize("source", [None, 7, "a\0b", ["x"]])
def test_what_is_no_source(source: Any) -> None:
    functions: list[Any] = [veska.load, veska.check, veska.salvage, veska.listing, veska.locate]
    for function in functions:
        with pytest.raises((TypeError, ValueError)):
            function(source)


def test_save_errors(tmp_path: pathlib.Path, recorder: veska.File) -> None:
    with pytest.raises(veska.SaveError) as failed:
        recorder.save(tmp_path / "no folder" / "file")
    assert failed.value.kind == "unwritable" and failed.value.errno is not None
    with pytest.raises(veska.SaveError, match="DVD_RTR_VMG0"):
        veska.File().save(tmp_path / "new")
    recorder.movie.vobs.append()
    with pytest.raises(veska.SaveError) as failed:
        recorder.save(tmp_path / "file")
    count = len(recorder.movie.vobs)
    assert (failed.value.kind, failed.value.table) == ("would_not_read_back", "movie")
    assert failed.value.index == count - 1 and os.listdir(tmp_path) == []


def test_saving_completes_what_was_edited(tmp_path: pathlib.Path, recorder: veska.File) -> None:
    del recorder.play_lists[0]
    with pytest.raises(veska.SaveError):
        recorder.save(tmp_path / "file", complete=False)
    recorder.save(tmp_path / "file")
    assert len(veska.load(tmp_path / "file").play_lists) == 2


def test_a_file_from_nothing() -> None:
    file = veska.File()
    file.header.VMG_ID = "DVD_RTR_VMG0"
    file.original_chain.programs.append(text_4="First", C_Ns=1)
    file.original_chain.cells.append(kind="movie")
    assert str(veska.load(bytes(file)).original_chain.programs[0].text_4) == "First"


def test_json(sample: pathlib.Path) -> None:
    file = veska.load(sample)
    twin = veska.from_json(file.to_json())
    file.complete()
    assert twin == file and veska.from_json(twin.to_json(line=True).encode()) == file
    assert json.loads(veska.json_schema())["$schema"]
    document = json.loads(file.to_json())
    document["header"]["number_64"] = -1
    with pytest.raises(veska.JsonError) as failed:
        veska.from_json(json.dumps(document))
    assert failed.value.pointer == "/header/number_64" and isinstance(failed.value, ValueError)
    with pytest.raises(veska.JsonError):
        veska.from_json("[")


def test_edits(recorder: veska.File) -> None:
    before = len(recorder.original_chain.programs)
    preview = recorder.preview("delete-program 3")
    assert preview and len(recorder.original_chain.programs) == before
    chain, program = recorder.original_chain, recorder.original_chain.programs[0]
    followed = recorder.edit("delete-program 3", ("set-program-text", 1, r"A b\x41"), "set-disc-text 'My disc'")
    assert isinstance(followed, list) and len(chain.programs) == before - 1 and program.is_stale
    assert str(chain.programs[0].text_4) == "A bA" and str(recorder.header.text_93) == "My disc"
    for bad in ("delete-program 99", "no-operation", "delete-program", ("set-disc-text", "x" * 129)):
        image = bytes(recorder)
        program = chain.programs[0]
        with pytest.raises(veska.RequestError) as failed:
            recorder.edit("set-disc-text done", bad)
        assert bytes(recorder) == image and not program.is_stale and str(failed.value)
    assert failed.value.operation.startswith("operation 2 (set-disc-text")
    assert "delete-program" in [name for name, *_ in veska.operations()]


def test_check(recorder: veska.File) -> None:
    assert recorder.check().errors == 0
    recorder.original_chain.programs[0].C_Ns = 999
    found = recorder.check()
    finding = next(one for one in found.findings if one.code == "V306")
    assert finding.severity == "error" and finding.table == "original_chain" and finding.offset > 0
    assert found.errors == 1 and finding.pointer.startswith("/original_chain") and finding.title in repr(finding)
    damaged = veska.check(IMAGE[:5000], limit=1)
    assert not damaged.loads and damaged.size == 5000 and damaged.tables[3].condition != "sound"
    assert json.loads(damaged.to_json("x"))["files"][0]["file"] == "x" and "V" in str(damaged)


def test_salvage() -> None:
    salvaged = veska.salvage(IMAGE[:-100])
    assert salvaged.file is not None and not salvaged.is_whole
    assert salvaged.file.check().errors == 0 and len(salvaged.file.movie.vobs) > 0
    lost = [loss for table in salvaged.tables for loss in table.losses]
    assert lost and all(loss.what for loss in lost) and str(salvaged)
    assert veska.salvage(b"nothing").file is None
    whole = veska.salvage(IMAGE)
    assert whole.is_whole and whole.file == veska.load(IMAGE)


def test_diff_report_show(recorder: veska.File) -> None:
    other = veska.load(IMAGE)
    assert veska.diff(recorder, IMAGE) == []
    other.original_chain.programs[0].number_132 = 77
    (line,) = veska.diff(recorder, other)
    assert "number_132" in line and "77" in line
    page = recorder.report("My <disc>")
    assert page.startswith("<!DOCTYPE html>") and "My &lt;disc&gt;" in page
    assert "59.94" in veska.report(IMAGE, fields_per_second=59.94)
    with pytest.raises(ValueError):
        veska.report(IMAGE, fields_per_second=51)
    with pytest.raises(veska.LoadError):
        veska.report(IMAGE[:5000])
    assert "original_chain" not in recorder.show() and len(recorder.show(all=True)) > len(recorder.show())


def test_listing(recorder: veska.File) -> None:
    recorder.original_chain.programs[0].text_4 = "夜".encode("shift_jis")
    assert recorder.listing().programs[0].text == r"\x96\xe9"
    listing = recorder.listing("shift_jis")
    assert listing.programs[0].text == "夜" and listing.status == "sound"
    assert listing.seconds == pytest.approx(sum(program.seconds for program in listing.programs), abs=0.01)
    assert veska.listing(b"nothing").status == "bad"
    with pytest.raises(LookupError):
        recorder.listing("no such set")


def test_locate(tmp_path: pathlib.Path) -> None:
    image = bytearray(20 * 2048)
    image[3 * 2048 : 3 * 2048 + len(IMAGE)] = IMAGE
    image[12 * 2048 : 12 * 2048 + len(IMAGE)] = IMAGE
    path = tmp_path / "disc.iso"
    path.write_bytes(image)
    sources: list[Any] = [path, bytes(image)]
    for source in sources:
        first, second = veska.locate(source)
        assert (first.offset, second.offset, second.same_as) == (3 * 2048, 12 * 2048, 1)
        assert first.is_sound and veska.read_located(source, second) == IMAGE
    assert veska.locate(b"") == []
    with pytest.raises(veska.LoadError):
        veska.locate(tmp_path / "missing")


@pytest.mark.parametrize("work", [veska.check, veska.load, veska.salvage, veska.report, veska.listing])
def test_long_work_lets_go_of_the_lock(work: Any) -> None:
    """Another thread gets its turn only where the lock is let go of: by itself it would have to wait."""
    interval = sys.getswitchinterval()
    sys.setswitchinterval(1000)
    try:
        ran = threading.Event()
        gate = threading.Lock()
        gate.acquire()

        def wait() -> None:
            gate.acquire()
            ran.set()

        thread = threading.Thread(target=wait)
        thread.start()
        gate.release()
        for _ in range(2000):
            if ran.is_set():
                break
            work(IMAGE)
        assert ran.is_set()
    finally:
        sys.setswitchinterval(interval)
    thread.join()


def test_in_a_notebook(recorder: veska.File) -> None:
    pyplot = pytest.importorskip("matplotlib.pyplot")
    pyplot.switch_backend("Agg")
    recorder.original_chain.programs[0].text_4 = "<b>"
    page = recorder._repr_html_()
    assert "&lt;b&gt;" in page and "FAMILY RECORDINGS" in page
    axes = recorder.plot_bitrate()
    assert len(axes.patches) == len(recorder.movie.vobs)
    pyplot.close("all")
