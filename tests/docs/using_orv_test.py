#!/usr/bin/env python3
"""Types the commands of docs/using-orv.md, and compares what they print with the page.

usage: using_orv_test.py BUILD_FOLDER PAGE

A command stands behind "$ ", what it prints below it; "..." is anything in a line, or any lines if it stands alone.
The commands of one block share a shell. They run in a scratch folder with a link to the build; orv is installed there
in place of /opt/orv, and the alternatives system keeps its books there, so that nothing on this machine changes. What
needs a program that is not installed is skipped."""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

build, page = (pathlib.Path(word).resolve() for word in sys.argv[1:])
SYSTEM = "/usr/lib/x86_64-linux-gnu"
LINKS = ("libblas.so.3", "liblapack.so.3", "liborv.so.0", "liborv_mc3.so")
FORK = re.search(r"\$ cat fork.py\n(.*?)\$", page.read_text(), re.S)[1]


def blocks(text):
    """Commands of each block, with the number of the line and what they print."""
    for block in re.finditer(r"^```console\n(.*?)^```", text, re.S | re.M):
        line = text[:block.start(1)].count("\n") + 1
        commands = []
        for part in re.finditer(r"^\$ ((?:.*\\\n)*.*)\n((?:(?!\$ ).*\n)*)", block[1], re.M):
            commands.append((line + block[1][:part.start()].count("\n"), part[1], part[2]))
        yield commands


class Place:
    """The scratch folder, and the page's paths in it."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        (self.folder / "build").symlink_to(build)
        (self.folder / "examples").symlink_to(page.parent.parent / "examples")
        (self.folder / "fork.py").write_text(FORK)
        for name in ("books", "alternatives", "lib"):
            (self.folder / name).mkdir()
        subprocess.run(["cmake", "--install", build, "--prefix", self.folder / "orv"], check=True,
                       stdout=subprocess.DEVNULL)
        self.paths = {"/opt/orv": f"{folder}/orv"} | {f"{SYSTEM}/{name}": f"{folder}/lib/{name}" for name in LINKS}
        self.books = f"update-alternatives --altdir {folder}/alternatives --admindir {folder}/books --log {folder}/log"
        for library, package in (("libblas.so.3", "blas"), ("liblapack.so.3", "lapack")):  # as Debian's packages do it
            self.run(f"sudo update-alternatives --install {SYSTEM}/{library} {library}-x86_64-linux-gnu "
                     f"{SYSTEM}/{package}/{library} 10")

    def run(self, script):
        for theirs, here in self.paths.items():
            script = script.replace(theirs, here)
        script = script.replace("sudo update-alternatives", self.books)
        environment = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "HOME": str(self.folder), "LC_ALL": "C.UTF-8",
                       "LD_LIBRARY_PATH": f"{self.folder}/lib"}  # stands for the system's folder
        done = subprocess.run(["bash", "-c", script], cwd=self.folder, env=environment, text=True, timeout=120,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        printed = done.stdout
        for theirs, here in self.paths.items():
            printed = printed.replace(here, theirs)
        return printed, done.stderr, done.returncode


def matches(expected, printed):
    pattern = re.escape(expected.rstrip("\n")).replace(r"\.\.\.", r"[^\n]*")
    pattern = re.sub(r"^\[\^\\n\]\*(\\?)$", r"(?s:.*)\1", pattern, flags=re.M)  # alone on a line: any lines
    return re.fullmatch(pattern, printed.rstrip("\n"))


def missing(script):
    """The program that a command needs and this machine lacks."""
    for program in ("octave-cli", "Rscript"):
        if program in script and not shutil.which(program, path="/usr/bin"):
            return program
    if "numpy" in script + (FORK if "fork.py" in script else "") and not os.path.exists(
            "/usr/lib/python3/dist-packages/numpy"):
        return "numpy"
    return None


problems, typed, skipped = [], 0, set()
with tempfile.TemporaryDirectory() as folder:
    place = Place(folder)
    for commands in blocks(page.read_text()):
        exports = ""
        for line, script, expected in commands:
            if lacking := missing(script):
                skipped.add(lacking)
                continue
            if script.startswith("export "):
                exports += script + "\n"
                continue
            printed, errors, status = place.run(exports + script)
            typed += 1
            if status != 0 or not matches(expected, printed):
                problems.append(f"{page}:{line}: {script}\n  exit {status}, printed\n{printed}{errors}")
print("\n".join(problems) if problems else f"{typed} commands print what the page says")
if skipped:
    print("not installed, so their commands were skipped:", *sorted(skipped))
sys.exit(bool(problems) or typed < 10)
