# SPDX-License-Identifier: MIT
"""The build tree's package and tool, and the notebooks that the tests of the tool make."""
import os
import sys
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ.get("QPS_BUILD", TOP / "build/python"))
os.environ.setdefault("QPS", str(BUILD / "bin/qps"))
os.environ.setdefault("QPS_SOURCE", str(TOP))
for folder in (BUILD / "python", TOP / "tests/tool", TOP / "integrations/dask"):
    sys.path.insert(0, str(folder))
