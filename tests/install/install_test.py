#!/usr/bin/env python3
"""Installs the build, and builds and runs small programs against what was installed, as users would.

usage: install_test.py CHECK --config FILE

  tree               installs into a scratch folder and moves it; the other checks but subproject use it
  find_package       C and C++ programs, and a project without C++, through the CMake package
  pkg_config_shared  C and C++ programs through pkg-config
  pkg_config_static  the same, linked statically
  subproject         C programs in a project without C++ that builds the library as a part of it

FILE is what CMake wrote about the build. Exit status 77: skipped, for the reason printed.
"""
# SPDX-License-Identifier: MIT
import argparse
import json
import os
import pathlib
import shlex
import shutil
import subprocess
import sys

# What the programs print when the library did its work, by language.
CUT = {"C": 1, "CXX": 2}
ENDING = {"C": "c", "CXX": "cpp"}
HERE = pathlib.Path(__file__).resolve().parent


class Build:
    """The build under test; its fields are those of the file that CMake wrote."""

    def __init__(self, file):
        self.__dict__.update(json.loads(pathlib.Path(file).read_text()))
        self.scratch = pathlib.Path(file).parent
        self.prefix = self.scratch / "moved"
        self.major, self.minor = map(int, self.version.split(".")[:2])
        self.soname = f"libkapris.so.{self.major}" + (f".{self.minor}" if self.major == 0 else "")
        # Objects with the sanitizers' calls need their run time in the program, too.
        self.flags = [f"-fsanitize={self.sanitize}"] if self.sanitize else []
        self.pkg_config_dir = self.prefix / self.libdir / "pkgconfig"


def fail(text):
    sys.exit(f"FAILED: {text}")


def skip(reason):
    print(f"SKIP: {reason}")
    sys.exit(77)


def run(*command, **environment):
    """Its standard output; ends the test if it fails."""
    env = {k: v for k, v in os.environ.items() if k not in ("DESTDIR", "MAKEFLAGS", "CMAKE_PREFIX_PATH")}
    env.update({k: str(v) for k, v in environment.items()})
    words = [str(word) for word in command]
    print("$", shlex.join(words), flush=True)
    result = subprocess.run(words, env=env, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    print(result.stdout, flush=True)
    if result.returncode:
        fail(f"exit status {result.returncode}")
    return result.stdout


def fresh(folder):
    shutil.rmtree(folder, ignore_errors=True)
    return folder


def check_program(build, program, language, linked, **environment):
    """The program works, and is linked with the form of the library that was asked for."""
    # The exit status does not tell: a call that the library refuses ends the program with status 0.
    expected = f"kapris {build.version}: cut {CUT[language]}, recounted {CUT[language]}\n"
    output = run(program, **environment)
    if output != expected:
        fail(f"printed {output!r}, not {expected!r}")
    needs_shared = f"{build.soname}\0".encode() in program.read_bytes()
    if needs_shared != (linked == "shared"):
        fail(f"{program.name} {'needs' if needs_shared else 'does not need'} {build.soname}")


def configure(build, folder, languages, **values):
    flags = shlex.join(values.pop("flags"))
    return run("cmake", "-S", HERE / "consumer", "-B", folder, "-G", build.generator,
               f"-DCMAKE_C_COMPILER={build.cc}", f"-DCMAKE_CXX_COMPILER={build.cxx}",
               f"-DCMAKE_C_FLAGS={flags}", f"-DCMAKE_CXX_FLAGS={flags}",
               f"-DLANGUAGES={';'.join(languages)}", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON", "--no-warn-unused-cli",
               *(f"-D{name}={value}" for name, value in values.items()))


def check_project(build, folder, languages):
    run("cmake", "--build", folder, "--parallel", 2)
    for language in languages:
        for linked in ("shared", "static"):
            check_program(build, folder / f"{linked}_{language}", language, linked)


def check_tree(build):
    first = fresh(build.scratch / "installed")
    run("cmake", "--install", build.binary, "--prefix", first)
    first.rename(fresh(build.prefix))
    documents = build.prefix / "share" / "doc" / "kapris"
    headers = [build.prefix / "include" / pathlib.Path(header).name for header in build.headers]
    for file in [*headers, documents / "LICENSE", documents / "docs" / "install.md"]:
        if not file.is_file():
            fail(f"{file} was not installed")
    if build.cli == "ON":
        run(build.prefix / "bin" / "kapris", "--help")
        for file in ("man/man1/kapris-refine.1", "bash-completion/completions/kapris", "zsh/site-functions/_kapris",
                     "fish/vendor_completions.d/kapris.fish"):
            if not (build.prefix / "share" / file).is_file():
                fail(f"{file} was not installed")
    if build.mpi == "1":
        run(build.prefix / "bin" / "kapris-mpi", "--help")
        if not (build.prefix / "share/man/man1/kapris-mpi-partition.1").is_file():
            fail("the page of kapris-mpi was not installed")


def check_find_package(build):
    refused = [f"{build.major}.{build.minor + 1}", f"{build.major + 1}.0"]
    if build.major == 0 and build.minor > 0:
        refused.append(f"0.{build.minor - 1}")
    for languages in (["C", "CXX"], ["C"]):
        folder = fresh(build.scratch / ("find_package_" + "_".join(languages)))
        output = configure(build, folder, languages, flags=build.flags, CMAKE_PREFIX_PATH=build.prefix,
                           WANTED=f"{build.major}.{build.minor}", REFUSED=";".join(refused))
        if f"Found kapris {build.version} in {build.prefix}/" not in output:
            fail(f"the package does not report version {build.version} in {build.prefix}")
        check_project(build, folder, languages)


def check_pkg_config(build, linked):
    if not shutil.which("pkg-config"):
        skip("pkg-config is not installed")
    if linked == "static" and build.sanitize:
        skip("sanitizers have no static run time for -static")
    env = {"PKG_CONFIG_LIBDIR": build.pkg_config_dir}
    version = run("pkg-config", "--modversion", "kapris", **env).strip()
    if version != build.version:
        fail(f"kapris.pc reports version {version}, not {build.version}")
    how = ["--static"] if linked == "static" else []
    flags = shlex.split(run("pkg-config", *how, "--cflags", "--libs", "kapris", **env))
    folder = fresh(build.scratch / f"pkg_config_{linked}")
    folder.mkdir()
    for language, compiler in (("C", [build.cc]), ("CXX", [build.cxx, "-std=c++20"])):
        program = folder / language
        run(*compiler, "-o", program, HERE / "consumer" / f"main.{ENDING[language]}", *flags, *build.flags,
            *(["-static"] if linked == "static" else []))
        check_program(build, program, language, linked, LD_LIBRARY_PATH=build.prefix / build.libdir)


def check_subproject(build):
    folder = fresh(build.scratch / "subproject")
    configure(build, folder, ["C"], flags=["-O0"], SOURCE=build.source)
    check_project(build, folder, ["C"])

    if "CMAKE_BUILD_TYPE:STRING=\n" not in (folder / "CMakeCache.txt").read_text():
        fail("the subproject sets its parent's build type")
    for unit in json.loads((folder / "compile_commands.json").read_text()):
        inside = unit["file"].startswith(build.source + "/lib/")
        # The flag that the library's results depend on marks the flags of the library.
        if ("-ffp-contract=off" in unit["command"]) != inside:
            fail(f"wrong flags for {unit['file']}: {unit['command']}")

    own = {"bin/static_C"}
    for setting in ("OFF", "ON"):
        # OFF is the default, which the configuration above has left in place.
        if setting == "ON":
            run("cmake", "-DKAPRIS_INSTALL=ON", "-DCMAKE_INSTALL_LIBDIR=lib", folder)
        target = fresh(folder / "installed")
        run("cmake", "--install", folder, "--prefix", target)
        files = {str(file.relative_to(target)) for file in target.rglob("*") if not file.is_dir()}
        if setting == "OFF" and files != own:
            fail(f"the parent installs {sorted(files - own)}")
        if setting == "ON" and not {"include/kapris.h", "lib/pkgconfig/kapris.pc"} <= files:
            fail(f"KAPRIS_INSTALL installs only {sorted(files)}")


CHECKS = {
    "tree": check_tree,
    "find_package": check_find_package,
    "pkg_config_shared": lambda build: check_pkg_config(build, "shared"),
    "pkg_config_static": lambda build: check_pkg_config(build, "static"),
    "subproject": check_subproject,
}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("check", choices=CHECKS)
    parser.add_argument("--config", required=True)
    args = parser.parse_args()
    CHECKS[args.check](Build(args.config))


main()
