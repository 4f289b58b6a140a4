"""Makes the package for host developers, unpacks it, and builds and runs hosts against it alone."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest
import zipfile

REPOSITORY = pathlib.Path(__file__).parent.parent
BIN = pathlib.Path(os.environ["PRODUCT_SERVICES_BIN"])
VERSION_HEADER = "include/product_services/version.h"
FILES = [
    "CHANGELOG.md", "LICENSE", "SECURITY.md",
    "bin/LanguageFileTool.exe", "bin/ProductServices.dll", "bin/ProductServices.dll.debug",
    "bin/ProductServicesGuard.dll", "bin/ProductServicesGuard.dll.debug",
    "docs/host-guide.md", "docs/language-files.md",
    "include/product_services/guarded_calls.h", "include/product_services/product_services.h",
    "include/product_services/product_services.hpp", VERSION_HEADER,
    "lang/DE/Vemo_DE.lang", "lang/template.txt",
    "lib/ProductServices.lib", "lib/libProductServices.dll.a",
    "lib/ProductServicesGuard.lib", "lib/libProductServicesGuard.dll.a",
    "lib/cmake/ProductServices/ProductServicesConfig.cmake",
    "lib/cmake/ProductServices/ProductServicesConfigVersion.cmake",
    "licenses/curl.txt", "licenses/gcc-runtime.txt", "licenses/mingw-w64.txt", "licenses/nlohmann-json.txt",
    "samples/installer/sample_host.wxs", "samples/minimal_hosts/host.c",
    "tools/product_service.py",
]


def run(*command, **options):
    result = subprocess.run(list(map(str, command)), stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                            text=True, check=False, **options)
    return result.returncode, result.stdout


def header_version(header):
    return ".".join(re.findall(r"#define PRODUCT_SERVICES_VERSION_\w+ (\d+)", header.read_text("utf-8")))


class PackageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        status, output = run("cpack", "-B", cls.folder, cwd=BIN.parent)
        assert status == 0, output
        cls.version = header_version(REPOSITORY / VERSION_HEADER)
        cls.archive = cls.folder / f"product-services-{cls.version}-windows-x64.zip"
        with zipfile.ZipFile(cls.archive) as archive:
            archive.extractall(cls.folder)
        cls.package = cls.folder / cls.archive.stem

    def test_it_holds_what_a_host_developer_needs(self):
        names = {str(path.relative_to(self.package)) for path in self.package.rglob("*") if path.is_file()}
        self.assertEqual(set(FILES) - names, set())
        self.assertEqual({name for name in names if re.search(r"spec|build/|\.bmp$|__pycache__", name)}, set())
        self.assertEqual(header_version(self.package / VERSION_HEADER), self.version)

    def test_the_visual_studio_library_has_exactly_the_two_names(self):
        library = self.package / "lib/ProductServices.lib"
        symbols, headers = (run(*f"x86_64-w64-mingw32-{tool}".split(), library)[1]
                            for tool in ("nm", "objdump -f"))
        members = re.findall(r"(?m)^(\S+):\n(?:.+\n)*?.* I __imp_(\w+)$", symbols)
        self.assertEqual(sorted(members), [("ProductServices.dll", "CheckForUpdates"),
                                           ("ProductServices.dll", "Upgrade")])
        self.assertEqual(set(re.findall(r"file format pei?-(\S+)", headers)), {"x86-64"})

    def build_hosts(self, *options):
        # A copy, as a user would have it: nothing of the repository is in reach but the toolchain.
        source = self.folder / "hosts"
        if not source.exists():
            shutil.copytree(self.package / "samples/minimal_hosts", source)
        toolchain = [f"-DCMAKE_{language}_COMPILER=x86_64-w64-mingw32-{compiler}-posix"
                     for language, compiler in (("C", "gcc"), ("CXX", "g++"))]
        return source / "build", run(
            "cmake", "-G", "Ninja", "-S", source, "-B", source / "build", "-DCMAKE_SYSTEM_NAME=Windows",
            f"-DCMAKE_PREFIX_PATH={self.package}", *toolchain, *options)

    def test_hosts_in_c_and_cpp_build_and_run(self):
        build, (status, output) = self.build_hosts()
        self.assertEqual(status, 0, output)
        status, output = run("cmake", "--build", build)
        self.assertEqual(status, 0, output)
        self.assertNotIn("warning", output)
        # Without a record of the product there is no request and no window.
        run(REPOSITORY / "scripts/run_wine.sh", "reg", "delete", r"HKCU\Software\Example Maker", "/f")
        for host in ("host_c.exe", "host_cpp.exe"):
            status, output = run(REPOSITORY / "scripts/run_wine.sh", build / host)
            self.assertEqual((status, output.splitlines()), (0, [
                f"{call}: 950: No data of the installed product was found." for call in ("CheckForUpdates", "Upgrade")]))

    def test_the_version_file_refuses_another_major_version(self):
        source = self.folder / "other"
        source.mkdir()
        for wanted, found in (("1.0", "1"), ("2.0", "0"), ("99", "0")):
            (source / "CMakeLists.txt").write_text(
                "cmake_minimum_required(VERSION 3.16)\nproject(P NONE)\nset(WIN32 1)\n"
                "set(CMAKE_SIZEOF_VOID_P 8)\n"
                f"find_package(ProductServices {wanted} CONFIG QUIET)\n"
                'message(STATUS "found ${ProductServices_FOUND}")\n', "utf-8")
            status, output = run("cmake", "-S", source, "-B", source / wanted,
                                 f"-DCMAKE_PREFIX_PATH={self.package}")
            self.assertEqual(status, 0, output)
            self.assertIn(f"found {found}\n", output, wanted)


if __name__ == "__main__":
    unittest.main()
