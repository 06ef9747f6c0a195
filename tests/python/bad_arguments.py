"""Thousands of bad arguments for every function: bad_arguments.py COUNT SEED

Nothing but the exceptions that are promised may come of it; test_robustness.py runs this as a process
of its own, to see signals. The working directory is a scratch copy of the bundled set.
"""

import gc
import pathlib
import random
import sys
import warnings

import numpy as np

import stigruz
from stigruz import _core

PROMISED = (stigruz.Error, TypeError, ValueError, OSError, OverflowError, MemoryError)


class Odd:
    """Says that it is everything."""

    def __index__(self):
        raise ValueError("no index")

    def __fspath__(self):
        return 7

    def __array__(self, dtype=None):
        raise ValueError("no array")

    def __iter__(self):
        raise TypeError("no elements")

    def __len__(self):
        return -1


class Growing(list):
    """A list that changes while it is looked at."""

    def __iter__(self):
        for _ in range(5):
            self.append(self)
            yield 1


def damaged_files(chance):
    """Copies of good files with bytes changed, cut short or repeated, under names of their own."""
    for number in range(40):
        for suffix in (".fchk", ".log", ".cis"):
            data = bytearray(pathlib.Path("h2o_01zp" + suffix).read_bytes())
            for _ in range(chance.choice([0, 0, 1, 20])):
                data[chance.randrange(len(data))] = chance.choice(b"0123456789 -+.EeX\n\0\xff")
            if chance.random() < 0.2:
                del data[chance.randrange(len(data)) :]
            if chance.random() < 0.1:
                at = chance.randrange(len(data))
                data[at:at] = data[at : at + chance.randrange(2000)]
            pathlib.Path(f"damaged{number}{suffix}").write_bytes(data)


def values(chance, job, reference, report, followed):
    """Something of every sort."""
    n = chance.choice([0, 1, 2, 3, 4, 17, 22, -1, 2**31, 2**63, -(2**70)])
    shape = [chance.choice([0, 1, 2, 3, 4, 17, 19, 22]) for _ in range(chance.randrange(5))]
    array = np.asarray(chance.choice([0.0, 1.0, -1e300, np.nan, np.inf]) + np.random.default_rng(0).normal(size=shape))
    name = chance.choice(["h2o_01zp", "h2o_ref", f"damaged{chance.randrange(40)}", "none", "", ".", "./", "a\0b", "x" * 5000])
    return chance.choice([
        None, True, n, float(n), np.nan, 1e308, 2 + 1j, "", "O", "Xx", name, name + ".fchk", name + ".log",
        name + ".cis", (name + ".log").encode(), pathlib.Path("h2o_ref.fchk"), "h2o.gjf", b"\xff\xfe", "\ud800",
        [], [n], ["O", "H", "H"], [name + ".fchk"] * chance.randrange(3), ["h2o_01zp.fchk", None], {}, {1: 2},
        set("ab"), object(), Odd(), Growing(), lambda *_: None, lambda *_: 1 / 0 if n == 1 else None, range(4),
        array, array.T, array[::-1] if array.ndim else array, np.asfortranarray(array), array.astype(">f8"), array.astype(np.float16),
        array[..., ::2] if array.ndim else array, np.array(["a", "b"]), np.array([object()], dtype=object),
        np.zeros((19, 3, 3)), np.zeros((19, 3)), np.broadcast_to(np.float64(1), (2**20, 3, 3)),
        np.broadcast_to(np.float64(1), (2**40, 3)), np.ma.masked_array([1.0], [True]), np.datetime64("2020"),
        memoryview(b"abc"), bytearray(8), slice(3), type, stigruz, job, reference, report, followed,
        job._core, reference._core, report._core, _core.Job, Ellipsis, NotImplemented,
    ])


def changed(chance, of):
    """Nearly what it was."""
    if isinstance(of, np.ndarray) and of.size:
        of = of.copy()
        of.flat[chance.randrange(of.size)] = chance.choice([0, -1, 1e300, 1e-320, np.nan, np.inf])
        return chance.choice([of, of.T, of[::-1], of[1:], of[..., :-1], np.asfortranarray(of), of * 1e200, of * 0,
                              np.repeat(of, 2, axis=0)[::2], of.astype(np.float32), of.tolist(), of.ravel()])
    if isinstance(of, (int, float)):
        return chance.choice([0, -1, 1, 2, 4, 5, 2**31 - 1, -(2**31), 2**40, 0.5, 1e-300, np.nan])
    if isinstance(of, str):
        name = chance.choice(["h2o_01zp", f"damaged{chance.randrange(40)}", f"damaged{chance.randrange(40)}", "h2o_ref"])
        return name + chance.choice([".fchk", ".log", ".cis", ".gjf", ""])
    if isinstance(of, (list, tuple)) and of:
        at = chance.randrange(len(of))
        return chance.choice([of[:at], of[at:], [*of, of[at]], [*of[:at], changed(chance, of[at]), *of[at + 1 :]]])
    return None


def uninitialised():
    """Objects that nobody has made whole."""
    for each in (stigruz.Job, stigruz.Set, stigruz.Reference):
        made = each.__new__(each)
        for name in dir(each):
            if name.startswith("_"):
                continue
            try:
                getattr(made, name)()
            except (*PROMISED, AttributeError):
                pass
    for each in (_core.Job, _core.Reference, _core.Report):
        for base in each.__mro__:
            try:
                raise AssertionError(base.__new__(each))
            except TypeError:
                pass


def sound_calls(others, job, reference, report):
    """Functions with arguments that make sense, some of which are then replaced."""
    x = np.array([report.coordinates + each.shifts for each in report.files])
    dipoles = np.array([each.dipole for each in report.files])
    arrays = (report.symbols, x, dipoles, np.zeros_like(x), report.masses)
    images = stigruz.ase.displace(stigruz.ase.atoms_of(report))
    core = {
        "read": ("h2o_ref.log",), "read_job": ("h2o_ref.fchk", None, None), "job_values": (job._core,),
        "transition_density": (job._core, 1), "orbitals": (job._core,), "amplitudes": (job._core, 1),
        "prepare": (job._core, [1, 2]), "follow": (reference._core, job._core, 0.8, 0.2),
        "sign": (np.eye(22), np.ones((17, 4)), np.eye(22), np.ones((17, 4)), 1),
        "report_on_files": ("h2o_ref.fchk", others, 1, True, None),
        "report_on_arrays": (*arrays, None, None, None, 9, True, True), "report_values": (report._core,),
        "html": (report._core,), "write_html": (report._core, "out.html", False),
        "write_fchk": (report._core, "out.fchk", "h2o_ref.fchk", False),
        "write_fcc": (report._core, "out", None, False),
        "displace": ("h2o.gjf", 0.01, [1], "inputs", False, True),
    }
    functions = {name for name, each in vars(_core).items() if callable(each) and not isinstance(each, type)}
    assert functions == set(core), functions ^ set(core)
    return [(getattr(_core, name), arguments) for name, arguments in core.items()] + [
        (stigruz.read, ("h2o_ref.log",)), (stigruz.Job, ("h2o_ref.fchk", "h2o_ref.log", "h2o_ref.cis")),
        (stigruz.Reference, (job, [1])), (stigruz.follow, (reference, job)),
        (stigruz.sign, core["sign"]), (stigruz.Set, ("h2o_ref.fchk", others, 1)),
        (stigruz.Set.from_arrays, (*arrays, "find")), (stigruz.displace, core["displace"]),
        (job.transition_density, (2,)), (job.amplitudes, (2,)), (report.write_fchk, ("out.fchk", None)),
        (report.write_html, ("out.html",)), (report.write_fcc, ("out", "h2o_ref.fchk")), (stigruz.ase.displace, (images[0], 0.01, [0])),
        (stigruz.ase.set_of, (images, dipoles, None)),
    ]


def main(count, seed):
    chance = random.Random(seed)
    damaged_files(chance)
    others = sorted(str(each) for each in pathlib.Path().glob("h2o_0*.fchk"))
    job = stigruz.Job("h2o_ref.fchk")
    reference = stigruz.Reference(job, [1])
    report = stigruz.Set("h2o_ref.fchk", others)
    followed = stigruz.follow(reference, "h2o_01zp.fchk")
    calls = sound_calls(others, job, reference, report)
    endings = {"good": 0}
    for function, arguments in calls:
        function(*arguments)
    for _ in range(count):
        function, arguments = chance.choice(calls)
        given = list(arguments)
        for _ in range(chance.choice([1, 1, 1, 2, len(given)])):
            at = chance.randrange(len(given))
            likely = chance.random() < 0.7
            given[at] = changed(chance, arguments[at]) if likely else values(chance, job, reference, report, followed)
        try:
            function(*given)
            endings["good"] += 1
        except PROMISED as error:
            endings[type(error).__name__] = endings.get(type(error).__name__, 0) + 1
        except ZeroDivisionError:
            pass  # of a callable that was handed in
    good_arrays(chance, count // 10, endings)
    uninitialised()
    # What is left of an object lives on after those that it was made of are gone.
    density = job.transition_density()
    core = report._core
    del job, report, reference, calls
    gc.collect()
    assert density.shape == (22, 22) and "html" in _core.html(core)
    print(endings)


def good_arrays(chance, count, endings):
    """Arrays of the right shapes, with a bad one among them or not, in odd orders of memory."""
    for _ in range(count):
        n, occupied, virtual = chance.randrange(1, 12), chance.randrange(0, 4), chance.randrange(0, 6)
        make = np.random.default_rng(chance.randrange(1000)).normal
        c, x = make(size=(n, n)), make(size=(virtual, occupied))
        if chance.random() < 0.3:
            c[chance.randrange(n)] = chance.choice([0.0, np.nan, 1e308, 1e-320])
        if chance.random() < 0.5:
            c, x = np.asfortranarray(c), np.repeat(x, 2, axis=0)[::2]
        atoms, geometries = chance.randrange(0, 4), chance.randrange(0, 20)
        places = np.round(make(size=(atoms, 3)), 2)
        moved = np.array([places] + [places + d for d in 0.01 * make(size=(geometries, atoms, 3))])
        for call in (
            lambda: stigruz.sign(c, x, c, -x, chance.randrange(-1, 3)),
            lambda: stigruz.Set.from_arrays(["H"] * atoms, moved, chance.choice([0, 1, 1e300]) * make(size=(len(moved), 3)),
                                            chance.choice([None, moved, 1e300 * moved])),
        ):
            try:
                call()
                endings["good"] += 1
            except PROMISED as error:
                endings[type(error).__name__] = endings.get(type(error).__name__, 0) + 1


if __name__ == "__main__":
    import stigruz.ase

    warnings.simplefilter("ignore")
    main(int(sys.argv[1]), int(sys.argv[2]))
