"""Derivatives with sum rules from any program: foreign_program.py TABLE

A table (foreign_table.py) stands for the program: x, y, z of three atoms (Angstrom), the dipole (au), the
forces (Hartree/Bohr), a line for each geometry.
"""

import sys

import numpy as np

import stigruz

table = np.loadtxt(sys.argv[1])


def my_program(coordinates):
    """The transition dipole of the state that you want, and the forces on the atoms in it."""
    row = table[np.abs(table[:, :9] - coordinates.ravel()).max(axis=1).argmin()]
    return row[9:12], row[12:].reshape(-1, 3)


reference = np.array([[0, 0, 0.118], [0, 0.76, -0.472], [0, -0.76, -0.472]])
steps = 0.01 * np.eye(9).reshape(9, 3, 3)
coordinates = [reference, *(reference + sign * step for step in steps for sign in (1, -1))]
dipoles, forces = zip(*(my_program(each) for each in coordinates))
s = stigruz.Set.from_arrays(["O", "H", "H"], coordinates, dipoles, forces)
print(s.verdict)
print("wavenumbers (1/cm):", s.modes.wavenumbers.round(1))
print("derivatives (au, per Bohr):", s.dipole_derivatives.round(4), sep="\n")
