#!/usr/bin/env python3
"""Checks what no compiler checks: folder edges, headers that compile alone, types that are defined once, exported
symbols, calls that could end the host's process or print, and what the gateway takes from MATLAB.

usage: structure.py includes|headers|types|symbols|calls|gateway --lib DIR [--include DIR] [--cli DIR] [--formats DIR]
                    [--cxx COMMAND --cc COMMAND] [--shared FILE] [--static FILE --checks LEVEL] [--gateway FILE]
                    [--nm COMMAND]
"""
# SPDX-License-Identifier: MIT
import argparse
import pathlib
import re
import subprocess
import sys

# Which folders a folder may include, a chain without a way up: what belongs to no hypergraph, the hypergraph and its
# levels, then what makes something of them; public headers by name. A folder below refine/ is one of its own.
EDGES = {
    "base": set(),
    "core": {"base"},
    "coarsen": {"base", "core"},
    "refine": {"core"},
    "refine/kway": {"base", "core", "refine"},
    "refine/twoway": {"base", "core", "refine"},
    "multilevel": {"base", "core", "coarsen", "refine"},
    "drivers": {"base", "core", "coarsen", "refine/kway", "refine/twoway", "multilevel"},
    "search": {"base", "core", "coarsen", "drivers"},
    "plain": {"kapris.h", "base", "core", "refine/twoway", "drivers"},
    "rebalance": {"base"},
    "starts": {"kapris_api.h", "base", "search/engine.h", "rebalance/rebalance.h"},
    "api": {"kapris.h", "kapris_api.h", "base", "starts"},
}
# What stands for itself in a folder; other folders do not see it.
PRIVATE = {"coarsen/match.h", "plain/validate.h", "rebalance/state.h", "refine/kway/state.h", "refine/twoway/fm.h",
           "refine/twoway/moves.h", "refine/twoway/pqueue.h", "search/climb.h", "search/ladder.h", "search/member.h",
           "search/netparts.h"}


def sources(lib, pattern):
    return sorted(p for p in lib.rglob(pattern))


def wrong_includes(args):
    files = sources(args.lib, "*.cpp") + sources(args.lib, "*.h")
    for file in files:
        folder = file.relative_to(args.lib).parent.as_posix()
        if folder not in EDGES:
            yield f"{file.relative_to(args.lib)} lies in a folder that no edge names"
            continue
        for name in re.findall(r'^#include "([^"]+)"', file.read_text(), re.M):
            target = pathlib.PurePosixPath(name).parent.as_posix()
            if target == "." and not (args.include / name).exists():
                if not (file.parent / name).exists():
                    yield f"{file.relative_to(args.lib)} includes {name}, which is not in its folder"
            elif name in PRIVATE or (target != folder and not {target, name} & EDGES[folder]):
                yield f"{file.relative_to(args.lib)} includes {name}"
    if len(files) < 30:
        yield f"only {len(files)} files found below {args.lib}"
    # The formats stand beside the library: they know the version, and neither the tool nor its parser.
    files = sources(args.formats, "*.cpp") + sources(args.formats, "*.h")
    for file in files:
        for name in re.findall(r'^#include [<"]([^">]+)[">]', file.read_text(), re.M):
            if name.startswith(("CLI/", "png")) or ("/" in name and not name.startswith(("formats/", "fmt/", "sys/",
                                                    "nlohmann/")) and name != "include/kapris.h"):
                yield f"formats/{file.name} includes {name}"
    if len(files) < 30:
        yield f"only {len(files)} files found below {args.formats}"


def broken_headers(args):
    for header in [*sources(args.lib, "*.h*"), *sources(args.include, "*.h*")]:
        command = [args.cxx, "-std=c++20", "-x", "c++", "-fsyntax-only", "-Wall", "-Wextra", "-Werror",
                   "-Wno-pragma-once-outside-header", "-I", args.lib, "-I", args.include, "-include", header,
                   "/dev/null"]
        runs = [[word for word in command if word != "-Wno-pragma-once-outside-header" or "clang" in args.cxx]]
        if header.name in ("kapris.h", "kapris_api.h"):
            runs.append([args.cc, "-std=c99", "-pedantic", "-x", "c", "-fsyntax-only", "-Wall", "-Werror",
                         "-include", header, "/dev/null"])
        for run in runs:
            result = subprocess.run(run, capture_output=True, text=True)
            if result.returncode:
                yield f"{header.name} does not compile alone: {result.stderr.strip()[:300]}"


SCOPE_OR_TYPE = re.compile(
    r"^namespace ?([\w:]*)$|^\} // namespace|^(?:typedef )?(?:struct|class|union|enum(?: class)?) (\w+)\b[^;\n]*$", re.M)


def types_of(text):
    """The types that a file defines for others to see, as the formatter sets them: none in namespaces without a name."""
    scopes = []
    text = re.sub(r"^namespace \w+\n\{\n.*\n\}\n", "", text, flags=re.M)  # around one declaration
    for found in SCOPE_OR_TYPE.finditer(text):
        if found[0].startswith("namespace"):
            scopes.append(found[1])
        elif found[0].startswith("}"):
            scopes.pop()
        elif "" not in scopes:
            yield "::".join([*scopes, found[2]])


# What is linked together: two types of one name would be one to the linker, whichever files see which. Of functions it
# sees for itself.
def doubled_types(args):
    found = {}
    for folder in (args.lib, args.include, args.cli, args.formats):
        for file in [*sources(folder, "*.cpp"), *sources(folder, "*.h*")]:
            for name in types_of(file.read_text()):
                found.setdefault(name, set()).add(str(file))
    for name, files in found.items():
        if len(files) > 1:
            yield f"{name} is defined in {' and '.join(sorted(files))}"
    if len(found) < 150:
        yield f"only {len(found)} types found below {args.lib}, {args.include}, {args.cli} and {args.formats}"


def wrong_symbols(args):
    libraries = [(args.shared, [args.include / "kapris.h", args.include / "kapris_api.h"])]
    if args.shared_formats:
        libraries += [(args.shared_formats, [args.formats / "kapris_formats.h"]),
                      (args.shared_report, [args.cli / "report" / "kapris_report.h"])]
    for library, headers in libraries:
        text = "".join(header.read_text() for header in headers)
        declared = set(re.findall(r"^KAPRIS_(?:SAFE_|FORMATS_)?API .*?\*?(\w+)\(", text, re.M))
        listing = subprocess.run([args.nm, "-D", "--defined-only", library], capture_output=True, text=True,
                                 check=True).stdout
        exported = {line.split()[-1] for line in listing.splitlines()}
        if declared != exported:
            yield f"{library}: declared but not exported: {sorted(declared - exported)}"
            yield f"{library}: exported but not declared: {sorted(exported - declared)}"


# How a library could end its host or write where it was not asked to; one file may.
OUTPUT = {"printf", "vprintf", "fprintf", "vfprintf", "puts", "putchar", "fputs", "fputc", "fwrite", "fflush", "stdout",
          "stderr", "_ZSt4cout", "_ZSt4cerr", "_ZSt4clog"}
ENDS = {"exit", "_exit", "_Exit", "quick_exit", "abort"}
MAY = {"output.cpp.o": (OUTPUT | {"exit"})}


def wrong_calls(args):
    objects = 0
    listing = subprocess.run([args.nm, "-u", args.static], capture_output=True, text=True, check=True).stdout
    for block in listing.split("\n\n"):
        lines = block.strip().splitlines()
        name = lines[0].rstrip(":") if lines else ""
        objects += name.endswith(".o")
        for line in lines[1:]:
            symbol = line.split()[-1].split("@")[0]
            allowed = MAY.get(name, set()) | ({"abort"} if args.checks != "0" and name in MAY else set())
            if symbol in OUTPUT | ENDS and symbol not in allowed:
                yield f"{name} uses {symbol}"
    if objects < 30:
        yield f"only {objects} objects found in {args.static}"


# All that the gateway may take from MATLAB, under the names that its libraries export, and what MATLAB takes from it.
HOST = {"mxIsChar", "mxIsSparse", "mxGetM", "mxGetN", "mxGetJc_730", "mxGetIr_730", "mxGetPr", "mxGetString_730",
        "mxGetScalar", "mxCalloc", "mxCreateDoubleMatrix_730", "mexErrMsgTxt", "mexErrMsgIdAndTxt"}
MODULE = {"mexFunction", "mexfilerequiredapiversion"}


def wrong_gateway(args):
    listing = subprocess.run([args.nm, "-g", args.gateway], capture_output=True, text=True, check=True).stdout
    symbols = [line.split()[-2:] for line in listing.splitlines() if line.strip()]
    taken = {name for kind, name in symbols if kind == "U" and name.startswith(("mx", "mex"))}
    given = {name for kind, name in symbols if kind == "T"}
    if taken != HOST:
        yield f"the gateway takes from MATLAB {sorted(taken)}, not {sorted(HOST)}"
    if given != MODULE:
        yield f"the gateway gives {sorted(given)}, not {sorted(MODULE)}"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("check", choices=["includes", "headers", "types", "symbols", "calls", "gateway"])
    parser.add_argument("--lib", type=pathlib.Path, required=True)
    parser.add_argument("--include", type=pathlib.Path)
    parser.add_argument("--cli", type=pathlib.Path)
    parser.add_argument("--formats", type=pathlib.Path)
    parser.add_argument("--shared-formats")
    parser.add_argument("--shared-report")
    parser.add_argument("--cxx")
    parser.add_argument("--cc")
    parser.add_argument("--shared")
    parser.add_argument("--static")
    parser.add_argument("--checks", default="0")
    parser.add_argument("--gateway")
    parser.add_argument("--nm", default="nm")
    args = parser.parse_args()
    check = {"includes": wrong_includes, "headers": broken_headers, "types": doubled_types, "symbols": wrong_symbols,
             "calls": wrong_calls, "gateway": wrong_gateway}[args.check]
    faults = list(check(args))
    print("\n".join(faults))
    sys.exit(1 if faults else 0)


main()
