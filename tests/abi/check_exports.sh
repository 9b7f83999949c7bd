#!/usr/bin/env bash
# Checks the dynamic symbol table of libsampling.so: the SONAME is set, the
# public classes are exported, and no internal helper leaks out.
set -euo pipefail
lib="$1"
symbols=$(nm -D --defined-only "$lib" | c++filt)
fail=0
soname=$(readelf -d "$lib" | sed -n 's/.*Library soname: \[\(.*\)\].*/\1/p')
if [[ "$soname" != libsampling.so.* ]]; then
  echo "missing or unexpected SONAME: '$soname'"
  fail=1
fi
for wanted in 'Sampling::to_unit_disk' 'Sampling::shuffle_index' 'Sampling::disk_uniform' \
              'StratifiedSampler2d::init' 'HammersleySampler2d::init_sub'; do
  if ! grep -qF "$wanted" <<<"$symbols"; then
    echo "not exported: $wanted"
    fail=1
  fi
done
# Free functions and anonymous-namespace helpers must stay inside.
leaks=$(grep -E ' [TtWw] ' <<<"$symbols" | awk '{ $1 = ""; $2 = ""; print }' |
        grep -vE '^\s*(Sampling|Sampler2d|[A-Za-z]+Sampler2d|SampleRayGenerator|[A-Za-z]+RayGenerator)(::|<)' |
        grep -vE '^\s*_(init|fini)$' || true)
if [[ -n "$leaks" ]]; then
  echo "symbols exported that belong to no public class:"
  echo "$leaks"
  fail=1
fi
if [[ $fail -eq 0 ]]; then echo "exports ok ($(wc -l <<<"$symbols") symbols)"; fi
exit $fail
