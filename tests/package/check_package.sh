#!/usr/bin/env bash
# Installs the built tree into a scratch prefix, then builds and runs a
# consumer against it: through find_package(sampling) as a C++20 program, and
# through pkg-config with C++17 and C++20.
# Also checks the SONAME link, that no internal header and no empty folder is
# installed, that every installed header compiles on its own without warnings,
# and that the version header, the library and both packages agree.
#   check_package.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
build="$1"
source_dir="$2"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
prefix="$scratch/prefix"

cmake --install "$build" --prefix "$prefix" >/dev/null
libdir="$prefix/lib"
soname=$(readelf -d "$libdir/libsampling.so" | sed -n 's/.*Library soname: \[\(.*\)\].*/\1/p')
test -L "$libdir/$soname" || { echo "SONAME link $soname not installed"; exit 1; }
test -f "$prefix/include/sampling/version.h" || { echo "version header missing"; exit 1; }
if [[ -e "$prefix/include/sampling/checks.h" ]]; then echo "internal header installed"; exit 1; fi
empty=$(find "$prefix/include" -type d -empty)
if [[ -n "$empty" ]]; then echo "empty folders installed: $empty"; exit 1; fi

# Every installed header compiles on its own, clean under these warnings.
while IFS= read -r header; do
  echo "#include \"$header\"" |
    c++ -std=c++17 -fsyntax-only -Wall -Wextra -Wshadow -Wconversion -Wsign-conversion -Werror \
      -I"$prefix/include" -x c++ - ||
    { echo "installed header does not compile on its own: $header"; exit 1; }
done < <(find "$prefix/include" -name '*.h')

cmake -S "$source_dir/tests/package" -B "$scratch/cmake-build" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCONSUMER_CXX_STANDARD=20 >/dev/null
cmake --build "$scratch/cmake-build" >/dev/null
"$scratch/cmake-build/consumer"

export PKG_CONFIG_PATH="$libdir/pkgconfig"
version=$(pkg-config --modversion sampling)
flags=$(pkg-config --cflags --libs sampling)
for standard in c++17 c++20; do
  # shellcheck disable=SC2086
  c++ -std=$standard "$source_dir/tests/package/consumer.cc" $flags \
    -DSAMPLING_PACKAGE_VERSION="\"$version\"" -Wl,-rpath,"$libdir" -o "$scratch/pc-consumer"
  "$scratch/pc-consumer"
done
