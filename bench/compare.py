"""Runs the tool and the programs it is compared with, in turn, and prints one table of the medians."""

import argparse
import collections
import functools
import json
import os
import pathlib
import re
import shutil
import statistics
import struct
import subprocess
import sys
import time

import layouts

ROOT = pathlib.Path(sys.argv[1])
BUILD = ROOT / "build" / "bench"
PROGRAMS = BUILD / "bench"
LIBRARIES = BUILD / "libraries"
TOOL = BUILD / "installed" / "bin" / "mrziphoto"
PAGE = ROOT / "docs" / "performance.md"
DEVNULL = subprocess.DEVNULL

# What is compared, and how often. The second set shows that everything here works.
Sizes = collections.namedtuple("Sizes", "albums coded checked slots originals runs starts")
WHOLE = Sizes(200_000, 1_000_000, 20_000, 100_000, 200, 5, 200)
QUICK = Sizes(2_000, 5_000, 50, 100, 2, 2, 10)

# One program's run, or the medians of many: seconds of the processor (user and system), seconds by
# the clock, peak memory in bytes.
Figures = collections.namedtuple("Figures", "cpu wall memory")

# What a row came to, and the programs it came from, by name.
Answer = collections.namedtuple("Answer", "value programs")


def run(command, output="/dev/null"):
    words = [str(word) for word in (PROGRAMS / "bench_measure", output, *command)]
    said = subprocess.run(words, check=True, stdin=DEVNULL, stdout=subprocess.PIPE, text=True).stdout
    cpu, wall, kilobytes, status = said.split()
    if status != "0":
        sys.exit(f"failed with status {status}: {' '.join(words[2:])}")
    return Figures(float(cpu), float(wall), int(kilobytes) * 1024)


def written(path, write):
    """A file or folder that is written once and kept for the next run."""
    complete = path.parent / f"{path.name}.complete"
    if not complete.exists():
        say(f"writing {path.relative_to(BUILD)}")
        if path.is_dir():
            shutil.rmtree(path)
        write(path)
        complete.touch()
    return path


def say(text):
    print(f"bench/compare: {text}", file=sys.stderr, flush=True)


class Bench:
    """The inputs and the measurements, each made when a row first asks for it."""

    def __init__(self, sizes):
        self.sizes = sizes

    def medians(self, commands, runs):
        """Medians of all commands, run in turn so that a slow minute hits each of them."""
        say("measuring " + ", ".join(commands))
        for command in commands.values():
            run(command)
        figures = {name: [] for name in commands}
        for _ in range(runs):
            for name, command in commands.items():
                figures[name].append(run(command))
        return {name: Figures(*map(statistics.median, zip(*each))) for name, each in figures.items()}

    def library(self, version, photos, *options, without=None):
        def write(path):
            run([TOOL, "sample", path, "--library-version", version, "--photos", photos, *options])
            if without:
                (path / without).unlink()
        kind = "".join(options) + (f"-without-{without}" if without else "")
        return written(LIBRARIES / f"v{version}-{photos}{kind}", write)

    @functools.cache
    def album_library(self, layout):
        original = self.library(200, self.sizes.albums, "--no-images")
        if layout is None:
            return original

        def write(path):
            path.mkdir()
            for entry in original.iterdir():
                if entry.name != "AlbumData.xml":
                    (path / entry.name).symlink_to(entry)
            images = layouts.write(original / "AlbumData.xml", path / "AlbumData.xml", layout)
            if images != self.sizes.albums:
                sys.exit(f"{layout}: {images} of {self.sizes.albums} images were written anew")
        number = list(layouts.LAYOUTS).index(layout)
        return written(LIBRARIES / f"{original.name}-layout-{number}", write)

    @functools.cache
    def album_data(self, layout):
        path = self.album_library(layout)
        file = path / "AlbumData.xml"
        commands = {"info": [TOOL, "info", path, "--quiet"],
                    "pugixml": [PROGRAMS / "baseline_pugixml", file]}
        if layout is None:
            commands["libplist"] = [PROGRAMS / "baseline_plist", file]
        return self.medians(commands, self.sizes.runs), file.stat().st_size

    @functools.cache
    def plistlib(self):
        path = self.album_library(None)
        script = ROOT / "bench" / "baselines" / "python_plist.py"
        return self.medians({"info": [TOOL, "info", path, "--quiet"],
                             "plistlib": [sys.executable, script, path / "AlbumData.xml"]},
                            min(self.sizes.runs, 3))

    def coded_library(self):
        return self.library(60, self.sizes.coded, "--no-images", without="AlbumData.xml")

    @functools.cache
    def coded(self):
        path = self.coded_library()
        file = path / "Library6.iPhoto"
        return self.medians({"info": [TOOL, "info", path, "--quiet"],
                             "one window": [PROGRAMS / "baseline_read_window", file]},
                            self.sizes.runs), file.stat().st_size

    @functools.cache
    def coded_beside_album_data(self):
        photos = self.sizes.albums
        both = self.library(60, photos, "--no-images")
        alone = self.library(60, photos, "--no-images", without="AlbumData.xml")
        return self.medians({"both": [TOOL, "info", both, "--quiet"],
                             "coded alone": [TOOL, "info", alone, "--quiet"]}, self.sizes.runs)

    @functools.cache
    def listing(self):
        path = self.coded_library()
        output = LIBRARIES / "listing.jsonl"
        command = [TOOL, "photos", path, "--format", "jsonl", "--quiet"]
        run(command, output)
        with open(output, "rb") as file:
            lines = sum(1 for _ in file)
        figures = self.medians({"photos": command, "jq": ["jq", "-c", ".", output],
                                "info": [TOOL, "info", path, "--quiet"]}, min(self.sizes.runs, 3))
        output.unlink()
        return figures, lines

    @functools.cache
    def look_ups(self):
        say("measuring look-ups")
        said = subprocess.run([PROGRAMS / "bench_look_ups", self.coded_library(),
                               str(self.sizes.runs)], check=True, stdin=DEVNULL,
                              capture_output=True, text=True).stdout
        return {name: (float(own), float(plain))
                for name, own, plain in (line.split() for line in said.splitlines())}

    @functools.cache
    def checking(self):
        path = self.library(60, self.sizes.checked)
        listing = LIBRARIES / "files.txt"
        photos = subprocess.run([TOOL, "photos", path, "--format", "jsonl", "--quiet", "--fields",
                                 "imagePath,originalImagePath,thumbnailPath"],
                                check=True, capture_output=True, text=True).stdout.splitlines()
        files = dict.fromkeys(file for line in photos for file in json.loads(line).values() if file)
        listing.write_text("".join(f"{file}\n" for file in files))
        return self.medians({"check": [TOOL, "check", path, "--quiet"],
                             "headers": [PROGRAMS / "baseline_read_headers", listing]},
                            self.sizes.runs)

    @functools.cache
    def small_copies(self):
        def write(folder):
            folder.mkdir()
            grain, bytes_ = folder / "grain.v", folder / "bytes.v"
            run(["vips", "gaussnoise", grain, 4000, 3000, "--mean", 120, "--sigma", 60])
            run(["vips", "gaussblur", grain, folder / "grey.v", 2])
            run(["vips", "bandjoin", " ".join([str(folder / "grey.v")] * 3), folder / "rgb.v"])
            run(["vips", "copy", folder / "rgb.v", folder / "srgb.v", "--interpretation", "srgb"])
            run(["vips", "cast", folder / "srgb.v", bytes_, "uchar"])
            run(["vips", "jpegsave", bytes_, folder / "0.jpg", "--Q", 90])
            for file in folder.glob("*.v"):
                file.unlink()
            for i in range(1, self.sizes.originals):
                shutil.copy(folder / "0.jpg", folder / f"{i}.jpg")
        files = sorted(written(LIBRARIES / f"originals-{self.sizes.originals}", write).glob("*.jpg"))
        copies = LIBRARIES / "copies"
        copies.mkdir(exist_ok=True)
        figures = self.medians({"mrziphoto": [PROGRAMS / "bench_small_copies", copies, *files],
                                "vipsthumbnail": ["vipsthumbnail", "--size", "240x240", "--no-rotate",
                                                  "-o", f"{copies}/%s.png", *files]},
                               min(self.sizes.runs, 3))
        shutil.rmtree(copies)
        return figures

    @functools.cache
    def segment_cache(self):
        def write(folder):
            run([TOOL, "sample", folder, "--library-version", 60, "--photos", 100, "--no-images"])
            slot = os.urandom(16384)
            with open(folder / "Thumb64Segment.data", "wb") as out:
                header = b"iPhotoSegmentCache".ljust(132, b"\0")
                out.write((header + struct.pack("<II", 16384, self.sizes.slots)).ljust(4096, b"\0"))
                for _ in range(self.sizes.slots):
                    out.write(slot)
                for key in range(1, self.sizes.slots + 1):
                    out.write(struct.pack("<IIII", 1, 0, key, 0))
        path = written(LIBRARIES / f"slots-{self.sizes.slots}", write)
        return self.medians({"mrziphoto": [PROGRAMS / "bench_cache_slots", path],
                             "copying": [PROGRAMS / "baseline_copy_slots",
                                         path / "Thumb64Segment.data"]}, min(self.sizes.runs, 3))

    @functools.cache
    def start(self):
        return self.medians({"mrziphoto": [TOOL, "--version"], "jq": ["jq", "--version"]},
                            self.sizes.starts)


def ratio(figures, other):
    """The first program's processor time to that of another."""
    own = next(iter(figures))
    return Answer(figures[own].cpu / figures[other].cpu, {each: figures[each] for each in (own, other)})


def memory(figures, size):
    own = next(iter(figures))
    return Answer(figures[own].memory / size, {own: figures[own]})


def album_ratio(bench, layout, other="pugixml"):
    return ratio(bench.album_data(layout)[0], other)


def photos_a_second(bench):
    figures, lines = bench.listing()
    return Answer(lines / figures["photos"].cpu, {"photos": figures["photos"]})


def listing_against_jq(bench):
    figures, _ = bench.listing()
    programs = {each: figures[each] for each in ("photos", "jq")}
    return Answer(figures["jq"].cpu / figures["photos"].cpu, programs)


def listing_memory(bench):
    figures, _ = bench.listing()
    programs = {each: figures[each] for each in ("photos", "info")}
    return Answer((figures["photos"].memory - figures["info"].memory) / 1e6, programs)


def look_up(bench, question):
    own, plain = bench.look_ups()[question]
    return Answer(own / plain, {f"{own:.1f} ns a key": None, f"plain {plain:.1f} ns": None})


class Row:
    """One line of the table: what is compared, the aim, how its value is written, and the
    measurement. Texts name sizes as {albums}."""

    def __init__(self, what, aim, answer, unit="", at_least=False):
        self.what, self.aim, self.answer = what, aim, answer
        self.unit, self.at_least = unit, at_least

    def number(self, value):
        return (f"{value:,.0f}" if value >= 100 else f"{value:.3g}") + self.unit

    def line(self, bench):
        value, programs = self.answer(bench)
        is_met = value >= self.aim if self.at_least else value <= self.aim
        sizes = {name: f"{size:,}" for name, size in bench.sizes._asdict().items()}
        return [self.what.format(**sizes),
                ("at least " if self.at_least else "") + self.number(self.aim),
                self.number(value) if is_met else f"{self.number(value)} (missed)",
                *(list(map(described, programs.items())) + [""])[:2]]


def described(program):
    name, figures = program
    if figures is None:
        return name
    seconds = (lambda each: f"{each:.2f} s") if figures.wall >= 0.1 else \
        (lambda each: f"{each * 1000:.2f} ms")
    return f"{name}: {seconds(figures.cpu)}, {seconds(figures.wall)}, {figures.memory / 1e6:.0f} MB"


# All that is measured, printed and written into the page.
ROWS = [
    Row("`info`, {albums} photos of album data, to pugixml's parse in place", 0.35,
        lambda bench: album_ratio(bench, None)),
    *(Row(f"the same, {layout}", 0.35, lambda bench, layout=layout: album_ratio(bench, layout))
      for layout in layouts.LAYOUTS),
    Row("the same as the writer has it, peak memory to the file", 0.7,
        lambda bench: memory(*bench.album_data(None))),
    *(Row(f"the same, {layout}", 0.7,
          lambda bench, layout=layout: memory(*bench.album_data(layout)))
      for layout in layouts.LAYOUTS),
    Row("`info` of that album data, to libplist", 1 / 5,
        lambda bench: album_ratio(bench, None, "libplist")),
    Row("the same to Python's plistlib", 1 / 45, lambda bench: ratio(bench.plistlib(), "plistlib")),
    Row("`info`, {coded} coded photos, to reading the file through one window of 256 KiB", 10,
        lambda bench: ratio(bench.coded()[0], "one window")),
    Row("the same, peak memory to the file", 0.8, lambda bench: memory(*bench.coded())),
    Row("`info`, {albums} coded photos with \"AlbumData.xml\" beside, to the same without", 1.6,
        lambda bench: ratio(bench.coded_beside_album_data(), "coded alone")),
    Row("`photos --format jsonl` of {coded} coded photos, opening included, photos a second of the "
        "processor", 1_000_000, photos_a_second, at_least=True),
    Row("`jq -c .` of its output, to the same", 12, listing_against_jq, at_least=True),
    Row("its peak memory above that of `info`", 64, listing_memory, " MB"),
    Row("`photosForKeys`, {coded} photos in random order, to counted records of a plain index", 2,
        lambda bench: look_up(bench, "photosForKeys")),
    Row("`rollRecRefForKey`, the rolls of these photos, likewise", 2,
        lambda bench: look_up(bench, "rollRecRefForKey")),
    Row("`check` of {checked} photos, to opening their files and reading each header", 1.5,
        lambda bench: ratio(bench.checking(), "headers")),
    Row("small copies of {originals} originals of 12 megapixels, to vipsthumbnail", 1.15,
        lambda bench: ratio(bench.small_copies(), "vipsthumbnail")),
    Row("{slots} thumbnails of a segment cache, to reading and copying them", 2,
        lambda bench: ratio(bench.segment_cache(), "copying")),
    Row("`mrziphoto --version`, to `jq --version`", 0.8, lambda bench: ratio(bench.start(), "jq")),
]
HEADER = ["what", "aim", "reached", "the tool: processor, clock, peak memory", "the other"]


def table_line(cells):
    return "| " + " | ".join(cells) + " |"


def machine():
    processor = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
    size = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    return (f"{processor.group(1) if processor else 'unknown processor'}, {os.cpu_count()} cores, "
            f"{size:.0f} GiB of memory, Linux {os.uname().release.split('-')[0]}")


def main():
    parser = argparse.ArgumentParser(prog="bench/compare")
    parser.add_argument("root")
    parser.add_argument("--quick", action="store_true",
                        help="small inputs and few runs: shows that all of it works, and no more")
    parser.add_argument("--only", default="", metavar="TEXT", help="only the rows that speak of TEXT")
    parser.add_argument("--write", action="store_true", help="put the table into docs/performance.md")
    options = parser.parse_args()
    if options.write and (options.quick or options.only):
        parser.error("--write takes a whole run")
    LIBRARIES.mkdir(parents=True, exist_ok=True)
    shutil.rmtree(BUILD / "installed", ignore_errors=True)
    subprocess.run(["cmake", "--install", BUILD, "--prefix", BUILD / "installed"], check=True,
                   stdout=DEVNULL)
    # From the disk, as after a start of the machine: what was just written lies in small pieces in the
    # system's memory, and is slower to map.
    with open(TOOL, "rb") as file:
        os.fsync(file.fileno())
        os.posix_fadvise(file.fileno(), 0, 0, os.POSIX_FADV_DONTNEED)

    bench = Bench(QUICK if options.quick else WHOLE)
    lines = [f"Measured on {time.strftime('%Y-%m-%d')}: {machine()}. Medians of {bench.sizes.runs} "
             f"runs of whole processes ({min(bench.sizes.runs, 3)} of those that take long, "
             f"{bench.sizes.starts} of `--version`), in turn, after one to warm up. Where nothing else is said, processor "
             "time (user and system) is compared with processor time.", "",
             table_line(HEADER), "|---" * len(HEADER) + "|"]
    print("\n".join(lines), flush=True)
    for row in ROWS:
        if options.only in row.what:
            lines.append(table_line(row.line(bench)))
            print(lines[-1], flush=True)
    if options.write:
        begin, end = "<!-- figures -->\n", "<!-- end of figures -->"
        page = PAGE.read_text()
        before, after = page.split(begin)[0], page.split(end)[1]
        PAGE.write_text(before + begin + "\n" + "\n".join(lines) + "\n\n" + end + after)


main()
