#!/usr/bin/env python3
"""armhf_test.py BROKER PLUGIN PROFILE: the device's plug-in has no finding; soft float and a byte too many have one."""
import json
import struct
import subprocess
import sys
import tempfile

BROKER, PLUGIN, PROFILE = sys.argv[1:]


def check(library, profile):
    done = subprocess.run([BROKER, "check", library, "--json", "--profile", profile], capture_output=True, text=True,
                          check=False)
    rows = json.loads(done.stdout)["rows"]
    return {row["row"]: row["found"] for row in rows}, [row["row"] for row in rows if row["finding"]]


def main():
    found, bad = check(PLUGIN, PROFILE)
    wrong = [f"{row}: {found[row]}" for row in bad]
    if not found["trial"].startswith("loaded; "):
        wrong.append(found["trial"])
    with open(PLUGIN, "rb") as file:
        content = bytearray(file.read())
    struct.pack_into("<I", content, 36, 0x5000200)  # e_flags: soft float
    with tempfile.NamedTemporaryFile(prefix="check.", suffix=".so") as soft:
        soft.write(content)
        soft.flush()
        if check(soft.name, PROFILE) != ({"machine": "32-bit ARM, soft float"}, ["machine"]):
            wrong.append(f"soft float: {check(soft.name, PROFILE)}")
    if PROFILE == "armhf-strict" and check(PLUGIN, "armhf")[1] != ["size"]:
        wrong.append("the strict plug-in is within the budget of the other")
    print(*wrong, sep="\n")
    return bool(wrong)


if __name__ == "__main__":
    sys.exit(main())
