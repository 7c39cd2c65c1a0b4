"""The values of fields that are neither numbers nor plain bytes."""

from typing import TYPE_CHECKING, Any, NamedTuple, Optional, Union

if TYPE_CHECKING:
    from ._veska import File


class Clock(NamedTuple):
    """A clock value: `base` counts 1/90,000 s, `ext` 1/27,000,000 s."""

    base: int
    ext: int


class CellPoint(NamedTuple):
    """A cell by its number, from 1 (65535: none), and a position in it.

    The position is a clock value where the point names a movie cell of the original chain, else the six
    bytes of the file. When one is set, either will do.
    """

    cell: int
    position: Union[Clock, bytes]


class Text(bytes):
    """A text as its bytes, zeros at the end included; `str()` gives it as people are shown it."""

    def shown(self, encoding: Optional[str] = None) -> str:
        """The text in that character set (UTF-8), with bytes that are none in it as \\xNN."""
        from ._veska import shown_text

        return shown_text(bytes(self), encoding)

    def __str__(self) -> str:
        return self.shown()


class TextField(property):
    """A field that gives a `Text` and takes a str as well."""

    if TYPE_CHECKING:

        def __get__(self, record: Any, owner: Optional[type] = None) -> Text: ...
        def __set__(
            self, record: Any, value: Union[str, bytes, bytearray, memoryview]
        ) -> None: ...


def file_of(image: bytes, name: str) -> "File":
    """What a pickled file is made of."""
    from ._veska import load

    file = load(image)
    file.name = name
    return file
