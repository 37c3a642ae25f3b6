#!/usr/bin/env python3
"""Packs a model into one input of fuzz_convert, or unpacks an input into a folder.

    container.py pack MODEL.mqf [OPTION...] > INPUT     run in the model's folder
    container.py unpack INPUT FOLDER                    then: cd FOLDER && sh command
"""
import pathlib
import re
import sys

MARK = b"\n%% "


def pack(mqf, options):
    parts = {b"m.mqf": pathlib.Path(mqf).read_bytes()}
    names = re.findall(rb"^[^#\n]*=[ \t]*([^\s#]+)", parts[b"m.mqf"], re.M)
    while names:
        name = names.pop(0)
        path = pathlib.Path(name.decode("latin-1"))
        if name not in parts and path.is_file():
            parts[name] = path.read_bytes()
            if parts[name].startswith(b"@FRM"):
                names += re.findall(rb"=[ \t]*([^\s#]+)", parts[name])
    files = (MARK + name + b"\n" + data for name, data in parts.items())
    sys.stdout.buffer.write(" ".join(options).encode() + b"".join(files))


def unpack(container, folder):
    line, *files = pathlib.Path(container).read_bytes().split(MARK)
    for file in files:
        name, _, data = file.partition(b"\n")
        path = pathlib.Path(folder, name.decode("latin-1").lstrip("/").replace("..", "__"))
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(data)
    pathlib.Path(folder, "command").write_bytes(b"mqf2vxb " + line + b" m.mqf\n")


if len(sys.argv) >= 3 and sys.argv[1] == "pack":
    pack(sys.argv[2], sys.argv[3:])
elif len(sys.argv) == 4 and sys.argv[1] == "unpack":
    unpack(*sys.argv[2:])
else:
    sys.exit(__doc__)
