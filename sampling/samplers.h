#pragma once

// The sample patterns: every sampler is reached through the Sampler2d base
// record (sampling/patterns/sampler2d.h).

#include "sampling/patterns/halton_sampler2d.h"
#include "sampling/patterns/hammersley_sampler2d.h"
#include "sampling/patterns/hierarchical_sampler2d.h"
#include "sampling/patterns/sampler2d.h"
#include "sampling/patterns/stratified_sampler2d.h"
