#!/usr/bin/env python3
"""Measures what each page of the console costs over running services, beside the start of its process.

usage: console_pages.py RUNNER CONSOLE AGENT

RUNNER runs a Windows program, CONSOLE is cgiConsole.exe, AGENT a uid of the store. Host and back end run in the current
folder. A row is the median over several requests: processor time of the console's process, and of host and back end
meanwhile, each beyond that of an answer without work (the style sheet). Wine's server, which stands for the kernel, is left
out. Exits with 1 when a page exceeds its goal.
"""

import glob
import os
import resource
import statistics
import subprocess
import sys

REQUESTS = 9
MOST_MILLISECONDS = 50
MOST_BYTES = 100 * 1024  # of the first view

PAGES = [
    ("overview", "page=overview"),
    ("agents", "page=agents"),
    ("agents, searched and ordered", "page=agents&q=pc-012&sort=3&desc=1"),
    ("agents, the last page", "page=agents&from=9950"),
    ("one agent", "page=agent&uid={agent}"),
    ("one agent, a section", "page=agent&uid={agent}&section=MSCfg"),
    ("one agent, all sections", "page=agent&uid={agent}&section=*"),
    ("settings of the server", "page=settings"),
    ("settings of one agent", "page=settings&level=agent&uid={agent}"),
    ("settings of all agents", "page=settings&level=all"),
    ("uploads and alerts", "page=uploads"),
    ("log", "page=log"),
    ("audit", "page=audit"),
]


def services():
    """The processes of host and back end in this folder."""
    found = []
    for process in glob.glob("/proc/[0-9]*"):
        try:
            with open(f"{process}/cmdline", "rb") as line:
                program = line.read().split(b"\0")[0]
            if program.endswith((b"wrbhost.exe", b"wrbback.exe")) and os.path.samefile(f"{process}/cwd", "."):
                found.append(process)
        except OSError:
            pass  # it has ended
    return found


def spent(processes):
    """Milliseconds that the threads of the processes have run."""
    nanoseconds = 0
    for process in processes:
        for task in glob.glob(f"{process}/task/*/schedstat"):
            try:
                with open(task, encoding="ascii") as line:
                    nanoseconds += int(line.read().split()[0])
            except OSError:
                pass  # the thread has ended
    return nanoseconds / 1e6


def own():
    use = resource.getrusage(resource.RUSAGE_CHILDREN)
    return (use.ru_utime + use.ru_stime) * 1000


class Request:
    def __init__(self, runner, console):
        self.command = [runner, console]
        self.environment = os.environ | {"REQUEST_METHOD": "GET", "REMOTE_USER": "bench", "SCRIPT_NAME": "/console.cgi"}
        self.services = services()
        assert len(self.services) == 2, self.services

    def send(self, query):
        """Milliseconds of the console's process and of the services, and the page."""
        before, before_services = own(), spent(self.services)
        answer = subprocess.run(self.command, env=self.environment | {"QUERY_STRING": query}, stdout=subprocess.PIPE,
                                check=True).stdout
        assert answer.startswith(b"Status: 200"), answer[:200]
        return own() - before, spent(self.services) - before_services, answer.partition(b"\r\n\r\n")[2]


def main():
    request = Request(*sys.argv[1:3])
    queries = ["page=style"] + [query.format(agent=sys.argv[3]) for _, query in PAGES]
    measured = {query: [] for query in queries}
    for _ in range(REQUESTS):
        for query in queries:  # in turn, so that a busy moment of the machine does not hit one page alone
            measured[query].append(request.send(query))
    median = {query: [statistics.median(each[part] for each in runs) for part in (0, 1)]
              for query, runs in measured.items()}
    start, idle = median["page=style"]
    print(f'{"a page of the console":<32} {"process ms":>10} {"services ms":>11} {"in all ms":>9} {"KiB":>6}  {"goal":<14} '
          f'floor: {start:.0f} ms to start')
    missed = False
    for (title, _), query in zip(PAGES, queries[1:]):
        process, others = median[query][0] - start, median[query][1] - idle
        met = process + others <= MOST_MILLISECONDS
        missed |= not met
        size = len(measured[query][0][2]) / 1024
        print(f'{title:<32} {process:>10.1f} {others:>11.1f} {process + others:>9.1f} {size:>6.1f}  '
              f'at most {MOST_MILLISECONDS} ms {"met" if met else "MISSED"}')
    first = len(measured["page=overview"][0][2]) + len(measured["page=style"][0][2])
    met = first <= MOST_BYTES
    print(f'{"first view, with its style sheet":<32} {"":>10} {"":>11} {"":>9} {first / 1024:>6.1f}  at most 100 KiB '
          f'{"met" if met else "MISSED"}')
    return 1 if missed or not met else 0


if __name__ == "__main__":
    sys.exit(main())
