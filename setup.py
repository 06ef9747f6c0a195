"""The Python module alone, for `pip install .`: setuptools runs the build of CMake.

There is no pyproject.toml: with it pip would fetch what builds the module from the network.
"""

import os
import re
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

SOURCE = Path(__file__).resolve().parent


class CMakeBuild(build_ext):
    """Builds the target stigruz_python, and puts the module where setuptools looks for it."""

    def build_extension(self, ext: Extension) -> None:
        build = Path(self.build_temp).resolve() / "cmake"
        module = Path(self.get_ext_fullpath(ext.name)).resolve()
        subprocess.run(
            ["cmake", "-S", SOURCE, "-B", build, "-DCMAKE_BUILD_TYPE=Release", "-DSTIGRUZ_TESTS=OFF",
             "-DSTIGRUZ_SHARED=OFF", "-DSTIGRUZ_PYTHON=ON", f"-DPython_EXECUTABLE={sys.executable}"],
            check=True,
        )
        jobs = os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL", str(os.cpu_count() or 1))
        subprocess.run(
            ["cmake", "--build", build, "--target", "stigruz_python", "--parallel", jobs], check=True
        )
        module.parent.mkdir(parents=True, exist_ok=True)
        self.copy_file(str(next((build / "python" / "stigruz").glob("_core.*.so"))), str(module))


setup(
    name="stigruz",
    version=re.search(r"VERSION ([0-9.]+)", (SOURCE / "CMakeLists.txt").read_text().split("project(")[1]).group(1),
    description="Signs and derivatives of excited-state transition dipoles",
    license="BSD-3-Clause",
    python_requires=">=3.9",
    install_requires=["numpy"],
    packages=["stigruz"],
    package_dir={"": "python"},
    package_data={"stigruz": ["py.typed", "*.pyi"]},
    ext_modules=[Extension("stigruz._core", [])],
    cmdclass={"build_ext": CMakeBuild},
    zip_safe=False,
)
