#!/usr/bin/env python3
"""Writes docs/performance.md from the Google Benchmark JSON files of scripts/bench.sh.

Every figure comes from the JSON output; the machine, compiler, flags and library versions are
read from the system, the build tree and dpkg-query. Python 3 standard library only.

Benchmark names are "measurement/input/library". Throughput rows use the bytes_per_second
counter (the JSON file's size per second of CPU time), script rows the CPU time per iteration,
memory rows the heap_per_input_byte counter.
"""

import argparse
import datetime
import glob
import json
import os
import platform
import re
import shlex
import statistics
import subprocess

OURS = "ours"
REFERENCE = "rapidjson"
# Extra references that are not peers: no tree library of the same kind, so they are shown but
# never count as the best peer.
NOT_PEERS = {"simdjson"}
LIBRARY_ORDER = ["ours", "ours-converted", "rapidjson", "nlohmann", "jsoncpp", "cjson",
                 "msgpack-c", "simdjson"]
PACKAGES = {
    "rapidjson": "rapidjson-dev",
    "nlohmann": "nlohmann-json3-dev",
    "jsoncpp": "libjsoncpp-dev",
    "cjson": "libcjson-dev",
    "simdjson": "libsimdjson-dev",
    "msgpack-c": "libmsgpack-cxx-dev",
    "Google Benchmark": "libbenchmark-dev",
}
INPUT_ORDER = ["twitter.json", "citm_catalog.json", "canada.json", "small", "1KB", "100KB"]

THROUGHPUT = [
    ("Parse", "Parse to a tree"),
    ("ParseVisit", "Parse, then visit every value (numbers converted to double or integer)"),
    ("WriteCompact", "Compact write of a parsed tree into a string"),
    ("WritePretty", "Pretty write (two blanks) of a parsed tree into a string"),
    ("MsgPackEncode", "MessagePack encode of a tree"),
    ("MsgPackDecode", "MessagePack decode (of our encoding) to a tree"),
    ("Copy", "Deep copy of a parsed tree"),
    ("Equal", "Deep equality of two equal trees"),
]
SCRIPT = [
    ("ScriptFromString", "JSON.FromString"),
    ("ScriptToString", "ToString"),
    ("ScriptRoundTrip", "JSON.FromString + ToString"),
    ("ScriptGet", "JSON.Get (top-level member)"),
    ("ScriptSet", "JSON.Set (string member; copies the document)"),
    ("ScriptSubNode", "JSON.SubNode (path items/N/name)"),
    ("ScriptSetSubNode", "JSON.SetSubNode (path meta/version, number; copies the document)"),
]
FLOOD = [
    ("FloodFromString", "JSON.FromString of the object"),
    ("FloodFromMsgPack", "JSON.FromMsgPack of its MessagePack"),
    ("FloodEquals", "JSON.Equals of two copies"),
    ("FloodGet", "JSON.Get of one member"),
]

NOTES = [
    "MB/s is 10^6 bytes of the input JSON file per second of CPU time, whatever the "
    "operation (a write of twitter.json counts twitter.json's size). Higher is better.",
    "Best is the fastest repetition, median the median repetition. A ratio above 1 means ours "
    "is faster (or, for memory, that ours holds more).",
    "The best peer is the fastest library other than ours in that row; simdjson is shown as "
    "an extra reference and never counts as a peer. \"ours-converted\" is ours writing a tree "
    "whose kept real texts a visit converted to doubles.",
    "Our parse uses the options scripts use: keep member order, check the input's UTF-8 once, "
    "no key table. RapidJSON: Document::Parse with the default allocator and flags, not in "
    "situ. nlohmann: json::parse. jsoncpp: CharReader from a default CharReaderBuilder (made "
    "once). cJSON: cJSON_ParseWithLength. simdjson: the DOM parser, made once and reused, on a "
    "padded copy of the input made outside the timing. Every parsed tree is freed inside the "
    "timed loop.",
    "Writers: ours AppendToString / AppendToStringPretty(out, \"  \", \"\\n\", 0); RapidJSON "
    "Writer / PrettyWriter (indent two blanks) into a StringBuffer; nlohmann dump() / dump(2); "
    "jsoncpp writeString with indentation \"\" / \"  \", emitUTF8 on; cJSON "
    "cJSON_PrintUnformatted (its formatted printer indents with tabs only, so it has no pretty "
    "row); simdjson::minify of the DOM element.",
    "MessagePack: every decoder reads the same bytes, our encoding of the document. msgpack-c "
    "(object API) packs the msgpack::object tree it unpacked from those bytes and unpacks into "
    "an object_handle; nlohmann uses to_msgpack / from_msgpack.",
    "Copy: ours JsonValue::Copy, RapidJSON CopyFrom into a new Document, nlohmann and jsoncpp "
    "copy constructors, cJSON_Duplicate. Equality: ours operator== (json/JsonEquality.h), "
    "RapidJSON, nlohmann and jsoncpp operator==, cJSON_Compare. Our copy source is a tree as "
    "parsed (reals kept as text); our equality runs on trees whose reals the first comparison "
    "converted.",
    "Before anything is timed every library's result is checked against ours: the counts of "
    "objects, arrays, members, strings (and their bytes), numbers, true, false and null, the "
    "sum of all numbers (relative 1e-9), and an integer checksum where the library keeps "
    "integers (cJSON keeps every number as a double). Written text and MessagePack are checked "
    "by decoding them with ours. A mismatch stops the run.",
    "Memory: the heap a parsed document holds, counted by malloc/free wrappers in "
    "bench_memory (usable block sizes, operator new included), in a fresh process per library "
    "and input so no allocator reuses memory an earlier parse left behind. The input text "
    "itself is not counted. Lower is better.",
    "Flooding: an object of 100,000 members whose 16-byte printable keys all share one "
    "std::hash value (computed by inverting libstdc++'s MurmurHash-style mixing), against "
    "random keys of the same length and bytes. The ratio is colliding over random; it must "
    "stay a small constant (at most 3).",
    "Script calls go through vhost::Host::Call into the module library with argument and "
    "result variants made once; the JSON arguments come from one JSON.FromString call. "
    "ns per call is CPU time; the round trip row is one pair of calls.",
    "jsoncpp, cJSON and simdjson are Debian's compiled libraries (their own flags; simdjson "
    "selects its SIMD kernel at run time); RapidJSON, nlohmann, msgpack-c, Google Benchmark's "
    "headers and ours are compiled with the flags listed above.",
]


def load_results(folder):
    runs = {}  # (measurement, input, library) -> list of iteration entries
    contexts = {}
    for path in sorted(glob.glob(os.path.join(folder, "*.json"))):
        with open(path, encoding="utf-8") as f:
            data = json.load(f)
        contexts[os.path.basename(path)] = data.get("context", {})
        for entry in data.get("benchmarks", []):
            if entry.get("run_type") != "iteration" or entry.get("error_occurred"):
                continue
            name = re.sub(r"/(iterations|repeats|min_time):[^/]*", "", entry["run_name"])
            parts = name.split("/")
            if len(parts) != 3:
                continue
            runs.setdefault(tuple(parts), []).append(entry)
    return runs, contexts


def throughput(entries):
    values = [e["bytes_per_second"] / 1e6 for e in entries if "bytes_per_second" in e]
    return (max(values), statistics.median(values)) if values else None


def ns_per_call(entries):
    scale = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
    values = [e["cpu_time"] * scale[e.get("time_unit", "ns")] for e in entries]
    return (min(values), statistics.median(values)) if values else None


def ordered(items, order):
    rank = {name: i for i, name in enumerate(order)}
    return sorted(items, key=lambda x: (rank.get(x, len(order)), x))


def fmt(value, digits=1):
    if value is None:
        return "–"
    if value >= 100:
        return f"{value:,.0f}"
    return f"{value:,.{digits}f}"


def ratio(a, b):
    return f"{a / b:.2f}" if a and b else "–"


def run(command):
    try:
        return subprocess.run(command, capture_output=True, text=True, check=False).stdout
    except OSError:
        return ""


def machine_facts():
    model, cores = "unknown", 0
    try:
        with open("/proc/cpuinfo", encoding="utf-8") as f:
            for line in f:
                if line.startswith("model name") and model == "unknown":
                    model = line.split(":", 1)[1].strip()
                if line.startswith("processor"):
                    cores += 1
    except OSError:
        pass
    memory = ""
    try:
        with open("/proc/meminfo", encoding="utf-8") as f:
            for line in f:
                if line.startswith("MemTotal"):
                    memory = f"{int(line.split()[1]) / 1024 / 1024:.1f} GiB"
    except OSError:
        pass
    return model, cores, memory


def build_facts(build):
    cache = {}
    try:
        with open(os.path.join(build, "CMakeCache.txt"), encoding="utf-8") as f:
            for line in f:
                m = re.match(r"^([A-Za-z_0-9]+):[A-Z]+=(.*)$", line.rstrip("\n"))
                if m:
                    cache[m.group(1)] = m.group(2)
    except OSError:
        pass
    compiler = cache.get("CMAKE_CXX_COMPILER", "c++")
    version = run([compiler, "--version"]).splitlines()
    flags = ""
    try:
        with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as f:
            for entry in json.load(f):
                if entry["file"].endswith("bench/peers/Ours.cpp"):
                    words = shlex.split(entry["command"])
                    keep = [w for w in words[1:] if w.startswith(("-O", "-std", "-f", "-m", "-W",
                                                                  "-DNDEBUG", "-g"))]
                    flags = " ".join(keep)
    except (OSError, ValueError, KeyError):
        pass
    return {
        "compiler": version[0] if version else compiler,
        "build_type": cache.get("CMAKE_BUILD_TYPE", "?"),
        "flags": flags,
    }


def package_versions():
    lines = []
    for library, package in PACKAGES.items():
        version = run(["dpkg-query", "-W", "-f=${Version}", package]).strip() or "not installed"
        lines.append((library, package, version))
    return lines


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--results", required=True)
    parser.add_argument("--build", required=True)
    parser.add_argument("--mode", default="full")
    parser.add_argument("--out", required=True)
    args = parser.parse_args()

    runs, contexts = load_results(args.results)
    if not runs:
        raise SystemExit(f"report: no benchmark results in {args.results}")
    model, cores, memory = machine_facts()
    build = build_facts(args.build)
    repetitions = max(len(v) for k, v in runs.items() if k[0] != "Memory")
    loads = [c.get("load_avg") for c in contexts.values() if c.get("load_avg")]
    dates = sorted(c.get("date", "") for c in contexts.values() if c.get("date"))

    out = []
    w = out.append
    w("# Performance")
    w("")
    w("Generated by `scripts/bench.sh` (`bench/report.py`) from the Google Benchmark output in "
      "`build-bench/results/`; do not edit by hand. Ours and every peer run in the same "
      "executable on the same bytes, so each ratio is measured side by side.")
    if args.mode != "full":
        w("")
        w(f"**This is a `--{args.mode}` run (one short repetition): the figures are not "
          "meaningful.**")
    w("")
    w("## Machine and build")
    w("")
    w(f"- CPU: {model}, {cores} logical cores" + (f", {memory} memory" if memory else ""))
    if loads:
        w("- Load average (1 min) when each executable started: " +
          ", ".join(f"{l[0]:.2f}" for l in loads) +
          " (anything near the core count means other work shared the machine)")
    if dates:
        w(f"- Run: {dates[0]} to {dates[-1]}")
    w(f"- OS: {platform.platform()}")
    try:
        with open(os.path.join(args.results, "source.txt"), encoding="utf-8") as f:
            source = f.read().splitlines()
    except OSError:
        source = []
    if source:
        changed = [line[3:] for line in source[1:]
                   if line[3:].startswith(("json/", "host/", "module/"))]
        w(f"- Source at build time: commit {source[0]}" +
          (f", with uncommitted changes in {len(changed)} engine, host or module files"
           if changed else ""))
    w(f"- Compiler: {build['compiler']}")
    w(f"- Build type: {build['build_type']}; flags of the benchmark code: `{build['flags']}`")
    libtype = {c.get("library_build_type") for c in contexts.values()}
    if libtype:
        w(f"- Google Benchmark library as packaged ({', '.join(sorted(t for t in libtype if t))} "
          "build; it only times the loops)")
    w(f"- Repetitions per benchmark: {repetitions}, in random interleaving; memory probes run "
      "once (they count, they do not time)")
    w("")
    w("| Library | Debian package | Version |")
    w("|---|---|---|")
    for library, package, version in package_versions():
        w(f"| {library} | {package} | {version} |")
    w("")

    # ---- Summary ----
    summary = []
    for measurement, title in THROUGHPUT:
        inputs = ordered({k[1] for k in runs if k[0] == measurement}, INPUT_ORDER)
        for inp in inputs:
            stats = {k[2]: throughput(v) for k, v in runs.items()
                     if k[0] == measurement and k[1] == inp}
            stats = {lib: s for lib, s in stats.items() if s}
            ours = stats.get(OURS)
            if not ours:
                continue
            peers = {lib: s for lib, s in stats.items()
                     if not lib.startswith(OURS) and lib not in NOT_PEERS}
            ref = stats.get(REFERENCE)
            best_median = max(peers.items(), key=lambda kv: kv[1][1]) if peers else None
            best_best = max(peers.items(), key=lambda kv: kv[1][0]) if peers else None
            summary.append((measurement, inp, ours, ref, best_median, best_best))
    w("## Summary: ours against RapidJSON and the best peer")
    w("")
    w("MB/s as median (best); a ratio above 1 means ours is faster. Ratios are given for the "
      "medians and, in parentheses, for the best repetitions; on a machine shared with other "
      "work the best repetitions are the less disturbed ones.")
    w("")
    w("| Measurement | Input | Ours | RapidJSON | Ours / RapidJSON | Best peer | "
      "Ours / best peer |")
    w("|---|---|---:|---:|---:|---|---:|")
    for measurement, inp, ours, ref, best_median, best_best in summary:
        ref_text = f"{fmt(ref[1])} ({fmt(ref[0])})" if ref else "–"
        ref_ratio = (f"{ratio(ours[1], ref[1])} ({ratio(ours[0], ref[0])})" if ref else "–")
        if best_median:
            best_text = f"{best_median[0]} {fmt(best_median[1][1])}"
            if best_best[0] != best_median[0]:
                best_text += f" ({best_best[0]} {fmt(best_best[1][0])})"
            else:
                best_text += f" ({fmt(best_best[1][0])})"
            best_ratio = (f"{ratio(ours[1], best_median[1][1])} "
                          f"({ratio(ours[0], best_best[1][0])})")
        else:
            best_text, best_ratio = "–", "–"
        w(f"| {measurement} | {inp} | {fmt(ours[1])} ({fmt(ours[0])}) | {ref_text} | "
          f"{ref_ratio} | {best_text} | {best_ratio} |")
    memory_rows = {k: v for k, v in runs.items() if k[0] == "Memory"}
    if memory_rows:
        w("")
        w("Heap held after parsing, bytes per input byte (lower is better; a ratio above 1 means "
          "ours holds more):")
        w("")
        w("| Input | Ours | RapidJSON | Ours / RapidJSON | Smallest peer | Ours / smallest peer |")
        w("|---|---:|---:|---:|---|---:|")
        for inp in ordered({k[1] for k in memory_rows}, INPUT_ORDER):
            per = {k[2]: v[0]["heap_per_input_byte"] for k, v in memory_rows.items()
                   if k[1] == inp and "heap_per_input_byte" in v[0]}
            ours = per.get(OURS)
            peers = {l: x for l, x in per.items() if l != OURS and l not in NOT_PEERS}
            best = min(peers.items(), key=lambda kv: kv[1]) if peers else None
            ref = per.get(REFERENCE)
            w(f"| {inp} | {fmt(ours, 2)} | {fmt(ref, 2)} | {ratio(ours, ref)} | "
              f"{best[0] + ' ' + fmt(best[1], 2) if best else '–'} | "
              f"{ratio(ours, best[1] if best else None)} |")
    w("")

    # ---- Details ----
    w("## Throughput per library")
    w("")
    w("Best / median MB/s per input.")
    for measurement, title in THROUGHPUT:
        keys = [k for k in runs if k[0] == measurement]
        if not keys:
            continue
        inputs = ordered({k[1] for k in keys}, INPUT_ORDER)
        libraries = ordered({k[2] for k in keys}, LIBRARY_ORDER)
        w("")
        w(f"### {measurement}: {title}")
        w("")
        w("| Library | " + " | ".join(inputs) + " |")
        w("|---|" + "---:|" * len(inputs))
        for lib in libraries:
            cells = []
            for inp in inputs:
                s = throughput(runs.get((measurement, inp, lib), []))
                cells.append(f"{fmt(s[0])} / {fmt(s[1])}" if s else "–")
            w(f"| {lib} | " + " | ".join(cells) + " |")

    linear = [k for k in runs if k[0] == "ParseLinear"]
    if linear:
        inputs = sorted({k[1] for k in linear})
        libraries = ordered({k[2] for k in linear}, LIBRARY_ORDER)
        w("")
        w("### ParseLinear: parse an array of N copies of twitter.json")
        w("")
        w("Median MB/s; the last column is the N=64 figure over the N=1 figure (1.00 is "
          "perfectly linear).")
        w("")
        w("| Library | " + " | ".join(i.replace("twitter-x", "N=") for i in inputs) +
          " | largest / smallest |")
        w("|---|" + "---:|" * (len(inputs) + 1))
        for lib in libraries:
            meds = [throughput(runs.get(("ParseLinear", i, lib), [])) for i in inputs]
            cells = [fmt(m[1]) if m else "–" for m in meds]
            first, last = meds[0], meds[-1]
            w(f"| {lib} | " + " | ".join(cells) + " | " +
              (ratio(last[1], first[1]) if first and last else "–") + " |")

    if memory_rows:
        w("")
        w("## Heap held after parsing")
        w("")
        w("Bytes per input byte (heap bytes / heap blocks).")
        w("")
        inputs = ordered({k[1] for k in memory_rows}, INPUT_ORDER)
        w("| Library | " + " | ".join(inputs) + " |")
        w("|---|" + "---:|" * len(inputs))
        for lib in ordered({k[2] for k in memory_rows}, LIBRARY_ORDER):
            cells = []
            for inp in inputs:
                e = memory_rows.get(("Memory", inp, lib))
                cells.append(f"{e[0]['heap_per_input_byte']:.2f} "
                             f"({e[0]['heap_bytes'] / 1e6:.2f} MB / {int(e[0]['heap_blocks']):,})"
                             if e else "–")
            w(f"| {lib} | " + " | ".join(cells) + " |")

    script = [k for k in runs if k[0].startswith("Script")]
    if script:
        w("")
        w("## Script calls through the host")
        w("")
        w("ns per call (CPU time), best / median.")
        w("")
        inputs = ordered({k[1] for k in script}, INPUT_ORDER)
        w("| Call | " + " | ".join(inputs) + " |")
        w("|---|" + "---:|" * len(inputs))
        for measurement, title in SCRIPT:
            cells = []
            for inp in inputs:
                s = ns_per_call(runs.get((measurement, inp, OURS), []))
                cells.append(f"{fmt(s[0], 0)} / {fmt(s[1], 0)}" if s else "")
            if any(cells):
                w(f"| {title} | " + " | ".join(c or "–" for c in cells) + " |")

    flood = [k for k in runs if k[0].startswith("Flood") and k[1].endswith("-100k")]
    if flood:
        w("")
        w("## Flooding: 100,000 keys with one std::hash value")
        w("")
        w("ns per call (CPU time), best / median; the ratio compares the best times.")
        w("")
        w("| Call | colliding keys | random keys | colliding / random |")
        w("|---|---:|---:|---:|")
        for measurement, title in FLOOD:
            hit = ns_per_call(runs.get((measurement, "colliding-100k", OURS), []))
            calm = ns_per_call(runs.get((measurement, "random-100k", OURS), []))
            if hit and calm:
                w(f"| {title} | {fmt(hit[0], 0)} / {fmt(hit[1], 0)} | {fmt(calm[0], 0)} / "
                  f"{fmt(calm[1], 0)} | {hit[0] / calm[0]:.2f} |")

    w("")
    w("## How the figures are made")
    w("")
    for note in NOTES:
        w(f"- {note}")
    w("")
    w("Run `scripts/bench.sh` to measure again (`--quick` for a short smoke run of the whole "
      "pipeline, `--smoke` for CI: one pass on the smallest input, no report).")
    w("")
    w(f"_Written {datetime.date.today().isoformat()}._")

    with open(args.out, "w", encoding="utf-8") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
