"""A million sphere_uniform samples from Python against the same C++ loop.

    PYTHONPATH=build/release/python python3 python/bench/warp_speed.py \\
        build/release/python/sampling_python_sphere_loop

Both sides: best of 10 wall times over the same count of uniform samples; the
Python time includes the input checks and the allocation of the output array,
the C++ loop writes into an array allocated before the timing. Prints both
times and their ratio.
"""

import subprocess
import sys
import time

import numpy as np

from sampling import warps

N, REPETITIONS = 1_000_000, 10
uv = np.random.default_rng(1).random((N, 2))
best = float("inf")
for _ in range(REPETITIONS):
    start = time.perf_counter()
    warps.sphere_uniform(uv)
    best = min(best, time.perf_counter() - start)
cpp = float(subprocess.run([sys.argv[1], str(N), str(REPETITIONS)], capture_output=True,
                           check=True, text=True).stdout)
print(f"python {best * 1e3:.2f} ms, C++ loop {cpp * 1e3:.2f} ms, ratio {best / cpp:.2f}")
