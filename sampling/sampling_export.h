#pragma once

// SAMPLING_API marks the classes and data that leave libsampling.so; the
// build hides everything else (-fvisibility=hidden), so internal helpers never
// become part of the ABI.
#define SAMPLING_API __attribute__((visibility("default")))
