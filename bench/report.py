#!/usr/bin/env python3
"""Turns the JSON results of scripts/run-bench into one Markdown table per benchmark program
and writes them, with the machine and the date, into the section of docs/benchmarks.md for the
Qt they were built with. The section of the other Qt is kept as the file has it, so that a run
on one Qt never erases the other's figures.

    bench/report.py RESULTS_DIR OUT.md QT_VERSION"""
import datetime
import json
import os
import platform
import subprocess
import sys


def cpu_model():
    try:
        with open("/proc/cpuinfo") as f:
            for line in f:
                if line.startswith("model name"):
                    return line.split(":", 1)[1].strip()
    except OSError:
        pass
    return platform.processor() or "unknown CPU"


def fmt_time(ns):
    if ns >= 1e9:
        return f"{ns / 1e9:.3f} s"
    if ns >= 1e6:
        return f"{ns / 1e6:.3f} ms"
    if ns >= 1e3:
        return f"{ns / 1e3:.3f} µs"
    return f"{ns:.1f} ns"


def to_ns(value, unit):
    return value * {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[unit]


def table(path):
    with open(path) as f:
        data = json.load(f)
    # Repeated runs report aggregates; keep the median. Single runs report iterations only.
    aggregated = any(b.get("run_type") == "aggregate" for b in data["benchmarks"])
    rows = [b for b in data["benchmarks"]
            if not aggregated or b.get("aggregate_name") == "median"]
    lines = ["| Benchmark | Real time | CPU time | Throughput | Ratios |", "|---|---|---|---|---|"]
    for b in rows:
        name = b.get("run_name", b["name"])
        if b.get("label"):
            name += f" ({b['label']})"
        real = fmt_time(to_ns(b["real_time"], b.get("time_unit", "ns")))
        cpu = fmt_time(to_ns(b["cpu_time"], b.get("time_unit", "ns")))
        throughput = []
        if "bytes_per_second" in b:
            throughput.append(f"{b['bytes_per_second'] / 1e6:.1f} MB/s")
        if "items_per_second" in b:
            throughput.append(f"{b['items_per_second'] / 1e6:.3f} M items/s")
        ratios = [f"{k} = {v:.3g}" for k, v in sorted(b.items()) if k.startswith("x_")]
        lines.append(f"| {name} | {real} | {cpu} | {', '.join(throughput)} | {', '.join(ratios)} |")
    return "\n".join(lines)


HEADER = """# Benchmarks

Written by `scripts/run-bench` (release build, median of 3 repetitions): one section per Qt the
benchmarks were built with (`scripts/run-bench --qt6` writes the Qt 6 one), each from its own run.
Ratios `x_<baseline>` are the row's time per item divided by the named baseline's, measured in
the same run, so with the same Qt. Targets, how these figures meet them, and notes on them:
[benchmark-notes.md](benchmark-notes.md).
"""

# Sections in the order they appear; a Qt major version maps to one of them.
SECTIONS = {"5": "Qt 5.15", "6": "Qt 6"}


def section_title(qt_version):
    major = qt_version.split(".", 1)[0]
    if major not in SECTIONS:
        sys.exit(f"report.py: no section for Qt {qt_version}")
    return SECTIONS[major]


def read_sections(path):
    """The sections of an existing file by title, each with its lines below the title. A title
    that names no Qt stops the run: rewriting the file would lose that section."""
    sections = {}
    try:
        with open(path) as f:
            lines = f.read().splitlines()
    except FileNotFoundError:
        return sections
    title = None
    for line in lines:
        if line.startswith("## "):
            title = line[3:].strip()
            if title not in SECTIONS.values():
                sys.exit(f"report.py: {path} has a section '{title}' that names no Qt")
            sections[title] = []
        elif title is not None:
            sections[title].append(line)
    return sections


def new_section(results, qt_version):
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True)
    parts = [
        "",
        f"- Date: {datetime.date.today().isoformat()}",
        f"- Qt: {qt_version}",
        f"- Machine: {cpu_model()}, {os.cpu_count()} cores, {platform.system()} {platform.release()}",
        f"- Compiler: {compiler.stdout.splitlines()[0]}",
        "",
    ]
    for name in sorted(os.listdir(results)):
        if not name.endswith(".json"):
            continue
        parts.append(f"### {name[:-5]}")
        parts.append("")
        parts.append(table(os.path.join(results, name)))
        parts.append("")
    return parts


def main():
    if len(sys.argv) != 4:
        sys.exit("usage: report.py RESULTS_DIR OUT.md QT_VERSION")
    results, out, qt_version = sys.argv[1:]
    sections = read_sections(out)
    sections[section_title(qt_version)] = new_section(results, qt_version)
    parts = [HEADER.rstrip("\n")]
    for title in SECTIONS.values():
        if title in sections:
            body = sections[title]
            while body and not body[-1].strip():
                body = body[:-1]
            parts.append("")
            parts.append(f"## {title}")
            parts.extend(body)
    parts.append("")
    with open(out, "w") as f:
        f.write("\n".join(parts))


if __name__ == "__main__":
    main()
