"""A program that crashes under Wine must be seen to fail, every time."""

import pytest


@pytest.mark.parametrize("attempt", range(10))
def test_a_crash_is_a_failure(build, wine, attempt):
    assert wine(build / "over_tls/guard_host.exe", "crash")[0] != 0
