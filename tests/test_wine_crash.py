"""A crash under Wine must always be reported as a failure."""

import pytest


@pytest.mark.parametrize("attempt", range(5))
def test_crash_is_reported(https_sample, wine, attempt):
    assert wine(https_sample / "guard_host.exe", "crash")[0] != 0
