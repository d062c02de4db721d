#!/usr/bin/env python3
"""cgiConsole under a real web server, and run by hand with lengths that no server passes on."""

import argparse
import configparser
import html
import http.client
import os
import re
import subprocess
import sys
import unittest
import urllib.parse

import console_site
from console_site import DLLS, OPEN_PAGE, PAGE, authorization, windows_path

SECTION = "Manual Scan Configuration"
FORM = "application/x-www-form-urlencoded"
MULTIPART = "multipart/form-data; boundary=bbb"

options = None  # those of console_site


def part(disposition, content):
    return f"--bbb\r\nContent-Disposition: form-data; {disposition}\r\n\r\n{content}\r\n"


def field(name, value):
    return part(f'name="{name}"', value)


class ConsoleTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.site = console_site.Site(options, cls.addClassCleanup)
        cls.home = cls.site.home
        cls.session, cls.token = cls.sign_in("operator")

    @classmethod
    def sign_in(cls, user):
        """A session's cookie and the token of its forms."""
        connection = http.client.HTTPConnection("127.0.0.1", cls.site.port, timeout=60)
        connection.request("GET", PAGE + "?page=settings", headers={"Authorization": authorization(user)})
        answer = connection.getresponse()
        page = answer.read().decode()
        return (answer.headers["Set-Cookie"].split(";")[0], re.search(r'name="token" value="(\w+)"', page)[1])

    def form(self, **fields):
        return urllib.parse.urlencode({"page": "settings", "action": "store", "token": self.token, **fields,
                                       "complete": "1"})

    def upload(self, content, file_name="defaults.ini"):
        return (field("page", "settings") + field("action", "upload") + field("token", self.token) +
                part(f'name="defaults"; filename="{file_name}"', content) + field("complete", "1") + "--bbb--\r\n")

    def setUp(self):
        (self.home / "wrbscan.ini").write_text(f"[{SECTION}]\nCompressedLayer=6\nMoveDir=\\quarantine\n")
        (self.home / "Private" / "wrbserver.ini").write_text(
            "[LOG_TICKET_SECTION]\nMaxWaitTime=-1\nNumberOfMaxProcessingLogInSec=0\n"
            "NumberOfConcurrentLogUploadingClient=99\n")

    def ask(self, method, body=None, content_type=None, query="", path=PAGE, **headers):
        """The answer's status and page. A redirect is followed."""
        connection = http.client.HTTPConnection("127.0.0.1", self.site.port, timeout=60)
        headers = {"Authorization": authorization(), "Cookie": self.session} | headers
        if path == OPEN_PAGE:
            del headers["Authorization"]
        if content_type:
            headers["Content-Type"] = content_type
        connection.request(method, path + query, body, headers)
        answer = connection.getresponse()
        page = answer.read().decode()
        connection.close()
        if answer.status == 303:
            return self.ask("GET", query=answer.headers["Location"].removeprefix(PAGE))
        self.assertEqual(answer.headers["Content-Type"], "text/html; charset=utf-8", (answer.status, page))
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
        expected = {"wrbscan.ini", "wrbserver.ini", "console.key", "cgiConsole.exe", "console.cgi", *DLLS}
        self.assertEqual({path.name for path in self.home.rglob("*") if path.is_file()}, expected)

    def test_shows_counters_and_ticket(self):
        self.site.start("wrbhost", b"serving", stop=("--stop",))
        for command in (["CMDHL_GET_MS_CFG", ""],) * 3 + (["CMDHL_CMDHL_GET_CLN_ALERT_MSG", "", "1"],):
            self.site.program("wrbctl", "send", *command)
        status, page = self.ask("GET")
        self.assertEqual(status, 200)
        for name, calls in (("CMDHL_GET_MS_CFG", 3), ("CMDHL_CMDHL_GET_CLN_ALERT_MSG type 1", 1)):
            self.assertIn(f'<th scope="row">{name}</th><td class="n">{calls}</td>', page)
        page = self.ask("GET", query="?page=uploads")[1]
        for key, value in (("NumberOfConcurrentLogUploadingClient", 40), ("NumberOfMaxProcessingLogInSec", 4),
                           ("MaxWaitTime", 4294967295), ("MaxUploadTime", 60)):
            self.assertIn(f'<th scope="row">{key}</th><td class="n">{value}</td>', page)

    def test_tells_a_person_its_version_and_a_browser_nothing_of_it(self):
        for method, first in (({}, "cgiConsole "), ({"REQUEST_METHOD": "GET"}, "Status: 403 ")):
            output = self.site.run(f"{self.site.programs}/cgiConsole.exe", "--version", env=os.environ | method,
                                   stdout=subprocess.PIPE).stdout.decode()
            self.assertTrue(output.startswith(first), output)

    def test_stores_the_form(self):
        hostile = '.EXE, <script>"&\''
        form = self.form(ScanBoot=0, ScanSpeed=2, CompressedLayer=255, ExtList=hostile)
        status, page = self.ask("POST", form, FORM, Origin=f"http://127.0.0.1:{self.site.port}")
        self.assertEqual(status, 200)
        self.assertIn("4 settings stored.", page)
        self.assertIn(f'value="{hostile}"', html.unescape(page))
        self.assertNotIn("<script", page)
        self.assertEqual(self.settings(), {"ScanBoot": "0", "ScanSpeed": "2", "CompressedLayer": "255",
                                           "ExtList": hostile, "MoveDir": "\\quarantine"})
        self.assertIn('name="was.ScanBoot" value="0"', self.ask("GET", query="?page=settings")[1])

    def test_takes_an_uploaded_file(self):
        content = f"[{SECTION}]\r\nScanNetwork=1\r\nCustAction=Virus-1-2\r\n[Other]\r\nScanBoot=0\r\n"
        status, page = self.ask("POST", self.upload(content, "..\\..\\..\\climbs.ini"), MULTIPART)
        self.assertEqual(status, 200, page)
        self.assertIn("2 settings stored.", page)
        self.assertEqual(self.settings()["CustAction"], "Virus-1-2")
        self.assertNotIn("ScanBoot", self.settings(), "it stands in another section")
        self.assert_no_upload()

    def test_answers_hostile_requests_and_keeps_nothing_of_them(self):
        good = f"[{SECTION}]\r\nScanNetwork=1\r\n"
        many = "".join(part('name="defaults"; filename="f"', good) for _ in range(10000)) + "--bbb--"
        private = windows_path(self.home / "Private" / "wrbserver.ini")
        other_session, other_token = self.sign_in("auditor")
        cases = [
            (405, "PUT", self.form(ScanBoot=0), FORM, {}),
            (415, "POST", self.form(ScanBoot=0), "text/plain", {}),
            (403, "POST", self.form(ScanBoot=0), FORM, {"Origin": "https://other.example"}),
            (403, "POST", self.form(ScanBoot=0), FORM, {"Sec-Fetch-Site": "cross-site"}),
            (400, "POST", "", FORM, {}),
            (400, "POST", self.form(action="drop"), FORM, {}),
            (400, "POST", self.form(group="None"), FORM, {}),
            (400, "POST", "page=settings&action=store&ScanBoot=0", FORM, {}),
            (404, "POST", self.form(page="none"), FORM, {}),
            (405, "POST", self.form(page="overview"), FORM, {}),
            (403, "POST", self.form(ScanBoot=0, token=""), FORM, {}),
            (403, "POST", self.form(ScanBoot=0, token=other_token), FORM, {}),
            (403, "POST", self.form(ScanBoot=0), FORM, {"Cookie": other_session}),
            (403, "POST", self.form(ScanBoot=0, token=other_token), FORM, {"Cookie": other_session}),
            (403, "POST", self.form(ScanBoot=0), FORM, {"path": OPEN_PAGE}),
            (403, "GET", None, None, {"path": OPEN_PAGE}),
            (403, "GET", None, None, {"Sec-Fetch-Site": "cross-site", "Sec-Fetch-Dest": "image"}),
            (400, "POST", self.form(ScanBoot=2), FORM, {}),
            (400, "POST", self.form(ScanSpeed=3), FORM, {}),
            (400, "POST", self.form(CompressedLayer=256), FORM, {}),
            (400, "POST", self.form(CompressedLayer="-1"), FORM, {}),
            (400, "POST", self.form(ScanBoot=0, ExtList="a\r\n[x]"), FORM, {}),
            (400, "POST", self.form(ScanBoot=0, ExtList="'a'"), FORM, {}),
            (400, "POST", self.form(ScanBoot=0, ExtList="x" * 8193), FORM, {}),
            (400, "POST", "%" * (1 << 20), FORM, {}),
            (400, "POST", self.form(ScanBoot=0).ljust(5242881, "&"), FORM, {}),
            (413, "POST", self.upload(good.ljust(5242881)), MULTIPART, {}),
            (400, "POST", self.upload(good)[:-6], MULTIPART, {}),
            (400, "POST", self.upload(good), "multipart/form-data", {}),
            (400, "POST", self.upload(good), MULTIPART + "c", {}),
            (400, "POST", self.upload("[Other]\r\nScanBoot=0\r\n"), MULTIPART, {}),
            (400, "POST", self.upload(f"[{SECTION}]\r\nScanBoot=yes\r\nScanNetwork=1\r\n"), MULTIPART, {}),
            (400, "POST", self.upload(good).replace('"defaults"; filename="defaults.ini"', '"other"')
             .replace("--bbb--", field("defaults", private) + "--bbb--"), MULTIPART, {}),
            (400, "POST", part('name="x"; filename="x"', good) * 2 + "--bbb--", MULTIPART, {}),
            (400, "POST", many, MULTIPART, {}),
        ]
        for expected, method, body, content_type, headers in cases:
            with self.subTest(expected=expected, body=str(body)[:80], type=content_type, **headers):
                self.assertEqual(self.ask(method, body, content_type, **headers)[0], expected)
                self.assert_nothing_left()

    def test_survives_lengths_that_lie(self):
        body = self.form(ScanBoot=0)
        file = self.upload(f"[{SECTION}]\r\nScanNetwork=1\r\n")
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
                variables = {"REQUEST_METHOD": "POST", "CONTENT_TYPE": content_type, "CONTENT_LENGTH": length,
                             "REMOTE_USER": "operator", "HTTP_COOKIE": self.session}
                environment = os.environ | {name: value for name, value in variables.items() if value is not None}
                answer = self.site.run(f"{self.site.programs}/cgiConsole.exe", env=environment, input=text.encode(),
                                       stdout=subprocess.PIPE).stdout.decode()
                self.assertTrue(answer.startswith(f"Status: {expected} "), answer[:80])
                self.assert_nothing_left()


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    console_site.add_options(parser)
    options, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0], *rest])
