"""Every number of the tools' JSON equals the module's, to the last bit.

What a tool would tell is built of the module's values, whole, and both trees are walked: a key that one of
them lacks is a difference like another value. The first lines of a failure name all keys that the module lacks.
"""

import math
import os
from pathlib import Path

import numpy as np
import pytest
from conftest import SAMPLES, SETS, SOURCE, jobs_of, json_of, run

import stigruz

REAL = SAMPLES.parent / "real"


def differences(told, made, at=""):
    """Where they differ, as lines; reals are equal if their bits are, but for the sign of a zero."""
    if isinstance(told, dict) and isinstance(made, dict):
        lines = [f"the module lacks {at}.{key}" for key in told.keys() - made.keys()]
        lines += [f"the tool lacks {at}.{key}" for key in made.keys() - told.keys()]
        for key in sorted(told.keys() & made.keys()):
            lines += differences(told[key], made[key], f"{at}.{key}")
        return lines
    if isinstance(told, list) and isinstance(made, list) and len(told) == len(made):
        return [line for i, (one, other) in enumerate(zip(told, made)) for line in differences(one, other, f"{at}[{i}]")]
    same = isinstance(made, bool) == isinstance(told, bool) and told == made
    return [] if same else [f"{at}: {told!r} is told, {made!r} in the module"]


def require_equal(told, made):
    found = differences(told, plain(made))
    found.sort(key=lambda line: "lacks" not in line)
    assert not found, "\n".join(dict.fromkeys(found[:40]))


def plain(of):
    """What JSON would make of a value: arrays are lists, NaN and infinities are null."""
    if isinstance(of, np.ndarray):
        assert of.flags.owndata and of.flags.c_contiguous and of.dtype in (np.float64, np.int64)
        return plain(of.tolist())
    if isinstance(of, dict):
        return {key: plain(value) for key, value in of.items()}
    if isinstance(of, (list, tuple)):
        return [plain(each) for each in of]
    if isinstance(of, float) and not math.isfinite(of):
        return None
    return of


def picked(of, names):
    """Attributes; "key=name" where the tool calls one otherwise."""
    pairs = [each.partition("=")[::2] for each in names.split()]
    return {key: getattr(of, name or key) for key, name in pairs}


def rows(of, names, count):
    """An object for each row of arrays or lists; None for what is None as a whole."""
    columns = {key: [None] * count if column is None else plain(column) for key, column in picked(of, names).items()}
    assert all(len(column) == count for column in columns.values())
    return [dict(zip(columns, each)) for each in zip(*columns.values())] if count else []


OTHERS = ("velocity_dipole", "magnetic_dipole", "velocity_quadrupole")


def as_told_of_rules(of, everything=None):
    if of.judged:
        assert of.why_not is None
        told = picked(of, "judged satisfied chi2 sums largest largest_residue noise step_scale translation "
                      "translation_uncertainty rotation rotation_uncertainty")
    else:
        told = picked(of, "judged why_not satisfied")
    if everything is not None:
        told |= picked(everything, "suspects alternatives unsound unseen unseen_error reference_unseen as_good")
    return told


def as_told_of_set(s):
    """The object of sgn_derive --json."""
    told = {"written_by": "sgn_derive", "reference": s.files[0].file}
    told |= picked(s, "dipole_source dipole dipole_derivatives dipole_uncertainty dipole_rounding dipole_sign_errors "
                   "dipole_step_error dipole_step_errors force_constants_asymmetry force_step_error surroundings verdict")
    told["fine"] = s.fine or not s.findings and not any(each.findings for each in s.files) and bool(s.notes)
    told["step"] = {"smallest": s.smallest_step, "largest": s.largest_step}
    told["decimals"] = picked(s, "dipole=dipole_decimals forces=force_decimals coordinates=coordinate_decimals")
    told["files"] = [picked(each, "file role sign dipole step other")
                     | {"findings": [picked(finding, "doubt text") for finding in each.findings]} for each in s.files]
    told["findings"] = [picked(each, "doubt text file") for each in s.findings]
    told["atoms"] = rows(s, "symbol=symbols number=atomic_numbers mass=masses x=coordinates input=input_numbers",
                         len(s.symbols))
    for i, atom in enumerate(told["atoms"]):
        atom["place"] = i + 1
    for name in OTHERS:
        of = getattr(s, f"{name}_derivatives")
        told[f"{name}_derivatives"] = None if of is None else picked(of, "values rounding noise step_errors step_scale uncertainties")
    # Without forces the tools tell zeros.
    told["forces"] = np.zeros((len(s.symbols), 3)) if s.forces is None else s.forces
    told["force_constants"] = [] if s.force_constants is None else s.force_constants
    told["stationary"] = bool(s.stationary) if s.forces is not None else None
    names = "wavenumber=wavenumbers reduced_mass=reduced_masses displacement=displacements borrowed"
    for name in ("dipole", *OTHERS):
        names += f" {name}_derivative={name}_derivatives {name}_derivative_q={name}_derivatives_q"
    told["modes"] = rows(s.modes, names, len(s.modes))
    told["excitation"] = s.excitation and picked(s.excitation, "state state_of_forces energy gradient")
    told["near_state"] = s.near_state and picked(s.near_state, "state job near jobs") | {
        "distance": s.near_state.distance * stigruz.units.hartree}
    told["sum_rules"] = {"dipole": as_told_of_rules(s.sum_rules.dipole, s.sum_rules),
                         "forces": as_told_of_rules(s.sum_rules.forces) | {"suspects": []}}
    for name in OTHERS[:2]:
        told["sum_rules"][name] = as_told_of_rules(getattr(s.sum_rules, name))
    return told


def require_equal_sets(told, s):
    if s.forces is None:
        told["stationary"] = None  # of no forces
    require_equal(told, as_told_of_set(s))


@pytest.mark.parametrize("name", SETS)
@pytest.mark.parametrize("state", [1, 2, 3, 4])
def test_sets_of_jobs(name, state, monkeypatch):
    monkeypatch.chdir(SETS[name])
    reference, others = jobs_of(SETS[name])
    told = json_of("sgn_derive", f"--state={state}", reference, *others, cwd=SETS[name])
    s = stigruz.Set(reference, others, state=state)
    require_equal_sets(told, s)
    assert (s.near_state is not None) == (name == "crossing" and state in (2, 3))
    assert s.near_state is None or s.near_state.text.startswith(f"State {state}: another state is 0.00")


def test_sets_of_result_files(water, monkeypatch):
    reference, others = jobs_of(water)
    run("stigruz", reference, cwd=water)
    for each in others:
        run("stigruz", each, "h2o_ref.sgn", cwd=water)
    # A wrong sign, and the reference among the files.
    wrong = water / "h2o_02ym.sgn"
    text = wrong.read_text()
    wrong.write_text(text.replace("Corrected_tdip =    -", "Corrected_tdip =     "))
    assert wrong.read_text() != text
    files = sorted(each.name for each in water.glob("*.sgn"))
    for rules in (True, False):
        told = json_of("sgn_derive", *([] if rules else ["--no-sum-rules"]), "h2o_ref.sgn", *files, cwd=water)
        s = stigruz.Set("h2o_ref.sgn", files, sum_rules=rules)
        require_equal_sets(told, s)
        assert s.sum_rules.suspects == (["h2o_02ym.sgn"] if rules else [])
    # Nothing lies beside them: no moments, no forces of others.
    bare = SOURCE / "tests" / "data" / "crossing_results"
    files = sorted(each.name for each in bare.glob("*.sgn"))
    told = json_of("sgn_derive", "h2ox_ref.sgn", *files, cwd=bare)
    monkeypatch.chdir(bare)
    require_equal_sets(told, stigruz.Set("h2ox_ref.sgn", files))


def near(of):
    return of and {"root": of.root, "distance": of.distance * stigruz.units.hartree}


def as_told_of_reference(job):
    """An object for every state of the reference."""
    names = "spin=spins energy=energies dipole=electric_dipoles strength=oscillator_strengths nearest"
    told = rows(job, " ".join((names, *(f"{each}={each}s" for each in OTHERS))), job.states)
    for i, state in enumerate(told):
        state["state"] = i + 1
        state["energy"] *= stigruz.units.hartree
        state["nearest"] = near(state["nearest"])
    return told


def as_told_of_job(job, followed):
    states = []
    for each in followed.states:
        its = picked(each, "state root spin overlap sign energy dipole strength=oscillator_strength verdict overlaps "
                      "velocity_dipole magnetic_dipole velocity_quadrupole")
        if its["energy"] is not None:
            its["energy"] *= stigruz.units.hartree
        states.append(its | {"nearest": near(each.nearest)})
    assert followed.roots.tolist() == [each.root or 0 for each in followed.states]
    assert followed.signs.tolist() == [each.sign for each in followed.states]
    return {"name": followed.name, "checkpoint": job.checkpoint, "states": states,
            "no_moments": job.missing.get("magnetic_dipoles"),
            "stigruz": {"sign": followed.stigruz_sign, "agrees": followed.stigruz_agrees}}


def require_equal_states(reference, others):
    told = json_of("sgn_states", reference, *others, cwd=".")
    jobs = [stigruz.Job(file) for file in (reference, *others)]
    prepared = stigruz.Reference(jobs[0])
    followed = [stigruz.follow(prepared, job) for job in jobs[1:]]
    require_equal(told, {
        "written_by": "sgn_states", "reference": jobs[0].name, "states": as_told_of_reference(jobs[0]),
        "no_moments": jobs[0].missing.get("magnetic_dipoles"),
        "jobs": [as_told_of_job(*each) for each in zip(jobs[1:], followed)], "unreadable": [],
        "thresholds": {"mixed_below": 0.8, "lost_below": 0.2, "near_energies": stigruz.near_energies * stigruz.units.hartree},
    })
    return jobs[0], followed


@pytest.mark.parametrize("name", SETS)
def test_states(name, monkeypatch):
    monkeypatch.chdir(SETS[name])
    reference, others = jobs_of(SETS[name])
    first, followed = require_equal_states(reference, others)
    # In the crossing set states 2 and 3 are near each other, in the others none are.
    close = [each.nearest.root for job in followed for each in job.states if each.nearest.is_near]
    assert set(close) == ({2, 3} if name == "crossing" else set())
    # What the states of one job say is what is said of it as a reference.
    now = stigruz.Job(others[0])
    assert [each.nearest for each in followed[0].states] == [now.nearest[root - 1] for root in followed[0].roots]
    # By one reference and by many is the same.
    again = stigruz.follow(reference, others[0], mixed_below=1, lost_below=0)
    assert again.states[0].overlaps.tolist() == followed[0].states[0].overlaps.tolist()
    assert [each.verdict for each in again.states] == ["mixed"] * first.states


def test_states_without_moments(water):
    """They are not told, or the checkpoint is of another geometry."""
    for name, old, new in (("h2o_01zp", "ETran", "Other"), ("h2o_02ym", "2.22987683E-01", "3.22987683E-01")):
        text = Path(f"{name}.fchk").read_text()
        assert old in text
        Path(f"{name}.fchk").write_text(text.replace(old, new))
    reference, others = jobs_of(water)
    _, followed = require_equal_states(reference, others)
    without = [each.name for each in followed if each.states[0].magnetic_dipole is None]
    assert without == ["h2o_01zp", "h2o_02ym"]
    require_equal_states("h2o_01zp.fchk", ["h2o_ref.fchk"])


def files_to_read():
    """By directory: the fixtures and examples, and the samples and real files that are there."""
    for top in (SOURCE / "tests" / "data", SOURCE / "examples", SAMPLES, REAL):
        for path, _, names in sorted(os.walk(top)):
            if names:
                yield pytest.param(path, sorted(names), id=os.path.relpath(path, SOURCE))


#: What Python calls a quantity that is missing.
MISSING = {"type": "program", "nat": "atomic_numbers", "coord": "coordinates", "mass": "masses", "force": "forces",
           "tdip": "transition_dipoles", "nbasis": "basis", "nci": "excitations"}


NOBODY_WROTE_IT = "no banner of a known program is in its first lines"


def as_told_of_file(facts):
    """The object of qm_file --json, but for coordinates, which are in Bohr there."""
    told = {"written_by": "qm_file"}
    told |= picked(facts, "file type=kind version version_of natom masses_u=masses forces_hartree_per_bohr=forces "
                   "transition_dipoles_au=transition_dipoles two_frames")
    told["class"] = -1 if facts.class_code is None else facts.class_code
    if facts.kind is not None:
        told["version"] = facts.version or ""
    numbers = facts.atomic_numbers
    told["atomic_numbers"] = None if numbers is None else [None if each == -1 else each for each in numbers.tolist()]
    if facts.point_charges is not None:
        told["point_charges"] = facts.point_charges
    told["geometry"] = None if facts.coordinates is None else {
        "which": "last" if facts.geometry_is_last else "first", "of": facts.geometries, "frame": facts.frame or ""}
    told["oniom"] = facts.oniom and {"high": len(facts.oniom.high), "all": facts.oniom.natom, "index": facts.oniom.high}
    told["basis"] = facts.basis and vars(facts.basis)
    told["excitations"] = facts.excitations and vars(facts.excitations)
    told["dump"] = facts.dump and as_told_of_dump(facts.dump)
    told["moments"] = facts.moments and as_told_of_moments(facts.moments)
    told["result"] = facts.result and picked(facts.result, "sign basis_functions value") | {
        "element": [each + 1 for each in facts.result.element]}
    told["missing"] = {key: facts.missing[MISSING.get(key, key)] for key in
                       ("type natom nat coord mass force tdip oniom nbasis nci dump moments".split())
                       if MISSING.get(key, key) in facts.missing}
    assert len(told["missing"]) == len(facts.missing)
    return told


def as_told_of_dump(dump):
    layout = picked(dump, "states roots amplitudes_per_spin has_rest")
    names = "energy_hartree=energies spin=spins sum_alpha=sums_alpha sum_beta=sums_beta normalised"
    return picked(dump, "file=record values") | {"layout": None if dump.states is None else layout,
                                                 "states": rows(dump, names, len(dump.spins))}


def as_told_of_moments(moments):
    names = " ".join(("energy_hartree=energies electric_dipole=electric_dipoles", *(f"{each}={each}s" for each in OTHERS)))
    count = len(moments.spins)
    by_state = [one | other for one, other in zip(
        rows(moments.states, names, count), rows(moments, "spin=spins excitation_hartree=excitation_energies", count))]
    derivatives = moments.derivatives
    return picked(moments, "target total_energy_hartree=total_energy ground_energy_hartree=ground_energy") | {
        "states": by_state, "derivatives": derivatives and rows(derivatives, names, len(derivatives.energies))}


@pytest.mark.parametrize("directory, names", files_to_read())
def test_files(directory, names):
    all_told = json_of("qm_file", *names, cwd=directory, statuses=(0, 1, 2))
    assert len(all_told) == len(names)
    for name, told in zip(names, all_told):
        facts = stigruz.read(os.path.join(directory, name))
        made = plain(as_told_of_file(facts)) | {"file": name}
        x = told.pop("coordinates_bohr")
        if facts.result is not None:
            require_equal(x, facts.coordinates / stigruz.units.bohr)
        else:
            require_equal(x and (np.array(x) * stigruz.units.bohr).tolist(), facts.coordinates)
        if made["missing"].get("type") == NOBODY_WROTE_IT:  # the tool may have a hint instead
            told["missing"]["type"] = NOBODY_WROTE_IT
        require_equal(told, made)
