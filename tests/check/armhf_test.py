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


def float_abi(flags, attribute):
    """The machine of the plug-in with these; without an attribute its section is cut short."""
    with open(PLUGIN, "rb") as file:
        content = bytearray(file.read())
    struct.pack_into("<I", content, 36, flags)
    section = content.rindex(b"aeabi\0")
    if attribute is None:
        struct.pack_into("<I", content, section - 4, 12)
    else:
        content[content.index(b"\x1c\x01", section) + 1] = attribute
    with tempfile.NamedTemporaryFile(prefix="check.", suffix=".so") as changed:
        changed.write(content)
        changed.flush()
        return check(changed.name, PROFILE)[0]["machine"]


def main():
    found, bad = check(PLUGIN, PROFILE)
    wrong = [f"{row}: {found[row]}" for row in bad]
    if not found["trial"].startswith("loaded; "):
        wrong.append(found["trial"])
    # The header's flags tell the float ABI, or else the attribute Tag_ABI_VFP_args.
    for flags, attribute, hard in [(0x5000200, 1, False), (0x5000000, 1, True), (0x5000400, 0, True),
                                   (0x5000000, 0, False), (0x5000000, None, False)]:
        machine = float_abi(flags, attribute)
        if machine != f"32-bit ARM, {'hard' if hard else 'soft'} float":
            wrong.append(f"flags {flags:#x}, attribute {attribute}: {machine}")
    if PROFILE == "armhf-strict" and check(PLUGIN, "armhf")[1] != ["size"]:
        wrong.append("the strict plug-in is within the budget of the other")
    print(*wrong, sep="\n")
    return bool(wrong)


if __name__ == "__main__":
    sys.exit(main())
