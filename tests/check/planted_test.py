#!/usr/bin/env python3
"""planted_test.py SOURCE BROKER CC CXX: a library for each row of `broker check` in which that row is bad.

The good one exports what is listed and carries out an unknown operation; each other differs from it by a flag or
a line. What is damaged or of another machine gets a sentence, and never more than that.
"""
import concurrent.futures
import functools
import json
import os
import random
import shutil
import struct
import subprocess
import sys
import tempfile

SOURCE, BROKER, CC, CXX = sys.argv[1:]
WORK = tempfile.mkdtemp(prefix="check.")
LIBRARIES = os.path.dirname(BROKER)
EXECUTE = """
#include "common/transaction.h"
extern "C" __attribute__((visibility("default"))) void execute(ITransaction* tx)
{
    BEFORE
    tx->setMoniker("/root/devices");
    tx->setMethod("userstate");
    tx->setBodyType("jobstate");
    std::string name;
    tx->getRequestParam(PARAMETER, name);
    tx->setCode(name == "broker-check" ? CODE_FAILED : CODE_SUCCEED);
    tx->addResponseParam("operation unknown");
}
"""
REST = """
#include <stdio.h>
#include <stdlib.h>
#include <sys/socket.h>
int process_request_bwdclient(char*);
__attribute__((used)) static int asks(const char* text, int length)
{
    char copy[64];
    snprintf(copy, (unsigned)length, "%s", text);
    return process_request_bwdclient(copy);
}
"""
VERSION = '__attribute__((used)) static const char VERSION[] = "syscmd 1.0.0";\n'
# Where these succeed, the machine is written to.
WRITES = """
#include <unistd.h>
__attribute__((constructor)) static void write_everywhere(void)
{
    FILE* file = fopen("written", "w");
    if (file != NULL || mkdtemp((char[]){"written.XXXXXX"}) != NULL || rename("there", "moved") == 0 ||
        unlink("there") == 0 || socket(AF_UNIX, SOCK_DGRAM, 0) >= 0)
        abort();
}
"""
COMPILED = ["-O2", "-fPIC", "-U_FORTIFY_SOURCE", "-D_FORTIFY_SOURCE=2", "-fstack-protector-all"]
LINKED = ["-shared", "-Wl,-z,relro", "-Wl,-z,now", "-Wl,-z,noexecstack", f"-L{LIBRARIES}", "-lbwdclient"]
HANDLER = "_Z20DeleteAccountHandlerP12ITransactionRNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"
# Of each: the row that is bad, a part of what is wrong with it, and how it is built otherwise than the good one.
CASES = [
    (None, "", {}),
    (None, "", {"rest": WRITES}),
    ("exports", "missing: lstPush", {"kinds": {"lstPush": None}}),
    ("exports", "missing: execute", {"kinds": {"execute": None}}),
    ("exports", "drand48_buf is OBJECT, not TLS", {"kinds": {"drand48_buf": "OBJECT"}}),
    ("exports", "String is OBJECT, not FUNC", {"kinds": {"String": "OBJECT"}}),
    ("exports", "surplus: surplus", {"kinds": {"surplus": "FUNC"}}),
    ("exports", "surplus: _Z20DeleteAccountHandlerP12ITransactionRSs (DeleteAccountHandler(ITransaction*, ",
     {"kinds": {HANDLER: None, "_Z20DeleteAccountHandlerP12ITransactionRSs": "FUNC"}}),
    ("needed", "a device has no libdl.so.2", {"link": ["-Wl,--no-as-needed", "-l:libdl.so.2"]}),
    ("versions", "asks for GLIBC_9.9;", {"version": ("GLIBC_2.4", "GLIBC_9.9")}),
    ("client library", "process_other", {"rest": "int process_other(void);"
        "__attribute__((used)) static int other(void) { return process_other(); }"}),
    ("client library", "libbwdclient.so is to be needed", {"unlink": "-lbwdclient"}),
    ("relro", "no GNU_RELRO", {"link": ["-Wl,-z,norelro"]}),
    ("bind now", "when they are first made", {"link": ["-Wl,-z,lazy"]}),
    ("stack canaries", "__stack_chk_fail", {"compile": ["-fno-stack-protector"]}),
    ("checked calls", "no checked call", {"compile": ["-U_FORTIFY_SOURCE"]}),
    ("text relocations", "code is relocated", {"rest": '__asm__(".text\\n.quad asks\\n");', "link": ["-Wl,-z,notext"]}),
    ("library path", "folders to look for", {"link": ["-Wl,-rpath,/build/out"]}),
    ("library path", "folders to look for", {"link": ["-Wl,-rpath,$ORIGIN", "-Wl,--enable-new-dtags"]}),
    ("executable stack", "can be executed", {"link": ["-Wl,-z,execstack"]}),
    ("version", "no text", {"text": ""}),
    ("version", "no text", {"text": VERSION.replace("1.0.0", "dirty")}),
    ("trial", "ended by a signal: Aborted; loaded", {"before": "__builtin_abort();"}),
    ("trial", "no end within 10 s; loaded", {"before": "while (true) asm volatile(\"pause\");"}),
    ("trial", "exit status 3; loaded", {"before": "_Exit(3);"}),
    ("trial", "code 0, response operation unknown", {"parameter": 1}),
    ("trial", "number of slot 25", {"before": "tx->getZipFlag();"}),
    ("trial", "response operation unknown, response more", {"after": 'tx->addResponseParam("more");'}),
]


def exports(changes):
    """The listed names, each as what it is, and the version script that exports them."""
    with open(f"{SOURCE}/devkit/broker/check/exports.txt", encoding="utf-8") as file:
        kinds = dict(reversed(line.split()) for line in file if line[0] not in "#\n")
    kinds = {name: kind for name, kind in {**kinds, **changes}.items() if kind}
    shape = {"FUNC": "void e{0}(void) __asm__(\"{1}\"); void e{0}(void) {{}}\n",
             "OBJECT": "int e{0} __asm__(\"{1}\") = 1;\n", "TLS": "__thread int e{0} __asm__(\"{1}\");\n"}
    text = "".join(shape[kind].format(i, name) for i, (name, kind) in enumerate(kinds.items()) if name != "execute")
    return text, "{ global: " + "".join(f"{name};" for name in kinds) + " local: *; };"


def write(path, text):
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)


@functools.cache
def execute_object(text, *flags):
    folder = tempfile.mkdtemp(dir=WORK)
    write(f"{folder}/execute.cpp", text)
    subprocess.run([CXX, *COMPILED, *flags, f"-I{SOURCE}", "-c", "execute.cpp"], cwd=folder, check=True)
    return f"{folder}/execute.o"


def build(folder, case):
    """The library of a case."""
    names, script = exports(case.get("kinds", {}))
    write(f"{folder}/rest.c", REST + names + case.get("text", VERSION) + case.get("rest", ""))
    execute = EXECUTE.replace("BEFORE", case.get("before", "")).replace("PARAMETER", str(case.get("parameter", 0)))
    execute = execute_object(execute.replace('unknown");', 'unknown");' + case.get("after", "")),
                             *case.get("compile", []))
    write(f"{folder}/exports.map", script)
    subprocess.run([CC, *COMPILED, *case.get("compile", []), "-c", "rest.c"], cwd=folder, check=True)
    linked = [flag for flag in LINKED if flag != case.get("unlink")] + case.get("link", [])
    subprocess.run([CXX, "rest.o", execute, "-o", "tried.so", "-Wl,--version-script=exports.map", *linked],
                   cwd=folder, check=True)
    return f"{folder}/tried.so"


def check(*arguments, folder=None):
    done = subprocess.run([BROKER, "check", *arguments], cwd=folder, capture_output=True, text=True, check=False)
    return done.returncode, done.stdout, done.stderr


def findings(library, *arguments, folder=None):
    """Status, and what is wrong in each bad row: with what was found there."""
    status, output, errors = check(library, "--json", *arguments, folder=folder)
    assert not errors, errors
    rows = json.loads(output)["rows"]
    return status, {row["row"]: f'{row["found"]}; {row["finding"]["wrong"]}' for row in rows if row["finding"]}


def planted(row, wrong, case):
    """What is not as it should be with a case; nothing when it is."""
    with tempfile.TemporaryDirectory(dir=WORK) as folder:
        write(f"{folder}/there", "")
        library = build(folder, case)
        if "version" in case:
            patch(library, *(text.encode() for text in case["version"]))
        before = sorted(os.listdir(folder))
        status, found = findings(library, folder=folder)
        if sorted(os.listdir(folder)) != before:
            return f"{row}: the library has written {os.listdir(folder)}"
        if list(found) != ([row] if row else []) or status != (1 if row else 0) or wrong not in found.get(row, ""):
            return f"{row}: expected {wrong!r}, got {status} {found}"
    return ""


def patch(library, old, new):
    with open(library, "rb") as file:
        content = file.read()
    assert content.count(old) >= 1, old
    with open(library, "wb") as file:
        file.write(content.replace(old, new))


def sentence(folder, library, changed, wrong, *arguments):
    """What is not as it should be with changed bytes: one row, of which `wrong` is told."""
    path = f"{folder}/changed.so"
    with open(path, "wb") as file:
        file.write(changed(bytearray(library)))
    status, found = findings(path, *arguments)
    good = status == 1 and len(found) == 1 and wrong in "".join(found.values())
    return "" if good else f"expected {wrong!r}, got {status} {found}"


def put(offset, form, value):
    def change(content):
        struct.pack_into(form, content, offset, value)
        return content
    return change


def refused(folder, library):
    """Of what is no library for this machine."""
    return [
        sentence(folder, library, lambda content: b"", "is no ELF file"),
        sentence(folder, library, lambda content: b"plain text", "is no ELF file"),
        sentence(folder, library, lambda content: content[:40], "is "),
        sentence(folder, library, lambda content: content[:-1], "cut short"),
        sentence(folder, library, lambda content: content[: len(content) // 2], "cut short"),
        sentence(folder, library, put(16, "<H", 2), "but no shared library"),
        sentence(folder, library, put(40, "<Q", 0), "has no section headers"),
        sentence(folder, library, put(18, "<H", 183), "64-bit machine number 183; the profile armhf is of a 32-bit ARM"),
        sentence(folder, library, lambda content: content, "64-bit x86; the profile armhf", "--profile", "armhf"),
    ]


def damaged(library, number):
    """Of bytes that anybody may have written: an answer, whatever they are. The profile keeps them from being loaded."""
    chance = random.Random(number)
    content = bytearray(library)
    for _ in range(chance.choice((1, 3, 20))):
        near = chance.choice((64, 4096, len(content)))
        at = chance.choice((chance.randrange(near), len(content) - 1 - chance.randrange(near)))
        content[at] = chance.choice((0, 1, 0x7F, 0x80, 0xFF, chance.randrange(256)))
    path = f"{WORK}/damaged-{number}.so"
    with open(path, "wb") as file:
        file.write(content)
    status, output, errors = check(path, "--json", "--profile", "armhf")
    good = status == 1 and not errors and json.loads(output)["findings"] == 1
    return "" if good else f"damaged, {number}: {status} {errors}"


def uses(folder):
    """What people see, and bad use."""
    write(f"{folder}/text", "")
    table = ("!! file              is no ELF file\n\nfile              it is no ELF file\n"
             "  why             the loader refuses it\n"
             "  mend            copy the file again, or link a shared library (-shared) and keep its section headers\n"
             "\ntext: 1 finding\n")
    expected = {
        ("text",): (1, table, ""),
        (): (2, "", "broker: expected one library and nothing else\n"),
        ("text", "text"): (2, "", "broker: expected one library and nothing else\n"),
        ("none",): (2, "", "broker: cannot read none: No such file or directory\n"),
        (".",): (2, "", "broker: . is no regular file\n"),
        ("text", "--quick"): (2, "", "broker: unknown option --quick (write -- before such a parameter)\n"),
        ("text", "--profile", "none"): (2, "", "broker: no profile none; there are armhf armhf-strict desk\n"),
    }
    return [f"{words}: {got}" for words, wanted in expected.items() if (got := check(*words, folder=folder)) != wanted]


def main():
    library = build(WORK, {})
    with open(library, "rb") as file:
        content = file.read()
    with concurrent.futures.ThreadPoolExecutor() as pool:
        wrong = [*pool.map(lambda case: planted(*case), CASES)]
        wrong += pool.map(lambda number: damaged(content, number), range(60))
    wrong = [each for each in wrong + refused(WORK, content) + uses(WORK) if each]
    print(*wrong, f"{len(wrong)} wrong", sep="\n")
    return bool(wrong)


if __name__ == "__main__":
    try:
        sys.exit(main())
    finally:
        shutil.rmtree(WORK)
