#!/usr/bin/env python3
"""Imports, converts, checks, lints and exports every model of Debian's assimp-testmodels.

    check-real-models.py VXBTOOL SURFACE_DISTANCE [--only PART] [--keep FOLDER] [--jobs N]

Every model that Assimp loads with polygons has to come in, but for those that the table of refused
models lists with what import says of them. What came in passes "check" without a finding and "lint"
without an error; of a model without skins the surface that "export" writes lies as near to the
source's as rounding lets it, measured both ways. Whatever Assimp does not load is refused with a
report. No command may take longer than its time or more than its memory, and none leaves anything of a
model that is refused.
"""
import argparse
import concurrent.futures
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time

MODELS = pathlib.Path("/usr/share/assimp/models")
TABLE = pathlib.Path(__file__).parent.parent / "tests/data/import/refused.txt"
SECONDS = 120  # of one command, on a busy machine
MEMORY = 4 << 30
LEAST_SHARE = 0.9  # of the models that Assimp loads with polygons
NEAR = 1.0  # units, times what a coordinate's matrix makes of one
REFUSED = 1  # exit status


class Fault(Exception):
    """What is wrong with a model's way, in one line."""


def run(*command):
    """Runs it within its limits; beyond them it ends with every process that it started."""
    limited = ["prlimit", f"--as={MEMORY}", "--core=0", *command]
    with subprocess.Popen(limited, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          errors="replace", start_new_session=True) as process:
        try:
            out, err = process.communicate(timeout=SECONDS)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            raise Fault(f"{command[1]} takes longer than {SECONDS} s") from None
    return subprocess.CompletedProcess(command, process.returncode, out, err)


def last_line(text):
    rows = text.strip().splitlines()
    return rows[-1] if rows else "no output"


def expect_good(what, done):
    if done.returncode != 0:
        raise Fault(f"{what} ends with {done.returncode}: {last_line(done.stdout + done.stderr)}")


def read_table():
    rows = {}
    for row in TABLE.read_text().splitlines():
        if row and not row.startswith("#"):
            name, reason = row.split("\t")
            rows[name] = reason
    return rows


class Way:
    """One model's way through the program."""

    def __init__(self, tools, name, reason):
        self.vxbtool, self.distance = tools
        self.source = str(MODELS / name)
        self.reason = reason  # that the table has, or None
        self.loads = False
        self.came_in = False
        self.farthest = 0.0

    def look(self, *more):
        done = run(self.distance, self.source, *more)
        expect_good("surface_distance", done)
        return json.loads(done.stdout)

    def go(self, folder):
        done = run(self.vxbtool, "import", "--fit", "--convert", "--json", "--name", "model",
                   "--out-dir", str(folder), self.source)
        if done.returncode == 0:
            self.came_in = self.loads = True
            if self.reason is not None:
                raise Fault("the table says that it is refused, but it comes in")
            self.inspect(folder, json.loads(done.stdout))
        elif done.returncode == REFUSED:
            self.check_refusal(folder, done)
        else:
            raise Fault(f"import ends with {done.returncode}: {last_line(done.stderr)}")

    def check_refusal(self, folder, done):
        if folder.exists() and any(folder.iterdir()):
            raise Fault("import refuses it and leaves files")
        message = last_line(done.stderr)  # some of Assimp's readers write there too
        if done.stdout.strip() or not message.startswith(f"{self.source}: "):
            raise Fault(f"import does not say what it refuses, but: {message}")
        looked = self.look()
        self.loads = looked["loads"] and looked["polygons"] > 0
        if self.loads and self.reason is None:
            raise Fault(f"refused: {message}")
        if not self.loads and self.reason is not None:
            raise Fault("the table lists it, but Assimp loads no polygons of it")
        if self.loads and self.reason not in message:
            raise Fault(f"refused, but not as the table says: {message}")

    def inspect(self, folder, report):
        model = folder / "model"
        done = run(self.vxbtool, "check", f"{model}.vxb")
        expect_good("check", done)
        if done.stdout.strip():
            raise Fault(f"check finds: {last_line(done.stdout)}")
        expect_good("lint", run(self.vxbtool, "lint", "--base", str(folder), f"{model}.mqf"))
        export = f"{model}.glb"
        expect_good("export", run(self.vxbtool, "export", "--no-motions", "-o", export, f"{model}.vxb"))
        looked = self.look(str(report["scale"]), export)
        if not looked["loads"] or looked["polygons"] == 0:
            raise Fault("import takes it, but Assimp loads no polygons of it")
        if looked["bones"] > 0:
            return
        near = NEAR * max(1.0, looked["roundedIn"])
        for way in ("toExport", "toSource"):
            distance = looked[way]
            self.farthest = max(self.farthest, distance / near)
            if distance > near:
                raise Fault(f"{way} {distance} units at {looked[way + 'At']}, {near:.3g} allowed; "
                            f"scale {report['scale']:.6g}")


def follow(tools, name, reason, keep):
    way = Way(tools, name, reason)
    fault = None
    start = time.monotonic()
    with tempfile.TemporaryDirectory() as temporary:
        folder = pathlib.Path(keep, name) if keep else pathlib.Path(temporary, "out")
        try:
            way.go(folder)
        except Fault as found:
            fault = str(found)
    return name, way, fault, time.monotonic() - start


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("vxbtool")
    parser.add_argument("surface_distance")
    parser.add_argument("--only", help="models with this in their names")
    parser.add_argument("--keep", help="folder for all that is written, which has to be new")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    arguments = parser.parse_args()
    if not MODELS.is_dir():
        sys.exit(f"{MODELS} is not there: install assimp-testmodels")
    tools = [str(pathlib.Path(tool).resolve())
             for tool in (arguments.vxbtool, arguments.surface_distance)]
    table = read_table()
    names = sorted(str(path.relative_to(MODELS)) for path in MODELS.rglob("*") if path.is_file())
    chosen = [name for name in names if arguments.only is None or arguments.only in name]
    faults = [f"{name}: the table lists it, but it is not there"
              for name in table if name not in names]
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        ends = list(pool.map(lambda name: follow(tools, name, table.get(name), arguments.keep),
                             chosen))
    faults += [f"{name}: {fault}" for name, _, fault, _ in ends if fault]
    loaded = sum(way.loads for _, way, _, _ in ends)
    came_in = sum(way.came_in for _, way, _, _ in ends)
    slowest = max(ends, key=lambda end: end[3])
    farthest = max(ends, key=lambda end: end[1].farthest)
    print("\n".join(faults))
    print(f"{len(ends)} files, {loaded} with polygons, {came_in} came in, {len(faults)} faults; "
          f"the slowest takes {slowest[3]:.1f} s: {slowest[0]}; "
          f"the farthest is {farthest[1].farthest:.2f} of what is allowed: {farthest[0]}")
    if arguments.only is None and came_in < LEAST_SHARE * loaded:
        sys.exit(f"fewer than {LEAST_SHARE:.0%} of the models came in")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
