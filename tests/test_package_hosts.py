"""Compiles hosts with the package for host developers, and with nothing else of this project."""

import os
import re
import shlex
import shutil

import pytest

from conftest import HOSTS, REPOSITORY, run, write_host_project

CATCHING_HOST = """#include <product_services/product_services.h>
extern "C" void Say(const char*);
void Check(HostContext* context) { try { CheckForUpdates(context); } catch (...) { Say("the handler"); } }"""


def compile_as_visual_studio(package, folder, source, *options, taken_out=""):
    """The object file of a host that Visual Studio's settings in options compile, with something taken out of the
    headers."""
    headers = shutil.copytree(package / "include", folder / "include")
    for header in headers.rglob("*.h"):
        header.write_text(header.read_text("utf-8").replace(taken_out, ""), "utf-8")
    for name in ("assert.h", "sal.h"):  # clang brings no such headers
        (headers / name).touch()
    compiler = "clang++ --target=x86_64-pc-windows-msvc -std=c++20 -ffreestanding -fexceptions -fcxx-exceptions -O2"
    assert run(*compiler.split(), *options, "-I", headers, *"-xc++ -c - -o host.obj".split(),
               cwd=folder, input=source) == (0, "")
    return folder / "host.obj"


@pytest.mark.parametrize("taken_out, is_kept", [
    pytest.param("", True, id="as it is"), pytest.param("noexcept(false)", False, id="without noexcept(false)")])
def test_msvc_keeps_catch_handlers(package, tmp_path, taken_out, is_kept):
    host = compile_as_visual_studio(
        package, tmp_path, CATCHING_HOST, "-Xclang", "-fexternc-nounwind", taken_out=taken_out)
    assert (b"the handler" in host.read_bytes()) == is_kept


@pytest.mark.parametrize("header, call", [
    pytest.param("product_services.h", "Upgrade(nullptr)", id="a direct call"),
    pytest.param("guarded_calls.h", "GuardedUpgrade(nullptr)", id="a guarded call"),
    pytest.param("publisher.h", 'VerifyPublisher(L"", L"", nullptr, 0)', id="a publisher")])
def test_vectorcall_default_keeps_the_names(package, tmp_path, header, call):
    host = compile_as_visual_studio(
        package, tmp_path, f"#include <product_services/{header}>\nvoid Call() {{ {call}; }}\n",
        "-Xclang", "-fdefault-calling-conv=vectorcall")
    names = run("x86_64-w64-mingw32-nm", "--undefined-only", host)[1].split()
    assert call.partition("(")[0] in {name.removeprefix("__imp_") for name in names}, names


def test_find_package_deploys_the_linked_dll(package, restricted_toolchain, tmp_path):
    dlls = {"Guard": "ProductServicesGuard.dll", "ProductServices": "ProductServices.dll"}
    project = ["cmake_minimum_required(VERSION 3.16)", "project(Hosts LANGUAGES C)"]
    command = "find_package(ProductServices CONFIG REQUIRED)"
    for library in dlls:
        (tmp_path / library).mkdir()
        write_host_project(tmp_path / library, command, library, target=f"{library}Host")
        project.append(f"add_subdirectory({library})")
    (tmp_path / "CMakeLists.txt").write_text("\n".join(project), "utf-8")
    found = f"-DProductServices_DIR={package}/lib/cmake/ProductServices"
    for command in (["-G", "Ninja", restricted_toolchain, found, "-B", "built", "."], ["--build", "built"]):
        status, output = run("cmake", *command, cwd=tmp_path)
        assert status == 0, output
    for library, dll in dlls.items():
        programs = {path.name for path in (tmp_path / "built" / library).iterdir() if path.suffix in (".exe", ".dll")}
        assert programs == {f"{library}Host.exe", dll}


@pytest.mark.parametrize("machine", [
    pytest.param("-DWIN32=1 -DCMAKE_SIZEOF_VOID_P=4", id="32-bit Windows"),
    pytest.param("-DWIN32=1 -DCMAKE_SIZEOF_VOID_P=8 -DCMAKE_C_COMPILER_ARCHITECTURE_ID=ARM64", id="ARM64"),
    pytest.param("-DCMAKE_SIZEOF_VOID_P=8", id="another system")])
def test_host_for_another_architecture_is_refused(package, tmp_path, machine):
    script = tmp_path / "find.cmake"
    script.write_text(f"""include("{package}/lib/cmake/ProductServices/ProductServicesConfig.cmake")
message("${{ProductServices_NOT_FOUND_MESSAGE}}")""")
    refusal = "This package of ProductServices is for 64-bit Windows (x64).\n"
    assert run("cmake", *machine.split(), "-P", script) == (0, refusal)


def test_vcpkg_port_installs_language_files_and_usage(package, tmp_path):
    """With stubs for vcpkg's functions, of which one installs the package."""
    port = REPOSITORY / "packaging/vcpkg"
    names = set(re.findall(r"(?m)^vcpkg_\w+", (port / "portfile.cmake").read_text("utf-8"))) - {"vcpkg_cmake_install"}
    functions = "".join(f"function({name})\nendfunction()\n" for name in names)
    (tmp_path / "install.cmake").write_text(f"""{functions}function(vcpkg_cmake_install)
    file(COPY "{package}/" DESTINATION "${{CURRENT_PACKAGES_DIR}}")
endfunction()
include("{port}/portfile.cmake")""")
    status, output = run("cmake", f"-DCURRENT_PORT_DIR={port}", f"-DCURRENT_PACKAGES_DIR={tmp_path}/installed",
                         "-DPORT=product-services", "-P", tmp_path / "install.cmake")
    assert status == 0, output
    shared = tmp_path / "installed/share/product-services"
    assert (shared / "lang/DE/Vemo_DE.lang").is_file()
    write_host_project(tmp_path, "find_package(ProductServices CONFIG REQUIRED)")
    told = re.findall("(?m)^    (.*)$", (shared / "usage").read_text("utf-8").replace("main", "host"))
    assert len(told) == 3 and set(told) <= set((tmp_path / "CMakeLists.txt").read_text("utf-8").splitlines())


def test_packaged_sample_host_builds(package, restricted_toolchain, tmp_path):
    kit = shutil.copytree(package, tmp_path / "my kit")
    settings = "-G", "Ninja", restricted_toolchain, "-DCMAKE_UNITY_BUILD=ON"  # compiles all sources at once
    for command in ([*settings, "-S", "samples/host", "-B", "built"], ["--build", "built"]):
        status, output = run("cmake", *command, cwd=kit)
        assert status == 0, output
    assert {"SampleHost.exe", "ProductServicesGuard.dll"} < set(os.listdir(kit / "built"))


def test_pkgconf_finds_a_moved_package(package, tmp_path):
    kit = shutil.copytree(package, tmp_path / "my kit")
    status, options = run("pkgconf", "--define-prefix", "--cflags", "--libs", "product-services-guard",
                          env={**os.environ, "PKG_CONFIG_PATH": str(kit / "lib/pkgconfig")})
    assert status == 0 and str(package) not in options, options
    (tmp_path / "host.c").write_text(HOSTS["Guard"], "utf-8")
    compiler = "x86_64-w64-mingw32-gcc-posix", tmp_path / "host.c", "-o", tmp_path / "host.exe"
    assert run(*compiler, *shlex.split(options)) == (0, "")
