# SPDX-License-Identifier: MIT
"""Builds the package with the library inside, so that a wheel needs nothing but Python.

The library is the one that the variable ZORPELX_LIBRARY names, or is built by CMake from the
sources around this folder.
"""

import os
import shutil
import subprocess
from pathlib import Path

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py

try:
    from setuptools.command.bdist_wheel import bdist_wheel
except ImportError:  # setuptools before 70.1
    from wheel.bdist_wheel import bdist_wheel

NAME = "libzorpelx.so.1"
SOURCES = Path(__file__).resolve().parents[2]


def built_library(folder):
    """The path of the library, built below folder if it is not given."""
    chosen = os.environ.get("ZORPELX_LIBRARY")
    if chosen:
        return chosen
    if not (SOURCES / "CMakeLists.txt").exists():
        raise SystemExit("The variable ZORPELX_LIBRARY should tell the path of libzorpelx.so.1.")
    cmake = ["cmake", "-S", str(SOURCES), "-B", folder, "-DCMAKE_BUILD_TYPE=Release"]
    subprocess.run(cmake, check=True)
    build = ["cmake", "--build", folder, "--parallel", "--target", "zorpelx_shared"]
    subprocess.run(build, check=True)
    return os.path.join(folder, "zorpelx", "lib", NAME)


class BuildWithLibrary(build_py):
    """Copies the library beside the modules, which look for it there first."""

    def run(self):
        super().run()
        library = built_library(os.path.join(os.path.abspath(self.build_lib), "..", "library"))
        shutil.copyfile(library, os.path.join(self.build_lib, "zorpel", NAME))


class PlatformWheel(bdist_wheel):
    """For any Python 3 on this kind of machine."""

    def get_tag(self):
        return ("py3", "none", super().get_tag()[2])


class WithLibrary(Distribution):
    """Not the same on every machine."""

    def has_ext_modules(self):
        return True


setup(
    cmdclass={"build_py": BuildWithLibrary, "bdist_wheel": PlatformWheel},
    distclass=WithLibrary,
)
