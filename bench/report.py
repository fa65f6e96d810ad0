"""Runs the benchmarks of a build and prints each target beside what was measured.

Clocks are medians of repetitions that are interleaved at random, in processor time, so that the load of the
machine touches all of them alike; what can be is told as a ratio to a memory copy of the same size in the same
run.  Instructions do not vary from run to run.  Everything is written to bench.json in the build folder.
"""

import argparse
import collections
import glob
import json
import os
import re
import statistics
import subprocess
import tempfile

RUNS_COUNTED = 4  # as in bench/instructions.cpp
BIG_MESSAGE = 50_000_000
PIECE = 1_000_000

Row = collections.namedtuple("Row", "what target measured unit met")


def clocks(program, repetitions, seconds):
    """Median time of each benchmark, in nanoseconds."""
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        subprocess.run(
            [program, f"--benchmark_repetitions={repetitions}", f"--benchmark_min_time={seconds}",
             "--benchmark_enable_random_interleaving=true", "--benchmark_out_format=json",
             f"--benchmark_out={out.name}"],
            check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        runs = json.load(open(out.name))["benchmarks"]
    times = collections.defaultdict(list)
    octets = {}
    for run in runs:
        if run["run_type"] != "iteration":
            continue
        # Where several threads or a peer work, only the time on the wall means something.
        times[run["run_name"]].append(
            run["real_time" if "real_time" in run["run_name"] else "cpu_time"])
        octets[run["run_name"]] = run.get("octets")
    return {name: statistics.median(all_) for name, all_ in times.items()}, octets


def instructions(program):
    """Instructions of one run of each operation in memory."""
    counts = {}
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(
            ["valgrind", "--tool=callgrind", "--collect-atstart=no",
             f"--callgrind-out-file={folder}/out", program],
            check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for path in glob.glob(f"{folder}/out.*"):
            text = open(path).read()
            name = re.search(r"Client Request: (\S+)", text)
            total = re.search(r"^(?:totals|summary): (\d+)", text, re.M)
            if name and total:
                counts[name[1]] = int(total[1]) // RUNS_COUNTED
    return counts


def peak(command):
    """The most memory, in octets, that a command has resident."""
    child = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        raise RuntimeError(f"{command} ended with {child.returncode}")
    return usage.ru_maxrss * 1024


def tool_peaks(tool):
    """Peak memory of the tool at work on a big message, in sizes of the message."""
    with tempfile.TemporaryDirectory() as folder:
        picture = f"{folder}/big.jpg"
        with open(picture, "wb") as file:
            # In pieces: a child's peak begins with the most that this process ever had.
            for _ in range(BIG_MESSAGE // PIECE):
                file.write(os.urandom(PIECE))
        message = f"{folder}/big.mms"
        subprocess.run([tool, "compose", "--to", "+358401234567", "--slide",
                        f"text=Hello,image={picture}", "-o", message],
                       check=True, stdout=subprocess.DEVNULL)
        os.remove(picture)
        size = os.path.getsize(message)
        relay = subprocess.Popen([tool, "relay", "--listen", "127.0.0.1:0"],
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        try:
            address = re.search(r"127\.0\.0\.1:\d+", relay.stdout.readline())[0]
            commands = {
                "show": [tool, "show", message],
                "send": [tool, "send", message, "--url", f"http://{address}/"],
                "extract": [tool, "extract", message, f"{folder}/presentation"],
                "extract --all": [tool, "extract", "--all", message, f"{folder}/parts"],
            }
            return {name: peak(command) / size for name, command in commands.items()}
        finally:
            relay.kill()
            relay.wait()


def rows(time, octets, tool):
    def at_most(what, target, measured, unit):
        return Row(what, target, measured, unit, measured <= target)

    def at_least(what, target, measured, unit):
        return Row(what, target, measured, unit, measured >= target)

    def copies(name):
        return time[name] / time["copy/" + name.split("/")[1]]

    for case in ("notification", "send-conf"):
        yield at_most(f"decode, {case}", 110, copies(f"decode/{case}"), "copies")
    for case, target in (("31KB", 2.5), ("308KB", 1.3), ("5.2MB", 1.1)):
        yield at_most(f"decode, {case}", target, copies(f"decode/{case}"), "copies")
    for case in ("notification", "send-conf"):
        yield at_most(f"read as views, {case}", 300, time[f"view/{case}"], "ns")
    for case in ("31KB", "308KB", "5.2MB"):
        yield at_most(f"read as views, {case}", 1200, time[f"view/{case}"], "ns")
    for case in ("request", "31KB", "308KB", "5.2MB"):
        target = 700 + 1.15 * time[f"copy/{case}"]
        yield at_most(f"encode, {case}", target, time[f"encode/{case}"], "ns")
    # A message of n parts costs O(n).
    for what in ("decode", "encode"):
        growth = time[f"{what}/1000-parts"] / time[f"{what}/100-parts"]
        yield at_most(f"{what}, 1 000 parts to 100", 12, growth, "times")
    yield at_least("read SMIL, 200 KB", 150,
                   octets["smil-read/200KB"] * 1e3 / time["smil-read/200KB"], "MB/s")
    yield at_least("write SMIL, 200 KB", 300,
                   octets["smil-write/200KB"] * 1e3 / time["smil-write/200KB"], "MB/s")
    for threads in (1, 4):
        suffix = f"/real_time/threads:{threads}"
        # What is told is the time divided by the threads, each of which waited for all of it.
        own = threads * (time["http-submit" + suffix] - time["http-exchange" + suffix]) / 1000
        yield at_most(f"HTTP submission, {threads} thread(s), beyond the exchange", 150, own, "us")
    yield at_most("WAP submission of 1 KB in an open session", 3,
                  time["wap-submit/1000/real_time"] / 1e6, "ms")
    # Groups of 1, 2, 4, 8 and then 16 packets, each of which waits for its acknowledgement.
    yield at_least("WAP submission of 100 KB", 5,
                   octets["wap-submit/100000/real_time"] * 1e3 /
                   time["wap-submit/100000/real_time"], "MB/s")
    for command, sizes in tool.items():
        yield at_most(f"peak memory of {command}, 50 MB", 2.2, sizes, "sizes")


def shown(number):
    return f"{number:,.0f}" if number >= 100 else f"{number:.2f}"


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("build", help="build folder of the preset bench")
    arguments.add_argument("--quick", action="store_true", help="fewer repetitions")
    options = arguments.parse_args()
    folder = options.build + "/bench/"
    repetitions, seconds = (3, 0.02) if options.quick else (15, 0.05)

    time, octets = clocks(folder + "bench_codec", repetitions, seconds)
    for gathered, more in zip((time, octets), clocks(folder + "bench_transport", repetitions, seconds)):
        gathered.update(more)
    counted = instructions(folder + "bench_instructions")
    tool = tool_peaks(options.build + "/tools/mmsbrix/mmsbrix")

    results = list(rows(time, octets, tool))
    print(f"{'what':58}{'target':>10}{'measured':>10}")
    for row in results:
        bound = f"{'<=' if row.unit != 'MB/s' else '>='} {shown(row.target)}"
        print(f"{row.what:58}{bound:>10}{shown(row.measured):>10} {row.unit}"
              f"{'' if row.met else '   MISSED'}")
    for name in ("http-submit/real_time/threads:1", "http-submit/real_time/threads:4",
                 "wap-submit/1000/real_time"):
        print(f"{name + ', submissions a second':58}{'':10}{shown(1e9 / time[name]):>10}")
    print(f"\n{'operation':34}{'ns':>14}{'instructions':>14}")
    for name in time:
        print(f"{name:34}{shown(time[name]):>14}{counted.get(name, ''):>14}")
    with open(options.build + "/bench.json", "w") as out:
        json.dump({"targets": [row._asdict() for row in results], "nanoseconds": time,
                   "instructions": counted, "toolMemory": tool},
                  out, indent=1)
    print(f"\n{sum(not row.met for row in results)} of {len(results)} targets missed; all figures are in "
          f"{options.build}/bench.json")


if __name__ == "__main__":
    main()
