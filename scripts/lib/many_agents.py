#!/usr/bin/env python3
"""Prints a seed file for wrbback with many agents: copies of the first sample agent.

usage: many_agents.py NUMBER SAMPLE
"""

import json
import sys

LEFT_OUT = ("note", "behaviourText", "behaviourPolicies", "restoreItems", "restoreSessions")


def main():
    number = int(sys.argv[1])
    with open(sys.argv[2], encoding="utf-8") as sample:
        model = {key: value for key, value in json.load(sample)["agents"][0].items() if key not in LEFT_OUT}
    agents = [{**model, "uid": f"{i:08x}-1111-4222-8333-444455556666", "computer": f"PC-{i * 7919 % number:05d}",
               "ip": f"10.{i >> 16}.{i >> 8 & 255}.{i & 255}"} for i in range(number)]
    json.dump({"agents": agents}, sys.stdout)


if __name__ == "__main__":
    main()
