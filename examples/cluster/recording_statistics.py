#!/usr/bin/env python3
"""Statistics and spectra of all recordings in a folder, with Dask: on this machine or on a cluster.

    recording_statistics.py FOLDER [--workers N | --scheduler ADDRESS] [--range VALUES]
                            [-o RESULTS [--spectrum N]]

Searches the folder and all folders in it for *.tdms. Without -o the statistics go to standard
output, a line of CSV for each channel; with -o, to RESULTS/statistics.csv. With --spectrum, the
power spectra of each recording, averaged over windows of N values that overlap by half, go to a
file in RESULTS with the recording's name and .npz. docs/cluster.md describes both, and how to run
the program on a cluster.

Progress goes to standard error: on a terminal one line that changes, otherwise a line every 30
seconds. What cannot be read is also reported there, and the run continues. The exit status is 0 if
everything was read, 1 if not, and 2 for wrong arguments.
"""
from __future__ import annotations

import argparse
import csv
import math
import os
import sys
import time
from collections import deque
from contextlib import ExitStack
from typing import Any, Deque, Dict, Iterator, List, NamedTuple, Optional, Set, Tuple, Union

import dask
import numpy
from distributed import Client, KilledWorker, as_completed
from distributed.diagnostics.plugin import UploadFile

import recording_ranges
from recording_ranges import Channel, Numbers, Plan, Range, merged

COLUMNS = (
    "file", "group", "channel", "type", "count", "nan", "lost",
    "minimum", "maximum", "mean", "deviation", "first", "last",
)  # fmt: skip

#: So many that a worker does not wait for its next task, and so few that the scheduler knows each
#: of a hundred thousand recordings only while workers work on it.
TASKS_PER_WORKER = 4

#: For the web pages of a scheduler on this machine: a fixed port may be taken.
ANY_PORT = "127.0.0.1:0"

ChannelNumbers = List[Tuple[Channel, Numbers]]


class Output:
    """Writes results; the statistics in the order of the recordings, whichever is done first."""

    def __init__(self, folder: Optional[str], stack: ExitStack) -> None:
        self._folder = folder
        self._waiting: Dict[int, List[List[Any]]] = {}
        self._written = 0
        file: Union[int, str] = 1
        if folder is not None:
            os.makedirs(folder, exist_ok=True)
            file = os.path.join(folder, "statistics.csv")
        # Names that are not UTF-8 are written as they are.
        stream = open(
            file, "w", newline="", encoding="utf-8", errors="surrogateescape", closefd=file != 1
        )
        stack.enter_context(stream)
        self._csv = csv.writer(stream, lineterminator="\n")
        self._csv.writerow(COLUMNS)

    def write(self, place: int, name: str, results: ChannelNumbers) -> None:
        """Takes the results of the recording at this place in the order."""
        self._waiting[place] = [_row(name, channel, numbers) for channel, numbers in results]
        while self._written in self._waiting:
            self._csv.writerows(self._waiting.pop(self._written))
            self._written += 1
        spectra = [(channel, numbers) for channel, numbers in results if numbers.windows]
        if spectra and self._folder is not None:
            _save_spectra(os.path.join(self._folder, f"{name}.npz"), spectra)


def _row(name: str, channel: Channel, numbers: Numbers) -> List[Any]:
    statistics: List[Any] = ["", "", "", ""]
    if numbers.size:
        statistics = [numbers.minimum, numbers.maximum, numbers.mean, numbers.deviation]
    return [
        name, channel.group, channel.name, channel.type, channel.length, numbers.nan, channel.lost,
        *statistics, channel.first, channel.last,
    ]  # fmt: skip


def _save_spectra(path: str, results: ChannelNumbers) -> None:
    os.makedirs(os.path.dirname(path), exist_ok=True)
    numpy.savez(
        path,
        group=[channel.group for channel, _ in results],
        channel=[channel.name for channel, _ in results],
        rate=[channel.rate for channel, _ in results],
        windows=[numbers.windows for _, numbers in results],
        skipped=[numbers.skipped for _, numbers in results],
        density=[numbers.density(channel.rate) for channel, numbers in results],
    )


class Report:
    """Reports progress and problems on standard error."""

    def __init__(self) -> None:
        self.problems = 0
        self.recordings, self.planned_recordings, self.done_recordings = 0, 0, 0
        self.planned_values, self.done_values = 0, 0
        self._terminal = sys.stderr.isatty()
        self.start(0)

    def start(self, recordings: int) -> None:
        """Begins the progress of work on so many recordings."""
        self.recordings = recordings
        self._begin = self._shown = time.monotonic()

    def problem(self, text: str) -> None:
        """Reports that something cannot be read."""
        self.problems += 1
        self._clear()
        print(text.encode(errors="backslashreplace").decode(), file=sys.stderr)

    def progress(self) -> None:
        """Shows the progress, unless that was done a moment ago."""
        now = time.monotonic()
        if now - self._shown >= (0.2 if self._terminal else 30):
            self._shown = now
            self._show("" if self._terminal else "\n")

    def end(self) -> None:
        """Shows how much was done."""
        self._show("\n")

    def _show(self, end: str) -> None:
        seconds = max(time.monotonic() - self._begin, 1e-3)
        rate = self.done_values / seconds
        # Assumes that the recordings that are not planned yet are like the others.
        total = self.planned_values * self.recordings / max(self.planned_recordings, 1)
        about = "" if self.planned_recordings == self.recordings else "about "
        when = f"about {(total - self.done_values) / rate:.0f} s left" if rate else ""
        if self.done_recordings == self.recordings:
            when = f"{seconds:.1f} s"
        self._clear()
        line = (
            f"{self.done_recordings} of {self.recordings} recordings, "
            f"{self.done_values / 1e6:.1f} of {about}{total / 1e6:.1f} million values, "
            f"{rate / 1e6:.1f} million/s, {when}"
        )
        print(line, end=end, file=sys.stderr, flush=True)

    def _clear(self) -> None:
        if self._terminal:
            print("\r\033[K", end="", file=sys.stderr)


class Job(NamedTuple):
    """A task for a worker: to plan a recording, or to summarize ranges of it."""

    recording: int
    ranges: Optional[List[Range]] = None
    alone: bool = False


class Recording:
    """A recording that was planned, and its results so far."""

    def __init__(self, plan: Plan) -> None:
        self.channels = plan.channels
        self.tasks_left = len(plan.tasks)
        self.unreadable: Set[int] = set()
        self.parts: List[Dict[int, Numbers]] = [{} for _ in plan.channels]

    def results(self) -> ChannelNumbers:
        """The channels that could be read, with their results."""
        return [
            (channel, merged([parts[first] for first in sorted(parts)]))
            for place, (channel, parts) in enumerate(zip(self.channels, self.parts))
            if place not in self.unreadable
        ]


class Run:
    """Hands the recordings' tasks to workers, a bounded number at a time."""

    def __init__(
        self, client: Client, root: str, names: List[str], size: int, window: int,
        output: Output, report: Report,
    ) -> None:  # fmt: skip
        self._client, self._output, self._report = client, output, report
        self._root, self._names, self._size, self._window = root, names, size, window
        self._unplanned = iter(range(len(names)))
        self._planned: Dict[int, Recording] = {}
        self._waiting: Deque[Job] = deque()
        self._suspects: Deque[Job] = deque()
        self._running: Dict[str, Job] = {}
        self._most_running, self._counted = 0, -math.inf

    def execute(self) -> None:
        """Works on all recordings."""
        completed = as_completed(with_results=True, raise_errors=False)
        self._submit(completed)
        for future, result in completed:
            job = self._running.pop(future.key)
            if future.status == "error":
                self._failed(job, result[1])
            elif isinstance(result, BaseException):
                raise ConnectionError("the connection to the scheduler was lost")
            elif job.ranges is None:
                self._plan(job.recording, result)
            else:
                self._summarized(job.recording, job.ranges, result)
            self._submit(completed)
            self._report.progress()

    def _submit(self, completed: Any) -> None:
        self._count_workers()
        while len(self._running) < self._most_running:
            job = self._next_job()
            if job is None:
                return
            path = self._path(job)
            # A failed task is tried again, in case the storage was out of reach.
            if job.ranges is None:
                arguments: Tuple[Any, ...] = recording_ranges.make_plan, path, self._size
            else:
                arguments = recording_ranges.summarize, path, job.ranges, self._window
            future = self._client.submit(*arguments, pure=False, retries=1)
            self._running[future.key] = job
            completed.add(future)

    def _next_job(self) -> Optional[Job]:
        if self._waiting:
            return self._waiting.popleft()
        recording = next(self._unplanned, None)
        if recording is not None:
            return Job(recording)
        return self._suspects.popleft() if self._suspects and not self._running else None

    def _count_workers(self) -> None:
        """Counts the workers from time to time: on a cluster they come and go."""
        if time.monotonic() - self._counted > 5:
            self._most_running = TASKS_PER_WORKER * max(sum(self._client.nthreads().values()), 1)
            self._counted = time.monotonic()

    def _plan(self, recording: int, plan: Plan) -> None:
        for problem in plan.problems:
            self._report.problem(problem)
        self._report.planned_recordings += 1
        self._report.planned_values += sum(part.size for task in plan.tasks for part in task)
        self._planned[recording] = Recording(plan)
        self._waiting.extend(Job(recording, task) for task in plan.tasks)
        self._finish_if_done(recording)

    def _summarized(self, recording: int, ranges: List[Range], results: List[Any]) -> None:
        state = self._planned[recording]
        for part, result in zip(ranges, results):
            if isinstance(result, Numbers):
                state.parts[part.channel][part.first] = result
                continue
            state.unreadable.add(part.channel)
            if result is not None:
                self._report.problem(result)
        state.tasks_left -= 1
        self._report.done_values += sum(part.size for part in ranges)
        self._finish_if_done(recording)

    def _failed(self, job: Job, error: BaseException) -> None:
        killed = isinstance(error, KilledWorker)
        if killed and not job.alone:
            # All tasks of a worker that died are suspects. Each runs alone at the end, which shows
            # the one that killed the worker.
            self._suspects.append(job._replace(alone=True))
            return
        reason = "workers that read it die" if killed else str(error)
        path = self._path(job)
        problem = reason if reason.startswith(path) else f"{path}: {reason}"
        if job.ranges is None:
            self._plan(job.recording, Plan([], [], [problem]))
        else:
            self._report.problem(problem)
            self._summarized(job.recording, job.ranges, [None] * len(job.ranges))

    def _finish_if_done(self, recording: int) -> None:
        if self._planned[recording].tasks_left == 0:
            results = self._planned.pop(recording).results()
            self._output.write(recording, self._names[recording], results)
            self._report.done_recordings += 1

    def _path(self, job: Job) -> str:
        return os.path.join(self._root, self._names[job.recording])


def find_recordings(root: str, report: Any) -> Iterator[str]:
    """The paths of all recordings, relative to the folder."""
    for folder, _, files in os.walk(root, onerror=lambda error: report(str(error))):
        for file in files:
            if file.lower().endswith(".tdms"):
                yield os.path.relpath(os.path.join(folder, file), root)


def connect(options: argparse.Namespace) -> Client:
    """A client of the scheduler, or of workers on this machine, which are processes of one thread.

    Threads of one process would wait for each other, since only NumPy's loops and the library's
    calls release the interpreter's lock; and a process that dies would end all of its threads.
    """
    if options.scheduler:
        client = Client(options.scheduler)
    else:
        # A suspect runs again, alone, so little is lost if a task becomes a suspect early.
        dask.config.set({"distributed.scheduler.allowed-failures": 1})
        workers = options.workers or len(os.sched_getaffinity(0))
        client = Client(n_workers=workers, threads_per_worker=1, dashboard_address=ANY_PORT)
    if not client.nthreads():
        print("waiting for the first worker", file=sys.stderr)
        client.wait_for_workers(1)
    # For workers that start later, too.
    client.register_worker_plugin(UploadFile(recording_ranges.__file__), "recording_ranges.py")
    return client


def parse(arguments: Optional[List[str]]) -> argparse.Namespace:
    """The options; ends the program if they are wrong."""
    parser = argparse.ArgumentParser(description="Statistics and spectra of a folder's recordings.")
    where = parser.add_mutually_exclusive_group()
    parser.add_argument("folder", help="searched for *.tdms, with all folders in it")
    where.add_argument("--scheduler", metavar="ADDRESS", help="of a Dask cluster")
    where.add_argument("--workers", type=int, metavar="N", help="on this machine (one per core)")
    parser.add_argument(
        "--range", type=int, default=1 << 24, metavar="VALUES",
        help="values per task (16777216), rounded up to a power of two from 65536 on",
    )  # fmt: skip
    parser.add_argument("-o", dest="results", metavar="RESULTS", help="folder for results")
    parser.add_argument(
        "--spectrum", type=int, default=0, metavar="N", help="power spectra of N values, even"
    )
    options = parser.parse_args(arguments)
    if not os.path.isdir(options.folder):
        parser.error(f"{options.folder} is not a folder")
    if options.range < 1 or (options.workers is not None and options.workers < 1):
        parser.error("--range and --workers take a positive number")
    if options.spectrum < 0 or options.spectrum % 2 or (options.spectrum and not options.results):
        parser.error("--spectrum takes an even number, and needs -o")
    return options


def main(arguments: Optional[List[str]] = None) -> int:
    """Runs the program and returns its exit status."""
    options = parse(arguments)
    root = os.path.abspath(options.folder)
    report = Report()
    names = sorted(find_recordings(root, report.problem))
    size = recording_ranges.task_size(options.range, options.spectrum)
    with ExitStack() as stack:
        output = Output(options.results, stack)
        if not names:
            report.problem(f"{root}: no file whose name ends in .tdms")
        else:
            client = stack.enter_context(connect(options))
            report.start(len(names))
            Run(client, root, names, size, options.spectrum, output, report).execute()
    report.end()
    return 1 if report.problems else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (OSError, ImportError) as error:
        sys.exit(f"recording_statistics: {error}")
    except KeyboardInterrupt:
        sys.exit(130)
