"""Runs one program of Debian twice: on our libraries and on Debian's. Shared by the tests of programs."""
import os
import pathlib
import subprocess
import sys
import tempfile


def skip(reason):
    print(reason)
    sys.exit(77)


def run_on(folder, command, program, **environment):
    """The program's output, with the libraries of `folder` that stand in FFTW's place alone, or Debian's for None."""
    with tempfile.TemporaryDirectory() as place:
        if folder:
            libraries = pathlib.Path(folder)
            for library in [*libraries.glob("libfftw3*.so.3"), *libraries.glob("liborv*.so*")]:
                pathlib.Path(place, library.name).symlink_to(library.resolve())
            environment["LD_LIBRARY_PATH"] = place
        script = pathlib.Path(place, "program")
        script.write_text(program)
        done = subprocess.run([*command, str(script)], env={**os.environ, **environment}, capture_output=True, text=True)
        if done.returncode:
            sys.exit(f"on {folder or 'Debian'}: {done.stdout[-2000:]}{done.stderr[-4000:]}")
        return done.stdout
