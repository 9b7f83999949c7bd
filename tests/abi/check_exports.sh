#!/usr/bin/env bash
# Guards the ABI of libsampling.so:
#  - the SONAME is set;
#  - the exported symbols are exactly those listed in exported_symbols.txt
#    (so an accidental export, or the removal of a public member, fails);
#  - nothing exported lies outside the public classes;
#  - loading the library runs no code of ours (no static initialisers).
# Weak symbols (inline members the optimiser may or may not emit out of line)
# are held to the public-class rule but left out of the list, so the list is
# the same for every build type.
# Usage: check_exports.sh LIBRARY [--update]
set -euo pipefail
lib="$1"
list="$(dirname "$0")/exported_symbols.txt"
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
leaks=$(grep -vE '^(Sampling|Sampler2d|[A-Za-z]+Sampler2d|SampleRayGenerator|[A-Za-z]+RayGenerator)(::|<)' \
        <<<"$all_symbols" || true)
if [[ -n "$leaks" ]]; then
  echo "exported symbols that belong to no public class:"
  echo "$leaks"
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
  echo "if the change is intended: tests/abi/check_exports.sh $lib --update"
  fail=1
fi
if [[ $fail -eq 0 ]]; then echo "exports ok ($(wc -l <<<"$symbols") symbols, SONAME $soname)"; fi
exit $fail
