#!/usr/bin/env python3
"""explain_test.py SOURCE BROKER: what `broker explain` makes of logs.

NAME.log was written by the plug-in on a private device, once for each recipe of docs/recipes.tsv that a log can
tell of; NAME.txt is its explanation. What else befalls a log is done to these: cut, put together, mixed.
"""
import json
import os
import re
import signal
import subprocess
import sys
import tempfile
import threading
from pathlib import Path

SOURCE, BROKER = Path(sys.argv[1]), sys.argv[2]
HERE = SOURCE / "tests/explain"
STAMP = re.compile(r"(?=[A-Z][a-z]{2} [ \d]\d \d{4} [\d:]{8} (?:ERROR|INFO|DEBUG):)")
SECRETS = re.compile(r"\$1\$\w|[0-9A-F]{31}|Hash>")
FOREIGN = ["Nov 26 00:00:01 nas kernel: ERROR:access.h:12: eth0", "", "ERROR:other.cpp:7: a plug-in of somebody's",
           "Nov 26 2026 00:00:01 ERROR:access.cpp:9999 a statement of another version", '{"no": "record"}', "{[", "ü €"]
failures = []


def check(what, expected, actual):
    if expected != actual:
        failures.append(what)
        print(f"{what}: expected\n  {expected}\ngot\n  {actual}")


def explain(*arguments, text=b""):
    done = subprocess.run([BROKER, "explain", *arguments], input=text, capture_output=True, check=False)
    return done.returncode, done.stdout.decode(errors="replace"), done.stderr.decode()


def document(text):
    return json.loads(explain("-", "--json", text=text.encode())[1])


def facts(command):
    """What is told of a command, wherever it stood and in whatever form."""
    return (command["as"], command["operations"], command["account"], command["outcome"],
            [recipe["recipe"] for recipe in command["recipes"]])


def table(name):
    heading, *rows = [line.split("\t") for line in (SOURCE / "docs" / name).read_text().splitlines()]
    return [dict(zip(heading, row)) for row in rows]


def entries(log):
    return [entry for entry in STAMP.split(log) if entry]


def journal(log, process):
    """The log's entries as journalctl would print them: a line each, without what has no line end."""
    lines = []
    for entry in entries(log):
        place, text = re.match(r".{20} (\w+:\w+\.cpp:\d+) (.*)", entry, re.S).groups()
        pieces = re.split(r"[\r\n]", f"{place}: {text}")[:-1]
        lines += [f"Nov 26 00:00:00 nas broker[{process}]: {piece}\n" for piece in pieces if piece]
    return lines


def mixed(one, other):
    turns = range(max(len(one), len(other)))
    return "".join(piece for turn in turns for piece in one[turn : turn + 1] + other[turn : turn + 1])


LOGS = {file.stem: file.read_bytes().decode() for file in sorted(HERE.glob("*.log"))}
FILES = {name: log for name, log in LOGS.items() if not name.startswith("journal")}


def check_logs():
    for name, log in LOGS.items():
        status, told, error = explain(str(HERE / f"{name}.log"))
        check(name, (0, (HERE / f"{name}.txt").read_text(), ""), (status, told, error))
        check(f"{name}: on standard input", told, explain("-", text=log.encode())[1])
        check(f"{name}: secrets", None, SECRETS.search(told + explain(str(HERE / f"{name}.log"), "--json")[1]))
    for recipe in table("recipes.tsv"):
        told = explain(str(HERE / f"{recipe['recipe']}.log"))[1]
        check(f"{recipe['recipe']}.log tells of its recipe", bool(recipe["said"]), recipe["what happens"] in told)
    in_file, *in_journal = ([facts(each)[:3] for each in document(LOGS[name])["commands"]]
                            for name in ("all-levels", "journal-short", "journal-json"))
    for commands in in_journal:  # where one is told at level 3, and one without its parameters
        check("the journal's commands", [fact for i, fact in enumerate(in_file) if i != 3],
              [fact for i, fact in enumerate(commands) if i != 3])
        check("the journal's command at level 3", (None, ["adduser"], "bob"), commands[3])


def check_document():
    shown = [f"| {' | '.join(list(row.values())[1:5])} |" for row in table("recipes.tsv")]
    check("docs/reliability.md has the recipes", shown,
          (SOURCE / "docs/reliability.md").read_text().strip().splitlines()[-len(shown):])


def check_statements():
    """Each row of the table, in both forms, is known by its own meaning; hashes are not shown."""
    for row in table("statements.tsv"):
        line = row["line"] or "777"
        text = row["format"].replace(":%s:%d", f":{row['unit']}:{line}")
        text = text.replace("%s[%s]", "SECRET[SECRET]")
        text = re.sub(r"((?:smb|sys)hash=|request=|respond=)%s", r"\1SECRET", text)
        text = re.sub(r"%\w*d", "7", text.replace("%s", "name")).replace("\\n", "")
        place = f"{row['level']}:{row['unit']}:{line}"
        for form in (f"Nov 26 2026 00:00:00 {place} {text}", f"nas broker[7]: {place}: {text}"):
            told = document(form)
            statement = ([each["statements"][0] for each in told["commands"]] or [{}])[0]
            check(form, (row["function"], True, []),
                  (statement.get("function"), row["meaning"] in statement.get("meaning", "") or
                   "Update failed" in text, told["unknown"]))
            check(f"{form}: secrets", False, "SECRET" in json.dumps(told))


def check_damage():
    first, rest = LOGS["deleted-not-added"].split("\n", 1)
    told = explain("-", text=f"{first}\nin between\n{rest}".encode())[1]
    check("a line within a command stands behind it", explain("-", text=f"{first}\n{rest}".encode())[1] + "in between\n", told)

    every = "".join(FILES.values())
    whole = [facts(command) for command in document(every)["commands"]]
    alone = [facts(command)[:4] for log in FILES.values() for command in document(log)["commands"]]
    check("logs one behind the other", alone, [fact[:4] for fact in whole])

    lines = every.splitlines(keepends=True)
    strewn = "".join(line + FOREIGN[i % len(FOREIGN)] + "\n" for i, line in enumerate(lines))
    told = document(strewn)
    check("with foreign lines", whole, [facts(command) for command in told["commands"]])
    check("foreign lines", [FOREIGN[i % len(FOREIGN)] for i in range(len(lines))], told["unknown"])
    told = explain("-", text="\n".join([*FOREIGN, LOGS["reply-lost"]]).encode())[1]
    check("foreign lines, unchanged", "\n".join(FOREIGN) + "\n", told[: told.index("Nov 26 2026 00:00:53")])

    for name, step in (("all-levels", 97), ("deleted-not-added", 7)):
        log, commands = FILES[name].encode(), len(document(FILES[name])["commands"])
        for part in [half for at in range(0, len(log), step) for half in (log[:at], log[at:])]:
            status, told, error = explain("-", text=part)
            what = f"{name}, of which is left {part[:30]} to {part[-30:]}"
            check(what, (True, ""), (status in (0, 1), error if status == 0 else ""))
            check(f"{what}: secrets", None, re.search(r"\$1\$\w|[0-9A-F]{8}|Hash>", told))
            check(f"{what}: commands", True, len(re.findall(r"^\S.* asked for ", told, re.M)) <= commands)

    forged = "DEBUG:access.cpp:1278: INFO [syscmd:execute]: ACCESS REQUESTED for SYS: login=eve is_owner=1 is_sh=1 is_owner=0 is_sh=0"
    check("a login that says it is the owner", [("eve is_owner=1 is_sh=1", "neither")],
          [(command["as"], command["requester"]) for command in document(forged)["commands"]])
    zeros = "\0" * 5000 + LOGS["reply-lost"]
    check("behind zeros", document(LOGS["reply-lost"])["commands"], document(zeros)["commands"])
    for bad, said in ((1, "A line is left out: it is"), (3, "3 lines are left out: they are")):
        told = explain("-", text=b"\x01\xff\n" * bad + LOGS["reply-lost"].encode())[1]
        check("no text", f"({said} no text.)", told.split("\n")[0])
    colours = re.sub(r"(ERROR:.*)", "\x1b[0;1;31m\\1\x1b[0m", LOGS["journal-short"])
    check("in colours", document(LOGS["journal-short"]), document(colours))


def check_mixed():
    """Of processes that take turns the journal tells all, the file what can be told and where it is a guess."""
    for one in FILES:
        for other in ("all-levels", "conflict-not-renamed"):
            halves = journal(FILES[one], 1), journal(FILES[other], 2)
            apart = [facts(each)[:4] for half in halves for each in document("".join(half))["commands"]]
            check(f"{one} and {other} in the journal", sorted(map(str, apart)),
                  sorted(str(facts(each)[:4]) for each in document(mixed(*halves))["commands"]))
    zoe, bob = entries(FILES["reply-lost"]), entries(FILES["deleted-not-added"])
    told = document("".join(zoe[:4] + bob[-1:] + zoe[4:]))["commands"]
    check("the end of another command", ["zoe", "bob", "bob"], [command["account"] for command in told])
    wrong = []
    for other in FILES:
        halves = [re.sub(r".{20} (?=\w+:\w+\.cpp:\d+ )", "Nov 26 2026 00:00:00 ", FILES[name])
                  for name in ("deleted-not-added", other)]
        apart = sorted(str(facts(each)[:4]) for half in halves for each in document(half)["commands"])
        told = document(mixed(*map(entries, halves)))["commands"]
        if apart != sorted(str(facts(each)[:4]) for each in told):
            wrong.append((other, any(command["guessed"] for command in told)))
    check("guesses that are wrong", [("records-stay", True), ("session-not-recorded", True)], wrong)


def check_bad_input(folder):
    garbage, empty, foreign = folder / "garbage", folder / "empty", folder / "foreign"
    garbage.write_bytes((bytes(range(256)) + b"\xff\n\n") * 500)
    empty.touch()
    foreign.write_text("a line\n")
    none = "holds no statement of the plug-in: expected /var/log/shbroker.log, or journalctl's entries of " \
           "CATEGORY=shbroker as text or JSON"
    for arguments, expected in [
        ((f"{folder}/none",), (2, "", f"broker: cannot read {folder}/none: No such file or directory\n")),
        ((str(folder),), (2, "", f"broker: cannot read {folder}: Is a directory\n")),
        ((str(folder), "--follow"), (2, "", f"broker: cannot read {folder}: Is a directory\n")),
        ((str(garbage),), (1, "", f"broker: {garbage} {none}\n")),
        ((str(empty),), (1, "", f"broker: {empty} is empty\n")),
        ((str(foreign),), (1, "a line\n", f"broker: {foreign} {none}\n")),
        (("-",), (1, "", "broker: standard input is empty\n")),
        (("a", "b"), (2, "", "broker: expected one log and nothing else\n")),
        (("--follow=x",), (2, "", None)),
        (("--what",), (2, "", "broker: unknown option --what (write -- before such a parameter)\n")),
    ]:
        status, told, error = explain(*arguments)
        check(arguments, expected, (status, told, error if expected[2] is not None else None))
    check("JSON of nothing", {"log": str(empty), "commands": [], "unknown": []},
          json.loads(explain(str(empty), "--json")[1]))


def check_follow(folder):
    """It waits for the file, goes on as it grows, is renamed, truncated, and ends by a signal with 0."""
    log, steps = folder / "log", [entries(LOGS[name]) for name in ("reply-lost", "remote-user-left", "owner-file-old-name")]
    with subprocess.Popen([BROKER, "explain", str(log), "--follow", "--json"], stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, text=True) as process:
        patience = threading.Timer(120, process.kill)
        patience.start()
        check("it waits", f"broker: waiting for {log}\n", process.stderr.readline())

        def follow(what, mode, text, expected):
            with open(log, mode, encoding="utf-8", newline="") as file:
                file.write(text)
            got = [json.loads(process.stdout.readline()) for _ in expected]
            check(what, expected, [each.get("unknown") or facts(each) for each in got])

        for number, mode in enumerate("wwa"):
            whole = "".join(steps[number])
            expected = [facts(command) for command in document(whole)["commands"]]
            if number == 1:
                os.rename(log, f"{log}.1")
            follow(f"step {number}", mode, whole, expected)
        os.truncate(log, 0)
        follow("truncated", "a", "a line\n" + LOGS["session-not-recorded"],
               ["a line", facts(document(LOGS["session-not-recorded"])["commands"][0])])
        rest = "".join(entries(LOGS["conflict-not-renamed"]))
        follow("without a last statement", "a", rest, [facts(each) for each in document(rest)["commands"]])
        with open(log, "a", encoding="utf-8") as file:
            file.write("half a line")
        process.send_signal(signal.SIGINT)
        told, error = process.communicate(timeout=60)
        patience.cancel()
        check("its end", ("", 0), (error, process.returncode))
        check("what was left", {'{"unknown":"half a line"}\n', ""} >= {told}, True)


check_logs()
check_document()
check_statements()
check_damage()
check_mixed()
with tempfile.TemporaryDirectory() as work:
    check_bad_input(Path(work))
    check_follow(Path(work))
sys.exit(bool(failures))
