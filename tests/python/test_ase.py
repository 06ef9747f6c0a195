"""Sets to and from ASE."""

import numpy as np
import pytest
from conftest import jobs_of

import stigruz

ase = pytest.importorskip("ase")
import stigruz.ase  # noqa: E402


@pytest.fixture
def bundled(water):
    reference, others = jobs_of(water)
    return stigruz.Set(reference, others)


def test_vibrations(bundled):
    vibrations = bundled.to_ase()
    assert vibrations.get_hessian().shape == (3, 3, 3, 3)
    atoms = vibrations.get_atoms()
    assert atoms.get_chemical_symbols() == bundled.symbols
    assert np.array_equal(atoms.positions, bundled.coordinates)
    assert np.array_equal(atoms.get_masses(), bundled.masses)
    # ASE has other constants, and does not project translations and rotations out.
    assert np.allclose(vibrations.get_frequencies()[-3:].real, bundled.modes.wavenumbers, atol=0.6)


def test_a_loop_with_a_calculator(bundled):
    """The loop gives the set again: dipoles and forces of the jobs stand for those of a calculator."""
    atoms = stigruz.ase.atoms_of(bundled)
    images = stigruz.ase.displace(atoms, step=0.01)
    assert [image.info["name"] for image in images[:3]] == ["ref", "01xp", "01xm"] and len(images) == 19
    told = {file.file.removeprefix("h2o_").removesuffix(".fchk"): file for file in bundled.files}
    dipoles, forces = [], []
    for image in images:
        file = told[image.info["name"]]
        assert np.allclose(image.positions, bundled.coordinates + file.shifts, atol=1e-6)
        dipoles.append(file.dipole)
        forces.append(stigruz.Job(file.file).forces * ase.units.Hartree / ase.units.Bohr)
    s = stigruz.ase.set_of(images, dipoles, forces)
    assert s.fine and np.allclose(s.dipole_derivatives, bundled.dipole_derivatives, atol=1e-4)
    assert np.allclose(s.modes.wavenumbers, bundled.modes.wavenumbers, atol=0.5)
    dipoles[4] = -dipoles[4]
    assert stigruz.ase.set_of(images, dipoles).sum_rules.suspects == ["01ym"]


def test_what_makes_no_sense(bundled):
    atoms = stigruz.ase.atoms_of(bundled)
    assert len(stigruz.ase.displace(atoms, indices=[2])) == 7
    for step in (0, 2, float("nan")):
        with pytest.raises(stigruz.Error, match="0.0001 to 1"):
            stigruz.ase.displace(atoms, step=step)
    with pytest.raises(TypeError):
        stigruz.ase.displace("H2O")
    with pytest.raises(stigruz.Error, match="no geometries"):
        stigruz.ase.set_of([], [])
    without = stigruz.Set.from_arrays(bundled.symbols, [bundled.coordinates + f.shifts for f in bundled.files],
                                      [f.dipole for f in bundled.files])
    with pytest.raises(stigruz.Error, match="no forces"):
        without.to_ase()
