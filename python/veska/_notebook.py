"""What a notebook shows of a file."""

import html
from typing import TYPE_CHECKING, Any, Optional

if TYPE_CHECKING:
    from ._veska import File


def repr_html(file: "File") -> str:
    """The file's listing."""
    listing = file.listing()
    rows = "".join(
        f"<tr><td>{number}</td><td>{html.escape(program.text)}</td><td>{program.kind}</td>"
        f"<td>{program.cells}</td><td>{program.seconds:.1f} s</td></tr>"
        for number, program in enumerate(listing.programs, 1)
    )
    head = "<tr><th></th><th>program</th><th>kind</th><th>cells</th><th>plays</th></tr>"
    sums = (
        f"{len(listing.programs)} programs, {listing.cells} cells, {listing.vobs} VOBs, "
        f"{len(listing.play_lists)} play lists, {listing.bytes / 1e6:.1f} MB"
    )
    problem = f"<p>{listing.status}: {html.escape(listing.problem)}</p>" if listing.problem else ""
    title = html.escape(listing.text or file.name or "disc")
    return f"<h4>{title}</h4><p>{sums}</p>{problem}<table>{head}{rows}</table>"


def plot_bitrate(file: "File", axes: Optional[Any] = None) -> Any:
    """Draws the bitrate of the movie VOBs, one behind the other; returns Matplotlib's axes."""
    from matplotlib import pyplot

    if axes is None:
        _, axes = pyplot.subplots()
    start = 0.0
    for number, vob in enumerate(file.movie.vobs, 1):
        seconds, megabits = vob.time_map.bitrate()
        if not len(seconds):
            continue
        length = vob.time_map.seconds()
        axes.stairs(megabits, [start + second for second in [*seconds, length]], label=f"VOB {number}")
        start += length
    axes.set_xlabel("seconds")
    axes.set_ylabel("Mbit/s")
    return axes
