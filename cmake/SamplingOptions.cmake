# Build options and the flags every target of the project compiles with.

option(SAMPLING_CHECKS "Assert documented caller contracts (debug builds)" OFF)
option(SAMPLING_WERROR "Treat compiler warnings as errors" OFF)
option(SAMPLING_BUILD_TESTS "Build the GoogleTest suite" ON)
option(SAMPLING_BUILD_BENCH "Build the Google Benchmark suite" ON)
option(SAMPLING_BUILD_EXAMPLES "Build the demo program" ON)
option(SAMPLING_BUILD_PYTHON "Build the Python package (pybind11, NumPy)" OFF)
option(SAMPLING_BUILD_FUZZERS "Build the libFuzzer harnesses (clang)" OFF)
set(SAMPLING_SANITIZE "" CACHE STRING "Sanitizers to build with: '', 'address,undefined' or 'thread'")

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Only what is marked SAMPLING_API / PLATFORM_API leaves a shared library.
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# Flags every target of ours compiles with. Linked PRIVATE into the libraries,
# so that none of it reaches a program that links the installed package.
add_library(sampling_build_flags INTERFACE)
target_include_directories(sampling_build_flags INTERFACE ${PROJECT_SOURCE_DIR})
# Outputs are bit-exact functions of the written formulas: no contraction
# into fused multiply-adds, no fast-math reassociation.
target_compile_options(sampling_build_flags INTERFACE -ffp-contract=off -Wall -Wextra)
# Nothing of ours is meant to be interposed by another library: let calls
# between the library's own exported functions be inlined.
target_compile_options(sampling_build_flags INTERFACE -fno-semantic-interposition)
if(SAMPLING_WERROR)
  target_compile_options(sampling_build_flags INTERFACE -Werror)
endif()
if(SAMPLING_CHECKS)
  target_compile_definitions(sampling_build_flags INTERFACE SAMPLING_CHECKS=1)
endif()
if(SAMPLING_BUILD_FUZZERS)
  # Coverage instrumentation for everything; the harnesses add the driver.
  target_compile_options(sampling_build_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(SAMPLING_SANITIZE)
  target_compile_options(sampling_build_flags INTERFACE
    -fsanitize=${SAMPLING_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(sampling_build_flags INTERFACE -fsanitize=${SAMPLING_SANITIZE})
endif()
