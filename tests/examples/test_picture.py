"""The picture of the examples: it shows what they print today."""

import runpy
import xml.etree.ElementTree as ElementTree

import pytest


@pytest.fixture(scope="module")
def picture(root):
    """What script/picture is made of."""
    return runpy.run_path(str(root / "script" / "picture.py"))


def lines_of(svg):
    """The lines of text in a picture, from top to bottom; the terminal's title is not among them."""
    lines = {}
    for text in ElementTree.parse(svg).iter("{http://www.w3.org/2000/svg}text"):
        if not text.get("class").endswith("-title"):
            height = float(text.get("y"))
            lines[height] = lines.get(height, "") + text.text.replace("\N{NO-BREAK SPACE}", " ")
    return [lines[height].rstrip() for height in sorted(lines)]


def test_the_picture_shows_what_the_examples_print(picture, build):
    session = picture["session"](build)
    assert session.count("") >= len(picture["COMMANDS"]) and len(session) > 20
    assert lines_of(picture["PICTURE"]) == session, "the examples print something else now; script/picture draws it"


def test_nothing_in_the_picture_is_fetched(picture):
    text = picture["PICTURE"].read_text()
    assert "url(http" not in text and "@import" not in text and "href" not in text


def test_the_readme_shows_the_picture(root, picture):
    assert f"]({picture['PICTURE'].relative_to(root)})" in (root / "README.md").read_text()


def test_the_readme_names_every_example(root):
    readme = (root / "README.md").read_text()
    scripts = [path.name for path in (root / "examples").glob("*.py") if "__main__" in path.read_text()]
    assert len(scripts) == 8
    assert [name for name in scripts if f"`examples/{name}" not in readme] == []
