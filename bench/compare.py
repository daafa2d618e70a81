"""Runs the tool and the programs it is compared with, in turn, and prints tables of the medians."""

import argparse
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

ROOT = pathlib.Path(sys.argv[1])
BUILD = ROOT / "build" / "bench"
TOOL = BUILD / "tool" / "mrziphoto"
PAGE = ROOT / "docs" / "performance.md"
DEVNULL = subprocess.DEVNULL


def run(command, output=DEVNULL):
    """Wall seconds and peak memory in bytes of one whole process."""
    begun = time.perf_counter()
    process = subprocess.Popen([str(part) for part in command], stdin=DEVNULL, stdout=output,
                               stderr=DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.perf_counter() - begun
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"failed with status {process.returncode}: {' '.join(map(str, command))}")
    return wall, usage.ru_maxrss * 1024


def measure(commands, runs):
    """Medians of all commands, run in turn so that a slow minute hits each of them."""
    for command in commands.values():
        run(command)
    figures = {name: [] for name in commands}
    for _ in range(runs):
        for name, command in commands.items():
            figures[name].append(run(command))
    return {name: tuple(statistics.median(column) for column in zip(*rows))
            for name, rows in figures.items()}


def library(folder, version, photos, keep=lambda name: True):
    """A made-up library without pictures, written once."""
    path = folder / f"v{version}-{photos}"
    complete = folder / f"{path.name}.complete"
    if not complete.exists():
        shutil.rmtree(path, ignore_errors=True)
        run([TOOL, "sample", path, "--library-version", version, "--photos", photos, "--no-images"])
        for entry in path.iterdir():
            if not keep(entry.name):
                entry.unlink()
        complete.touch()
    return path


def table(header, rows):
    lines = ["| " + " | ".join(header) + " |", "|---" * len(header) + "|"]
    lines += ["| " + " | ".join(row) + " |" for row in rows]
    return "\n".join(lines)


def verdict(value, limit):
    return f"{value:.2f}" + ("" if value <= limit else f" (aim: {limit:g}, missed)")


def album_data(folder, photos, runs):
    path = library(folder, 200, photos)
    file = path / "AlbumData.xml"
    size = file.stat().st_size
    names = {"mrziphoto info": [TOOL, "info", path, "--quiet"],
             "pugixml, in place": [BUILD / "bench" / "baseline_pugixml", file],
             "libplist": [BUILD / "bench" / "baseline_plist", file],
             "Python plistlib": [sys.executable, ROOT / "bench" / "baselines" / "python_plist.py", file]}
    figures = measure(names, runs)
    own, own_memory = figures["mrziphoto info"]
    limits = {"pugixml, in place": 1, "libplist": 1 / 5, "Python plistlib": 1 / 30}
    rows = []
    for name, (wall, memory) in figures.items():
        ratio = "" if name not in limits else verdict(own / wall, limits[name])
        rows.append([name, f"{wall:.3f} s", f"{memory / 1e6:.0f} MB", f"{memory / size:.2f}",
                     f"{size / wall / 1e6:.0f} MB/s", ratio])
    title = f"### Opening by album data: {photos:,} photos, {size / 1e6:.0f} MB of \"AlbumData.xml\"\n\n"
    aims = ("\n\nAims: at most the time of pugixml, a fifth of libplist's, a thirtieth of plistlib's; "
            f"peak memory at most 2.2 times the file: {verdict(own_memory / size, 2.2)}.")
    return title + table(["program", "wall time", "peak memory", "times the file", "speed",
                          "tool's time to its time"], rows) + aims


def coded_catalogue(folder, photos, runs):
    rows = []
    for count in sorted({10_000, 100_000, photos}):
        path = library(folder, 60, count, keep=lambda name: name != "AlbumData.xml")
        file = path / "Library6.iPhoto"
        size = file.stat().st_size
        figures = measure({"tool": [TOOL, "info", path, "--quiet"],
                           "pass": [BUILD / "bench" / "baseline_catalogue_pass", file]}, runs)
        (own, own_memory), (bare, _) = figures["tool"], figures["pass"]
        rows.append([f"{count:,}", f"{size / 1e6:.0f} MB", f"{own:.3f} s", f"{bare:.3f} s",
                     verdict(own / bare, 6), f"{own_memory / 1e6:.0f} MB",
                     verdict(own_memory / size, 3)])
    return ("### Opening a coded catalogue, version 60\n\n"
            + table(["photos", "catalogue", "mrziphoto info", "bare pass over headers",
                     "times the pass (aim: 6)", "peak memory", "times the file (aim: 3)"], rows))


def listing(folder, photos, runs):
    path = library(folder, 60, photos, keep=lambda name: name != "AlbumData.xml")
    output = folder / "listing.jsonl"
    command = [TOOL, "photos", path, "--format", "jsonl", "--quiet"]
    with open(output, "wb") as file:
        run(command, file)
    with open(output, "rb") as file:
        lines = sum(1 for _ in file)
    figures = measure({"tool": command, "jq": ["jq", "-c", ".", output]}, min(runs, 3))
    own, reader = figures["tool"][0], figures["jq"][0]
    rows = [["mrziphoto photos --format jsonl", f"{own:.2f} s", f"{lines / own:,.0f}", ""],
            ["jq -c . over that output", f"{reader:.2f} s", f"{lines / reader:,.0f}",
             f"{reader / own:.1f} times the tool's time (aim: at least 3)"]]
    output.unlink()
    return (f"### Opening and listing {lines:,} photos as JSON Lines\n\n"
            + table(["program", "wall time", "photos a second (aim: 300,000)", "ratio"], rows))


def compared(title, figures, ratio, limit):
    """A table of two programs of which the first may take `limit` times the time of the second."""
    (own, _), (other, _) = figures.values()
    rows = [[name, f"{wall:.2f} s", f"{memory / 1e6:.0f} MB", ""]
            for name, (wall, memory) in figures.items()]
    rows[0][-1] = verdict(own / other, limit)
    header = ["program", "wall time", "peak memory", f"{ratio} (aim: at most {limit:g})"]
    return f"### {title}\n\n" + table(header, rows)


def small_copies(folder, runs):
    count = 200
    originals = folder / "originals"
    complete = folder / "originals.complete"
    if not complete.exists():
        shutil.rmtree(originals, ignore_errors=True)
        originals.mkdir()
        grain = originals / "grain.v"
        run(["vips", "gaussnoise", grain, 4000, 3000, "--mean", 120, "--sigma", 60])
        run(["vips", "gaussblur", grain, originals / "grey.v", 2])
        run(["vips", "bandjoin", " ".join([str(originals / "grey.v")] * 3), originals / "rgb.v"])
        run(["vips", "copy", originals / "rgb.v", originals / "srgb.v", "--interpretation", "srgb"])
        run(["vips", "cast", originals / "srgb.v", originals / "bytes.v", "uchar"])
        run(["vips", "jpegsave", originals / "bytes.v", originals / "0.jpg", "--Q", 90])
        for file in originals.glob("*.v"):
            file.unlink()
        for i in range(1, count):
            shutil.copy(originals / "0.jpg", originals / f"{i}.jpg")
        complete.touch()
    files = sorted(originals.glob("*.jpg"))
    size = files[0].stat().st_size
    copies = folder / "copies"
    copies.mkdir(exist_ok=True)
    figures = measure({"mrziphoto": [BUILD / "bench" / "bench_small_copies", copies, *files],
                       "vipsthumbnail": ["vipsthumbnail", "--size", "240x240", "--no-rotate",
                                         "-o", f"{copies}/%s.png", *files]}, min(runs, 3))
    shutil.rmtree(copies)
    return compared(f"Small copies of {count} JPEG originals of 12 megapixels, {size / 1e6:.1f} MB each",
                    figures, "times vipsthumbnail's time", 1.15)


def segment_cache(folder, runs):
    count = 100_000
    path = library(folder, 60, 1000)
    file = path / "Thumb64Segment.data"
    if not file.exists() or file.stat().st_size < count * 16384:
        with open(file, "wb") as out:
            header = b"iPhotoSegmentCache".ljust(132, b"\0") + struct.pack("<II", 16384, count)
            out.write(header.ljust(4096, b"\0"))
            slot = os.urandom(16384)
            for _ in range(count):
                out.write(slot)
            for key in range(1, count + 1):
                out.write(struct.pack("<IIII", 1, 0, key, 0))
    figures = measure({"mrziphoto": [BUILD / "bench" / "bench_cache_slots", path],
                       "reading and copying": [BUILD / "bench" / "baseline_copy_slots", file]},
                      min(runs, 3))
    return compared(f"Decoding {count:,} thumbnails of a segment cache, {file.stat().st_size / 1e6:.0f} MB",
                    figures, "times the copying", 2)


def checking(folder, runs):
    count = 20_000
    path = folder / f"pictures-{count}"
    complete = folder / f"{path.name}.complete"
    if not complete.exists():
        shutil.rmtree(path, ignore_errors=True)
        run([TOOL, "sample", path, "--library-version", 60, "--photos", count])
        complete.touch()
    listing = folder / "files.txt"
    photos = subprocess.run([TOOL, "photos", path, "--format", "jsonl", "--quiet", "--fields",
                             "imagePath,originalImagePath,thumbnailPath"],
                            check=True, capture_output=True, text=True).stdout.splitlines()
    files = dict.fromkeys(file for line in photos for file in json.loads(line).values() if file)
    listing.write_text("".join(f"{file}\n" for file in files))
    figures = measure({"mrziphoto check": [TOOL, "check", path, "--quiet"],
                       "reading the headers": [BUILD / "bench" / "baseline_read_headers", listing]},
                      runs)
    return compared(f"Checking {count:,} photos, {len(files):,} files", figures,
                    "times the reading", 1.5)


def growth(folder):
    report = folder / "growth.json"
    environment = dict(os.environ, MRZIPHOTO_BENCH_FOLDER=str(folder))
    subprocess.run([BUILD / "bench" / "mrziphoto_bench", f"--benchmark_out={report}",
                    "--benchmark_out_format=json", "--benchmark_repetitions=3",
                    "--benchmark_enable_random_interleaving=true"],
                   check=True, stdin=DEVNULL, stdout=DEVNULL, stderr=DEVNULL, env=environment)
    costs = {}
    for result in json.loads(report.read_text())["benchmarks"]:
        if result.get("aggregate_name") == "median" and result["keys"]:
            question, photos = re.match(r"(\w+)/(\d+)", result["run_name"]).groups()
            nanoseconds = result["cpu_time"] * 1e6 / result["keys"]
            costs.setdefault(question, {})[int(photos)] = nanoseconds
    rows = []
    for question, by_photos in costs.items():
        sizes = sorted(by_photos)
        rows.append([f"`{question}`"] + [f"{by_photos[size]:.1f} ns" for size in sizes]
                    + [verdict(by_photos[sizes[-1]] / by_photos[sizes[0]], 1.5)])
    return ("### Cost of a question per key as the library grows\n\n"
            + table(["question", "10,000 photos", "100,000", "1,000,000",
                     "growth (aim: at most 1.5)"], rows))


def machine():
    processor = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    return (f"{processor.group(1) if processor else 'unknown processor'}, {os.cpu_count()} cores, "
            f"{memory:.0f} GiB of memory, Linux {os.uname().release.split('-')[0]}")


def main():
    parser = argparse.ArgumentParser(prog="bench/compare")
    parser.add_argument("root")
    parser.add_argument("--photos", type=int, default=200_000, help="photos of the album data")
    parser.add_argument("--coded-photos", type=int, default=1_000_000)
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--write", action="store_true", help="put the tables into docs/performance.md")
    options = parser.parse_args()
    folder = BUILD / "libraries"
    folder.mkdir(parents=True, exist_ok=True)

    parts = [f"Measured on {time.strftime('%Y-%m-%d')}: {machine()}. Medians of {options.runs} runs of "
             "whole processes (3 of those that take long), in turn, after one to warm up."]
    print(parts[0], flush=True)
    for part in (lambda: album_data(folder, options.photos, options.runs),
                 lambda: coded_catalogue(folder, options.coded_photos, options.runs),
                 lambda: listing(folder, options.coded_photos, options.runs),
                 lambda: small_copies(folder, options.runs),
                 lambda: segment_cache(folder, options.runs),
                 lambda: checking(folder, options.runs),
                 lambda: growth(folder)):
        parts.append(part())
        print("\n" + parts[-1], flush=True)
    text = "\n\n".join(parts)
    if options.write:
        begin, end = "<!-- figures -->\n", "<!-- end of figures -->"
        page = PAGE.read_text()
        before, after = page.split(begin)[0], page.split(end)[1]
        PAGE.write_text(before + begin + "\n" + text + "\n\n" + end + after)


main()
