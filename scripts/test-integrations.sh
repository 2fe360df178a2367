#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# test-integrations.sh: proves the files in integrations/ with the real programs: each finds, shows
# or recognises what stands in notebooks made here. Needs the release build; makes it when missing.
# shellcheck source=scripts/lib.sh
. "$(dirname "$0")/lib.sh"

need "${buildPackages[@]}" file git less libglib2.0-bin libxml2-utils parallel python3 recollcmd \
  ripgrep shared-mime-info
[ -x build/release/bin/qps ] || buildPreset release qps zbolefio

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
top=$PWD
export PATH=$top/build/release/bin:$top/integrations/ripgrep:$top/integrations/git:$top/integrations/cluster:$PATH
export HOME=$work/user XDG_CONFIG_HOME=$work/user/.config XDG_DATA_HOME=$work/user/.local/share
export XDG_CACHE_HOME=$work/user/.cache LC_ALL=C.UTF-8
mkdir -p "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME"

passed=0 failed=0

# check WHAT COMMAND...: counts, and says what failed.
check() {
  local what=$1
  shift
  if "$@" > "$work/check.txt" 2>&1; then
    passed=$((passed + 1))
    echo "ok      $what"
  else
    failed=$((failed + 1))
    echo "failed  $what"
    sed 's/^/        /' "$work/check.txt" | head -n 20
  fi
}

# same EXPECTED COMMAND...: the command prints exactly this.
same() {
  local expected=$1 printed
  shift
  printed=$("$@") || true
  [ "$printed" = "$expected" ] || {
    printf 'expected: %s\nprinted:  %s\n' "$expected" "$printed"
    return 1
  }
}

# shows WORD COMMAND...: the word stands in what the command prints.
shows() {
  local word=$1
  shift
  "$@" | grep -F -- "$word"
}

# notebook FILE WORD: the example notebook with a word of four letters in a cell's place.
notebook() {
  LC_ALL=C sed "s/Rent/$2/" examples/budget.wb2 > "$1"
}

ripgrepFinds() {
  RIPGREP_CONFIG_PATH=$top/integrations/ripgrep/ripgreprc rg --no-messages -l "$1" "$work/books"
}

# As ripgrep-all runs an adapter: the file on standard input, the text on standard output.
ripgrepAllAdapter() {
  python3 - "$top/integrations/ripgrep-all/config.jsonc" "$1" << 'PYTHON'
import json, re, subprocess, sys
text = re.sub(r"^\s*//.*$", "", open(sys.argv[1]).read(), flags=re.M)
(adapter,) = json.loads(text)["custom_adapters"]
with open(sys.argv[2], "rb") as notebook:
    subprocess.run([adapter["binary"], *adapter["args"]], stdin=notebook, check=True)
PYTHON
}

gitDiff() {
  local repository=$work/repository
  mkdir "$repository"
  git -C "$repository" init -q
  git -C "$repository" config user.name Tester
  git -C "$repository" config user.email tester@example.org
  git -C "$repository" config include.path "$top/integrations/git/config"
  cp integrations/git/attributes "$repository/.gitattributes"
  cp "$work/books/first.wb2" "$repository/BOOK.WB2"
  git -C "$repository" add .
  cp "$work/books/second.wb2" "$repository/BOOK.WB2"
  git -C "$repository" diff > "$work/diff.txt"
  grep "^-Plot	01-Jan-24" "$work/diff.txt" && grep "^+Plum	01-Jan-24" "$work/diff.txt"
}

# One damaged notebook among others must not end the log.
gitLogPasses() {
  local repository=$work/repository
  { head -c 700 examples/budget.wb2; tail -c +1001 examples/budget.wb2; } > "$repository/Cut.wB2"
  echo "no notebook" > "$repository/none.wb1"
  git -C "$repository" add . && git -C "$repository" commit -qm damaged
  git -C "$repository" log -p > "$work/log.txt" || return 1
  grep "^+qps: .*damaged\|^+qps: .*cut short.*are lost" "$work/log.txt" &&
    grep "^+qps: not a Quattro Pro" "$work/log.txt" && grep "^+Plum	01-Jan-24" "$work/log.txt"
}

# ripgrep reads on behind damage, whatever the case of the name.
ripgrepSalvages() {
  mkdir "$work/damaged"
  { head -c 700 "$work/books/second.wb2"; tail -c +1001 "$work/books/second.wb2"; } > "$work/damaged/Cut.wB2"
  RIPGREP_CONFIG_PATH=$top/integrations/ripgrep/ripgreprc rg --no-messages -l "$1" "$work/damaged"
}

lessShows() {
  install -D integrations/less/lessfilter "$XDG_CONFIG_HOME/lessfilter"
  LESSOPEN='| /usr/bin/lesspipe %s' less -f "$1"
}

recollFinds() {
  local settings=$work/recoll
  mkdir -p "$settings"
  cp integrations/recoll/mimemap integrations/recoll/mimeconf "$settings"
  echo "topdirs = $work/books" > "$settings/recoll.conf"
  recollindex -c "$settings"
  recollq -c "$settings" -b "$1" | sed 's,.*/,,'
}

# The type by content: files without an extension.
mimeType() {
  gio info -a standard::content-type "$1" | sed -n 's/.*content-type: //p'
}

xdgTypes() {
  install -D -m 644 -t "$XDG_DATA_HOME/mime/packages" integrations/mime/qpsreader.xml
  update-mime-database "$XDG_DATA_HOME/mime"
}

magicType() {
  file --brief --mime-type "$@"
}

# A task for each third of a few hundred notebooks, some of them damaged. They are killed as they work
# and run again: what comes out is that of a run in one go.
parallelLosesNothing() (
  mkdir "$work/many" && cd "$work/many" || return
  for i in $(seq 1000 1299); do LC_ALL=C sed "s/Rent/$i/" "$top/examples/budget.wb2" > "book $i.wb2"; done
  for i in $(seq 1 7); do head -c $((40 * i)) "$top/examples/budget.wb2" > "cut $i.wb2"; done
  find . -iname '*.wb[123]' -print0 | sort -z > list0
  qps csv --quiet --files0-from list0 --output-dir one --manifest one.jsonl && return 1

  for i in 1 2 3; do
    timeout -s KILL 0.02 qps-task $i 3 list0 out csv
  done
  if qps-join list0 out/manifests/*-of-3.jsonl > part.jsonl; then
    cmp part.jsonl one.jsonl || return 1
  fi
  seq 3 | parallel --will-cite --jobs 2 --sshlogin : --workdir . qps-task {} 3 list0 out csv || return 1
  qps-join list0 out/manifests/*-of-3.jsonl > out.jsonl &&
    cmp out.jsonl one.jsonl && diff -r out/files one && [ "$(wc -l < out.jsonl)" = 307 ]
)

# As Slurm runs it, with the variable that an array job sets.
slurmRunsATask() (
  cd "$work/many" &&
    SLURM_ARRAY_TASK_ID=2 sh "$top/integrations/cluster/qps-array.sbatch" 3 list0 array csv &&
    cmp array/manifests/2-of-3.jsonl <(sed -n '2~3p' one.jsonl)
)

mkdir "$work/books" "$work/types"
notebook "$work/books/first.wb2" Plot
notebook "$work/books/second.wb2" Plum
printf '\0\0\2\0\1\20' > "$work/types/version1"
tail -c +7 examples/budget.wb2 >> "$work/types/version1"
cp examples/budget.wb2 "$work/types/version6"
compound=examples/budget.wb3
cp "$compound" "$work/types/compound"
xdgTypes > "$work/check.txt" 2>&1

check "ripgrep finds a cell's text" same "$work/books/second.wb2" ripgrepFinds Plum
check "ripgrep-all's adapter prints cells" shows Plum ripgrepAllAdapter "$work/books/second.wb2"
check "git diff shows a changed cell" gitDiff
check "git log passes over damaged notebooks" gitLogPasses
check "ripgrep finds a text in a damaged notebook" same "$work/damaged/Cut.wB2" ripgrepSalvages Wed
check "less shows cells" shows Plum lessShows "$work/books/second.wb2"
check "recoll indexes and finds a notebook" same second.wb2 recollFinds Plum
for type in version1 version6 compound; do
  check "MIME type of $type without an extension" \
    same application/x-quattropro mimeType "$work/types/$type"
done
for type in version1 version6; do
  check "libmagic on $type" \
    same application/x-quattropro magicType -m integrations/libmagic/qpsreader.magic \
    "$work/types/$type"
done
check "libmagic on a compound document" \
  same application/x-quattropro magicType -e cdf -m integrations/libmagic/qpsreader.magic \
  "$work/types/compound"
check "the files for Tika and the MIME database are well-formed" \
  xmllint --noout integrations/tika/tika-config.xml integrations/mime/qpsreader.xml
check "GNU parallel loses and doubles nothing" parallelLosesNothing
check "a task of a Slurm array job" slurmRunsATask

echo "$passed passed, $failed failed, 0 skipped"
[ $failed = 0 ]
