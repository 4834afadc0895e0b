#!/usr/bin/env python3
"""sessions_test.py DEVKIT BUILD FILE...: what documents show is what a device prints.

A session is a fenced block that begins with "$ ". It runs in one shell, on a fresh device, in a folder
of its own; a block whose fence says "text NAME" is a file there. A session with a line "…" leaves
something out: its parts stand, in this order, in what the demo tells. One whose fence says "desk" runs on
the machine, where `device` is the launcher and the devices that stay are the session's own.
"""
import difflib
import functools
import os
import re
import shlex
import subprocess
import sys
import tempfile

ELLIPSIS = re.compile(r"^ *…$\n?", re.MULTILINE)
BLOCK = re.compile(r"^```(.*)\n((?s:.*?))^```$", re.MULTILINE)
# What varies from run to run, or with the sources.
VARYING = [
    (r"\b\d+\.\d+ ms\b", "N ms"),
    (r"\b\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} UTC", "TIME UTC"),
    (r"\b\d\d:\d\d:\d\d\.\d{3}\b", "TIME"),
    (r'("milliseconds": )[\d.]+', r"\1N"),
    (r"\b(\w+\.cpp):\d{1,3}([:\]])", r"\1:LINE\2"),  # the statement's own source line
    (r"[A-Z][a-z]{2} [ \d]\d \d{4} \d\d:\d\d:\d\d", "TIME"),
    (r"\$1\$[./\w]+\$[./\w]{22}", "$1$SALT$HASH"),
    (r"\b[+/\w]{60,}=*", "HASH-PAIR"),  # Base64
]


def normalised(text):
    for pattern, replacement in VARYING:
        text = re.sub(pattern, replacement, text)
    return [line.rstrip() for line in text.splitlines()]


def output_of(command, folder=None, environment=None):
    return subprocess.run(
        command, cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT, text=True, check=False
    ).stdout


LAUNCHER = """#!/bin/sh
case $1 in start) shift && set -- start --build {build} "$@" ;; esac
exec {devkit}/device/device "$@"
"""


def on_desk(devkit, build, script, folder):
    """What the script prints on the machine, with devices whose state is in the folder."""
    states, programs = os.path.join(folder, "states"), os.path.join(folder, "programs")
    os.mkdir(programs)
    with open(os.path.join(programs, "device"), "w", encoding="utf-8", opener=executable) as file:
        file.write(LAUNCHER.format(devkit=shlex.quote(devkit), build=shlex.quote(build)))
    environment = {**os.environ, "XDG_STATE_HOME": states, "PATH": f"{programs}:{os.environ['PATH']}"}
    return output_of(["bash", "-c", f"{script}\ndevice stop --all"], folder, environment)


def executable(path, flags):
    return os.open(path, flags, 0o755)


def replay(devkit, build, session, files, desk):
    """The session's commands, each with what it prints below it."""
    script = ""
    for command in re.findall(r"^\$ (.*)$", session, re.MULTILINE):
        script += f"printf '%s\\n' {shlex.quote('$ ' + command)}\n{command}\n"
    with tempfile.TemporaryDirectory() as folder:
        for name, text in files.items():
            with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
                file.write(text)
        if desk:
            return normalised(on_desk(devkit, build, script, folder))
        device = [f"{devkit}/device/device", "--quiet", "--build", build]
        return normalised(output_of([*device, "bash", "-c", script], folder))


@functools.cache
def story(devkit, build):
    return normalised(output_of([f"{devkit}/device/demo", "--build", build]))


def told(parts, lines):
    """The parts as far as the lines have them, one after the other and each without a gap."""
    found, at = [], 0
    for part in parts:
        starts = range(at, len(lines) - len(part) + 1)
        at = next((start for start in starts if lines[start : start + len(part)] == part), None)
        if at is None:
            return found
        at += len(part)
        found += part
    return found


def check(document, devkit, build):
    """Prints how the document differs; how many sessions it has, and how many do."""
    with open(document, encoding="utf-8") as file:
        blocks = BLOCK.findall(file.read())
    files = {info.split()[1]: text for info, text in blocks if re.fullmatch(r"text \S+", info)}
    sessions = [(info, text) for info, text in blocks if text.startswith("$ ")]
    false = 0
    for info, session in sessions:
        parts = [normalised(part) for part in ELLIPSIS.split(session)]
        shown = sum(parts, [])
        if len(parts) > 1:
            actual = told(parts, story(devkit, build))
        else:
            actual = replay(devkit, build, session, files, info == "desk")
        difference = list(difflib.unified_diff(shown, actual, document, "device", lineterm=""))
        print(*difference, sep="\n", end="\n" if difference else "")
        false += bool(difference)
    return len(sessions), false


def main(devkit, build, *documents):
    counts = [check(document, os.path.abspath(devkit), os.path.abspath(build)) for document in documents]
    sessions, false = map(sum, zip(*counts))
    print(f"{sessions} sessions, {false} of them not true")
    return 0 if false == 0 and all(shown for shown, _ in counts) else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
