#!/usr/bin/env python3
"""pages_test.py REPOSITORY PROGRAMS PAGES: programs, header, pages and completions say the same."""
import os
import re
import subprocess
import sys
from pathlib import Path

REPOSITORY, PROGRAMS, PAGES = (Path(path) for path in sys.argv[1:])
DEV = REPOSITORY / "dev"
# Where a program's page is, and the words for which it has a help of its own.
COMMANDS = {
    "broker.1": (PROGRAMS / "broker", ["run", "script", "replay", "hash", "state", "watch", "check", "explain", "story"]),
    "boxwelld.8": (PROGRAMS / "boxwelld", ["serve", "seed", "show", "transcript", "order", "chaos", "send", "revive"]),
    "device.1": (REPOSITORY / "devkit/device/device",
                 ["start", "stop", "list", "shell", "exec", "log", "snapshot", "remove"]),
}
OPTION = re.compile(r"(?<![\w-])--[a-z][a-z-]*")
failures = []


def check(what, expected, actual):
    if expected != actual:
        failures.append(what)
        print(f"{what}: expected\n  {expected}\ngot\n  {actual}")


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def helps(program, words):
    return [output(program, *word, "--help") for word in ([], *([word] for word in words))]


def usages(text, name):
    block = re.search(r"usage: (.*?)\n\n", text, re.S)[1]
    return [" ".join(usage.split()) for usage in re.split(rf"\n +(?={name} )", block)]


def section(source, title):
    return re.search(rf"^# {title}\n\n(.*?)(?=^# |\Z)", source, re.S | re.M)[1]


def plain(text):
    return " ".join(re.sub(r"[*_]", "", text).split())


def check_program(page, program, words):
    source = (REPOSITORY / "man" / f"{page}.scd").read_text()
    synopsis = [plain(usage) for usage in section(source, "SYNOPSIS").strip().split("\n\n")]
    top, *others = helps(program, words)
    check(f"{page}: synopsis", usages(top, program.name), synopsis)
    of_words = re.findall(rf"^{program.name} (?:\[OPTION\.\.\.\] )?([a-z]+)", "\n".join(synopsis), re.M)
    check(f"{page}: commands", words, of_words)
    for word, text in zip(words, others):
        check(f"{page}: {word} --help", True, set(usages(text, program.name)) <= set(synopsis)
              and any(f" {word}" in usage for usage in usages(text, program.name)))
    told = set(OPTION.findall("\n".join(re.findall(r"^\*-.*", section(source, "OPTIONS"), re.M))))
    offered = set(OPTION.findall(top + "".join(others))) | {"--help"}
    check(f"{page}: options", sorted(offered), sorted(told))
    return words, offered


def check_header():
    header = re.sub(r"/\*.*?\*/", "", (REPOSITORY / "liblst/liblst.h").read_text(), flags=re.S)
    header = re.sub(r"\s*LIBLST_PRINTF\([^)]*\)(?=;)", "", header)
    routine = r"^[a-z][^;{}#\"]*\([^;{}#]*\);"
    source = (REPOSITORY / "man/liblst.3.scd").read_text()
    declared = [" ".join(text.split()) for text in re.findall(routine, header, re.M)]
    synopsis = section(source, "SYNOPSIS")
    check("liblst.3: synopsis", declared, re.findall(routine, synopsis, re.M))
    names = [re.search(r"(\w+)\(", text)[1] for text in declared]
    described = re.findall(r"\*(\w+)\*", "\n".join(re.findall(r"^\*.*\*$", section(source, "DESCRIPTION"), re.M)))
    check("liblst.3: description", names, described)


def check_commands():
    """The operations with their parameters' number, and every fixed text of an answer."""
    source = (REPOSITORY / "man/syscmd.7.scd").read_text()
    table = (REPOSITORY / "syscmd/operations.cpp").read_text()
    names = dict(re.findall(r"(OPERATION_\w+) = \"(\w+)\"", table))
    rows = re.findall(r"\{(OPERATION_\w+), .*?, \{(.*?)\}\}", table)
    told = dict((name, len(rest.split())) for name, rest in re.findall(r"^## ([a-z]+)(.*)", section(source, "COMMANDS"), re.M))
    check("syscmd.7: operations", {names[row]: len(rest.split(",")) if rest else 0 for row, rest in rows}, told)
    for file in [*(REPOSITORY / "syscmd/commands").glob("*.cpp"), REPOSITORY / "syscmd/execute.cpp"]:
        for call in re.findall(r"\b(?:(?:fail|answer)\(|FAILED = )([^;]*);", file.read_text()):
            for text in re.findall(r'"([^"]*)"', call):
                text += "error reading username/password/email params from request" if "UNREAD" in call else ""
                check(f"syscmd.7: {text}", True, f'"{text}"' in source)


def check_page(page):
    done = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", page],
                          stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=False)
    check(f"{page.name}: warnings", (0, ""), (done.returncode, done.stderr))
    check(f"{page.name}: no date", True, bool(re.search(r'^\.TH "[a-z]+" "\d" "" "syscmd \d', page.read_text(), re.M)))


def offers(name, *words):
    """What the completion of the last word is, one being typed."""
    script = f'. "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _{name}_words; printf "%s\\n" "${{COMPREPLY[@]}}"'
    file = REPOSITORY / "completion" / f"{name}.bash"
    return sorted(filter(None, output("bash", "-c", script, "bash", file, name, *words).split("\n")))


def check_completion(name, program, words):
    """At each place what that place's help has; an option's argument is no word of the program."""
    check(f"completion of {name}", sorted(words), offers(name, ""))
    places = [[word] for word in words]
    for place in places:
        text = output(program, *place, "--help")
        if name == "broker":  # one help for all
            text = next(usage for usage in usages(text, name) if f"{name} {place[0]}" in usage)
        check(f"completion of {name} {place} --", sorted({*OPTION.findall(text), "--help"}),
              [word for word in offers(name, *place, "--") if name != "boxwelld" or word not in ("--state", "--passwd", "--group")])


for page, (program, words) in COMMANDS.items():
    check_completion(program.name, program, check_program(page, program, words)[0])
check_header()
check_commands()
for page in sorted(PAGES.glob("*.[1-8]")):
    check_page(page)
check("pages", 5, len(list(PAGES.glob("*.[1-8]"))))

COMMAND_LINES = re.findall(r"^  ([a-z]+) ", output(DEV, "help"), re.M)
check("completion of dev", sorted(set(COMMAND_LINES)), offers("dev", ""))
PRESETS = re.findall(r'^  "(\S+)"', output("cmake", "-S", REPOSITORY, "--list-presets"), re.M)
for words, expected in {
    ("build", ""): PRESETS, ("clean", "armhf-"): [word for word in PRESETS if word.startswith("armhf-")],
    ("abi", ""): ["--update"], ("test", "--"): ["--all", "--target", "--way"], ("test", "--target", ""): ["armhf"],
    ("package", ""): ["armhf"], ("demo", "--way", ""): ["proot", "root", "userns"],
    ("soak", "--"): ["--only", "--seed", "--way"], ("desk", "--"): ["--way"],
    ("fuzz", "l"): [path.name for path in (REPOSITORY / "tests/fuzz/corpus").glob("l*")],
}.items():
    check(f"completion of dev {words}", sorted(expected), offers("dev", *words))
for name, words, expected in [
    ("broker", ["ru"], ["run"]), ("broker", ["run", "add"], ["addremoteuser", "adduser"]),
    ("broker", ["run", "--log-level", ""], [*"01234567"]), ("broker", ["run", "unregister", ""], []),
    ("boxwelld", ["--state", "/x", "s"], ["seed", "send", "serve", "show"]),
    ("boxwelld", ["--"], ["--group", "--help", "--passwd", "--state"]),
    ("boxwelld", ["order", "re"], ["refuse", "refuse-bare", "reply"]),
    ("device", ["--way", ""], ["proot", "root", "userns"]), ("device", ["--", "-"], []),
    ("device", ["--"], ["--build", "--help", "--no-log-file", "--quiet", "--seed", "--way"]),
    ("device", ["start", "--way", "p"], ["proot"]), ("device", ["exec", "x", "boxwelld", "--"], []),
]:
    check(f"completion of {name} {words}", expected, offers(name, *words))
sys.exit(bool(failures))
