# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# What the scripts here share; each sources it first. It moves to the top of the source tree and
# leaves the caller's folder in `calledFrom`.
set -euo pipefail
# shellcheck disable=SC2034
calledFrom=$PWD
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# What a build of the release preset takes, and what the short form of the tests takes beyond that.
# shellcheck disable=SC2034
buildPackages=(cmake ninja-build g++ libcli11-dev libgmock-dev libgtest-dev libseccomp-dev
  libxlsxwriter-dev nettle-dev rapidjson-dev)
# shellcheck disable=SC2034
testPackages=(clang-format-14 locales pkg-config python3 python3-html5lib python3-jsonschema python3-olefile
  python3-openpyxl)

die() {
  printf '%s: %s\n' "${0##*/}" "$*" >&2
  exit 1
}

# The version of the tree, as the public header has it: 1.2.3.
projectVersion() {
  sed -n 's/^#define QPSREADER_VERSION_[A-Z]* \([0-9]*\)$/\1/p' include/qpsreader/version.h | paste -sd .
}

# need PACKAGE...: installs the Debian packages that are missing, or says which they are when it
# may not. Elsewhere than on Debian the build itself reports what it lacks.
need() {
  command -v dpkg-query > /dev/null || return 0
  local package missing=() sudo=()
  for package in "$@"; do
    dpkg-query -W -f='${db:Status-Status}\n' "$package" 2> /dev/null | grep -qx installed ||
      missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  if [ "$(id -u)" != 0 ]; then
    sudo -n true 2> /dev/null || die "please install these Debian packages: ${missing[*]}"
    sudo=(sudo -n)
  fi
  echo "installing ${missing[*]}" >&2
  local apt=("${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -y -qq -o DPkg::Lock::Timeout=600)
  # Once, also for a script that another script here calls.
  if [ -z "${qpsFreshLists:-}" ]; then
    quietly apt-update "${apt[@]}" update || echo "${0##*/}: working with the old package lists" >&2
    export qpsFreshLists=1
  fi
  quietly apt-install "${apt[@]}" install --no-install-recommends "${missing[@]}" ||
    die "could not install ${missing[*]}"
}

# quietly NAME COMMAND...: runs the command with its output in build/log/NAME.txt, and shows the
# end of that when it fails.
quietly() {
  local log=build/log/$1.txt
  shift
  mkdir -p build/log
  "$@" > "$log" 2>&1 && return
  local status=$?
  { grep -E -A 3 'FAILED: |error: ' "$log" | head -n 60 || true; tail -n 20 "$log"; } >&2
  echo "${0##*/}: failed: $* (whole output: $log)" >&2
  return $status
}

# buildPreset PRESET [TARGET...]: configures and builds, quietly, and goes on after a failure to show
# every one.
buildPreset() {
  local preset=$1
  shift
  quietly "$preset-configure" cmake --preset "$preset" &&
    quietly "$preset-build" cmake --build --preset "$preset" ${1:+--target "$@"} -- -k 0
}

# The archive that this Debian system takes its packages from; nothing elsewhere.
debianMirror() {
  # shellcheck disable=SC2016
  apt-get indextargets --format '$(REPO_URI)' 'Identifier: Packages' 'Origin: Debian' 2> /dev/null | head -n 1
}

# debianSources PACKAGE...: the sources of Debian packages as their makers gave them, by name in
# build/sources.
debianSources() {
  local package missing=() folder=$PWD/build/sources
  local apt=(apt-get -q -o Dir::Etc::SourceList="$folder/apt/sources.list" -o Dir::Etc::SourceParts=/dev/null
    -o Dir::State::Lists="$folder/apt/lists" -o Dir::Cache="$folder/apt")
  for package in "$@"; do
    [ -e "$folder/$package" ] || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  [ -n "$(debianMirror)" ] || die "no Debian archive to take the sources of ${missing[*]} from"
  rm -rf "$folder/apt"
  mkdir -p "$folder/apt/lists"
  echo "deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $(debianMirror)" \
    "$(. /etc/os-release && echo "$VERSION_CODENAME") main" > "$folder/apt/sources.list"
  quietly sources-lists "${apt[@]}" update || die "no lists of Debian's sources"
  for package in "${missing[@]}"; do
    mkdir -p "$folder/apt/$package/files"
    quietly "sources-$package" \
      env -C "$folder/apt/$package" "${apt[@]}" source --download-only "$package" ||
      die "no sources of $package"
    tar -xf "$folder/apt/$package"/*.orig.tar.* --strip-components=1 -C "$folder/apt/$package/files"
    mv "$folder/apt/$package/files" "$folder/$package"
  done
  rm -rf "$folder/apt"
}

# What compiles to WebAssembly, and what is compiled with this project's code.
needWasm() {
  need googletest clang-19 lld-19 libc++-19-dev-wasm32 libc++abi-19-dev-wasm32 \
    libclang-rt-19-dev-wasm32 wasi-libc
  debianSources libxlsxwriter zlib
}

# freshSystem ROOT PACKAGES CACHE: a minimal Debian system of this one's release with these packages
# in the empty folder ROOT. Downloads stay in the folder CACHE.
freshSystem() {
  quietly debootstrap debootstrap --variant=minbase --cache-dir="$3" --include="$2" \
    "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$1" "$(debianMirror)"
}

# inside ROOT CACHE COMMAND: runs a shell's words in such a system, with an environment of its own.
# apt's downloads stay in the folder CACHE; the mounts end with the command.
inside() {
  # shellcheck disable=SC2016
  unshare --mount sh -c '
    mount --bind "$2" "$1/var/cache/apt/archives" &&
    mount -t proc proc "$1/proc" && mount -t devpts -o newinstance,ptmxmode=666 devpts "$1/dev/pts" &&
    exec chroot "$1" env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive \
      ${http_proxy:+http_proxy="$http_proxy"} sh -c "$3"' sh "$1" "$2" "$3"
}

# says WHAT LOG PATTERN COMMAND...: one more check in `passed` or `failed`: the command, in a process of
# its own, ends well, and a line of its output matches.
says() {
  local what=$1 log=$2 pattern=$3 before=$SECONDS
  shift 3
  if ("$@") > "$log" 2>&1 && grep -qE -- "$pattern" "$log"; then
    passed=$((passed + 1))
    echo "ok      $what, $((SECONDS - before)) s"
  else
    failed=$((failed + 1))
    echo "failed  $what ($log)"
    tail -n 40 "$log" | sed 's/^/        /'
  fi
}
