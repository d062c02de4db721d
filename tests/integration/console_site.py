"""A console under a real web server (lighttpd with mod_cgi and basic authentication), for the tests of the console.

The scripts run on the build machine itself; only the Windows programs go through the runner.
"""

import base64
import os
import pathlib
import shutil
import socket
import subprocess
import tempfile
import time

HOME_KEY = r"HKLM\SOFTWARE\CallowaySystems\Warrenby\service\Information"
DLLS = ("libCmdHndlrClient.dll", "libPerfWrbyPerfMonMgr.dll")
USERS = {"operator": "sample-password", "auditor": "another-sample"}
PAGE = "/console/cgi/console.cgi"  # authenticated
OPEN_PAGE = "/console/open/console.cgi"  # the same program without authentication


def windows_path(path):
    return "Z:" + str(path).replace("/", "\\")


def authorization(user="operator"):
    return "Basic " + base64.b64encode(f"{user}:{USERS[user]}".encode()).decode()


def add_options(parser):
    parser.add_argument("--bin", required=True, help="folder of the built programs")
    parser.add_argument("--runner", required=True, help="program that runs a Windows program")
    parser.add_argument("--lighttpd", required=True)


class Site:
    """A home folder with the console in it, and the web server. `clean_up(function, ...)` undoes each step."""

    def __init__(self, options, clean_up):
        self.options = options
        self.clean_up = clean_up
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="console_test."))
        clean_up(shutil.rmtree, self.folder)
        self.home = self.folder / "home"
        self.lay_out_home()
        # Also starts Wine's own services, which would otherwise hold on to the output of the first page.
        self.run("reg", "add", HOME_KEY, "/v", "Local_Path", "/d", windows_path(self.home), "/f")
        clean_up(self.run, "reg", "delete", HOME_KEY, "/v", "Local_Path", "/f")
        self.start_web_server()

    def run(self, program, *arguments, **keywords):
        settings = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, "check": True} | keywords
        return subprocess.run([self.options.runner, program, *arguments], timeout=120, **settings)

    def program(self, name, *arguments, **keywords):
        return self.run(f"{self.options.bin}/{name}.exe", *arguments, **keywords)

    def start(self, name, ready, *arguments, stop):
        """Starts a service and waits for the line that says that it serves. `stop` are the arguments that end it."""
        service = subprocess.Popen([self.options.runner, f"{self.options.bin}/{name}.exe", *arguments],
                                   stdout=subprocess.PIPE, cwd=self.folder)
        self.clean_up(service.communicate)
        self.clean_up(self.program, name, *stop, check=False)  # a test may have stopped it
        for line in service.stdout:
            if ready in line:
                return
        raise RuntimeError(f"{name} does not start")

    def lay_out_home(self):
        self.programs = self.home / "web" / "console" / "cgi"
        self.programs.mkdir(parents=True)
        (self.home / "Private").mkdir()
        for name in ("cgiConsole.exe", *DLLS):
            shutil.copy(pathlib.Path(self.options.bin) / name, self.programs)
        # The web server hands a program the request's variables and no others.
        kept = "".join(f"export {name}='{os.environ[name]}'\n" for name in ("HOME", "PATH", "WINEPREFIX")
                       if name in os.environ)
        for wrapper in (self.programs / "console.cgi", self.home / "web" / "console" / "open" / "console.cgi"):
            wrapper.parent.mkdir(exist_ok=True)
            wrapper.write_text(f"#!/bin/sh\n{kept}exec '{self.options.runner}' '{self.programs}/cgiConsole.exe'\n")
            wrapper.chmod(0o755)

    def copy_samples(self):
        shutil.copytree(self.options.samples / "home", self.home, dirs_exist_ok=True)

    def start_web_server(self):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            self.port = probe.getsockname()[1]
        passwords = self.folder / "passwords"
        passwords.write_text("".join(f"{user}:{password}\n" for user, password in USERS.items()))
        config = self.folder / "lighttpd.conf"
        config.write_text(f"""
server.modules = ("mod_auth", "mod_authn_file", "mod_cgi")
server.bind = "127.0.0.1"
server.port = {self.port}
server.document-root = "{self.home}/web"
server.errorlog = "{self.folder}/error.log"
server.upload-dirs = ("{self.folder}")
cgi.assign = (".cgi" => "")
auth.backend = "plain"
auth.backend.plain.userfile = "{passwords}"
auth.require = ("/console/cgi/" => ("method" => "basic", "realm" => "console", "require" => "valid-user"))
""")
        server = subprocess.Popen([self.options.lighttpd, "-D", "-f", config])
        self.clean_up(server.wait)
        self.clean_up(server.terminate)
        for _ in range(100):
            with socket.socket() as probe:
                if probe.connect_ex(("127.0.0.1", self.port)) == 0:
                    return
            time.sleep(0.1)
        raise RuntimeError("the web server does not answer")
