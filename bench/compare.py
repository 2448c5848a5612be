#!/usr/bin/env python3
"""Runs two builds of quorvix_bench in interleaved rounds and prints the
medians and the ratios of the goals as a Markdown table.

    bench/compare.py BEFORE_BINARY AFTER_BINARY [--rounds 7] [--min-time 0.5]
"""
import argparse
import json
import statistics
import subprocess
import tempfile


def run_once(binary, min_time):
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        subprocess.run([binary, f"--benchmark_out={out.name}", "--benchmark_out_format=json",
                        f"--benchmark_min_time={min_time}"], check=True, capture_output=True, text=True)
        report = json.load(open(out.name))
    results = {}
    for entry in report["benchmarks"]:
        if entry.get("run_type", "iteration") != "iteration" or entry.get("error_occurred"):
            continue
        name = entry["name"].split("/")[0]
        scale = {"ns": 1e-3, "us": 1.0, "ms": 1e3}[entry.get("time_unit", "ns")]
        results[name] = (entry["real_time"] * scale, entry["cpu_time"] * scale)
    return results


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("before")
    parser.add_argument("after")
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--min-time", default="0.5")
    args = parser.parse_args()

    samples = {"before": {}, "after": {}}
    for round_ in range(args.rounds):
        order = [("before", args.before), ("after", args.after)]
        if round_ % 2:
            order.reverse()
        for label, binary in order:
            for name, times in run_once(binary, args.min_time).items():
                samples[label].setdefault(name, []).append(times)

    med = {}
    for label, per_name in samples.items():
        med[label] = {name: (statistics.median(t[0] for t in runs), statistics.median(t[1] for t in runs))
                      for name, runs in per_name.items()}

    print(f"medians of {args.rounds} interleaved rounds, microseconds per request (wall / CPU)\n")
    print("| benchmark | before | after |")
    print("|---|---|---|")
    for name in sorted(set(med["before"]) | set(med["after"])):
        cells = []
        for label in ("before", "after"):
            wall, cpu = med[label].get(name, (float("nan"), float("nan")))
            cells.append(f"{wall:.1f} / {cpu:.1f}")
        print(f"| {name} | {cells[0]} | {cells[1]} |")

    def ratio(label, a, b, column):
        m = med[label]
        return m[a][column] / m[b][column] if a in m and b in m and m[b][column] else float("nan")

    print("\n| goal | before | after | target |")
    print("|---|---|---|---|")
    for label, a, b, column, target in [
        ("engine search / raw reused libcurl + parse, wall", "BM_EngineSearch", "BM_RawSearchReusedHandle", 0, "≤ 1.15×"),
        ("engine search / raw reused libcurl + parse, CPU", "BM_EngineSearch", "BM_RawSearchReusedHandle", 1, "≤ 1.5×"),
        ("TLS: new connection per request / engine reused", "BM_RawSearchTlsNewConnection", "BM_EngineSearchTls", 0,
         "≥ 10×"),
    ]:
        print(f"| {label} | {ratio('before', a, b, column):.2f}× | {ratio('after', a, b, column):.2f}× | {target} |")


if __name__ == "__main__":
    main()
