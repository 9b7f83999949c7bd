#pragma once

// Symbols of the platform layer that leave libsampling_platform.so. Everything
// else is hidden by the build (-fvisibility=hidden).
#define PLATFORM_API __attribute__((visibility("default")))
