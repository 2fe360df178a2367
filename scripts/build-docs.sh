#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# build-docs.sh: makes the HTML reference of the C and C++ interfaces, build/docs/html, and the manual
# pages of section 3, build/docs/man3. A warning is an error.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

need doxygen python3
rm -rf build/docs
mkdir -p build/docs build/log
QPS_VERSION=$(projectVersion) quietly doxygen doxygen docs/reference/Doxyfile
PYTHONDONTWRITEBYTECODE=1 python3 docs/reference/man_pages.py include build/docs/man3
echo "build/docs/html/index.html, build/docs/man3"
