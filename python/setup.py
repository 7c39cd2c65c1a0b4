"""Builds the module of the library's, the workshop's and its own sources, so that a wheel needs nothing.

The sources stand in a checkout beside this folder, and within it in a source distribution.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
from glob import glob

from pybind11.setup_helpers import ParallelCompile, Pybind11Extension, build_ext
from setuptools import setup
from setuptools.command.sdist import sdist

HERE = pathlib.Path(__file__).resolve().parent
CORE = HERE / "core" if (HERE / "core").exists() else HERE.parent
SHARED = ["CMakeLists.txt", "include", "src", "workshop"]

VERSION = re.search(r"VERSION (\d+\.\d+\.\d+)", (CORE / "CMakeLists.txt").read_text())[1]
OTHER_SYSTEM = "_posix.cpp" if sys.platform == "win32" else "_windows.cpp"
# Static libraries that were built already, in the place of their sources: the workshop's, the library's.
LIBRARIES = os.environ.get("VESKA_LIBRARIES", "").split()
SOURCES = sorted(glob(str(HERE / "src" / "*.cpp"))) + [
    name
    for pattern in ("src/*/*.cpp", "workshop/*/*.cpp")
    for name in sorted(glob(str(CORE / pattern)))
    if not LIBRARIES and not name.endswith(OTHER_SYSTEM)
]

FLAGS = [] if sys.platform == "win32" else [
    "-g0", f"-ffile-prefix-map={CORE}=.", *os.environ.get("VESKA_FLAGS", "").split(),
]


class BuildWithStubs(build_ext):
    """Writes the stubs by what the module says of its classes."""

    def run(self):
        super().run()
        if os.environ.get("VESKA_STUBS") == "0":
            return
        module = pathlib.Path(self.get_ext_fullpath("veska._veska")).resolve()
        subprocess.run([sys.executable, str(HERE / "stubs.py"), str(module.parent)], check=True)

    def get_source_files(self):  # the sources of a distribution: see below
        return []


class SelfContained(sdist):
    """A source distribution holds the library's sources in `core`."""

    def make_release_tree(self, base_dir, files):
        super().make_release_tree(base_dir, files)
        for name in SHARED:
            to = pathlib.Path(base_dir) / "core" / name
            to.parent.mkdir(exist_ok=True)
            copy = shutil.copytree if (CORE / name).is_dir() else shutil.copy
            copy(CORE / name, to)


ParallelCompile("NPY_NUM_BUILD_JOBS", default=0).install()
setup(
    version=VERSION,
    ext_modules=[
        Pybind11Extension(
            "veska._veska",
            SOURCES,
            include_dirs=[str(CORE / "include"), str(CORE / "src"), str(CORE / "workshop"),
                          str(CORE / "workshop" / "include")],
            define_macros=[("VESKA_VERSION", f'"{VERSION}"')],
            extra_compile_args=FLAGS,
            extra_objects=LIBRARIES,
            extra_link_args=os.environ.get("VESKA_LINK_FLAGS", "").split(),
            cxx_std=20,
        )
    ],
    cmdclass={"build_ext": BuildWithStubs, "sdist": SelfContained},
)
