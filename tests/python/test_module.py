"""What the module is, and what it says when something is wrong."""

import copy
import pickle
import shutil
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest
from conftest import SOURCE, jobs_of, run

import stigruz


def ending(call):
    with pytest.raises(stigruz.Error) as caught:
        call()
    error = caught.value
    assert isinstance(error, ValueError)
    return error


def test_errors_name_file_line_and_reason(water):
    error = ending(lambda: stigruz.Job("none.fchk"))
    assert isinstance(error, FileNotFoundError)
    assert (error.file, error.line, error.filename) == ("none.fchk", None, "none.fchk")
    assert str(error) == "none.fchk: cannot be opened: No such file or directory"
    again = pickle.loads(pickle.dumps(error))
    assert type(again) is type(error) and vars(again) == vars(error)

    Path("h2o_ref.sgn").write_text("INFORMATION\n Transden_sign  =  x\n")
    error = ending(lambda: stigruz.Set("h2o_ref.sgn", ["h2o_ref.sgn"]))
    assert not isinstance(error, FileNotFoundError)
    assert (error.file, error.line) == ("h2o_ref.sgn", 2)
    assert str(error) == f"h2o_ref.sgn: line 2: {error.reason}"

    error = ending(lambda: stigruz.Set("h2o_ref.fchk", ["h2o_01zp.fchk", "gone.fchk"]))
    assert isinstance(error, FileNotFoundError) and error.file == "gone.fchk"
    error = ending(lambda: stigruz.Set("h2o_ref.fchk", ["h2o_01zp.fchk"]))
    assert error.file == "h2o_ref.fchk" and error.reason.startswith("coordinates are missing")
    error = ending(lambda: stigruz.Set("h2o_ref.fchk", ["h2o_01zp.fchk"], state=9))
    assert error.reason == "has no state 9 of 4 in its log"


@pytest.mark.parametrize("call, said", [
    (lambda: stigruz.Set("a.sgn", ["b.sgn"], state=1), "state is for jobs"),
    (lambda: stigruz.Set.from_arrays(["O"], np.zeros((2, 2, 3)), np.zeros((2, 3))),
     r"coordinates must be of the shape \(any, 1, 3\), not \(2, 2, 3\)"),
    (lambda: stigruz.Set.from_arrays(["O"], [[[0, 0, 0]], [[0, 0, np.nan]]], np.zeros((2, 3))),
     "coordinates must be finite numbers"),
    (lambda: stigruz.Set.from_arrays(["Oo"], np.zeros((2, 1, 3)), np.zeros((2, 3))), "atom 1: no element has the symbol Oo"),
    (lambda: stigruz.Set.from_arrays([0], np.zeros((2, 1, 3)), np.zeros((2, 3))), "no element has the number 0"),
    (lambda: stigruz.sign(np.eye(3), np.ones((1, 3)), np.eye(3), np.ones((1, 3))),
     "3 orbitals of 3 basis functions are not 0 frozen core, 3 active occupied, 1 active virtual"),
    (lambda: stigruz.sign(np.zeros((3, 3)), np.ones((1, 1)), np.eye(3), np.ones((1, 1))), "dependent"),
    (lambda: stigruz.sign(np.eye(2), np.ones((1, 1)), np.eye(3), np.ones((1, 1))), "C1 must be of the shape"),
    (lambda: stigruz.sign(np.eye(2), np.zeros((1, 1)), np.eye(2), np.ones((1, 1))), "all zero"),
])
def test_arguments_that_make_no_sense(call, said):
    with pytest.raises(stigruz.Error, match=said):
        call()


@pytest.mark.parametrize("call", [
    lambda: stigruz.read(7),
    lambda: stigruz.Set("a.sgn", "b.sgn"),
    lambda: stigruz.Set.from_arrays("OHH", np.zeros((2, 3, 3)), np.zeros((2, 3))),
    lambda: stigruz.sign(np.eye(2) * 1j, np.ones((1, 1)), np.eye(2), np.ones((1, 1))),
    lambda: stigruz._core.Job(),
    lambda: stigruz._core.Report.__new__(stigruz._core.Report),
    lambda: copy.copy(stigruz.Reference(np)),
    lambda: stigruz._core.html(None),
])
def test_arguments_of_other_types(call):
    with pytest.raises(TypeError):
        call()


def test_logs_and_dumps_lie_beside(water, tmp_path, monkeypatch):
    for name in ("a", "b"):
        (water / name).mkdir()
    for suffix in (".fchk", ".log", ".cis"):
        shutil.copy(water / f"h2o_ref{suffix}", water / "a" / f"job{suffix}")
        shutil.copy(water / f"h2o_01zp{suffix}", water / "b" / f"job{suffix}")
    first, second = stigruz.Job("a/job.fchk"), stigruz.Job(water / "b" / "job.fchk")
    assert first.log == "a/job.log" and second.dump == str(water / "b" / "job.cis")
    assert stigruz.follow(first, second).signs.tolist() == [-1, -1, 1, -1]
    other = stigruz.Job("a/job.fchk", log="h2o_ref.log", dump="h2o_ref.cis")
    assert other.energies.tolist() == first.energies.tolist()


def test_jobs(water):
    job = stigruz.Job("h2o_ref.fchk")
    density = job.transition_density()
    counts = job.counts
    first = counts.frozen_core + counts.active_occupied
    c, x = job.orbitals(), job.amplitudes()
    again = c[:, first : first + counts.active_virtual] @ x @ c[:, counts.frozen_core : first].T
    assert density.shape == (22, 22) and np.allclose(density, again, atol=1e-12)
    assert np.unravel_index(np.abs(density).argmax(), density.shape) == (14, 2)
    assert np.allclose(job.electric_dipoles, job.printed_dipoles, atol=5.1e-5)
    assert job.missing == {} and job.forces_of == 1
    # The log has six decimals.
    printed = stigruz.read("h2o_ref.log").coordinates
    assert 0 < abs(job.coordinates - printed).max() < 1e-7
    # Without the moments of the checkpoint those of the log are left.
    text = Path("h2o_ref.fchk").read_text()
    Path("bare.fchk").write_text(text.replace("ETran", "Other"))
    bare = stigruz.Job("bare.fchk", "h2o_ref.log", "h2o_ref.cis")
    assert bare.electric_dipoles.tolist() == job.printed_dipoles.tolist()
    assert bare.magnetic_dipoles is None
    assert bare.missing["magnetic_dipoles"] == "bare.fchk: has no moments of excited states"


def test_jobs_of_other_sizes(water):
    data = SOURCE / "tests" / "data" / "dependent"
    other = stigruz.Job(data / "wd_ref.fchk")
    assert other.orbitals().shape == (other.counts.basis_functions, other.counts.orbitals) != (22, 22)
    for first, second in ((other, "h2o_ref.fchk"), ("h2o_ref.fchk", other)):
        assert "has other atoms, orbitals or frozen orbitals than" in ending(lambda: stigruz.follow(first, second)).reason
    assert ending(lambda: other.transition_density(0)).reason.startswith("has no state 0 of")


def test_doubts_of_how_files_were_read(water):
    """A job without the moments of its checkpoint: the dipoles of all are those of the logs."""
    reference, others = jobs_of(water)
    text = Path(others[0]).read_text()
    Path(others[0]).write_text(text.replace("ETran", "Other"))
    s = stigruz.Set(reference, others)
    assert not s.fine and s.findings == [] and s.dipole_decimals == 4
    assert s.notes[0].startswith(f"{others[0]}: has no moments of excited states")


def test_signs_from_arrays(water):
    reference, others = jobs_of(water)
    first = stigruz.Job(reference)
    run("stigruz", reference, cwd=water)
    for name in others:
        now = stigruz.Job(name)
        # Whatever the order in memory.
        found = stigruz.sign(first.orbitals(), np.asfortranarray(first.amplitudes()), now.orbitals().T.copy().T,
                             now.amplitudes().tolist(), frozen_core=1)
        run("stigruz", name, "h2o_ref.sgn", cwd=water)
        text = Path(name).with_suffix(".sgn").read_text().splitlines()
        assert found.sign == int(text[1].split("=")[1]) and found.agrees
        assert [int(each) - 1 for each in text[9].split()[2:]] == list(found.element)
        assert f"{found.value:.10E}" == text[10].split()[2]
        assert 0.97 < found.ratio < 1.03 and abs(found.overlap) > 0.99
    assert not stigruz.Sign(1, -0.9, (0, 0), 0.4, 0.4).agrees
    # One orbital less, as where linear dependences were removed.
    fewer = stigruz.sign(first.orbitals()[:, :-1], first.amplitudes()[:-1], now.orbitals()[:, :-1], now.amplitudes()[:-1], 1)
    assert fewer.sign == found.sign and abs(fewer.overlap - found.overlap) < 1e-2


def test_sets_from_arrays(water):
    reference, others = jobs_of(water)
    s = stigruz.Set(reference, others)
    jobs = [stigruz.Job(each) for each in (reference, *others)]
    x = np.array([job.coordinates for job in jobs])
    dipoles = np.array([each.dipole for each in s.files])
    forces = np.array([job.forces for job in jobs])
    names = [job.name for job in jobs]
    again = stigruz.Set.from_arrays(s.symbols, x, dipoles, forces, s.masses, names=names)
    assert again.fine and [each.file for each in again.files] == names
    assert np.allclose(again.dipole_derivatives, s.dipole_derivatives, atol=1e-12)
    assert np.allclose(again.modes.wavenumbers, s.modes.wavenumbers, atol=1e-3)
    assert again.excitation is None and again.velocity_dipole_derivatives is None
    again.write_fchk("arrays.fchk")
    written = stigruz.read("arrays.fchk").moments.derivatives.electric_dipoles
    assert np.allclose(written, s.dipole_derivatives, atol=1e-8)

    dipoles[5] *= -1
    wrong = stigruz.Set.from_arrays([8, 1, 1], x, dipoles, names=names)
    assert not wrong.fine and wrong.sum_rules.suspects == [names[5]]
    assert len(wrong.modes) == 0 and wrong.force_constants is None and wrong.stationary is None
    assert stigruz.Set.from_arrays([8, 1, 1], x, dipoles, sum_rules=False).sum_rules.dipole.why_not


def test_steps_of_arrays_have_all_their_digits():
    """In a result file a step of 0.005 Bohr would be off by a part of 1e-4."""
    step = 0.005
    derivatives = np.random.default_rng(1).normal(size=(9, 3))
    moved = np.array([np.zeros(9)] + [sign * step * row for row in np.eye(9) for sign in (1, -1)])
    x = np.array([[0, 0, 0.1], [0, 0.8, -0.5], [0, -0.8, -0.5]]) + moved.reshape(-1, 3, 3) * stigruz.units.bohr
    s = stigruz.Set.from_arrays("O H H".split(), x, [0.1, 0.2, 0.3] + moved @ derivatives, sum_rules=False)
    assert np.allclose(s.dipole_derivatives, derivatives, atol=1e-9)
    assert np.all(s.dipole_rounding < 1e-7)


def test_outputs(water):
    reference, others = jobs_of(water)
    s = stigruz.Set(reference, others)
    s.write_html("page.html")
    s.write_html("page.html")
    assert Path("page.html").read_text() == s.html()
    assert s._repr_html_().startswith("<iframe srcdoc=")
    s.write_fchk("out.fchk", template=reference)
    run("sgn_derive", "--fchk=tool.fchk", f"--template={reference}", reference, *others, cwd=water)
    assert Path("out.fchk").read_bytes() == Path("tool.fchk").read_bytes()
    Path("link.fchk").symlink_to("h2o_01zp.fchk")
    for name in (reference, "link.fchk", "./h2o_01zp.log"):
        assert "set was made of it" in ending(lambda: s.write_html(name)).reason
    assert "template" in ending(lambda: s.write_fchk("tool.fchk", "tool.fchk")).reason
    with pytest.raises(stigruz.Error):
        s.write_html("none/page.html")

    # Files of others, results, and outputs of another kind.
    Path("notes.txt").write_text("mine\n")
    Path("eldip_notes").write_text("mine\n")
    Path("result").write_bytes((SOURCE / "tests" / "data" / "crossing_results" / "h2ox_ref.sgn").read_bytes())
    there = {name: Path(name).read_bytes() for name in ("notes.txt", "eldip_notes", "result", "out.fchk", "page.html")}
    for write, name in ((s.write_html, "notes.txt"), (s.write_html, "out.fchk"), (s.write_fchk, "page.html"),
                        (s.write_fcc, "notes")):
        assert "overwrite=True writes over it" in ending(lambda: write(name)).reason
    for overwrite in (False, True):
        assert "it is a result file" in ending(lambda: s.write_html("result", overwrite=overwrite)).reason
    assert there == {name: Path(name).read_bytes() for name in there} and not Path("notes.fcc").exists()
    for write, name in ((s.write_html, "notes.txt"), (s.write_fchk, "page.html"), (s.write_fcc, "notes")):
        write(name, overwrite=True)
    assert Path("notes.txt").read_text() == s.html() and Path("eldip_notes").read_text() != "mine\n"


def test_files_for_fcclasses(water):
    reference, others = jobs_of(water)
    s = stigruz.Set(reference, others)
    for told, options in {"tool/own": (), "tool/other": ("--template=copy.fchk",)}.items():
        Path("tool").mkdir(exist_ok=True)
        Path("copy.fchk").write_text(Path(reference).read_text().replace("-7.567318842789800E+01", "-7.500000000000000E+01"))
        run("sgn_derive", f"--fcc={told}", *options, reference, *others, cwd=water)
        base = Path(told).name
        written = s.write_fcc(base, *(each.partition("=")[2] for each in options))
        assert written == [f"{base}.fcc", f"eldip_{base}", f"magdip_{base}"]
        for name in written:
            assert Path(name).read_bytes() == (Path("tool") / name).read_bytes()
    assert Path("own.fcc").read_text() != Path("other.fcc").read_text()

    # No file appears where one of them would be another's, and none without an energy.
    Path("taken").mkdir()
    Path("taken/eldip_h2o").symlink_to(water / others[0])
    assert "set was made of it" in ending(lambda: s.write_fcc("taken/h2o")).reason
    Path("magdip_h2o").symlink_to("copy.fchk")
    assert "it is the template" in ending(lambda: s.write_fcc("h2o", template="copy.fchk")).reason
    assert "a name is needed" in str(ending(lambda: s.write_fcc("taken/")))
    x = [s.coordinates + each.shifts for each in s.files]
    arrays = stigruz.Set.from_arrays(s.symbols, x, [each.dipole for each in s.files])
    assert "arrays tell no energy" in str(ending(lambda: arrays.write_fcc("h2o")))
    assert "holds no forces" in str(ending(lambda: arrays.write_fcc("h2o", reference)))
    assert not Path("h2o.fcc").exists() and [each.name for each in Path("taken").iterdir()] == ["eldip_h2o"]

    # Result files with nothing beside them: the energy is told by a template, magnetic dipoles by nobody.
    bare = SOURCE / "tests" / "data" / "crossing_results"
    without = stigruz.Set(bare / "h2ox_ref.sgn", sorted(bare.glob("*.sgn")))
    assert "h2ox_ref.fchk, which would tell the energy" in str(ending(lambda: without.write_fcc("h2ox")))


def test_what_lies_beside_result_files_is_kept(water):
    reference, others = jobs_of(water)
    run("stigruz", reference, cwd=water)
    for each in others:
        run("stigruz", each, "h2o_ref.sgn", cwd=water)
    s = stigruz.Set("h2o_ref.sgn", sorted(each.name for each in water.glob("h2o_0*.sgn")))
    for name in ("h2o_01zp.sgn", others[0], "h2o_ref.log"):
        assert "set was made of it" in ending(lambda: s.write_fchk(name)).reason
    assert s.write_fcc("h2o_s1")[2] == "magdip_h2o_s1"


def test_result_files_are_read(water):
    for name in ("h2o_ref", "h2o_01zp"):
        run("stigruz", f"{name}.fchk", *(["h2o_ref.sgn"] if name != "h2o_ref" else []), cwd=water)
    text = Path("h2o_01zp.sgn").read_text()
    facts = stigruz.read("h2o_01zp.sgn")
    assert (facts.program, facts.version, facts.natom, facts.result.sign) == ("stigruz", None, 3, -1)
    assert facts.result.element == (14, 2) and f"{facts.result.value:.10E}" in text
    assert f"{facts.transition_dipoles[0, 0]:.10E}" in text and facts.forces.shape == (3, 3)
    assert facts.coordinates[0].tolist() == [0, 0, 0.128]
    assert facts.missing["moments"] == "not in a result file"
    # They are those of the file, not what 0.000035 is after a way through Bohr.
    Path("small.sgn").write_text(text.replace("0.128000", "0.000035"))
    assert stigruz.read("small.sgn").coordinates[0].tolist() == [0, 0, 0.000035]
    Path("h2o_01zp.sgn").write_text(text.replace("0.128", "x.128"))
    damaged = stigruz.read("h2o_01zp.sgn")
    assert damaged.result is None and damaged.missing["program"].startswith("a damaged result file of stigruz: line ")


def test_inputs_of_a_set(water):
    made = stigruz.displace("h2o.gjf", step=0.02, directory="set")
    run("sgn_displace", "--step=0.02", "--directory=told", "h2o.gjf", cwd=water)
    assert len(made.files) == 19 and made.files[0] == "set/h2o_ref.gjf"
    for name in made.files:
        assert Path(name).read_bytes() == Path(name.replace("set", "told")).read_bytes()
    assert "already" in str(ending(lambda: stigruz.displace("h2o.gjf", directory="set")))
    some = stigruz.displace("h2o.gjf", atoms=[3, 1], one_sided=True, directory="set", overwrite=True)
    assert len(some.files) == 7
    for atoms in ([0], [4], [1, 1], [-1]):
        assert "atoms must be numbers from 1 to 3" in str(ending(lambda: stigruz.displace("h2o.gjf", atoms=atoms)))


def test_types_are_told_as_they_are(tmp_path):
    """mypy and stubtest, where they are."""
    package = Path(stigruz.__file__).parent
    if shutil.which("stubtest") is None:
        pytest.skip("there is no mypy")
    environment = {"MYPYPATH": str(package.parent), "PATH": "/usr/bin:/bin", "PYTHONPATH": str(package.parent),
                   "MYPY_CACHE_DIR": str(tmp_path)}
    configuration = tmp_path / "mypy.ini"
    configuration.write_text("[mypy]\nstrict = True\n[mypy-ase.*,matplotlib.*,tqdm.*]\nignore_missing_imports = True\n")
    # Names that a source imports, for its types alone or from elsewhere; what pybind11 gives every class.
    (tmp_path / "imports").write_text(r"stigruz\.\w+\.(Iterable|Sequence|Callable|NDArray|ArrayLike)(\.\w+)*" "\n"
                                      r"stigruz\.\w+\.(Axes|Atoms|VibrationsData)" "\n" r"stigruz\._plots\.Set" "\n"
                                      r"stigruz\._core\.(Job|Reference|Report)(\.__init__)?" "\n")
    for command in (["stubtest", f"--mypy-config-file={configuration}", f"--allowlist={tmp_path / 'imports'}",
                     "--ignore-unused-allowlist", "stigruz"],
                    ["mypy", f"--config-file={configuration}", "-p", "stigruz"]):
        done = subprocess.run(command, cwd=tmp_path, env=environment, capture_output=True, text=True, check=False)
        assert done.returncode == 0, done.stdout + done.stderr
    assert (package / "py.typed").exists()


def test_every_public_function_says_what_it_takes():
    for name in stigruz.__all__:
        value = getattr(stigruz, name)
        if callable(value):
            assert value.__doc__ and not value.__doc__.startswith(f"{name}("), name
    assert f"VERSION {stigruz.__version__}" in (SOURCE / "CMakeLists.txt").read_text()
    assert "numpy" in sys.modules


@pytest.mark.parametrize("state", [1, 2, 3, 4])
def test_signs_are_found(water, state):
    reference, others = jobs_of(water)
    s = stigruz.Set(reference, others, state=state)
    x = np.array([s.coordinates + each.shifts for each in s.files])
    dipoles = np.array([each.dipole for each in s.files])
    chance = np.random.default_rng(state)
    for _ in range(10):
        signs = chance.choice([1, -1], size=len(dipoles))
        found = stigruz.Set.from_arrays(s.symbols, x, dipoles * signs[:, None], signs="find", dipole_decimals=8)
        its = found.found_signs
        # The sign of the whole is that of the reference.
        right = signs * signs[0]
        if state == 2:  # dark: out of the plane it is of second order
            assert not its.decided and its.reason in found.findings[-1].text and not found.fine
            assert found.findings[-1].doubt == "undecided_signs" and its.open
            assert any(np.array_equal(each[np.abs(dipoles).max(axis=1) > 1e-3], right[np.abs(dipoles).max(axis=1) > 1e-3])
                       or np.array_equal(-each[np.abs(dipoles).max(axis=1) > 1e-3], right[np.abs(dipoles).max(axis=1) > 1e-3])
                       for each in its.alternatives)
        else:
            assert its.decided and its.signs.tolist() == right.tolist() and found.fine
            assert [each.sign for each in found.files] == right.tolist()
            assert np.allclose(found.dipole_derivatives, signs[0] * s.dipole_derivatives, atol=1e-7)
    assert stigruz.Set.from_arrays(s.symbols, x, dipoles).found_signs is None
