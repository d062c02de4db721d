#!/usr/bin/env python3
"""Counts the system calls of each command in a trace of the Wine server and prints them beside their floors.

usage: count_calls.py TRACE ROWS

TRACE is the server's log with -d1, ROWS the output of wrb_calls. A call is a request of the counting thread to the
server. Each count is the median over all calls of its row: what only some calls do (a cache that expires, a wait that
is interrupted) does not show. Exits with 1 when a count exceeds its goal.
"""

import re
import statistics
import sys

REQUEST = re.compile(r'([0-9a-f]{4}): \w+\((?!\) = )')  # and not the server's reply to one: "0024: select() = 0"
MARK = re.compile(r'name=L"(?:[^"]*\\)?wrb_calls_(\w+)"')


def count(trace, thread):
    """The counts of every call, by the name in its mark."""
    calls = {}
    current = None
    for line in trace:
        request = REQUEST.match(line)
        if not request or request.group(1) != thread:
            continue
        mark = MARK.search(line)
        if mark:
            current = calls.setdefault(mark.group(1), [])
            current.append(0)
        elif current is not None:
            current[-1] += 1
    return {name: statistics.median_high(counts) for name, counts in calls.items()}


def main():
    with open(sys.argv[2], encoding='utf-8') as rows_file:
        thread, *rows = rows_file.read().splitlines()
    with open(sys.argv[1], encoding='utf-8', errors='replace') as trace:
        counts = count(trace, thread)
    print(f'{"system calls of one command":<44} {"calls":>8} {"floor":>8} {"more":>8}  {"goal":<16} {"":6} floor')
    missed = False
    for number, row in enumerate(rows):
        title, most, floor_text = row.split('\t')
        ours, floor = counts[f'ours_{number}'], counts[f'floor_{number}']
        met = ours <= int(most)
        missed |= not met
        goal = f'at most {most}'
        print(f'{title:<44} {ours:>8} {floor:>8} {ours - floor:>8}  {goal:<16} {"met" if met else "MISSED":6} {floor_text}')
    return 1 if missed else 0


if __name__ == '__main__':
    sys.exit(main())
