"""Builds the shared libraries by CMake and packs them; all else is in pyproject.toml.

KAPRIS_LIBRARIES in the environment names a folder that has libkapris.so, libkapris_formats.so and libkapris_report.so,
or folders below that do, such as a build folder of CMake: they are packed as they are, and nothing is built. What the
built ones need beside the C library is packed with them.
"""
# SPDX-License-Identifier: MIT
import os
import pathlib
import re
import shutil
import subprocess
import sys

from setuptools import setup
from setuptools.command.build_py import build_py
from setuptools.command.sdist import sdist
from setuptools.dist import Distribution
from wheel.bdist_wheel import bdist_wheel

HERE = pathlib.Path(__file__).resolve().parent
LIBRARIES = ["libkapris.so", "libkapris_formats.so", "libkapris_report.so"]
# What every Linux has.
SYSTEM = re.compile(r"(linux-vdso|ld-linux.*|libc|libm|libdl|libpthread|librt)\.so")
# What the build of the libraries reads, of the sources of kapris.
SOURCES = ["CMakeLists.txt", "LICENSE", "cmake", "include", "lib", "formats", "cli/report", "cli/measure", "cli/json"]


def source():
    """The sources of kapris: beside this folder in a checkout, inside it in an archive."""
    return HERE / "source" if (HERE / "source").is_dir() else HERE.parent


def version():
    """That of the library, from its header."""
    text = (source() / "include" / "kapris.h").read_text()
    return ".".join(re.findall(r"^#define KAPRIS_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)$", text, re.M))


def build_libraries(folder):
    """The folder below which they are."""
    build = pathlib.Path(folder) / "cmake"
    subprocess.run(["cmake", "-S", HERE, "-B", build, f"-DKAPRIS_SOURCE={source()}"], check=True)
    subprocess.run(["cmake", "--build", build, "--parallel", str(os.cpu_count() or 1), "--target", "libraries"],
                   check=True)
    return build / "out"


def needed(library):
    """The files of the libraries that one needs, but for those of the system."""
    lines = subprocess.run(["ldd", library], check=True, capture_output=True, text=True).stdout.splitlines()
    for name, _, path in (line.strip().partition(" => ") for line in lines):
        if not SYSTEM.match(pathlib.Path(name).name):
            if not path.startswith("/"):
                sys.exit(f"{library} needs {name}, which is not found")
            yield name, path.rsplit(" ", 1)[0]


class BuildWithLibraries(build_py):
    def run(self):
        super().run()
        given = os.environ.get("KAPRIS_LIBRARIES")
        folder = pathlib.Path(given) if given else build_libraries(self.get_finalized_command("build").build_temp)
        target = pathlib.Path(self.build_lib) / "kapris" / "lib"
        target.mkdir(parents=True, exist_ok=True)
        for name in LIBRARIES:
            found = next(iter(sorted(folder.rglob(name))), None)
            if found is None:
                sys.exit(f"there is no {name} in {folder}")
            shutil.copyfile(found, target / name)
            if not given:
                for beside, path in needed(found):
                    shutil.copyfile(path, target / beside)


class SourcesInside(sdist):
    def make_release_tree(self, base_dir, files):
        super().make_release_tree(base_dir, files)
        for name in SOURCES:
            path, target = source() / name, pathlib.Path(base_dir) / "source" / name
            target.parent.mkdir(parents=True, exist_ok=True)
            if path.is_dir():
                shutil.copytree(path, target)
            else:
                shutil.copyfile(path, target)


class AnyPython(bdist_wheel):
    """The libraries are of a platform, and of no version of Python."""

    def finalize_options(self):
        super().finalize_options()
        self.root_is_pure = False

    def get_tag(self):
        return "py3", "none", super().get_tag()[2]


class WithLibraries(Distribution):
    def has_ext_modules(self):
        return True


setup(version=version(), distclass=WithLibraries,
      cmdclass={"build_py": BuildWithLibraries, "sdist": SourcesInside, "bdist_wheel": AnyPython})
