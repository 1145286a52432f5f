"""Watches a running program once a second for scripts/soak.sh, and judges what it saw.

    soak_sampler.py watch PID FRAMEBUFFER LOG SAMPLES
        writes a line a second to SAMPLES until the process ends
    soak_sampler.py judge SAMPLES LOG
        prints the figures, and fails on growth or a standstill

The frame rate is what a person would see: a few rows of the virtual screen (the file that Xvfb
keeps its pixels in) are looked at every 4 ms, and each change is a new picture. The program itself
is not touched.
"""

import mmap
import os
import re
import statistics
import struct
import sys
import time
import zlib

COLUMNS = ["second", "rss_mib", "pss_mib", "handles", "threads", "processor", "pictures", "view",
           "voice", "following"]
LOOK_EVERY = 0.004  # seconds; a picture comes every 33 ms

# Growth is the difference of the medians of the first and the last quarter after the warm-up.
WARM_UP = 180  # seconds: every view was shown at least once, and every cache is filled
# Qt's threads for scaling pictures, with a handle each, end after half a minute without work.
MOST_GROWTH = {"pss_mib": 12.0, "handles": 4.0, "threads": 4.0}
MOST_STANDSTILL = 12  # seconds; longer than every fault of the sensor
STILL_VIEWS = {"skeletal", "unknown"}
BAD_TEXTS = ["Destroyed while thread", "QThread:", "ASSERT", "Sanitizer", "terminate called"]


class Screen:
    """Rows across the middle of the virtual screen; a change there is a new picture."""

    def __init__(self, path):
        with open(path, "rb") as file:
            header = struct.unpack(">25I", file.read(100))
            self.pixels = mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ)
        start, width, height, bytes_per_line, colors = (header[0], header[4], header[5],
                                                        header[12], header[19])
        start += colors * 12
        # Left of the side panels, on lines that lie inside the pictures of all views.
        self.rows = [slice(at + width // 10 * 4, at + width // 2 * 4)
                     for at in (start + height * part // 100 * bytes_per_line
                                for part in (40, 44, 48))]
        self.sums = self.look()

    def look(self):
        return [zlib.crc32(self.pixels[row]) for row in self.rows]

    def pictures_until(self, deadline):
        changes = [0] * len(self.rows)
        while time.monotonic() < deadline:
            sums = self.look()
            for i, (before, now) in enumerate(zip(self.sums, sums)):
                changes[i] += before != now
            self.sums = sums
            time.sleep(LOOK_EVERY)
        return max(changes)


class Log:
    """The newest texts of the program's log."""

    def __init__(self, path):
        self.file = open(path, encoding="utf-8", errors="replace")
        self.view = "unknown"
        self.voice = "none"
        self.following = "none"

    def read(self):
        for line in self.file:
            if match := re.search(r'Qt follow display: current_view= "(\w+)"', line):
                self.view = match[1]
                # "... | status | more": the status is the text's second field.
                if status := re.search(r'status= "([^"]*)', line):
                    fields = [f.strip() for f in status[1].split(" | ")]
                    named = [f for f in fields if not f.startswith(("VISIBLE", "current view"))]
                    self.following = named[0] if named else "none"
            elif match := re.search(r"Qt Auralis direction: (\w+) ([\w/]+)", line):
                self.voice = f"{match[1]} {match[2]}"


def memory_mib(pid):
    values = {}
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii", errors="replace") as file:
        for line in file:
            words = line.split()
            if words[0] in ("Rss:", "Pss:"):
                values[words[0]] = int(words[1]) / 1024
    return values["Rss:"], values["Pss:"]


def processor_seconds(pid):
    with open(f"/proc/{pid}/stat", encoding="ascii", errors="replace") as file:
        fields = file.read().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def watch(pid, framebuffer, log_path, samples_path):
    screen = Screen(framebuffer)
    log = Log(log_path)
    begin = time.monotonic()
    used = processor_seconds(pid)
    second = 0
    with open(samples_path, "w", encoding="utf-8", buffering=1) as samples:
        print(*COLUMNS, sep="\t", file=samples)
        while True:
            second += 1
            pictures = screen.pictures_until(begin + second)
            log.read()
            try:
                rss, pss = memory_mib(pid)
                handles = len(os.listdir(f"/proc/{pid}/fd"))
                threads = len(os.listdir(f"/proc/{pid}/task"))
                now_used = processor_seconds(pid)
            except (FileNotFoundError, ProcessLookupError, KeyError, PermissionError):
                return 0
            print(second, f"{rss:.1f}", f"{pss:.1f}", handles, threads, f"{now_used - used:.2f}",
                  pictures, log.view, log.voice, log.following, sep="\t", file=samples)
            used = now_used


def read_samples(path):
    with open(path, encoding="utf-8") as file:
        header = file.readline().rstrip("\n").split("\t")
        return [dict(zip(header, line.rstrip("\n").split("\t"))) for line in file]


def growth(samples, column):
    settled = samples[min(WARM_UP, len(samples) * 6 // 10):]
    quarter = max(1, len(settled) // 4)
    values = [float(sample[column]) for sample in settled]
    return statistics.median(values[:quarter]), statistics.median(values[-quarter:])


def longest_standstill(samples):
    longest = current = 0
    for sample in samples:
        still = int(sample["pictures"]) == 0 and sample["view"] not in STILL_VIEWS
        current = current + 1 if still else 0
        longest = max(longest, current)
    return longest


def print_rates(samples):
    views = sorted({s["view"] for s in samples} - STILL_VIEWS)
    for view in views:
        rates = sorted(int(s["pictures"]) for s in samples if s["view"] == view)
        print(f"pictures a second, {view}: median {statistics.median(rates):.0f}, "
              f"fifth percentile {rates[len(rates) // 20]}, over {len(rates)} s")
    for text in ("voice", "following"):
        seen = sorted({s[text] for s in samples})
        print(f"{text}: {'; '.join(seen)}")


def judge(samples_path, log_path):
    samples = read_samples(samples_path)
    failures = []
    if len(samples) < 30:
        print("too short to judge")
        return 1
    for column, most in MOST_GROWTH.items():
        first, last = growth(samples, column)
        highest = max(float(s[column]) for s in samples)
        print(f"{column}: {first:.1f} after the warm-up, {last:.1f} at the end, "
              f"{highest:.1f} at most")
        if last - first > most:
            failures.append(f"{column} grows by {last - first:.1f}")
    print_rates(samples)
    still = longest_standstill(samples)
    print(f"longest standstill of the picture: {still} s")
    if still > MOST_STANDSTILL:
        failures.append(f"the picture stood still for {still} s")
    if not any(int(s["pictures"]) > 0 for s in samples):
        failures.append("no picture was ever shown")
    with open(log_path, encoding="utf-8", errors="replace") as file:
        for line in file:
            failures.extend(f"log: {line.strip()}" for bad in BAD_TEXTS if bad in line)
    for failure in failures:
        print("FAILED:", failure)
    return 1 if failures else 0


def main(arguments):
    if len(arguments) == 5 and arguments[0] == "watch":
        return watch(int(arguments[1]), *arguments[2:])
    if len(arguments) == 3 and arguments[0] == "judge":
        return judge(*arguments[1:])
    print(__doc__, file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
