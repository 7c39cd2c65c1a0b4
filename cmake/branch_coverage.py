"""Counts the branches of include/ and src/ that the tests took, from the counters that g++ left.

gcovr counts the edge of an exception as a branch not taken wherever a translation unit has a copy of
a function that it never calls. gcov itself knows these edges, and nearly all are failures of an
allocation; those written as conditions are recognised by what the line says.

usage: branch_coverage.py BUILD MINIMUM_PERCENT
"""
import collections
import json
import pathlib
import re
import subprocess
import sys

ALLOCATION = re.compile(r"bad_alloc|catch \(|= default;|Base::Delete\(i\)|StartEdits\(\)|image == nullptr|SetBlock\(\*entry")


def main(build, minimum):
    root = pathlib.Path.cwd()
    lines = collections.defaultdict(dict)  # (file, line) -> number of branches -> count of each
    for counters in pathlib.Path(build).rglob("*.gcda"):
        text = subprocess.run(["gcov", "--json-format", "--stdout", "-b", counters.resolve()],
                              cwd=build, check=True, capture_output=True, text=True).stdout
        for document in map(json.loads, text.splitlines()):
            for file in document["files"]:
                path = (root / build / file["file"]).resolve()
                name = path.relative_to(root).as_posix() if path.is_relative_to(root) else ""
                if not name.startswith(("include/", "src/")):
                    continue
                for line in file["lines"]:
                    counts = [b["count"] for b in line["branches"] if not b["throw"]]
                    # One branch without another is a call that may throw.
                    if len(counts) < 2:
                        continue
                    kinds = lines[name, line["line_number"]]
                    before = kinds.get(len(counts), [0] * len(counts))
                    kinds[len(counts)] = [a + b for a, b in zip(before, counts)]

    total = taken = 0
    for (name, number), kinds in sorted(lines.items()):
        source = pathlib.Path(name).read_text().splitlines()[number - 1].strip()
        if ALLOCATION.search(source):
            continue
        # Instances of a template may have other branches; the one with the most stands for them.
        counts = max(kinds.values(), key=lambda c: (sum(map(bool, c)), -len(c)))
        total += len(counts)
        taken += sum(map(bool, counts))
        if not all(counts):
            print(f"{name}:{number}: {counts.count(0)} of {len(counts)} not taken: {source}")
    percent = 100 * taken / total
    print(f"branches that are no allocation failures: {percent:.1f}% ({taken} out of {total})")
    return percent < float(minimum)


sys.exit(main(*sys.argv[1:]))
