"""What is on many discs: a row a disc, or a row a program, with the columns of `veska list`.

    python3 -m veska.catalog -o catalog/ 'archive/*/DVD_RTAV/VR_MANGR.IFO'
    python3 -m veska.catalog --scheduler tcp://HOST:8786 -o catalog/ 's3://archive/**.ifo'

Inputs are paths, URLs that fsspec opens, and patterns of either. The rows are written in parts; a second run
takes up what is new or changed.
"""

import argparse
import codecs
import csv
import glob
import io
import json
import os
import pathlib
import sys
import uuid
from concurrent.futures import ThreadPoolExecutor, as_completed
from typing import Any, Iterable, Iterator, NamedTuple, Optional, Union

from . import _veska

LARGEST = 1 << 28  # bytes of an input: no management file comes near, and each is read whole
PART = 500  # inputs in a part
LOG = "parts.log"

Row = dict[str, Any]
Stamps = dict[str, str]
Inputs = Union[str, "os.PathLike[str]", Iterable[Union[str, "os.PathLike[str]"]]]


class Form(NamedTuple):
    """What a catalog is made of."""

    programs: bool = False
    csv: bool = False
    encoding: Optional[str] = None

    @property
    def suffix(self) -> str:
        return ".csv" if self.csv else ".jsonl"


class Summary(NamedTuple):
    """What a run came to."""

    inputs: int
    taken: int
    """The new and the changed ones."""
    bad: int
    """Those that cannot be read, among the taken ones."""


def _is_url(name: str) -> bool:
    return "://" in name


def _stamp_of_url(info: dict[str, Any]) -> str:
    marks = (info.get(key) for key in ("ETag", "etag", "mtime", "LastModified", "last_modified", "created"))
    return f"{info.get('size')} {next((mark for mark in marks if mark is not None), '')}"


def _stamp_of_path(path: str) -> str:
    try:
        found = os.stat(path)
    except (OSError, ValueError):
        return ""  # never up to date
    return f"{found.st_size} {found.st_mtime_ns}"


def _expanded(pattern: str) -> Iterator[tuple[str, str]]:
    if _is_url(pattern):
        import fsspec

        fs, path = fsspec.core.url_to_fs(pattern)
        found = fs.glob(path, detail=True) if glob.has_magic(path) else {}
        for name, info in sorted(found.items()):
            yield fs.unstrip_protocol(name), _stamp_of_url(info)
        if not found:
            yield pattern, _stamp_of_url(fs.info(path)) if fs.exists(path) else ""
    else:
        is_pattern = glob.has_magic(pattern) and not os.path.lexists(pattern)
        names = sorted(glob.iglob(pattern, recursive=True)) if is_pattern else [pattern]
        yield from ((name, _stamp_of_path(name)) for name in names)


def _stamps(inputs: Inputs) -> Stamps:
    """All that inputs stand for, each with what tells whether it changed."""
    listed = [inputs] if isinstance(inputs, (str, os.PathLike)) else inputs
    return {name: stamp for one in listed for name, stamp in _expanded(os.fspath(one))}


def _shown(name: str) -> str:
    return os.fsencode(name).decode("utf-8", "replace")


def _listing(name: str, encoding: Optional[str]) -> _veska.Listing:
    try:
        if not _is_url(name):
            if os.path.getsize(name) > LARGEST:
                raise ValueError("too large for a management file")
            return _veska.listing(name, encoding)
        import fsspec

        with fsspec.open(name, "rb") as opened:
            read = opened.read(LARGEST + 1)
        if len(read) > LARGEST:
            raise ValueError("too large for a management file")
        return _veska.listing(read, encoding)
    except Exception as error:  # whatever a file system raises: the others go on
        reason = str(error).replace("\n", " ") or type(error).__name__
        return _veska._bad_listing(reason.replace(f"{_shown(name)}: ", "", 1))


def _text_of(names: list[str], form: Form) -> tuple[str, int]:
    """The rows of inputs, and how many of these are bad."""
    text, bad = [], 0
    for name in names:
        listing = _listing(name, form.encoding)
        text.append(_veska._rows(listing, _shown(name), form.programs, form.csv))
        bad += listing.status == "bad"
    return "".join(text), bad


def rows(inputs: Inputs, programs: bool = False, encoding: Optional[str] = None) -> Iterator[Row]:
    """The rows of inputs, as they are read."""
    for name in _stamps(inputs):
        text, _ = _text_of([name], Form(programs, False, encoding))
        yield from map(json.loads, text.split("\n")[:-1])


def frame(inputs: Inputs, programs: bool = False, encoding: Optional[str] = None) -> Any:
    """The rows of inputs as a data frame of pandas."""
    import pandas

    return pandas.DataFrame(rows(inputs, programs, encoding), columns=_veska.columns(programs))


class _Catalog:
    """A folder of parts. Its log has a line for each part that is whole, with the inputs that the part tells
    of; the last line of a part counts, and the last part of an input."""

    def __init__(self, folder: pathlib.Path, form: Form) -> None:
        self.folder = folder
        self.form = form
        self.parts: dict[str, Stamps] = {}
        folder.mkdir(parents=True, exist_ok=True)
        log = folder / LOG
        known: Stamps = {}
        if log.exists():
            text = log.read_text()
            if not text.endswith("\n"):
                log.write_text(text + "\n")
            lines = text.split("\n")
            self._expect_form(json.loads(lines[0] or "null"))
            for line in lines[1:]:
                try:
                    part, stamps = json.loads(line)
                except ValueError:
                    continue  # a run that was cut off; its part is written again
                self.parts[part] = stamps
                known.update(dict.fromkeys(stamps, part))
        else:
            self._write(log, json.dumps(form._asdict()) + "\n")
        self.owner = known
        for path in [*folder.glob("part-*"), *folder.glob(".part-*")]:
            if path.name not in self.parts:
                path.unlink()  # of a run that was cut off
        self.tidy()

    def _expect_form(self, form: Optional[Row]) -> None:
        if form != self.form._asdict():
            raise ValueError(f"{self.folder} is a catalog of another form: {form}")

    def _write(self, path: pathlib.Path, text: str) -> None:
        unfinished = path.with_name(f".{path.name}.{uuid.uuid4().hex}")
        with open(unfinished, "w", encoding="utf-8", newline="") as out:
            out.write(text)
            out.flush()
            os.fsync(out.fileno())
        os.replace(unfinished, path)

    def _record(self, part: str, stamps: Stamps) -> None:
        with open(self.folder / LOG, "a") as log:
            log.write(json.dumps([part, stamps]) + "\n")
        self.parts[part] = stamps
        self.owner.update(dict.fromkeys(stamps, part))

    def is_current(self, name: str, stamp: str) -> bool:
        part = self.owner.get(name)
        return part is not None and stamp != "" and self.parts[part].get(name) == stamp

    def add(self, stamps: Stamps, text: str) -> None:
        number = 1 + max((int(name[5:11]) for name in self.parts), default=0)
        part = f"part-{number:06d}{self.form.suffix}"
        heads = _veska._csv_heads(self.form.programs) if self.form.csv else ""
        self._write(self.folder / part, heads + text)
        self._record(part, stamps)

    def tidy(self) -> None:
        """Takes the rows of inputs out of parts that another part tells of."""
        for part, stamps in list(self.parts.items()):
            kept = {name: stamp for name, stamp in stamps.items() if self.owner[name] == part}
            if len(kept) == len(stamps):
                continue
            gone = {_shown(name) for name in stamps if name not in kept}
            self._write(self.folder / part, self._without(self.folder / part, gone))
            self._record(part, kept)

    def _without(self, part: pathlib.Path, names: set[str]) -> str:
        with open(part, encoding="utf-8", newline="") as old:
            if not self.form.csv:
                return "".join(line for line in old if json.loads(line)["file"] not in names)
            text = io.StringIO()
            writer = csv.writer(text, lineterminator="\n")
            writer.writerows(row for row in csv.reader(old) if row[0] not in names)
            return text.getvalue()


Done = tuple[list[str], str, int]


def _on_this_machine(pieces: list[list[str]], form: Form, jobs: Optional[int]) -> Iterator[Done]:
    with ThreadPoolExecutor(jobs or os.cpu_count()) as pool:
        work = {pool.submit(_text_of, names, form): names for names in pieces}
        for done in as_completed(work):
            text, bad = done.result()
            yield work.pop(done), text, bad


def _on_a_cluster(pieces: list[list[str]], form: Form, scheduler: str) -> Iterator[Done]:
    """What a lost worker had is done by another one, as Dask does it. Of a piece that loses several workers
    each input is tried alone, with nothing beside it that could be blamed; what loses them then is bad."""
    import distributed

    with distributed.Client(scheduler) as client:
        work = {client.submit(_text_of, names, form, pure=False): names for names in pieces}
        suspicious = []
        for future in distributed.as_completed(list(work)):
            names = work.pop(future)
            try:
                text, bad = future.result()
                yield names, str(text), int(bad)
            except distributed.KilledWorker:
                suspicious.append(names)
            future.release()
        for names in suspicious:
            texts = [_text_alone(client, name, form) for name in names]
            yield names, "".join(text for text, _ in texts), sum(bad for _, bad in texts)


def _text_alone(client: Any, name: str, form: Form) -> tuple[str, int]:
    import distributed

    try:
        text, bad = client.submit(_text_of, [name], form, pure=False).result()
        return str(text), int(bad)
    except distributed.KilledWorker:
        lost = _veska._bad_listing("the workers that read it were lost")
        return _veska._rows(lost, _shown(name), form.programs, form.csv), 1


def write(
    inputs: Inputs,
    folder: Union[str, "os.PathLike[str]"],
    programs: bool = False,
    csv: bool = False,
    encoding: Optional[str] = None,
    scheduler: Optional[str] = None,
    jobs: Optional[int] = None,
    part: int = PART,
) -> Summary:
    """Writes the rows of inputs into parts in a folder, and brings those up to date that stand there. With the
    address of a Dask scheduler its workers read the inputs, else this machine's cores do."""
    form = Form(programs, csv, encoding)
    if encoding is not None:
        codecs.lookup(encoding)
    catalog = _Catalog(pathlib.Path(folder), form)
    stamps = _stamps(inputs)
    todo = [name for name, stamp in stamps.items() if not catalog.is_current(name, stamp)]
    pieces = [todo[i : i + part] for i in range(0, len(todo), part)]
    bad = 0
    if pieces:
        works = _on_a_cluster(pieces, form, scheduler) if scheduler else _on_this_machine(pieces, form, jobs)
        for names, text, bad_ones in works:
            catalog.add({name: stamps[name] for name in names}, text)
            bad += bad_ones
        catalog.tidy()
    return Summary(len(stamps), len(todo), bad)


def main(arguments: Optional[list[str]] = None) -> int:
    """The program; returns the exit status: 1 when an input is bad, 3 when something cannot be written."""
    parser = argparse.ArgumentParser("python3 -m veska.catalog", description=(__doc__ or "").split("\n", 1)[0])
    parser.add_argument("inputs", nargs="+", metavar="INPUT", help="a path, a URL, or a pattern of either")
    parser.add_argument("-o", "--output", required=True, metavar="FOLDER", help="where the parts stand")
    parser.add_argument("--csv", action="store_true", help="write CSV instead of JSON lines")
    parser.add_argument("--programs", action="store_true", help="write a row for each program instead")
    parser.add_argument("--encoding", help="the character set of the discs' texts")
    parser.add_argument("--scheduler", metavar="ADDRESS", help="of Dask, whose workers do the work")
    parser.add_argument("--jobs", type=int, help="how many threads do it without a scheduler")
    parser.add_argument("--part", type=int, default=PART, metavar="N", help=f"inputs in a part ({PART})")
    options = vars(parser.parse_args(arguments))
    if options["part"] < 1 or (options["jobs"] or 1) < 1:
        parser.error("--part and --jobs are numbers from 1")
    try:
        summary = write(options.pop("inputs"), options.pop("output"), **options)
    except LookupError as error:
        parser.error(str(error))
    except (OSError, ValueError, ImportError) as error:
        print(f"veska.catalog: {error}", file=sys.stderr)
        return 3
    print(f"{summary.inputs} inputs: {summary.taken} new or changed, {summary.bad} of them bad")
    return 1 if summary.bad else 0


if __name__ == "__main__":
    from veska.catalog import main as run  # so that workers find what they are asked to do

    sys.exit(run())
