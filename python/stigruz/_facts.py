"""What a file holds."""

import os
from collections.abc import Callable
from dataclasses import dataclass
from typing import Any, Optional, Union

from . import _core
from ._arrays import Floats, Integers

Path = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]


@dataclass(frozen=True, eq=False)
class MomentRows:
    """Numbers of states, or derivatives of one state's numbers by coordinates; a row for each.

    energies: (n,), total, Hartree
    electric_dipoles, velocity_dipoles, magnetic_dipoles: (n, 3), atomic units
    velocity_quadrupoles: (n, 6), xx, yy, zz, xy, xz, yz, atomic units
    """

    energies: Floats
    electric_dipoles: Floats
    velocity_dipoles: Floats
    magnetic_dipoles: Floats
    velocity_quadrupoles: Floats


@dataclass(frozen=True, eq=False)
class Moments:
    """What a formatted checkpoint tells of excited states ("ETran ..."), in nine digits.

    target: the state that the job was run for, from 1 on
    total_energy, ground_energy: Hartree; None where they are not told
    spins: (states,), 0 singlet, 2 triplet
    excitation_energies: (states,), Hartree; NaN where not told
    states: a row for each state
    derivatives: of the target state's numbers by 1x 1y 1z 2x ..., by Bohr; mostly None
    """

    target: int
    total_energy: Optional[float]
    ground_energy: Optional[float]
    spins: Integers
    excitation_energies: Floats
    states: MomentRows
    derivatives: Optional[MomentRows]


@dataclass(frozen=True, eq=False)
class Dump:
    """A dumped record of a Gaussian checkpoint or read-write file.

    record: its number; that of the excitation amplitudes is 635
    values: how many follow
    states, roots, amplitudes_per_spin, has_rest: the layout, None if the record does not tell it
    energies: (states,), of excitation, Hartree; NaN where not told
    sums_alpha, sums_beta: (states,), sums of (X+Y)(X-Y) over one spin, 1/2 of sound amplitudes
    spins: "singlet", "triplet" or "neither" of each state
    normalised: of each state, whether the sums are those of amplitudes
    """

    record: int
    values: int
    states: Optional[int]
    roots: Optional[int]
    amplitudes_per_spin: Optional[int]
    has_rest: Optional[bool]
    energies: Floats
    sums_alpha: Floats
    sums_beta: Floats
    spins: list[str]
    normalised: list[bool]


@dataclass(frozen=True, eq=False)
class Basis:
    """Electrons and basis functions."""

    alpha_electrons: int
    beta_electrons: int
    functions: int
    independent_functions: int


@dataclass(frozen=True, eq=False)
class Excitations:
    """The size of the excitation space; roots are those that the job sought."""

    roots: int
    alpha_electrons: int
    frozen_core: int
    active_occupied: int
    active_virtual: int
    frozen_virtual: int


@dataclass(frozen=True, eq=False)
class Oniom:
    """The layers of an ONIOM job.

    natom: atoms of all layers
    high: numbers of the atoms in the high layer, from 1 on
    """

    natom: int
    high: Integers


@dataclass(frozen=True)
class Result:
    """What a result file of stigruz tells of a job beside atoms, dipole and forces.

    sign: 1, -1, or 0 if it cannot be told; the corrected dipole is the one of Facts
    basis_functions: their number
    element: (row, column), from 0 on, of the transition density, by which the sign was found
    value: of the element in this job
    """

    sign: int
    basis_functions: int
    element: tuple[int, int]
    value: float


@dataclass(frozen=True, eq=False)
class Facts:
    """What a file of a quantum-chemistry program holds; None for what it does not.

    file: its name as given
    program, version: of the program that wrote it; kind: the library's tag for such files, and
        in_words: what people call them; class_code: the library's code for programs
    version_of: whose version that is: "the program", "libXC", or None if it is none
    natom: the number of atoms
    atomic_numbers: (N,); -1 where the file gives none, 0 a dummy atom
    point_charges: numbers of atoms, from 1 on, that are charges around an embedded model
    coordinates: (N, 3), Angstrom; geometry_is_last: they are the last of `geometries` tables, else
        the first; frame: the title of a Gaussian table; two_frames: forces are in another frame
    masses: (N,), u; NaN where the file gives none
    forces: (N, 3), Hartree/Bohr; of an ONIOM job on its high layer
    transition_dipoles: (states, 3), ground to excited state, atomic units
    oniom, basis, excitations, dump, moments, result: see there
    missing: why something is not there, in words, by the name of the attribute
    """

    file: str
    missing: dict[str, str]
    program: Optional[str] = None
    kind: Optional[str] = None
    in_words: Optional[str] = None
    version: Optional[str] = None
    version_of: Optional[str] = None
    class_code: Optional[int] = None
    natom: Optional[int] = None
    atomic_numbers: Optional[Integers] = None
    point_charges: Optional[Integers] = None
    coordinates: Optional[Floats] = None
    geometry_is_last: Optional[bool] = None
    geometries: Optional[int] = None
    frame: Optional[str] = None
    two_frames: Optional[bool] = None
    masses: Optional[Floats] = None
    forces: Optional[Floats] = None
    transition_dipoles: Optional[Floats] = None
    oniom: Optional[Oniom] = None
    basis: Optional[Basis] = None
    excitations: Optional[Excitations] = None
    dump: Optional[Dump] = None
    moments: Optional[Moments] = None
    result: Optional[Result] = None


def _moments(values: dict[str, Any]) -> Moments:
    derivatives = values.pop("derivatives")
    return Moments(
        states=MomentRows(**values.pop("states")),
        derivatives=None if derivatives is None else MomentRows(**derivatives),
        **values,
    )


_PARTS: dict[str, Callable[[dict[str, Any]], object]] = {
    "oniom": lambda values: Oniom(**values),
    "basis": lambda values: Basis(**values),
    "excitations": lambda values: Excitations(**values),
    "dump": lambda values: Dump(**values),
    "moments": _moments,
    "result": lambda values: Result(**values),
}


def read(file: Path) -> Facts:
    """Everything that the readers find in an output of a quantum-chemistry program, or in a result
    file of stigruz (.sgn), whose corrected dipole is the only one of transition_dipoles.

    Whatever the file holds, damage included, is told by Facts.missing. Raises MissingFileError, and
    Error for a file that cannot be read.
    """
    values = _core.read(file)
    for name, make in _PARTS.items():
        if name in values:
            values[name] = make(values[name])
    return Facts(file=os.fsdecode(file), **values)
