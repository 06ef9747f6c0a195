"""Every number of the tools' JSON equals the module's, to the last bit."""

import os

import numpy as np
import pytest
from conftest import SAMPLES, SETS, WATER, jobs_of, json_of, run

import stigruz


def plain(of):
    """What JSON would make of a value: arrays are lists, NaN is null."""
    if isinstance(of, np.ndarray):
        assert of.flags.owndata and of.flags.c_contiguous
        assert of.dtype in (np.float64, np.int64)
        return plain(of.tolist())
    if isinstance(of, (list, tuple)):
        return [plain(each) for each in of]
    if isinstance(of, float) and np.isnan(of):
        return None
    return of


def same(told, module):
    """Equal to the last bit: JSON numbers read back to the same bits."""
    assert plain(module) == told


def same_rules(told, module):
    same(told["judged"], module.judged)
    if not module.judged:
        same(told["why_not"], module.why_not)
        return
    for name in set(told) - {"judged", "suspects", "alternatives", "unsound", "unseen", "unseen_error",
                             "reference_unseen", "as_good"}:
        same(told[name], getattr(module, name))


def same_moment(told, module):
    if told is None:
        assert module is None
        return
    for name in ("values", "rounding", "step_errors"):
        same(told[name], getattr(module, name))


def same_set(told, s):
    for name in (
        "dipole dipole_derivatives dipole_uncertainty dipole_rounding dipole_sign_errors dipole_step_error dipole_step_errors "
        "force_constants_asymmetry force_step_error surroundings verdict"
    ).split():
        same(told[name], getattr(s, name))
    same(told["reference"], s.files[0].file)
    same(told["fine"], s.fine or told["fine"] and bool(s.notes))
    same([told["step"]["smallest"], told["step"]["largest"]], [s.smallest_step, s.largest_step])
    same([told["decimals"]["dipole"], told["decimals"]["forces"]], [s.dipole_decimals, s.force_decimals])
    for name in ("velocity_dipole", "magnetic_dipole", "velocity_quadrupole"):
        same_moment(told[f"{name}_derivatives"], getattr(s, f"{name}_derivatives"))
    for name, its in {"symbol": "symbols", "number": "atomic_numbers", "mass": "masses",
                      "x": "coordinates", "input": "input_numbers"}.items():
        same([atom[name] for atom in told["atoms"]], getattr(s, its))
    if s.forces is None:
        assert not np.any(told["forces"]) and told["force_constants"] == [] == told["modes"]
        assert s.force_constants is None and len(s.modes) == 0
    else:
        same(told["forces"], s.forces)
        same(told["force_constants"], s.force_constants)
        same(told["stationary"], s.stationary)
    for name, its in {"wavenumber": "wavenumbers", "reduced_mass": "reduced_masses",
                      "displacement": "displacements", "dipole_derivative": "dipole_derivatives",
                      "dipole_derivative_q": "dipole_derivatives_q", "borrowed": "borrowed"}.items():
        same([mode[name] for mode in told["modes"]], getattr(s.modes, its))
    for moment in ("velocity_dipole", "magnetic_dipole", "velocity_quadrupole"):
        for key in ("derivative", "derivative_q"):
            its = getattr(s.modes, f"{moment}_{key.replace('derivative', 'derivatives')}")
            if its is not None:
                same([mode[f"{moment}_{key}"] for mode in told["modes"]], its)
    if told["excitation"] is None:
        assert s.excitation is None
    else:
        for name, value in told["excitation"].items():
            same(value, getattr(s.excitation, name))
    for each, file in zip(told["files"], s.files, strict=True):
        for name in ("file", "role", "sign", "dipole", "step", "other"):
            same(each[name], getattr(file, name))
        same([finding["text"] for finding in each["findings"]],
             [finding.text for finding in file.findings])
    same([[f["doubt"], f["text"], f["file"]] for f in told["findings"]],
         [[f.doubt, f.text, f.file] for f in s.findings])
    for name, rules in told["sum_rules"].items():
        same_rules(rules, getattr(s.sum_rules, name))
    for name in ("suspects", "alternatives", "unsound", "unseen", "unseen_error", "reference_unseen",
                 "as_good"):
        same(told["sum_rules"]["dipole"][name], getattr(s.sum_rules, name))


@pytest.mark.parametrize("name", SETS)
@pytest.mark.parametrize("state", [1, 2, 3, 4])
def test_sets_of_jobs(name, state, monkeypatch):
    monkeypatch.chdir(SETS[name])
    reference, others = jobs_of(SETS[name])
    told = json_of("sgn_derive", f"--state={state}", reference, *others, cwd=SETS[name])
    same_set(told, stigruz.Set(reference, others, state=state))


def test_sets_of_result_files(water):
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
        same_set(told, s)
        assert s.sum_rules.suspects == (["h2o_02ym.sgn"] if rules else [])


@pytest.mark.parametrize("name", SETS)
def test_states(name, monkeypatch):
    monkeypatch.chdir(SETS[name])
    reference, others = jobs_of(SETS[name])
    told = json_of("sgn_states", reference, *others, cwd=SETS[name])
    first = stigruz.Job(reference)
    for each in told["states"]:
        at = each["state"] - 1
        same(each["energy"], first.energies[at].item() * stigruz.units.hartree)
        same(each["dipole"], first.printed_dipoles[at].copy())
        same(each["spin"], first.spins[at])
    prepared = stigruz.Reference(first)
    same(told["thresholds"], {"mixed_below": 0.8, "lost_below": 0.2, "near_energies": 0.1})
    for each, file in zip(told["jobs"], others, strict=True):
        followed = stigruz.follow(prepared, file)
        same(each["name"], followed.name)
        same(each["stigruz"], {"sign": followed.stigruz_sign, "agrees": followed.stigruz_agrees})
        same([state["overlaps"] for state in each["states"]], followed.overlaps)
        same([state["root"] or 0 for state in each["states"]], followed.roots)
        same([state["sign"] for state in each["states"]], followed.signs)
        for state, its in zip(each["states"], followed.states, strict=True):
            same(state["strength"], its.oscillator_strength)
            for key in ("root", "spin", "overlap", "sign", "dipole", "verdict"):
                same(state[key], getattr(its, key))
            same(state["energy"], None if its.root is None else its.energy * stigruz.units.hartree)
    # By one reference and by many is the same.
    again = stigruz.follow(reference, others[0], mixed_below=1, lost_below=0)
    same(told["jobs"][0]["states"][0]["overlaps"], again.states[0].overlaps)
    assert [each.verdict for each in again.states] == ["mixed"] * first.states


def files_to_read():
    for directory in (WATER, SAMPLES):
        for path, _, names in os.walk(directory):
            yield from (os.path.join(path, each) for each in sorted(names) if "_ref" in each or each.endswith("01zp.fchk"))


@pytest.mark.parametrize("file", files_to_read())
def test_files(file, tmp_path):
    told = json_of("qm_file", file, cwd=tmp_path)[0]
    facts = stigruz.read(file)
    same(told["file"], facts.file)
    names = {"type": "kind", "natom": "natom", "atomic_numbers": "atomic_numbers",
             "masses_u": "masses", "forces_hartree_per_bohr": "forces",
             "transition_dipoles_au": "transition_dipoles", "two_frames": "two_frames"}
    for key, its in names.items():
        same(told[key], getattr(facts, its))
    same(told["version"] or None, facts.version)
    if told["coordinates_bohr"] is None:
        assert facts.coordinates is None
    else:
        same(plain(np.array(told["coordinates_bohr"]) * stigruz.units.bohr), facts.coordinates)
        same(told["geometry"]["of"], facts.geometries)
        same(told["geometry"]["which"], "last" if facts.geometry_is_last else "first")
        same(told["geometry"]["frame"] or None, facts.frame)
    for key in ("basis", "excitations"):
        same(told[key], vars(getattr(facts, key)) if getattr(facts, key) else None)
    if told["oniom"] is None:
        assert facts.oniom is None
    else:
        same([told["oniom"]["all"], told["oniom"]["index"]], [facts.oniom.natom, facts.oniom.high])
    same(sorted(told["missing"].values()), sorted(facts.missing.values()))
    same_dump(told["dump"], facts.dump)
    same_moments(told["moments"], facts.moments)


def same_dump(told, dump):
    if told is None:
        assert dump is None
        return
    same([told["file"], told["values"]], [dump.record, dump.values])
    if told["layout"] is not None:
        same(told["layout"], {key: getattr(dump, key) for key in told["layout"]})
    for key, its in {"energy_hartree": "energies", "spin": "spins", "sum_alpha": "sums_alpha",
                     "sum_beta": "sums_beta", "normalised": "normalised"}.items():
        same([state[key] for state in told["states"]], getattr(dump, its))


def same_moments(told, moments):
    if told is None:
        assert moments is None
        return
    same(told["target"], moments.target)
    same(told["total_energy_hartree"], moments.total_energy)
    same(told["ground_energy_hartree"], moments.ground_energy)
    assert (told["derivatives"] is None) == (moments.derivatives is None)
    rows = {"energy_hartree": "energies", "electric_dipole": "electric_dipoles",
            "velocity_dipole": "velocity_dipoles", "magnetic_dipole": "magnetic_dipoles",
            "velocity_quadrupole": "velocity_quadrupoles"}
    for key, its in rows.items():
        same([state[key] for state in told["states"]], getattr(moments.states, its))
        if told["derivatives"] is not None:
            same([row[key] for row in told["derivatives"]], getattr(moments.derivatives, its))
    same([state["spin"] for state in told["states"]], moments.spins)
    same([state["excitation_hartree"] for state in told["states"]], moments.excitation_energies)
