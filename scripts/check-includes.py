#!/usr/bin/env python3
"""Fails when a source file includes a project header across a forbidden layer edge.

The layers, lowest first (cmake/Layers.cmake enforces the same in the build):
  json/                      the value tree: itself only
  json/text/, json/msgpack/  the two formats: the value tree and their own folder; neither
                             format includes the other (the text parser hands MessagePack to
                             JsonValue::ReadFromMsgPack, declared with the value tree)
  host/, host/ijson/         the host binding: the engine and the SDK headers
  module/                    the script functions: everything below
  SDK headers                host/VireloInterfaces.h, VireloIJSON.h, AutoRefPtr.h,
                             InterfaceImpl.h: one another only
  tools/vhost/               a host: the SDK headers and its own files
  tools/jsonfmt/             the engine
Tests, benchmarks, fuzz targets and examples may include anything.

usage: scripts/check-includes.py [ROOT]
"""
import pathlib
import re
import sys

SDK = {"host/AutoRefPtr.h", "host/InterfaceImpl.h", "host/VireloIJSON.h", "host/VireloInterfaces.h"}
ENGINE = {"json", "json/text", "json/msgpack"}
HOST = ENGINE | {"host", "host/ijson"}

# Folder of the including file -> folders whose headers it may include. SDK headers are
# allowed wherever the host binding is; the rules for the SDK headers themselves come first.
ALLOWED = {
    "json": {"json"},
    "json/text": {"json", "json/text"},
    "json/msgpack": {"json", "json/msgpack"},
    "host": HOST,
    "host/ijson": HOST,
    "module": HOST | {"module"},
    "tools/jsonfmt": ENGINE | {"tools/jsonfmt"},
}
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)


def allowed(source: str, header: str) -> bool:
    if source in SDK:
        return header in SDK
    folder = str(pathlib.PurePosixPath(source).parent)
    if folder.startswith("tools/vhost"):
        return header in SDK or header.startswith("tools/vhost/")
    if folder not in ALLOWED:
        return True  # tests, bench, fuzz, examples
    return header in SDK or str(pathlib.PurePosixPath(header).parent) in ALLOWED[folder]


def main() -> int:
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve()
    layered = ["json", "host", "module", "tools"]
    problems = []
    checked = 0
    for top in layered:
        for path in sorted((root / top).rglob("*")):
            if path.suffix not in (".h", ".cpp"):
                continue
            source = path.relative_to(root).as_posix()
            checked += 1
            text = path.read_text(encoding="utf-8", errors="replace")
            for match in INCLUDE.finditer(text):
                header = match.group(1)
                if not (root / header).is_file():
                    continue  # not a project header named from the root
                if not allowed(source, header):
                    line = text.count("\n", 0, match.start()) + 1
                    problems.append(f"{source}:{line}: includes {header} across a layer edge")
    for problem in problems:
        print(problem)
    print(f"{checked} files checked, {len(problems)} forbidden include edges")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
