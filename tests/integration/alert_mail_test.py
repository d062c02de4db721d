#!/usr/bin/env python3
"""Firewall alerts from the command to the mailbox: wrbhost beside a real mail server (aiosmtpd), and beside servers that
misbehave.

Runs on the build machine itself; only the Windows programs go through the runner.
"""

import argparse
import email
import email.policy
import pathlib
import shutil
import socket
import ssl
import subprocess
import sys
import tempfile
import threading
import time
import unittest

from aiosmtpd.controller import Controller
from aiosmtpd.smtp import AuthResult

HOME_KEY = r"HKLM\SOFTWARE\CallowaySystems\Warrenby\service\Information"
KEY = "0123456789abcdef" * 4
PASSWORD = "geheim ÄÖ="
PATIENCE = 60

options = None  # --bin, --runner


def windows_path(path):
    return "Z:" + str(path).replace("/", "\\")


def run(program, *arguments, **keywords):
    return subprocess.run([options.runner, program, *arguments], timeout=120, check=True, **keywords)


class MailServer:
    """Accepts mail; what it got and what happened to it wakes whoever waits."""

    def __init__(self, refuse=None, close=False, **keywords):
        self.refuse, self.close = refuse, close
        self.mails, self.attempts, self.logins = [], 0, []
        self.changed = threading.Condition()
        self.controller = Controller(self, hostname="127.0.0.1", port=0, **keywords)

    def __enter__(self):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.controller.port = probe.getsockname()[1]
        self.controller.start()
        return self

    def __exit__(self, *_):
        self.controller.stop()

    def note(self, mail=None):
        with self.changed:
            self.attempts += 1
            self.mails += [mail] if mail else []
            self.changed.notify_all()

    def wait(self, ready):
        with self.changed:
            assert self.changed.wait_for(ready, PATIENCE), "nothing came"

    def authenticate(self, server, session, envelope, mechanism, data):
        self.logins.append((data.login.decode(), data.password.decode()))
        return AuthResult(success=True)

    async def handle_EHLO(self, server, session, envelope, hostname, responses):
        session.host_name = hostname
        if self.refuse == "STARTTLS":
            self.note()
        return responses

    async def handle_RCPT(self, server, session, envelope, address, rcpt_options):
        if self.refuse == address:
            self.note()
            return "550 no such user"
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        if self.close:
            server.transport.close()
            self.note()
        else:
            self.note(envelope)
        return "250 OK"


class Host:
    """wrbhost, serving; stopped at the end, with exit code 0."""

    def __init__(self, test):
        self.test = test

    def __enter__(self):
        self.process = subprocess.Popen([options.runner, f"{options.bin}/wrbhost.exe"], stdout=subprocess.PIPE,
                                        stderr=subprocess.DEVNULL)
        while b"serving" not in (line := self.process.stdout.readline()):
            self.test.assertNotEqual(line, b"", "wrbhost has ended")
        return self

    def __exit__(self, *_):
        run(f"{options.bin}/wrbhost.exe", "--stop", "--timeout", "20", stdout=subprocess.DEVNULL)
        self.process.communicate()
        self.test.assertEqual(self.process.wait(), 0)


class AlertMail(unittest.TestCase):
    def setUp(self):
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="alert_mail_test."))
        self.addCleanup(shutil.rmtree, self.home)
        run("reg", "add", HOME_KEY, "/v", "Local_Path", "/d", windows_path(self.home), "/f",
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(run, "reg", "delete", HOME_KEY, "/v", "Local_Path", "/f",
                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        (self.home / "Private").mkdir()
        (self.home / "Private" / "wrbserver.ini").write_text(f"[INI_SERVER_SECTION]\nStringProtectionKey={KEY}\n")

    def settings(self, port, **more):
        keys = {"Enable": 1, "TotalThreshold": 5, "Mail": 1, "MailFrom": "server@example.com",
                "MailTo": "one@example.com; two@example.com", "SmtpServer": "127.0.0.1", "SmtpPort": port, **more}
        (self.home / "wrbscan.ini").write_text(
            "[Firewall Alert]\n" + "".join(f"{key}={value}\n" for key, value in keys.items()))

    def alert(self):
        run(f"{options.bin}/wrbctl.exe", "send", "CMDHL_PFW_UPDATE_CFW_COUNT", "uid", "1", "2", "3", "5", "0", "0", "0",
            "20240131235959", "1")

    def files(self):
        folder = self.home / "Temp" / "Mail"
        return [path.name for path in folder.iterdir()] if folder.is_dir() else []

    def wait_until_sent(self, server):
        """The server has one mail, and the host has seen its answer."""
        server.wait(lambda: server.mails)
        end = time.monotonic() + PATIENCE
        while self.files() and time.monotonic() < end:
            time.sleep(0.1)
        self.assertEqual((len(server.mails), self.files()), (1, []))

    def test_accepted(self):
        self.settings(0)
        protected = run(f"{options.bin}/wrbctl.exe", "protect", input=PASSWORD.encode() + b"\n",
                        stdout=subprocess.PIPE).stdout.decode().strip()
        self.assertTrue(protected.startswith("!CRYPT!"))
        server = MailServer(auth_require_tls=False)
        server.controller.SMTP_kwargs["authenticator"] = server.authenticate
        with server:
            self.settings(server.controller.port, SmtpUser="login", SmtpPassword=protected)
            with Host(self):
                self.alert()
                self.wait_until_sent(server)
        self.assertEqual(server.logins, [("login", PASSWORD)])
        envelope = server.mails[0]
        self.assertEqual(envelope.mail_from, "server@example.com")
        self.assertEqual(envelope.rcpt_tos, ["one@example.com", "two@example.com"])
        mail = email.message_from_bytes(envelope.content, policy=email.policy.default)
        self.assertEqual(mail.defects, [])
        self.assertTrue(mail["Subject"].startswith("Firewall alert on "), mail["Subject"])
        self.assertTrue(mail["Subject"].endswith(": total"), mail["Subject"])
        self.assertEqual(mail["To"], "one@example.com, two@example.com")
        self.assertIn("\n  total 5 (threshold 5), reached\n", mail.get_content().replace("\r\n", "\n"))

    def certificate(self):
        """Of localhost, from an authority that nobody knows."""
        names = {name: str(self.home / name) for name in ("key", "certificate")}
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=localhost",
                        "-addext", "subjectAltName=DNS:localhost", "-keyout", names["key"], "-out", names["certificate"]],
                       check=True, stderr=subprocess.DEVNULL)
        context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
        context.load_cert_chain(names["certificate"], names["key"])
        return context

    def test_over_tls(self):
        certificate = self.certificate()
        cases = {1: {"tls_context": certificate, "require_starttls": True}, 2: {"ssl_context": certificate}}
        for security, keywords in cases.items():
            with self.subTest(security), MailServer(**keywords) as server:
                self.settings(server.controller.port, SmtpServer="localhost", SmtpSecurity=security)
                with Host(self):
                    self.alert()
                    self.wait_until_sent(server)

    def test_a_certificate_of_an_unknown_authority_is_refused(self):
        said = b""
        with socket.socket() as server:
            server.bind(("127.0.0.1", 0))
            server.listen()
            server.settimeout(PATIENCE)
            self.settings(server.getsockname()[1], SmtpServer="localhost", SmtpSecurity=2)
            with Host(self):
                self.alert()
                connection, _ = server.accept()
                try:
                    with self.certificate().wrap_socket(connection, server_side=True) as talk:
                        talk.sendall(b"220 localhost\r\n")
                        said = talk.recv(100)
                except OSError:
                    pass
        self.assertEqual(len(self.files()), 1)
        if said:
            self.skipTest("this system takes any certificate, as Wine's Schannel does; test_over_tls needs that, too")

    def test_what_fails_is_sent_by_the_next_host(self):
        cases = {
            "refused": (MailServer(refuse="one@example.com"), {"MailTo": "one@example.com"}),
            "closed midway": (MailServer(close=True), {}),
            "STARTTLS missing": (MailServer(refuse="STARTTLS"), {"SmtpSecurity": 1, "SmtpUser": "a", "SmtpPassword": "b"}),
        }
        for name, (server, keys) in cases.items():
            with self.subTest(name):
                with server:
                    self.settings(server.controller.port, **keys)
                    with Host(self):
                        self.alert()
                        server.wait(lambda: server.attempts)
                self.assertEqual((server.mails, server.logins), ([], []))
                self.assertEqual(len(self.files()), 1)
                with MailServer() as good:
                    self.settings(good.controller.port)
                    with Host(self):
                        self.wait_until_sent(good)

    def test_one_refused_recipient_does_not_silence_the_others(self):
        with MailServer(refuse="one@example.com") as server:
            self.settings(server.controller.port)
            with Host(self):
                self.alert()
                server.wait(lambda: server.mails)
        self.assertEqual(server.mails[0].rcpt_tos, ["two@example.com"])

    def test_a_stop_does_not_wait_for_a_silent_server(self):
        with socket.socket() as silent:
            silent.bind(("127.0.0.1", 0))
            silent.listen()
            self.settings(silent.getsockname()[1])
            with Host(self):
                self.alert()
                silent.settimeout(PATIENCE)
                connection, _ = silent.accept()
        connection.close()
        self.assertEqual(len(self.files()), 1)


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--bin", required=True, help="folder of the built programs")
    parser.add_argument("--runner", required=True, help="program that runs a Windows program")
    options, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0], *rest])
