#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""assemble.py MODULE FOLDER: puts the page and the npm package together, around the module.

The page is FOLDER/qpsreader.html: scripts, styles and the module, packed, are in it. The package is
FOLDER/npm: what packages/npm holds, the module and the script that both share.
"""
import base64
import gzip
import hashlib
import html
import pathlib
import re
import shutil
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
SCRIPTS = ["viewer/js/instance.js", "viewer/page/sheet.js", "viewer/page/page.js"]


def read(name):
    return (ROOT / name).read_text(encoding="utf-8")


def version():
    parts = re.findall(r"VERSION_(?:MAJOR|MINOR|PATCH) (\d+)$", read("include/qpsreader/version.h"),
                       re.MULTILINE)
    return ".".join(parts)


def one_script():
    """The scripts behind one another, as one module; each has names of its own."""
    text = ""
    for name in SCRIPTS:
        source = re.sub(r"^import .*;\n", "", read(name), flags=re.MULTILINE)
        source = re.sub(r"^export ", "", source, flags=re.MULTILINE)
        source = re.sub(r"^\s*// (SPDX|@ts-check).*\n", "", source, flags=re.MULTILINE)
        source = re.sub(r"^\s*/\*\*.*?\*/\n", "", source, flags=re.MULTILINE | re.DOTALL)
        text += source
    assert "</script" not in text and "<!--" not in text
    return "\n// SPDX-License-Identifier: MIT\n" + text


def page(module):
    script = one_script()
    digest = base64.b64encode(hashlib.sha256(script.encode()).digest()).decode()
    packed = base64.b64encode(gzip.compress(module, 9, mtime=0)).decode()
    parts = {"SCRIPT_HASH": digest, "SCRIPT": script, "STYLE": read("viewer/page/page.css"),
             "MODULE": packed, "VERSION": version(), "LICENCES": html.escape(licences())}
    return re.sub("@([A-Z_]+)@", lambda found: parts[found[1]], read("viewer/page/page.html"))


def licences():
    return read("LICENSE").rstrip() + "\n\n\n" + read("viewer/licences.txt")


def package(module, folder):
    shutil.rmtree(folder, ignore_errors=True)
    shutil.copytree(ROOT / "packages/npm", folder,
                    ignore=shutil.ignore_patterns("node_modules"))
    manifest = folder / "package.json"
    manifest.write_text(manifest.read_text().replace("@VERSION@", version()))
    shutil.copy(ROOT / "viewer/js/instance.js", folder)
    (folder / "LICENSE").write_text(licences())
    (folder / "qpsreader.wasm").write_bytes(module)


def main():
    module = pathlib.Path(sys.argv[1]).read_bytes()
    folder = pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "qpsreader.html").write_text(page(module), encoding="utf-8")
    if (ROOT / "packages/npm/package.json").exists():
        package(module, folder / "npm")


main()
