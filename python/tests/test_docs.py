"""The examples of the documents are true."""

import doctest
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys

import pytest
from conftest import SAMPLES

DOCUMENTS = SAMPLES.parent


def blocks(document: str, language: str) -> list[str]:
    text = (DOCUMENTS / document).read_text()
    return re.findall(rf"^```{language}\n(.*?)^```", text, re.M | re.S)


@pytest.fixture(autouse=True)
def discs(tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(tmp_path)
    shutil.copy(SAMPLES / "movie_recorder.ifo", "VR_MANGR.IFO")
    os.mkdir("archive")
    for name in ("movie_recorder.ifo", "still_camera.ifo"):
        shutil.copy(SAMPLES / name, "archive")
    pathlib.Path("archive/broken.ifo").write_bytes(b"broken")


@pytest.mark.parametrize("document", ["docs/python.md", "README.md"])
def test_examples(document: str) -> None:
    examples = "\n".join(blocks(document, "pycon"))
    assert ">>>" in examples
    test = doctest.DocTestParser().get_doctest(examples, {}, document, document, 0)
    assert doctest.DocTestRunner().run(test).failed == 0


def test_the_program() -> None:
    lines = "".join(blocks("docs/python.md", "sh")).splitlines()
    (command,) = [line for line in lines if "veska.catalog" in line and "scheduler" not in line]
    run = subprocess.run([sys.executable, *shlex.split(command)[1:]], capture_output=True, text=True)
    assert (run.returncode, run.stdout) == (1, "3 inputs: 3 new or changed, 1 of them bad\n")
