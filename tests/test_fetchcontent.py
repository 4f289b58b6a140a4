"""Another project that takes in the sources."""

import os
import re

import pytest

from conftest import REPOSITORY, run, write_host_project

DEPENDENCIES = {"CURL_DIR": f"{REPOSITORY}/build/deps/x86_64-w64-mingw32/lib/cmake/CURL",
                "NLOHMANN_JSON_INCLUDE_DIR": f"{REPOSITORY}/build/deps/json"}


@pytest.fixture(scope="module")
def consumer(tmp_path_factory):
    """Returns the folder of the consumer."""
    folder = tmp_path_factory.mktemp("consumer")
    write_host_project(folder, f'add_subdirectory("{REPOSITORY}" product_services)')
    return folder


@pytest.fixture
def configure(restricted_toolchain, consumer):
    """Configures the consumer with some of the dependencies. Its programs go to a folder of its own choice."""
    def run_cmake(*names):
        options = [f"-D{name}={path}" if name in names else f"-U{name}" for name, path in DEPENDENCIES.items()]
        return run("cmake", "-G", "Ninja", restricted_toolchain, "-S", consumer, "-B", consumer / "built",
                   f"-DCMAKE_RUNTIME_OUTPUT_DIRECTORY={consumer}/programs", *options)
    return run_cmake


@pytest.mark.parametrize("found, missing", [
    pytest.param("NLOHMANN_JSON_INCLUDE_DIR", "libcurl for Windows not found: set CURL_DIR", id="libcurl"),
    pytest.param("CURL_DIR", "nlohmann-json not found: set CURL_DIR and NLOHMANN_JSON_INCLUDE_DIR",
                 id="the JSON library")])
def test_missing_dependency_is_reported(configure, found, missing):
    status, output = configure(found)
    assert status != 0
    assert missing in " ".join(output.split())


def test_consumer_gets_only_the_libraries(configure, consumer):
    status, output = configure(*DEPENDENCIES)
    assert status == 0, output
    ninja = ("ninja", "-C", consumer / "built")
    programs = re.findall(r"programs/(\w+\.\w+)\b", run(*ninja, "-t", "targets", "all")[1])
    assert set(programs) == {"host.exe", "ProductServices.dll", "ProductServicesGuard.dll"}
    listed = run(*ninja, "-t", "inputs", "host")[1].replace("'", "")
    inputs = re.findall(rf"(?m)^{re.escape(str(REPOSITORY))}/(?!build/).*$", listed)
    assert len(inputs) > 50 and all(map(os.path.exists, inputs)), inputs
    assert "BUILD_TESTING" not in (consumer / "built/CMakeCache.txt").read_text("utf-8")
    # Building all would take a minute: one source and one resource script.
    for name in ("calls/guarded_calls.cpp.obj", "product_services_guard.rc.res"):
        status, output = run(*ninja, f"product_services/guard/CMakeFiles/ProductServicesGuard.dir/{name}")
        assert status == 0, output
