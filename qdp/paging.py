"""Lists that the module gives page by page, as iterators."""

TYPE_CHECKING = False
if TYPE_CHECKING:
    from typing import Any, Callable, Iterator


def pages(
    read: "Callable[[int], Any]", entries: str, following: str, end: int, passes_empty_pages: bool = False
) -> "Iterator[Any]":
    """The entries of all pages. `read` reads the page that starts at an index, `entries` is the key of a page's entries
    and `following` that of the next index, `end` the first index that the method does not take.

    How the last page is marked is the datapath's own affair: the list ends where the next index does not advance or is
    `end`, and with an empty page. Where a filter may leave pages empty, those are passed over.
    """
    start, next_start = -1, 0
    while start < next_start < end:
        start = next_start
        page = read(start)
        if not page[entries] and not passes_empty_pages:
            return
        for entry in page[entries]:
            yield entry
        next_start = page[following]
