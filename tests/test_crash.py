"""A program that crashes under Wine must be seen to fail, every time."""


def test_a_crash_is_a_failure(build, wine):
    assert 0 not in [wine(build / "bin/crash.exe")[0] for _ in range(10)]
