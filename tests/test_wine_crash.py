"""A program that crashes under Wine must be seen to fail, every time."""

import pytest


@pytest.mark.parametrize("attempt", range(10))
def test_crash_is_reported(build, wine, attempt):
    assert wine(build / "https_sample/guard_host.exe", "crash")[0] != 0
