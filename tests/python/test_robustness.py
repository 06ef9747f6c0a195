"""Nothing that Python does ends the interpreter; memory does not grow; threads do not meet."""

import _thread
import functools
import os
import signal
import subprocess
import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import numpy as np
import pytest
from conftest import WATER, jobs_of

import stigruz


def test_bad_arguments(tmp_path):
    # Copies: what is handed in as the name of an output may be any of them.
    for file in WATER.glob("h2o*"):
        (tmp_path / file.name).write_bytes(file.read_bytes())
    script = Path(__file__).with_name("bad_arguments.py")
    done = subprocess.run([sys.executable, "-X", "faulthandler", script, "6000", "24"], cwd=tmp_path,
                          capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stderr[-3000:]
    assert "'good'" in done.stdout


def resident():
    with open("/proc/self/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


@pytest.mark.skipif(not os.path.exists("/proc/self/statm"), reason="nobody tells the memory")
def test_memory_does_not_grow(water):
    def read(times):
        for _ in range(times):
            job = stigruz.Job("h2o_ref.fchk")
            job.transition_density()
            with pytest.raises(stigruz.Error):
                stigruz.Job("h2o_ref.fchk", log="h2o_ref.cis")

    read(50)
    before = resident()
    read(1000)
    # One job of these is some 100 kB.
    assert resident() - before < 2e6


def test_reading_costs_what_it_costs_the_tool(water):
    """At most 1.1 times of it, processor time; the least of several rounds, other processes being there."""
    import resource

    from conftest import run

    reference, others = jobs_of(water)
    tool = module = float("inf")
    for _ in range(40):
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        run("sgn_states", reference, *others, cwd=water)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        spent = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
        tool = min(tool, spent)
        start = time.process_time()
        for name in (reference, *others):
            stigruz.Job(name)
        module = min(module, time.process_time() - start)
        if module <= 1.1 * tool:
            return
    raise AssertionError(f"{module} s against {tool} s")


def test_threads_see_the_same(water):
    reference, others = jobs_of(water)
    s = stigruz.Set(reference, others)
    job = stigruz.Job(reference)
    prepared = stigruz.Reference(job)

    def look(i):
        again = stigruz.Set(reference, others)
        s.write_fchk(f"{i}.fchk", template=reference)
        return (s.html(), s.dipole_derivatives.tobytes(), again.dipole_derivatives.tobytes(),
                job.transition_density(2).tobytes(), stigruz.follow(prepared, others[i]).clear,
                Path(f"{i}.fchk").read_bytes())

    with ThreadPoolExecutor(8) as threads:
        results = list(threads.map(look, range(8)))
    assert results == [results[0]] * 8


def test_others_run_meanwhile(water):
    reference, others = jobs_of(water)
    counted = 0
    done = False

    def count():
        nonlocal counted
        while not done:
            counted += 1
            time.sleep(0)

    thread = threading.Thread(target=count)
    thread.start()
    interval = sys.getswitchinterval()
    sys.setswitchinterval(100)  # nobody gives the lock away but by releasing it
    try:
        before = counted
        for _ in range(1000):  # the system may have no processor for the other
            stigruz.Job(reference)
            if counted > before:
                break
        assert counted > before
    finally:
        sys.setswitchinterval(interval)
        done = True
        thread.join()


def test_an_interrupt_ends_the_work(water):
    reference, others = jobs_of(water)
    seen = []

    def interrupt(done, steps):
        seen.append((done, steps))
        if done == 3:
            _thread.interrupt_main()

    with pytest.raises(KeyboardInterrupt):
        stigruz.Set(reference, others, progress=interrupt)
    assert seen == [(1, 19), (2, 19), (3, 19)]
    # Without anybody who is told: map() and partial() run no Python that would see the signal.
    make = functools.partial(stigruz._core.report_on_files, reference, others, 1, True)
    made = []
    before = signal.signal(signal.SIGALRM, signal.default_int_handler)
    try:
        with pytest.raises(KeyboardInterrupt):
            signal.setitimer(signal.ITIMER_REAL, 0.1)
            made.extend(map(make, [None] * 100))
    finally:
        signal.signal(signal.SIGALRM, before)
    assert len(made) < 100
    with pytest.raises(ZeroDivisionError):
        stigruz.Set(reference, others, progress=lambda done, steps: 1 / 0)


def test_arrays_are_of_their_own(water):
    reference, others = jobs_of(water)
    s = stigruz.Set(reference, others)
    page = s.html()
    s.dipole_derivatives[:] = np.nan
    s.files[0].dipole[:] = 7
    assert s.html() == page
    job = stigruz.Job(reference)
    job.orbitals()[:] = 0
    assert np.any(job.orbitals())
