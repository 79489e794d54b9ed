#!/usr/bin/env python3
"""Turns the JSON results of scripts/run-bench into one Markdown table per benchmark program
and writes docs/benchmarks.md with the machine and the date."""
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


def main():
    results, out = sys.argv[1], sys.argv[2]
    parts = [
        "# Benchmarks",
        "",
        "Written by `scripts/run-bench` (release build, median of 3 repetitions). Ratios `x_<baseline>`",
        "are the row's time per item divided by the named baseline's, measured in the same run.",
        "",
        f"- Date: {datetime.date.today().isoformat()}",
        f"- Machine: {cpu_model()}, {os.cpu_count()} cores, {platform.system()} {platform.release()}",
        f"- Compiler: {subprocess.run(['c++', '--version'], capture_output=True, text=True).stdout.splitlines()[0]}",
        "",
    ]
    for name in sorted(os.listdir(results)):
        if not name.endswith(".json"):
            continue
        parts.append(f"## {name[:-5]}")
        parts.append("")
        parts.append(table(os.path.join(results, name)))
        parts.append("")
    # The targets and verdicts are written once, in benchmark-notes.md; this page only points there.
    parts.append("Targets, how these figures meet them, and notes on them: "
                 "[benchmark-notes.md](benchmark-notes.md).")
    parts.append("")
    with open(out, "w") as f:
        f.write("\n".join(parts))


if __name__ == "__main__":
    main()
