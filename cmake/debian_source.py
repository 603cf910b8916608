#!/usr/bin/env python3
"""Fetches a source package of Debian, for the suite that this machine's packages are from, and unpacks it as it stands.
The machine's own settings stay as they are: apt looks the package up in lists of our own.

usage: debian_source.py PACKAGE FOLDER     the package's files come to stand in FOLDER; status 1 and a line if they can't"""
import pathlib
import subprocess
import sys
import tempfile

package, folder = sys.argv[1:]
targets = subprocess.run(["apt-get", "indextargets", "--format", "$(REPO_URI) $(RELEASE) $(COMPONENT)",
                          "Created-By: Packages", "Origin: Debian", "Component: main"],
                         capture_output=True, text=True).stdout.splitlines()
if not targets:
    sys.exit("apt knows no archive of Debian")

with tempfile.TemporaryDirectory() as place:
    work = pathlib.Path(place)
    (work / "sources.list").write_text("".join(f"deb-src {target}\n" for target in targets))
    (work / "lists").mkdir()
    apt = ["apt-get", "-qq", "-o", f"Dir::Etc::sourcelist={work}/sources.list", "-o", "Dir::Etc::sourceparts=-",
           "-o", f"Dir::State::lists={work}/lists", "-o", f"Dir::Cache={work}", "-o", "APT::Sandbox::User="]
    for step in [["update"], ["--download-only", "--only-source", "source", package]]:
        done = subprocess.run(apt + step, cwd=work, capture_output=True, text=True)
        if done.returncode:
            sys.exit(f"{package} cannot be fetched: {done.stderr}")
    pathlib.Path(folder).mkdir(parents=True, exist_ok=True)
    archive = next(work.glob(f"{package}_*.orig.tar.*"))
    subprocess.run(["tar", "xf", archive, "--strip-components=1", "-C", folder], check=True)
