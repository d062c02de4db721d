"""The packages of scripts/package: installed silently, upgraded, used by the programs of the folder examples, and removed."""

import argparse
import pathlib
import re
import subprocess
import sys
import time
import unittest
import zipfile

AGENT = "3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3"
HOME_KEY = r"HKLM\SOFTWARE\CallowaySystems\Warrenby\service\Information"
options = None


def run(*command, check=True, timeout=300):
    """Standard output and error. The output goes to a file: services that a program starts would hold a pipe open."""
    log = options.work / "output.txt"
    with open(log, "wb") as output:
        result = subprocess.run([str(word) for word in command], stdout=output, stderr=subprocess.STDOUT, timeout=timeout)
    text = log.read_text(errors="replace")
    if check and result.returncode != 0:
        raise AssertionError(f"{command} ended with {result.returncode}\n{text}")
    return text


def windows(path):
    return "Z:" + str(path).replace("/", "\\")


def package(*arguments):
    run(options.source / "scripts/package", "--preset", options.preset, "--no-build", "--output", options.work, *arguments)


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        package("--version", "0.0.1", "--msi")
        package()
        cls.folder = options.work / "a folder with blanks"
        cls.home = cls.folder / "Server"
        cls.msi = {path.name.split("-")[1] == "0.0.1": path for path in options.work.glob("*.msi")}

    def tearDown(self):
        for msi in self.msi.values():  # what a failure has left
            run(options.runner, "msiexec", "/x", windows(msi), "/qn", "PURGE=1", check=False)

    def wine(self, program, *arguments, check=True):
        return run(options.runner, program, *arguments, check=check)

    def program(self, name, *arguments, check=True):
        return self.wine(self.folder / "bin" / f"{name}.exe", *arguments, check=check)

    def msiexec(self, *arguments):
        self.wine("msiexec", *arguments, "/qn", "/l*v", windows(options.work / "msi.log"))

    def install(self, old, account="LocalService", choose=True):
        chosen = ["INSTALLDIR=" + windows(self.folder), "SERVICEACCOUNT=NT AUTHORITY\\" + account] if choose else []
        self.msiexec("/i", windows(self.msi[old]), *chosen)
        for name in ("wrbback", "wrbhost"):
            status = self.program(name, "service", "status")
            self.assertIn("state:   running", status)
            self.assertIn(account, status)

    def answer_with(self, part, *command):
        """A change is stored some time after its command."""
        for _ in range(100):
            answer = self.program("wrbctl", "send", *command)
            if part in answer:
                return
            time.sleep(0.1)
        self.fail(answer)

    def test_the_server_is_installed_upgraded_and_removed(self):
        self.install(old=True, account="NetworkService")
        self.assertIn("hello", self.program("wrbctl", "send", "CMDHL_ECHO", "hello"))
        self.program("wrbback", "seed", self.folder / "samples" / "agents.json")
        self.program("wrbctl", "status")  # ends with 0 when all that serves does
        self.program("wrbctl", "send", "CMDHL_SET_MS_CFG_EX", AGENT, "0", r"C:\kept", "", "")
        self.answer_with(r"ExcludedFolder=C:\kept", "CMDHL_GET_MS_CFG_EX", AGENT)

        self.install(old=False, choose=False)  # Wine does not tell the removal that it is an upgrade: the account goes
        self.answer_with(r"ExcludedFolder=C:\kept", "CMDHL_GET_MS_CFG_EX", AGENT)
        self.examples_answer()

        self.msiexec("/x", windows(self.msi[False]))
        self.assertFalse((self.folder / "bin").exists())
        for kept in ("Data/agents.db", "Private/wrbserver.ini"):
            self.assertTrue((self.home / kept).is_file(), kept)
        self.assertNotIn("Local_Path", self.wine("reg", "query", HOME_KEY, check=False))

        self.install(old=False)
        self.answer_with(r"ExcludedFolder=C:\kept", "CMDHL_GET_MS_CFG_EX", AGENT)
        self.msiexec("/x", windows(self.msi[False]), "PURGE=1")
        self.assertEqual([], [path for path in self.folder.rglob("*") if path.is_file()])

    def examples_answer(self):
        archive = next(options.work.glob("*-win64.zip"))
        zipfile.ZipFile(archive).extractall(options.work)
        tree = options.work / archive.stem
        build = options.work / "examples"
        run("cmake", "-G", "Ninja", "-S", tree / "examples", "-B", build, "-D", f"CMAKE_TOOLCHAIN_FILE={options.toolchain}",
            "-D", f"CMAKE_PREFIX_PATH={tree}")
        run("cmake", "--build", build)
        for program in ("ask_library", "ask_host"):
            answer = self.wine(tree / "bin" / f"{program}.exe", AGENT)
            self.assertTrue(answer.startswith("[Manual Scan Configuration]\n"), answer)

    def test_the_same_sources_make_the_same_packages(self):
        def content(path):
            return re.sub(rb"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}", b"", path.read_bytes())  # the package code
        made = [*options.work.glob("*.zip"), self.msi[False]]
        before = {path: content(path) for path in made}
        package()
        for path in made:
            self.assertEqual(before[path], content(path), path)
        self.assertEqual(3, len(made))


def main():
    global options
    parser = argparse.ArgumentParser()
    for name in ("source", "runner", "toolchain", "work"):
        parser.add_argument("--" + name, type=pathlib.Path, required=True)
    parser.add_argument("--preset", required=True)
    options, rest = parser.parse_known_args()
    options.work.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=[sys.argv[0], *rest], verbosity=2)


main()
