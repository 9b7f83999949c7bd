"""The package's samplers and ray generators agree bit for bit with the C++ library
called one sample at a time (the reference program, tests/python/reference.cc);
its warps and surface scattering, which call the library's entries themselves, are
checked for reaching the right entry with the right arguments."""

import numpy as np
import pytest
from conftest import assert_same_bits, unit_samples

import sampling
from sampling import rays, surface, warps

UV = unit_samples()
SCALED = ["hemisphere_uniform", "hemisphere_uniform_concentric", "hemisphere_cosine",
          "hemisphere_cosine_concentric"]
UNSCALED = ["disk_concentric", "sphere_uniform", "sphere_cosine"]


@pytest.mark.parametrize("name,scale", [(n, s) for n in SCALED for s in (1.0, 0.6)] +
                         [(n, 1.0) for n in UNSCALED])
def test_warps(name, scale):
    """Each binding reaches its own warp, frame, density and inverse: the frame
    starts with the warp's point, the inverse leads back, and 1 / density
    averages to the solid angle (or area) of a region of the support."""
    f = getattr(warps, name)
    scaled = {"radius_scale": scale} if name in SCALED else {}
    uv = np.concatenate([UV, np.random.default_rng(5).random((200_000, 2))])
    d = f(uv, **scaled)
    assert_same_bits(f(uv, frame=True, **scaled)[0], d)
    back = f(getattr(warps, name + "_inverse")(d, **scaled), **scaled)
    np.testing.assert_allclose(back[:, :2], d[:, :2], rtol=0, atol=1e-9)
    pdf = (np.full(len(d), warps.disk_concentric_pdf()) if name == "disk_concentric" else
           getattr(warps, name + "_pdf")(d, **scaled))
    # Over the cap z > 1/2 (the whole disk), which tells each density from the others.
    disk = name == "disk_concentric"
    inside = (d[:, 2] > 0.5) | disk
    measure = np.pi if disk else 2 * np.pi * (1 - max(0.5, np.sqrt(1 - scale**2)))
    estimate = np.mean(np.where(inside, 1 / pdf, 0)[len(UV):])  # random samples only
    assert abs(estimate / measure - 1) < 0.02


def test_disk_map_and_shuffle():
    polar = warps.to_unit_disk(UV)
    np.testing.assert_array_equal(polar[:, 0], np.abs(2 * UV - 1).max(axis=1))
    np.testing.assert_allclose(warps.to_unit_disk_inverse(polar), UV, rtol=0, atol=1e-12)
    # The shuffle of an index is its rank by base-2 radical inverse.
    for count in (1, 7, 256, 300):
        index = np.arange(count)
        radical = np.array([int(f"{i:032b}"[::-1], 2) for i in index])
        rank = np.empty(count, dtype=np.int64)
        rank[np.argsort(radical, kind="stable")] = index
        np.testing.assert_array_equal(warps.shuffle_index(index, count), rank)


def parse_pattern(values):
    n = int(values[0])
    samples, i = values[1:1 + 2 * n].reshape(n, 2), 1 + 2 * n
    packets = []
    for _ in range(int(values[i])):
        k = int(values[i + 1])
        packets.append((values[i + 2:i + 6].reshape(2, 2), values[i + 6:i + 6 + 2 * k]))
        i += 5 + 2 * k
    return samples, packets


H = sampling.HierarchicalSampler2d
PATTERNS = [
    (lambda: sampling.StratifiedSampler2d().init(count_x=6, count_y=5, packet_size_x=4,
                                                 packet_size_y=2, jitter_x=0.5, seed=3),
     ["stratified", 3, 6, 5, 4, 2, 0.5, 1.0]),
    (lambda: sampling.HammersleySampler2d().init(count_x=20, count_y=15, seed=70000),
     ["hammersley", 70000, 20, 15]),
    (lambda: sampling.HammersleySampler2d().init(count_x=20, count_y=15, seed=9,
                                                 packet_size_x=3, packet_size_y=4),
     ["hammersley", 9, 20, 15, 3, 4]),
    (lambda: sampling.HammersleySampler2d().init_sub(subset_count=3, subset_index=2, count=100,
                                                     seed=5),
     ["hammersley_sub", 5, 3, 2, 100]),
    (lambda: sampling.HaltonSampler2d().init(count_x=300, seed=4000000000, base=5),
     ["halton", 4000000000, 300, 1, 5]),
] + [(lambda m=m: H(mode=m).init(count=300, set_count=6, set_index=4, seed=123456),
      ["hierarchical", int(m), 123456, 300, 6, 4]) for m in (H.RANDOM, H.HAMMERSLEY, H.HALTON,
                                                               H.SOBOL)]


@pytest.mark.parametrize("make,arguments", PATTERNS)
def test_samplers(reference, make, arguments):
    samples, packets = parse_pattern(reference(*arguments))
    s = make()
    assert (s.sample_count, s.packet_count) == (len(samples), len(packets))
    assert_same_bits(s.get_all_samples(), samples)
    assert_same_bits(s.packet_boxes(), np.array([box for box, _ in packets]))
    for p, (box, packet) in enumerate(packets):
        got, corner0, corner1 = s.get_packet_samples(p)
        assert_same_bits(got, packet)
        assert_same_bits(np.stack([corner0, corner1]), box)
    if arguments[0] != "stratified":  # a stream: asking again draws again
        assert_same_bits(np.array([s.get_sample(i) for i in range(len(samples))]), samples)


FRAME = np.array([[0.0, -2.0, 0.0, 1.0], [1.5, 0.0, 0.0, -2.0], [0.0, 0.0, 1.0, 3.0],
                  [0.0, 0.0, 0.0, 1.0]])
DIFF = np.array([[0.01, 0.0, 0.0], [0.1, 0.0, 0.995], [0.0, 0.01, 0.0], [0.0, 0.1, 0.995]])
SHADING = np.array([[1.0, 0.0, 0.0], [0.0, 0.6, -0.8], [0.0, 0.8, 0.6]])
D = np.array([0.0, 0.6, -0.8])  # incoming direction of the lobes


def cosine(mode, diff):
    g = rays.CosineWeightedHemisphereRayGenerator().init(
        direction=(0.0, 0.0, 1.0), origin=(1.0, 2.0, 3.0), angle=120.0, spread_reduction_x=0.25,
        differentials=diff, time=0.5, type=2)
    n = np.array([0.6, 0.0, 0.8])
    [g.disable_clipping, g.discard_clipped_samples, g.project_clipped_samples][mode](
        *([n] if mode else []))
    return g, ["cosine", 1, 2, 3, 0, 0, 1, diff is not None, *DIFF.ravel(), 0.5, 2, 120, 0.25,
               0, mode, *n]


def lobe(kind, diff):
    cls = (rays.AnisotropicReflectionRayGenerator if kind == "reflection" else
           rays.AnisotropicRefractionRayGenerator)
    extra = {} if kind == "reflection" else {"eta": 1.0 / 1.5}
    g = cls().init(direction=D, position=(1, 1, 1), shading=SHADING, geometric_normal=SHADING[:, 2],
                   nu=20, nv=200, differentials=diff, time=2.0, type=0, dpdx=(0.1, 0, 0),
                   dpdy=(0, 0.1, 0), anisotropy=(0.8, 0.6), spread_reduction_x=0.5, **extra)
    return g, [kind, 0, 0, 0, *D, diff is not None, *DIFF.ravel(), 2.0, 0, 1, 1, 1,
               *SHADING.ravel(), *SHADING[:, 2], 0.1, 0, 0, 0, 0.1, 0, 20, 200, 0.8, 0.6,
               np.float32(1.0 / 1.5), 0.5, 0]


def shape(kind, discard):
    cls = {"line": rays.LineRayGenerator, "plane": rays.PlaneRayGenerator,
           "disk": rays.DiskRayGenerator}[kind]
    extra = {"line": {"spread_reduction": 0.5}, "plane": {"spread_reduction_x": 0.5},
             "disk": {"radius": 0.75, "spread_reduction_x": 0.5}}[kind]
    g = cls(type=1, time=3.0).init(ray_origin=(0.5, -1.0, 4.0), frame=FRAME, **extra)
    n = np.array([0.3, -0.2, -1.0])
    if discard:
        g.discard_clipped_samples(n)
    numbers = {"line": [0.5], "plane": [0.5, 1.0], "disk": [0.75, 0.5, 1.0]}[kind]
    return g, [kind, 1, 3.0, 0.5, -1.0, 4.0, *FRAME.ravel(), *numbers, discard, *n]


GENERATORS = [lambda m=m, d=d: cosine(m, d) for m in range(3) for d in (None, DIFF)] + [
    lambda k=k, d=d: lobe(k, d) for k in ("reflection", "refraction") for d in (None, DIFF)] + [
    lambda k=k, c=c: shape(k, c) for k in ("line", "plane", "disk") for c in (False, True)] + [
    lambda: (rays.UniformSphereRayGenerator(time=1.0).init(centre=(1, 2, 3),
                                                           spread_reduction_x=0.9),
             ["sphere", 5, 1.0, 1, 2, 3, 0.9, 0.0])]
BOXES = np.array([[[i / 4, j / 4], [(i + 1) / 4, (j + 1) / 4]] for i in range(4) for j in range(4)])


@pytest.mark.parametrize("make", GENERATORS)
def test_ray_generators(reference, make):
    g, arguments = make()
    values = reference("rays", *arguments, samples=UV)
    expected, target_pdf = values[:-1].reshape(-1, 25), values[-1]
    r = g.get_rays(UV)
    assert len(r) == len(expected) and 0 < len(r) <= len(UV)
    differentials = r.differentials if r.differentials is not None else np.zeros((len(r), 4, 3))
    assert r.differentials is not None or not expected[:, 19].any()
    got = np.hstack([r.origins, r.directions, r.weights[:, None], differentials.reshape(-1, 12),
                     r.has_differentials[:, None], r.times[:, None], r.types[:, None], r.aux,
                     g.pdf(r.directions)[:, None]])
    assert_same_bits(got, expected)
    assert g.get_rays(UV, weights=False).weights is None
    shape_pdf = getattr(g, "pdf_area", getattr(g, "pdf_length", lambda: 0.0))
    assert_same_bits(shape_pdf(), target_pdf)
    frusta = g.get_frusta(BOXES)
    got = np.hstack([frusta.points.reshape(-1, 12), frusta.normals.reshape(-1, 12),
                     frusta.distances, frusta.plane_count[:, None]])
    assert_same_bits(got, reference("frusta", *arguments, samples=BOXES.reshape(-1, 2)))


VERTICES = np.array([[x, y, 0.1 * x * y] for y in range(3) for x in range(3)], dtype=float)
TRIANGLES, TRIANGLE_GROUPS = np.array([[0, 1, 4], [0, 4, 3]]), np.array([2, 0])
QUADS, QUAD_GROUPS = np.array([[1, 2, 5, 4], [3, 4, 7, 6], [4, 5, 8, 7]]), np.array([0, 1, 1])
PLACEMENT = FRAME[:3]


@pytest.mark.parametrize("blue", [False, True])
@pytest.mark.parametrize("amount,group", [(("count", 250), None), (("density", 31.5), 1),
                                          (("density", 0.01), None)])
def test_surface(blue, amount, group):
    """The bindings pass mesh, placement, group and amount through: each point is
    its primitive (triangles first, then quads) evaluated at its (u, v) under the
    placement, of the selected group; white noise places the count, a density
    gives its spacing, blue-noise points of one group keep the spacing."""
    mesh = surface.Mesh(VERTICES, triangles=TRIANGLES, quads=QUADS,
                        triangle_groups=TRIANGLE_GROUPS, quad_groups=QUAD_GROUPS)
    f = surface.blue_noise if blue else surface.random_noise
    p = f(mesh, **{amount[0]: amount[1]}, matrix=PLACEMENT, group=group, time=0.0)
    faces = [VERTICES[t] for t in TRIANGLES] + [VERTICES[q] for q in QUADS]
    groups = np.concatenate([TRIANGLE_GROUPS, QUAD_GROUPS])[p.primitives]
    for k, (u, v) in enumerate(p.uv.astype(float)):
        c = faces[p.primitives[k]]
        local = (c[0] + u * (c[1] - c[0]) + v * (c[2] - c[0]) if len(c) == 3 else
                 (1 - u) * (1 - v) * c[0] + u * (1 - v) * c[1] + u * v * c[2] + (1 - u) * v * c[3])
        np.testing.assert_allclose(p.positions[k], PLACEMENT[:, :3] @ local + PLACEMENT[:, 3],
                                   rtol=0, atol=1e-9)
    assert group is None or (groups == group).all()
    assert blue or amount[0] == "density" or len(p) == amount[1]
    assert amount[0] == "count" or len(p) == 0 or p.spacing == 1 / np.sqrt(amount[1])
    if blue and len(p):
        distance = np.linalg.norm(p.positions[:, None] - p.positions[None], axis=-1)
        apart = (groups[:, None] != groups[None]) | np.eye(len(p), dtype=bool)
        assert (apart | (distance >= p.spacing - 1e-6)).all()
    short = f(mesh, **{amount[0]: amount[1]}, matrix=PLACEMENT, group=group, evaluate=False)
    assert short.positions is None and np.array_equal(short.uv, p.uv)
