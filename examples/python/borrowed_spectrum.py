"""From the jobs of a set to a spectrum of borrowed intensity: borrowed_spectrum.py DIRECTORY [PICTURE]

The dipole of an electronic transition changes with the coordinates of the nuclei. What a normal mode
adds to it lends intensity to the band with one quantum of that mode more than the 0-0 transition: of
the dipole's square the part that Modes.borrowed tells, times the square of the dimensionless
coordinate's matrix element, 1/2. The bundled reference geometry is no minimum of the excited state, so
this is a spectrum to see how it is done, not one to compare with an experiment.
"""

# %% The jobs: a reference, and others displaced from it.
import sys
from pathlib import Path

import matplotlib
import numpy as np

import stigruz

directory = Path(sys.argv[1])
s = stigruz.Set(directory / "h2o_ref.fchk", sorted(directory.glob("h2o_0*.fchk")), state=1)
print(s.verdict)

# %% The modes, and what they borrow.
for wavenumber, mass, borrowed in zip(s.modes.wavenumbers, s.modes.reduced_masses, s.modes.borrowed):
    print(f"{wavenumber:8.1f} 1/cm {mass:8.4f} u {100 * borrowed:8.2f} %")

# %% Bands of the 0-0 transition and of one quantum of each mode, as Gaussians.
width = 150.0
x = np.linspace(-1000, 5000, 600)
bands = [(0.0, 1.0), *zip(s.modes.wavenumbers, np.nan_to_num(s.modes.borrowed) / 2)]
curves = [height * np.exp(-(((x - place) / width) ** 2) / 2) for place, height in bands]
print(f"borrowed: {100 * sum(height for _, height in bands[1:]):.2f} % of the 0-0 band")

# %% Pictures: the dipole along the jobs, what modes borrow, and the spectrum.
matplotlib.use("svg")
matplotlib.rcParams.update({"svg.hashsalt": "stigruz", "font.size": 8, "svg.fonttype": "none"})
import matplotlib.pyplot as plt  # noqa: E402

figure, (left, middle, right) = plt.subplots(1, 3, figsize=(10, 2.8), layout="constrained")
s.plot_dipole(left)
s.plot_modes(middle)
right.plot(x, 100 * sum(curves[1:]), label="borrowed")
right.plot(x, 100 * sum(curves), color="0.7", linewidth=0.8, label="with the 0-0 band")
right.set(xlabel="above the 0-0 transition (1/cm)", ylabel="% of the 0-0 band", ylim=(0, 10))
right.legend()
if len(sys.argv) > 2:
    figure.savefig(sys.argv[2], metadata={"Date": None, "Creator": "examples/python/borrowed_spectrum.py"})
