#!/usr/bin/env python3
"""device_test.py DEVKIT BUILD: what is recorded on a device tells the commands, and neither secrets nor, with a
key, names."""
import json
import os
import subprocess
import sys
import tempfile
from pathlib import Path

DEVKIT, BUILD = (os.path.abspath(path) for path in sys.argv[1:])
SECRETS = ["4E3AB12CD34EF56A", "$1$salty$hashhashhashhashhash."]
SCRIPT = """
adduser zoe $PAIR zoe@example.com --as alice:opensesame --log-level 7
adduser dave $PAIR x@example.com --as alice
adduser bad bm8gY29sb24gaGVyZSEh bad@example.com --as alice
updateuser zoe $PAIR bob zoe-p2p --as alice
upgradeusertosso alice alice@home.example $PAIR --as alice
initlocalsession alice@home.example token7 0 --as alice@home.example
addremoteuser carol --as alice@home.example
deleteuser nobody@example.com nobody --as alice@home.example
nonsense $PAIR
unregister
"""
NAMES = ["alice", "bob", "zoe", "carol", "dave", "nobody", "home.example", "@example.com", "token7"]
failures = 0


def check(what, expected, actual):
    global failures
    if expected != actual:
        failures += 1
        print(f"{what}: expected\n  {expected}\ngot\n  {actual}")


def on_device(folder, *command, **environment):
    done = subprocess.run([f"{DEVKIT}/device/device", "--quiet", "--build", BUILD, *command], cwd=folder, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
                          env={**os.environ, **environment})
    return done.returncode, done.stdout


def lines_of(path):
    return [json.loads(line) for line in path.read_text().splitlines()]


def shown(folder, name, *options, **environment):
    status, output = on_device(folder, *options, "--", "bash", "-c",
                               f'PAIR=$(printf "%s:%s" {SECRETS[0]} \'{SECRETS[1]}\' | base64 -w0);'
                               f'sed "s/[$]PAIR/$PAIR/" script.txt | broker script - --json --record {name};', **environment)
    check(f"{name}: exit status", 1, status)
    text = (folder / name).read_text()
    check(f"{name}: secrets", [], [secret for secret in [*SECRETS, "opensesame", "bm8gY29sb24"] if secret in text])
    answers = json.loads(output)
    lines = lines_of(folder / name)
    check(f"{name}: answers", [(answer["code"], len(answer["response"])) for answer in answers] if not environment else None,
          [(line["code"], len(line["response"])) for line in lines if line.get("kind") == "answer"] if not environment else None)
    return lines


def kinds(lines):
    return [(line["kind"], line.get("level"), line.get("what")) for line in lines if "kind" in line]


def main(folder):
    (folder / "script.txt").write_text(SCRIPT)
    plain = shown(folder, "plain.jsonl")
    keyed = shown(folder, "keyed.jsonl", BWDRECORD_KEY="a key")
    text = (folder / "keyed.jsonl").read_text()
    check("names by a key", [], [name for name in NAMES if name in text])
    check("what is recorded by a key", sorted(map(str, kinds(plain))), sorted(map(str, kinds(keyed))))
    told = {line["what"] for line in plain if line.get("kind") == "change"}
    check("what changed", {"account", "cloud owner", "event", "flag", "owner file", "passwd", "remote user", "session"}, told)
    check("state lines", 1, sum(line.get("kind") == "state" for line in plain))
    kept = [line for line in plain if line.get("what") == "account" and line.get("from") and line["from"] == line["to"]]
    check("changes that look like none", [], kept)
    quiet = shown(folder, "quiet.jsonl", "--no-log-file")
    check("without a log file", {False}, {line["log_file"] for line in quiet if line.get("kind") == "command"})
    check("statements without a log file", [], [line for line in quiet if line.get("kind") == "statement"])

    status, output = on_device(folder, "--", "bash", "-c", """
        library=$(dirname "$(command -v broker)")/libbwdrecord.so
        LD_PRELOAD=$library BWDRECORD_FILE=field.jsonl broker script script.txt >/dev/null
        LD_PRELOAD=$library broker run unregister >/dev/null || echo bad
        BWDRECORD_FILE=field.jsonl LD_PRELOAD=$library broker run unregister --record other.jsonl 2>&1
        echo text >some.txt; broker run unregister --record some.txt 2>&1; cat some.txt
        broker run unregister --record /nowhere/file 2>&1
        broker run unregister --record / 2>&1; broker hash x --record file 2>&1; ls
        """, ASAN_OPTIONS="verify_asan_link_order=0")
    check("by preload, and files that are none", [
        "broker: libbwdrecord.so is preloaded and records already: leave it out, or --record",
        "broker: some.txt:1: expected a JSON object, whole and alone in its line", "text",
        "broker: cannot record in /nowhere/file: No such file or directory",
        "broker: cannot record in /: Is a directory", "broker: hash takes no --record: it makes no command",
        "field.jsonl", "keyed.jsonl", "plain.jsonl", "quiet.jsonl", "script.txt", "some.txt"],
        [line.replace(f"{folder}/", "") for line in output.splitlines()])
    field = lines_of(folder / "field.jsonl")
    check("kinds in the field", {"call"}, {line["kind"] for line in field[1:]})
    check("numbers in the field", list(range(1, len(field))), [line["n"] for line in field[1:]])


with tempfile.TemporaryDirectory() as name:
    main(Path(name))
sys.exit(failures != 0)
