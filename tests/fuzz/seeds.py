"""Makes the seed inputs and the dictionary of every fuzz target from the samples and the tables of the code.

usage: seeds.py REPOSITORY FOLDER    writes FOLDER/TARGET/* and FOLDER/TARGET.dict
"""
import json
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
    return value.encode("utf-16-le", "surrogatepass")


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


def fields(*values):
    return wide("\t".join(values))


def firewall_file(version, records):
    def record(i):
        hosts = (b"\xc0\0\2\1\xc6\x33\x64\4" if version == 0 else
                 bytes(8) + b"192.0.2.17".ljust(65, b"\0") + b"2001:db8::1".ljust(65, b"\0"))
        body = struct.pack("<BBHI", 0xEF, 1, 443, 1767225599 + 60 * i) + hosts + b"C:\\a.exe".ljust(260, b"\0")
        body += bytes(260) + wide("info \u00e9").ljust(256, b"\0") + struct.pack("<HHHB", 6, 1, 2, 0xFE)
        return body.ljust(800 if version == 0 else 932, b"\0")

    return b"".join(record(i) for i in range(records))


MULTIPART = b"""POST
multipart/form-data; boundary=xyz
--xyz\r
Content-Disposition: form-data; name="field"\r
\r
value\r
--xyz\r
Content-Disposition: form-data; name="file"; filename="a.cab"\r
\r
bytes\r
--xyz--\r
"""
CFW_ROW = """{"TBL":"TBL_CFW_LOG","COL":{%s},"VER":3,"CATEGORY":"CfwLogFieldInfo"}"""

samples = repository / "samples"
agents = (samples / "agents.json").read_bytes()
db_names = names("Server/DatabaseServer/libDbClient/DbCommands.inc", r'WRB_DB_COMMAND\(\w+, "(DB\w+)"')
scan_keys = names("Server/libSettingGeneration/ScanGroupTables.cpp", r'L"(\w+)"')
columns = names("tools/wrbback/records/RecordTable.cpp", r'\{"(\w+)", (?:ColumnKind::)?(\w+)\}')
row_values = {"Text": '"text"', "Date": '"2024-01-31 23:59:59"', "Address": '"' + "0" * 31 + '1"'}
scan_ini = (samples / "home" / "wrbscan.ini").read_bytes()
policy_names = sorted(set(re.findall(r"<(\w+)|(\w+)=", agents.decode())))
policy_names = [element + attribute for element, attribute in policy_names]
cfw_row = CFW_ROW % ",".join(f'"{name}":{row_values.get(kind, "1")}' for name, kind in columns[:11])
frame = message("NULL", number(1) + number(7) + number(8) + text("C:\\wrbhost.exe") + text("dbGetMscfW"))
echo = fields("CMDHL_ECHO", "pipe", "hello"), wide("hello")
recording = (struct.pack("<4sIIIq", b"WRBR", 1, 24, 0, 1) +
             struct.pack("<IIqIIII", 32 + sum(map(len, echo)), 1, 2, 3, 8, *map(len, echo)) + b"".join(echo) +
             struct.pack("<IIQ", 16, 2, 1) + struct.pack("<IIQ", 16, 3, 1))

# target: (seeds, words of the dictionary)
TARGETS = {
    "command": (
        [fields("CMDHL_ECHO", "pipe", "content"), fields("CMDHL_SLEEP"), fields("CMDHL_ECHO", "-1", "", "4294967295")],
        map(wide, ["\t", "CMDHL_ECHO", "CMDHL_", "\0", "-", "2147483648"])),
    "decode": (
        [fields("CMDHL_PFW_UPDATE_CFW_COUNT", UID, *"1234567890"), fields("DB_SET_STATUS", "-1", UID, "1", "2\0"),
         fields("LOG_WRITE", "1", "2", "3", "4", "a.cpp", "5", "text\tmore\0"), wide("[Section]\nKey=1\r\n"),
         struct.pack("<II", 0x0E1A0703, len(frame)) + frame + message("DBV2_GET_SABLEX_CFG", text(UID)),
         message("DBV2_CLIENT_GET_ALL_SCAN_CFG", all_scan_config()), message("DBV2_CLIENT_GET_ALL_SCAN_EX", all_scan_lists()),
         message("DBV2_GET_FA_RESTORE_ITEM", struct.pack("<I", 1) + text("a") * 5), message("CMDLOGV2_SEND_CFWLOG", text(cfw_row)),
         message("DBV2_GET_VEXOR_CUSTOM_BM_CFG", struct.pack("<I", 1) + text("p") + number(1) + boolean(1)),
         firewall_file(0, 1), firewall_file(1, 2), recording, b"a=1&b=%41+c\r\nd:e", MULTIPART[MULTIPART.index(b"--xyz"):]],
        [b"WRBR", message("NULL")[:28], number(0), number(1), text(""), struct.pack("<I", 0x0E1A0703), wide("\t"), b"\xEF",
         b"--xyz\r\n", b"\r\n\r\n", b"Content-Disposition:", wide("CMDHL_ECHO"), b"\0\0"]),
    "entry_name": (
        [b"dir\\file.log", b"../a", b"C:\\a", b"a/b.", b"con.txt", "\u00e9.log".encode(), b"file:stream"],
        [b"..", b"\\", b"/", b":", b"aux", b"com1", b"lpt9.", b"\xc3\xa9", b"\0", b"*", b"?"]),
    "firewall": (
        [firewall_file(0, 1), firewall_file(1, 1), firewall_file(0, 3), firewall_file(1, 2) + b"\xEF"],
        [b"\xEF", b"\xFE", firewall_file(0, 1), firewall_file(1, 1), b"\xff\xff\xff\xff"]),
    "frame": (
        [struct.pack("<II", 0x0E1A0703, len(frame)) + frame + fields("DB_GET_MSCF", "1", UID, "0")],
        [struct.pack("<I", 0x0E1A0703), message("NULL")[:28], number(0), number(1), text("")]),
    "gateway": (
        [b"GET\n\nGUID=a&Name=%e4%bd%a0+b&x", b"POST\napplication/x-www-form-urlencoded\na=%u4f60&b=\r\nc:\"d\"",
         b"POST\n\na=1&BinaryDataBlock=\0raw", MULTIPART],
        [b"GET\n", b"POST\n", b"%u4f60", b"%00", b"%41", b"BinaryDataBlock=", b"\r\n\r\n", b"--xyz", b"--\r\n",
         b"multipart/form-data; boundary=", b"Content-Disposition: form-data; name=", b"; filename=", b"\\\"", b"&"]),
    "ini": (
        [wide("C:\\a|D:\\b||c"), wide("Count=2\nName_000=Joke\n1st_Act_000=1\nName_001=Test\nVirus-5-4;Joke-1-2"),
         wide("\u4f60|\u00e9\nb\n\"quoted\" ")],
        map(wide, scan_keys + ["|", ";", "-", "=", "\n", "Count=", "Name_000=", "1st_Act_000=", "2nd_Act_000=",
                               "Universe", "CVE_Exploit"])),
    "local_path": (
        map(wide, ["C:\\Warrenby\\Upload\\1.cab", "c:/a/../b", "\\\\.\\pipe\\x", "\\\\host\\share\\x", "\\\\?\\C:\\x"]),
        map(wide, ["C:\\", "\\", "/", "..", ".", ":", "nul", "COM1.", "\\\\.\\", "\\\\?\\", " ", "\0"])),
    "log_line": (
        [fields("1767225599", "12", "34", "69", "Server\\a.cpp", "57", "text\twith TAB\r\n\u202e"), wide("all")],
        map(wide, ["\t", "\0", "-1", "4294967295", "99999999999999999999", "\u2028", "\ud800", "\x1b["])),
    "message": (
        [message("DBV2_CLIENT_GET_ALL_SCAN_CFG", body) for body in (text(UID), all_scan_config(), all_scan_lists())] +
        [message("DBV2_CLIENT_GET_ALL_SCAN_EX", text("C:\\Temp\\mst1.tmp"), flags=2)],
        [message("")[:28], struct.pack("<I", 0), struct.pack("<I", 1), b"\xff\xff\xff\xff", number(0), boolean(1),
         text("")]),
    "policy": (
        [wide(agent["behaviourText"]) for agent in json.loads(agents)["agents"] if "behaviourText" in agent] +
        [wide("<Policy><Behaviour><Exception ImagePath='&#10;&lt;&#x1F600;'/>text<![CDATA[&]]></Behaviour></Policy>")],
        map(wide, policy_names + ["<", "/>", "='", "&#", "&amp;", "<?xml version='1.0'?>", "<![CDATA[", "]]>", "<!--",
                                  "<!DOCTYPE "])),
    "record": (
        [message("CMDLOGV2_SEND_CFWLOG", text(cfw_row)), message("WC_SET_SPYWARE_LOG_EVENT", number(1)),
         fields("CMDHQM_EVENT_RTS_STATUS_CHANGE", "1\0"),
         fields("CMDHQM_SEND_FIREWALL_LOG", UID, "17", *["a"] * 2, *["1"] * 6, "b", "c\0")],
        [wide(f'"{name}":') for name, _ in columns] +
        [message("CMDLOGV2_SEND_RESTORELOG"), wide("TBL_RESTORE_LOG"), wide("RestoreLogFieldInfo"), text(""), number(0)]),
    "section": (
        [section.replace(b"\r\n", b"\0") for section in scan_ini.split(b"\r\n[")] +
        [b" k \t= ' v '\0K=2\0;c=3\0no equals\0=no key\0\xc4=1\0\xe4=2\0\0"],
        [b"\0", b"=", b";", b"\"", b"'", b"\t", b" = "]),
    "seed": (
        [agents, b'{"agents":[{"uid":"%s","scan":{"manual":{}}}],"serviceSwitch":{}}' % UID.encode()],
        [f'"{key}":'.encode() for key in sorted(set(re.findall(r'"(\w+)":', agents.decode())))] +
        [b"true", b"[]", b"{}", b"0xFFFFFFFF", b"\\u0000", UID.encode()]),
    "text_command": (
        [fields(name, "1", UID, number, *"1234567890ab") for name in db_names for number in ("0", "256")],
        map(wide, db_names + ["\t", UID, "-1", "4294967295", "1", "64", "16384", "|", "'"])),
}

for target, (seeds, words) in TARGETS.items():
    (folder / target).mkdir(parents=True, exist_ok=True)
    for i, seed in enumerate(seeds):
        (folder / target / f"seed{i:03}").write_bytes(seed)
    entries = ('"' + "".join(f"\\x{byte:02x}" for byte in word) + '"\n' for word in words)
    (folder / f"{target}.dict").write_text("".join(entries))
