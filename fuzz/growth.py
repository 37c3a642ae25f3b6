#!/usr/bin/env python3
"""Converts and lints models that are made to cost much, each at two sizes, and compares the costs.

    growth.py CONVERTER VXBTOOL [MODEL...]

Time and memory may grow as input and output do together, with room for a noisy machine, but no
faster. Where a product of two counts grows faster by its nature, a documented ceiling bounds it: such
a model stands just below its ceiling, and is held to a fixed multiple of an ordinary model's cost.
"""
import array
import os
import pathlib
import resource
import subprocess
import sys
import tempfile

GROWTH = 4  # from the small size to the large one
NOISE = 2.0  # so a cost that grows with the square, sixteenfold, is told from one that does not
LEAST_TIME = 0.05  # seconds: below this a program's start and the clock are what is measured
LEAST_MEMORY = 24 << 20
MOST_MEMORY = 10  # times the bytes read and written, and 128 MiB
BOUNDED_TIME = 40  # times the seconds of the ordinary model
MASK = (1 << 64) - 1


def lines(*parts):
    return "\n".join(parts) + "\n"


def geometry(vertices, polygons, normals=()):
    points = (f"{i % 100} {i // 100 % 100} {i // 10000}" for i in range(vertices))
    head = f"{vertices} {len(normals)} {len(polygons)}"
    return lines("@GEO970401", head, *points, *normals, *polygons)


def triangle(a, b, c):
    return f"0 {a} {b} {c} 0 0 0 0 0"


def hierarchy(coordinates, assignments, group="NULL"):
    one = "1 0 0 0 1 0 0 0 1 0 0 0 0 0 0 0"
    return lines("@FRM970401", f"G={group}", str(coordinates), *[one] * coordinates, *assignments)


def materials(rows):
    return lines("@SRF970401", str(len(rows)), *rows)


def binary_lists(vertices, bits):
    """Assignments to coordinates 0 and 1 that give every vertex a list of its own."""
    rows = []
    for bit in range(bits):
        step = 1 << bit
        for coordinate in (0, 1):
            ranges = [f"{i}-{i + step - 1}" for i in range(coordinate * step, vertices, 2 * step)]
            rows.append(f"{coordinate} {vertices // 2} " + " ".join(ranges))
    return rows


def model(geo, srf, frm, extra=(), **files):
    texts = {"m.mqf": lines("@MQF970401", "GEO=m.geo", "SRF=m.srf", "FRM=m.frm", *extra)}
    texts.update({"m.geo": geo, "m.srf": srf, "m.frm": frm})
    texts.update({name.replace("_", "."): text for name, text in files.items()})
    return texts


def ordinary(n):
    polygons = [triangle(i % n, (i + 1) % n, (i + 2) % n) for i in range(n)]
    rows = [f"{i} 1 F C {i % 256} 0 0" for i in range(n)]
    assignments = [f"{c} 1000 {1000 * c}-{1000 * c + 999}" for c in range(n // 1000)]
    return model(geometry(n, polygons), materials(rows), hierarchy(n // 1000, assignments))


def pivots_of_two(n):
    bits = n.bit_length() - 1
    pivots = lines("@AXS970401", str(n), *[f"{i % 2} 0 0 0" for i in range(n)])
    return model(geometry(n, [triangle(0, 2, 4)]), materials(["0 1 F C 1 2 3"]),
                 hierarchy(2, binary_lists(n, bits)), ["AXS=m.axs"], m_axs=pivots)


def pivots_of_one(n):
    pivots = lines("@AXS970401", str(n), *["0 0 0 0"] * n)
    return model(geometry(n, [triangle(0, 1, 2)]), materials(["0 1 F C 1 2 3"]),
                 hierarchy(1, [f"0 {n} 0-{n - 1}"]), ["AXS=m.axs"], m_axs=pivots)


def colliding(n):
    """Names that one well-known hash without a seed sends to one place."""
    multiplier, shift = 0xC6A4A7935BD1E995, 47
    inverse = pow(multiplier, -1, 1 << 64)

    def mixed(k):
        k = k * multiplier & MASK
        return (k ^ k >> shift) * multiplier & MASK

    def unmixed(k):
        k = k * inverse & MASK
        return (k ^ k >> shift) * inverse & MASK

    start = 0xC70F6907 ^ (16 * multiplier & MASK)
    names = []
    number = 0
    while len(names) < n:
        number += 1
        first = b"%08d" % number
        state = (start ^ mixed(int.from_bytes(first, "little"))) * multiplier & MASK
        second = unmixed(state).to_bytes(8, "little")
        if all(c > 32 and c not in b"#,\x7f" for c in second):
            names.append((first + second).decode("latin-1"))
    return names


def colliding_labels(n):
    steps = [line for name in colliding(n) for line in (name, "END 0x0")]
    motion = lines("@CLP970401", "COORDINATE", "0", *steps, "TYPE ps0r0t1")
    return model(geometry(3, [triangle(0, 1, 2)]), materials(["0 1 F C 1 2 3"]),
                 hierarchy(1, ["0 3 0-2"]), ["NCLP=1", "CLP[0]=m.clp"], m_clp=motion)


def colliding_objects(n):
    names = colliding(n)
    groups = lines("@SQX970401", str(n), *[f"{name} 1 {i % 3}" for i, name in enumerate(names)])
    return model(geometry(3, [triangle(0, 1, 2)]), materials(["0 1 F C 1 2 3"]),
                 hierarchy(1, [f"0 {n} " + " ".join(names)], "m.sqx"), m_sqx=groups)


def headers(n):
    """Lists of n coordinates each, under which polygons of forty types are drawn."""
    lists, kinds = 16, ["C 1 2 3", "G 1 2 3 4 5 6 7 8 9 1 2 3"]
    polygons, rows, assignments = [], [], []
    for i in range(lists):
        for flag in ("0", "1", "2", "3", "4", "5", "6", "7", "81", "83"):
            for shading in "FG":
                rows += [f"{len(polygons) + k} {flag} {shading} {kind}" for k, kind in enumerate(kinds)]
                polygons += [triangle(3 * i, 3 * i + 1, 3 * i + 2)] * len(kinds)
    for c in range(n):
        assignments.append(f"{c} {3 * lists} 0-{3 * lists - 1}" if c >= lists else
                           f"{c} 3 {3 * c}-{3 * c + 2}")
    return model(geometry(3 * lists, polygons, ["0 0 1"]), materials(rows),
                 hierarchy(n, assignments))


def distinct_lists(n):
    """Half a million distinct lists times n."""
    vertices, bits = 1024, 10
    more = [f"{c} {vertices} 0-{vertices - 1}" for c in range(2, 2 + 500 * n)]
    return model(geometry(vertices, [triangle(0, 2, 4)]), materials(["0 1 F C 1 2 3"]),
                 hierarchy(2 + 500 * n, binary_lists(vertices, bits) + more))


def overlapping_ranges(n):
    rows = [f"0-999 {i & 7} F C 1 2 3" for i in range(n)]
    return model(geometry(3, [triangle(0, 1, 2)] * 1000, ["0 0 1"]), materials(rows),
                 hierarchy(1, ["0 3 0-2"]))


def one_motion_many_times(n):
    motion = lines("@CLP970401", "COORDINATE", "0", "END 0x0", "TYPE ps1r1t1", *["0"] * 5000)
    slots = [f"CLP[{i}]=m.clp" for i in range(n)]
    return model(geometry(3, [triangle(0, 1, 2)]), materials(["0 1 F C 1 2 3"]),
                 hierarchy(1, ["0 3 0-2"]), [f"NCLP={n}", *slots], m_clp=motion)


def image(columns, lines_high, line=0):
    half = (columns * lines_high + 1) // 2
    words = [0x10, 2, 4 * (3 + half), line << 16, lines_high << 16 | columns, *[7] * half]
    return b"".join(word.to_bytes(4, "little") for word in words).decode("latin-1")


def images(names, **files):
    slots = [f"TEX[{i}]={name}.pxl" for i, name in enumerate(names)]
    return model(geometry(3, [triangle(0, 1, 2)]), materials(["0 1 F C 1 2 3"]),
                 hierarchy(1, ["0 3 0-2"]), [f"NTEX={len(names)}", *slots], **files)


def one_image_many_times(n):
    return images(["m"] * n, m_pxl=image(64, 256))


def tall_image_among_small_ones(n):
    """An image that covers every line, named as often as there are images at lines of their own."""
    small = {f"s{i}_pxl": image(1, 1, 2 * i) for i in range(n)}
    return images(["m"] * n + [f"s{i}" for i in range(n)], m_pxl=image(1, 65535), **small)


def windows(n):
    """As many windows of one image as there are polygons."""
    sides = (8, 16, 32, 64)
    all_windows = ((w, h, x, y) for x in range(0, 192, 8) for y in range(0, 192, 8)
                   for w in sides for h in sides)
    rows = [f"{i} 1 F W 0 {w} {h} {x} {y} 0 0 1 0 1 1 0 1"
            for i, (w, h, x, y) in zip(range(n), all_windows)]
    return model(geometry(3, [triangle(0, 1, 2)] * n), materials(rows),
                 hierarchy(1, ["0 3 0-2"]), ["NTEX=1", "TEX[0]=m.pxl"],
                 m_pxl=image(256, 256))


def normals_of_no_length(n):
    return model(geometry(3, [triangle(0, 1, 2)], ["0 0 0"] * n), materials(["0 0 F C 1 2 3"]),
                 hierarchy(1, ["0 3 0-2"]))


def long_words(n):
    rows = [f"{'0,' * 100}0 1 F C 1 2 3 {'x' * 30}"] * n
    return model(geometry(3, [triangle(0, 1, 2)]), materials(rows), hierarchy(1, ["0 3 0-2"]))


def long_lists(n):
    """Three vertices that lie in n coordinates."""
    return model(geometry(3, [triangle(0, 1, 2)]), materials(["0 1 F C 1 2 3"]),
                 hierarchy(n, [f"{c} 3 0-2" for c in range(n)]))


def owned_by_many(n):
    """As many polygons as coordinates that draw them."""
    rows = [f"{i} 1 F C {i % 256} {i // 256 % 256} 0" for i in range(n)]
    return model(geometry(3, [triangle(0, 1, 2)] * n), materials(rows),
                 hierarchy(n, [f"{c} 3 0-2" for c in range(n)]))


def many_motions(n):
    """Motions of one step each, every second one with a type that it does not use."""
    start = ["@CLP970401", "COORDINATE", "1", "0 0 s", "s"]
    frames = ["TYPE ps0r0t1", "1 2 3"]
    one = lines(*start, "SEQ 1 ps1r1t1 0", "END 0x0", "TYPE ps1r1t1", "1 2 3 4 5 6 7 8 9", *frames)
    other = lines(*start, "SEQ 1 ps0r0t1 0", "END 0x0", *frames)
    slots = [f"CLP[{i}]={'ab'[i % 2]}.clp" for i in range(n)]
    return model(geometry(3, [triangle(0, 1, 2)]), materials(["0 1 F C 1 2 3"]),
                 hierarchy(1, ["0 3 0-2"]), [f"NCLP={n}", *slots], a_clp=one, b_clp=other)


def motions_through_jumps(n):
    """Motions that end at once, and one with a chain of jumps, at whose first step the others begin as
    soon as `begin_with_the_first` has changed the file."""
    start = ["@CLP970401", "COORDINATE", "1", "0 0 s", "s"]
    frames = ["TYPE ps0r0t1", "1 2 3"]
    jumps = [line for i in range(4 * n) for line in (f"GOTO l{i} 0x0 0x0", f"l{i}")]
    slots = [f"CLP[{i}]={'b' if i else 'a'}.clp" for i in range(n)]
    return model(geometry(3, [triangle(0, 1, 2)]), materials(["0 1 F C 1 2 3"]),
                 hierarchy(1, ["0 3 0-2"]), [f"NCLP={n}", *slots],
                 a_clp=lines(*start, *jumps, "SEQ 1 ps0r0t1 0", "END 0x0", *frames),
                 b_clp=lines(*start, "END 0x0", *frames))


def strips_between_two(n):
    """Strips of two polygons whose corners lie in two coordinates and have a normal each."""
    points = 4 * n
    polygons, assignments = [], []
    for i in range(0, points, 4):
        polygons.append(f"0 {i} {i + 1} {i + 2} 0 {i} {i + 1} {i + 2} 0")
        polygons.append(f"0 {i + 1} {i + 2} {i + 3} 0 {i + 1} {i + 2} {i + 3} 0")
    for c in range(2):
        assignments += [f"{c} {points // 2}", *map(str, range(c, points, 2))]
    meshes = lines("@BND970401", str(n), *[f"2 {2 * i} {2 * i + 1}" for i in range(n)])
    return model(geometry(points, polygons, [f"0 {i % 2} 1" for i in range(points)]),
                 materials([f"0-{2 * n - 1} 0 G C 1 2 3"]), hierarchy(2, assignments),
                 ["BND=m.bnd"], m_bnd=meshes)


def other_colours(words):
    """Every polygon of `owned_by_many` gets a colour of its own that it had not before."""
    for i, word in enumerate(words):
        if word >> 24 == 0x20:
            words[i] = word | 0xFF0000


def show_no_key_frame(words):
    """The second motion shows a key frame one word behind a true one: no reading is right."""
    words[(words[37] & 0x7FFFFFFF) + 2] += 1


def begin_with_the_first(words):
    """Every motion's only coordinate begins with step 0."""
    for i in range(len(words) - 5):
        if words[i] & ~0x800000 == 0x03000000 and words[i + 1] >> 16 == 0x8001 \
                and words[i + 2] == 0x04000001:
            words[i + 5] = 0


def swap_normals(words):
    """Every corner names a normal of the other coordinate."""
    strips = []
    while words[85 + 8 * len(strips)] == 2:
        strips.append(85 + 8 * len(strips))
    normals = 4 * len(strips)
    for strip in strips:
        for word, shift in ((2, 0), (3, 0), (4, 0), (6, 0), (6, 16), (7, 0)):
            normal = words[strip + word] >> shift & 0xFFFF
            words[strip + word] += ((normal + normals // 2) % normals - normal) << shift


# What is done with a model: a name, the command, and what becomes of the words of m.vxb in s.vxb
# before.
CONVERT = ("convert", ["{converter}", "m.mqf"])
LINT = ("lint", ["{vxbtool}", "lint", "m.mqf"])
LINT_ALL = ("lint --all --json", ["{vxbtool}", "lint", "--all", "--json", "m.mqf"])
UNPACK = ("unpack", ["sh", "-c", "{converter} m.mqf && {vxbtool} unpack --out-dir . --name u m.vxb"])
EXPORT = ("export", ["sh", "-c", "{converter} m.mqf && {vxbtool} export -o m.glb m.vxb"])
# A file is no folder: what is measured is how the model is found, and not how files are made.
UNPACK_CHANGED = ["{vxbtool}", "unpack", "--out-dir", "m.mqf", "s.vxb"]
DIFF = ("diff", ["{vxbtool}", "diff", "m.vxb", "s.vxb"], other_colours)
DIFF_ALL = ("diff --all", ["{vxbtool}", "diff", "--all", "m.vxb", "s.vxb"], other_colours)

# Each grows from the first size to GROWTH times it.
GROWING = [
    (headers, 1500, CONVERT),
    (colliding_labels, 30000, CONVERT),
    (colliding_objects, 30000, CONVERT),
    (colliding_objects, 15000, LINT),
    (overlapping_ranges, 1000, CONVERT),
    (overlapping_ranges, 500, LINT),
    (one_motion_many_times, 100, CONVERT),
    (one_motion_many_times, 100, LINT),
    (one_image_many_times, 150, CONVERT),
    (one_image_many_times, 150, LINT),
    (tall_image_among_small_ones, 1500, LINT),
    (windows, 1500, EXPORT),
    (motions_through_jumps, 2000, ("export", ["{vxbtool}", "export", "-o", "m.glb", "s.vxb"],
                                   begin_with_the_first)),
    (normals_of_no_length, 50000, LINT),
    (normals_of_no_length, 50000, LINT_ALL),
    (long_words, 1000, LINT),
    (long_words, 1000, LINT_ALL),
    (long_lists, 10000, UNPACK),
    (owned_by_many, 5000, DIFF),
    (owned_by_many, 5000, DIFF_ALL),
    (many_motions, 1000, ("unpack", UNPACK_CHANGED, show_no_key_frame)),
    (strips_between_two, 3000, ("unpack", UNPACK_CHANGED, swap_normals)),
]
# Each at a size just below a ceiling of docs/limits.md, or far above it.
BOUNDED = [
    (pivots_of_two, 2048, CONVERT),
    (pivots_of_two, 32768, CONVERT),
    (pivots_of_one, 8190, CONVERT),
    (pivots_of_one, 32000, CONVERT),
    (distinct_lists, 1, CONVERT),
    (distinct_lists, 8, CONVERT),
]


def change_words(folder, change, programs):
    subprocess.run([programs["converter"], "m.mqf"], cwd=folder, stdout=subprocess.DEVNULL)
    words = array.array("I", pathlib.Path(folder, "m.vxb").read_bytes())
    change(words)
    pathlib.Path(folder, "s.vxb").write_bytes(words.tobytes())


class Run:
    """What one run of a program on a model cost."""

    def __init__(self, make, size, command, programs):
        with tempfile.TemporaryDirectory() as folder:
            # In a process of its own: a child's peak of memory starts with what its parent has.
            if os.fork() == 0:
                for name, text in make(size).items():
                    pathlib.Path(folder, name).write_bytes(text.encode("latin-1"))
                if len(command) > 2:
                    change_words(folder, command[2], programs)
                os._exit(0)
            os.wait()
            read = sum(file.stat().st_size for file in pathlib.Path(folder).iterdir())
            arguments = [part.format(**programs) for part in command[1]]
            output = pathlib.Path(folder, "output")
            with output.open("wb") as stream:
                child = subprocess.Popen(arguments, cwd=folder, stdout=stream, stderr=stream)
                _, status, usage = os.wait4(child.pid, 0)
                child.returncode = os.waitstatus_to_exitcode(status)
            with output.open("rb") as stream:
                stream.seek(-min(4096, output.stat().st_size), os.SEEK_END)
                end = stream.read()
            if child.returncode < 0 or b"alloc" in end:
                raise SystemExit(f"{make.__name__} {size}: {command[0]} ended with "
                                 f"{child.returncode}\n{end.decode('latin-1')}")
            written = sum(file.stat().st_size for file in pathlib.Path(folder).iterdir()) - read
        self.bytes = read + written
        self.time = usage.ru_utime + usage.ru_stime
        self.memory = usage.ru_maxrss * 1024

    def __str__(self):
        return f"{self.bytes / 1e6:8.1f} MB {self.time:7.2f} s {self.memory / 1e6:7.0f} MB of memory"


def main():
    if len(sys.argv) < 3:
        raise SystemExit(__doc__)
    programs = {"converter": os.path.abspath(sys.argv[1]), "vxbtool": os.path.abspath(sys.argv[2])}
    wanted = sys.argv[3:]
    resource.setrlimit(resource.RLIMIT_AS, (8 << 30, 8 << 30))
    failures = 0

    def judge(label, run, time, memory):
        nonlocal failures
        memory = min(memory, MOST_MEMORY * run.bytes + (128 << 20))
        good = run.time <= time and run.memory <= memory
        failures += 0 if good else 1
        print(f"{'ok  ' if good else 'FAIL'} {label:44} {run}, at most {time:.2f} s, "
              f"{memory / 1e6:.0f} MB", flush=True)

    for make, size, command in GROWING:
        if not wanted or make.__name__ in wanted:
            small = Run(make, size, command, programs)
            large = Run(make, GROWTH * size, command, programs)
            growth = max(GROWTH, large.bytes / small.bytes) * NOISE
            judge(f"{make.__name__} {GROWTH * size}: {command[0]}", large,
                  max(small.time, LEAST_TIME) * growth, max(small.memory, LEAST_MEMORY) * growth)
    reference = Run(ordinary, 100000, CONVERT, programs)
    for make, size, command in BOUNDED:
        if not wanted or make.__name__ in wanted:
            judge(f"{make.__name__} {size}", Run(make, size, command, programs),
                  BOUNDED_TIME * max(reference.time, LEAST_TIME), 256 << 20)
    sys.exit(1 if failures else 0)


main()
