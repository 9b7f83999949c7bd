#!/usr/bin/env bash
# Installs the built tree into a scratch prefix, then builds and runs a
# consumer against it twice: through find_package(sampling) and through
# pkg-config. Also checks that the SONAME links are installed and that no
# internal header is.
#   check_package.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
build="$1"
source_dir="$2"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
prefix="$scratch/prefix"

cmake --install "$build" --prefix "$prefix" >/dev/null
libdir="$prefix/lib"
test -L "$libdir/libsampling.so.0" || { echo "libsampling.so.0 not installed"; exit 1; }
test -f "$prefix/include/sampling/sampling.h" || { echo "public header missing"; exit 1; }
if [[ -e "$prefix/include/sampling/checks.h" ]]; then echo "internal header installed"; exit 1; fi

# Every installed header compiles on its own.
while IFS= read -r header; do
  echo "#include \"$header\"" |
    c++ -std=c++17 -fsyntax-only -Wall -Wextra -Werror -I"$prefix/include" -x c++ - ||
    { echo "installed header does not compile on its own: $header"; exit 1; }
done < <(find "$prefix/include" -name '*.h')

cmake -S "$source_dir/tests/package" -B "$scratch/cmake-build" -DCMAKE_PREFIX_PATH="$prefix" \
  >/dev/null
cmake --build "$scratch/cmake-build" >/dev/null
"$scratch/cmake-build/consumer"

flags=$(PKG_CONFIG_PATH="$libdir/pkgconfig" pkg-config --cflags --libs sampling)
# shellcheck disable=SC2086
c++ "$source_dir/tests/package/consumer.cc" $flags -Wl,-rpath,"$libdir" -o "$scratch/pc-consumer"
"$scratch/pc-consumer"
