#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""sbom.py VERSION SUPPLIER ARTEFACT...: writes ARTEFACT.spdx.json beside each, its software bill of
materials (SPDX 2.3): every file in it with its sums, what was compiled in and of which version, and which
packages it depends on. Part of scripts/release.sh, on Debian; the time is SOURCE_DATE_EPOCH.
"""
import datetime
import hashlib
import io
import json
import os
import pathlib
import re
import subprocess
import sys
import tarfile
import zipfile

ROOT = pathlib.Path(__file__).resolve().parent.parent

# What is compiled in: its licence, and the Debian package that it comes in, or the header among the
# sources that it is compiled from which has its version.
CLI11 = ("CLI11", "BSD-3-Clause", "libcli11-dev")
RAPIDJSON = ("RapidJSON", "MIT", "rapidjson-dev")
GCC = ("libgcc and libstdc++", "GPL-3.0-or-later WITH GCC-exception-3.1", "gcc-mingw-w64-x86-64-posix")
MINGW = ("mingw-w64 runtime", "ZPL-2.1", "mingw-w64-x86-64-dev")
LIBCXX = ("libc++ and libc++abi", "Apache-2.0 WITH LLVM-exception", "libc++-19-dev-wasm32")
BUILTINS = ("compiler-rt", "Apache-2.0 WITH LLVM-exception", "libclang-rt-19-dev-wasm32")
WASI = ("wasi-libc", "MIT", "wasi-libc")
XLSXWRITER = ("libxlsxwriter", "BSD-2-Clause", "build/sources/libxlsxwriter/include/xlsxwriter.h")
ZLIB = ("zlib and minizip", "Zlib", "build/sources/zlib/zlib.h")
WEB = [RAPIDJSON, LIBCXX, BUILTINS, WASI, XLSXWRITER, ZLIB]
COMPILED_IN = [
    (r"qpsreader-tools_.*\.deb", [CLI11, RAPIDJSON]),
    (r".*\.deb", []),
    (r".*-windows-.*\.zip", [CLI11, GCC, MINGW, *WEB]),
    (r".*\.(html|tgz)", WEB),
    (r".*\.tar\.gz", []),
]


def members_of_tar(data):
    with tarfile.open(fileobj=io.BytesIO(data)) as tar:
        return [(one.name, tar.extractfile(one).read()) for one in tar if one.isfile()]


def members(path):
    """The files in an artefact, by name: (name, bytes)."""
    data = path.read_bytes()
    if path.suffix == ".deb":
        return members_of_tar(subprocess.run(["dpkg-deb", "--fsys-tarfile", path], check=True,
                                             stdout=subprocess.PIPE).stdout)
    if path.suffix == ".zip":
        with zipfile.ZipFile(path) as archive:
            return [(name, archive.read(name)) for name in archive.namelist() if not name.endswith("/")]
    if path.suffix in (".gz", ".tgz"):
        return members_of_tar(data)
    return [(path.name, data)]


def sums(data, *names):
    return [{"algorithm": name, "checksumValue": hashlib.new(name.lower(), data).hexdigest()} for name in names]


def of_part(name, licence, source):
    """The version of what is compiled in, and its locator."""
    if source.endswith(".h"):
        version = re.search(r'_VERSION "([^"]*)"', (ROOT / source).read_text(encoding="utf-8"))[1]
        return name, version, licence, locator(f"pkg:generic/{pathlib.Path(source).parts[2]}@{version}")
    found = subprocess.run(["dpkg-query", "-W", "-f=${Version}", source], check=True, stdout=subprocess.PIPE)
    version = found.stdout.decode()
    return name, version, licence, locator(f"pkg:deb/debian/{source}@{version}")


def depends(path):
    """The names of the packages that a Debian package depends on; the first of alternatives."""
    if path.suffix != ".deb":
        return []
    field = subprocess.run(["dpkg-deb", "-f", path, "Depends"], check=True, stdout=subprocess.PIPE).stdout.decode()
    return sorted({re.match(r"\s*([\w.+-]+)", one)[1] for one in field.split(",") if one.strip()})


def package(identifier, name, version, licence, **more):
    return {"SPDXID": f"SPDXRef-{identifier}", "name": name, "versionInfo": version,
            "downloadLocation": "NOASSERTION", "filesAnalyzed": False, "licenseConcluded": licence,
            "licenseDeclared": licence, "copyrightText": "NOASSERTION", **more}


def locator(purl):
    return {"externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                              "referenceLocator": purl.replace("+", "%2B")}]}


def bill(path, version, supplier):
    data = path.read_bytes()
    files = [{"SPDXID": f"SPDXRef-File-{number}", "fileName": "./" + name.removeprefix("./"),
              "checksums": sums(content, "SHA1", "SHA256"), "licenseConcluded": "NOASSERTION",
              "copyrightText": "NOASSERTION"} for number, (name, content) in enumerate(members(path))]
    code = hashlib.sha1("".join(sorted(one["checksums"][0]["checksumValue"] for one in files)).encode())
    artefact = package("Artefact", "qpsreader", version, "MIT", packageFileName=path.name,
                       supplier="Organization: " + re.sub(r" <(.*)>", r" (\1)", supplier),
                       checksums=sums(data, "SHA256"), filesAnalyzed=True,
                       packageVerificationCode={"packageVerificationCodeValue": code.hexdigest()},
                       licenseInfoFromFiles=["NOASSERTION"],
                       copyrightText="Copyright (c) 2026 The qpsreader maintainers",
                       hasFiles=[one["SPDXID"] for one in files])
    packages = [artefact]
    relations = [("SPDXRef-DOCUMENT", "DESCRIBES", "SPDXRef-Artefact")]
    compiled_in = next(parts for pattern, parts in COMPILED_IN if re.fullmatch(pattern, path.name))
    if compiled_in:
        artefact["licenseConcluded"] = "NOASSERTION"  # ours is MIT; that of the whole is for who uses it to tell
    for number, part in enumerate(compiled_in):
        name, version_of_part, licence, more = of_part(*part)
        packages.append(package(f"Part-{number}", name, version_of_part, licence, **more))
        relations.append(("SPDXRef-Artefact", "STATIC_LINK", f"SPDXRef-Part-{number}"))
    for number, name in enumerate(depends(path)):
        packages.append(package(f"Dependency-{number}", name, "NOASSERTION", "NOASSERTION",
                                **locator(f"pkg:deb/debian/{name}")))
        relations.append(("SPDXRef-Artefact", "DEPENDS_ON", f"SPDXRef-Dependency-{number}"))
    made = datetime.datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), datetime.timezone.utc)
    return {"spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT", "name": path.name,
            "documentNamespace": f"https://spdx.org/spdxdocs/{path.name}-{artefact['checksums'][0]['checksumValue']}",
            "creationInfo": {"created": made.strftime("%Y-%m-%dT%H:%M:%SZ"),
                             "creators": [f"Tool: qpsreader-sbom-{version}", artefact["supplier"]]},
            "packages": packages, "files": files,
            "relationships": [{"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}
                              for one, kind, other in relations]}


def main():
    version, supplier, *artefacts = sys.argv[1:]
    for path in map(pathlib.Path, artefacts):
        text = json.dumps(bill(path, version, supplier), indent=1, ensure_ascii=False)
        path.with_name(path.name + ".spdx.json").write_text(text + "\n", encoding="utf-8")


main()
