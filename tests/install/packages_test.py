#!/usr/bin/env python3
"""packages_test.py REPOSITORY VERSION: what packages say agrees with the sources, and the bill of materials with
the packages. `./dev test --all` builds them and tries them in a clean Debian."""

import hashlib
import json
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

REPOSITORY, VERSION = Path(sys.argv[1]), sys.argv[2]
DEBIAN = REPOSITORY / "packaging/debian"
failures = 0


def check(what, expected, actual):
    global failures
    if expected != actual:
        failures += 1
        print(f"{what}: expected\n{expected}\ngot\n{actual}")


def output(*command, **environment):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE,
                          env={**os.environ, **environment}).stdout.strip()


check("version", VERSION, output("dpkg-parsechangelog", "-l", DEBIAN / "changelog", "-S", "Version"))

installed = re.findall(r"^([a-z0-9][^\s#]+)", (REPOSITORY / "tools/debian-packages.txt").read_text(), re.M)
needed = re.search(r"Build-Depends:\n((?: .*\n)+)", (DEBIAN / "control").read_text())[1]
check("build dependencies that ./dev does not install", {"debhelper-compat"},
      {re.match(r"\S+?(?=,|$| )", line.strip())[0] for line in needed.splitlines()} - set(installed))

for page in (REPOSITORY / "man").glob("*.scd"):
    text = page.read_text()
    package = re.search(r"/usr/share/doc/([a-z-]+)", text)[1]
    named = {name for name in re.findall(r"([a-z-]+\.md)_", text[text.rindex("# SEE ALSO"):])}
    packaged = (DEBIAN / f"{package}.docs").read_text().split()
    check(f"{page.name}: documents that are not in {package}", set(), named - {Path(doc).name for doc in packaged})
    check(f"{page.name}: named documents", True, bool(named))
    check(f"{package}: documents that are none", [], [doc for doc in packaged if not (REPOSITORY / doc).is_file()])


def make_package(folder):
    root = folder / "root"
    (root / "DEBIAN").mkdir(parents=True)
    (root / "DEBIAN/control").write_text(
        "Package: some-lib\nVersion: 2.0\nArchitecture: all\nMaintainer: x\nDescription: x\n"
        "Depends: libc6 (>= 2.34), other:any, syscmd (= 2.0)\n")
    (root / "a b").write_text("content")
    (root / "link").symlink_to("a b")
    output("dpkg-deb", "--root-owner-group", "-b", root, folder / "some.deb")
    return folder / "some.deb"


def check_bill(folder):
    deb = make_package(folder)
    text = output(REPOSITORY / "tools/sbom", deb, SOURCE_DATE_EPOCH="86400")
    check("the bill, again", text, output(REPOSITORY / "tools/sbom", deb, SOURCE_DATE_EPOCH="86400"))
    bill = json.loads(text)
    check("time", "1970-01-02T00:00:00Z", bill["creationInfo"]["created"])
    packages = {one["name"]: one for one in bill["packages"]}
    check("packages", ["libc6", "other", "some-lib", "syscmd"], sorted(packages))
    sums = {one["algorithm"]: one["checksumValue"] for one in packages["some-lib"]["checksums"]}
    check("checksum", hashlib.sha256(deb.read_bytes()).hexdigest(), sums["SHA256"])
    (file,) = bill["files"]
    digest = hashlib.sha1(b"content").hexdigest()
    check("file", ("./a b", digest), (file["fileName"], file["checksums"][0]["checksumValue"]))
    check("verification code", hashlib.sha1(digest.encode()).hexdigest(),
          packages["some-lib"]["packageVerificationCode"]["packageVerificationCodeValue"])
    names = {one["SPDXID"]: one.get("name", one.get("fileName")) for one in (bill, *bill["packages"], file)}
    check("relations", [
        ("syscmd", "DESCRIBES", "some-lib", None), ("some-lib", "CONTAINS", "./a b", None),
        ("some-lib", "DEPENDS_ON", "libc6", ">= 2.34"), ("some-lib", "DEPENDS_ON", "other", None),
        ("some-lib", "DEPENDS_ON", "syscmd", "= 2.0")],
        [(names[one["spdxElementId"]], one["relationshipType"], names[one["relatedSpdxElement"]], one.get("comment"))
         for one in bill["relationships"]])


with tempfile.TemporaryDirectory() as work:
    check_bill(Path(work))
sys.exit(bool(failures))
