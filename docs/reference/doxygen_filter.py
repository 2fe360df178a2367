#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""doxygen_filter.py HEADER: prints a public header with its comments marked as Doxygen wants them.

The headers are written to be read as they are, with plain comments. Here the one at a file's top, those
that stand by themselves and those behind a declaration become documentation. The number of lines stays.
"""
import re
import sys


def c_header(text):
    text = re.sub(r"\A/\* SPDX-.*\n", "/** @file\n", text)
    lines = []
    for line in text.split("\n"):
        if re.match(r"\s*/\*(?!\*)", line):
            line = line.replace("/*", "/**", 1)
        elif re.match(r"\s*#|\s*}|(struct|union) \w+;", line) is None:
            line = re.sub(r"([;,{\w])(\s+)/\*(?!\*)", r"\1\2/**<", line, count=1)
        lines.append(line)
    return "\n".join(lines)


def cpp_header(text):
    lines = []
    column = None  # where the comment behind a declaration began, while it goes on
    for number, line in enumerate(text.split("\n")):
        alone = re.match(r"(\s*)//(?!/)(.*)", line)
        behind = re.match(r"(.*[;,{)]\s*)//(?!/)(.*)", line) if not alone else None
        if number == 0:
            line = "/// @file"
        elif alone and column == len(alone[1]):
            line = f"{alone[1]}///<{alone[2]}"
        elif alone and "NOLINT" not in line:
            line = f"{alone[1]}///{alone[2]}"
            column = None
        elif behind:
            line = f"{behind[1]}///<{behind[2]}"
            column = len(behind[1])
        else:
            column = None
        lines.append(line)
    return "\n".join(lines)


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        text = file.read()
    sys.stdout.write(cpp_header(text) if sys.argv[1].endswith(".hpp") else c_header(text))


main()
