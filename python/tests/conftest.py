import pathlib

import pytest

import veska

SAMPLES = pathlib.Path(__file__).parents[2] / "samples"
NAMES = sorted(path.name for path in SAMPLES.glob("*.ifo"))


@pytest.fixture(params=NAMES)
def sample(request: pytest.FixtureRequest) -> pathlib.Path:
    return SAMPLES / str(request.param)


@pytest.fixture
def recorder() -> veska.File:
    return veska.load(SAMPLES / "movie_recorder.ifo")


@pytest.fixture
def full() -> veska.File:
    return veska.load(SAMPLES / "mixed_full.ifo")
