"""The constants that stigruz counts with.

They are those of its library, so that numbers agree to the last digit.
"""

from . import _core

#: Angstrom per Bohr (CODATA 1986, as the programs have it whose files are read)
bohr: float = _core.bohr
#: electronvolts per Hartree (CODATA 2018)
hartree: float = _core.hartree
#: 1/cm per Hartree (CODATA 2018)
hartree_in_wavenumbers: float = _core.hartree_in_wavenumbers
#: electron masses per u (CODATA 2018)
atomic_mass_unit: float = _core.atomic_mass_unit
