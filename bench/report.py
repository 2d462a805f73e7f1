#!/usr/bin/env python3
"""Runs every bench_<name> binary and prints the comparisons of bench/<name>.ratios.

A .ratios file has one comparison per line:
  ratio <name> <ours benchmark> <baseline benchmark> <aim>   ours/baseline of median real time
  value <name> <benchmark> <ns|us|ms> <aim> [<per>]          median real time per iteration,
                                                             divided by <per> when given (a
                                                             benchmark that makes <per> calls
                                                             per iteration)
Benchmark names are the full names Google Benchmark prints (without aggregate suffixes)."""
import json, pathlib, re, subprocess, sys

bindir = pathlib.Path(sys.argv[1])
flt = sys.argv[2] if len(sys.argv) > 2 else ""
here = pathlib.Path(__file__).resolve().parent
scale = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
failed = False

for ratios in sorted(here.glob("*.ratios")):
    binary = bindir / f"bench_{ratios.stem}"
    if not binary.exists():
        print(f"# {binary} missing", file=sys.stderr)
        failed = True
        continue
    rows = [l.split() for l in ratios.read_text().splitlines() if l.strip() and not l.startswith("#")]
    names = {n for r in rows for n in (r[2:4] if r[0] == "ratio" else r[2:3])}
    if flt:
        rows = [r for r in rows if re.search(flt, r[1]) or any(re.search(flt, n) for n in r[2:4])]
        if not rows:
            continue
    wanted = "^(" + "|".join(re.escape(n) for n in sorted(names)) + ")$"
    out = subprocess.run([str(binary), f"--benchmark_filter={wanted}", "--benchmark_repetitions=3",
                          "--benchmark_report_aggregates_only=true", "--benchmark_format=json",
                          "--benchmark_enable_random_interleaving=true"],
                         capture_output=True, text=True)
    if out.returncode != 0:
        print(out.stderr, file=sys.stderr)
        failed = True
        continue
    medians = {}
    for b in json.loads(out.stdout)["benchmarks"]:
        if b.get("aggregate_name") == "median":
            medians[b["run_name"]] = b["real_time"] * scale[b["time_unit"]]
    for r in rows:
        try:
            if r[0] == "ratio":
                print(f"RATIO {r[1]} {medians[r[2]] / medians[r[3]]:.3f} aim {r[4]}")
            else:
                per = float(r[5]) if len(r) > 5 else 1.0
                print(f"VALUE {r[1]} {medians[r[2]] / scale[r[3]] / per:.3f} {r[3]} aim {r[4]}")
        except KeyError as e:
            print(f"# {ratios.name}: no result for {e}", file=sys.stderr)
            failed = True
sys.exit(1 if failed else 0)
