#!/usr/bin/env python3
"""Makes the sample model "crawler", a tracked excavator, beside this script.

Run it without arguments. It writes the same files every time, in three
variants of one machine (README.md tells what each of them shows):

    crawler.mqf          vertices assigned to coordinates directly
    crawler_strips.mqf   the same polygons, chained into strips
    crawler_groups.mqf   the machine in model space, with groups and pivots

Conventions of the model: x points to the machine's left, y up, z to its front;
a unit is a millimetre. Seen from its front side a triangle runs clockwise; the
corners of a quadrangle run like a strip: 0, 1, 2 and 1, 2, 3 are its halves.
Angles are counted in 4096ths of a turn, and a factor of 1.0 is 4096.

The script reads from top to bottom: vectors, parts, images, finishes, shapes,
the machine itself, its motions, and one writer for each kind of file.
"""

import math
import struct
from collections import defaultdict, namedtuple
from dataclasses import dataclass, field
from pathlib import Path

FOLDER = Path(__file__).resolve().parent
ONE = 4096                                    # 1.0, and one turn


# ------------------------------------------------------------------ vectors

X, Y, Z = (1, 0, 0), (0, 1, 0), (0, 0, 1)
LEFT, RIGHT, UP, DOWN, FRONT, REAR = X, (-1, 0, 0), Y, (0, -1, 0), Z, (0, 0, -1)


def add(a, b):
    return tuple(p + q for p, q in zip(a, b))


def sub(a, b):
    return tuple(p - q for p, q in zip(a, b))


def scaled(a, factor):
    return tuple(p * factor for p in a)


def dot(a, b):
    return sum(p * q for p, q in zip(a, b))


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def unit(a):
    length = math.sqrt(dot(a, a))
    return scaled(a, 1 / length)


def rounded(a):
    return tuple(round(p) for p in a)


def mean(points):
    return scaled(tuple(map(sum, zip(*points))), 1 / len(points))


def mix(a, b, t):
    return add(scaled(a, 1 - t), scaled(b, t))


def rotation(axis, degrees):
    """The matrix that turns by an angle about one of the three axes."""
    c, s = math.cos(math.radians(degrees)), math.sin(math.radians(degrees))
    return {"x": ((1, 0, 0), (0, c, -s), (0, s, c)),
            "y": ((c, 0, s), (0, 1, 0), (-s, 0, c)),
            "z": ((c, -s, 0), (s, c, 0), (0, 0, 1))}[axis]


def apply(matrix, v):
    return tuple(dot(row, v) for row in matrix)


def transposed(matrix):
    return tuple(zip(*matrix))


def product(a, b):
    columns = transposed(b)
    return tuple(tuple(dot(row, column) for column in columns) for row in a)


def turn(degrees):
    """An angle in 4096ths of a turn."""
    return round(degrees * ONE / 360)


# -------------------------------------------------------------------- parts

@dataclass
class Part:
    """One coordinate of the hierarchy and the objects that it carries."""
    name: str
    parent: str
    place: tuple                              # of its origin, seen from its parent
    objects: tuple
    axis: str = "x"                           # its joint turns about this axis
    degrees: float = 0.0                      # the joint's angle at rest


WHEEL_Z = (1350, 450, -450, -1350)
WHEELS = [Part(f"wheel_{side}{k + 1}", "base", (x, 0, z), ("wheel",), "x", 9 * k)
          for side, x in (("l", 1150), ("r", -1150)) for k, z in enumerate(WHEEL_Z)]

PARTS = [
    Part("world", "world", (0, 0, 0), ("ground", "backdrop")),
    Part("base", "world", (0, 450, 0), ("base",)),
    Part("track_l", "base", (1150, 0, 0), ("track_l",)),
    Part("track_r", "base", (-1150, 0, 0), ("track_r",)),
    *WHEELS,
    Part("house", "base", (0, 600, 0), ("house", "engine"), "y", 24),
    Part("cab", "house", (740, 260, 520), ("cab", "glass")),
    Part("beacon", "cab", (-180, 1460, -220), ("beacon",), "y", 30),
    Part("lamps", "cab", (0, 1450, 330), ("lamps",), "x", 14),
    Part("boom", "house", (0, 560, 720), ("boom",), "x", -38),
    Part("arm", "boom", (0, 90, 3600), ("arm",), "x", 99),
    Part("bucket", "arm", (0, 0, 2100), ("bucket",), "x", 28),
]
NUMBER = {part.name: number for number, part in enumerate(PARTS)}
OBJECTS = list(dict.fromkeys(name for part in PARTS for name in part.objects))


def carriers(name):
    """The parts that carry an object; most objects have one, the wheel has eight."""
    return tuple(part for part in PARTS if name in part.objects)


def pivot(part):
    """The origin of a part in model space, where every joint is at zero."""
    if part.parent == part.name:
        return part.place
    return add(pivot(PARTS[NUMBER[part.parent]]), part.place)


def pose(part):
    """The matrix and the place of a part in the world, with its joints at rest."""
    own = rotation(part.axis, part.degrees)
    if part.parent == part.name:
        return own, part.place
    matrix, place = pose(PARTS[NUMBER[part.parent]])
    return product(matrix, own), add(apply(matrix, part.place), place)


POSE = {name: pose(carriers(name)[0]) for name in OBJECTS}


def to_world(name, point):
    matrix, place = POSE[name]
    return add(apply(matrix, point), place)


def from_world(name, point):
    matrix, place = POSE[name]
    return apply(transposed(matrix), sub(point, place))


# ------------------------------------------------------------------- images

COMMON_PALETTE = (0, 0)      # where images without a palette of their own find one


@dataclass
class Image:
    """A texture: its texels, and where it and its palette lie in image memory.

    Places are in columns of 16 bits and rows; bits is the depth of a texel.
    """
    name: str
    bits: int
    place: tuple
    texels: list                              # rows of numbers
    palette: list = None                      # 16-bit colours, if it brings any
    palette_place: tuple = COMMON_PALETTE

    @property
    def width(self):
        return len(self.texels[0])

    @property
    def height(self):
        return len(self.texels)

    @property
    def columns(self):
        return self.width * self.bits // 16


def rgb15(r, g, b, marked=False):
    """A 16-bit colour of 5 bits a component, with a mark in the top bit.

    No colour is 0, so that the blackest black has a little blue.
    """
    colour = int(r) >> 3 | int(g) >> 3 << 5 | int(b) >> 3 << 10 | marked << 15
    return colour or 1 << 10


def ramp(low, high, count, marked=False):
    return [rgb15(*mix(low, high, i / max(1, count - 1)), marked) for i in range(count)]


def grain(x, y, seed=0):
    """A repeatable random number from 0 to 1 for a texel."""
    n = (x * 374761393 + y * 668265263 + seed * 2246822519) & 0xFFFFFFFF
    n = (n ^ n >> 13) * 1274126177 & 0xFFFFFFFF
    return ((n ^ n >> 16) & 0xFFFF) / 0xFFFF


def cloudiness(x, y, size, cell, seed):
    """Smooth noise from 0 to 1 that repeats after size texels in x."""
    column, row = x // cell, y // cell
    fx, fy = (x % cell) / cell, (y % cell) / cell
    fx, fy = fx * fx * (3 - 2 * fx), fy * fy * (3 - 2 * fy)
    columns = size // cell
    corner = [[grain((column + i) % columns, row + j, seed) for i in (0, 1)] for j in (0, 1)]
    top = corner[0][0] * (1 - fx) + corner[0][1] * fx
    bottom = corner[1][0] * (1 - fx) + corner[1][1] * fx
    return top * (1 - fy) + bottom * fy


def grid(width, height, texel):
    return [[texel(x, y) for x in range(width)] for y in range(height)]


def plate_image():
    """Painted metal: seams, rivets, a little dirt."""
    def texel(x, y):
        sx, sy = x % 32, y % 32
        if 0 in (sx, sy):
            return 2
        if 1 in (sx, sy):
            return 13
        if (sx in (4, 5, 28, 29)) and (sy in (4, 5, 28, 29)):
            return 14 if sx in (4, 28) and sy in (4, 28) else 4
        dirt = 3 * (cloudiness(x, y, 64, 16, 3) > 0.72)
        return min(12, max(3, round(9 + 1.4 * grain(x, y, 1) - dirt)))
    palette = ramp((70, 48, 16), (255, 190, 32), 13) + [rgb15(255, 224, 120), rgb15(255, 240, 170),
                                                       rgb15(40, 36, 32)]
    return Image("plate.pxl", 4, (640, 0), grid(64, 64, texel), palette, (0, 480))


def tread_image():
    """One link of a track, running to the right: a ribbed pad, two bolts, a gap."""
    def texel(y, x):
        if y >= 28:
            return 1 + (grain(x, y, 5) > 0.7)
        if y in (0, 27):
            return 4
        if y in (5, 6, 12, 13):
            return 14 if y in (5, 12) else 6
        if 18 <= y <= 23 and x % 16 in range(5, 11):
            return 12 if (y == 18 or x % 16 == 5) else 8
        return 9 + round(2 * grain(x, y, 6)) - 3 * (x in (0, 15, 16, 31))
    return Image("tread.pxl", 4, (656, 0), grid(32, 32, texel),
                 ramp((16, 15, 14), (168, 164, 156), 16), (16, 480))


def wheel_image():
    """A road wheel from its side: tyre, rim, spokes and bolts."""
    def texel(x, y):
        x, y = x - 31.5, y - 31.5
        distance, sector = math.hypot(x, y), math.atan2(y, x) / math.pi * 3 % 1
        if distance > 27:
            return 1 + round(2 * grain(int(x), int(y), 30))
        if distance > 25:
            return 6
        if 20 < distance < 23 and abs(sector - 0.5) < 0.09:
            return 7
        if 13 < distance < 19 and abs(sector) > 0.25 and abs(sector - 1) > 0.25:
            return 4
        return 12 + round(2 * grain(int(x), int(y), 31)) - 3 * (distance < 12)
    palette = ramp((20, 20, 22), (90, 90, 94), 8) + ramp((110, 76, 16), (250, 188, 40), 8)
    return Image("wheel.pxl", 4, (640, 64), grid(64, 64, texel), palette, (48, 480))


def stripe_image():
    """Warning stripes, worn at some places."""
    def texel(x, y):
        worn = round(2 * cloudiness(x, y, 32, 8, 8) + grain(x, y, 9))
        return 1 + worn if (x + y) // 8 % 2 else 15 - worn
    palette = ramp((18, 18, 20), (70, 68, 64), 8) + ramp((150, 110, 20), (255, 208, 24), 8)
    return Image("stripe.pxl", 4, (664, 0), grid(32, 32, texel), palette, (32, 480))


def grille_image():
    """Slats of an air intake, in the greys of the common palette."""
    def texel(x, y):
        if x in (0, 31) or y in (0, 31):
            return 11
        return (3, 13, 9, 1)[y % 4] if 2 < x < 29 else 7
    return Image("grille.pxl", 4, (672, 0), grid(32, 32, texel))


def lamp_image():
    """A round glow: the common palette's ramp from black to white heat."""
    def texel(x, y):
        distance = math.hypot(x - 15.5, y - 15.5) / 15.5
        glow = max(0.0, 1 - distance) ** 0.8
        return 32 + round(63 * glow)
    return Image("lamp.pxl", 8, (704, 16), grid(32, 32, texel))


def grass_image():
    """Grass, in the greens of the common palette."""
    def texel(x, y):
        return 176 + round(34 * grain(x, y, 40) + 30 * cloudiness(x, y, 32, 8, 41))
    return Image("grass.pxl", 8, (720, 32), grid(32, 32, texel))


def shadow_image():
    """A soft patch of the common palette's greys, strongest in its middle."""
    def texel(x, y):
        edge = min(1, 1.9 * (1 - max(abs(x - 15.5), abs(y - 15.5)) / 15.5))
        return round(7 * edge + 0.8 * grain(x, y, 42) * (0 < edge < 1))
    return Image("shadow.pxl", 4, (680, 0), grid(32, 32, texel))


def road_image():
    """Asphalt with a dashed line in its middle and a full one at each side."""
    def texel(x, y):
        if x in (3, 4, 59, 60):
            return 192 + round(60 * grain(x, y, 12))
        if x in (31, 32) and y < 36:
            return 128 + round(60 * grain(x, y, 13))
        crack = cloudiness(x, y, 64, 8, 14)
        return round(60 * grain(x, y, 15)) + 64 * (crack > 0.66)
    palette = (ramp((52, 52, 56), (92, 92, 96), 64) + ramp((44, 42, 42), (76, 72, 70), 64) +
               ramp((170, 120, 20), (240, 190, 40), 64) + ramp((150, 150, 144), (230, 230, 224), 64))
    return Image("road.pxl", 8, (736, 0), grid(64, 64, texel), palette, (0, 481))


def sky_image():
    """A summer sky in 16-bit colours; it brings the common palette along."""
    def texel(x, y):
        base = mix((64, 120, 216), (208, 226, 240), y / 63)
        cover = (0.55 * cloudiness(x, y, 64, 16, 20) + 0.3 * cloudiness(x, 2 * y, 64, 8, 21) +
                 0.15 * cloudiness(x, 2 * y, 64, 4, 22))
        return rgb15(*mix(base, (250, 250, 250), min(1, max(0, (cover - 0.5) * 4))), True)
    palette = ([rgb15(0, 0, 0, True)] + ramp((16, 16, 18), (236, 236, 232), 15, True) +    # greys
               ramp((40, 10, 8), (240, 60, 40), 16) +                                      # reds
               [rgb15(0, 0, 0, True)] + ramp((20, 6, 0), (255, 150, 20), 31, True) +
               ramp((255, 160, 30), (255, 255, 240), 32, True) +                           # a glow
               ramp((16, 30, 60), (90, 160, 250), 80) +                                    # blues
               ramp((20, 36, 16), (150, 200, 90), 80))                                     # greens
    return Image("sky.pxl", 16, (768, 256), grid(64, 64, texel), palette, COMMON_PALETTE)


LETTERS = {"C": "01110 10001 10000 10000 10000 10001 01110",
           "R": "11110 10001 10001 11110 10100 10010 10001",
           "A": "01110 10001 10001 11111 10001 10001 10001",
           "W": "10001 10001 10001 10101 10101 11011 10001",
           "L": "10000 10000 10000 10000 10000 10000 11111",
           "E": "11111 10000 10000 11110 10000 10000 11111",
           "-": "00000 00000 00000 11111 00000 00000 00000",
           "8": "01110 10001 10001 01110 10001 10001 01110",
           "0": "01110 10001 10011 10101 11001 10001 01110"}


def lettering(text, left, top, size=1):
    """The texels that a text covers."""
    return {(left + 6 * size * k + size * x + i, top + size * y + j)
            for k, letter in enumerate(text)
            for y, row in enumerate(LETTERS[letter].split())
            for x, dot_ in enumerate(row) if dot_ == "1"
            for i in range(size) for j in range(size)}


def decal_image():
    """The name plate."""
    name, number = lettering("CRAWLER", 11, 4), lettering("C-80", 20, 15)

    def texel(x, y):
        if x in (0, 63) or y in (0, 31):
            return rgb15(220, 220, 210)
        if (x, y) in name:
            return rgb15(250, 248, 236)
        if (x, y) in number:
            return rgb15(255, 196, 32)
        if y in (26, 27):
            return rgb15(255, 196, 32) if x // 4 % 2 else rgb15(24, 24, 26)
        return rgb15(*mix((40, 44, 52), (20, 22, 28), y / 31))
    return Image("decal.pxl", 16, (832, 288), grid(64, 32, texel))


IMAGES = [plate_image(), tread_image(), stripe_image(), wheel_image(), grille_image(), shadow_image(),
          lamp_image(), grass_image(), road_image(), sky_image(), decal_image()]
SLOT = {image.name.split(".")[0]: slot for slot, image in enumerate(IMAGES)}


# ----------------------------------------------------------------- finishes

UNLIT, FLAG_02, FLAG_04, DOUBLE = 0x01, 0x02, 0x04, 0x80
PAGE_1, PAGE_2, PAGE_3 = 0x08, 0x10, 0x18     # the two flag bits that go into the page word

TEXTURED, WINDOWED, CORNER_COLOURS = "TDHWSN", "WSN", "GHN"


@dataclass(frozen=True)
class Finish:
    """What a polygon looks like."""
    note: str                                 # the comment in the material file
    kind: str                                 # one of C G T D H W S N
    shading: str = "F"                        # F flat, G smooth
    flag: int = 0
    colour: object = None                     # a colour, or a colour for each point
    image: str = ""
    repeat: tuple = (1, 1)                    # how often the image fits a cell
    spread: bool = False                      # one image over the whole sheet

    def texel(self, s, t):
        """The texel at a place from 0 to 1 across and 0 to 1 down."""
        image = IMAGES[SLOT[self.image]]
        if self.kind in WINDOWED:
            return (min(255, round(s * self.repeat[0] * image.width)),
                    min(255, round(t * self.repeat[1] * image.height)))
        return round(s * (image.width - 1)), round(t * (image.height - 1))


def fade(axis, low, low_colour, high, high_colour):
    """A colour for each point, from one at a low place to one at a high place."""
    def colour(point):
        t = (point["xyz".index(axis)] - low) / (high - low)
        return rounded(mix(low_colour, high_colour, min(1, max(0, t))))
    return colour


YELLOW, DARK, STEEL = (236, 176, 32), (44, 44, 48), (190, 192, 196)

PLATE = Finish("painted plates, flat", "T", image="plate")
PLATE_ROUND = Finish("painted plates, smooth", "T", "G", image="plate")
PLATE_SHADED = Finish("painted plates, darker below", "H", image="plate",
                      colour=fade("y", 50, (64, 60, 64), 500, (128, 128, 128)))
PLATE_BENT = Finish("curved plates, darker below", "H", "G", image="plate",
                    colour=fade("y", 100, (72, 68, 72), 900, (136, 136, 136)))
WHEEL = Finish("wheel disc", "T", image="wheel", spread=True)
PAINT = Finish("plain paint, flat", "C", colour=YELLOW)
PAINT_ROUND = Finish("plain paint, smooth", "C", "G", colour=YELLOW)
FRAME = Finish("dark frame", "C", colour=DARK)
FRAME_FADED = Finish("frame, lighter above", "G",
                     colour=fade("y", -250, (28, 28, 32), 350, (112, 110, 108)))
RING = Finish("slew ring", "G", "G", colour=fade("y", 330, (50, 50, 54), 600, (150, 150, 152)))
BRIGHT_STEEL = Finish("bright steel, flat", "C", colour=STEEL)
STEEL_ROUND = Finish("bright steel, smooth", "C", "G", colour=STEEL)
TREAD = Finish("track links", "W", "G", image="tread", repeat=(2, 2))
TREAD_FLAT = Finish("anti-slip cover", "W", image="tread", repeat=(3, 4))
TREAD_EDGE = Finish("track flank, dark towards the ground", "N", image="tread", repeat=(1, 2),
                    colour=fade("y", -450, (52, 50, 48), 450, (128, 126, 122)))
STEP = Finish("steps, worn bright in front", "N", "G", image="tread", repeat=(2, 1),
              colour=fade("z", 1150, (80, 80, 80), 1240, (150, 150, 150)))
STRIPES = Finish("warning stripes", "W", image="stripe", repeat=(4, 1))
GRILLE = Finish("air intake", "T", image="grille")
NAME_PLATE = Finish("name plate", "T", image="decal", spread=True)
GLASS = Finish("window glass", "T", flag=FLAG_04 | PAGE_3, image="sky")
SEAT = Finish("seat", "C", colour=(60, 36, 30))
SCREEN = Finish("instrument screen, shining", "D", flag=UNLIT | DOUBLE, image="decal",
                colour=(110, 150, 130), spread=True)
LENS = Finish("lamp lens, shining", "T", flag=UNLIT, image="lamp", spread=True)
TAIL_LIGHT = Finish("tail light, shining", "C", flag=UNLIT, colour=(230, 24, 16))
BEACON = Finish("beacon glass, shining", "H", flag=UNLIT, image="lamp",
                colour=fade("y", 40, (128, 60, 10), 220, (180, 150, 60)))
HALO = Finish("beacon halo", "D", flag=UNLIT | FLAG_04 | PAGE_1, image="lamp",
              colour=(120, 80, 20), spread=True)
BEAM = Finish("light beam, fading with the distance", "H", flag=UNLIT | FLAG_04 | PAGE_1,
              image="lamp", spread=True, colour=fade("z", 300, (88, 84, 64), 2200, (0, 0, 0)))
PENNANT = Finish("pennant", "G", flag=UNLIT | FLAG_02,
                 colour=fade("z", -800, (255, 60, 20), -430, (255, 190, 60)))
RUBBER = Finish("rubber boot", "W", "G", image="tread", repeat=(2, 2))
HOSE = Finish("hydraulic hose", "C", "G", colour=(58, 60, 66))
RAM = Finish("hydraulic ram, paint to chrome", "G", "G")
CABLE = Finish("lamp cable", "C", "G", flag=UNLIT, colour=(16, 16, 18))
BUCKET_IN = Finish("inside of the bucket", "H", "G", flag=FLAG_02, image="plate",
                   colour=fade("z", 0, (40, 38, 36), 1100, (110, 104, 96)))
ROAD = Finish("road", "W", flag=UNLIT, image="road", repeat=(1, 3))
KERB = Finish("kerb", "S", flag=UNLIT, image="stripe", repeat=(7, 1), colour=(120, 112, 108))
FIELD = Finish("field, darker towards the horizon", "N", flag=UNLIT, image="grass", repeat=(4, 4),
               colour=fade("z", -9000, (84, 100, 110), 9000, (150, 150, 116)))
SHADOW = Finish("shadow", "D", flag=UNLIT | FLAG_04 | PAGE_2, image="shadow",
                colour=(110, 108, 96), spread=True)
SKY = Finish("sky with clouds", "T", flag=UNLIT, image="sky")
ZENITH = Finish("upper sky", "G", flag=UNLIT | DOUBLE,
                colour=fade("y", 5000, (64, 120, 216), 7500, (24, 48, 128)))
HAZE = Finish("haze over the horizon", "H", flag=UNLIT | DOUBLE, image="sky",
              colour=fade("y", 0, (150, 140, 120), 1800, (128, 128, 128)))
HILL = Finish("far hills", "G", flag=UNLIT | DOUBLE,
              colour=fade("y", 0, (120, 140, 120), 2000, (48, 84, 96)))
NEAR_HILL = Finish("near hills", "C", flag=UNLIT | DOUBLE, colour=(60, 92, 52))
SUN = Finish("sun", "D", flag=UNLIT | DOUBLE | FLAG_04 | PAGE_1, image="lamp",
             colour=(104, 100, 92), spread=True)


# ------------------------------------------------------------------- shapes

Corner = namedtuple("Corner", "object point")


@dataclass
class Polygon:
    corners: list                             # three or four of Corner
    normals: list                             # one for each, seen from its own part
    texels: list                              # (u, v) for each
    colours: list                             # one for each
    finish: Finish

    @property
    def objects(self):
        return {corner.object for corner in self.corners}

    @property
    def shared(self):
        return len(self.objects) > 1


def on(name, points):
    return [Corner(name, rounded(point)) for point in points]


def away_from(point):
    return lambda centre: sub(centre, point)


def towards(direction):
    return lambda centre: direction


def placed(corner, common):
    """A corner's place: in its own part, or in the world for a surface over a joint."""
    return corner.point if common else to_world(corner.object, corner.point)


def area_normal(a, b, c):
    """The outward normal of a clockwise triangle, as long as twice its area."""
    return cross(sub(c, a), sub(b, a))


def make_polygon(finish, corners, normals, places, shades):
    """places are the corners' places in the image; shades stand in for a finish's colours."""
    colours = []
    if finish.kind in CORNER_COLOURS:
        colours = [shade or finish.colour(corner.point) for shade, corner in zip(shades, corners)]
    elif finish.colour:
        colours = [finish.colour]
    texels = [finish.texel(*place) for place in places] if finish.kind in TEXTURED else []
    return Polygon(corners, normals, texels, colours, finish)


def seen_from_parts(normal, corners, common):
    """A normal as each of the corners' parts sees it."""
    if common:
        return [normal] * len(corners)
    return [apply(transposed(POSE[corner.object][0]), normal) for corner in corners]


A, B, C, D = (0, 0), (0, 1), (1, 0), (1, 1)   # a cell's corners: steps down and across


def cell_polygons(strips, mirrored):
    """The corners of a cell's polygons; the two triangles continue those of the cell before."""
    if strips:
        return ((A, C, B), (B, C, D)) if mirrored else ((C, A, D), (D, A, B))
    return ((B, A, D, C),) if mirrored else ((A, B, C, D),)


def distinct(nodes, at):
    """The nodes without those that lie on another one; a quadrangle may become a triangle."""
    if len({at[r][c] for r, c in nodes}) == len(nodes):
        return nodes
    around = nodes if len(nodes) == 3 else [nodes[k] for k in (0, 1, 3, 2)]
    return [(r, c) for k, (r, c) in enumerate(around)
            if at[r][c] not in [at[i][j] for i, j in around[:k]]]


def sheet(rows, finish, facing, strips=False, shades=None):
    """A grid of cells between rows of corners.

    A cell becomes a quadrangle, or with strips two triangles of its row's strip.
    facing gives the direction in which a place of the sheet looks; shades may
    give every row a colour of its own. Rows of different objects make the sheet
    span a joint.
    """
    common = len({corner.object for row in rows for corner in row}) == 1
    at = [[placed(corner, common) for corner in row] for row in rows]
    height, width = len(rows) - 1, len(rows[0]) - 1
    cells = [(r, c) for r in range(height) for c in range(width)]

    def places_of(r, c):
        return [at[r + down][c + across] for down, across in (A, B, C, D)]

    areas = {}
    for cell in cells:
        a, b, c, d = places_of(*cell)
        areas[cell] = cross(sub(c, b), sub(d, a))
    looks = sum(dot(areas[cell], facing(mean(places_of(*cell)))) for cell in cells)
    sign = 1 if looks > 0 else -1

    smooth = defaultdict(lambda: (0, 0, 0))
    for cell in cells:
        for place in set(places_of(*cell)):
            smooth[place] = add(smooth[place], scaled(areas[cell], sign))

    polygons = []
    for r, c in cells:
        for steps in cell_polygons(strips, mirrored=sign < 0):
            nodes = distinct([(r + down, c + across) for down, across in steps], at)
            if len(nodes) < 3:
                continue
            corners = [rows[i][j] for i, j in nodes]
            spots = [at[i][j] for i, j in nodes]
            if finish.shading == "G":
                normals = [seen_from_parts(unit(smooth[spot]), [corner], common)[0]
                           for spot, corner in zip(spots, corners)]
            else:
                normals = seen_from_parts(unit(area_normal(*spots[:3])), corners, common)
            places = [(j / width, i / height) if finish.spread else (j - c, i - r)
                      for i, j in nodes]
            polygons.append(make_polygon(finish, corners, normals, places,
                                         [shades[i] if shades else None for i, _ in nodes]))
    return polygons


def panel(name, centre, outward, width, height, finish):
    """An upright rectangle; its image stands the right way up for who looks at it."""
    outward = unit(outward)
    right = unit(cross(Y if abs(outward[1]) < 0.9 else Z, outward))
    up = cross(outward, right)
    across, rise = scaled(right, width / 2), scaled(up, height / 2)
    return sheet([on(name, [sub(add(centre, rise), across), add(add(centre, rise), across)]),
                  on(name, [sub(sub(centre, rise), across), add(sub(centre, rise), across)])],
                 finish, towards(outward))


def box(name, low, high, finish, without=(), **special):
    """A box; some sides may be left out, or top and ends have another finish."""
    named = {"left": LEFT, "right": RIGHT, "top": UP, "bottom": DOWN, "front": FRONT, "rear": REAR}
    centre, size = mean([low, high]), sub(high, low)
    polygons = []
    for side, outward in named.items():
        if side in without:
            continue
        width = size[2] if outward[0] else size[0]
        height = size[2] if outward[1] else size[1]
        middle = add(centre, scaled(outward, abs(dot(outward, size)) / 2))
        polygons += panel(name, middle, outward, width, height, special.get(side, finish))
    return polygons


def cap(corners, finish, direction):
    """A convex plate between corners that run around it, as one zigzag strip of triangles."""
    spots = [corner.point for corner in corners]
    area = (0, 0, 0)
    for k in range(1, len(spots) - 1):
        area = add(area, area_normal(spots[0], spots[k], spots[k + 1]))
    if dot(area, direction) < 0:
        corners = corners[::-1]
        area = scaled(area, -1)
    normal = unit(area)

    across = unit(cross(Y if abs(normal[1]) < 0.9 else Z, normal))
    down = cross(across, normal)
    extents = [[dot(corner.point, axis) for corner in corners] for axis in (across, down)]

    def place(corner):
        return tuple((dot(corner.point, axis) - min(extent)) / (max(extent) - min(extent))
                     for axis, extent in zip((across, down), extents))

    zigzag = [corners[0]]
    ahead, behind = corners[1:], []
    while ahead:
        zigzag.append(ahead.pop(0))
        if ahead:
            zigzag.append(ahead.pop())
    polygons = []
    for k in range(len(zigzag) - 2):
        first, second, third = zigzag[k:k + 3]
        order = [second, first, third] if k % 2 else [first, second, third]
        polygons.append(make_polygon(finish, order, [normal] * 3, map(place, order), [None] * 3))
    return polygons


def prism(name, profile, x0, x1, rim, sides=None):
    """A convex profile of (z, y), drawn along x."""
    middle = mean([((x0 + x1) / 2, y, z) for z, y in profile])
    left, right = ([(x, y, z) for z, y in profile] for x in (x1, x0))
    return (sheet([on(name, left + left[:1]), on(name, right + right[:1])], rim, away_from(middle)) +
            cap(on(name, left), sides or rim, LEFT) + cap(on(name, right), sides or rim, RIGHT))


def beam(name, stations, sides, top, bottom):
    """A girder along z, through rectangles of (z, lower y, upper y, half width)."""
    def rail(x_sign, upper):
        return on(name, [(x_sign * half, high if upper else low, z)
                         for z, low, high, half in stations])
    lt, lb, rt, rb = rail(1, True), rail(1, False), rail(-1, True), rail(-1, False)
    ends = [[lt[k], rt[k], rb[k], lb[k]] for k in (0, -1)]
    return (sheet([lt, lb], sides, towards(LEFT)) + sheet([rt, rb], sides, towards(RIGHT)) +
            sheet([lt, rt], top, towards(UP), strips=True) +
            sheet([lb, rb], bottom, towards(DOWN)) +
            sheet([ends[0][:2], ends[0][:1:-1]], PAINT, towards(REAR)) +
            sheet([ends[1][:2], ends[1][:1:-1]], PAINT, towards(FRONT)))


def ring(centre, axis, radius, count):
    """Points around an axis, the first one again at the end."""
    axis = unit(axis)
    side = unit(cross(axis, X if abs(axis[0]) < 0.7 else Y))
    other = cross(axis, side)
    points = []
    for k in range(count):
        angle = 2 * math.pi * k / count
        points.append(add(centre, add(scaled(side, radius * math.cos(angle)),
                                      scaled(other, radius * math.sin(angle)))))
    return points + points[:1]


def lathe(name, axis, outline, count, finish, strips=False):
    """A turned shape: an outline of (radius, place along the axis)."""
    rows = [on(name, ring(scaled(axis, along), axis, radius, count)) for radius, along in outline]
    middle = scaled(axis, sum(along for _, along in outline) / len(outline))
    return sheet(rows, finish, away_from(middle), strips)


def pin(name, centre, half, radius, count=6):
    """A round pin along x with its two ends."""
    ends = [ring(add(centre, (x, 0, 0)), X, radius, count) for x in (half, -half)]
    return (sheet([on(name, end) for end in ends], STEEL_ROUND, away_from(centre)) +
            cap(on(name, ends[0][:-1]), BRIGHT_STEEL, LEFT) +
            cap(on(name, ends[1][:-1]), BRIGHT_STEEL, RIGHT))


def tube(path, radii, count, finish, strips=False, shades=None):
    """A tube along corners that may lie in different parts; such stretches span their joint."""
    spine = [to_world(*corner) for corner in path]
    rows = []
    for k, corner in enumerate(path):
        ahead, behind = spine[min(k + 1, len(path) - 1)], spine[max(k - 1, 0)]
        circle = ring(spine[k], sub(ahead, behind), radii[k], count)
        rows.append(on(corner.object, [from_world(corner.object, point) for point in circle]))
    polygons = []
    for k in range(len(path) - 1):
        one, two = path[k], path[k + 1]
        common = one.object == two.object
        axis = (placed(one, common), placed(two, common))

        def facing(point, start=axis[0], way=unit(sub(axis[1], axis[0]))):
            return sub(point, add(start, scaled(way, dot(sub(point, start), way))))
        polygons += sheet(rows[k:k + 2], finish, facing, strips, shades)
    return polygons


# -------------------------------------------------------------- the machine

def ground():
    stretch = list(range(9000, -9001, -2000))
    road = sheet([on("ground", [(2200, 0, z), (-2200, 0, z)]) for z in stretch], ROAD, towards(UP))
    long_stretch = list(range(9000, -9001, -3000))
    kerbs, fields = [], []
    for side in (1, -1):
        kerbs += sheet([on("ground", [(side * x, y, z) for z in long_stretch])
                        for x, y in ((2200, 0), (2230, 70), (2450, 70))], KERB, towards(UP), strips=True)
        fields += sheet([on("ground", [(side * x, y, z) for z in long_stretch])
                         for x, y in ((2450, 70), (5600, 40), (9000, 260))], FIELD, towards(UP), strips=True)
    return road + kerbs + fields + panel("ground", (0, 10, 0), UP, 4200, 5400, SHADOW)


def backdrop():
    """A wide arc of sky and hills behind the machine."""
    def arc(radius, heights):
        steps = len(heights) - 1
        angles = [math.radians(-30 + 240 * k / steps) for k in range(steps + 1)]
        return on("backdrop", [(radius * math.cos(angle), y, -radius * math.sin(angle))
                               for angle, y in zip(angles, heights)])

    def inwards(point):
        return (-point[0], 0, -point[2])
    level = {y: arc(9000, [y] * 11) for y in (0, 1800, 5000, 7500)}
    far = (900, 1500, 1100, 1900, 1300, 800, 1200, 2000, 1600, 1000, 1400, 1800, 900)
    near = (500, 800, 600, 900, 450, 700, 1000, 600, 400)
    return (sheet([level[7500], level[5000]], ZENITH, inwards) +
            sheet([level[5000], level[1800]], SKY, inwards) +
            sheet([level[0], level[1800]], HAZE, inwards, strips=True) +
            sheet([arc(8800, far), arc(8800, [0] * len(far))], HILL, inwards, strips=True) +
            sheet([arc(8600, near), arc(8600, [0] * len(near))], NEAR_HILL, inwards, strips=True) +
            panel("backdrop", (-3400, 4700, -7600), (3400, -1500, 7600), 2400, 2400, SUN))


def base():
    polygons = box("base", (-650, -180, -1000), (650, 280, 1000), FRAME_FADED)
    for z in (-750, 750):
        polygons += box("base", (650, -120, z - 160), (1000, 140, z + 160), FRAME_FADED, ("left", "right"))
        polygons += box("base", (-1000, -120, z - 160), (-650, 140, z + 160), FRAME_FADED, ("left", "right"))
    polygons += lathe("base", Y, ((620, 280), (620, 460), (720, 500), (720, 600)), 12, RING)
    polygons += panel("base", (0, 60, 1010), FRONT, 1240, 240, STRIPES)
    polygons += panel("base", (0, 60, -1010), REAR, 1240, 240, STRIPES)
    return polygons


def track_loop(radius):
    """A track's outline of (y, z) around the wheels, the first point again at the end."""
    top = [(radius, 1400 - 2800 * k / 6) for k in range(6)]
    rear = [(radius * math.cos(math.pi * k / 4), -1400 - radius * math.sin(math.pi * k / 4))
            for k in range(4)]
    half = top + rear
    loop = half + [(-y, -z) for y, z in half]
    return loop + loop[:1]


def track(name):
    outer, inner = track_loop(450), track_loop(375)

    def rail(loop, x):
        return on(name, [(x, y, z) for y, z in loop])
    polygons = sheet([rail(outer, 250), rail(outer, -250)], TREAD, away_from((0, 0, 0)), strips=True)
    polygons += sheet([rail(inner, 250), rail(inner, -250)], FRAME, lambda point: scaled(point, -1))
    for x, direction in ((250, LEFT), (-250, RIGHT)):
        polygons += sheet([rail(outer, x), rail(inner, x)], TREAD_EDGE, towards(direction))
    polygons += box(name, (-140, -120, -1500), (140, 200, 1500), FRAME_FADED, ("front", "rear"))
    return polygons


def wheel():
    polygons = lathe("wheel", X, ((350, 190), (350, -190)), 10, STEEL_ROUND)
    for x, direction in ((190, LEFT), (-190, RIGHT)):
        polygons += cap(on("wheel", ring((x, 0, 0), X, 350, 10)[:-1]), WHEEL, direction)
        hub = [on("wheel", ring((x, 0, 0), X, 120, 6)), on("wheel", [(x * 1.3, 0, 0)] * 7)]
        polygons += sheet(hub, BRIGHT_STEEL, towards(direction))
    return polygons


def house():
    polygons = box("house", (-1180, 0, -1350), (1180, 240, 1250), PLATE_SHADED,
                   top=TREAD_FLAT, bottom=FRAME)
    polygons += panel("house", (0, 120, 1258), FRONT, 2200, 170, STRIPES)
    tank = ((80, 240), (1150, 240), (1150, 520), (1000, 760), (80, 760))
    polygons += prism("house", tank, -1150, -430, PLATE)
    polygons += box("house", (-1000, 240, 1150), (-580, 420, 1240), STEP, ("rear", "bottom"))
    lug = ((420, 240), (1020, 240), (860, 690), (720, 740), (580, 690))
    for x in (150, -210):
        polygons += prism("house", lug, x, x + 60, PAINT)
    polygons += pin("house", (0, 560, 720), 240, 70)
    return polygons


def engine():
    hood = ((-1350, 240), (-250, 240), (-250, 1000), (-380, 1120), (-1250, 1120), (-1350, 1000))
    polygons = prism("engine", hood, -1130, 1130, PLATE)
    for x, direction in ((1138, LEFT), (-1138, RIGHT)):
        polygons += panel("engine", (x, 660, -800), direction, 760, 480, GRILLE)

    def tail(width, y):
        return on("engine", [(1180 * width * math.cos(math.pi * k / 8), y,
                              -1350 - 450 * width * math.sin(math.pi * k / 8)) for k in range(9)])
    rows = [tail(0.9, 1000), tail(1, 880), tail(1, 260), tail(0.94, 110)]
    polygons += sheet(rows, PLATE_BENT, away_from((0, 500, -1350)), strips=True)
    polygons += cap(rows[0], PAINT, UP) + cap(rows[-1], FRAME, DOWN)
    polygons += panel("engine", (0, 600, -1810), REAR, 900, 420, NAME_PLATE)
    for x in (850, -850):
        polygons += panel("engine", (x, 760, -1740), REAR, 150, 100, TAIL_LIGHT)
    stack = [Corner("engine", (-560, y, -620)) for y in (1110, 1560)]
    polygons += tube(stack, (75, 75), 8, STEEL_ROUND)
    polygons += cap(on("engine", ring(stack[1].point, Y, 75, 8)[:-1]), FRAME, UP)
    return polygons


def cab():
    lower = ((-520, 0), (560, 0), (620, 400), (600, 520), (-520, 520))
    polygons = prism("cab", lower, -400, 400, PLATE)
    posts = (((-520, 520), (-440, 520), (-440, 1400), (-520, 1400)),
             ((520, 520), (600, 520), (440, 1400), (360, 1400)))
    for post in posts:
        for x in (-400, 340):
            polygons += prism("cab", post, x, x + 60, PAINT)
    roof = ((-540, 1400), (470, 1400), (430, 1465), (-510, 1465))
    polygons += prism("cab", roof, -415, 415, PAINT)
    polygons += box("cab", (-180, 520, -260), (180, 650, 120), SEAT, ("bottom",))
    polygons += box("cab", (-180, 650, -260), (180, 1120, -150), SEAT, ("bottom",))
    polygons += box("cab", (130, 520, 220), (270, 780, 360), FRAME, ("bottom",))
    polygons += panel("cab", (200, 880, 280), (0, 0.4, -1), 260, 160, SCREEN)
    mast = [Corner("cab", (330, y, -430)) for y in (1460, 2000)]
    polygons += tube(mast, (14, 8), 4, STEEL_ROUND)
    rows = [on("cab", [(330, 1990, -440), (330, 1880, -800)]),
            on("cab", [(330, 1770, -440), (330, 1880, -800)])]
    return polygons + sheet(rows, PENNANT, towards(LEFT)) + sheet(rows, PENNANT, towards(RIGHT))


def glass():
    def pane(corners, direction):
        return sheet([on("glass", corners[:2]), on("glass", corners[2:])], GLASS, towards(direction))
    polygons = pane([(340, 1400, 395), (-340, 1400, 395), (340, 520, 555), (-340, 520, 555)], FRONT)
    polygons += pane([(-340, 1400, -500), (340, 1400, -500), (-340, 520, -500), (340, 520, -500)], REAR)
    for x, direction in ((385, LEFT), (-385, RIGHT)):
        polygons += pane([(x, 1400, -440), (x, 1400, 360), (x, 520, -440), (x, 520, 520)], direction)
    return polygons


def beacon():
    polygons = lathe("beacon", Y, ((110, 0), (95, 50)), 8, FRAME)
    polygons += lathe("beacon", Y, ((85, 50), (80, 150), (50, 205), (0, 225)), 8, BEACON)
    for direction in (FRONT, REAR, LEFT, RIGHT):
        polygons += panel("beacon", (0, 140, 0), direction, 640, 640, HALO)
    return polygons


def lamps():
    polygons = []
    for x in (260, -260):
        polygons += box("lamps", (x - 80, 10, -40), (x + 80, 150, 80), FRAME)
        polygons += panel("lamps", (x, 80, 86), FRONT, 130, 120, LENS)
        cone = [on("lamps", ring((x, 80, z), Z, radius, 6)) for z, radius in ((95, 60), (2200, 420))]
        polygons += sheet(cone, BEAM, away_from((x, 80, -900)), strips=True)
    return polygons


def boom():
    girder = ((-140, -110, 110, 120), (60, -190, 200, 145), (800, 60, 540, 165), (1550, 270, 800, 175),
              (2050, 310, 780, 175), (2900, 150, 500, 150), (3560, -50, 230, 125), (3720, 20, 160, 120))
    polygons = beam("boom", girder, PLATE, PLATE_ROUND, PAINT_ROUND)
    polygons += prism("boom", ((1450, 760), (1780, 770), (1680, 930), (1560, 930)), -70, 70, PAINT)
    for x, direction in ((182, LEFT), (-182, RIGHT)):
        polygons += panel("boom", (x, 540, 1800), direction, 760, 340, NAME_PLATE)
    return polygons + pin("boom", (0, 90, 3600), 190, 75) + pin("boom", (0, 430, 1480), 310, 60)


def arm():
    girder = ((-640, 220, 330, 80), (-450, 150, 360, 105), (-80, -170, 330, 112), (200, -190, 270, 112),
              (1500, -100, 130, 95), (2020, -95, 95, 85), (2180, -50, 50, 80))
    polygons = beam("arm", girder, PLATE, PLATE_ROUND, PAINT_ROUND)
    polygons += prism("arm", ((60, 280), (330, 230), (240, 430), (170, 430)), -60, 60, PAINT)
    for x, direction in ((112, LEFT), (-112, RIGHT)):
        polygons += panel("arm", (x, 10, 1150), direction, 520, 150, STRIPES)
    return polygons + pin("arm", (0, 0, 2100), 150, 60)


def bucket():
    shell = ((100, -140), (90, 60), (220, 260), (540, 390), (920, 320), (1170, 90), (1260, -250))
    lining = tuple(mix(point, (600, -40), 0.07) for point in shell)

    def rail(outline, x):
        return on("bucket", [(x, y, z) for z, y in outline])
    middle = (0, -40, 600)
    polygons = sheet([rail(shell, 430), rail(shell, -430)], PLATE_ROUND, away_from(middle), strips=True)
    polygons += sheet([rail(lining, 405), rail(lining, -405)], BUCKET_IN,
                      lambda point: sub(middle, point), strips=True)
    for x, direction in ((430, LEFT), (-430, RIGHT)):
        polygons += cap(rail(shell, x), PLATE, direction)
        polygons += cap(rail(lining, math.copysign(405, x)), FRAME, scaled(direction, -1))
    for end in (0, -1):
        edges = [rail((shell[end],), 430) + rail((shell[end],), -430),
                 rail((lining[end],), 405) + rail((lining[end],), -405)]
        polygons += sheet(edges, BRIGHT_STEEL, towards(DOWN))
    for x in (-380, -190, 0, 190, 380):
        root = on("bucket", [(x - 45, -225, 1200), (x + 45, -225, 1200), (x + 45, -215, 1266),
                             (x - 45, -215, 1266), (x - 45, -225, 1200)])
        polygons += sheet([root, on("bucket", [(x, -470, 1330)] * 5)], BRIGHT_STEEL,
                          away_from((x, -300, 1250)))
    ear = ((-100, 0), (-40, -100), (160, -120), (200, 150), (60, 260), (-60, 140))
    for x in (90, -130):
        polygons += prism("bucket", ear, x, x + 40, PAINT)
    return polygons


def rams():
    """The hydraulic rams: one end lies in one part, the other end in the next one."""
    paths = [((Corner("house", (x, 330, 1180)), Corner("boom", (x * 0.9, 430, 1480))), (85, 55))
             for x in (290, -290)]
    paths += [((Corner("boom", (0, 880, 1620)), Corner("arm", (0, 275, -570))), (80, 50)),
              ((Corner("arm", (0, 390, 200)), Corner("bucket", (0, 200, 50))), (65, 42))]
    polygons = []
    for path, radii in paths:
        polygons += tube(path, radii, 8, RAM, shades=((170, 120, 20), (220, 222, 226)))
    return polygons


def hoses():
    """Rubber over the joints: hoses at the elbow, a boot at the boom's foot, a lamp cable."""
    polygons = []
    for x in (75, -75):
        path = [Corner("boom", (x, 660, 2500)), Corner("boom", (x, 480, 3150)),
                Corner("arm", (x, 400, -180)), Corner("arm", (x, 330, 380))]
        polygons += tube(path, (30, 30, 30, 30), 5, HOSE, strips=True)
    boot = (Corner("house", (0, 300, 1020)), Corner("boom", (0, 120, 760)))
    polygons += tube(boot, (110, 80), 8, RUBBER)
    cable = (Corner("cab", (330, 1440, 60)), Corner("lamps", (310, 90, -38)))
    return polygons + tube(cable, (12, 12), 3, CABLE, strips=True)


def crawler():
    return (ground() + backdrop() + base() + track("track_l") + track("track_r") + wheel() + house() +
            engine() + cab() + boom() + arm() + bucket() + rams() + hoses() + beacon() + lamps() + glass())


# ------------------------------------------------------------------ motions

Step = namedtuple("Step", "frames code values label", defaults=("",))


@dataclass
class Actor:
    """An animated part: where its sequence starts, and its further entries."""
    part: str
    start: str
    headers: tuple


@dataclass
class Motion:
    name: str
    note: str
    actors: list
    sequences: dict = field(default_factory=dict)   # label: steps, and how they end


def moved(name, x=0, y=0, z=0):
    """A place near the one where a part rests."""
    return add(PARTS[NUMBER[name]].place, (x, y, z))


def tilt(degrees):
    return (turn(degrees), 0, 0)


def swing(degrees):
    return (0, turn(degrees), 0)


def times(x, y=None, z=None):
    """Three factors of a size, or one for all."""
    return (round(x * ONE),) if y is None else tuple(round(k * ONE) for k in (x, y, z))


def drive():
    """There and back again. The wheels turn by the way that their rim goes."""
    way = 3500
    rolled = tilt(360 * way / (2 * math.pi * 450))
    half = scaled(rolled, 0.5)
    actors = [Actor("base", "ahead", (("START", "ahead", 0), ("START", "park", 1), ("KEY2", "ahead", "back"))),
              Actor("track_l", "rumble", (("START", "rumble", 0),)),
              Actor("track_r", "rumble_r", (("START", "rumble_r", 0),))]
    actors += [Actor(part.name, "spin", (("START", "spin", 0), ("KEY2", "spin", "spin_back")))
               for part in WHEELS]
    actors += [Actor("house", "sway", (("START", "sway", 0),)),
               Actor("boom", "carry", (("START", "carry", 0),)),
               Actor("beacon", "flash", (("START", "flash", 0),))]
    left, right = (lambda y: moved("track_l", y=y)), (lambda y: moved("track_r", y=y))
    return Motion("drive", "drives ahead and back", actors, {
        "ahead": ([Step(60, "ps0r0t1", moved("base")), Step(60, "ps0r0t1", moved("base", y=12, z=way / 2)),
                   Step(60, "ps0r0t1", moved("base", z=way), "back"),
                   Step(60, "ps0r0t1", moved("base", y=12, z=way / 2))], "GOTO ahead"),
        "park": ([Step(30, "ps0r0t1", moved("base"))], "END"),
        "rumble": ([Step(4, "ps0r0t9", left(6)), Step(4, "ps0r0t9", left(-4))], "GOTO rumble"),
        "rumble_r": ([Step(4, "ps0r0t9", right(-4)), Step(4, "ps0r0t9", right(6))], "GOTO rumble_r"),
        "spin": ([Step(60, "ps0r1t0", (0, 0, 0)), Step(60, "ps0r1t0", half),
                  Step(60, "ps0r1t0", rolled, "spin_back"), Step(60, "ps0r1t0", half)], "GOTO spin"),
        "sway": ([Step(40, "ps0r1t9", moved("house") + swing(22)),
                  Step(40, "ps0r1t9", moved("house", y=8) + swing(26))], "GOTO sway"),
        "carry": ([Step(40, "ps0r1t0", tilt(-38)), Step(40, "ps0r1t0", tilt(-36.5))], "GOTO carry"),
        "flash": ([Step(10, "ps1r1t9", moved("beacon") + swing(90 * k) + times(*[1.15 if k % 2 else 1.0] * 3))
                   for k in range(4)], "GOTO flash")})


def dig():
    """Reaches out, digs, lifts, swings to the side and dumps."""
    actors = [Actor("house", "slew", (("START", "slew", 0), ("KEY2", "slew", "slew_home"))),
              Actor("boom", "lift", (("START", "lift", 0),)),
              Actor("arm", "crowd", (("START", "crowd", 0), ("KEY2", "crowd", "crowd_in"))),
              Actor("bucket", "curl", (("START", "curl", 0),)),
              Actor("lamps", "look", (("START", "look", 0),)),
              Actor("beacon", "pulse", (("START", "pulse", 0), ("START", "dark", 1)))]
    return Motion("dig", "digs in front and dumps at the side", actors, {
        "slew": ([Step(50, "ps0r1t0", swing(0)), Step(110, "ps0r1t0", swing(0)),
                  Step(60, "ps0r1t0", swing(80)), Step(60, "ps0r1t0", swing(80), "slew_home")], "GOTO slew"),
        "lift": ([Step(50, "ps0r1t0", tilt(-12)), Step(60, "ps0r1t0", tilt(-18)),
                  Step(50, "ps0r1t0", tilt(-46)), Step(120, "ps0r1t0", tilt(-40))], "GOTO lift"),
        "crowd": ([Step(50, "ps0r1t1", moved("arm") + tilt(58)),
                   Step(60, "ps0r1t1", moved("arm") + tilt(112), "crowd_in"),
                   Step(50, "ps0r1t1", moved("arm") + tilt(104)),
                   Step(120, "ps0r1t1", moved("arm") + tilt(76))], "GOTO crowd"),
        "curl": ([Step(50, "ps9r1t0", tilt(-20) + times(1)), Step(60, "ps9r1t0", tilt(46) + times(1)),
                  Step(50, "ps9r1t0", tilt(62) + times(1)),
                  Step(120, "ps9r1t0", tilt(-48) + times(1.02))], "GOTO curl"),
        "look": ([Step(140, "ps1r1t1", moved("lamps") + tilt(14) + times(1, 1, 1)),
                  Step(140, "ps1r1t1", moved("lamps") + tilt(24) + times(1, 1, 1.25))], "GOTO look"),
        "pulse": ([Step(8, "ps1r0t0", times(1, 1, 1)), Step(8, "ps1r0t0", times(1.2, 1.2, 1.2))], "GOTO pulse"),
        "dark": ([Step(1, "ps1r0t0", times(0.5, 0.5, 0.5))], "END")})


def wave():
    """Lifts its arm, waves three times with the bucket, and bows."""
    waves = [Step(14, "ps0r1t0", tilt(-30 if k % 2 else 40)) for k in range(6)]
    actors = [Actor("boom", "raise", (("START", "raise", 0),)),
              Actor("arm", "reach", (("START", "reach", 0),)),
              Actor("bucket", "greet", (("START", "greet", 0), ("KEY2", "greet", "rest"))),
              Actor("house", "bow", (("START", "bow", 0),))]
    return Motion("wave", "waves with the bucket, once", actors, {
        "raise": ([Step(40, "ps0r1t0", tilt(-38)), Step(100, "ps0r1t0", tilt(-62)),
                   Step(40, "ps0r1t0", tilt(-38))], "END"),
        "reach": ([Step(40, "ps9r1t1", moved("arm") + tilt(99) + times(1)),
                   Step(100, "ps9r1t1", moved("arm") + tilt(34) + times(1)),
                   Step(40, "ps9r1t1", moved("arm") + tilt(99) + times(1))], "END"),
        "greet": ([Step(40, "ps0r1t0", tilt(28)), *waves, Step(56, "ps0r1t0", tilt(28), "rest")], "END"),
        "bow": ([Step(140, "ps9r0t9", moved("house") + times(1)),
                 Step(20, "ps9r0t9", moved("house", y=-10) + times(0.98)),
                 Step(20, "ps9r0t9", moved("house") + times(1))], "END")})


# ------------------------------------------------------------------- tables

class Model:
    """The polygons with the numbers of their vertices and normals.

    Vertices and normals are numbered object by object, so that an object is one
    range of each. A normal of a polygon over a joint is kept apart from its
    part's own ones.
    """

    def __init__(self, polygons):
        self.polygons = polygons
        self.vertices = self.numbered(corner for polygon in polygons for corner in polygon.corners)
        self.normals = self.numbered(key for polygon in polygons for key in self.normal_keys(polygon))

    @staticmethod
    def numbered(keys):
        keys = sorted(dict.fromkeys(keys), key=lambda key: OBJECTS.index(key[0]))
        return {key: number for number, key in enumerate(keys)}

    @staticmethod
    def normal_keys(polygon):
        return [(corner.object, tuple(round(n, 6) + 0.0 for n in normal), polygon.shared)
                for corner, normal in zip(polygon.corners, polygon.normals)]

    def vertex_numbers(self, polygon):
        return [self.vertices[corner] for corner in polygon.corners]

    def normal_numbers(self, polygon):
        return [self.normals[key] for key in self.normal_keys(polygon)]

    def object_range(self, name):
        """The first and last vertex of an object."""
        numbers = [number for corner, number in self.vertices.items() if corner.object == name]
        return numbers[0], numbers[-1]


def material_numbers(polygon):
    """The numbers of a material line after its four words."""
    finish, numbers = polygon.finish, []

    def pairs(values, width):
        flat = [number for value in values for number in value]
        return flat + [0] * (4 * width - len(flat))
    if finish.kind in TEXTURED:
        numbers.append(SLOT[finish.image])
        if finish.kind in WINDOWED:
            image = IMAGES[SLOT[finish.image]]
            numbers += [image.width, image.height, 0, 0]
        numbers += pairs(polygon.texels, 2)
    if finish.kind in CORNER_COLOURS:
        return tuple(numbers + pairs(polygon.colours, 3))
    return tuple(numbers + [number for colour in polygon.colours for number in colour])


def ranges(numbers):
    """Rising numbers as items: single ones, and ranges with a hyphen."""
    items, numbers = [], list(numbers)
    while numbers:
        last = 0
        while last + 1 < len(numbers) and numbers[last + 1] == numbers[last] + 1:
            last += 1
        items.append(f"{numbers[0]}-{numbers[last]}" if last else str(numbers[0]))
        numbers = numbers[last + 1:]
    return items


def strips(model):
    """Every polygon in one mesh: chains of triangles, and single polygons.

    The polygons of a chain have the same finish and the same parts. The chain
    begins with a triangle as it stands; each further one has the last two
    vertices of the chain and one new vertex.
    """
    groups = defaultdict(list)
    for number, polygon in enumerate(model.polygons):
        finish = polygon.finish
        place = "joint" if polygon.shared else polygon.corners[0].object
        groups[place, finish.flag, finish.kind, finish.shading].append(number)

    meshes = []
    for key, numbers in groups.items():
        triangles = {n: model.vertex_numbers(model.polygons[n]) for n in numbers
                     if len(model.polygons[n].corners) == 3}
        singles = [[n] for n in numbers if n not in triangles]
        meshes += [(key, mesh) for mesh in chains(triangles) + singles]
    return meshes


def chains(triangles):
    """The triangles, a number with three vertices each, as chains; the longest ones first."""
    beside = defaultdict(list)
    for number, corners in triangles.items():
        for k in range(3):
            beside[frozenset((corners[k], corners[k - 1]))].append(number)

    def chain_from(start, left):
        chain, used = [start], {start}
        one, two = triangles[start][1:]
        while True:
            following = [n for n in beside[frozenset((one, two))] if n in left and n not in used
                         and set(triangles[n]) != set(triangles[chain[-1]])]
            if not following:
                return chain
            chain.append(following[0])
            used.add(following[0])
            one, two = two, next(v for v in triangles[following[0]] if v not in (one, two))

    found, left = [], dict.fromkeys(triangles)
    while left:
        best = max((chain_from(start, left) for start in left), key=len)
        found.append(best)
        for number in best:
            del left[number]
    return found


# ------------------------------------------------------------------ writers

def numbers_text(values):
    return " ".join(f"{value:g}" if isinstance(value, float) else str(value) for value in values)


def geometry(model, in_model_space=False):
    """GEO: vertices, normals and polygons."""
    shapes = model.polygons
    lines = ["@GEO970401",
             "# The excavator " + ("in model space, every joint at zero" if in_model_space else
                                   "with each part seen from its own joint"),
             "# vertices, normals, polygons",
             f"{len(model.vertices)} {len(model.normals)} {len(shapes)}"]
    heading = None
    for name, point in model.vertices:
        if name != heading:
            heading = name
            lines.append(f"# vertices: {name}")
        if in_model_space:
            point = add(point, pivot(carriers(name)[0]))
        lines.append(numbers_text(point))
    heading = None
    for name, normal, _ in model.normals:
        if name != heading:
            heading = name
            lines.append(f"# normals: {name}")
        lines.append(" ".join(f"{n:.6f}".rstrip("0").rstrip(".") for n in normal))
    lines.append("# polygons: kind (0 triangle, 1 quadrangle), four vertices, four normals")
    for polygon in shapes:
        spare = [0] * (4 - len(polygon.corners))
        lines.append(numbers_text([1 - len(spare)] + model.vertex_numbers(polygon) + spare +
                                  model.normal_numbers(polygon) + spare))
    return lines


def materials(model):
    """SRF: one block for each finish, polygons that look the same on one line."""
    finishes = defaultdict(lambda: defaultdict(list))
    for number, polygon in enumerate(model.polygons):
        finishes[polygon.finish][material_numbers(polygon)].append(number)
    body, count = [], 0
    for finish, looks in finishes.items():
        body.append(f"# {finish.note}" + (f" ({finish.image})" if finish.image else ""))
        for look, polygons in looks.items():
            items = ranges(polygons)
            while items:
                head, items = items[:10], items[10:]
                body.append(f"{','.join(head)} {finish.flag:x} {finish.shading} {finish.kind} "
                            f"{numbers_text(look)}")
                count += 1
    return ["@SRF970401", "# polygons, flag, shading, kind, then the numbers of the kind", str(count)] + body


def coordinates(model, group_file=None):
    """FRM: the hierarchy, then the vertices or the objects of each part."""
    lines = ["@FRM970401",
             "# the group file, or NULL when the vertices are named here", f"SQX={group_file or 'NULL'}",
             "# the number of coordinates", str(len(PARTS))]
    for number, part in enumerate(PARTS):
        lines.append(f"# {number} {part.name}, carried by {part.parent}: matrix, place, angles and parent"
                     if number else f"# 0 {part.name}: matrix, place, angles and parent")
        for row in rotation(part.axis, part.degrees):
            lines.append(numbers_text(round(value * ONE) for value in row))
        lines.append(numbers_text(part.place))
        angles = [turn(part.degrees) if axis == part.axis else 0 for axis in "xyz"]
        lines.append(numbers_text(angles + [NUMBER[part.parent]]))
    lines.append("# which " + ("objects" if group_file else "vertices") + " each coordinate carries")
    for number, part in enumerate(PARTS):
        if group_file:
            lines.append(f"{number} {len(part.objects)} {','.join(part.objects)}")
            continue
        held = [model.object_range(name) for name in part.objects]
        count = sum(last - first + 1 for first, last in held)
        lines.append(f"{number} {count} " + ",".join(f"{first}-{last}" for first, last in held))
    return lines


def groups(model):
    """SQX: the vertices of each object."""
    lines = ["@SQX970401", "# the number of groups", str(len(OBJECTS)), "# name, number of vertices, vertices"]
    for name in OBJECTS:
        first, last = model.object_range(name)
        lines.append(f"{name} {last - first + 1} {first}-{last}")
    return lines


def pivots():
    """AXS: the joints in model space. The wheels share one object, so that one pivot serves all."""
    first = [carriers(name)[0] for name in OBJECTS]
    chosen = [part for part in PARTS if part in first and pivot(part) != (0, 0, 0)]
    lines = ["@AXS970401", "# the number of pivots", str(len(chosen)), "# coordinate, place of its joint"]
    for part in chosen:
        lines += [f"# {part.name}", numbers_text((NUMBER[part.name],) + pivot(part))]
    return lines


def mesh_file(model):
    """BND: every mesh with its number of polygons and the polygons."""
    meshes = strips(model)
    lines = ["@BND970401", "# the number of meshes", str(len(meshes))]
    heading = None
    for (place, flag, kind, shading), mesh in meshes:
        if heading != (place, flag, kind, shading):
            heading = (place, flag, kind, shading)
            lines.append(f"# {place}: kind {kind}, shading {shading}, flag 0x{flag:02x}")
        lines.append(numbers_text([len(mesh)] + mesh))
    return lines


def motion_file(motion):
    """CLP: the actors, their sequences, and the key frames by their type."""
    lines = ["@CLP970401", f"# {motion.name}: {motion.note}", "COORDINATE", str(len(motion.actors))]
    for actor in motion.actors:
        lines += [f"# {actor.part}", f"{NUMBER[actor.part]} {len(actor.headers)} {actor.start}"]
        for word, label, last in actor.headers:
            lines.append(f"{word} {label} " + (f"0x{last:x}" if word == "START" else last))
    keys = defaultdict(dict)
    lines.append("# sequences: frames, type of key frame, number of the key frame")
    for label, (steps, ending) in motion.sequences.items():
        lines.append(label)
        for step in steps:
            number = keys[step.code].setdefault(rounded(step.values), len(keys[step.code]))
            lines += ([step.label] if step.label else []) + [f"SEQ {step.frames} {step.code} {number}"]
        lines.append("END 0x0" if ending == "END" else f"{ending} 0x0 0x0")
    lines.append("# key frames: place, angles, size, as far as the type has them")
    for code, values in keys.items():
        lines.append(f"TYPE {code}")
        lines += [numbers_text(value) for value in values]
    return lines


def description(note, components, motions):
    """MQF: the names of all the other files."""
    lines = ["@MQF970401", f"# {note}"]
    lines += [f"{key}={name}" for key, name in components.items()]
    lines += ["# textures", f"NTEX={len(IMAGES)}"]
    lines += [f"TEX[{slot}]={image.name}" for slot, image in enumerate(IMAGES)]
    lines += ["# motions", f"NCLP={len(motions)}"]
    return lines + [f"CLP[{slot}]=crawler_{motion.name}.clp" for slot, motion in enumerate(motions)]


def image_block(place, columns, height, halves):
    """A block of an image file: its length, its place, its size, and its 16-bit columns."""
    x, y = place
    data = struct.pack(f"<4H{len(halves)}H", x, y, columns, height, *halves)
    return struct.pack("<I", 4 + len(data)) + data


def image_file(image):
    """PXL: the palette, if there is one, and the texels, lowest bits first."""
    mode = {4: 0, 8: 1, 16: 2}[image.bits]
    data = struct.pack("<2I", 0x10, mode | (8 if image.palette else 0))
    if image.palette:
        data += image_block(image.palette_place, len(image.palette), 1, image.palette)
    packed = 16 // image.bits
    halves = [sum(texel << image.bits * k for k, texel in enumerate(row[x:x + packed]))
              for row in image.texels for x in range(0, image.width, packed)]
    return data + image_block(image.place, image.columns, image.height, halves)


def write_text(name, lines):
    (FOLDER / name).write_text("\n".join(lines) + "\n", encoding="ascii", newline="\n")


def main():
    model = Model(crawler())
    motions = [drive(), dig(), wave()]

    for image in IMAGES:
        (FOLDER / image.name).write_bytes(image_file(image))
    for motion in motions:
        write_text(f"crawler_{motion.name}.clp", motion_file(motion))

    write_text("crawler.geo", geometry(model))
    write_text("crawler.srf", materials(model))
    write_text("crawler.frm", coordinates(model))
    parts = {"GEO": "crawler.geo", "SRF": "crawler.srf", "FRM": "crawler.frm"}
    write_text("crawler.mqf", description("A tracked excavator", parts, motions))

    write_text("crawler_strips.bnd", mesh_file(model))
    write_text("crawler_strips.mqf", description("The excavator in strips of triangles",
                                                 {**parts, "BND": "crawler_strips.bnd"}, motions))

    write_text("crawler_groups.geo", geometry(model, in_model_space=True))
    write_text("crawler_groups.frm", coordinates(model, group_file="crawler_groups.sqx"))
    write_text("crawler_groups.sqx", groups(model))
    write_text("crawler_groups.axs", pivots())
    parts = {"GEO": "crawler_groups.geo", "SRF": "crawler.srf", "AXS": "crawler_groups.axs",
             "FRM": "crawler_groups.frm"}
    write_text("crawler_groups.mqf", description("The excavator in model space, with groups and pivots",
                                                 parts, motions))


if __name__ == "__main__":
    main()
