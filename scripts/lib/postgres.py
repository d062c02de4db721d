"""A PostgreSQL server of one's own: on a free port of this machine, in a folder of its own.

As a program: postgres.py COMMAND... runs COMMAND with the address of an empty database, as wrbback takes it, in the
variable WRB_STORE. Without PostgreSQL and its ODBC driver it says so and runs COMMAND without the variable, or, after
--required, ends with 1.
"""

import contextlib
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile

USER, PASSWORD = "wrb", "s;cret"  # a semicolon: the connection string needs braces


def programs():
    """The folder of the server's programs, or None when they or the ODBC driver are not installed."""
    folders = sorted(pathlib.Path("/usr/lib/postgresql").glob("*/bin"))
    driver = list(pathlib.Path("/usr/lib").glob("*-linux-gnu/odbc/psqlodbcw.so"))
    return folders[-1] if folders and driver else None


def as_server(*arguments):
    """PostgreSQL refuses to run as root."""
    drop = ["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"] if os.getuid() == 0 else []
    subprocess.run([*drop, *arguments], check=True, timeout=120, stdout=subprocess.DEVNULL, stderr=subprocess.STDOUT)


def free_port():
    with contextlib.closing(socket.socket()) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Engine:
    def __init__(self, folder, bin_folder):
        """Makes the server's files in `folder`, which everybody can write to."""
        self.folder, self.bin, self.port = folder, bin_folder, free_port()
        secret = folder / "password"
        secret.write_text(PASSWORD)
        as_server(self.bin / "initdb", "-D", folder / "data", "-U", USER, "-A", "scram-sha-256", f"--pwfile={secret}",
                  "-E", "UTF8", "--locale=C.UTF-8", "--no-sync")

    def control(self, *arguments):
        as_server(self.bin / "pg_ctl", "-D", self.folder / "data", "-w", "-l", self.folder / "log", *arguments)

    def start(self):
        self.control("-o", f"-p {self.port} -h 127.0.0.1 -k {self.folder} -F", "start")

    def stop(self, mode="fast"):
        self.control("-m", mode, "stop")

    @contextlib.contextmanager
    def hung(self):
        """Meanwhile the server and all of its sessions take connections, and do nothing."""
        server = int((self.folder / "data" / "postmaster.pid").read_text().split()[0])
        stopped = [server]
        os.kill(server, signal.SIGSTOP)  # it makes no further process
        try:
            for process in pathlib.Path(f"/proc/{server}/task/{server}/children").read_text().split():
                os.kill(int(process), signal.SIGSTOP)
                stopped.append(int(process))
            yield
        finally:
            for process in reversed(stopped):  # the server last: it forgets the sessions that have ended
                os.kill(process, signal.SIGCONT)

    def psql(self, database):
        """The command line of a session, and its environment."""
        return ([self.bin / "psql", "-qAth", "127.0.0.1", "-p", str(self.port), "-U", USER, database],
                {**os.environ, "PGPASSWORD": PASSWORD})

    def query(self, sql, database):
        arguments, environment = self.psql(database)
        return subprocess.run([*arguments, "-c", sql], check=True, timeout=60, text=True, stdout=subprocess.PIPE,
                              env=environment).stdout.strip()

    def store(self, database, driver="PostgreSQL Unicode", password=PASSWORD):
        return (f"odbc:Driver={{{driver}}};Server=127.0.0.1;Port={self.port};Database={database};Uid={USER};"
                f"Pwd={{{password}}}")


@contextlib.contextmanager
def running():
    """An engine without databases of its own, stopped and deleted at the end."""
    folder = pathlib.Path(tempfile.mkdtemp(prefix="wrb_postgres."))
    folder.chmod(0o777)
    try:
        engine = Engine(folder, programs())
        engine.start()
        try:
            yield engine
        finally:
            engine.stop("immediate")
    finally:
        shutil.rmtree(folder)


def main(command):
    required = command[0] == "--required"
    command = command[1:] if required else command
    if programs() is None:
        print("PostgreSQL or its ODBC driver is not installed", file=sys.stderr)
        return 1 if required else subprocess.run(command, check=False).returncode
    with running() as engine:
        engine.query("CREATE DATABASE warrenby", "postgres")
        return subprocess.run(command, check=False,
                              env={**os.environ, "WRB_STORE": engine.store("warrenby")}).returncode


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
