"""Makes the manual in HTML: manual pages and guides, each with a contents list, and their index.

    python3 html_manual.py FOLDER VERSION FILE...

FOLDER gets NAME.SECTION.html for each manual page NAME.SECTION, NAME.html for each guide NAME.md,
index.html, in the order of the FILEs, and the style sheet. A FILE that is HTML is there already and
only gets links to it. Needs mandoc and python3-markdown.
"""

import html
import re
import subprocess
import sys
from dataclasses import dataclass
from pathlib import Path

import markdown

TEMPLATE = """\
<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<link rel="icon" href="data:,">
<link rel="stylesheet" href="style.css">
<title>{title}</title>
</head>
<body>
{navigation}<main>
<h1 id="top">{title}</h1>
{body}
</main>
</body>
</html>
"""
WAY_BACK = '<p class="back"><a href="index.html">Manual of morvane</a></p>\n'


@dataclass
class Page:
    """A page of the manual; `names` are what other pages call it, `title` is HTML."""

    target: str
    names: list
    title: str
    body: str
    description: str = ""


def text_of(fragment):
    """The text of a piece of HTML, as HTML without elements."""
    return " ".join(re.sub(r"<[^>]*>", "", fragment).split())


def manual_page(file):
    # Pages that are not in the same folder are linked where Debian shows them.
    result = subprocess.run(
        ["mandoc", "-T", "html", "-O",
         "fragment,man=%N.%S.html;https://manpages.debian.org/%N.%S", file.name],
        cwd=file.parent, check=True, stdout=subprocess.PIPE, encoding="utf-8")
    name, section = file.stem, file.suffix[1:]
    # Its first and last lines only repeat the title. Sections are below the title of the page.
    body = re.sub(r'<table class="(head|foot)">.*?</table>\n', "", result.stdout, flags=re.DOTALL)
    body = re.sub(r"(</?h)([1-5])\b", lambda m: f"{m[1]}{int(m[2]) + 1}", body)
    description = text_of(re.search(r'<span class="Nd">(.*?)</span>', body, re.DOTALL)[1])
    return Page(f"{file.name}.html", [f"{name}({section})", f"man {name}"], f"{name}({section})",
                body, description)


def guide(file):
    body = markdown.markdown(file.read_text(encoding="utf-8"),
                             extensions=["fenced_code", "tables", "toc"], output_format="html")
    title, body = re.fullmatch(r"<h1[^>]*>(.*?)</h1>\n(.*)", body, re.DOTALL).groups()
    return Page(f"{file.stem}.html", [f"docs/{file.name}", file.name], text_of(title), body)


def finished_page(file):
    title = re.search("<title>(.*?)</title>", file.read_text(encoding="utf-8"))[1]
    return Page(file.name, [file.name], title, "")


def with_links(page, pages):
    """The page's body in which names of other pages, outside of links and examples, are links."""
    targets = {html.escape(name): other.target for other in pages for name in other.names
               if other is not page}
    names = "|".join(map(re.escape, sorted(targets, key=len, reverse=True)))
    left_alone = r"<pre\b.*?</pre>|<a\b.*?</a>|<[^>]*>"
    return re.sub(
        rf"({left_alone})|(?<![\w/.-])({names})(?![\w/-])",
        lambda m: m[1] or f'<a href="{targets[m[2]]}">{m[2]}</a>', page.body, flags=re.DOTALL)


def contents(body):
    """The contents list of a body: its sections and their subsections."""
    entries = re.findall(r'<h([23])[^>]*\bid="([^"]*)"[^>]*>(.*?)</h\1>', body, re.DOTALL)
    items = "".join(f'<li class="level{level}"><a href="#{place}">{text_of(heading)}</a></li>\n'
                    for level, place, heading in entries)
    return f"<ul>\n{items}</ul>\n" if items else ""


def index(pages, examples):
    def entry(page):
        description = f"\n<dd>{page.description}</dd>" if page.description else ""
        return f'<dt><a href="{page.target}">{page.title}</a></dt>{description}\n'

    groups = (("Guides", [page for page in pages if not page.description]),
              ("Manual pages", [page for page in pages if page.description]),
              ("The example device", examples))
    return "".join(f"<h2>{title}</h2>\n<dl>\n{''.join(map(entry, group))}</dl>\n"
                   for title, group in groups if group)


def main():
    folder, version, *files = sys.argv[1:]
    folder = Path(folder)
    files = [Path(file) for file in files]
    examples = [finished_page(file) for file in files if file.suffix == ".html"]
    pages = [guide(file) if file.suffix == ".md" else manual_page(file)
             for file in files if file.suffix != ".html"]
    folder.mkdir(parents=True, exist_ok=True)
    for page in pages:
        navigation = f'<nav aria-label="Contents">\n{WAY_BACK}{contents(page.body)}</nav>\n'
        (folder / page.target).write_text(
            TEMPLATE.format(title=page.title, navigation=navigation,
                            body=with_links(page, pages + examples)), encoding="utf-8")
    (folder / "index.html").write_text(
        TEMPLATE.format(title=f"Manual of morvane {version}", navigation="",
                        body=index(pages, examples)), encoding="utf-8")
    (folder / "style.css").write_text("\n".join(
        Path(__file__).with_name(part).read_text(encoding="utf-8")
        for part in ("palette.css", "style.css")), encoding="utf-8")


if __name__ == "__main__":
    main()
