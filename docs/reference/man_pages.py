#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""man_pages.py INCLUDE FOLDER: writes the manual pages of section 3, made of the C headers.

Each operation has a page: its prototype, and the comment above it, of which paragraphs that begin with
"Returns" are the return value. Each header has a page with its first comment and its declarations as they
stand, by the name of every structure in it too. (Doxygen makes pages of headers only.)
"""
import pathlib
import re
import sys

HEADERS = {"qps_reader.h": "qpsreader", "cell_value.h": "qpsreader_cell_value",
           "host_tables.h": "qpsreader_host_tables", "ss_item.h": "qpsreader_ss_item",
           "worksheet_list.h": "qpsreader_worksheet_list", "ole_interface.h": "qpsreader_ole_interface"}
COMMENT = r"/\*(?:[^*]|\*(?!/))*\*/"
OPERATION = re.compile(rf"^({COMMENT})\n(?:QPS_API ([^;]*?(\w+)\([^;]*\));)", re.M)
TYPE = re.compile(r"^(?:typedef )?(?:struct|union) (\w+) {|^QPS_API extern const \w+ (\w+)", re.M)


def text_of(comment):
    lines = [re.sub(r"^ \* ?", "", line) for line in comment[2:-2].strip("\n").split("\n")]
    lines = [line for line in lines if "SPDX-" not in line]
    return re.sub(r"(?m)^ (?=\S)", "", "\n".join(lines)).strip()


def plain(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return re.sub(r"(?m)^([.'])", r"\\&\1", text)


def prose(text):
    return re.sub(r"`([^`]*)`", r"\\fI\1\\fR", plain(text))


def paragraphs(text):
    """Paragraphs of running text, and of lines that stay as they are because they are indented."""
    parts = re.split(r"\n\s*\n", text.strip("\n"))
    return "\n.PP\n".join(listing(part) if part.startswith("    ") else prose(part) for part in parts)


def listing(text):
    return f".nf\n{plain(text)}\n.fi"


def summary(text):
    """What NAME says: the first sentence, up to a colon or a parenthesis."""
    text = re.sub(r"^\w+: ", "", " ".join(text.split()))
    sentence = re.split(r"\.\s|\.$|:| \(|;", text, maxsplit=1)[0].replace("`", "")
    return plain(sentence[0].lower() + sentence[1:])


def page(name, header, title, synopsis, sections, see, aliases=()):
    names = ", ".join([name, *aliases])
    see = ", ".join(f"\n.BR {plain(other)} (3)" for other in see if other != name).replace(", \n", " ,\n")
    text = [f'.\\" Made from qpsreader/{header}.', f'.TH {name} 3 "" "qpsreader" "Library Functions Manual"',
            ".nh", ".ad l", ".SH NAME", f"{names} \\- {title}", ".SH SYNOPSIS", ".nf",
            f"\\fB#include <qpsreader/{plain(header)}>\\fR", *synopsis, ".fi", *sections, ".SH SEE ALSO" + see, ""]
    return "\n".join(text)


def operations(source):
    return {match[3]: (text_of(match[1]), match[2]) for match in OPERATION.finditer(source)}


def types(source):
    return [match[1] or match[2] for match in TYPE.finditer(source)]


def operation_page(name, header, text, prototype, see):
    returns = [part for part in text.split("\n\n") if part.startswith("Returns")]
    rest = [part for part in text.split("\n\n") if part not in returns]
    sections = [".SH DESCRIPTION", paragraphs("\n\n".join(rest))]
    if returns:
        sections += [".SH RETURN VALUE", paragraphs("\n\n".join(returns))]
    prototype = prototype.replace("\n" + " " * len("QPS_API "), "\n")
    synopsis = ["", f"\\fB{plain(prototype)};\\fR", "", "Link with \\-lqpsreader (pkg\\-config qpsreader)."]
    return page(name, header, summary(text), synopsis, sections, see)


def header_page(name, header, source, see):
    comment = re.match(COMMENT, source)
    text = text_of(comment[0])
    body = source[comment.end():].split('extern "C" {\n#endif\n', 1)[1].split("#ifdef __cplusplus")[0]
    body = re.sub(r"\n{3,}", "\n\n", OPERATION.sub("", body))
    sections = [".SH DESCRIPTION", paragraphs(text), ".SH DECLARATIONS", listing(body.strip("\n"))]
    return page(name, header, summary(text), [], sections, see, types(source))


def main():
    include, folder = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    sources = {header: (include / "qpsreader" / header).read_text(encoding="utf-8") for header in HEADERS}
    names = [name for source in sources.values() for name in operations(source)]
    see = [*HEADERS.values(), *names]
    for header, source in sources.items():
        for name, (text, prototype) in operations(source).items():
            (folder / f"{name}.3").write_text(operation_page(name, header, text, prototype, see), encoding="utf-8")
        title = HEADERS[header]
        (folder / f"{title}.3").write_text(header_page(title, header, source, see), encoding="utf-8")
        for name in types(source):
            (folder / f"{name}.3").write_text(f".so man3/{title}.3\n", encoding="utf-8")


main()
