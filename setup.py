"""The package kro for pip: CMake builds its module, with the library in it."""

import os
import re
import shutil
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = os.path.dirname(os.path.abspath(__file__))


def version():
    with open(os.path.join(HERE, "CMakeLists.txt")) as file:
        return re.search(r"project\(kro VERSION (\S+)", file.read())[1]


class CMakeBuild(build_ext):
    def build_extension(self, extension):
        build = os.path.abspath(self.build_temp)
        # CMake itself looks for make alone, which few have who have Ninja.
        if shutil.which("ninja"):
            os.environ.setdefault("CMAKE_GENERATOR", "Ninja")
        subprocess.run(["cmake", "-S", HERE, "-B", build, "-DCMAKE_BUILD_TYPE=Release", "-DBUILD_SHARED_LIBS=OFF",
                        "-DBUILD_TESTING=OFF", "-DKRO_BUILD_CLI=OFF", "-DKRO_BUILD_BENCH=OFF", "-DKRO_BUILD_PYTHON=ON",
                        "-DCMAKE_SKIP_RPATH=ON", f"-DPython_EXECUTABLE={sys.executable}"], check=True)
        subprocess.run(["cmake", "--build", build, "--target", "kro-python", "--parallel"], check=True)
        target = self.get_ext_fullpath(extension.name)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        shutil.copyfile(os.path.join(build, "python", "kro", "_kro.abi3.so"), target)


setup(version=version(), ext_modules=[Extension("kro._kro", [], py_limited_api=True)],
      cmdclass={"build_ext": CMakeBuild}, options={"bdist_wheel": {"py_limited_api": "cp311"}})
