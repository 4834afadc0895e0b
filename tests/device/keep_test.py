#!/usr/bin/env python3
"""keep_test.py LAUNCHER BUILD WAY: a device that stays keeps what it holds, and can be entered and copied.

Exit status 77: the way does not work here.
"""
import filecmp
import json
import os
import pty
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import termios
import time

LAUNCHER, BUILD, WAY = sys.argv[1:]
PATIENCE = 60  # seconds, of a machine under load
SEED = {"groups": [{"name": "admin"}, {"name": "sky-hold"}], "cloud_owner": "olga",
        "accounts": [{"name": "olga", "group": "admin"}, {"name": "mia", "group": "sky-hold"}]}
# All that a device holds, told by itself.
TELL = r"""
boxwelld show --json; boxwelld transcript --json; cat /etc/passwd /etc/group /opt/skyhold/etc/registration.conf
cat /var/lib/device/events.jsonl /opt/notes; boxwellinfo Serial
for session in /opt/skyhold/etc/local_sessions/*; do stat -c '%A %s %Y %n' "$session"; lsattr "$session" | cut -c 5; done
journalctl -D "$DEVICE_JOURNAL" -q -o cat --no-pager CATEGORY=shbroker; cat /var/log/shbroker.log
"""
CHANGE = r"""
broker run addremoteuser pat --as olga; broker run initlocalsession mia brief 100 --as mia --log-level 7
broker run initlocalsession olga pinned 0 --as olga; /usr/bin/event_push happened; echo kept >/opt/notes
echo SN-1 >/var/lib/device/info/Serial; echo 'eve:x:9:9::/:' >>/etc/passwd; journalctl --sync
touch -d '1 hour ago' /opt/skyhold/etc/local_sessions/brief
"""
# Device information that takes its time.
SLOW_INFORMATION = "#!/bin/sh\ntouch /run/asked\nuntil [ -e /run/go ]; do sleep 0.1; done\ncat /var/lib/device/info/$1"
failures = []


def check(what, expected, actual):
    if expected != actual:
        failures.append(what)
        print(f"{what}: expected\n{expected}\ngot\n{actual}", flush=True)


def command(*words):
    return [LAUNCHER, *words]


def run(*words, **how):
    """Status and what was said, on one line."""
    how = {"stdin": subprocess.DEVNULL, **how}
    done = subprocess.run(command(*words), stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          errors="replace", timeout=2 * PATIENCE, check=False, **how)
    return f"{done.returncode} {' '.join(done.stdout.split())}".strip()


def start(*words):
    return run("start", "--quiet", "--build", BUILD, *words)


def ask(name, script):
    return subprocess.run(command("exec", name, "--", "bash", "-c", script), stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False).stdout


def listed():
    """What runs, by name, and who keeps it."""
    done = subprocess.run(command("list", "--json"), stdout=subprocess.PIPE, check=True)
    return {row["name"]: row["keeper"] for row in json.loads(done.stdout)}


def eventually(condition):
    end = time.monotonic() + PATIENCE
    while not condition() and time.monotonic() < end:
        time.sleep(0.05)
    return condition()


class Terminal:
    """Somebody at a terminal who types a command."""

    def __init__(self, *words):
        self.process, self.keys = pty.fork()
        if self.process == 0:
            os.execv(words[0], words)

    def see(self, text):
        """What has come up to the text, or until nothing more does."""
        seen = ""
        while text not in seen and select.select([self.keys], [], [], PATIENCE)[0]:
            try:
                seen += os.read(self.keys, 1).decode("ascii", "replace")
            except OSError:
                break
        return seen

    def type(self, text, answer):
        os.write(self.keys, text.encode())
        check(f"typed {text!r}", True, answer in self.see(answer))

    def status(self):
        while self.see("\0"):
            pass
        os.close(self.keys)
        return os.waitstatus_to_exitcode(os.waitpid(self.process, 0)[1])


def check_terminal():
    terminal = Terminal(*command("shell", "one"))
    check("the prompt", True, terminal.see("one:").endswith("one:"))
    termios.tcsetwinsize(terminal.keys, (33, 77))
    terminal.type("stty size; echo $$-$DEVICE_WAY\r", f"-{WAY}\r")
    terminal.type("stty size\r", "33 77")
    terminal.type("sleep 1000; echo \"ended: $?\"\r", "ended: $?\"\r\n")
    eventually(lambda: "sleep 1000" in ask("one", "ps -eo args"))
    terminal.type("\x03", "^C")
    terminal.type("echo $? ended\r", "130 ended")
    terminal.type("boxwelld sh\t\rexit 9\r", "accounts")
    check("the status of the shell", 9, terminal.status())
    check("the history", True, "stty size" in ask("one", f"cat {STATES}/one/history"))
    terminal = Terminal(*command("exec", "one", "sh", "-c", "echo up; exec cat"))  # which asks for no terminal
    check("a command at a terminal", True, "up" in terminal.see("up"))
    terminal.type("\x03", "^C")
    check("Ctrl-C", 130, terminal.status())
    # It asked for a device and goes, and the device stays.
    terminal = Terminal("/bin/sh", "-c", f"{LAUNCHER} start --quiet --build {BUILD} far && echo up; sleep 1000")
    check("started at a terminal", True, "up" in terminal.see("up"))
    os.close(terminal.keys)
    os.waitpid(terminal.process, 0)
    check("after its terminal", "0 admin", run("exec", "far", "id", "-gn", "alice"))
    check("stopped", "0", run("stop", "far"))
    check("removed", "0", run("remove", "far"))


def check_commands():
    check("streams and arguments", "3 a <a b> <*>", pipe("a\n"))
    check("environment and folder", f"0 own {os.getcwd()}",
          run("exec", "one", "sh", "-c", 'echo "$OWN $PWD"', env={**os.environ, "OWN": "own"}))
    with tempfile.TemporaryDirectory(dir="/dev/shm") as hidden:
        check("a folder that it does not see", f"0 device: the device does not see the folder {hidden} "
              "(No such file or directory); in / instead /", run("exec", "one", "pwd", cwd=hidden))
    check("no such command", "127 device: /nothing: No such file or directory", run("exec", "one", "/nothing"))
    for number, expected in ((signal.SIGTERM, 143), (signal.SIGINT, 130), (signal.SIGUSR1, 138)):
        client = subprocess.Popen(command("exec", "one", "sh", "-c", "echo up; exec sleep 1001"),
                                  stdin=subprocess.DEVNULL, stdout=subprocess.PIPE)
        client.stdout.readline()
        client.send_signal(number)
        check(f"signal {number}", expected, client.wait(PATIENCE))
        client.stdout.close()
    client = subprocess.Popen(command("exec", "one", "sh", "-c", "echo up; exec sleep 1002"), stdout=subprocess.PIPE)
    client.stdout.readline()
    client.kill()
    client.wait()
    client.stdout.close()
    check("left behind", True, eventually(lambda: "sleep 1002" not in ask("one", "ps -eo args")))


def pipe(text):
    done = subprocess.run(command("exec", "one", "sh", "-c", 'read -r x; printf "%s <%s> <%s>" "$x" "$@"; exit 3',
                                  "-", "a b", "*"), input=text, stdout=subprocess.PIPE, text=True, check=False)
    return f"{done.returncode} {done.stdout}"


def check_kept():
    """The same before and after a stop, and on a device made of a snapshot."""
    ask("one", CHANGE)
    before = ask("one", TELL)
    for fact in ("SN-1", "eve", "kept", '["happened"]', "InitLocalSession mia success", "<owner>olga", "pat"):
        check(f"{fact} is told", True, fact in before)
    check("pinned", WAY == "root", "pinned\ni" in before)
    check("the log", True, "InitLocalSession mia" in run("log", "one"))
    check("a snapshot of what runs", "0", run("snapshot", "one", "running.snapshot"))
    check("stopped", "0", run("stop", "one"))
    check("the journal's files are complete", "", subprocess.run(
        f"journalctl --verify --directory {STATES}/one/machine/run/log/journal 2>&1 | grep FAIL", shell=True,
        stdout=subprocess.PIPE, text=True, check=False).stdout)
    check("a snapshot of what was stopped", "0", run("snapshot", "one", "stopped.snapshot"))
    check("started again", "0", start("one"))
    check("after a stop", before, ask("one", TELL))
    for file in ("running.snapshot", "stopped.snapshot"):
        check(f"from {file}", "0", start("copy", "--from", file))
        check(f"what {file} holds", before, ask("copy", TELL))
        check("stopped", "0", run("stop", "copy"))
    check("the state is private", "0 700", f"0 {os.stat(STATES + '/one').st_mode & 0o777:o}")
    return before


def check_side_by_side():
    far = os.path.join(os.getcwd(), "long" * 30, "second")
    check("a second device", "0", start("two", "--state", far, "--seed", "seed.json"))
    check("both are listed", {"one": True, "two": True, "copy": False}, {n: k is not None for n, k in listed().items()})
    check("its own accounts", "0 admin", run("exec", "two", "id", "-gn", "olga"))
    ask("two", "echo two >/opt/notes")
    check("not the first one's", "kept\n", ask("one", "cat /opt/notes"))
    check("in use by name", f"125 device: the state in {STATES}/one is in use by the device one; "
          "device stop ends one, --state names another folder", start("one"))
    check("in use by folder", f"125 device: the state in {far} is in use by the device two; "
          "device stop ends one, --state names another folder", start("three", "--state", far))
    check("content with it", "0", start("one", "--join"))
    check("removed while it runs", "125 device: the device two runs; device stop two ends it", run("remove", "two"))
    check("another folder", f"125 device: the device two keeps its state in {far}, not in {os.getcwd()}/other; "
          "take another name, or device remove two", start("two", "--state", "other"))
    return far


def check_race():
    """Of two that start one device at once, one does."""
    both = [subprocess.Popen(command("start", "--quiet", "--build", BUILD, "race"), stderr=subprocess.DEVNULL)
            for _ in range(2)]
    check("two at once", [0, 125], sorted(one.wait(2 * PATIENCE) for one in both))
    check("stopped", "0", run("stop", "race"))
    check("removed", "0", run("remove", "race"))


def check_killed(before):
    """The keeper, or its two processes at once."""
    for both in (False, True):
        keeper = listed()["one"]
        with open(f"/proc/{keeper}/cmdline", encoding="utf-8") as file:
            words = file.read().split("\0")
        keeping = int(subprocess.run(["pgrep", "-P", str(keeper)], stdout=subprocess.PIPE, check=True).stdout)
        for process in [keeping, keeper] if both else [keeper]:
            os.kill(process, signal.SIGKILL)
        check("without its keeper", True, eventually(lambda: listed()["one"] is None))
        check("it does not run", "125 device: the device one does not run; device start one starts it", run("stop", "one"))
        for word, folder in zip(words, words[1:]):
            if word == "--remove":  # under proot nobody is left to do it until a minute later
                shutil.rmtree(folder, ignore_errors=True)
        # So is a start that was ended by force while it put another state in the place of this one.
        os.rename(f"{STATES}/one/machine", f"{STATES}/one/machine.old")
        os.mkdir(f"{STATES}/one/machine.new")
        check("started again", "0", start("one"))
        check("after the keeper was killed", before, ask("one", TELL))


def check_snapshots():
    """Between operations, as a whole, or not at all."""
    ask("one", f"rm /usr/bin/boxwellinfo; echo '{SLOW_INFORMATION}' >/usr/bin/boxwellinfo; chmod +x /usr/bin/boxwellinfo")
    operation = subprocess.Popen(command("exec", "one", "broker", "run", "updateuser", "olga", "NEUzOiQxJGEkYg==",
                                         "olga", "far", "--as", "olga"), stdout=subprocess.PIPE)
    check("an operation", "up\n", ask("one", "until [ -e /run/asked ]; do sleep 0.1; done; echo up"))
    os.mkdir("kept")
    shutil.copy("running.snapshot", "kept/file")
    waiting = subprocess.Popen(command("snapshot", "one", "kept/file"))
    check("it waits", True, eventually(lambda: "flock --wait" in ask("one", "ps -eo args")))
    waiting.kill()
    waiting.wait()
    check("left by a killed one", ["file"], os.listdir("kept"))
    check("the old one", True, filecmp.cmp("running.snapshot", "kept/file", shallow=False))
    ask("one", "touch /run/go")
    check("the operation", b"CODE_SUCCEED", operation.communicate()[0].split(b",")[0])
    adding = "for i in {1..40}; do echo \"adduser u$i NEUzOiQxJGEkYg== u$i@example.com --as olga --log-level 7\"; done"
    busy = subprocess.Popen(command("exec", "one", "bash", "-c", f"broker script <({adding}) | grep -m 3 SUCC || echo none; cat"),
                            stdin=subprocess.PIPE, stdout=subprocess.PIPE)
    busy.stdout.readline()
    check("in the middle", "0", run("snapshot", "one", "busy.snapshot"))
    busy.communicate()
    check("from it", "0", start("copy", "--from", "busy.snapshot"))
    counts = ask("copy", "boxwelld show | grep -c ' u[0-9]'; grep -c ^u[0-9] /etc/passwd; "
                 "grep -c 'AddUser u.* success' /var/log/shbroker.log; boxwelld transcript | grep -c 'c-resource-id=\"Users\"'").split()
    check("whole operations", [counts[0]] * 4, counts)
    check("some of them", True, 0 < int(counts[0]) <= 40)
    check("stopped", "0", run("stop", "copy"))


def spoil(name, change):
    data = bytearray(open("running.snapshot", "rb").read())
    with open(name, "wb") as file:
        file.write(change(data))
    return name


def check_bad_snapshots(before):
    size = os.path.getsize("running.snapshot")
    head = b"syscmd-desk snapshot, version "
    subprocess.run("{ head -n 1 running.snapshot; tail -n +2 running.snapshot | gzip -d | tar --warning=none --delete passwd | gzip; }"
                   ">part.snapshot", shell=True, check=True)
    os.symlink("/tmp", "opt")
    subprocess.run(f"{{ echo '{head.decode()}1'; tar -c opt --transform 's,^opt$,opt/../../x,' -P | gzip; }}"
                   ">out.snapshot", shell=True, check=True)
    for file, said in (
        (spoil("cut.snapshot", lambda data: data[: size // 2]), "cut.snapshot is cut or damaged: "
         "Compressed file ended before the end-of-stream marker was reached"),
        (spoil("newer.snapshot", lambda data: data.replace(head + b"1", head + b"2")),
         "newer.snapshot is of version 2, and this program knows 1: a newer one has made it"),
        (spoil("other.snapshot", lambda data: b"#!/bin/sh\n"),
         'other.snapshot is no snapshot of a device: it does not begin with "syscmd-desk snapshot, version 1"'),
        ("part.snapshot", "part.snapshot holds no passwd, which every device has"),
        ("out.snapshot", "out.snapshot holds 'opt/../../x', which leads out of the device"),
        ("none.snapshot", "[Errno 2] No such file or directory: 'none.snapshot'"),
    ):
        check(file, f"125 device: {said}", start("copy", "--from", file))
        check(f"nothing made of {file}", f"125 device: {said}", start("fresh", "--from", file))
    check("the list", ["copy", "one", "two"], sorted(listed()))
    check("the old state", "0", start("copy"))
    check("whole", True, "eve" in ask("copy", TELL) and "SN-1" in before)


def check_complaints(far):
    odd = "a device's name is 1 to 64 letters, digits, '.', '_' and '-', and begins with one of the first two: not "
    os.makedirs("full/of")
    os.makedirs("newer")
    with open("newer/version", "w", encoding="ascii") as file:
        file.write("syscmd-desk state 2\n")
    os.mkdir("arm")
    with open(os.path.join(BUILD, "boxwelld"), "rb") as file, open("arm/libsyscmd.so", "wb") as made:
        head = bytearray(file.read(64))
        head[4], head[18] = 1, 40
        made.write(head)
    work = os.getcwd()
    for words, said in (
        (("start", "a b"), f"2 device: {odd}a\\ b"),
        (("start", "../x"), f"2 device: {odd}../x"),
        (("exec", "a/b", "true"), f"2 device: {odd}a/b"),
        (("start", "--fast"), "2 device: unknown option --fast"),
        (("start", "x", "y"), "2 device: unexpected argument y"),
        (("start", "--state"), "2 device: --state needs an argument"),
        (("start", "--from", "f", "--seed", "s"), "2 device: --seed and --from both tell what to begin with"),
        (("start", "x", "--way", "x"), "2 device: --way is root, userns or proot, not x"),
        (("stop",), "2 device: stop needs a NAME, or --all"),
        (("exec", "one"), "2 device: exec needs a COMMAND to run on one"),
        (("snapshot", "one"), "2 device: snapshot needs a NAME and a FILE"),
        (("snapshot", "one", work), f"125 device: {work} is a folder, and a snapshot is a file"),
        (("stop", "nobody"), "125 device: there is no device nobody; device list tells which there are"),
        (("start", "x", "--state", "full"), f"125 device: {work}/full is not the state of a device: "
         'its file "version" does not say "syscmd-desk state 1"'),
        (("start", "x", "--state", "newer"), f"125 device: the state in {work}/newer is of version 2, "
         "and this program knows 1: a newer one has made it"),
        (("start", "x", "--state", "/proc/x"), "125 device: cannot make the folder /proc/x"),
        (("start", "x", "--state", "seed.json"), f"125 device: {work}/seed.json is to be a state's folder, and is none"),
        (("start", "x", "--build", "arm"), f"125 device: {work}/arm/libsyscmd.so is for 32-bit ARM, and this machine is "
         "64-bit x86; --build is a folder of what is made for it (./dev build makes build/)"),
        (("start", "x", "--seed", "bad.json"), f"125 device: boxwelld refused {work}/bad.json device: "
         "boxwelld: [json.exception.parse_error.101] parse error at line 1, column 2"),
    ):
        given = (words[0], "--build", BUILD) if words[0] == "start" else words[:1]
        check(" ".join(words), said, run(*given, *words[1:])[: len(said)])
    check("nothing came of it", ["copy", "one", "two"], sorted(listed()))
    check("stop --all", "0", run("stop", "--all"))
    check("a seed for what is there", f"2 device: {STATES}/one holds a state already: --seed and --no-log-file are for "
          "a new one (boxwelld seed FILE changes the accounts)", start("one", "--seed", "seed.json"))
    for name in ("one", "two", "copy"):
        check(f"remove {name}", "0", run("remove", name))
    check("left of them", ([], False), (os.listdir(STATES), os.path.exists(far)))


def main():
    with open("seed.json", "w", encoding="ascii") as file:
        json.dump(SEED, file)
    with open("bad.json", "w", encoding="ascii") as file:
        file.write("no")
    check("the first start", "0", start("one", "--seed", "seed.json"))
    before = check_kept()
    check_commands()
    check_terminal()
    far = check_side_by_side()
    check_race()
    check_killed(before)
    check_snapshots()
    check_bad_snapshots(before)
    check_complaints(far)
    return 1 if failures else 0


if subprocess.run(command("--quiet", "--build", BUILD, "--way", WAY, "true"), check=False).returncode != 0:
    sys.exit(77)
with tempfile.TemporaryDirectory(prefix="keep.", dir="/tmp") as work_folder:
    os.chdir(work_folder)
    os.environ.update(DEVICE_WAY=WAY, XDG_STATE_HOME=work_folder)
    STATES = work_folder + "/syscmd-desk"
    try:
        code = main()
    finally:
        run("stop", "--all")
        if os.getuid() == 0:
            subprocess.run(["chattr", "-R", "-f", "-i", work_folder], check=False)
        subprocess.run(["chmod", "-R", "u+rwX", work_folder], check=False)
        os.chdir("/")
sys.exit(code)
