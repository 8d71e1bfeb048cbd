"""The page of --html in a real browser: what it says, that no script runs, and that it can be seen
where scripts are switched off.

Arguments: the program korv-mask, or an HTML file that it has written before; then anything.
The exit status is 77 where Chromium is not installed: the test has then been skipped."""
import os
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

SUBJECT = sys.argv[1]
SKIPPED = 77
TIMEOUT = 120
CHROMIUM = shutil.which("chromium")
# Switches that keep the browser from all but the page. With a process of its own, a frame may be
# painted only after the picture has been taken.
SWITCHES = ("--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
            "--disable-background-networking", "--disable-component-update", "--disable-sync",
            "--hide-scrollbars", "--disable-features=IsolateSandboxedIframes")

# The page in a frame where no script runs: Chromium needs scripts of its own to take a picture.
FRAME = """<!DOCTYPE html><meta charset="utf-8">
<style>:root { color-scheme: light dark } body { margin: 0 }
iframe { display: block; width: 100vw; height: 100vh; border: 0 }</style>
<iframe sandbox src="%s"></iframe>
"""

HOSTILE_NAME = "<script>document.title='run'</script>"
ROWS = (f"ID,CARD,NAME,\"{HOSTILE_NAME}\",CITY\n" +
        "7719,4556737586899855,Petrosilius,Zwackelmann,Entenhausen\n" +
        "7720,4111-2222,Xaverl,Zwackelmann,Gansbach\n" +
        "7721,,Xaverl,Zwackelmann,Gansbach\n")
RULES = ("ID = KEEP\nCARD = CCN, method=transpose, key=17\nNAME = AFF, method=reverse\n"
         "@4 = AFF, method=shuffle\nCITY = DROP\n")
CLEAR = re.findall(r"[^,\n]{4,}", ROWS.split("\n", 1)[1])

# The colours of bars in html_style.h: light, dark.
MASKED = ((0x2b, 0x6f, 0xb3), (0x5f, 0xa3, 0xe6))
FAILED = ((0xc2, 0x36, 0x2b), (0xee, 0x6a, 0x5f))
BACKGROUND = ((0xf6, 0xf7, 0xf9), (0x14, 0x18, 0x1f))


def without_filters(data, height, stride, pixel):
    """The rows of a PNG picture, from the data that its filters have left."""
    rows, above = [], bytes(stride)
    for y in range(height):
        start = y * (stride + 1)
        kind, row = data[start], bytearray(data[start + 1:start + 1 + stride])
        for x in range(stride):
            left = row[x - pixel] if x >= pixel else 0
            up = above[x]
            corner = above[x - pixel] if x >= pixel else 0
            if kind == 1:
                row[x] = (row[x] + left) & 0xFF
            elif kind == 2:
                row[x] = (row[x] + up) & 0xFF
            elif kind == 3:
                row[x] = (row[x] + (left + up) // 2) & 0xFF
            elif kind == 4:
                best = min((abs(up - corner), 0, left), (abs(left - corner), 1, up),
                           (abs(left + up - 2 * corner), 2, corner))
                row[x] = (row[x] + best[2]) & 0xFF
        rows.append(above := bytes(row))
    return rows


def colours(path):
    """How many pixels of each colour are in a PNG picture, and its width."""
    with open(path, "rb") as file:
        png = file.read()
    assert png.startswith(b"\x89PNG\r\n\x1a\n")
    at, data = 8, b""
    while at < len(png):
        length, kind = struct.unpack(">I4s", png[at:at + 8])
        content = png[at + 8:at + 8 + length]
        if kind == b"IHDR":
            width, height, depth, colour_type = struct.unpack(">IIBB", content[:10])
        elif kind == b"IDAT":
            data += content
        at += length + 12
    assert depth == 8 and colour_type in (2, 6), (depth, colour_type)
    pixel = 3 if colour_type == 2 else 4
    counts = {}
    for row in without_filters(zlib.decompress(data), height, width * pixel, pixel):
        for x in range(0, len(row), pixel):
            colour = tuple(row[x:x + 3])
            counts[colour] = counts.get(colour, 0) + 1
    return counts, width


class BrowserTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="korv-mask_")
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        cls.of_program = not SUBJECT.endswith(".html")
        cls.page = os.path.join(cls.folder, "page.html") if cls.of_program else SUBJECT
        if cls.of_program:
            cls.run_program()

    @classmethod
    def run_program(cls):
        for name, contents in (("in.csv", ROWS), ("rules.txt", RULES)):
            with open(os.path.join(cls.folder, name), "w", encoding="utf-8") as file:
                file.write(contents)
        result = subprocess.run(
            [SUBJECT, "-r", "rules.txt", "in.csv", "-o", "out.csv", "--report", "report.txt",
             "--html", "page.html"], cwd=cls.folder, capture_output=True, check=False,
            timeout=TIMEOUT)
        assert result.returncode == 1, result

    def browse(self, page, *switches):
        profile = tempfile.mkdtemp(dir=self.folder)
        result = subprocess.run(
            [CHROMIUM, *SWITCHES, "--user-data-dir=" + profile, *switches,
             "file://" + os.path.abspath(page)], capture_output=True, check=False,
            timeout=TIMEOUT)
        self.assertEqual(0, result.returncode, result.stderr[-2000:])
        return result.stdout.decode()

    def picture(self, width, height, dark):
        frame = os.path.join(self.folder, "frame.html")
        with open(frame, "w", encoding="utf-8") as file:
            file.write(FRAME % ("file://" + os.path.abspath(self.page)))
        path = os.path.join(self.folder, "picture.png")
        self.browse(frame, f"--window-size={width},{height}", f"--screenshot={path}",
                    f"--blink-settings=preferredColorScheme={0 if dark else 1}")
        return colours(path)

    def test_what_it_says(self):
        # A script of the page would change its title.
        dom = self.browse(self.page, "--dump-dom")
        self.assertIn('<html lang="en">', dom)
        self.assertRegex(dom, r"<title>Masking of [^<]+</title>")
        self.assertIn("<h1>", dom)
        self.assertIn("<caption>", dom)
        self.assertNotIn("<script", dom)
        if not self.of_program:
            return
        text = re.sub(r"<[^>]*>", "", dom.split("<body>")[1])
        for part in ("in.csv", "1 value failed", "CARD", "CCN", "rules.txt", "too few digits",
                     "9999999999999999", "left out", HOSTILE_NAME.replace("<", "&lt;")
                     .replace(">", "&gt;")):
            self.assertIn(part, text)
        for value in CLEAR:
            self.assertNotIn(value, dom)

    def test_it_can_be_seen_without_scripts_in_both_schemes_and_widths(self):
        for dark in (False, True):
            for width in (1000, 400):
                counts, seen = self.picture(width, 1600, dark)
                self.assertEqual(width, seen)
                self.assertGreater(counts.get(BACKGROUND[dark], 0), 10000)
                # A page of text has many shades; one that is blank, or an error, few or others.
                self.assertGreater(len(counts), 50)
                if self.of_program:
                    self.assertGreater(counts.get(MASKED[dark], 0), 500)
                    self.assertGreater(counts.get(FAILED[dark], 0), 500)


if __name__ == "__main__":
    if CHROMIUM is None:
        print("skipped: chromium is not installed")
        sys.exit(SKIPPED)
    unittest.main(argv=[sys.argv[0]], verbosity=2)
