# SPDX-License-Identifier: MIT
"""Builds a wheel without a network, installs it into an empty environment, and runs it there.

Usage: wheel.py SOURCE LIBRARY WORK, where SOURCE is the folder of the package, LIBRARY the library
to go into the wheel and WORK a folder of the test's own.
"""

import os
import shutil
import subprocess
import sys
import zipfile
from pathlib import Path

PROGRAM = """
import os, sys, zorpel
from zorpel import _library
assert sys.prefix in zorpel.__file__, zorpel.__file__
with open("/proc/self/maps") as maps:
    zorpel.partition([[0, 1], [2, 3]], 2)
    loaded = {line.split()[-1] for line in maps if "libzorpelx" in line}
assert loaded == {os.path.join(os.path.dirname(zorpel.__file__), _library.NAME)}, loaded
partition = zorpel.partition([[0, 1, 2], [3, 4, 5], [2, 3]], 2, starts=3)
print(partition.cut, zorpel.evaluate([[0, 1, 2], [3, 4, 5], [2, 3]], partition).cut)
"""


def run(command, **environment):
    """The output of a command that must succeed; Python sees nothing but what it installs."""
    kept = {name: value for name, value in os.environ.items() if not name.startswith("PYTHON")}
    kept.pop("ZORPELX_LIBRARY", None)
    kept.update(environment)
    done = subprocess.run(
        command, env=kept, text=True, check=False, stdout=subprocess.PIPE, stderr=subprocess.STDOUT
    )
    if done.returncode != 0:
        sys.exit(f"{command} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


def main(source, library, work):
    """Builds, looks into, installs and runs the wheel."""
    shutil.rmtree(work, ignore_errors=True)
    copy, wheels, empty = work / "source", work / "wheels", work / "empty"
    shutil.copytree(source, copy, ignore=shutil.ignore_patterns("__pycache__", "tests", "build"))
    pip = [sys.executable, "-m", "pip", "--disable-pip-version-check"]
    offline = ["--no-index", "--no-deps"]
    build = [*pip, "wheel", *offline, "--no-build-isolation", "-w", str(wheels), str(copy)]
    run(build, ZORPELX_LIBRARY=library)
    (wheel,) = wheels.iterdir()
    assert wheel.name.startswith("zorpel-") and "-py3-none-linux_" in wheel.name, wheel.name
    names = zipfile.ZipFile(wheel).namelist()
    for name in ("libzorpelx.so.1", "py.typed", "api.py", "options.py", "results.py"):
        assert f"zorpel/{name}" in names, (name, names)
    run([sys.executable, "-m", "venv", str(empty)])
    python = str(empty / "bin" / "python")
    run([python, "-m", "pip", "--disable-pip-version-check", "install", *offline, str(wheel)])
    shutil.rmtree(copy)
    said = run([python, "-I", "-W", "error", "-c", PROGRAM])
    assert said == "1 1\n", said


if __name__ == "__main__":
    main(Path(sys.argv[1]), sys.argv[2], Path(sys.argv[3]))
