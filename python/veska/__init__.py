"""Reads, edits, completes and writes the management file of DVD Video Recording discs.

    file = veska.load("/media/disc/DVD_RTAV/VR_MANGR.IFO")
    file.original_chain.programs[0].text_4 = "Evening news"
    del file.play_lists[1]
    file.save("VR_MANGR.IFO")
"""

from . import _veska
from ._errors import Error, JsonError, LoadError, RequestError, SaveError, StaleError
from ._values import CellPoint, Clock, Text
from ._veska import *  # noqa: F403 - its tables and what it does: see __all__

__version__ = _veska.__version__
__all__ = [
    "CellPoint",
    "Clock",
    "Error",
    "JsonError",
    "LoadError",
    "RequestError",
    "SaveError",
    "StaleError",
    "Text",
]
__all__ += _veska.__all__
