"""What the search finds a method by, besides its name: the keys of its result, and the texts of its failures."""

from sphinx.domains import Domain, ObjType

from libqdp_reference import MODULE, STUB, texts_of
from stub import Stub


def keys_of(stub, method):
    """The keys of all dicts in a method's result."""
    return list(dict.fromkeys(row.name for each in stub.types_in(method.result) for row in each.rows if row.annotation))


class SearchDomain(Domain):
    """Names that lead to a method's place in the reference. No page refers to them; the search reads them."""

    name = "libqdp"
    label = "_libqdp"
    object_types = {"key": ObjType("key of the result"), "text": ObjType("text of a failure")}

    def get_objects(self):
        documented = self.env.get_domain("py").objects
        stub = Stub(STUB)
        for method in stub.methods():
            place = documented.get(f"{MODULE}.{method.name}")
            if place is None:
                continue  # the reference warns of that
            for kind, names in ("key", keys_of(stub, method)), ("text", texts_of(method)):
                for each in names:
                    name = f"{method.name}.{each.rstrip('.')}"
                    yield name, name, kind, place.docname, place.node_id, 1

    def resolve_any_xref(self, *_):
        """No page refers to a key or a text."""
        return []

    def merge_domaindata(self, docnames, otherdata):
        """Nothing is kept: all comes from the stub."""


def setup(app):
    app.add_domain(SearchDomain)
    return {"parallel_read_safe": True}
