"""Every warp of sampling.warps and a fan of cosine-generator rays, in one figure.

    python3 examples/python/plot_warps.py [out.png]

The samples are one Hammersley set, coloured by their u coordinate so that the
picture shows where each part of the square lands.
"""

import sys

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402

import sampling  # noqa: E402
from sampling import rays, warps  # noqa: E402

uv = sampling.HammersleySampler2d().init(count_x=24, count_y=24).get_all_samples()
colour = dict(c=uv[:, 0], cmap="viridis", s=3, linewidths=0)

radius, angle = warps.to_unit_disk(uv).T
panels = [
    ("to_unit_disk (radius, angle)", np.stack([radius, angle], axis=1), "flat"),
    ("disk_concentric", warps.disk_concentric(uv), "disk"),
    ("hemisphere_uniform", warps.hemisphere_uniform(uv), "3d"),
    ("hemisphere_uniform_concentric", warps.hemisphere_uniform_concentric(uv), "3d"),
    ("hemisphere_cosine", warps.hemisphere_cosine(uv), "3d"),
    ("hemisphere_cosine_concentric", warps.hemisphere_cosine_concentric(uv), "3d"),
    ("sphere_uniform", warps.sphere_uniform(uv), "3d"),
    ("sphere_cosine", warps.sphere_cosine(uv), "3d"),
]

figure = plt.figure(figsize=(12, 12))
for k, (title, points, kind) in enumerate(panels):
    if kind == "3d":
        ax = figure.add_subplot(3, 3, k + 1, projection="3d")
        ax.scatter(points[:, 0], points[:, 1], points[:, 2], **colour)
        ax.set_box_aspect((1, 1, 1 if points[:, 2].min() < 0 else 0.5))
    else:
        ax = figure.add_subplot(3, 3, k + 1)
        ax.scatter(points[:, 0], points[:, 1], **colour)
        ax.set_aspect("equal" if kind == "disk" else "auto")
    ax.set_title(title, fontsize=10)

# A fan of rays: a 90-degree cosine cone about a direction 60 degrees from the
# surface normal +z; rays that fall below the surface are projected onto it.
fan = rays.CosineWeightedHemisphereRayGenerator().init(
    direction=(np.sin(np.pi / 3), 0.0, np.cos(np.pi / 3)), angle=90.0)
fan.project_clipped_samples((0.0, 0.0, 1.0))
r = fan.get_rays(sampling.HaltonSampler2d().init(count_x=120).get_all_samples())
ax = figure.add_subplot(3, 3, 9, projection="3d")
for o, d in zip(r.origins, r.directions):
    ax.plot(*np.stack([o, o + d]).T, color="tab:orange", linewidth=0.4)
ax.set_box_aspect((1, 1, 0.5))
ax.set_title("cosine generator fan, below-surface rays projected", fontsize=10)

figure.tight_layout()
figure.savefig(sys.argv[1] if len(sys.argv) > 1 else "warps.png", dpi=48)
