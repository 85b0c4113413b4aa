#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Builds and installs the sources twice, in folders of different names, and compares what came out:
same_build.py WORK [CMAKE_OPTION ...]

Sources, builds and prefixes stand in different places, and the clock goes on between them. Every
installed file has to be the same, to the byte.
"""

import filecmp
import os
import shutil
import subprocess
import sys
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]


def run(*words, **how):
    done = subprocess.run(words, capture_output=True, text=True, **how)
    if done.returncode != 0:
        sys.exit(f"{words} ended with {done.returncode}:\n{done.stdout}{done.stderr}")
    return done.stdout


def copy_sources(target):
    listing = run("git", "ls-files", "--cached", "--others", "--exclude-standard", cwd=SOURCE)
    for name in listing.splitlines():
        if (SOURCE / name).is_file():
            (target / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(SOURCE / name, target / name)


def installed(folder, options):
    """The files installed by a build in this folder, by their names."""
    source, build, root = folder / "source", folder / "the build", folder / "root"
    copy_sources(source)
    run("cmake", "-S", source, "-B", build, "-G", "Ninja", "-DCMAKE_INSTALL_PREFIX=/opt/z", *options)
    run("cmake", "--build", build)
    run("cmake", "--install", build, env={**os.environ, "DESTDIR": str(root)})
    files = [path for path in root.rglob("*") if path.is_file() or path.is_symlink()]
    return {str(path.relative_to(root)): path for path in files}


def main(work, *options):
    if not (SOURCE / ".git").exists():
        print("not a git checkout: nothing is compared")
        return
    work = Path(work).resolve()
    shutil.rmtree(work, ignore_errors=True)
    os.environ["CCACHE_DISABLE"] = "1"  # a cache could give one object to both
    one = installed(work / "a", options)
    two = installed(work / "in another place, of a longer name", options)
    if one.keys() != two.keys() or len(one) < 20:
        sys.exit(f"the names differ: {sorted(one.keys() ^ two.keys())}")
    differ = [name for name in one if not filecmp.cmp(one[name], two[name], shallow=False)]
    print(f"{len(one)} files, {len(differ)} differ", *differ, sep="\n  ")
    shutil.rmtree(work)
    sys.exit(1 if differ else 0)


main(*sys.argv[1:])
