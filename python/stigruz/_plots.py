"""Pictures of sets; needs matplotlib."""

from typing import TYPE_CHECKING, Any, Optional

import numpy as np

if TYPE_CHECKING:
    from ._sets import Set


def _axes(ax: Optional[Any]) -> Any:
    if ax is not None:
        return ax
    import matplotlib.pyplot as plt

    return plt.subplots()[1]


def plot_dipole(of: "Set", ax: Optional[Any] = None) -> Any:
    ax = _axes(ax)
    corrected = np.array([each.dipole for each in of.files])
    signs = np.array([each.sign for each in of.files])
    axis = int(np.argmax(np.abs(corrected).max(axis=0)))
    at = np.arange(len(of.files))
    ax.plot(at, corrected[:, axis] * signs, "x", color="0.6", label="as printed")
    ax.plot(at, corrected[:, axis], "o-", color="tab:blue", label="corrected")
    ax.axhline(0, color="0.8", linewidth=0.8)
    ax.set_xlabel("geometry")
    ax.set_ylabel(f"transition dipole along {'xyz'[axis]} (au)")
    ax.legend()
    return ax


def plot_modes(of: "Set", ax: Optional[Any] = None) -> Any:
    ax = _axes(ax)
    borrowed = np.nan_to_num(100 * of.modes.borrowed)
    ax.vlines(of.modes.wavenumbers, 0, borrowed, color="tab:blue")
    ax.plot(of.modes.wavenumbers, borrowed, "o", color="tab:blue")
    ax.axhline(0, color="0.8", linewidth=0.8)
    ax.set_xlabel("wavenumber (1/cm)")
    ax.set_ylabel("borrowed intensity (% of the dipole's own)")
    return ax
