"""Chi-square tests of warps against their stated densities, with scipy.stats:
each warp maps uniform samples to coordinates that its density makes uniform
again, binned on an equal-probability grid."""

import numpy as np
import pytest
from scipy import stats

from sampling import warps

COUNT, BINS = 200_000, 16  # 16 x 16 cells, about 780 points each


def equal_cells(a, b):
    """p-value of the 2D histogram of a, b in [0, 1) against equal cells."""
    h, _, _ = np.histogram2d(a, b, bins=BINS, range=[[0, 1], [0, 1]])
    return stats.chisquare(h.ravel()).pvalue


def azimuth(p):
    return np.mod(np.arctan2(p[:, 1], p[:, 0]), 2 * np.pi) / (2 * np.pi)


# Each entry: the warp and the map of its output to two coordinates that are
# uniform on [0,1]^2 under the documented density.
CASES = {
    # 1/(4 pi) per solid angle: z uniform in [-1, 1], azimuth uniform.
    "sphere_uniform": (warps.sphere_uniform, lambda p: ((1 - p[:, 2]) / 2, azimuth(p))),
    # cos(theta)/pi: z^2 = cos^2(theta) uniform, azimuth uniform.
    "hemisphere_cosine_concentric": (warps.hemisphere_cosine_concentric,
                                     lambda p: (p[:, 2] ** 2, azimuth(p))),
    # cos(theta)/(pi s^2) in the cone z >= sqrt(1 - s^2): (1 - z^2) / s^2 uniform.
    "hemisphere_cosine_concentric_cone": (
        lambda uv: warps.hemisphere_cosine_concentric(uv, radius_scale=0.5),
        lambda p: ((1 - p[:, 2] ** 2) / 0.25, azimuth(p))),
    # Uniform per unit area of the disk: r^2 uniform, angle uniform.
    "disk_concentric": (warps.disk_concentric,
                        lambda p: (p[:, 0] ** 2 + p[:, 1] ** 2, azimuth(p))),
}


@pytest.mark.parametrize("name", CASES)
def test_warp_density(name):
    warp, to_uniform = CASES[name]
    uv = np.random.default_rng(11).random((COUNT, 2))
    a, b = to_uniform(warp(uv))
    assert equal_cells(np.clip(a, 0, 1 - 1e-12), b) > 1e-3
    # A wrong density is caught: the polar-angle-linear sphere warp is not uniform.
    if name == "sphere_uniform":
        a, b = to_uniform(warps.sphere_cosine(uv))
        assert equal_cells(np.clip(a, 0, 1 - 1e-12), b) < 1e-6
