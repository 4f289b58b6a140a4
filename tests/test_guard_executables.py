"""Runs the guard's own programs of tests: the DLL, its parts, and the C++ wrapper."""

import os

import pytest

from conftest import REPOSITORY

TESTS = {**os.environ, "TESTS_DIR": str(REPOSITORY / "tests")}


@pytest.mark.parametrize("program", ["guard_tests", "guard_part_tests", "wrapper_tests"])
def test_program_passes(wine, program, tmp_path):
    path = f"{os.environ['PRODUCT_SERVICES_BIN']}/{program}.exe"
    status, output = wine(path, "--gtest_brief=1", cwd=tmp_path, env=TESTS)
    assert status == 0, output
