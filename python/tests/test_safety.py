"""Whatever a program does with old views: an exception, never a crash."""

import copy
import gc
import threading
import weakref
from typing import Any, Callable

import numpy
import pytest
from conftest import NAMES, SAMPLES
from hypothesis import HealthCheck, settings
from hypothesis import strategies as st
from hypothesis.stateful import RuleBasedStateMachine, initialize, invariant, precondition, rule

import veska

NUMBERS = st.integers(0, 1 << 30)


class Editing(RuleBasedStateMachine):
    """Edits a file whose programs and cells bear marks, and holds views of them and of all else."""

    def __init__(self) -> None:
        super().__init__()
        self.marks = 0
        self.held: list[tuple[Any, str, int]] = []  # a view, the field of its mark, the mark
        self.loose: list[Any] = []
        self.arrays: list[Any] = []

    @initialize(name=st.sampled_from(NAMES))
    def load(self, name: str) -> None:
        self.file = veska.load(SAMPLES / name)
        self.mark_all()

    def mark_all(self) -> None:
        self.held = []
        chain = self.file.original_chain
        self.model: dict[str, list[int]] = {"programs": [], "cells": []}
        for kind in self.model:
            for item in getattr(chain, kind):
                self.model[kind].append(self.mark(kind, item))

    def mark(self, kind: str, item: Any) -> int:
        self.marks = self.marks % 65535 + 1
        field = "number_132" if kind == "programs" else "number_2"
        setattr(item, field, self.marks)
        self.held.append((item, field, self.marks))
        return self.marks

    kinds = st.sampled_from(["programs", "cells"])

    @rule(kind=kinds, at=NUMBERS, movie=st.booleans())
    def insert(self, kind: str, at: int, movie: bool) -> None:
        items = getattr(self.file.original_chain, kind)
        at %= len(items) + 1
        fields = {"kind": "movie" if movie else "still"} if kind == "cells" else {}
        if len(items) < 255:
            self.model[kind].insert(at, self.mark(kind, items.insert(at, **fields)))

    @rule(kind=kinds, at=NUMBERS)
    def insert_copy(self, kind: str, at: int) -> None:
        items = getattr(self.file.original_chain, kind)
        if 0 < len(items) < 255:
            at %= len(items)
            self.model[kind].insert(at, self.mark(kind, items.insert(at, items[at])))

    @rule(kind=kinds, at=NUMBERS)
    def delete(self, kind: str, at: int) -> None:
        items = getattr(self.file.original_chain, kind)
        if items:
            at %= len(items)
            del items[at], self.model[kind][at]

    @rule(kind=kinds, at=NUMBERS, to=NUMBERS)
    def move(self, kind: str, at: int, to: int) -> None:
        items = getattr(self.file.original_chain, kind)
        if items:
            at, to = at % len(items), to % len(items)
            items.move(at, to)
            self.model[kind].insert(to, self.model[kind].pop(at))

    @rule(path=st.lists(NUMBERS, min_size=2, max_size=12))
    def hold(self, path: list[int]) -> None:
        """Goes down somewhere and keeps all that it comes past."""
        tables = ["header", "play_lists", "movie", "still", "original_chain", "user_chains", "texts", "manufacturers"]
        view: Any = getattr(self.file, tables[path[0] % 8])
        for number in path[1:]:
            self.loose.append(view)
            if isinstance(view, veska.List):
                below = [view[number % len(view)]] if view else []
            else:
                names = [name for name in dir(view) if not name.startswith("_")]
                below = [getattr(view, name, None) for name in names]
                below = [one for one in below if isinstance(one, veska.View)]
            if not below:
                break
            view = below[number % len(below)]
        self.loose = self.loose[-100:]

    @rule(number=NUMBERS)
    @precondition(lambda self: bool(self.loose))
    def use(self, number: int) -> None:
        """Reads all that a view has, and writes it back."""
        view = self.loose[number % len(self.loose)]
        repr(view)
        for name in dir(view):
            if name.startswith("__"):
                continue
            try:
                value = getattr(view, name)
                if not callable(value) and not isinstance(value, veska.View):
                    setattr(view, name, value)
            except veska.StaleError:
                assert view.is_stale
            except (AttributeError, TypeError, ValueError):
                pass

    @rule(number=NUMBERS, at=NUMBERS)
    @precondition(lambda self: bool(self.loose))
    def change_a_list(self, number: int, at: int) -> None:
        view = self.loose[number % len(self.loose)]
        if isinstance(view, veska.List):
            try:
                if view == getattr(self.file.original_chain, "programs") or view == self.file.original_chain.cells:
                    return
                if at % 3:
                    del view[at % len(view)]
                else:
                    view.append(view[at % len(view)])
            except (veska.StaleError, ZeroDivisionError, BufferError, ValueError):
                pass

    @rule(number=NUMBERS)
    def hold_an_array(self, number: int) -> None:
        vobs = self.file.movie.vobs
        if vobs:
            vobus = vobs[number % len(vobs)].time_map.vobus
            self.arrays.append((vobus.to_numpy(), [(entry.number_0, entry.word_1) for entry in vobus], vobus))

    @rule()
    @precondition(lambda self: bool(self.arrays))
    def use_arrays(self) -> None:
        for array, entries, vobus in self.arrays:
            assert array.tolist() == entries
            if entries:
                with pytest.raises(BufferError):
                    del vobus[0]
                with pytest.raises(BufferError):
                    self.file.movie.vobs.clear()
                with pytest.raises(BufferError):
                    self.file.reload(SAMPLES / "empty.ifo")
        self.arrays.clear()

    @rule(name=st.sampled_from(NAMES))
    @precondition(lambda self: not self.arrays)
    def reload(self, name: str) -> None:
        old = [view for view, *_ in self.held] + self.loose
        self.file.reload(SAMPLES / name)
        assert all(view.is_stale for view in old)
        self.mark_all()

    @rule(number=NUMBERS)
    @precondition(lambda self: not self.arrays)
    def edit(self, number: int) -> None:
        chain, movie = self.file.original_chain, self.file.movie
        old = [view for view, *_ in self.held]
        try:
            self.file.edit(f"delete-cell {number % 50 + 1}")
        except veska.RequestError:
            return
        assert all(view.is_stale for view in old) and not chain.is_stale and not movie.vobs.is_stale
        self.mark_all()

    @rule()
    def complete(self) -> None:
        self.file.complete()
        assert copy.deepcopy(self.file) == self.file
        try:
            assert veska.load(bytes(self.file)) == self.file
        except veska.SaveError:
            pass  # a list that a file cannot hold

    @invariant()
    def what_lives_is_as_it_was_marked(self) -> None:
        chain = self.file.original_chain
        assert [program.number_132 for program in chain.programs] == self.model["programs"]
        assert [cell.number_2 for cell in chain.cells] == self.model["cells"]
        for view, field, mark in self.held:
            kind = "programs" if field == "number_132" else "cells"
            if mark in self.model[kind]:
                assert getattr(view, field) == mark
            else:
                assert view.is_stale
                with pytest.raises(veska.StaleError):
                    getattr(view, field)


Editing.TestCase.settings = settings(
    max_examples=100, stateful_step_count=40, deadline=None, suppress_health_check=list(HealthCheck)
)
TestEditing = Editing.TestCase


def test_a_view_keeps_its_file_alive() -> None:
    vobu = veska.load(SAMPLES / "movie_recorder.ifo").movie.vobs[0].time_map.vobus[3]
    array = veska.load(SAMPLES / "movie_recorder.ifo").movie.vobs[0].time_map.vobus.to_numpy()
    gc.collect()
    assert (vobu.number_0, vobu.word_1) == tuple(array[3])
    file = veska.File()
    gone = weakref.ref(file)
    table = file.movie
    del file
    assert gone() is None and len(table.vobs) == 0


class Ends:
    """A value that ends what it is set on while it is asked for its number."""

    def __init__(self, end: Callable[[], Any]) -> None:
        self.end = end

    def __index__(self) -> int:
        self.end()
        return 3


def test_values_that_end_their_record(recorder: veska.File) -> None:
    chain = recorder.original_chain
    program = chain.programs[0]
    with pytest.raises(veska.StaleError):
        program.C_Ns = Ends(lambda: chain.programs.clear())  # type: ignore[assignment]
    with pytest.raises(veska.StaleError):
        setattr(chain.cells[0], "time_6", (Ends(lambda: recorder.reload(SAMPLES / "empty.ifo")), 2))
    chain = recorder.original_chain
    with pytest.raises(veska.StaleError):
        chain.programs.append(C_Ns=Ends(lambda: chain.programs.clear()))
    assert len(chain.programs) == 0
    entries = chain.cells.append(kind="movie").entries
    with pytest.raises(veska.StaleError):
        entries.append(EP_TY=Ends(lambda: chain.cells.clear()))


def test_arrays(recorder: veska.File) -> None:
    time_map = recorder.movie.vobs[0].time_map
    array = time_map.vobus.to_numpy()
    assert array.dtype.itemsize == 3 and array.base is not None and not array.flags.writeable
    assert int((array["word_1"] & 1023).sum()) == time_map.pack_count()
    with pytest.raises(ValueError):
        array.setflags(write=True)
    time_map.vobus[0].word_1 = 77
    assert array["word_1"][0] == 77  # the same memory
    view = array[5:9]
    del array
    with pytest.raises(BufferError):
        time_map.vobus.append()
    del view
    time_map.vobus.insert(2, word_1=5)
    edited = time_map.vobus.to_numpy()
    assert edited["word_1"][:4].tolist() == [vobu.word_1 for vobu in time_map.vobus[:4]]
    programs = recorder.original_chain.programs.to_numpy()
    assert programs["text_4"][0] == b"Evening news" and programs["cell_point"]["cell"][0] == 1
    with pytest.raises(TypeError, match="cells: only records of one size"):
        recorder.original_chain.cells.to_numpy()


def test_bitrate(recorder: veska.File) -> None:
    time_map = recorder.movie.vobs[0].time_map
    seconds, megabits = time_map.bitrate(50)
    assert seconds[0] == 0 and len(seconds) == len(megabits) == len(time_map.vobus)
    lengths = numpy.diff(numpy.append(seconds, time_map.seconds(50)))
    assert (lengths * megabits).sum() == pytest.approx(time_map.pack_count() * 2048 * 8 / 1e6)
    assert time_map.seconds(50) == pytest.approx(time_map.field_count() / 50)
    for rate in (0, -1, float("nan"), float("inf")):
        with pytest.raises(ValueError):
            time_map.bitrate(rate)


def test_threads_share_a_file(recorder: veska.File) -> None:
    """Each does something else with the same file, while all let go of the lock."""
    failures: list[BaseException] = []
    end = threading.Event()

    def repeat(action: Callable[[], Any]) -> None:
        while not end.is_set():
            try:
                action()
            except (veska.StaleError, veska.RequestError, IndexError):
                pass
            except BaseException as error:
                failures.append(error)
                return

    def edit() -> None:
        del recorder.original_chain.programs[0]
        recorder.edit("delete-cell 1")
        recorder.reload(SAMPLES / "movie_recorder.ifo")

    actions: list[Callable[[], Any]] = [
        edit,
        recorder.check,
        recorder.to_json,
        recorder.complete,
        lambda: [program.C_Ns for program in recorder.original_chain.programs],
        lambda: recorder.movie.vobs[0].time_map.vobus.append(),
    ]
    threads = [threading.Thread(target=repeat, args=(action,)) for action in actions]
    for thread in threads:
        thread.start()
    end.wait(2)
    end.set()
    for thread in threads:
        thread.join()
    assert not failures
