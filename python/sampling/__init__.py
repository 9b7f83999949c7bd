"""Sampling mathematics for renderers, over NumPy arrays.

Samplers (StratifiedSampler2d, HammersleySampler2d, HaltonSampler2d,
HierarchicalSampler2d) give (N, 2) float64 samples of the unit square;
``sampling.warps`` maps them onto the disk, the hemisphere and the sphere;
``sampling.rays`` turns them into rays; ``sampling.surface`` scatters points
over meshes. Every entry checks its input and raises ValueError on a bad
shape, dtype, count or range. See docs/python.md.
"""

from ._sampling import (
    HaltonSampler2d,
    HammersleySampler2d,
    HierarchicalSampler2d,
    Sampler2d,
    StratifiedSampler2d,
    rays,
    surface,
    warps,
)

__all__ = [
    "Sampler2d",
    "StratifiedSampler2d",
    "HammersleySampler2d",
    "HaltonSampler2d",
    "HierarchicalSampler2d",
    "warps",
    "rays",
    "surface",
]
