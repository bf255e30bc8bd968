#!/usr/bin/env python3
"""Whatever lost more than a fiftieth of its frames or samples never passes, and no intact file fails.

Makes short intact files in all sorts of containers, damages them in all sorts of ways, and holds what
`zel-monitor scan` says of each against what ffmpeg decodes of it. A case is known by its name,
SOURCE:DAMAGE:SEED, and can be had again.
"""
import argparse
import collections
import concurrent.futures
import dataclasses
import hashlib
import json
import os
import pathlib
import random
import subprocess
import sys
import tempfile

import damages
import sources
import truth

MOST_LOST = 0.02
TIMESTAMPS = "stall,short"
KEPT = pathlib.Path(__file__).with_name("kept_cases.txt")  # that passed wrongly once


@dataclasses.dataclass
class Case:
    name: str
    source: str
    kind: str
    loss: truth.Loss
    status: int | None  # None: it did not end
    problem: str

    @property
    def lost(self):
        return self.loss.most > MOST_LOST

    @property
    def fault(self):
        """What is wrong with the program's answer; empty if nothing is."""
        if self.status not in (0, 1, 3):
            return f"ended with {self.status}"
        if self.kind == "intact":
            return "fails" if self.status else ""
        if self.lost and self.status == 0:
            return "passes" if sources.leaves_a_trace(self.source, self.kind) else ""
        return ""

    @property
    def outcome(self):
        """In which column of the table it counts."""
        if self.fault:
            return "wrong"
        if self.lost:
            return "told" if self.status else "no trace"
        return "told anyway" if self.status else "let pass"

    def line(self):
        return (f"{self.name}: {self.fault or 'right'}, status {self.status}; lost {self.loss.frames:.1%} of the frames, "
                f"{self.loss.samples:.1%} of the samples; {self.loss.spoiled:.1%} of the frames spoiled; {self.problem}")


class Bench:
    """Sources, what is known of them, and the program."""

    def __init__(self, options):
        self.program = options.program
        self.folder = options.folder
        self.keep = options.keep
        self.folder.mkdir(parents=True, exist_ok=True)
        listed = subprocess.run([self.program, "scan", "--list-detectors"], capture_output=True, check=True).stdout
        self.fail_on = TIMESTAMPS + (",damage" if b"damage" in listed else "")
        self.known = self.folder / "contents.json"
        self.contents = json.loads(self.known.read_text()) if self.known.exists() else {}
        self.sources = {}
        sources.make_base(self.folder)

    def source(self, name):
        if name not in self.sources:
            self.sources[name] = sources.make(name, self.folder)
        return self.sources[name]

    def remember(self):
        self.known.write_text(json.dumps(self.contents))

    def content(self, path, data):
        key = hashlib.sha256(data).hexdigest()
        if key not in self.contents:
            found = truth.content(path)
            self.contents[key] = [found.frames, sorted(found.numbers), found.samples]
        frames, numbers, samples = self.contents[key]
        return truth.Content(frames, frozenset(numbers), samples)

    def run(self, name):
        source_name, kind, _ = name.split(":")
        source = self.source(source_name)
        intact = self.content(source.path, source.data)
        data = source.data if kind == "intact" else damages.KINDS[kind](source, random.Random(name))
        path = self.folder / f"case-{name.replace(':', '-')}{source.path.suffix}"
        path.write_bytes(data)
        loss = truth.loss(intact, self.content(path, data))
        status, problem = self.scan(path)
        case = Case(name, source_name, kind, loss, status, problem)
        if case.fault and self.keep:
            self.keep.mkdir(parents=True, exist_ok=True)
            path.rename(self.keep / path.name)
        else:
            path.unlink()
        return case

    def scan(self, path):
        words = [self.program, "scan", "-q", "--json", "--fail-on", self.fail_on, str(path)]
        try:
            done = subprocess.run(words, capture_output=True, timeout=60)
        except subprocess.TimeoutExpired:
            return None, "no end within a minute"
        if done.returncode not in (0, 1, 3):
            return done.returncode, done.stderr.decode(errors="replace")[-200:]
        found = json.loads(done.stdout)["inputs"][0]
        events = collections.Counter(event["kind"] for event in found["events"] if event["kind"] in self.fail_on)
        return done.returncode, found["problem"] or ", ".join(f"{n} {kind}" for kind, n in events.items())


def chosen(count, seed):
    """Names of that many cases: every damage to every source once before any comes twice."""
    pairs = [(source, kind) for source in sources.names() for kind in damages.KINDS]
    order = random.Random(seed)
    names = []
    while len(names) < count:
        order.shuffle(pairs)
        names += [f"{source}:{kind}:{order.randrange(10**6)}" for source, kind in pairs]
    return names[:count]


OUTCOMES = ("told", "wrong", "no trace", "told anyway", "let pass")


def table(cases, by):
    """Lines with how the damaged ones came out: of those that lost much the first three, of the others the rest."""
    groups = collections.defaultdict(list)
    for case in cases:
        groups[getattr(case, by)].append(case)
    lines = [f"{by:24}{'cases':>8}" + "".join(f"{outcome:>13}" for outcome in OUTCOMES)]
    for name, group in [*sorted(groups.items()), ("all", cases)]:
        counts = collections.Counter(case.outcome for case in group)
        lines.append(f"{name:24}{len(group):8}" + "".join(f"{counts[outcome]:13}" for outcome in OUTCOMES))
    return lines


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("count", nargs="?", type=int, default=200, help="cases (200)")
    parser.add_argument("seed", nargs="?", type=int, default=1, help="of their choice (1)")
    parser.add_argument("--case", action="append", default=[], help="run only this one, by its name")
    parser.add_argument("--program", default=os.environ.get("ZEL_MONITOR"), help="zel-monitor ($ZEL_MONITOR)")
    parser.add_argument("--folder", type=pathlib.Path, help="where intact files are made, and found again")
    parser.add_argument("--keep", type=pathlib.Path, help="where files go that got a wrong answer")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--all", action="store_true", help="print every case")
    options = parser.parse_args()
    if not options.program:
        parser.error("--program or $ZEL_MONITOR is needed")

    with tempfile.TemporaryDirectory(prefix="zel-damage-") as scratch:
        options.folder = options.folder or pathlib.Path(scratch)
        bench = Bench(options)
        names = options.case or [*(f"{source}:intact:0" for source in sources.names()),
                                 *KEPT.read_text().split(), *chosen(options.count, options.seed)]
        with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
            list(pool.map(bench.source, sorted({name.split(":")[0] for name in names})))
            cases = list(pool.map(bench.run, dict.fromkeys(names)))
        bench.remember()
    damaged = [case for case in cases if case.kind != "intact"]
    for by in ("source", "kind"):
        print("\n".join(table(damaged, by)) + "\n")
    wrong = [case for case in cases if case.fault]
    for case in cases if options.all else wrong:
        print(case.line())
    print(f"{len(cases)} cases, {len(wrong)} with a wrong answer")
    return bool(wrong)


if __name__ == "__main__":
    sys.exit(main())
