"""Single jobs, and their states followed into others."""

from collections.abc import Iterable
from dataclasses import dataclass
from typing import Any, Optional, Union

import numpy as np
from numpy.typing import ArrayLike

from . import _core
from ._arrays import Floats, Integers
from ._facts import Path


@dataclass(frozen=True)
class JobCounts:
    """The sizes of a job; roots are those that it sought."""

    natom: int
    basis_functions: int
    orbitals: int
    active_occupied: int
    active_virtual: int
    roots: int
    frozen_core: int
    frozen_virtual: int


@dataclass(frozen=True)
class NearState:
    """The state of the same spin whose energy is nearest to that of another.

    root: its number in the job, from 1 on; distance: of the energies, Hartree
    is_near: less than near_energies; where the two mix, derivatives of their dipoles are not sound
    """

    root: int
    distance: float
    is_near: bool


#: Hartree; 0.1 eV
near_energies: float = _core.near_energies


def _nearest(values: Optional[dict[str, Any]]) -> Optional[NearState]:
    return None if values is None else NearState(**values)


class Job:
    """A Gaussian job of excited states (CIS or TD, restricted closed shell): its formatted
    checkpoint with its log and the dump of its amplitudes.

    Log and dump are NAME.log and NAME.cis beside the checkpoint NAME.fchk unless others are named.
    (The command-line tools look for them in the working directory.) Everything is read at once;
    raises Error if the files cannot be a job or contradict each other, MissingFileError if one is
    not there.

    name: of the checkpoint, without directory and extension
    checkpoint, log, dump: names of the files
    counts: a JobCounts
    states: how many there are
    atomic_numbers: (N,); of an ONIOM job those of the high layer, as everything of atoms
    coordinates: (N, 3), Angstrom; masses: (N,), u
    forces: (N, 3), Hartree/Bohr, or None; forces_of: the state that they belong to, from 1 on, or
        None if that is not told
    energies: (states,), of excitation, Hartree
    spins: "singlet" or "triplet" of each state, None where the dump does not tell
    nearest: a NearState of each state, None where there is no other of its spin
    oscillator_strengths: (states,), of the electric dipoles
    electric_dipoles: (states, 3), ground to excited state, atomic units, in nine digits where the
        checkpoint has them; printed_dipoles: the same as the log prints them
    velocity_dipoles, magnetic_dipoles: (states, 3), velocity_quadrupoles: (states, 6) in the order
        xx, yy, zz, xy, xz, yz, atomic units; None where the checkpoint has none
    missing: why something is not there, in words, by the name of the attribute

    The phase of a state is arbitrary and the same in all of its moments, amplitudes and density.
    A job may be used from several threads.
    """

    name: str
    checkpoint: str
    log: str
    dump: str
    counts: JobCounts
    states: int
    atomic_numbers: Integers
    coordinates: Floats
    masses: Floats
    forces: Optional[Floats]
    forces_of: Optional[int]
    energies: Floats
    spins: list[Optional[str]]
    nearest: list[Optional[NearState]]
    oscillator_strengths: Floats
    electric_dipoles: Floats
    printed_dipoles: Floats
    velocity_dipoles: Optional[Floats]
    magnetic_dipoles: Optional[Floats]
    velocity_quadrupoles: Optional[Floats]
    missing: dict[str, str]

    def __init__(
        self, checkpoint: Path, log: Optional[Path] = None, dump: Optional[Path] = None
    ) -> None:
        self._core = _core.read_job(checkpoint, log, dump)
        values = _core.job_values(self._core)
        values["counts"] = JobCounts(**values["counts"])
        values["nearest"] = [_nearest(each) for each in values["nearest"]]
        self.__dict__.update(values)

    def __repr__(self) -> str:
        return f"Job({self.checkpoint!r}): {self.states} states of {len(self.masses)} atoms"

    def transition_density(self, state: int = 1) -> Floats:
        """The transition density between the ground state and a state (from 1 on).

        (nbasis, nbasis), alpha spin, in the basis of atomic orbitals: rows belong to the virtual
        side, columns to the occupied one; nothing is normalised or symmetrised.
        """
        return _core.transition_density(self._core, state)

    def orbitals(self) -> Floats:
        """The coefficients of the molecular orbitals, (nbasis, orbitals), an orbital per column."""
        return _core.orbitals(self._core)

    def amplitudes(self, state: int = 1) -> Floats:
        """X+Y of alpha spin of a state (from 1 on), (active virtual, active occupied)."""
        return _core.amplitudes(self._core, state)


@dataclass(frozen=True, eq=False)
class FollowedState:
    """What became of a state of the reference.

    state: its number there; root: the state of the job that continues it, None if it is lost
    verdict: "same", "exchanged", "mixed" or "lost"
    overlap: its magnitude, None if it is lost; sign: 1 or -1, of the overlap, 0 if it is lost
    spin: "singlet", "triplet" or None
    energy: of excitation, Hartree; oscillator_strength; dipole: (3,), electric transition dipole
        times the sign, atomic units, as Job.electric_dipoles; None if the state is lost
    velocity_dipole, magnetic_dipole: (3,), velocity_quadrupole: (6,), times the sign, as those of
        Job; None if the job does not tell them, or the state is lost
    nearest: the NearState of the root among the states of the job, None if there is none
    overlaps: (states of the job,), with each of them
    """

    state: int
    root: Optional[int]
    verdict: str
    overlap: Optional[float]
    sign: int
    spin: Optional[str]
    energy: Optional[float]
    dipole: Optional[Floats]
    oscillator_strength: Optional[float]
    velocity_dipole: Optional[Floats]
    magnetic_dipole: Optional[Floats]
    velocity_quadrupole: Optional[Floats]
    nearest: Optional[NearState]
    overlaps: Floats


@dataclass(frozen=True, eq=False)
class FollowedJob:
    """The states of a reference in another job.

    states: a FollowedState for each; clear: all are the same, without a doubt
    stigruz_sign: the sign that the tool stigruz would give the first state, by one element of its
        density, and whether that agrees; None if the first state was not followed
    """

    name: str
    states: list[FollowedState]
    clear: bool
    stigruz_sign: Optional[int]
    stigruz_agrees: Optional[bool]

    @property
    def roots(self) -> Integers:
        """(states,), the root that continues each, from 1 on; 0 if it is lost."""
        return np.array([each.root or 0 for each in self.states], dtype=np.int64)

    @property
    def signs(self) -> Integers:
        """(states,), 1 or -1; 0 if the state is lost."""
        return np.array([each.sign for each in self.states], dtype=np.int64)

    @property
    def overlaps(self) -> Floats:
        """(states, states of the job), overlaps of all with all; 0 where the spins differ."""
        return np.array([each.overlaps for each in self.states], dtype=np.float64)


class Reference:
    """A job that others are compared with, made ready once: follow() takes it as it takes a job.

    states: the states to be followed, from 1 on; all without.
    """

    def __init__(self, job: Union[Job, Path], states: Optional[Iterable[int]] = None) -> None:
        self.job = job if isinstance(job, Job) else Job(job)
        self._core = _core.prepare(self.job._core, states)


def follow(
    reference: Union[Reference, Job, Path],
    job: Union[Job, Path],
    *,
    mixed_below: float = _core.mixed_below,
    lost_below: float = _core.lost_below,
) -> FollowedJob:
    """Which root of a job continues which state of the reference, and with which sign.

    Both have the same atoms, basis and frozen orbitals. A state is mixed or lost if the square of
    its overlap is below the limits. Of many jobs, make a Reference first: its orbitals are then
    factorised once. Raises Error for jobs that do not belong together.
    """
    its = reference if isinstance(reference, Reference) else Reference(reference)
    now = job if isinstance(job, Job) else Job(job)
    values = _core.follow(its._core, now._core, mixed_below, lost_below)
    for each in values["states"]:
        each["nearest"] = _nearest(each["nearest"])
    values["states"] = [FollowedState(**each) for each in values["states"]]
    return FollowedJob(name=now.name, **values)


@dataclass(frozen=True)
class Sign:
    """The sign of a state of one job against that of another.

    sign: 1, -1, or 0 if it cannot be told: of the value of one element of the transition density
        against the reference's; the dipole of the job is to be multiplied by it
    overlap: of both states, 1 or -1 being the same state; a small one says that they are not
    element: (row, column), from 0 on, where the density of the reference is largest
    reference_value, value: of the element in both
    """

    sign: int
    overlap: float
    element: tuple[int, int]
    reference_value: float
    value: float

    @property
    def ratio(self) -> float:
        """|value / reference_value|: with small displacements nearly 1."""
        return abs(self.value / self.reference_value)

    @property
    def agrees(self) -> bool:
        """Element and overlap give the same sign."""
        return self.sign * self.overlap > 0


def sign(
    C0: ArrayLike, X0: ArrayLike, C1: ArrayLike, X1: ArrayLike, frozen_core: int = 0
) -> Sign:
    """The sign of an excited state of any program, from its orbitals and amplitudes.

    C0, C1: (nbasis, orbitals), the molecular orbitals of the reference and of the job as columns,
        from the lowest one on, in one basis of atomic orbitals that moves with the atoms
    X0, X1: (active virtual, active occupied), the amplitudes, X+Y or X, of any norm
    frozen_core: how many of the lowest orbitals take no part; so do those above the virtual ones

    Raises Error for shapes that do not fit, values that are not finite, orbitals that are linearly
    dependent, and amplitudes of zero.
    """
    return Sign(**_core.sign(C0, X0, C1, X1, frozen_core))
