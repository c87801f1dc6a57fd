#!/usr/bin/python3
"""Makes a page (.html) of each document (.md) under FOLDER, and of links between them links between
pages: package/pages.py FOLDER VERSION. Of the documents only CHANGELOG.md stays.
"""
import html
import os
import pathlib
import re
import sys

from markdown_it import MarkdownIt

PAGE = """<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>{title}</title>
<link rel="stylesheet" href="{top}docs/style.css">
</head>
<body>
<nav><a href="{top}README.html">VexoCtrlSDK {version}</a></nav>
<main>
{content}</main>
</body>
</html>
"""


def text_of(token):
    return "".join(child.content for child in token.children)


def anchor(heading, taken):
    """What links call a heading: small letters, no marks, - for blanks; a number for the second."""
    name = re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")
    number = taken.get(name, 0)
    taken[name] = number + 1
    return f"{name}-{number}" if number else name


def page(source, folder, version):
    parser = MarkdownIt("commonmark").enable("table")
    tokens = parser.parse(source.read_text(encoding="utf-8"))
    taken, title = {}, None
    for token, following in zip(tokens, tokens[1:]):
        if token.type == "heading_open":
            title = title or text_of(following)
            token.attrSet("id", anchor(text_of(following), taken))
    for token in tokens:
        for child in token.children or []:
            if child.type == "link_open":
                child.attrSet("href", re.sub(r"^(?!\w+:)([^#]*)\.md(?=#|$)", r"\1.html", child.attrGet("href")))
    content = parser.renderer.render(tokens, parser.options, {})
    # A wide table scrolls by itself.
    content = content.replace("<table>", '<div class="table">\n<table>').replace("</table>", "</table>\n</div>")
    top = os.path.relpath(folder, source.parent) + "/"
    return PAGE.format(title=html.escape(title), top="" if top == "./" else top, version=version, content=content)


def main():
    folder, version = pathlib.Path(sys.argv[1]), sys.argv[2]
    for source in sorted(folder.rglob("*.md")):
        source.with_suffix(".html").write_text(page(source, folder, version), encoding="utf-8")
        if source.name != "CHANGELOG.md":
            source.unlink()


main()
