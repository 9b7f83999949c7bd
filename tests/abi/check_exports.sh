#!/usr/bin/env bash
# Guards the ABI of libsampling.so:
#  - the SONAME is set;
#  - the exported symbols are exactly those listed in exported_symbols.txt
#    (so an accidental export, or the removal of a public member, fails);
#  - nothing exported lies outside the public classes.
# Usage: check_exports.sh LIBRARY [--update]
set -euo pipefail
lib="$1"
list="$(dirname "$0")/exported_symbols.txt"
symbols=$(nm -D --defined-only "$lib" | awk '{ $1 = ""; $2 = ""; sub(/^  /, ""); print }' |
          c++filt | grep -vE '^_(init|fini)$' | LC_ALL=C sort -u)

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
        <<<"$symbols" || true)
if [[ -n "$leaks" ]]; then
  echo "exported symbols that belong to no public class:"
  echo "$leaks"
  fail=1
fi
if ! diff -u "$list" <(printf '%s\n' "$symbols") > /tmp/sampling-abi.diff; then
  echo "exported symbols differ from $list (- listed, + exported):"
  grep -E '^[-+][^-+]' /tmp/sampling-abi.diff || true
  echo "if the change is intended: tests/abi/check_exports.sh $lib --update"
  fail=1
fi
if [[ $fail -eq 0 ]]; then echo "exports ok ($(wc -l <<<"$symbols") symbols, SONAME $soname)"; fi
exit $fail
