# SPDX-License-Identifier: MIT
"""What pip calls to make a wheel (PEP 517): CMake builds and installs the package into a folder, and
that folder is the wheel's contents. One wheel serves every Python from 3.11 on."""
import base64
import hashlib
import os
import re
import subprocess
import sys
import sysconfig
import tarfile
import tempfile
import tomllib
import zipfile
from pathlib import Path

_TOP = Path(__file__).resolve().parent.parent
_PYTHON_TAG = "cp311-abi3"


def _project():
    project = tomllib.loads((_TOP / "pyproject.toml").read_text("utf-8"))["project"]
    header = (_TOP / "include/qpsreader/version.h").read_text("utf-8")
    project["version"] = ".".join(re.findall(r"VERSION_(?:MAJOR|MINOR|PATCH) ([0-9]+)$", header,
                                             re.MULTILINE))
    return project


def _build(work, destination):
    build = work / "build"
    commands = [
        ["cmake", "-S", _TOP, "-B", build, "-DCMAKE_BUILD_TYPE=Release",
         "-DQPSREADER_BUILD_PYTHON=ON", "-DQPSREADER_BUILD_TESTS=OFF", "-DQPSREADER_BUILD_TOOL=OFF",
         "-DQPSREADER_INSTALL=OFF", f"-DQPSREADER_PYTHON_DIR={destination}",
         f"-DPython3_EXECUTABLE={sys.executable}"],
        ["cmake", "--build", build, "--parallel", str(os.cpu_count()), "--target",
         "qps_python_files"],
        ["cmake", "--install", build, "--component", "python", "--strip"],
    ]
    for command in commands:
        subprocess.run(command, check=True)


def _metadata(project):
    return (f"Metadata-Version: 2.1\nName: {project['name']}\nVersion: {project['version']}\n"
            f"Summary: {project['description']}\nLicense: {project['license']['text']}\n"
            f"Requires-Python: {project['requires-python']}\n")


# Without it pip makes the whole wheel, only to read this.
def prepare_metadata_for_build_wheel(metadata_directory, config_settings=None):
    project = _project()
    info = f"{project['name']}-{project['version']}.dist-info"
    folder = Path(metadata_directory) / info
    folder.mkdir()
    (folder / "METADATA").write_text(_metadata(project), "utf-8")
    return info


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    project = _project()
    platform = re.sub(r"[-.]", "_", sysconfig.get_platform())
    stem = f"{project['name']}-{project['version']}"
    tag = f"{_PYTHON_TAG}-{platform}"
    info = f"{stem}.dist-info"
    name = f"{stem}-{tag}.whl"
    with tempfile.TemporaryDirectory() as folder, \
            zipfile.ZipFile(Path(wheel_directory) / name, "w", zipfile.ZIP_DEFLATED) as wheel:
        root = Path(folder) / "root"
        _build(Path(folder), root)
        files = {str(path.relative_to(root)): path.read_bytes()
                 for path in sorted(root.rglob("*")) if path.is_file()}
        files[f"{info}/METADATA"] = _metadata(project).encode()
        files[f"{info}/WHEEL"] = (f"Wheel-Version: 1.0\nGenerator: {project['name']}\n"
                                  f"Root-Is-Purelib: false\nTag: {tag}\n").encode()
        files[f"{info}/LICENSE"] = (_TOP / "LICENSE").read_bytes()
        record = f"{info}/RECORD"
        lines = []
        for path, data in files.items():
            digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
            lines.append(f"{path},sha256={digest},{len(data)}\n")
            wheel.writestr(path, data)
        wheel.writestr(record, "".join(lines) + f"{record},,\n")
    return name


def build_sdist(sdist_directory, config_settings=None):
    project = _project()
    stem = f"{project['name']}-{project['version']}"
    listed = subprocess.run(["git", "-C", _TOP, "ls-files", "-z"], check=True,
                            stdout=subprocess.PIPE).stdout
    with tarfile.open(Path(sdist_directory) / f"{stem}.tar.gz", "w:gz") as archive:
        for path in filter(None, os.fsdecode(listed).split("\0")):
            archive.add(_TOP / path, f"{stem}/{path}")
        with tempfile.NamedTemporaryFile() as info:
            info.write(_metadata(project).encode())
            info.flush()
            archive.add(info.name, f"{stem}/PKG-INFO")
    return f"{stem}.tar.gz"
