"""Lists behave as Python's own do."""

from typing import Any, Callable

import pytest

import veska

LISTS: dict[str, Callable[[veska.File], Any]] = {
    "play_lists": lambda file: file.play_lists,
    "lists": lambda file: file.play_lists.lists,
    "movie_streams": lambda file: file.movie.streams,
    "vobs": lambda file: file.movie.vobs,
    "times": lambda file: file.movie.vobs[0].time_map.times,
    "vobus": lambda file: file.movie.vobs[0].time_map.vobus,
    "still_streams": lambda file: file.still.streams,
    "groups": lambda file: file.still.groups,
    "still_entries": lambda file: file.still.groups[0].entries,
    "audio_streams": lambda file: file.still.audio_streams,
    "audio_groups": lambda file: file.still.audio_groups,
    "audio_entries": lambda file: file.still.audio_groups[0].entries,
    "programs": lambda file: file.original_chain.programs,
    "cells": lambda file: file.original_chain.cells,
    "entries": lambda file: next(cell for cell in file.original_chain.cells if len(cell.entries) > 1).entries,
    "user_chains": lambda file: file.user_chains,
    "sets": lambda file: file.texts,
    "texts": lambda file: file.texts[0].texts,
    "manufacturers": lambda file: file.manufacturers,
}


@pytest.mark.parametrize("name", LISTS)
def test_each_list(full: veska.File, name: str) -> None:
    """All operations beside those of a list of Python that holds the same."""
    items = LISTS[name](full)
    model = list(items)
    assert len(items) == len(model) > 0

    copied = items.append(items[0])
    assert copied == items[0] and copied == items[-1]
    model.append(copied)
    copied = items.insert(-1, model[0])
    model.insert(-1, copied)
    copied = items.insert(99999, items[0])
    model.append(copied)
    assert items[1:-1] == model[1:-1] and items[::-2] == model[::-2]
    assert list(reversed(items)) == model[::-1]
    assert model[1] in items and items.index(model[1]) == model.index(model[1])

    items[1] = items[2]
    model[1] = items[1]
    assert list(items) == model
    for index in (len(model), -len(model) - 1):
        for use in (items.__getitem__, items.__delitem__, lambda i: items.__setitem__(i, items[0])):
            with pytest.raises(IndexError):
                use(index)
    with pytest.raises(TypeError):
        items.append(full.header)
    with pytest.raises(TypeError):
        items[0] = None

    del items[-1], model[-1]
    del items[::2], model[::2]
    assert list(items) == model and all(not one.is_stale for one in model)
    items.clear()
    assert len(items) == 0 and not items and list(items) == [] and all(one.is_stale for one in model)


@pytest.mark.parametrize("name", ["play_lists", "programs", "cells"])
@pytest.mark.parametrize("start, to", [(0, 3), (3, 0), (-1, 1), (2, 2)])
def test_moving(full: veska.File, name: str, start: int, to: int) -> None:
    items = LISTS[name](full)
    model = list(items)
    items.move(start, to)
    model.insert(to, model.pop(start))
    assert list(items) == model


def test_lists_that_keep_their_order(full: veska.File) -> None:
    with pytest.raises(TypeError, match="vobs: their order cannot be changed"):
        full.movie.vobs.move(0, 1)


def test_new_items(full: veska.File) -> None:
    chain = full.original_chain
    program = chain.programs.insert(1, C_Ns=2, text_4="New")
    assert chain.programs[1] == program and program.C_Ns == 2 and str(program.text_4) == "New"
    movie = chain.cells.insert(4, kind="movie", time_6=(90000, 1))
    still = chain.cells.append(kind="still")
    assert isinstance(movie, veska.MovieCell) and isinstance(still, veska.StillCell)
    assert [cell.type for cell in (chain.cells[4], chain.cells[-1])] == ["movie", "still"]

    short = movie.entries.append(EP_TY=0)
    long = movie.entries.append(EP_TY=0x40, block=bytes(range(128)))
    assert short.block is None and long.block == bytes(range(128))
    assert movie.entries.insert(0, long).block == long.block
    with pytest.raises(ValueError, match="made without one"):
        short.block = bytes(128)
    with pytest.raises(ValueError, match="block: expected 128"):
        long.block = b"short"

    text = full.texts[0].texts.append(code=5, text="新".encode())
    assert (text.code, text.length, text.text) == (5, 3, "新".encode())
    maker = full.manufacturers.append(MNF_ID="maker", data=b"\0" * 300)
    assert len(maker.data) == 300
    full.original_chain.cells[-1].C_TY = 0x20
    assert veska.load(bytes(full)).manufacturers[-1] == maker


@pytest.mark.parametrize(
    "fields", [{}, {"kind": "film"}, {"kind": "movie", "C_TY": 256}, {"kind": "still", "time_6": (1, 2)}]
)
def test_an_item_that_cannot_be_made_is_not_there(full: veska.File, fields: dict[str, Any]) -> None:
    before = bytes(full)
    with pytest.raises((ValueError, AttributeError)):
        full.original_chain.cells.insert(1, **fields)
    assert bytes(full) == before


def test_a_list_is_full(recorder: veska.File) -> None:
    programs = recorder.original_chain.programs
    for _ in range(len(programs), 255):
        programs.append(programs[0])
    with pytest.raises(ValueError, match="programs: a file counts 255 at most"):
        programs.append()


def test_a_list_may_change_while_it_is_walked(recorder: veska.File) -> None:
    programs = recorder.original_chain.programs
    for program in programs:
        del programs[0]
    assert len(programs) == 6
