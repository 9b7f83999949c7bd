#include "sampling/version.h"

unsigned int SamplingVersion::get_version() {
  return SAMPLING_VERSION;
}

void SamplingVersion::get_version(unsigned int& major_version, unsigned int& minor_version,
                                  unsigned int& patch_version) {
  major_version = SAMPLING_VERSION_MAJOR;
  minor_version = SAMPLING_VERSION_MINOR;
  patch_version = SAMPLING_VERSION_PATCH;
}
