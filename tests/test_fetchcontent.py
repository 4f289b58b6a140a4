"""Another project that takes in the sources."""

import os
import re

import pytest

from conftest import REPOSITORY, run, write_host_project

CURL = f"-DCURL_DIR={REPOSITORY}/build/deps/x86_64-w64-mingw32/lib/cmake/CURL"
JSON = f"-DNLOHMANN_JSON_INCLUDE_DIR={REPOSITORY}/build/deps/json"


@pytest.fixture
def configure(restricted_toolchain, tmp_path):
    """Configures the consumer, whose programs go to a folder of its own choice."""
    write_host_project(tmp_path, f'add_subdirectory("{REPOSITORY}" product_services)')

    def run_cmake(*options):
        return run("cmake", "-G", "Ninja", restricted_toolchain, "-S", tmp_path,
                   "-B", tmp_path / "built", f"-DCMAKE_RUNTIME_OUTPUT_DIRECTORY={tmp_path}/programs", *options)
    return run_cmake


def test_consumer_gets_only_the_libraries(configure, tmp_path):
    status, output = configure(CURL, JSON)
    assert status == 0, output
    ninja = ("ninja", "-C", tmp_path / "built")
    programs = re.findall(r"programs/(\w+\.\w+)\b", run(*ninja, "-t", "targets", "all")[1])
    assert set(programs) == {"host.exe", "ProductServices.dll", "ProductServicesGuard.dll"}
    listed = run(*ninja, "-t", "inputs", "host")[1].replace("'", "")
    inputs = re.findall(rf"(?m)^{re.escape(str(REPOSITORY))}/(?!build/).*$", listed)
    assert len(inputs) > 50 and all(map(os.path.exists, inputs)), inputs
    assert "BUILD_TESTING" not in (tmp_path / "built/CMakeCache.txt").read_text("utf-8")
    # Building all would take a minute: one source and one resource script.
    for name in ("calls/guarded_calls.cpp.obj", "product_services_guard.rc.res"):
        status, output = run(*ninja, f"product_services/guard/CMakeFiles/ProductServicesGuard.dir/{name}")
        assert status == 0, output


@pytest.mark.parametrize("options, missing", [
    pytest.param([JSON], "libcurl for Windows not found: set CURL_DIR", id="libcurl"),
    pytest.param([CURL], "nlohmann-json not found: set CURL_DIR and NLOHMANN_JSON_INCLUDE_DIR", id="the JSON library"),
])
def test_missing_dependency_is_reported(configure, options, missing):
    status, output = configure(*options)
    assert status != 0
    assert missing in " ".join(output.split())
