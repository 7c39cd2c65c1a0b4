"""Writes the stubs of the module: the classes of tables and records by what it says of them, all else as
it stands in stubs.in.pyi.  usage: stubs.py FOLDER, where the built module lies with the package."""
import importlib
import pathlib
import sys


def members_of(members, sums, has_bitrate):
    for name, given, taken in members:
        if given == "Text":
            yield f"    {name}: TextField\n"
            continue
        yield f"    @property\n    def {name}(self) -> {given}: ...\n"
        if taken is not None:
            yield f"    @{name}.setter\n    def {name}(self, value: {taken}) -> None: ...\n"
    for name in sums:
        yield f"    def {name}(self) -> int: ...\n"
    if has_bitrate:
        yield "    def bitrate(self, fields_per_second: Optional[float] = None) -> tuple[Any, Any]: ...\n"
        yield "    def seconds(self, fields_per_second: Optional[float] = None) -> float: ...\n"


def main():
    folder = pathlib.Path(sys.argv[1])
    sys.path.insert(0, str(folder.parent))
    module = importlib.import_module("veska._veska")
    text = (pathlib.Path(__file__).parent / "stubs.in.pyi").read_text()
    for name, items, *rest in module._describe():
        body = "".join(members_of(*rest))
        if name == "File":
            text = text.replace("#TABLES\n", body)
        else:
            base = "Record" if items is None else items
            text += f"\nclass {name}({base}):\n{body or '    ...'}"
    names = "".join(f'    "{name}",\n' for name in module.__all__)
    (folder / "_veska.pyi").write_text(text.replace("#ALL", f"__all__ = [\n{names}]"))


main()
