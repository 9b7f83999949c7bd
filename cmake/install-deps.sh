#!/usr/bin/env bash
# Installs the Debian packages the build needs, when they are missing.
#   cmake, g++, make      the build
#   libgtest-dev          GoogleTest, the test framework
#   libbenchmark-dev      Google Benchmark, the benchmark framework
#   binutils              nm and readelf for the exported-symbol check
#   pkg-config            the test that builds a consumer against the installed package
#   pybind11-dev, python3-dev, python3-numpy
#                         the Python module (python/), NumPy arrays in and out
#   python3-pytest, python3-scipy
#                         its tests (tests/python/; scipy for the chi-square tails)
# Usage: cmake/install-deps.sh [extra packages...]
#   Extra packages are installed with the above when missing; `make demo`
#   passes the demo's own (libembree-dev libpng-dev libtinyobjloader-dev),
#   `make python-example` matplotlib (python3-matplotlib).
set -euo pipefail
packages=(cmake g++ make libgtest-dev libbenchmark-dev binutils pkg-config
          pybind11-dev python3-dev python3-numpy python3-pytest python3-scipy "$@")
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [[ ${#missing[@]} -eq 0 ]]; then exit 0; fi
echo "installing: ${missing[*]}"
sudo_cmd=()
if [[ $(id -u) -ne 0 ]]; then sudo_cmd=(sudo); fi
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
