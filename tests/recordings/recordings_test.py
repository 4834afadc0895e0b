#!/usr/bin/env python3
"""recordings_test.py DEVKIT BUILD TOLD_PLUGIN: every recording here comes again as it was recorded, and a replay
sees what is another. It runs itself on a device."""
import json
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
failures = 0


def check(what, expected, actual):
    global failures
    if expected != actual:
        failures += 1
        print(f"{what}: expected\n  {expected}\ngot\n  {actual}")


def run(*command):
    done = subprocess.run([*map(str, command)], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    return done.returncode, done.stdout


def replay(*arguments):
    return run("broker", "replay", *arguments)


def substitute(pattern, replacement, number=0):
    """Makes a fault: the text in the line of that number among those that hold it."""
    def plant(lines):
        at = [i for i, line in enumerate(lines) if re.search(pattern, line)][number]
        lines[at] = re.sub(pattern, replacement, lines[at], count=1)
    return plant


def calls(lines):
    return [i for i, line in enumerate(lines) if '"kind":"call"' in line]


def swap(lines):
    one, other = calls(lines)[:2]
    lines[one], lines[other] = lines[other], lines[one]


def remove(lines):
    del lines[calls(lines)[1]]


def repeat(lines):
    at = calls(lines)[1]
    lines.insert(at, lines[at])


# Of a recording, what is planted in it, and what its replay shows: a line of the difference.
PLANTED = [
    ("adduser", swap, '-      <xs:query id="opid" resource-id="" resource-type="User_Collection">'),
    ("adduser", remove, "+request"),
    ("adduser", repeat, "-request"),
    ("adduser", substitute(r"<IsLocked>1", "<IsLocked>0"), "-            <IsLocked>0</IsLocked>"),
    ("adduser", substitute(r"\\t<User_Collection>", " <User_Collection>"), 
     '+      <xs:add id="opid" resource-type="User" c-resource-id="Users" c-resource-type="User_Collection">\\t'),
    ("adduser", substitute(r"already exists", "already there"), '+statement ERROR add_user.cpp:LINE: ERROR [syscmd:AddUser]: AddUser failed'),
    ("adduser", substitute(r'"line":1311', '"line":1312'), "-statement DEBUG adduser.cpp:1312: [syscmd:AddAccountHandler] :AddUser zoe success"),
    ("adduser", substitute(r'"code":"CODE_SUCCEED"', '"code":"CODE_FAILED"'), "-code CODE_FAILED"),
    ("adduser", substitute(r'"response":"success"', '"response":null'), "-response none"),
    ("updateuser", substitute(r"(<User_Name>)bob([0-9a-f]{4}<)", r"\1bub\2"), "-            <User_Name>bub"),
    ("updateuser", substitute(r'newuser=\\"bob', r'newuser=\"bub'), "-change + event 1:"),
    ("updateuser", substitute(r"(to\":\"[^\"].*?)BX-4200", r"\1BX-4300"), "-change + owner file:"),
    ("upgradeusertosso", substitute(r'"what":"flag"', '"what":"group"'), "+change + flag .sso_upgraded: true"),
    ("initlocalsession", substitute(r'"key":"token2","from"', '"key":"token9","from"'), "-change + session token9:"),
    ("failures", substitute(r'"result":-1,"errno":\d+', '"result":0,"errno":0'), "-statement ERROR query_user.cpp:LINE:"),
    ("keyed", substitute(r'as":"u-[0-9a-f]{10}', 'as":"u-0000000000'), "+            <xs:value><![CDATA[u-0000000000]]></xs:value>"),
]
# What is left of no meaning: source lines, durations, process and call numbers, kinds to come.
MEANINGLESS = [
    ("adduser", substitute(r'"line":(\d)\d?\d?,', r'"line":\1,')),
    ("adduser", substitute(r'"us":\d+', '"us":1')),
    ("adduser", lambda lines: lines.insert(3, '{"kind":"news","pid":1}')),
]
# Damage, and what is missing: one sentence, and exit status 2.
DAMAGED = [
    ("adduser", lambda lines: lines.pop(), r"broker: \S+:\d+: the recording is cut: expected an answer to adduser of process \d+"),
    ("adduser", substitute('"version":1', '"version":3'), r"broker: \S+:1: the recording's version is 3: expected 1, the newest that this program reads"),
    ("adduser", lambda lines: lines.pop(0), r"broker: \S+:1: this is no recording: expected the header .*"),
    ("remote", substitute(r'"request":"[^}]*"reply_length"', '"request":null,"reply_length"'),
     r"broker: \S+:\d+: the request was too long to be recorded: expected its text"),
    ("updateuser", lambda lines: lines.__setitem__(slice(None), [lines[0]] + [lines[i] for i in calls(lines)]),
     r"broker: \S+:\d+: only transactions are recorded, and no command follows from this one: expected those of .*"),
]


def planted(folder, name, plant):
    lines = (HERE / f"{name}.jsonl").read_text().splitlines()
    before = list(lines)
    plant(lines)
    check(f"{name}: something is planted", True, lines != before)
    path = folder / f"{name}.jsonl"
    path.write_text("\n".join(lines) + "\n")
    return path


def inside(told_plugin, folder):
    recordings = sorted(HERE.glob("*.jsonl"))
    check("recordings", 10, len(recordings))
    for path in recordings:
        status, output = replay(path)
        check(path.name, (0, True), (status, output.endswith(" 0 not as recorded\n")))
        if status != 0:
            print(output)
    for name, plant, line in PLANTED:
        status, output = replay(planted(folder, name, plant))
        check(f"{name}, planted for {line}", (1, True), (status, any(shown.startswith(line) for shown in output.splitlines())))
        if not any(shown.startswith(line) for shown in output.splitlines()):
            print(output)
    for name, plant in MEANINGLESS:
        check(f"{name}, without meaning", 0, replay(planted(folder, name, plant))[0])
    for name, plant, sentence in DAMAGED:
        status, output = replay(planted(folder, name, plant))
        check(f"{name}, damaged: {output}", (2, True), (status, bool(re.fullmatch(sentence + "\n", output))))

    status, output = replay(HERE / "unregister.jsonl", "--against", told_plugin, "--json")
    commands = json.loads(output)
    check("another plug-in", (1, 2, {False}), (status, len(commands), {command["as_recorded"] for command in commands}))
    check("its requests", True, "-request" in commands[0]["difference"])
    check("as JSON", [{"command": "unregister", "line": 3, "as_recorded": True, "difference": []}],
          json.loads(replay(HERE / "unregister.jsonl", "--json")[1])[:1])
    for arguments, sentence in {
        (): "broker: expected one recording and nothing else\n",
        ("/nowhere",): "broker: cannot read /nowhere: No such file or directory\n",
        ("x", "--agains", "y"): "broker: unknown option --agains (write -- before such a parameter)\n",
    }.items():
        check(f"replay {arguments}", (2, sentence), replay(*arguments))


def main(devkit, build, told_plugin):
    check("elsewhere", (2, "broker: this is no device, and replay sets its accounts: devkit/device/device starts one\n"),
          run(f"{build}/broker", "replay", "x"))
    status = subprocess.run([f"{devkit}/device/device", "--quiet", "--build", build, "--", sys.executable, __file__,
                             "--inside", told_plugin], check=False).returncode
    return status != 0


if sys.argv[1] == "--inside":
    with tempfile.TemporaryDirectory() as temporary:
        inside(sys.argv[2], Path(temporary))
    sys.exit(failures != 0)
sys.exit(main(*map(os.path.abspath, sys.argv[1:])) or failures != 0)
