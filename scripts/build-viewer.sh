#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# build-viewer.sh: builds the WebAssembly module, the page build/viewer/qpsreader.html, which is one
# file with everything in it, and the npm package in build/viewer/npm.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

need cmake ninja-build python3 rapidjson-dev
needWasm
buildPreset wasm qpsreader_wasm
python3 viewer/assemble.py build/wasm/bin/qpsreader.wasm build/viewer
