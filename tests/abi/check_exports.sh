#!/usr/bin/env bash
# Guards the ABI of libsampling.so:
#  - the SONAME is set;
#  - the exported symbols are exactly those listed in exported_symbols.txt
#    (so an accidental export, or the removal of a public member, fails);
#  - nothing exported lies outside the public classes, and every exported
#    member is declared public in the headers (private and protected members
#    defined in .cc files are declared SAMPLING_LOCAL: sampling_export.h);
#  - loading the library runs no code of ours (no static initialisers).
# Weak symbols (inline members the optimiser may or may not emit out of line)
# are held to the public-class rule but left out of the list, so the list is
# the same for every build type.
# Usage: check_exports.sh LIBRARY [--update]
set -euo pipefail
lib="$1"
here="$(cd "$(dirname "$0")" && pwd)"
list="$here/exported_symbols.txt"
headers="$here/../../sampling"
names() { awk '{ $1 = ""; $2 = ""; sub(/^  /, ""); print }' | c++filt | grep -vE '^(_init|_fini|__odr_asan\..*)$' |
          LC_ALL=C sort -u; }
all_symbols=$(nm -D --defined-only "$lib" | names)
symbols=$(nm -D --defined-only "$lib" | grep -vE ' [WVwv] ' | names)

if [[ "${2:-}" == "--update" ]]; then
  printf '%s\n' "$symbols" > "$list"
  echo "wrote $(wc -l < "$list") symbols to $list"
  exit 0
fi

fail=0
soname=$(readelf -d "$lib" | sed -n 's/.*Library soname: \[\(.*\)\].*/\1/p')
if [[ "$soname" != libsampling.so.* ]]; then
  echo "missing or unexpected SONAME: '$soname'"
  fail=1
fi
leaks=$(grep -vE '^(Sampling|SamplingVersion|Sampler2d|[A-Za-z]+Sampler2d|SampleRayGenerator|[A-Za-z]+RayGenerator)(::|<)' \
        <<<"$all_symbols" || true)
if [[ -n "$leaks" ]]; then
  echo "exported symbols that belong to no public class:"
  echo "$leaks"
  fail=1
fi
# "Class member" for every member declared under `public:` in a class marked
# SAMPLING_API (one declaration starts per line at two spaces of indent).
public_members=$(find "$headers" -name '*.h' -exec awk '
  /^class SAMPLING_API / { cls = $3; access = "private"; next }
  cls != "" && /^};/ { cls = ""; next }
  cls != "" && /^ (public|private|protected):/ { access = $1; next }
  cls != "" && access == "public:" && /^  [^ \/]/ {
    if (match($0, /[A-Za-z_~][A-Za-z_0-9]*\(/)) print cls, substr($0, RSTART, RLENGTH - 1)
    else if (match($0, /[A-Za-z_][A-Za-z_0-9]*;/)) print cls, substr($0, RSTART, RLENGTH - 1)
  }' {} + | LC_ALL=C sort -u)
not_public=$(sed -nE 's/^([A-Za-z0-9_]+)::(~?[A-Za-z0-9_]+)([(<].*)?$/\1 \2/p' <<<"$all_symbols" |
             LC_ALL=C sort -u | LC_ALL=C comm -23 - <(printf '%s\n' "$public_members") || true)
if [[ -n "$not_public" ]]; then
  echo "exported members that the headers do not declare public (declare them SAMPLING_LOCAL):"
  echo "$not_public"
  fail=1
fi
initialisers=$(nm "$lib" 2>/dev/null | grep -E '_GLOBAL__sub_I' || true)
if [[ -n "$initialisers" ]]; then
  echo "static initialisers run when the library loads:"
  echo "$initialisers"
  fail=1
fi
difference=$(diff -u "$list" <(printf '%s\n' "$symbols") || true)
if [[ -n "$difference" ]]; then
  echo "exported symbols differ from $list (- listed, + exported):"
  grep -E '^[-+][^-+]' <<<"$difference" || true
  echo "if the change is intended (a public member added, changed or removed), regenerate the"
  echo "list and commit it with the change:"
  echo "  tests/abi/check_exports.sh $lib --update   (from the source folder)"
  fail=1
fi
if [[ $fail -eq 0 ]]; then echo "exports ok ($(wc -l <<<"$symbols") symbols, SONAME $soname)"; fi
exit $fail
