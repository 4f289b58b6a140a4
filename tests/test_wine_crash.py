"""A crash under Wine must always be reported as a failure."""

import pytest


@pytest.mark.parametrize("attempt", range(5))
def test_crash_is_reported(build, wine, attempt):
    assert wine(build / "https_sample/guard_host.exe", "crash")[0] != 0
