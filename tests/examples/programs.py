"""What tests of the example programs share: programs, data, pages."""
import base64
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

programs, libraries, reference_blas = (pathlib.Path(word).resolve() for word in sys.argv[1:4])
reference_folder = pathlib.Path(sys.argv[3]).parent
EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
DATA = EXAMPLES / "digits/digits.csv"
POWER = EXAMPLES / "factor/power.mtx"
SUNSPOTS, PICTURE = EXAMPLES / "spectrum/sunspots.csv", EXAMPLES / "spectrum/ascent.pgm"


def run(program, *arguments, **variables):
    return subprocess.run([str(programs / program), *map(str, arguments)], text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, env={k: str(v) for k, v in variables.items()})


class InFolder(unittest.TestCase):
    """A folder of its own for each test."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def file(self, content):
        path = self.folder / "input"
        path.write_bytes(content)
        return path

    def page(self, program, *arguments):
        """What a program prints, and the page it writes; PAGE among the arguments is where."""
        page = self.folder / "page.html"
        done = run(program, *(page if word is PAGE else word for word in arguments))
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        text = page.read_text()
        self.assertTrue(text.startswith("<!doctype html>") and text.rstrip().endswith("</html>"))
        self.assertNotRegex(text, r"\bnan\b|\binf\b|https?://")
        return done.stdout, text


PAGE = object()


def pictures(page):
    """The bitmaps in a page: rows of values, the upper one first."""
    for text in re.findall(r"data:image/bmp;base64,([A-Za-z0-9+/=]*)'", page):
        data = base64.b64decode(text, validate=True)
        number = lambda at: int.from_bytes(data[at:at + 4], "little")
        width, height, pixels = number(18), number(22), number(10)
        pitch = (width + 3) // 4 * 4
        assert data[:2] == b"BM" and number(2) == len(data) == pixels + pitch * height
        yield [data[pixels + pitch * y:][:width] for y in reversed(range(height))]


def main():
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
