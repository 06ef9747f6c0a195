"""What the pages show is run; so are the scripts of examples/python."""

import re
import subprocess
import sys

from conftest import SOURCE, WATER

import stigruz

EXAMPLES = SOURCE / "examples" / "python"


def blocks(page):
    return re.findall(r"^```python\n(.*?)^```$", (SOURCE / page).read_text(), re.MULTILINE | re.DOTALL)


def script(name, *arguments, cwd):
    done = subprocess.run([sys.executable, EXAMPLES / name, *map(str, arguments)], cwd=cwd, capture_output=True,
                          text=True, check=False)
    assert done.returncode == 0, done.stderr
    return done.stdout


def test_docs_python(water, capsys):
    shown = blocks("docs/python.md")
    assert len(shown) == 10
    names = {}
    for block in shown:
        exec(compile(block, "docs/python.md", "exec"), names)
    said = capsys.readouterr().out
    assert "All 19 files are fine: no sign is wrong." in said
    assert "h2o_01zp [1 2] [-1 -1] ['same', 'same']" in said
    assert "h2o_ref.fchk None coordinates are missing" in said
    assert names["again"].found_signs.decided and names["again"].fine
    assert (water / "inputs" / "h2o_ref.gjf").exists() and (water / "h2o.html").exists()


def test_readme(water, capsys):
    (block,) = blocks("README.md")
    assert len(block.splitlines()) == 5 and (SOURCE / "README.md").read_text().index(block) < 2500
    exec(compile(block, "README.md", "exec"), {})
    (promised,) = re.findall(r"# (All .*)\.\.\.$", block, re.MULTILINE)
    assert capsys.readouterr().out.startswith(promised)


def test_a_foreign_program(tmp_path):
    assert len((EXAMPLES / "foreign_program.py").read_text().splitlines()) < 30
    script("foreign_table.py", WATER, "table", cwd=tmp_path)
    said = script("foreign_program.py", "table", cwd=tmp_path)
    assert said.startswith("All 19 files are fine") and "[1125.6 1152.5 3388.3]" in said
    # A wrong sign of one geometry.
    rows = (tmp_path / "table").read_text().splitlines()
    numbers = rows[7].split()
    numbers[9:12] = [str(-float(each)) for each in numbers[9:12]]
    rows[7] = " ".join(numbers)
    (tmp_path / "table").write_text("\n".join(rows))
    assert script("foreign_program.py", "table", cwd=tmp_path).startswith("One sign is wrong: job 8\n")


def test_a_spectrum(tmp_path):
    said = script("borrowed_spectrum.py", WATER, "picture.svg", cwd=tmp_path)
    assert "3388.3 1/cm   1.0542 u     2.04 %" in said
    picture = (tmp_path / "picture.svg").read_text()
    shown = (SOURCE / "docs" / "python_spectrum.svg").read_text()
    assert picture.startswith("<?xml") and "borrowed intensity" in picture and "borrowed intensity" in shown


def test_drawings(water):
    import matplotlib.pyplot as plt

    s = stigruz.Set("h2o_ref.fchk", sorted(each.name for each in water.glob("h2o_0*.fchk")))
    axes = s.plot_dipole()
    printed, corrected = (line.get_ydata() for line in axes.lines[:2])
    assert max(corrected) < 0 < max(printed) and sorted(abs(printed)) == sorted(abs(corrected))
    given = plt.subplots()[1]
    assert s.plot_modes(given) is given
    assert max(given.lines[0].get_ydata()) == 100 * max(s.modes.borrowed)
