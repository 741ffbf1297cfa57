"""What a build installs as the component python is found and works, beside what it installs of the library."""

import os
import re
import subprocess
import sys

import pytest

BUILD = os.environ["KRO_BUILD"]
PROGRAM = "import kro; print(kro.__file__, kro.convert(bytes(16), 'BayerRG8', (4, 4)).shape)"


def install(prefix, *components):
    for component in components:
        subprocess.run(["cmake", "--install", BUILD, "--prefix", str(prefix), *component], check=True,
                       stdout=subprocess.DEVNULL)


def files(prefix):
    return sorted(os.path.relpath(os.path.join(folder, name), prefix) for folder, _, names in os.walk(prefix)
                  for name in names)


def test_the_component_holds_the_package_alone(tmp_path):
    install(tmp_path, ["--component", "python"])
    names = files(tmp_path)
    assert {os.path.basename(name) for name in names} == \
        {"__init__.py", "_frames.py", "_kro.abi3.so", "_kro.pyi", "py.typed"}
    assert all(re.match(r"lib/python3(\.\d+)?/(dist|site)-packages/kro/", name) for name in names), names


def test_an_installed_package_finds_its_library(tmp_path):
    install(tmp_path, [])
    package = next(tmp_path.glob("lib/python3*/*-packages"))
    environment = {key: value for key, value in os.environ.items() if key not in ("PYTHONPATH", "LD_LIBRARY_PATH")}
    result = subprocess.run([sys.executable, "-B", "-c", PROGRAM], env=dict(environment, PYTHONPATH=str(package)),
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    assert result.stdout.decode().split(" ", 1) == [str(package / "kro" / "__init__.py"), "(4, 4, 3)\n"]


def test_the_module_keeps_to_the_limited_interface():
    """Names that no later version drops: those of the stable interface alone."""
    module = os.path.join(BUILD, "python", "kro", "_kro.abi3.so")
    if not os.path.exists(module):
        pytest.fail(f"{module} is not built")
    listed = subprocess.run(["nm", "-D", module], check=True, stdout=subprocess.PIPE).stdout.decode()
    wanted = set(re.findall(r" U (_?Py\w+)", listed))
    exported = set(re.findall(r" [TDBRVW] (\w+)", listed))
    assert exported == {"PyInit__kro"}
    # What the limited interface's macros come down to begins with an underscore.
    assert {name for name in wanted if name.startswith("_")} <= {
        "_Py_Dealloc", "_Py_NoneStruct", "_Py_TrueStruct", "_Py_FalseStruct", "_PyArg_ParseTuple_SizeT",
        "_Py_BuildValue_SizeT", "_PyObject_CallFunction_SizeT"}
