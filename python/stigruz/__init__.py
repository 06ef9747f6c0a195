"""Excited states over displaced geometries: signs, derivatives, normal modes, sum rules.

    facts = stigruz.read("job.log")                          # any output that the readers know
    job = stigruz.Job("h2o_ref.fchk")                        # with its log and dump
    s = stigruz.Set("h2o_ref.fchk", sorted(glob("h2o_0*.fchk")), state=1)

Atomic units, but coordinates in Angstrom, wavenumbers in 1/cm, masses in u. Arrays are float64 (whole
numbers int64), in C order, and own their memory. What goes wrong is a stigruz.Error (a ValueError),
files that are missing a FileNotFoundError too. stigruz.ase is for the Atomic Simulation Environment.
"""

from . import units
from ._core import version as __version__
from ._errors import Error, MissingFileError
from ._facts import Basis, Dump, Excitations, Facts, MomentRows, Moments, Oniom, Result, read
from ._jobs import (
    FollowedJob,
    FollowedState,
    Job,
    JobCounts,
    NearState,
    Reference,
    Sign,
    follow,
    near_energies,
    sign,
)
from ._sets import (
    Displaced,
    Excitation,
    Finding,
    FoundSigns,
    Modes,
    MomentDerivatives,
    NearInSet,
    Set,
    SetFile,
    SetSumRules,
    SumRules,
    displace,
)

__all__ = [
    "Basis",
    "Displaced",
    "Dump",
    "Error",
    "Excitation",
    "Excitations",
    "Facts",
    "Finding",
    "FollowedJob",
    "FollowedState",
    "FoundSigns",
    "Job",
    "JobCounts",
    "MissingFileError",
    "Modes",
    "MomentDerivatives",
    "MomentRows",
    "Moments",
    "NearInSet",
    "NearState",
    "Oniom",
    "Reference",
    "Result",
    "Set",
    "SetFile",
    "SetSumRules",
    "Sign",
    "SumRules",
    "__version__",
    "displace",
    "follow",
    "near_energies",
    "read",
    "sign",
    "units",
]
