#pragma once

// The library's angle constants. Its pi is the double nearest 3.141592653589,
// not the full-precision value, and every other angle constant is that value
// times an exact power of two (or, for the degree factor, over 180), so all of
// them share one truncated mantissa. Every angle computed by the library uses
// these; results therefore differ from full-precision formulas in the 13th
// significant digit, and that difference is part of the numeric contract.
//
// Each constant is written as the hex float of its bit pattern; the
// static_asserts tie it to the decimal it stands for.

constexpr double k_sampling_pi = 0x1.921fb5444261ep+1;          // 0x400921FB5444261E
constexpr double k_sampling_two_pi = 0x1.921fb5444261ep+2;      // 0x401921FB5444261E
constexpr double k_sampling_half_pi = 0x1.921fb5444261ep+0;     // 0x3FF921FB5444261E
constexpr double k_sampling_quarter_pi = 0x1.921fb5444261ep-1;  // 0x3FE921FB5444261E
constexpr double k_sampling_degree = 0x1.1df46a2529843p-6;      // 0x3F91DF46A2529843

static_assert(k_sampling_pi == 3.141592653589, "library pi");
static_assert(k_sampling_two_pi == 6.283185307178, "library 2 pi");
static_assert(k_sampling_half_pi == 1.5707963267945, "library pi / 2");
static_assert(k_sampling_quarter_pi == 0.78539816339725, "library pi / 4");
static_assert(k_sampling_degree == 0.01745329251993889, "library pi / 180");
static_assert(k_sampling_degree == 3.141592653589 / 180, "degree factor derives from pi");
