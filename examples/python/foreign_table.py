"""Writes the table of foreign_program.py: foreign_table.py DIRECTORY-OF-THE-BUNDLED-SET TABLE"""

import sys
from pathlib import Path

import numpy as np

import stigruz

jobs = sorted(Path(sys.argv[1]).glob("h2o_0*.fchk"))
s = stigruz.Set(Path(sys.argv[1]) / "h2o_ref.fchk", jobs)
with open(sys.argv[2], "w", encoding="ascii") as table:
    for each in s.files:
        x = (s.coordinates + each.shifts).round(6)
        row = np.concatenate([x.ravel(), each.dipole, stigruz.Job(each.file).forces.ravel()])
        print(*row, file=table)
