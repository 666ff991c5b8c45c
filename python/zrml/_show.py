"""How objects show what they hold, as text and as tables of a notebook."""

from __future__ import annotations

from collections.abc import Iterable, Sequence
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    import pandas

MOST_ROWS = 50
MOST_CHARACTERS = 60


def frame(columns: dict[Any, Any], **options: Any) -> pandas.DataFrame:
    """A DataFrame of its own memory. Needs pandas, which nothing else here does."""
    import pandas

    return pandas.DataFrame(columns, copy=True, **options)


def counted(count: int, what: str) -> str:
    """ "1 scan", "2 scans"."""
    return f"{count} {what}" if count == 1 else f"{count} {what}s"


def shortened(text: str) -> str:
    """A name as short as one line needs it."""
    return text if len(text) <= MOST_CHARACTERS else text[:MOST_CHARACTERS] + "…"


def between(values: Sequence[float] | Any) -> str:
    """ "0.5 to 9.5" of ascending values, nothing without any."""
    return f"{values[0]:.6g} to {values[-1]:.6g}" if len(values) else ""


def span(values: Sequence[float] | Any, unit: str) -> str:
    """The same with its unit, as more words of a sentence."""
    return f", {between(values)} {unit}" if len(values) else ""


def html_table(caption: str, head: Sequence[str], rows: Sequence[Iterable[object]]) -> str:
    """Every text is escaped. Of long tables the first rows are shown."""
    from html import escape

    def line(tag: str, cells: Iterable[object]) -> str:
        return "<tr>" + "".join(f"<{tag}>{escape(_cell(cell))}</{tag}>" for cell in cells) + "</tr>"

    body = "".join(line("td", row) for row in rows[:MOST_ROWS])
    left = len(rows) - MOST_ROWS
    more = f"<p>and {left} more</p>" if left > 0 else ""
    return (
        f"<table><caption>{escape(caption)}</caption>"
        f"<thead>{line('th', head)}</thead><tbody>{body}</tbody></table>{more}"
    )


def closed_table(caption: str) -> str:
    """Of what a closed source had."""
    return html_table(f"{caption} of a closed source", (), ())


def _cell(value: object) -> str:
    if isinstance(value, float):
        return f"{value:.6g}"
    return "" if value is None else str(value)
