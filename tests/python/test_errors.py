"""Bad input raises ValueError with a message naming what is wrong, in every
build: the package checks what the library's checked builds would abort on."""

import numpy as np
import pytest

import sampling
from sampling import rays, surface, warps

S = sampling
R = rays
GOOD = np.full((4, 2), 0.5)
LINE = lambda: R.LineRayGenerator().init(ray_origin=(0, 0, 0), frame=np.eye(4))  # noqa: E731
DISK = lambda: R.DiskRayGenerator().init(ray_origin=(0, 0, 0), frame=np.eye(4))  # noqa: E731
QUAD = surface.Mesh([[0, 0, 0], [1, 0, 0], [1, 1, 0], [0, 1, 0]], quads=[[0, 1, 2, 3]])

CASES = [
    # shape, dtype, range of sample arrays
    (lambda: warps.sphere_uniform(np.ones((3, 3))), r"uv: expected shape \(N, 2\), got \(3, 3\)"),
    (lambda: warps.sphere_uniform(np.ones(2)), r"expected shape \(N, 2\), got \(2,\)"),
    (lambda: warps.sphere_uniform(np.array([["a", "b"]])), "expected real numbers"),
    (lambda: warps.sphere_uniform(np.ones((1, 2), complex)), "expected real numbers"),
    (lambda: warps.sphere_uniform(None), "expected real numbers"),
    (lambda: warps.disk_concentric([[0.5, 1.5]]), r"sample 0 has v = 1.5, outside \[0, 1\]"),
    (lambda: warps.hemisphere_cosine([[0.5, 0.5], [np.nan, 0]]), "sample 1 has u = nan"),
    (lambda: warps.hemisphere_uniform(GOOD, radius_scale=1.5), "radius_scale = 1.5"),
    (lambda: warps.sphere_uniform_pdf([[0, 0, 1], [0, 0, 2]]), "direction 1 is not of unit"),
    (lambda: warps.hemisphere_cosine_inverse([[0, 0, 1]], radius_scale=-0.1), "radius_scale"),
    (lambda: warps.to_unit_disk_inverse([[0.5, 2 * np.pi]]), r"angle \[-pi, 2pi\)"),
    (lambda: warps.disk_concentric_inverse([[1, 1, 0]]), "outside the unit disk"),
    (lambda: warps.shuffle_index([1.5], 4), "array of integers"),
    (lambda: warps.shuffle_index([-1], 4), r"\[0, 2\^32 - 1\]"),
    (lambda: warps.disk_uniform(70000), "does not fit 32 bits"),
    # counts and indices of the samplers
    (lambda: S.HammersleySampler2d().init(count_x=-1), r"count_x: -1 is outside"),
    (lambda: S.HammersleySampler2d().init(count_x=1.5), "count_x: expected an integer"),
    (lambda: S.HammersleySampler2d().init(count_x=2**16, count_y=2**16), "does not fit 32 bits"),
    (lambda: S.HammersleySampler2d().init(count_x=4, packet_size_x=2), "both packet sizes"),
    (lambda: S.HammersleySampler2d().init(count_x=0).get_sample(0), r"index 0 is outside \[0, 0\)"),
    (lambda: S.HammersleySampler2d().init_sub(subset_count=2, subset_index=2, count=4),
     "subset_index 2"),
    (lambda: S.HaltonSampler2d().init(count_x=4, base=1), "base must be at least 2"),
    (lambda: S.HaltonSampler2d().init(count_x=4).get_packet_samples(1), "packet 1 is outside"),
    (lambda: S.StratifiedSampler2d().init(count_x=4, count_y=4, packet_size_x=0),
     "packet sizes must be at least 1"),
    (lambda: S.StratifiedSampler2d().init(count_x=0, count_y=4).get_packet_samples(0),
     "packet 0 is outside"),
    (lambda: S.StratifiedSampler2d().init(count_x=4, count_y=4, jitter_y=2.0), "jitter_y"),
    (lambda: S.HierarchicalSampler2d().init(count=4, set_count=2, set_index=2), "set_index 2"),
    # ray generators
    (lambda: R.CosineWeightedHemisphereRayGenerator().init(direction=(0, 0, 2)), "unit vector"),
    (lambda: R.CosineWeightedHemisphereRayGenerator().get_rays([[0.5, -0.1]]), "outside"),
    (lambda: R.CosineWeightedHemisphereRayGenerator().init(direction=(0, 0, 1), type=9),
     "not a ray type"),
    (lambda: R.CosineWeightedHemisphereRayGenerator().init(direction=(0, 0, 1),
                                                           differentials=np.zeros(3)),
     r"differentials: expected shape \(4, 3\)"),
    (lambda: R.AnisotropicReflectionRayGenerator().init(
        direction=(0, 0, -1.1), position=(0, 0, 0), shading=np.eye(3),
        geometric_normal=(0, 0, 1), nu=1, nv=1), "unit vector"),
    (lambda: R.AnisotropicRefractionRayGenerator().get_rays(GOOD), "needs init"),
    (lambda: R.UniformSphereRayGenerator().get_rays(GOOD), "needs init"),
    (lambda: R.UniformSphereRayGenerator().init().pdf([[0, 0, 0.5]]), "not of unit length"),
    (lambda: R.DiskRayGenerator().pdf_area(), "needs init"),
    (lambda: LINE().get_rays([[0.2, 0.5], [0.5, 0.5]]), "sample 1: the ray origin lies on"),
    (lambda: DISK().get_rays([[0.5, 0.5]]), "ray origin lies on the shape"),
    (lambda: R.UniformSphereRayGenerator().init(centre=(0, np.inf, 0)), "centre: value 1"),
    (lambda: R.PlaneRayGenerator().init(ray_origin=(0, 0, 1), frame=np.eye(3)),
     r"frame: expected shape \(3, 4\), got \(3, 3\)"),
    (lambda: LINE().get_frusta([[[0.5, 0.5], [0.2, 1.0]]]), "corner0 above corner1"),
    (lambda: LINE().get_frusta([[[0.5, 0.5], [1.0, 1.5]]]), "outside"),
    # surface
    (lambda: surface.Mesh([[0, 0, 0]], triangles=[[0, 0, 1]]), r"values must lie in \[0, 1\)"),
    (lambda: surface.Mesh(np.zeros((3, 2))), r"vertices: expected shape \(N, 3\)"),
    (lambda: surface.Mesh([[0, 0, 0], [1, np.nan, 0]]), r"vertices: value 4 \(flat index\) is not"),
    (lambda: surface.Mesh(np.zeros((3, 3)), triangles=[[0, 1, 2]], triangle_groups=[0, 1]),
     "one group per face"),
    (lambda: surface.random_noise(QUAD), "either count or density"),
    (lambda: surface.random_noise(QUAD, count=4, density=1.0), "either count or density"),
    (lambda: surface.blue_noise(QUAD, density=-1.0), "density must be finite"),
    (lambda: surface.blue_noise(QUAD, density=1e300), "below 2\\^31"),
    (lambda: surface.random_noise(QUAD, count=4, group=70000), "group"),
]


@pytest.mark.parametrize("call,message", CASES)
def test_bad_input_raises_value_error(call, message):
    with pytest.raises(ValueError, match=message):
        call()


def test_in_contract_edges_are_accepted():
    # The discard mode drops the sample aimed at the ray origin instead of failing.
    line = LINE()
    line.discard_clipped_samples((1, 0, 0))
    assert len(line.get_rays([[0.5, 0.5], [1.0, 0.5]])) == 1
    # The disk inverse takes atan2's whole range and a turn from 0.
    assert warps.to_unit_disk_inverse([[0.5, -np.pi], [0.5, np.nextafter(2 * np.pi, 0)]]).shape \
        == (2, 2)
    # Empty arrays and empty patterns are fine.
    assert warps.sphere_uniform(np.zeros((0, 2))).shape == (0, 3)
    assert S.HammersleySampler2d().init(count_x=0).get_all_samples().shape == (0, 2)
    assert surface.random_noise(QUAD, count=0).spacing is None
