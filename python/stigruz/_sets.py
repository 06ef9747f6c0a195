"""Sets of displaced jobs."""

import html as _html
import os
from collections.abc import Callable, Iterable, Sequence
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any, Optional, Union

from numpy.typing import ArrayLike

from . import _core
from ._arrays import Floats, Integers
from ._errors import Error
from ._facts import Path

if TYPE_CHECKING:
    from ase.vibrations.data import VibrationsData
    from matplotlib.axes import Axes

Progress = Union[bool, Callable[[int, int], object]]  # of steps that are done, and all


@dataclass(frozen=True)
class Finding:
    """What deserves doubt.

    doubt: its name, for programs; text: in words; file: the file in question, or None
    """

    doubt: str
    text: str
    file: Optional[str]


@dataclass(frozen=True, eq=False)
class SetFile:
    """A file of a set, or a geometry.

    role: "reference", "paired", "one_sided", "undisplaced" or "repeated"
    sign: with which the dipole as printed was multiplied; dipole: (3,), corrected, atomic units
    shifts: (N, 3), of the atoms against the reference, Angstrom; step: the largest distance
    other: the file with the opposite displacement, or of which it is a repetition
    """

    file: str
    role: str
    sign: int
    dipole: Floats
    shifts: Floats
    step: float
    other: Optional[str]
    findings: list[Finding]


@dataclass(frozen=True, eq=False)
class MomentDerivatives:
    """Derivatives of a transition moment by 1x 1y 1z 2x ..., atomic units by Bohr.

    values: (3N, 3), or (3N, 6) of a quadrupole (xx, yy, zz, xy, xz, yz)
    rounding, noise: (3N,), standard deviations from the digits and from jobs that converged less
    step_errors: as values, from the step as far as one derivative tells; step_scale: what they are as a part of
        that, as the sums tell; uncertainties: as values, of all together
    """

    values: Floats
    rounding: Floats
    noise: Floats
    step_errors: Floats
    step_scale: float
    uncertainties: Floats


@dataclass(frozen=True, eq=False)
class Modes:
    """Harmonic normal modes in order of their wavenumbers; M of them, none without forces.

    wavenumbers: (M,), 1/cm, negative if imaginary; reduced_masses: (M,), u
    displacements: (M, N, 3), Cartesian, each of length 1, the largest component positive
    dipole_derivatives: (M, 3), by the mass-weighted coordinate, atomic units (electron masses)
    dipole_derivatives_q: (M, 3), by the dimensionless one; NaN if imaginary
    borrowed: (M,), square of that against the square of the dipole itself; NaN if one has none
    velocity_dipole_derivatives, magnetic_dipole_derivatives: (M, 3), velocity_quadrupole_derivatives:
        (M, 6), and with _q by the dimensionless coordinate; None where the jobs do not tell them
    """

    wavenumbers: Floats
    reduced_masses: Floats
    displacements: Floats
    dipole_derivatives: Floats
    dipole_derivatives_q: Floats
    borrowed: Floats
    velocity_dipole_derivatives: Optional[Floats]
    velocity_dipole_derivatives_q: Optional[Floats]
    magnetic_dipole_derivatives: Optional[Floats]
    magnetic_dipole_derivatives_q: Optional[Floats]
    velocity_quadrupole_derivatives: Optional[Floats]
    velocity_quadrupole_derivatives_q: Optional[Floats]

    def __len__(self) -> int:
        return len(self.wavenumbers)


@dataclass(frozen=True, eq=False)
class Excitation:
    """The transition of the reference that the dipole belongs to.

    state, state_of_forces: from 1 on; energy: Hartree, or None
    gradient: (N, 3), of that energy, Hartree/Bohr, or None
    """

    state: int
    state_of_forces: int
    energy: Optional[float]
    gradient: Optional[Floats]


@dataclass(frozen=True)
class NearInSet:
    """Another state that comes near the one of a set; where both mix, derivatives are not sound.

    state: of the reference, the one of the set, from 1 on
    distance: the least of the energies, Hartree; job: where that is
    near, jobs: in how many jobs it is less than near_energies, of how many
    text: all that in words
    """

    state: int
    distance: float
    job: str
    near: int
    jobs: int
    text: str


@dataclass(frozen=True, eq=False)
class SumRules:
    """What must vanish when the molecule is moved or turned as a whole.

    judged: they were; if not, why_not tells why, satisfied is None and the tables are None
    chi2: sum of (residue / uncertainty)^2 over all `sums`; largest: |residue| / uncertainty;
    largest_residue: |residue|, atomic units
    noise: of every value, beyond its rounding, so far as the sums see it (standard deviation, au);
    step_scale: what the errors of the steps are as a part of those estimated, more or less, as the sums tell
    translation, rotation: (3, components), residues: axis, component (per Bohr, per radian), and
        their uncertainties; components: 3 of the dipole, 3N of the forces
    """

    judged: bool
    why_not: Optional[str]
    satisfied: Optional[bool]
    chi2: float
    sums: int
    largest: float
    largest_residue: float
    noise: float
    step_scale: float
    translation: Optional[Floats]
    translation_uncertainty: Optional[Floats]
    rotation: Optional[Floats]
    rotation_uncertainty: Optional[Floats]


@dataclass(frozen=True, eq=False)
class SetSumRules:
    """Of dipole, forces and other moments, which are not judged where the jobs do not tell them.

    suspects: the files whose signs, reversed together, mend the sums; alternatives: others that
    do nearly as well; unsound: sums fail, and no few signs mend them
    unseen: files whose dipoles are so small that a wrong sign would not be seen, and by how much a
    derivative might then be off (unseen_error, au); reference_unseen: the same of the reference;
    as_good: many signs at once that, reversed, fit as well (dark states)
    """

    dipole: SumRules
    forces: SumRules
    velocity_dipole: SumRules
    magnetic_dipole: SumRules
    suspects: list[str]
    alternatives: list[list[str]]
    unsound: bool
    unseen: list[str]
    unseen_error: float
    reference_unseen: bool
    as_good: list[list[str]]


@dataclass(frozen=True, eq=False)
class FoundSigns:
    """Signs that nobody knew, of M geometries.

    decided: one choice fits, and all others fit worse by far
    signs: (M,), 1 or -1, by which the dipoles were multiplied; the reference keeps its own
    alternatives: if undecided, the choices that fit, each as signs, the best first; empty if none
        fits, or if there are too many to be tried
    open: if undecided, the geometries (from 0 on) whose signs are open against those of most others
    largest_change: by how much derivatives differ at most between the alternatives, atomic units
    reason: if undecided, why, in words
    """

    decided: bool
    signs: Integers
    alternatives: list[Integers]
    open: list[int]
    largest_change: float
    reason: Optional[str]


@dataclass(frozen=True)
class Displaced:
    """The inputs of a set: names of the files, the reference first, and what should be known."""

    files: list[str]
    notes: list[str]


def displace(
    input: Path,
    step: Union[float, str, Sequence[float]] = 0.01,
    atoms: Optional[Iterable[int]] = None,
    directory: Path = ".",
    one_sided: bool = False,
    overwrite: bool = False,
) -> Displaced:
    """Writes the inputs of a set from the Gaussian input of one excited-state job.

    Every atom is moved by + and - `step` (Angstrom; 0.0001 to 1) along x, y and z, by several of
    them (up to 0.1) if `step` is a sequence; with one_sided
    by + alone. `atoms` are numbers from 1 on, as in the names of the files; without, all, of an
    ONIOM job those of the high layer. A directory that is not there is made. All files appear or
    none: raises Error if one is there already, unless `overwrite`, and for an input of which no set
    can be made.
    """
    if not isinstance(step, (str, float, int)):
        if len(step) > 64:
            raise Error(f"there are {len(step)} steps; some few will do")
        step = ",".join(str(float(each)) for each in step)
    values = _core.displace(input, step, atoms, directory, one_sided, overwrite)
    into = os.fsdecode(directory)
    files = [name if into in ("", ".") else os.path.join(into, name) for name in values["files"]]
    return Displaced(files, values["notes"])


def _tell(progress: Progress, steps: int) -> Optional[Callable[[int], object]]:
    """What the library is to call; None if nobody wants to know."""
    if not isinstance(progress, bool):
        call = progress
        return lambda done: call(done, steps)
    if not progress:
        return None
    try:
        from tqdm.auto import tqdm
    except ImportError:
        return None
    bar = tqdm(total=steps)

    def show(done: int) -> None:
        bar.update(done - bar.n)
        if done >= steps:
            bar.close()

    return show


class Set:
    """A set of displaced jobs with one state of theirs: derivatives, modes, and what deserves doubt.

    reference, files: names of result files of stigruz (.sgn), or of the checkpoints of jobs
        (.fchk, logs and dumps beside them), whose states are then followed
    state: of the reference, from 1 on, if they are jobs; without, the one that it was run for
    sum_rules: judge them; they do not hold in an outer field, with embedding charges or link atoms
    progress: True for a bar of tqdm, if that is there, or a function of (done, all)

    Raises Error if there is no result: files that do not belong together, coordinates that no file
    displaces. Ctrl-C ends it between two jobs. A set may be used from several threads. Coordinates
    are in the order 1x 1y 1z 2x ... (3N); atomic units where nothing else is said.

    symbols: of the N atoms; atomic_numbers, input_numbers: (N,), the latter in the input of the job
    masses: (N,), u; coordinates: (N, 3), Angstrom
    files: a SetFile for each, the reference first
    smallest_step, largest_step: Angstrom
    dipole_decimals, force_decimals: as seen in the numbers; coordinate_decimals, Angstrom
    dipole_source: where the dipoles come from, "checkpoints", "logs" or "result files"
    dipole: (3,), of the reference
    dipole_derivatives: (3N, 3), per Bohr
    dipole_uncertainty: (3N, 3), standard deviations of the derivatives, all in all
    dipole_rounding: (3N,), from the rounding of the dipoles alone, alike for all components
    dipole_sign_errors: (3N, 3), from signs that nobody can see
    dipole_step_errors: (3N, 3), from the size of the displacements; dipole_step_error: the largest
    velocity_dipole_derivatives, magnetic_dipole_derivatives, velocity_quadrupole_derivatives:
        MomentDerivatives, None where the jobs do not tell these moments
    forces: (N, 3), Hartree/Bohr, of the reference; None without
    force_constants: (3N, 3N), Hartree/Bohr^2, symmetrised; None without forces
    force_constants_asymmetry: how far they were from that; force_step_error
    stationary: the reference is a stationary point; None without forces
    modes: Modes
    excitation: Excitation, None if no checkpoint tells
    near_state: NearInSet, None if no state comes near, or the files are no jobs
    surroundings: what around the atoms does not move with them, in words
    sum_rules: SetSumRules
    findings: a Finding for everything that deserves doubt; verdict: one sentence
    fine: nothing deserves doubt
    notes: what else should be known of how the files were read
    found_signs: FoundSigns, of from_arrays(signs="find"); else None
    """

    symbols: list[str]
    atomic_numbers: Integers
    input_numbers: Integers
    masses: Floats
    coordinates: Floats
    files: list[SetFile]
    smallest_step: float
    largest_step: float
    dipole_decimals: int
    force_decimals: int
    coordinate_decimals: int
    dipole_source: str
    dipole: Floats
    dipole_derivatives: Floats
    dipole_uncertainty: Floats
    dipole_rounding: Floats
    dipole_sign_errors: Floats
    dipole_step_error: float
    dipole_step_errors: Floats
    velocity_dipole_derivatives: Optional[MomentDerivatives]
    magnetic_dipole_derivatives: Optional[MomentDerivatives]
    velocity_quadrupole_derivatives: Optional[MomentDerivatives]
    forces: Optional[Floats]
    force_constants: Optional[Floats]
    force_constants_asymmetry: float
    force_step_error: float
    stationary: Optional[bool]
    modes: Modes
    excitation: Optional[Excitation]
    near_state: Optional[NearInSet]
    surroundings: list[str]
    sum_rules: SetSumRules
    findings: list[Finding]
    verdict: str
    fine: bool
    notes: list[str]
    found_signs: Optional[FoundSigns]

    def __init__(
        self,
        reference: Path,
        files: Sequence[Path],
        state: Optional[int] = None,
        *,
        sum_rules: bool = True,
        progress: Progress = False,
    ) -> None:
        names = files if isinstance(files, (str, bytes)) else list(files)
        tell = _tell(progress, len(names) + 1)
        self._take(_core.report_on_files(reference, names, state, sum_rules, tell))

    @classmethod
    def from_arrays(
        cls,
        symbols: Sequence[Union[str, int]],
        coordinates: ArrayLike,
        dipoles: ArrayLike,
        forces: Optional[ArrayLike] = None,
        masses: Optional[ArrayLike] = None,
        signs: str = "given",
        *,
        names: Optional[Sequence[str]] = None,
        dipole_decimals: Optional[int] = None,
        force_decimals: Optional[int] = None,
        coordinate_decimals: int = 9,
        sum_rules: bool = True,
    ) -> "Set":
        """The set of any program's dipoles.

        symbols: of the N atoms, or atomic numbers
        coordinates: (M, N, 3), Angstrom, of all geometries, that of the reference first
        dipoles: (M, 3), transition dipoles of one state, atomic units
        forces: (M, N, 3), Hartree/Bohr, of the state whose modes are wanted
        masses: (N,), u; without, those of the most frequent isotopes
        signs: "given", the dipoles have their right signs, which the sum rules judge; "find", they
            are arbitrary: found_signs tells which were found, by continuity along every displacement
            and by the sums, or that they are undecided, which is a finding
        names: (M,), by which findings name the geometries
        dipole_decimals, force_decimals, coordinate_decimals: with how many the numbers are right,
            0 to 10; without, dipoles and forces are as right as they have decimals. Where a program
            gives more than it converged to, say so: uncertainties and sum rules go by it.
        """
        if signs not in ("given", "find"):
            raise Error('signs must be "given" or "find"')
        made = cls.__new__(cls)
        made._take(
            _core.report_on_arrays(
                symbols,
                coordinates,
                dipoles,
                forces,
                masses,
                names,
                dipole_decimals,
                force_decimals,
                coordinate_decimals,
                sum_rules,
                signs == "find",
            )
        )
        return made

    def _take(self, core: "_core.Report") -> None:
        self._core = core
        values = _core.report_values(core)
        values["findings"] = [Finding(**each) for each in values["findings"]]
        for each in values["files"]:
            each["findings"] = [Finding(**finding) for finding in each["findings"]]
        values["files"] = [SetFile(**each) for each in values["files"]]
        for name in (
            "velocity_dipole_derivatives",
            "magnetic_dipole_derivatives",
            "velocity_quadrupole_derivatives",
        ):
            if values[name] is not None:
                values[name] = MomentDerivatives(**values[name])
        values["modes"] = Modes(**values["modes"])
        if values["excitation"] is not None:
            values["excitation"] = Excitation(**values["excitation"])
        if values["near_state"] is not None:
            values["near_state"] = NearInSet(**values["near_state"])
        flips: list[list[str]] = values.pop("flips")
        values["sum_rules"] = SetSumRules(
            dipole=SumRules(**values.pop("dipole_rules")),
            forces=SumRules(**values.pop("force_rules")),
            velocity_dipole=SumRules(**values.pop("velocity_rules")),
            magnetic_dipole=SumRules(**values.pop("magnetic_rules")),
            suspects=flips[0] if flips else [],
            alternatives=flips[1:],
            unsound=values.pop("unsound"),
            unseen=values.pop("unseen"),
            unseen_error=values.pop("unseen_error"),
            reference_unseen=values.pop("reference_unseen"),
            as_good=values.pop("as_good"),
        )
        if values["found_signs"] is not None:
            values["found_signs"] = FoundSigns(**values["found_signs"])
        self.__dict__.update(values)

    def __repr__(self) -> str:
        return f"Set({self.files[0].file!r} and {len(self.files) - 1} others): {self.verdict}"

    def _repr_html_(self) -> str:
        return (
            f'<iframe srcdoc="{_html.escape(self.html())}" '
            'style="width: 100%; height: 40em; border: 0"></iframe>'
        )

    def html(self) -> str:
        """The page that write_html() writes."""
        return _core.html(self._core)

    def write_html(self, file: Path, overwrite: bool = False) -> None:
        """Writes a page to look at, which needs nothing else; whole or not at all.

        An earlier page is replaced, another file only with `overwrite`, and none that the set was
        made of, nor a result file: Error.
        """
        _core.write_html(self._core, file, overwrite)

    def write_fchk(
        self, file: Path, template: Optional[Path] = None, overwrite: bool = False
    ) -> None:
        """Writes a formatted checkpoint with the derivatives, as vibronic programs read them.

        template: the reference's checkpoint, whose other sections are kept. An earlier file of
        its kind is replaced, others as by write_html().
        """
        _core.write_fchk(self._core, file, template, overwrite)

    def write_fcc(
        self, name: Path, template: Optional[Path] = None, overwrite: bool = False
    ) -> list[str]:
        """Writes the files of the state for FCclasses 3; returns their names.

        They are NAME.fcc, with forces and force constants, eldip_NAME and, if the jobs tell magnetic
        dipoles, magdip_NAME, the latter two in the directory of NAME. Earlier ones are replaced as
        by write_fchk(), all having been made before.
        template: the reference's checkpoint, which tells the energy; without, the one that the set
        was made of or that lies beside the reference's result file. Error without an energy or forces.
        """
        return _core.write_fcc(self._core, name, template, overwrite)

    def to_ase(self) -> "VibrationsData":
        """The force constants as ASE has them, with the atoms; Error without forces."""
        from .ase import vibrations_of

        return vibrations_of(self)

    def plot_dipole(self, ax: Optional["Axes"] = None) -> "Axes":
        """Draws the dipole of all geometries, as given and with its sign; takes matplotlib."""
        from ._plots import plot_dipole

        return plot_dipole(self, ax)

    def plot_modes(self, ax: Optional["Axes"] = None) -> "Axes":
        """Draws what each mode borrows over its wavenumber; takes matplotlib."""
        from ._plots import plot_modes

        return plot_modes(self, ax)
