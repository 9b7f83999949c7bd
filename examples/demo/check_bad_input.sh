#!/usr/bin/env bash
# Runs the demo on bad input and checks that each case ends with a message on
# stderr and a non-zero exit status, never a crash (a signal) or success; then
# checks that a small valid OBJ does render.
# Usage: examples/demo/check_bad_input.sh [path/to/sampling_demo]
set -uo pipefail
demo=${1:-build/release/examples/sampling_demo}
if [[ ! -x $demo ]]; then
  echo "check_bad_input: no demo binary at '$demo' (run 'make demo' first)" >&2
  exit 2
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

printf 'v 0 0 0\nv 1 0 0\nf 1 2 3\n' >"$work/missing_vertex.obj"
printf 'v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 -7\n' >"$work/negative_index.obj"
printf 'v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 0\n' >"$work/zero_index.obj"
printf 'v 1e999 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n' >"$work/infinite.obj"
printf 'v nan 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n' >"$work/nan.obj"
printf 'v inf 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n' >"$work/inf_word.obj"
# One polygon of 200,000 corners on a circle (refused at once, not triangulated for a minute).
awk 'BEGIN { n = 200000; for (i = 0; i < n; ++i) printf "v %.9f %.9f 0\n", cos(6.283185307 * i / n), sin(6.283185307 * i / n);
             printf "f"; for (i = 1; i <= n; ++i) printf " %d", i; printf "\n" }' >"$work/huge_polygon.obj"
mkdir -p "$work/blocked/index.html"
printf 'this is not\na mesh\n' >"$work/text.obj"
head -c 4096 /dev/urandom >"$work/binary.obj"
printf 'v 0 0 0\nv 0 0 0\nv 0 0 0\nf 1 2 3\n' >"$work/collapsed.obj"

failures=0
# expect_failure NAME ARGS...: the run must exit 1 or 2 and print to stderr.
expect_failure() {
  local name=$1
  shift
  "$demo" --out "$work/out" "$@" >"$work/stdout" 2>"$work/stderr"
  local status=$?
  if [[ $status -ne 1 && $status -ne 2 ]] || [[ ! -s $work/stderr ]]; then
    echo "FAIL $name: exit status $status, stderr: $(head -c 200 "$work/stderr")"
    failures=$((failures + 1))
  else
    echo "ok   $name (exit $status): $(head -n 1 "$work/stderr")"
  fi
}

expect_failure "missing OBJ file" --obj "$work/no_such_file.obj"
expect_failure "folder as OBJ file" --obj "$work"
expect_failure "face with a missing vertex" --obj "$work/missing_vertex.obj"
expect_failure "negative face index out of range" --obj "$work/negative_index.obj"
expect_failure "zero face index" --obj "$work/zero_index.obj"
expect_failure "infinite coordinate" --obj "$work/infinite.obj"
expect_failure "nan coordinate" --obj "$work/nan.obj"
expect_failure "inf coordinate" --obj "$work/inf_word.obj"
expect_failure "200,000-corner polygon" --obj "$work/huge_polygon.obj"
expect_failure "text that is not an OBJ" --obj "$work/text.obj"
expect_failure "binary file" --obj "$work/binary.obj"
expect_failure "mesh collapsed to a point" --obj "$work/collapsed.obj"
expect_failure "--size 0x5" --size 0x5
expect_failure "--size abc" --size abc
expect_failure "--size 5000x10" --size 5000x10
expect_failure "--size 64x" --size 64x
expect_failure "--spp -3" --spp -3
expect_failure "--spp 0" --spp 0
expect_failure "--spp 99999999999" --spp 99999999999
expect_failure "--spp without a value" --spp
expect_failure "unknown option" --frobnicate
expect_failure "unwritable output folder" --out /proc/sampling_demo/out
expect_failure "output folder that is a file" --out /dev/null
expect_failure "output name taken by a folder" --out "$work/blocked"
if [[ $(find "$work/blocked" -type f | wc -l) -ne 0 ]]; then
  echo "FAIL a refused output folder received files"
  failures=$((failures + 1))
fi

# And the good path through the same reader: a small valid mesh renders.
printf 'v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0.5 0.5 1\nf 1 2 5\nf 2 3 5\nf 3 4 5\nf 4 1 5\n' \
  >"$work/pyramid.obj"
if "$demo" --out "$work/good" --obj "$work/pyramid.obj" --size 32x24 --spp 2 >"$work/stdout" \
  2>"$work/stderr" && [[ -s $work/good/ao.png ]]; then
  echo "ok   a valid OBJ renders"
else
  echo "FAIL a valid OBJ: $(head -c 200 "$work/stderr")"
  failures=$((failures + 1))
fi

if [[ $failures -ne 0 ]]; then
  echo "check_bad_input: $failures case(s) failed" >&2
  exit 1
fi
echo "check_bad_input: every bad input was refused cleanly"
