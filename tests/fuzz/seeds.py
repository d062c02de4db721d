"""Makes the seed inputs and the dictionary of every fuzz target from the samples and the tables of the code.

usage: seeds.py REPOSITORY FOLDER    writes FOLDER/TARGET/* and FOLDER/TARGET.dict
"""
import pathlib
import re
import struct
import sys

repository, folder = map(pathlib.Path, sys.argv[1:])
UID = "11111111-2222-3333-4444-555555555555"


def names(path, pattern):
    return re.findall(pattern, (repository / path).read_text())


def number(value, width=4):
    return struct.pack("<II" if width == 4 else "<IH", width, value)


def boolean(value):
    return struct.pack("<II", 1, value)


def text(value):
    return struct.pack("<I", 2 * len(value) + 2) + wide(value + "\0")


def wide(value):
    return value.encode("utf-16-le")


def message(name, body=b"", flags=1):
    control = struct.pack("<IIII", 0xAC20, flags, 0, 0)
    return number(1) + struct.pack("<I", 16) + control + text(name) + text("0105" + name + "1_2_3") + body


def all_scan_config():
    body = boolean(1) + boolean(1)
    for numbers in (4, 4, 12, 4):  # manual, real-time, prescheduled, now
        body += b"".join(number(i) for i in range(numbers)) + number(7)
        body += text("exe|dll") + text("C:\\Quarantine") + text("CVE_Exploit-5-4;Joke-1-2")
    return body


def all_scan_lists():
    return b"".join(text(f"C:\\a|D:\\{scan}{item}") for scan in range(4) for item in range(3 if scan == 1 else 4))


def message_seeds():
    yield message("DBV2_CLIENT_GET_ALL_SCAN_CFG", text(UID))
    yield message("DBV2_CLIENT_GET_ALL_SCAN_CFG", all_scan_config())
    yield message("DBV2_CLIENT_GET_ALL_SCAN_EX", all_scan_lists())
    yield message("DBV2_CLIENT_GET_ALL_SCAN_EX", text("C:\\Temp\\mst1.tmp"), flags=2)


MESSAGE_WORDS = [message("")[:28], struct.pack("<I", 0), struct.pack("<I", 1), struct.pack("<I", 0xFFFFFFFF),
                 number(0), boolean(1), text("")]

# target: (seeds, dictionary)
TARGETS = {
    "message": (message_seeds(), MESSAGE_WORDS),
}

for target, (seeds, words) in TARGETS.items():
    (folder / target).mkdir(parents=True, exist_ok=True)
    for i, seed in enumerate(seeds):
        (folder / target / f"seed{i:03}").write_bytes(seed)
    entries = ('"' + "".join(f"\\x{byte:02x}" for byte in word) + '"\n' for word in words)
    (folder / f"{target}.dict").write_text("".join(entries))
