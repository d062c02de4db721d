#!/usr/bin/env python3
"""wrbback over PostgreSQL: a server of its own on a free port of this machine, in a folder of its own.

Runs on the build machine itself; only the Windows programs go through the runner.
"""

import argparse
import concurrent.futures
import contextlib
import json
import os
import pathlib
import shutil
import socket
import subprocess
import sys
import tempfile
import unittest

USER, PASSWORD = "wrb", "s;cret"  # a semicolon: the connection string needs braces
SAMPLES = "sample-agents.json"

options = None  # --bin, --runner, --postgres


def as_server(*arguments):
    """PostgreSQL refuses to run as root."""
    drop = ["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"] if os.getuid() == 0 else []
    subprocess.run([*drop, *arguments], check=True, timeout=120, stdout=subprocess.DEVNULL, stderr=subprocess.STDOUT)


def free_port():
    with contextlib.closing(socket.socket()) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def run(program, *arguments, store=None, **environment):
    variables = {**os.environ, **environment}
    if store:
        variables["WRB_STORE"] = store
    return subprocess.run([options.runner, str(options.bin / program), *arguments], timeout=280, text=True,
                          encoding="utf-8", capture_output=True, env=variables)


class Postgres(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="postgres_test."))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.folder.chmod(0o777)
        cls.port = free_port()
        secret = cls.folder / "password"
        secret.write_text(PASSWORD)
        data = str(cls.folder / "data")
        as_server(options.postgres / "initdb", "-D", data, "-U", USER, "-A", "scram-sha-256", f"--pwfile={secret}",
                  "-E", "UTF8", "--locale=C.UTF-8", "--no-sync")
        control = [options.postgres / "pg_ctl", "-D", data, "-w", "-l", str(cls.folder / "log")]
        as_server(*control, "-o", f"-p {cls.port} -h 127.0.0.1 -k {cls.folder} -F", "start")
        cls.addClassCleanup(as_server, *control, "-m", "immediate", "stop")

    def setUp(self):
        self.name = self.id().rsplit(".", 1)[1].lower()[:60]  # PostgreSQL's limit is 63
        self.query(f"CREATE DATABASE {self.name}", "postgres")

    def query(self, sql, database=None):
        return subprocess.run([options.postgres / "psql", "-qAth", "127.0.0.1", "-p", str(self.port), "-U", USER, "-c", sql,
                               database or self.name],
                              check=True, timeout=60, text=True, stdout=subprocess.PIPE,
                              env={**os.environ, "PGPASSWORD": PASSWORD}).stdout.strip()

    def store(self, driver="PostgreSQL Unicode", password=PASSWORD):
        return (f"odbc:Driver={{{driver}}};Server=127.0.0.1;Port={self.port};Database={self.name};Uid={USER};"
                f"Pwd={{{password}}}")

    def expect(self, *arguments, store=None):
        result = run("wrbback.exe", *arguments, store=store)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertNotIn(PASSWORD, result.stdout + result.stderr)
        return result.stdout

    def test_seed_export_seed_is_the_identity_on_both_engines(self):
        sqlite = "sqlite:" + "Z:" + str(self.folder / "agents.db").replace("/", "\\")
        exported = self.folder / "exported.json"
        for store, file in ((self.store(), options.bin / SAMPLES), (sqlite, exported), (self.store(), exported)):
            self.expect("seed", "Z:" + str(file), store=store)
            text = self.expect("export", store=store)
            if exported.exists():
                self.assertEqual(text, exported.read_text(encoding="utf-8"))
            exported.write_text(text, encoding="utf-8")
        agents = json.loads(self.expect("agents", "--json", "--filter", "RECEPTION", store=self.store()))
        self.assertEqual([agent["computer"] for agent in agents], ["RECEPTION-01"])
        self.assertIn("no fault found", self.expect("check", store=self.store()))

    def test_what_is_wrong_is_said_in_the_drivers_words_without_the_password(self):
        for store, words in ((self.store(password="wr;ng"), "password authentication failed"),
                             (self.store(driver="No Such Driver"), "Driver"),
                             (self.store().replace(str(self.port), "1"), "onnect"),
                             (self.store(), "is empty; fill it with")):
            result = run("wrbback.exe", "check", store=store)
            self.assertEqual(result.returncode, 1)
            self.assertIn(words, result.stderr)
            self.assertIn(f"Database={self.name}", result.stderr)
            for secret in (PASSWORD, "wr;ng", "Pwd"):
                self.assertNotIn(secret, result.stderr)

    def test_behaviour_is_that_of_sqlite(self):
        result = run("back_test.exe", "--gtest_filter=BackDatabase*:BackBundles*:BackRecords.WhatTheClients*",
                     WRB_TEST_STORE=self.store())
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)

    def test_two_back_ends_share_one_engine(self):
        uids = [f"00000000-0000-0000-0000-{thread:012}" for thread in range(8)]
        seed = self.folder / "shared.json"
        seed.write_text(json.dumps({"agents": [{"uid": uid} for uid in uids]}), encoding="utf-8")
        self.expect("seed", "Z:" + str(seed), store=self.store())
        sides = [{}, {"WINEPREFIX": str(self.folder / "prefix")}]  # pipes belong to a prefix
        with concurrent.futures.ThreadPoolExecutor() as both:
            results = list(both.map(
                lambda side: run("back_test.exe", "--gtest_filter=BackShared.*", store=self.store(),
                                 WRB_TEST_SIDE=str(side), **sides[side]), (0, 1)))
        for result in results:
            self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
            self.assertNotIn("SKIPPED", result.stdout)
        agents = json.loads(self.expect("export", store=self.store()))["agents"]
        self.assertEqual([agent["changed"] for agent in agents], [0xFFFFFFFF] * 8)
        self.assertEqual(self.query("SELECT count(*) FROM special_log"), "256")

    def test_connections_share_agents_and_come_back(self):
        result = run("wrbback_test.exe", "--gtest_filter=SharedStore.*", WRB_TEST_STORE=self.store())
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertNotIn("SKIPPED", result.stdout)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--bin", required=True, type=pathlib.Path, help="folder of the Windows programs")
    parser.add_argument("--runner", required=True, help="program that runs a Windows program")
    parser.add_argument("--postgres", required=True, type=pathlib.Path, help="folder of PostgreSQL's programs")
    options, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0], *rest])
