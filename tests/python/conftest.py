"""Shared helpers of the Python package's tests."""

import os
import subprocess

import numpy as np
import pytest


def unit_samples(count=300, seed=7):
    """Samples of [0,1]^2: every pair of the edge and middle values, then random ones."""
    edges = np.array([0.0, 1e-300, 0.25, 0.5, 0.75, 1.0 - 2.0**-53, 1.0])
    grid = np.stack(np.meshgrid(edges, edges), axis=-1).reshape(-1, 2)
    rest = np.random.default_rng(seed).random((count - len(grid), 2))
    return np.concatenate([grid, rest])


def assert_same_bits(actual, expected):
    """Equal as float64 bit patterns (tells -0.0 from 0.0, compares NaNs)."""
    actual = np.ascontiguousarray(actual, dtype=np.float64)
    expected = np.ascontiguousarray(expected, dtype=np.float64).reshape(actual.shape)
    np.testing.assert_array_equal(actual.view(np.uint64), expected.view(np.uint64))


@pytest.fixture(scope="session")
def reference():
    """Runs the C++ reference program: reference(entry, *numbers, samples=None) -> float64."""
    program = os.environ.get("SAMPLING_PYTHON_REFERENCE")
    if not program:
        pytest.skip("SAMPLING_PYTHON_REFERENCE not set (ctest sets it)")

    def run(*arguments, samples=None):
        stdin = b"" if samples is None else np.ascontiguousarray(samples, np.float64).tobytes()
        words = [a if isinstance(a, str) else repr(float(a)) for a in arguments]
        out = subprocess.run([program, *words], input=stdin, capture_output=True, check=True)
        return np.frombuffer(out.stdout, dtype=np.float64)

    return run
