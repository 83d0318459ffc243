"""A plain scan of a system root with plistlib and re: what the direct scan is held against."""
import os
import plistlib
import re
import struct
import sys


def labels(folder):
    found = {}
    for name in sorted(os.listdir(folder)):
        if not name.endswith(".sh"):
            continue
        with open(os.path.join(folder, name), encoding="utf-8") as file:
            text = file.read()
        head = re.match(r"\s*([^)]*)\)", text)
        values = dict(re.findall(r"^\s*(\w+)=[\"']?([^\"'\n$(]*)[\"']?\s*$", text, re.M))
        if not head or "name" not in values:
            continue
        bundle = values.get("appName") or values["name"] + ".app"
        found.setdefault(bundle.lower(), []).append((re.split(r"[|\\\s]+", head.group(1)), values))
    return found


def bundles(folder, depth=0):
    for entry in os.scandir(folder):
        if not entry.is_dir():
            continue
        if entry.name.endswith(".app"):
            yield entry.path
        elif depth < 2:
            yield from bundles(entry.path, depth + 1)


def team(path):
    with open(path, "rb") as file:
        data = file.read()
    offset = 0
    if data[:4] == b"\xca\xfe\xba\xbe":
        count = struct.unpack(">I", data[4:8])[0]
        slices = [struct.unpack(">5I", data[8 + i * 20:28 + i * 20]) for i in range(count)]
        offset = max(slices, key=lambda item: item[0] == 0x0100000C)[2]
    at = offset + 32
    for _ in range(struct.unpack("<I", data[offset + 16:offset + 20])[0]):
        command, size = struct.unpack("<2I", data[at:at + 8])
        if command == 0x1D:
            blob = offset + struct.unpack("<I", data[at + 8:at + 12])[0]
            directory = blob + struct.unpack(">I", data[blob + 16:blob + 20])[0]
            text = struct.unpack(">I", data[directory + 48:directory + 52])[0] + directory
            return data[text:data.index(b"\0", text)].decode()
        at += size
    return None


def best(candidates):
    """Plain labels before those of early builds, then the shortest, then by name."""
    return min(((label, values) for patterns, values in candidates for label in patterns[:1]),
               key=lambda item: ("-" in item[0] or "_" in item[0], len(item[0]), item[0]))


def main(root):
    known = labels(os.path.join(root, "Library/Application Support/Corvane/fragments/labels"))
    for path in sorted(bundles(os.path.join(root, "Applications"))):
        matching = known.get(os.path.basename(path).lower())
        if not matching:
            continue
        with open(os.path.join(path, "Contents/Info.plist"), "rb") as file:
            info = plistlib.load(file)
        store = os.path.exists(os.path.join(path, "Contents/_MASReceipt/receipt"))
        signer = team(os.path.join(path, "Contents/MacOS", info["CFBundleExecutable"]))
        label, values = best(matching)
        version = info[values.get("versionKey", "CFBundleShortVersionString")]
        foreign = signer != values.get("expectedTeamID")
        print(os.path.relpath(path, root), label, version, str(foreign).lower(), str(store).lower(), sep="\t")


main(sys.argv[1])
