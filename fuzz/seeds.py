#!/usr/bin/env python3
"""Writes seed inputs taken from the shared test corpora into each fuzz target's run corpus.

The committed seeds (fuzz/corpus/) are small documents of our own; the public corpora are read
from where they live instead of being copied into the repository: every JSON_checker and
round-trip file goes to the text parser as it is, and pieces of the benchmark documents
(twitter.json, citm_catalog.json, canada.json) go to every target that reads documents, each in
that target's input form.

    fuzz/seeds.py SHARED_DIR CORPUS_DIR TARGET

SHARED_DIR holds test-data/ and bench-data/ (missing files are skipped); the seeds for TARGET
are written into CORPUS_DIR.
"""
import json
import pathlib
import struct
import sys


def msgpack(value):
    """The MessagePack form of a value read by the json module (shortest forms)."""
    if value is None:
        return b"\xc0"
    if value is True:
        return b"\xc3"
    if value is False:
        return b"\xc2"
    if isinstance(value, int):
        if -32 <= value <= 0x7F:
            return struct.pack("b", value) if value < 0 else bytes([value])
        forms = ((0xCC, ">B"), (0xCD, ">H"), (0xCE, ">I"), (0xCF, ">Q")) if value > 0 else \
            ((0xD0, ">b"), (0xD1, ">h"), (0xD2, ">i"), (0xD3, ">q"))
        for code, form in forms:
            try:
                return bytes([code]) + struct.pack(form, value)
            except struct.error:
                continue
        raise ValueError(value)
    if isinstance(value, float):
        return b"\xcb" + struct.pack(">d", value)
    if isinstance(value, str):
        data = value.encode("utf-8", "surrogatepass")
        return sized(data, 0xA0, 31, b"\xd9", b"\xda", b"\xdb") + data
    if isinstance(value, list):
        return sized(value, 0x90, 15, None, b"\xdc", b"\xdd") + b"".join(map(msgpack, value))
    return sized(value, 0x80, 15, None, b"\xde", b"\xdf") + b"".join(
        msgpack(k) + msgpack(v) for k, v in value.items())


def sized(items, fix_base, fix_max, code8, code16, code32):
    count = len(items)
    if count <= fix_max:
        return bytes([fix_base | count])
    if code8 and count <= 0xFF:
        return code8 + bytes([count])
    if count <= 0xFFFF:
        return code16 + struct.pack(">H", count)
    return code32 + struct.pack(">I", count)


def first_path(value, steps=4):
    """A path down the first members and elements of a document."""
    path = []
    while steps and isinstance(value, (dict, list)) and value:
        if isinstance(value, dict):
            key = next(iter(value))
            path.append(key)
            value = value[key]
        else:
            path.append(str(len(value) - 1))
            value = value[-1]
        steps -= 1
    return "/".join(path)


def pieces(bench):
    """Named pieces of the benchmark documents, small enough for the targets' input limits."""
    def load(name):
        path = bench / name
        return json.loads(path.read_bytes()) if path.exists() else None

    twitter, citm, canada = load("twitter.json"), load("citm_catalog.json"), load("canada.json")
    if twitter:
        status = twitter["statuses"][0]
        yield "twitter-status", status
        yield "twitter-user", status["user"]
        yield "twitter-entities", status["entities"]
        yield "twitter-metadata", twitter["search_metadata"]
    if citm:
        yield "citm-event", next(iter(citm["events"].values()))
        yield "citm-areas", dict(list(citm["areaNames"].items())[:20])
        yield "citm-performance", citm["performances"][0]
    if canada:
        ring = canada["features"][0]["geometry"]["coordinates"][0]
        yield "canada-coordinates", {"type": "Polygon", "coordinates": [ring[:60]]}


def main():
    shared, corpus, wanted = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3]

    def write(target, name, data):
        if target == wanted:
            (corpus / ("shared-" + name)).write_bytes(data)

    for kind in ("jsonchecker", "roundtrip"):
        for path in sorted((shared / "test-data" / kind).glob("*.json")):
            write("fuzz_text_parse", kind + "-" + path.name, path.read_bytes())

    for name, value in pieces(shared / "bench-data"):
        compact = json.dumps(value, ensure_ascii=False, separators=(",", ":")).encode()
        pretty = json.dumps(value, ensure_ascii=False, indent=2).encode()
        write("fuzz_text_parse", name + ".json", pretty)
        write("fuzz_msgpack_read", name + ".msgpack", msgpack(value))
        write("fuzz_node_path", name, compact + b"\0" + first_path(value).encode())
        write("fuzz_ijson_deserialize", name, struct.pack("=Q", len(compact)) + compact)


if __name__ == "__main__":
    main()
