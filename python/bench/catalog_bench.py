"""How many files a second the catalog takes: in threads, and on a Dask scheduler with one and two workers.

usage: catalog_bench.py [FILES]
"""
import contextlib
import itertools
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

import distributed

from veska import catalog

SAMPLES = sorted((pathlib.Path(__file__).parents[2] / "samples").glob("*.ifo"))


@contextlib.contextmanager
def cluster(folder, workers):
    """A scheduler and its workers, each a process with one thread."""
    file = folder / f"scheduler-{workers}.json"
    common = ["--scheduler-file", str(file), "--host", "127.0.0.1", "--no-dashboard"]
    start = [sys.executable, "-m", "distributed.cli.dask_worker", "--nthreads", "1", "--no-nanny", *common]
    commands = [[sys.executable, "-m", "distributed.cli.dask_scheduler", "--port", "0", *common], *[start] * workers]
    processes = [subprocess.Popen(command, stderr=subprocess.DEVNULL) for command in commands]
    try:
        while not file.exists():
            time.sleep(0.1)
        with distributed.Client(scheduler_file=str(file)) as client:
            client.wait_for_workers(workers)
            address = client.scheduler.address
        yield address
    finally:
        for process in reversed(processes):
            process.terminate()
            process.wait()


def measure(name, count, inputs, folder, **how):
    start = time.perf_counter()
    summary = catalog.write(inputs, folder, **how)
    seconds = time.perf_counter() - start
    assert summary.inputs == count, summary
    print(f"| {name} | {seconds:.1f} | {count / seconds:,.0f} |", flush=True)


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 50_000
    with tempfile.TemporaryDirectory() as made:
        top = pathlib.Path(made)
        for number, sample in zip(range(count), itertools.cycle(SAMPLES)):
            folder = top / "discs" / f"{number // 1000}"
            folder.mkdir(parents=True, exist_ok=True)
            shutil.copy(sample, folder / f"{number}.ifo")
        size = sum(sample.stat().st_size for sample in SAMPLES) / len(SAMPLES)
        inputs = f"{top}/discs/*/*.ifo"
        print(f"{count} files of {size:,.0f} bytes in the mean\n\n|  | s | files a second |\n|---|---:|---:|")
        measure("one thread", count, inputs, top / "a", jobs=1)
        measure("two threads", count, inputs, top / "b", jobs=2)
        for workers, name in ((1, "Dask, one worker"), (2, "Dask, two workers")):
            with cluster(top, workers) as address:
                measure(name, count, inputs, top / f"c{workers}", scheduler=address)
        measure("a second run, with nothing new", count, inputs, top / "b", jobs=2)


main()
