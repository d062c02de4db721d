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
import threading
import time
import unittest

sys.path.append(str(pathlib.Path(__file__).resolve().parents[2] / "scripts" / "lib"))
import postgres
from postgres import PASSWORD

SAMPLES = "sample-agents.json"
AGENT, ADDRESS = "3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3", "192.0.2.17"  # one of the samples
PATIENCE = 60

options = None  # --bin, --runner, --postgres


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
        cls.engine = postgres.Engine(cls.folder, options.postgres)
        cls.engine.start()
        cls.addClassCleanup(cls.engine.stop, "immediate")

    def setUp(self):
        self.name = self.id().rsplit(".", 1)[1].lower()[:60]  # PostgreSQL's limit is 63
        self.query(f"CREATE DATABASE {self.name}", "postgres")

    def query(self, sql, database=None):
        return self.engine.query(sql, database or self.name)

    def store(self, **parts):
        return self.engine.store(self.name, **parts)

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

    def mute_engine(self):
        """The port of an engine that admits everybody, and answers no statement."""
        def admit():
            with contextlib.suppress(OSError):  # the end of the test closes the server
                while True:
                    session, _ = server.accept()
                    self.addCleanup(session.close)
                    session.recv(4096)
                    session.sendall(b"R\0\0\0\x08\0\0\0\0" b"Z\0\0\0\x05I")
        server = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(server.close)
        self.addCleanup(server.shutdown, socket.SHUT_RDWR)
        threading.Thread(target=admit, daemon=True).start()
        return server.getsockname()[1]

    def test_what_is_wrong_is_said_in_the_drivers_words_without_the_password(self):
        mute = self.store().replace(str(self.engine.port), str(self.mute_engine()))
        for store, words in ((mute + ";SSLMode=disable;LoginTimeout=1;StatementTimeout=1", "no answer for 7 seconds"),
                             (self.store(password="wr;ng"), "password authentication failed"),
                             (self.store(driver="No Such Driver"), "Driver"),
                             (self.store().replace(str(self.engine.port), "1"), "onnect"),
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

    @contextlib.contextmanager
    def serving(self, more="", *serve):
        """wrbback over the samples, and wrbhost; yields what reads the lines of the back end."""
        self.expect("seed", "Z:" + str(options.bin / SAMPLES), store=self.store())
        environment = {**os.environ, "WRB_STORE": self.store() + more}
        log = "Z:" + str(self.folder / self.name)
        with contextlib.ExitStack() as stack:
            errors = stack.enter_context((self.folder / (self.name + ".errors")).open("w"))
            for ready, stop, *arguments in (("ready", ["stop"], "wrbback.exe", "serve", *serve, "--log-folder", log),
                                            ("serving", ["--stop"], "wrbhost.exe")):
                process = subprocess.Popen([options.runner, str(options.bin / arguments[0]), *arguments[1:]],
                                           stdout=subprocess.PIPE, stderr=errors, text=True, env=environment)
                stack.callback(process.communicate)
                stack.callback(run, arguments[0], *stop)
                while ready not in (line := process.stdout.readline()):
                    self.assertTrue(line, arguments[0] + " has ended")
            yield lambda: (self.folder / (self.name + ".errors")).read_text(encoding="utf-8")

    def send(self, *fields, timeout=PATIENCE):
        result = run("wrbctl.exe", "send", *fields, "--timeout", str(timeout))
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout.strip()

    def wait_for(self, wanted, ask):
        end = time.monotonic() + PATIENCE
        while (answer := ask()) != wanted and time.monotonic() < end:
            time.sleep(0.2)
        self.assertEqual(answer, wanted)

    def test_a_back_end_outlives_a_restart_of_its_engine(self):
        with self.serving():
            def ask():
                return self.send("CMDHL_GET_IP_BY_UID", AGENT)
            self.assertEqual(ask(), ADDRESS)
            self.engine.stop()
            try:
                self.assertEqual([ask(), ask()], ["", ""])
            finally:
                self.engine.start()
            self.wait_for(ADDRESS, ask)

    def test_an_engine_that_hangs_keeps_nobody_waiting_and_comes_back(self):
        def ask(*_):
            return self.send("CMDHL_GET_IP_BY_UID", AGENT)
        with self.serving(";StatementTimeout=1;LoginTimeout=1", "--connections", "2") as log:
            with self.engine.hung():
                with concurrent.futures.ThreadPoolExecutor(6) as askers:
                    self.assertEqual(set(askers.map(ask, range(12))), {""})
                self.wait_for(True, lambda: ask() == "" and "the database holds all connections" in log())
                self.assertEqual(self.send("CMDHL_ECHO", "hello"), "hello")
                self.send("CMDHL_PFW_SET_POLICY_ID", AGENT, "kept")
                self.wait_for(True, lambda: "DB_SET_CFW_ACTID is held: " in log())
            self.wait_for(ADDRESS, ask)
            policy = f"SELECT firewall_policy FROM agent WHERE uid = '{AGENT}'"
            self.wait_for("kept", lambda: self.query(policy))
            with self.engine.hung():
                self.send("CMDHL_PFW_SET_POLICY_ID", AGENT, "lost")
                self.wait_for(2, lambda: log().count("DB_SET_CFW_ACTID is held: "))
                self.assertEqual(run("wrbback.exe", "stop", "--timeout", "3").returncode, 4)
        for words in ("DB_GET_IP failed: odbc:", ": no answer for 6 seconds",
                      "giving up; not known to be stored: 1 DB_SET_CFW_ACTID"):
            self.assertIn(words, log())

    def test_what_goes_wrong_while_it_serves_is_said_and_passes(self):
        def ask():
            return self.send("CMDHL_GET_IP_BY_UID", AGENT)
        end_sessions = ("SELECT count(pg_terminate_backend(pid)) FROM pg_stat_activity "
                        f"WHERE datname = '{self.name}' AND pid <> pg_backend_pid()")
        arguments, environment = self.engine.psql("postgres")
        with self.serving() as log, subprocess.Popen(arguments, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                                     text=True, env=environment) as session:
            def tell(sql):
                session.stdin.write(sql + "; SELECT 'done';\n")
                session.stdin.flush()
                while (line := session.stdout.readline()) != "done\n":
                    self.assertTrue(line, "the session has ended")
            role, database = f"ALTER ROLE {postgres.USER} VALID UNTIL ", f"ALTER DATABASE {self.name} "
            store = "UPDATE wrb_store SET "
            for change, spoilt, sound, words in (
                    (tell, role + "'2000-01-01'", role + "'infinity'", "password authentication failed"),
                    (tell, database + "ALLOW_CONNECTIONS false", database + "ALLOW_CONNECTIONS true",
                     "not currently accepting connections"),
                    (self.query, store + "version = 99", store + "version = 4", "has version 99, this program knows 4"),
                    (self.query, store + "application = 1", store + "application = 1465008708",
                     "is a database of another program")):
                with self.subTest(words):
                    change(spoilt)
                    tell(end_sessions)
                    try:
                        self.wait_for("", ask)
                        self.wait_for(True, lambda words=words: words in log())
                    finally:
                        change(sound)
                    self.wait_for(ADDRESS, ask)
            tell(database + "SET default_transaction_read_only = on")
            tell(end_sessions)
            self.wait_for(ADDRESS, ask)
            self.send("CMDHL_PFW_SET_POLICY_ID", AGENT, "refused")
            self.wait_for(True, lambda: "in a read-only transaction" in log())
            self.assertEqual(ask(), ADDRESS)

    def test_a_locked_table_holds_up_no_other(self):
        def policies():
            return self.query("SELECT firewall_policy FROM agent WHERE uid = '" + AGENT + "'")
        arguments, environment = self.engine.psql(self.name)
        with self.serving(";StatementTimeout=20") as log:
            with subprocess.Popen(arguments, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                  env=environment) as session:
                session.stdin.write("BEGIN; LOCK TABLE scan; SELECT 'locked';\n")
                session.stdin.flush()
                self.assertEqual(session.stdout.readline(), "locked\n")
                self.send("CMDHL_SET_MS_CFG_EX", AGENT, "1", "folder", "file", "ext")
                self.assertEqual(self.send("CMDHL_GET_IP_BY_UID", AGENT), ADDRESS)
                self.assertNotIn(" failed: ", log())
                self.assertEqual(self.send("CMDHL_GET_MS_CFG", AGENT), "")
                self.send("CMDHL_PFW_SET_POLICY_ID", AGENT, "policy behind it")
                self.wait_for("policy behind it", policies)
                self.assertIsNone(session.poll())
                session.stdin.close()
            self.assertIn("ExtList=", self.send("CMDHL_GET_MS_CFG", AGENT))
        for failed in ("DB_SET_EXCLUDE_LIST failed: ", "DB_GET_MSCF failed: "):
            self.assertIn(failed, log())
        self.assertNotIn("DB_GET_IP failed", log())


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--bin", required=True, type=pathlib.Path, help="folder of the Windows programs")
    parser.add_argument("--runner", required=True, help="program that runs a Windows program")
    parser.add_argument("--postgres", required=True, type=pathlib.Path, help="folder of PostgreSQL's programs")
    options, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0], *rest])
