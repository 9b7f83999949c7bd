"""Every entry of the package agrees bit for bit with the C++ library called one
sample at a time (the reference program, tests/python/reference.cc)."""

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
def test_warps(reference, name, scale):
    expected = reference("warp", name, scale, samples=UV)
    points, pdf, inverse = expected.reshape(-1, 15)[:, :12].reshape(-1, 4, 3), \
        expected.reshape(-1, 15)[:, 12], expected.reshape(-1, 15)[:, 13:]
    f = getattr(warps, name)
    scaled = {"radius_scale": scale} if name in SCALED else {}
    d = f(UV, **scaled)
    assert_same_bits(d, points[:, 0])
    assert_same_bits(np.stack(f(UV, frame=True, **scaled), axis=1), points[:, 1:])
    if name == "disk_concentric":
        assert_same_bits(np.full(len(UV), warps.disk_concentric_pdf()), pdf)
        assert_same_bits(warps.disk_concentric_inverse(d), inverse)
    else:
        assert_same_bits(getattr(warps, name + "_pdf")(d, **scaled), pdf)
        assert_same_bits(getattr(warps, name + "_inverse")(d, **scaled), inverse)


def test_disk_map_and_shuffle(reference):
    expected = reference("warp", "to_unit_disk", 1, samples=UV).reshape(-1, 15)
    polar = warps.to_unit_disk(UV)
    assert_same_bits(polar, expected[:, :2])
    assert_same_bits(warps.to_unit_disk_inverse(polar), expected[:, 13:])
    index = np.arange(300)
    for count in (1, 7, 256, 300):
        pairs = np.stack([index, index], axis=1)
        np.testing.assert_array_equal(warps.shuffle_index(index, count),
                                      reference("shuffle_index", count, samples=pairs))


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
def test_surface(reference, blue, amount, group):
    mesh = surface.Mesh(VERTICES, triangles=TRIANGLES, quads=QUADS,
                        triangle_groups=TRIANGLE_GROUPS, quad_groups=QUAD_GROUPS)
    f = surface.blue_noise if blue else surface.random_noise
    p = f(mesh, **{amount[0]: amount[1]}, matrix=PLACEMENT, group=group, time=0.0)
    expected = reference("surface", blue, amount[0] == "count", amount[1],
                         0xFFFFFFFF if group is None else group, 0.0, *FRAME.ravel(),
                         len(VERTICES), *VERTICES.ravel(),
                         len(TRIANGLES), *np.hstack([TRIANGLES, TRIANGLE_GROUPS[:, None]]).ravel(),
                         len(QUADS), *np.hstack([QUADS, QUAD_GROUPS[:, None]]).ravel())
    assert len(p) == int(expected[0])
    assert p.spacing == (None if expected[1] == -1.0 else expected[1])
    got = np.hstack([p.primitives[:, None], p.uv, p.positions, p.normals, p.tangents])
    assert_same_bits(got, expected[2:])
    short = f(mesh, **{amount[0]: amount[1]}, matrix=PLACEMENT, group=group, evaluate=False)
    assert short.positions is None and np.array_equal(short.uv, p.uv)
