#!/usr/bin/env python3
"""cgiServerStatus under a real web server (lighttpd with mod_cgi), and run by hand with lengths that no server passes on.

Runs on the build machine itself; only the Windows programs go through the runner.
"""

import argparse
import configparser
import html
import http.client
import os
import pathlib
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.parse

HOME_KEY = r"HKLM\SOFTWARE\CallowaySystems\Warrenby\service\Information"
SECTION = "Manual Scan Configuration"
FORM = "application/x-www-form-urlencoded"
MULTIPART = "multipart/form-data; boundary=bbb"
DLLS = ("libCmdHndlrClient.dll", "libPerfWrbyPerfMonMgr.dll")

options = None  # --bin, --runner, --lighttpd


def windows_path(path):
    return "Z:" + str(path).replace("/", "\\")


def run(program, *arguments, **keywords):
    return subprocess.run([options.runner, program, *arguments], timeout=120, check=True, **keywords)


def part(disposition, content):
    return f"--bbb\r\nContent-Disposition: form-data; {disposition}\r\n\r\n{content}\r\n"


def upload(content, file_name="defaults.ini"):
    return part('name="action"', "upload") + part(f'name="defaults"; filename="{file_name}"', content) + "--bbb--\r\n"


def form(**fields):
    return urllib.parse.urlencode({"action": "store", **fields, "complete": "1"})


class StatusPage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="status_page_test."))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.home = cls.folder / "home"
        cls.lay_out_home()
        # Also starts Wine's own services, which would otherwise hold on to the output of the first page.
        run("reg", "add", HOME_KEY, "/v", "Local_Path", "/d", windows_path(cls.home), "/f",
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        cls.addClassCleanup(run, "reg", "delete", HOME_KEY, "/v", "Local_Path", "/f",
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        cls.start_web_server()

    @classmethod
    def lay_out_home(cls):
        cls.programs = cls.home / "web" / "console" / "cgi"
        cls.programs.mkdir(parents=True)
        (cls.home / "Private").mkdir()
        for name in ("cgiServerStatus.exe", *DLLS):
            shutil.copy(pathlib.Path(options.bin) / name, cls.programs)
        # The web server hands a program the request's variables and no others.
        wrapper = cls.programs / "status.cgi"
        kept = "".join(f"export {name}='{os.environ[name]}'\n" for name in ("HOME", "PATH", "WINEPREFIX")
                       if name in os.environ)
        wrapper.write_text(f"#!/bin/sh\n{kept}exec '{options.runner}' '{cls.programs}/cgiServerStatus.exe'\n")
        wrapper.chmod(0o755)

    @classmethod
    def start_web_server(cls):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            cls.port = probe.getsockname()[1]
        config = cls.folder / "lighttpd.conf"
        config.write_text(f"""
server.modules = ("mod_cgi")
server.bind = "127.0.0.1"
server.port = {cls.port}
server.document-root = "{cls.home}/web"
server.errorlog = "{cls.folder}/error.log"
server.upload-dirs = ("{cls.folder}")
cgi.assign = (".cgi" => "")
""")
        server = subprocess.Popen([options.lighttpd, "-D", "-f", config])
        cls.addClassCleanup(server.wait)
        cls.addClassCleanup(server.terminate)
        for _ in range(100):
            with socket.socket() as probe:
                if probe.connect_ex(("127.0.0.1", cls.port)) == 0:
                    return
            time.sleep(0.1)
        raise RuntimeError("the web server does not answer")

    def setUp(self):
        (self.home / "wrbscan.ini").write_text(f"[{SECTION}]\nCompressedLayer=6\nMoveDir=\\quarantine\n")
        (self.home / "Private" / "wrbserver.ini").write_text(
            "[LOG_TICKET_SECTION]\nMaxWaitTime=-1\nNumberOfMaxProcessingLogInSec=0\n"
            "NumberOfConcurrentLogUploadingClient=99\n")

    def ask(self, method, body=None, content_type=None, **headers):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        if content_type:
            headers["Content-Type"] = content_type
        connection.request(method, "/console/cgi/status.cgi", body, headers)
        answer = connection.getresponse()
        page = answer.read().decode()
        connection.close()
        self.assertEqual(answer.headers["Content-Type"], "text/html; charset=utf-8")
        self.assertTrue(page.rstrip().endswith("</html>"), page)
        return answer.status, page

    def settings(self):
        ini = configparser.RawConfigParser()
        ini.optionxform = str
        ini.read(self.home / "wrbscan.ini")
        return dict(ini[SECTION])

    def assert_nothing_left(self):
        """Nothing stored, and no file but those of the set-up."""
        self.assertEqual(self.settings(), {"CompressedLayer": "6", "MoveDir": "\\quarantine"})
        self.assert_no_upload()

    def assert_no_upload(self):
        expected = {"wrbscan.ini", "wrbserver.ini", "cgiServerStatus.exe", "status.cgi", *DLLS}
        self.assertEqual({path.name for path in self.home.rglob("*") if path.is_file()}, expected)

    def test_shows_counters_and_ticket(self):
        host = subprocess.Popen([options.runner, f"{options.bin}/wrbhost.exe"], stdout=subprocess.PIPE)
        self.addCleanup(host.communicate)
        self.addCleanup(run, f"{options.bin}/wrbhost.exe", "--stop", stdout=subprocess.DEVNULL)
        self.assertIn(b"serving", host.stdout.readline())
        for command in (["CMDHL_GET_MS_CFG", ""],) * 3 + (["CMDHL_CMDHL_GET_CLN_ALERT_MSG", "", "1"],):
            run(f"{options.bin}/wrbctl.exe", "send", *command, stdout=subprocess.DEVNULL)
        status, page = self.ask("GET")
        self.assertEqual(status, 200)
        self.assertIn('<tr><td>CMDHL_GET_MS_CFG</td><td class="n">3</td>', page)
        self.assertIn('<tr><td>CMDHL_CMDHL_GET_CLN_ALERT_MSG type 1</td><td class="n">1</td>', page)
        for key, value in (("NumberOfConcurrentLogUploadingClient", 40), ("NumberOfMaxProcessingLogInSec", 4),
                           ("MaxWaitTime", 4294967295), ("MaxUploadTime", 60)):
            self.assertIn(f'<td>{key}</td><td class="n">{value}</td>', page)

    def test_stores_the_form(self):
        hostile = '.EXE, <script>"&\''
        status, page = self.ask("POST", form(ScanBoot=0, ScanSpeed=2, CompressedLayer=255, ExtList=hostile), FORM,
                                Origin=f"http://127.0.0.1:{self.port}")
        self.assertEqual(status, 200)
        self.assertIn("Stored: ScanBoot, CompressedLayer, ExtList, ScanSpeed<", page)
        self.assertIn(f'value="{hostile}"', html.unescape(page))
        self.assertNotIn("<script", page)
        stored = self.settings()
        expected = {"ScanBoot": "0", "ScanSpeed": "2", "CompressedLayer": "255", "ExtList": hostile,
                    "MoveDir": "\\quarantine", "ScanMemory": "1"}
        self.assertEqual({key: stored[key] for key in expected}, expected)
        self.assertIn('name="ScanBoot"><option selected>0<', self.ask("GET")[1])

    def test_takes_an_uploaded_file(self):
        content = f"[{SECTION}]\r\nScanNetwork=1\r\nCustAction=Virus-1-2\r\n[Other]\r\nScanBoot=0\r\n"
        status, page = self.ask("POST", upload(content, "..\\..\\..\\climbs.ini"), MULTIPART)
        self.assertEqual(status, 200, page)
        self.assertIn("Stored: CustAction, ScanNetwork<", page)
        self.assertEqual(self.settings()["CustAction"], "Virus-1-2")
        self.assertEqual(self.settings()["ScanBoot"], "1")
        self.assert_no_upload()

    def test_answers_hostile_requests_and_keeps_nothing_of_them(self):
        good = f"[{SECTION}]\r\nScanNetwork=1\r\n"
        many = "".join(part('name="defaults"; filename="f"', good) for _ in range(10000)) + "--bbb--"
        private = windows_path(self.home / "Private" / "wrbserver.ini")
        cases = [
            (405, "PUT", form(ScanBoot=0), FORM, {}),
            (415, "POST", form(ScanBoot=0), "text/plain", {}),
            (403, "POST", form(ScanBoot=0), FORM, {"Origin": "https://other.example"}),
            (403, "POST", form(ScanBoot=0), FORM, {"Sec-Fetch-Site": "cross-site"}),
            (400, "POST", "", FORM, {}),
            (400, "POST", "action=drop", FORM, {}),
            (400, "POST", "action=store&ScanBoot=0", FORM, {}),
            (400, "POST", form(ScanBoot=2), FORM, {}),
            (400, "POST", form(ScanSpeed=3), FORM, {}),
            (400, "POST", form(CompressedLayer=256), FORM, {}),
            (400, "POST", form(CompressedLayer="-1"), FORM, {}),
            (400, "POST", form(ScanBoot=0, ExtList="a\r\n[x]"), FORM, {}),
            (400, "POST", form(ScanBoot=0, ExtList="'a'"), FORM, {}),
            (400, "POST", form(ScanBoot=0, ExtList="x" * 1025), FORM, {}),
            (400, "POST", "%" * (1 << 20), FORM, {}),
            (400, "POST", form(ScanBoot=0).ljust(5242881, "&"), FORM, {}),
            (413, "POST", upload(good.ljust(5242881)), MULTIPART, {}),
            (400, "POST", upload(good)[:-6], MULTIPART, {}),
            (400, "POST", upload(good), "multipart/form-data", {}),
            (400, "POST", upload(good), MULTIPART + "c", {}),
            (400, "POST", upload("[Other]\r\nScanBoot=0\r\n"), MULTIPART, {}),
            (400, "POST", upload(f"[{SECTION}]\r\nScanBoot=yes\r\nScanNetwork=1\r\n"), MULTIPART, {}),
            (400, "POST", part("name=action", "upload") + part("name=defaults", private) + "--bbb--", MULTIPART, {}),
            (400, "POST", part('name="x"; filename="x"', good) * 2 + "--bbb--", MULTIPART, {}),
            (400, "POST", many, MULTIPART, {}),
        ]
        for expected, method, body, content_type, headers in cases:
            with self.subTest(expected=expected, body=body[:80], type=content_type, **headers):
                self.assertEqual(self.ask(method, body, content_type, **headers)[0], expected)
                self.assert_nothing_left()

    def test_survives_lengths_that_lie(self):
        body = form(ScanBoot=0)
        file = upload(f"[{SECTION}]\r\nScanNetwork=1\r\n")
        cases = [
            (FORM, body, "-1", "400"),
            (FORM, body, str(2**63), "400"),
            (FORM, body, str(2**64 + len(body)), "400"),
            (FORM, body, "many", "400"),
            (FORM, body, None, "400"),
            (FORM, body[:-3], "5000000", "400"),
            (MULTIPART, file, "-1", "413"),
            (MULTIPART, file, str(2**63), "413"),
            (MULTIPART, file, "many", "411"),
            (MULTIPART, file, "5000000", "400"),
        ]
        for content_type, text, length, expected in cases:
            with self.subTest(type=content_type, length=length):
                variables = {"REQUEST_METHOD": "POST", "CONTENT_TYPE": content_type, "CONTENT_LENGTH": length}
                environment = os.environ | {name: value for name, value in variables.items() if value is not None}
                answer = run(f"{self.programs}/cgiServerStatus.exe", env=environment, input=text.encode(),
                             stdout=subprocess.PIPE).stdout.decode()
                self.assertTrue(answer.startswith(f"Status: {expected} "), answer[:80])
                self.assert_nothing_left()


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--bin", required=True, help="folder of the built programs")
    parser.add_argument("--runner", required=True, help="program that runs a Windows program")
    parser.add_argument("--lighttpd", required=True)
    options, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0], *rest])
