"""Turns the cross compiler's compile_commands.json into one that clang understands."""
import json
import os
import shlex
import subprocess

TARGET = "--target=x86_64-w64-mingw32"
# Run-time checks that an analysis has no use for, and GCC's choice of warnings: the analyses bring their own.
DROPPED_PREFIXES = ("-fsanitize", "-fno-sanitize", "-W", "-pedantic")


def system_include_flags(compiler, language):
    """The header folders that the cross compiler searches, as flags for clang.

    GCC's private folders stay out: they define its builtins, and clang has its own of the same names. The C++ headers
    go before those, since they reach the C headers by #include_next.
    """
    shown = subprocess.run([compiler, "-x", language, "-E", "-v", os.devnull], capture_output=True, text=True,
                           check=True, env={**os.environ, "LC_ALL": "C"}).stderr
    listed = shown.split("#include <...> search starts here:")[1].split("End of search list.")[0]
    folders = [os.path.realpath(line.strip()) for line in listed.splitlines() if line.strip()]
    cxx = [folder for folder in folders if "/c++" in folder]
    c = [folder for folder in folders if "/c++" not in folder and "/lib/gcc/" not in folder]
    flags = ["-nostdinc++"] if cxx else []
    flags += [flag for folder in cxx for flag in ("-isystem", folder)]
    flags += [flag for folder in c for flag in ("-idirafter", folder)]
    return flags


def clang_arguments(entry, path, clang_version, include_flags):
    """The compile command for clang, without an output: callers choose what to do with the source."""
    arguments = shlex.split(entry["command"])
    is_c = path.endswith(".c")
    compiler = f"clang-{clang_version}" if is_c else f"clang++-{clang_version}"
    result = [compiler, TARGET, *include_flags(arguments[0], "c" if is_c else "c++")]
    rest = iter(arguments[1:])
    for argument in rest:
        if argument == "-o":
            next(rest)
        elif argument != "-c" and not argument.startswith(DROPPED_PREFIXES):
            result.append(argument)
    return result


def convert(source, repository, clang_version):
    """The entries for the project's own sources, one a source, ordered by path."""
    known_flags = {}

    def include_flags(compiler, language):
        if (compiler, language) not in known_flags:
            known_flags[compiler, language] = system_include_flags(compiler, language)
        return known_flags[compiler, language]

    with open(source, encoding="utf-8") as file:
        entries = json.load(file)
    build = os.path.join(repository, "build", "")
    converted = {}
    for entry in entries:
        path = os.path.realpath(os.path.join(entry["directory"], entry["file"]))
        if path.endswith((".cpp", ".c")) and path.startswith(repository + os.sep) and not path.startswith(build):
            converted[path] = {"directory": entry["directory"], "file": path,
                               "arguments": clang_arguments(entry, path, clang_version, include_flags)}
    return [converted[path] for path in sorted(converted)]
