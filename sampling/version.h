#pragma once

#include "sampling/sampling_export.h"

// The library's version. The three numbers below are the one place it is
// written: the build reads them for the CMake package, sampling.pc and the
// shared library's SONAME.
//
// Compatibility: from 1.0 on, releases of one major version keep the ABI
// (SONAME libsampling.so.MAJOR). Before 1.0, each minor version may change
// it, so the SONAME carries both numbers (libsampling.so.0.MINOR) and the
// CMake package accepts only the same major and minor version.
#define SAMPLING_VERSION_MAJOR 0
#define SAMPLING_VERSION_MINOR 1
#define SAMPLING_VERSION_PATCH 0

// One number that orders versions: major * 10000 + minor * 100 + patch.
#define SAMPLING_VERSION \
  (SAMPLING_VERSION_MAJOR * 10000 + SAMPLING_VERSION_MINOR * 100 + SAMPLING_VERSION_PATCH)

// The version of the libsampling.so a program runs with, which may differ
// from the header it was compiled against (SAMPLING_VERSION) when the library
// was replaced by another release of the same SONAME.
class SAMPLING_API SamplingVersion {
 public:
  SamplingVersion() = delete;

  // The loaded library's SAMPLING_VERSION number.
  static unsigned int get_version();
  // The loaded library's major, minor and patch numbers.
  static void get_version(unsigned int& major_version, unsigned int& minor_version,
                          unsigned int& patch_version);
};
