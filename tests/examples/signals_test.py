#!/usr/bin/env python3
"""Runs the examples of transforms and convolutions as a user does.

usage: signals_test.py PROGRAM_FOLDER LIBRARY_FOLDER REFERENCE_BLAS [unittest arguments]
"""
import math
import re

from programs import PAGE, PICTURE, SUNSPOTS, InFolder, main, pictures, run


class Spectrum(InFolder):
    """Transforms of a series and of a picture, forward and back."""

    def test_finds_the_cycle_of_sunspots_and_names_the_methods(self):
        output, text = self.page("spectrum", SUNSPOTS, PICTURE, PAGE)
        self.assertIn("309 years from 1700 on, 49.8 on average", output)
        self.assertIn("a wave of 11.04 years, up and down by 29.6", output)  # 309/28
        rows = re.findall(r"^(309|247 of 256|256 x 256) +([\d.]+) +([\d.]+) +(\S+) +(\S+)  (.*)$", output, re.M)
        self.assertEqual([row[0] for row in rows], ["309", "247 of 256", "256 x 256"])
        self.assertIn("the engine (legacy); 1 thread;", rows[0][5])
        self.assertIn("rows and columns (legacy); 1 thread;", rows[2][5])
        for _, _, _, difference, there_and_back, method in rows:
            # Relative to the largest wave, sums of n terms are wrong by n roundings at most, a transform by fewer.
            self.assertLess(float(difference), 2 * 512 * 2**-53)
            self.assertLess(float(there_and_back), 1e-13)
            self.assertIn(method.strip(), text)
        self.assertEqual((text.count("<polyline"), len(list(pictures(text)))), (5, 5))

    def test_shows_a_rising_tone_in_every_frame_of_the_sound(self):
        _, text = self.page("spectrum", SUNSPOTS, PICTURE, PAGE)
        shades = next(pictures(text))[::-1]  # low frequencies first, 8000/256 Hz apart
        self.assertEqual((len(shades), len(shades[0])), (129, 247))
        beeps = 0
        for frame in range(247):
            middle = (64 * frame + 128) / 8000
            rising, column = (300 + 1500 * middle) / 31.25, [row[frame] for row in shades]
            self.assertLess(abs(column.index(max(column)) - rising), 2)
            if abs(rising - 64) < 8:
                continue  # both tones are one
            if min(middle % 0.25, 0.25 - middle % 0.25) < 0.02:
                continue  # the softer one comes or goes within the frame
            heard = middle % 0.5 > 0.25
            self.assertEqual(column[64] > 150, heard)
            beeps += heard
        self.assertGreater(beeps, 50)

    def test_takes_a_slow_wave_from_a_fast_one(self):
        values = [50 + 20 * math.cos(2 * math.pi * t / 50) + 10 * math.sin(2 * math.pi * t / 8) for t in range(200)]
        series = self.file(b"YEAR,N\n" + b"".join(b"%d,%.15g\n" % (1800 + t, v) for t, v in enumerate(values)))
        output, text = self.page("spectrum", series, PICTURE, PAGE)
        self.assertIn("a wave of 50.00 years, up and down by 20.0", output)
        whole, slow = ([float(point.split(",")[1]) for point in line.split()]
                       for line in re.findall(r"points='(.*?)'", text)[:2])
        pixel = (max(whole) - min(whole)) / (max(values) - min(values))
        for t, y in enumerate(slow):  # drawn with one decimal
            self.assertAlmostEqual((slow[0] - y) / pixel, 20 * (math.cos(2 * math.pi * t / 50) - 1), delta=0.3 / pixel)

    def test_filters_as_sums_over_neighbours_do(self):
        width, height = 22, 17  # both parities; the bell reaches around the edges
        picture = [[(37 * x * x + 91 * y + 13 * x * y) % 256 for x in range(width)] for y in range(height)]
        path = self.file(b"P5\n%d %d\n255\n" % (width, height) + b"".join(map(bytes, picture)))
        _, text = self.page("spectrum", SUNSPOTS, path, PAGE)
        _, same, _, blurred, sharpened = pictures(text)
        self.assertEqual([list(row) for row in same], picture)
        bell = {d: math.exp(-d * d / 18) / math.sqrt(18 * math.pi) for d in range(-15, 16)}
        for y in range(height):
            for x in range(width):
                smooth = sum(bell[dx] * bell[dy] * picture[(y + dy) % height][(x + dx) % width]
                             for dy in bell for dx in bell)
                cut = lambda value: min(max(value, 0), 255)
                self.assertAlmostEqual(blurred[y][x], cut(smooth), delta=0.51)
                self.assertAlmostEqual(sharpened[y][x], cut(2 * picture[y][x] - smooth), delta=0.51)

    def test_refuses_bad_files(self):
        for arguments, why in (
                ((self.file(b""), PICTURE), "the file is empty"),
                (("/nowhere.csv", PICTURE), "/nowhere.csv: No such file"),
                ((SUNSPOTS, "/nowhere.pgm"), "/nowhere.pgm: No such file"),
                ((SUNSPOTS, PICTURE, "/nowhere/page.html"), "/nowhere/page.html: No such file")):
            done = run("spectrum", *arguments)
            self.assertEqual(done.returncode, 1)
            self.assertIn(why, done.stderr)
        for text, why in ((b"Y,N\n1700,x\n", "a line is not YEAR,NUMBER"), (b"Y,N\n1700,nan\n", "is not YEAR,NUMBER"),
                          (b"Y,N\n1700,1\n1702,1\n", "the years do not follow"), (b"Y,N\n1700,1\n", "two years")):
            done = run("spectrum", self.file(text), PICTURE)
            self.assertEqual((done.returncode, why in done.stderr), (1, True), done.stderr)
        for text, why in ((b"P2\n2 2\n255\n", "no PGM file"), (b"P5\n1 2\n255\nab", "the sides are not from 2"),
                          (b"P5\n2 2\n255\nabc", "the file ends before the last pixel")):
            done = run("spectrum", SUNSPOTS, self.file(text))
            self.assertEqual((done.returncode, why in done.stderr), (1, True), done.stderr)


class Convolve(InFolder):
    """A sound found in noise, a picture filtered, and the times of both routes."""

    def small_picture(self):
        width, height = 22, 17
        picture = [[(37 * x * x + 91 * y + 13 * x * y) % 256 for x in range(width)] for y in range(height)]
        return self.file(b"P5\n%d %d\n255\n" % (width, height) + b"".join(map(bytes, picture))), picture

    def test_finds_the_sound_where_it_was_hidden(self):
        places = set()
        for seed in range(1, 4):
            output, text = self.page("convolve", self.small_picture()[0], PAGE, seed)
            hidden = int(re.search(r"hidden from value (\d+) on", output)[1])
            found, likeness, elsewhere = re.search(r"from value (\d+) on: likeness ([\d.]+), elsewhere at most ([\d.]+)",
                                                   output).groups()
            self.assertEqual(int(found), hidden)
            # Noise of deviation 4 against 4000 values of root mean square 1 leaves a deviation of 4/sqrt(4000).
            deviation = 4 / math.sqrt(4000)
            self.assertLess(abs(float(likeness) - 1), 5 * deviation)
            self.assertTrue(2 * deviation < float(elsewhere) < 7 * deviation)
            self.assertIn(f"{hidden / 8000:.4f} seconds after the start", text)
            self.assertIn(f">found at {hidden / 8000:.4f} seconds</text>", text)
            places.add(hidden)
        self.assertEqual(len(places), 3)

    def test_filters_as_sums_over_neighbours_do(self):
        path, picture = self.small_picture()
        _, text = self.page("convolve", path, PAGE)
        same, blurred, _, sharpened, _, shaken, weights = pictures(text)
        self.assertEqual([list(row) for row in same], picture)
        side = range(-9, 10)

        def bell(width):
            one = [math.exp(-d * d / (2 * width * width)) for d in side]
            return [[a * b / sum(one)**2 for a in one] for b in one]

        def summed(weight, x, y):
            at = lambda x, y: picture[min(max(y, 0), len(picture) - 1)][min(max(x, 0), len(picture[0]) - 1)]
            return sum(weight(dx, dy) * at(x + dx, y + dy) for dy in side for dx in side)

        soft, sharp = bell(3), bell(1)
        cut = lambda value: min(max(value, 0), 255)
        for y in range(len(picture)):
            for x in range(len(picture[0])):
                for drawn, weight in ((blurred, lambda dx, dy: soft[dy + 9][dx + 9]),
                                      (sharpened, lambda dx, dy: 3 * (dx == dy == 0) - 2 * sharp[dy + 9][dx + 9]),
                                      (shaken, lambda dx, dy: (dx == -dy) / 19)):
                    self.assertAlmostEqual(drawn[y][x], cut(summed(weight, x, y)), delta=0.51)
        self.assertEqual([[shade == 255 for shade in row] for row in weights], [[x + y == 18 for x in range(19)]
                                                                                for y in range(19)])

    def test_tells_of_both_routes_and_of_where_they_cross(self):
        output, text = self.page("convolve", PICTURE, PAGE)
        rows = re.findall(r"^(.{16}) +([\d.]+) +([\d.]+) +(\S+)  (direct|transform) +(.+)$",
                          output, re.M)
        courses = {"square": [row for row in rows if " x " in row[0]],
                   "line": [row for row in rows if row[0].strip().isdigit()]}
        self.assertEqual([len(courses["line"]), len(courses["square"]), len(rows)], [20, 14, 36])
        for _, _, _, difference, automatic, kernel in rows:
            # An output is wrong by some roundings of the norms' product, which is some times the largest value.
            self.assertLess(float(difference), 1e-12)
            self.assertRegex(kernel, {"direct": r"^orv_conv_mc3_dddirect_\w+$", "transform": r"; \d+ threads?; "}[automatic])
        # Times are rounded in the output, so sizes at which both are all but equal may go either way.
        sentences = re.findall(r"<p>(?:The lines cross between (\S+|\d+ &times; \d+) weights and (\S+|\d+ &times; \d+): "
                               r"|The transform is faster at all|Direct sums are faster at the largest)", text)
        self.assertEqual(len(sentences), 2)
        for course, (before, since) in zip((courses["line"], courses["square"]), sentences):
            sizes = [row[0].strip().replace(" x ", " &times; ") for row in course]
            wins = [float(transform) <= float(direct) for _, direct, transform, *_ in course]
            if since:
                self.assertEqual(sizes.index(since), sizes.index(before) + 1)
                self.assertTrue(all(wins[sizes.index(since):]))
        for course in courses.values():
            direct = [row[4] for row in course].count("direct")
            if 0 < direct < len(course) and all(row[4] == "transform" for row in course[direct:]):
                change = course[direct][0].strip().replace(" x ", " &times; ")
                self.assertTrue(f"took it from {change} on" in text, change)
        self.assertEqual((text.count("<polyline"), text.count("<circle"), len(list(pictures(text)))),
                         (4 + sum(since != "" for _, since in sentences), 1 + 3 * (20 + 14), 7))

    def test_refuses_bad_files(self):
        for arguments, why in ((("/nowhere.pgm",), "/nowhere.pgm: No such file"),
                               ((SUNSPOTS,), "no PGM file"),
                               ((PICTURE, "/nowhere/page.html"), "/nowhere/page.html: No such file")):
            done = run("convolve", *arguments)
            self.assertEqual(done.returncode, 1)
            self.assertIn(why, done.stderr)


if __name__ == "__main__":
    main()
