"""Sets of displaced geometries as ASE has them.

Any calculator of transition dipoles serves:

    images = stigruz.ase.displace(atoms)
    dipoles = [dipole_of(image) for image in images]
    s = stigruz.ase.set_of(images, dipoles)
"""

from collections.abc import Iterable, Sequence
from operator import index
from typing import TYPE_CHECKING, Any, Optional

import numpy as np
from numpy.typing import ArrayLike

from . import units
from ._errors import Error
from ._sets import Set

if TYPE_CHECKING:
    from ase import Atoms
    from ase.vibrations.data import VibrationsData

#: eV/Angstrom per Hartree/Bohr, with the constants of stigruz
force_unit: float = units.hartree / units.bohr


def _require_atoms(*images: object) -> None:
    from ase import Atoms

    if not all(isinstance(image, Atoms) for image in images):
        raise TypeError("ase.Atoms are needed")


def displace(
    atoms: "Atoms", step: float = 0.01, indices: Optional[Iterable[int]] = None
) -> "list[Atoms]":
    """The geometry, and the same with every atom moved by + and - `step` (Angstrom) along x, y, z.

    indices: of the atoms to be moved, from 0 on; a set for derivatives needs all. Every image has
    its name in info["name"]: "ref", "01xp", "01xm", ...
    """
    _require_atoms(atoms)
    if not 1e-4 <= step <= 1:
        raise Error("step must be 0.0001 to 1 Angstrom")
    images = [atoms.copy()]
    images[0].info["name"] = "ref"
    for i in map(index, range(len(atoms)) if indices is None else indices):
        if not 0 <= i < len(atoms):
            raise Error(f"indices must be 0 to {len(atoms) - 1}")
        for axis in range(3):
            for sign, letter in ((1, "p"), (-1, "m")):
                image = atoms.copy()
                image.positions[i, axis] += sign * step
                image.info["name"] = f"{i + 1:02d}{'xyz'[axis]}{letter}"
                images.append(image)
    return images


def set_of(
    images: "Sequence[Atoms]",
    dipoles: ArrayLike,
    forces: Optional[ArrayLike] = None,
    signs: str = "given",
    sum_rules: bool = True,
) -> Set:
    """The set of these geometries, the reference first.

    dipoles: (M, 3), transition dipoles, atomic units; forces: (M, N, 3), eV/Angstrom, as ASE has
    them, of the excited state; signs: as in Set.from_arrays(). Masses are those of the first image.
    """
    images = list(images)
    _require_atoms(*images)
    if not images:
        raise Error("there are no geometries")
    first = images[0]
    return Set.from_arrays(
        first.get_chemical_symbols(),
        np.array([image.positions for image in images]),
        dipoles,
        None if forces is None else np.asarray(forces, dtype=float) / force_unit,
        first.get_masses(),
        signs,
        names=[str(image.info.get("name", i)) for i, image in enumerate(images)],
        sum_rules=sum_rules,
    )


def atoms_of(of: Set) -> "Atoms":
    """The reference geometry of a set, with its masses."""
    from ase import Atoms

    return Atoms(numbers=of.atomic_numbers, positions=of.coordinates, masses=of.masses)


def vibrations_of(of: Set) -> "VibrationsData":
    """The force constants of a set in eV/Angstrom^2, with its atoms; Error without forces."""
    from ase.vibrations.data import VibrationsData

    if of.force_constants is None:
        raise Error("the files of the set hold no forces")
    hessian: Any = of.force_constants * (force_unit / units.bohr)
    return VibrationsData.from_2d(atoms_of(of), hessian)
