"""Tables, records and fields."""

import copy
import json
import pathlib
import pickle
from typing import Any, Iterator, Union

import pytest

import veska
from veska import _veska

MEMBERS = {name: members for name, _, members, *_ in _veska._describe()}  # type: ignore[attr-defined]


def same(value: Any, view: Any) -> bool:
    """Whether a value of the document and what Python shows of it are the same."""
    if isinstance(value, list):
        assert len(value) == len(view)
        return all(same(one, other) for one, other in zip(value, view))
    if isinstance(view, bytes):
        return bool(view.hex() == (value["hex"] if isinstance(value, dict) else value))
    if isinstance(view, veska.Clock):
        return bool(view == (value["base"], value["ext"]))
    if isinstance(view, veska.CellPoint):
        position = view.position
        rest = {"position": position.hex()} if isinstance(position, bytes) else position._asdict()
        return bool(value == {"cell": view.cell, **rest})
    if isinstance(value, dict):
        settable = {name for name, _, taken in MEMBERS[type(view).__name__] if taken}
        present = {name for name in settable if getattr(view, name, None) is not None}
        assert present <= value.keys()
        return all(same(one, getattr(view, key)) for key, one in value.items())
    return bool(value == view)


def test_holds_what_the_document_holds(sample: pathlib.Path) -> None:
    file = veska.load(sample)
    document = json.loads(file.to_json())
    for key in ("$schema", "version"):
        del document[key]
    assert len(document) == 8
    for key, table in document.items():
        assert same(table, getattr(file, key)), key


def records(view: Any) -> Iterator[veska.View]:
    """A view and all below it."""
    if isinstance(view, veska.View):
        yield view
    if isinstance(view, veska.List):
        for item in view:
            yield from records(item)
    for name, kind, taken in MEMBERS.get(type(view).__name__, []):
        below = getattr(view, name, None) if taken is None else None
        if isinstance(below, veska.View) and below != view:
            yield from records(below)


def test_fields_are_set_as_they_are_read(sample: pathlib.Path) -> None:
    file = veska.load(sample)
    count = 0
    for view in records(file):
        for name, _, taken in MEMBERS.get(type(view).__name__, []):
            value = getattr(view, name, None)
            if taken is not None and value is not None:
                setattr(view, name, value)
                count += 1
    assert count > 20
    assert file == veska.load(sample)


def test_a_field_takes_its_range(full: veska.File) -> None:
    for view in records(full):
        for name, given, taken in MEMBERS.get(type(view).__name__, []):
            if taken == "int" and hasattr(view, name):
                before = getattr(view, name)
                with pytest.raises(ValueError, match=rf"^{name}: -1 is not in the range 0 to (\d+)$") as refused:
                    setattr(view, name, -1)
                most = int(str(refused.value).rsplit(" ", 1)[1])
                with pytest.raises(ValueError, match=name):
                    setattr(view, name, most + 1)
                assert getattr(view, name) == before
                setattr(view, name, most)
                if "TY" not in name:  # others depend on a type
                    assert getattr(view, name) == most
                setattr(view, name, before)


@pytest.mark.parametrize(
    "name, value, error",
    [
        ("C_Ns", 1.5, TypeError),
        ("C_Ns", "3", TypeError),
        ("C_Ns", 1 << 80, ValueError),
        ("c_ns", 3, AttributeError),
        ("text_4", b"x" * 129, ValueError),
        ("text_4", "\udc80", UnicodeEncodeError),
        ("text_4", 7, TypeError),
        ("cell_point", 7, ValueError),
        ("cell_point", (1, b"12345"), ValueError),
        ("cell_point", (1, (1 << 32, 0)), ValueError),
        ("cell_point", (70000, (1, 0)), ValueError),
    ],
)
def test_what_does_not_fit_is_refused(recorder: veska.File, name: str, value: Any, error: type) -> None:
    program = recorder.original_chain.programs[0]
    before = repr(program)
    with pytest.raises(error):
        setattr(program, name, value)
    assert repr(program) == before


def test_derived_fields_follow(recorder: veska.File) -> None:
    chain = recorder.original_chain
    with pytest.raises(AttributeError, match="PG_Ns follows from the rest"):
        chain.PG_Ns = 3  # type: ignore[misc]
    chain.programs.append()
    assert chain.PG_Ns == 12
    recorder.complete()
    assert chain.PG_Ns == 13


def test_texts(recorder: veska.File) -> None:
    program = recorder.original_chain.programs[0]
    assert str(program.text_4) == "Evening news" and len(program.text_4) == 128
    program.text_4 = "夜のニュース"
    assert str(program.text_4) == "夜のニュース"
    assert program.text_4.rstrip(b"\0") == "夜のニュース".encode()
    program.text_4 = "夜".encode("shift_jis")
    assert program.text_4.shown("shift_jis") == "夜" and str(program.text_4) == r"\x96\xe9"
    with pytest.raises(LookupError):
        program.text_4.shown("no such set")


@pytest.mark.parametrize("position", [veska.Clock(0x01020304, 0x0506), b"\1\2\3\4\5\6"])
def test_cell_points_take_either_form(full: veska.File, position: Union[veska.Clock, bytes]) -> None:
    cells = full.original_chain.cells
    kinds = {cell.type: number for number, cell in enumerate(cells, 1)}
    for kind, number in kinds.items():
        program = full.original_chain.programs[0]
        program.cell_point = veska.CellPoint(number, position)
        wanted = (0x01020304, 0x0506) if kind == "movie" else b"\1\2\3\4\5\6"
        assert program.cell_point == (number, wanted)
        in_user_chain = full.user_chains[0].programs.append(cell_point=(number, position))
        assert in_user_chain.cell_point == (number, b"\1\2\3\4\5\6")
    loaded = veska.load(bytes(full))
    assert loaded.original_chain.programs[0].cell_point == full.original_chain.programs[0].cell_point


def test_parts_that_a_type_brings(full: veska.File) -> None:
    vob = full.movie.vobs[0]
    vob.VOB_TY = b"\0\x80"
    seamless = vob.seamless_block
    assert seamless is not None and vob.audio_gap_block is None
    seamless.time_0 = veska.Clock(5, 6)
    assert veska.load(bytes(full)).movie.vobs[0].seamless_block == seamless
    vob.VOB_TY = b"\0\x78"
    assert vob.seamless_block is None and vob.audio_gap_block is not None
    assert seamless.time_0 == (5, 6)

    entry = full.still.groups[0].entries[0]
    entry.S_VOB_ENT_TY = 0
    with pytest.raises(AttributeError, match="EXT2_BYTE"):
        entry.EXT2_BYTE
    entry.S_VOB_ENT_TY = 0xC0
    entry.EXT2_BYTE = 9
    assert "EXT2_BYTE=9" in repr(entry)


def test_equality_is_of_content(recorder: veska.File) -> None:
    other = veska.load(bytes(recorder))
    assert recorder == other and recorder.movie == other.movie and recorder.movie.vobs == other.movie.vobs
    other.movie.vobs[1].number_21 ^= 1
    assert recorder != other and recorder.movie != other.movie and recorder.movie.vobs != other.movie.vobs
    assert recorder.movie.vobs[0] == other.movie.vobs[0] != other.movie.vobs[1]
    assert recorder.movie != recorder.still and recorder.movie != 7


def test_copies_are_whole(sample: pathlib.Path) -> None:
    file = veska.load(sample)
    for twin in (copy.deepcopy(file), copy.copy(file)):
        assert twin == file
        twin.header.text_93 = "changed"
        assert twin != file
    image = bytes(file)
    twin = pickle.loads(pickle.dumps(file))
    assert bytes(twin) == image and twin.name == file.name
    assert image == sample.read_bytes() or sample.name == "odd_layout.ifo"
    if sample.name == "odd_layout.ifo":
        with pytest.raises(veska.SaveError):
            file.to_bytes(complete=False)
    with pytest.raises(TypeError):
        pickle.dumps(file.movie)


def test_views_come_from_files_alone() -> None:
    for kind in (veska.View, veska.Record, veska.List, veska.Program):
        with pytest.raises(TypeError):
            kind()
    with pytest.raises(AttributeError):
        veska.File().nothing  # type: ignore[attr-defined]
