#!/usr/bin/env python3
"""Runs clang's thread-safety analysis and clang-tidy over the project's own sources, in parallel.

A source found clean is not analysed again until it, a project header that it includes, its compile command or the
configuration changes. Prints the findings and one line of summary; exit code 1 when there is a finding.
"""
import argparse
import concurrent.futures
import glob
import hashlib
import json
import os
import subprocess
import sys

import clang_database

THREAD_SAFETY = ["-fsyntax-only", "-Wthread-safety", "-Werror=thread-safety"]


def digest(*parts):
    return hashlib.sha256("\0".join(parts).encode()).hexdigest()


def file_digest(path):
    try:
        with open(path, "rb") as file:
            return hashlib.sha256(file.read()).hexdigest()
    except OSError:
        return None


class Stamp:
    """Remembers under which inputs a source was found clean."""

    def __init__(self, folder, entry, configuration):
        name = digest(entry["file"])[:32]
        self.path = os.path.join(folder, name + ".json")
        self.dependency_file = os.path.join(folder, name + ".d")
        self.key = digest(configuration, *entry["arguments"])

    def is_current(self):
        try:
            with open(self.path, encoding="utf-8") as file:
                stored = json.load(file)
        except (OSError, ValueError):
            return False
        return stored["key"] == self.key and all(file_digest(path) == value for path, value in stored["inputs"].items())

    def write(self, inputs):
        with open(self.path, "w", encoding="utf-8") as file:
            json.dump({"key": self.key, "inputs": inputs}, file)

    def inputs(self, directory):
        """The source and the project's headers, as the compiler listed them in make's syntax."""
        with open(self.dependency_file, encoding="utf-8") as file:
            listed = file.read().split(":", 1)[1].replace("\\\n", " ").split()
        paths = [os.path.realpath(os.path.join(directory, path)) for path in listed]
        return {path: file_digest(path) for path in paths}


def run(command, directory):
    """None when the command finds nothing, else what it printed."""
    done = subprocess.run(command, cwd=directory, capture_output=True, text=True, errors="replace", check=False)
    if done.returncode == 0:
        return None
    lines = (done.stdout + done.stderr).splitlines()
    return "\n".join(line for line in lines if not line.endswith(" warnings generated."))


def analyse(entry, stamp, options):
    directory = entry["directory"]
    found = run(entry["arguments"] + THREAD_SAFETY + ["-MMD", "-MT", "x", "-MF", stamp.dependency_file], directory)
    if found:
        return found
    inputs = stamp.inputs(directory)
    if not options.fast:
        found = run([f"clang-tidy-{options.clang}", "--quiet", "-p", options.work, entry["file"]], directory)
    if not found:
        stamp.write(inputs)
    return found


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--database", required=True, help="compile_commands.json of the cross build")
    parser.add_argument("--repository", required=True)
    parser.add_argument("--work", required=True, help="folder for the converted database and the stamps")
    parser.add_argument("--clang", required=True, help="major version of the clang tools")
    parser.add_argument("--fast", action="store_true", help="leave out clang-tidy")
    parser.add_argument("paths", nargs="*", help="only sources under these files or folders")
    return parser.parse_args()


def main():
    options = parse_arguments()
    repository = os.path.realpath(options.repository)
    entries = clang_database.convert(options.database, repository, options.clang)
    stamps = os.path.join(options.work, "fast" if options.fast else "full")
    os.makedirs(stamps, exist_ok=True)
    with open(os.path.join(options.work, "compile_commands.json"), "w", encoding="utf-8") as file:
        json.dump(entries, file, indent=1)

    wanted = [os.path.realpath(path) for path in options.paths]
    if wanted:
        entries = [e for e in entries if any((e["file"] + os.sep).startswith(path + os.sep) for path in wanted)]
    if not entries:
        sys.exit("analyse: no source to look at")

    rules = [os.path.join(repository, ".clang-tidy"), *glob.glob(os.path.join(repository, "*", ".clang-tidy"))]
    configuration = "" if options.fast else "".join(map(str, map(file_digest, sorted(rules))))
    due = [(e, s) for e in entries for s in [Stamp(stamps, e, options.clang + configuration)] if not s.is_current()]
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        for found in pool.map(lambda work: analyse(*work, options), due):
            if found:
                failed += 1
                print(found.strip(), flush=True)
    print(f"analysis: {len(entries)} sources, {len(due)} of them changed, {failed} with findings")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
