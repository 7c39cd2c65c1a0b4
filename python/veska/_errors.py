"""What the module raises."""

from typing import Optional


class Error(Exception):
    """Every exception of this module."""


class StaleError(Error):
    """What a view stood for was deleted, or its file was loaded anew or edited as a whole."""


class _FileError(Error, OSError):
    kind: str = "damaged"
    """What went wrong: one of `veska.FAILURE_KINDS`."""
    table: Optional[str] = None
    """The table that failed, by its key in the JSON document."""
    offset: int = 0
    """Where in the file stands what could not be read."""
    index: Optional[int] = None
    """The position of the record that a save would lose."""

    def __str__(self) -> str:  # the sentence names the file and the reason already
        return str(self.args[0]) if self.args else ""


class LoadError(_FileError):
    """A file that cannot be read, or is no management file, or a damaged one."""


class SaveError(_FileError):
    """A file that cannot be written, or would not hold all that it should."""


class JsonError(Error, ValueError):
    """A document that describes no management file."""

    pointer: str = ""
    """The JSON pointer of the mistake."""


class RequestError(Error, ValueError):
    """An operation of an edit that cannot be done."""

    operation: str = ""
    """Which of the operations, in words."""


for _error in (Error, StaleError, LoadError, SaveError, JsonError, RequestError):
    _error.__module__ = "veska"
