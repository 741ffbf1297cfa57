"""The package as its users meet it: examples, stubs, lists of formats, OpenCV's codes."""

import ast
import doctest
import importlib
import inspect
import os
import pickle

import kro
import native
import numpy
import pytest
from native import ALL_FORMATS, OUTPUTS

DOCUMENTED = [name for name in kro.__all__ if name not in ("__version__", "CopyWarning")]


@pytest.mark.parametrize("name", DOCUMENTED)
def test_each_docstring_has_an_example_that_holds(name):
    test = doctest.DocTestParser().get_doctest(inspect.getdoc(getattr(kro, name)), {}, name, None, None)
    assert test.examples
    assert doctest.DocTestRunner().run(test).failed == 0


def stub():
    with open(os.path.join(os.path.dirname(kro.__file__), "_kro.pyi")) as file:
        return ast.parse(file.read())


def test_the_stub_says_what_the_module_has():
    module = importlib.import_module("kro._kro")
    said = {node.name for node in stub().body if isinstance(node, (ast.FunctionDef, ast.ClassDef))} | {"version"}
    assert said == {name for name in vars(module) if not name.startswith("__")}


def test_the_stub_says_how_convert_is_called():
    signature = inspect.signature(kro.convert)
    stubs = [node.args for node in stub().body if isinstance(node, ast.FunctionDef) and node.name == "convert"]
    assert len(stubs) == 2
    for arguments in stubs:
        assert [a.arg for a in arguments.args + arguments.kwonlyargs] == list(signature.parameters)
        defaults = [None] * (len(arguments.args) - len(arguments.defaults)) + arguments.defaults + arguments.kw_defaults
        for node, parameter in zip(defaults, signature.parameters.values()):
            if node is not None:
                assert ast.literal_eval(node) == parameter.default
            # One of the two forms is for calls with out=, where it has no default.
            elif parameter.name != "out":
                assert parameter.default is inspect.Parameter.empty


def test_formats_are_those_that_the_command_s_tests_know():
    known = {entry.name: entry for entry in kro.formats()}
    assert {name: entry.code for name, entry in known.items() if entry.frame} == \
        {name: entry.code for name, entry in ALL_FORMATS.items()}
    assert {name: entry.code for name, entry in known.items() if entry.picture} == \
        {name: code for name, (code, _, _) in OUTPUTS.items()}
    for name, entry in ALL_FORMATS.items():
        assert known[name].bits == entry.bits and known[name].packing == entry.packing
        assert known[name].order == ("Y" if entry.sites == "YYYY" else entry.sites)
    for name, (_, channels, kind) in OUTPUTS.items():
        assert known[name].channels == (3 if channels == "planes" else channels)
        assert known[name].bits == (8 if kind == "u1" else 16)


def test_other_names_are_taken():
    for entry in kro.formats():
        for name in entry.names if entry.frame else ():
            frame = native.random_frame(entry.name, 4, 8)
            assert numpy.array_equal(kro.convert(frame, name, (4, 8)), kro.convert(frame, entry.name, (4, 8))), name


def test_warnings_can_be_carried_to_other_processes():
    assert pickle.loads(pickle.dumps(kro.CopyWarning)) is kro.CopyWarning


# As imgproc.hpp numbers them.
OPENCV = {
    "BayerBG2BGR": 46, "BayerGB2BGR": 47, "BayerRG2BGR": 48, "BayerGR2BGR": 49, "BayerBG2GRAY": 86, "BayerGB2GRAY": 87,
    "BayerRG2GRAY": 88, "BayerGR2GRAY": 89, "BayerBG2BGR_EA": 135, "BayerGB2BGR_EA": 136, "BayerRG2BGR_EA": 137,
    "BayerGR2BGR_EA": 138, "BayerBG2BGRA": 139, "BayerGB2BGRA": 140, "BayerRG2BGRA": 141, "BayerGR2BGRA": 142,
    "BayerBG2RGB": 48, "BayerGB2RGB": 49, "BayerRG2RGB": 46, "BayerGR2RGB": 47, "BayerBG2RGB_EA": 137,
    "BayerGB2RGB_EA": 138, "BayerRG2RGB_EA": 135, "BayerGR2RGB_EA": 136, "BayerBG2RGBA": 141, "BayerGB2RGBA": 142,
    "BayerRG2RGBA": 139, "BayerGR2RGBA": 140, "GRAY2BGR": 8, "GRAY2RGB": 8, "GRAY2BGRA": 9, "GRAY2RGBA": 9,
    "BayerBG2BGR_VNG": 62, "BayerGB2BGR_VNG": 63, "BayerRG2BGR_VNG": 64, "BayerGR2BGR_VNG": 65, "BayerBG2RGB_VNG": 64,
    "BayerGB2RGB_VNG": 65, "BayerRG2RGB_VNG": 62, "BayerGR2RGB_VNG": 63,
}
PHASES = {"RG": "BG", "GR": "GB", "BG": "RG", "GB": "GR"}
ENDINGS = {"RGB8": "RGB", "BGR8": "BGR", "RGBa8": "RGBA", "BGRa8": "BGRA", "Mono8": "GRAY", "RGB16": "RGB"}


@pytest.mark.parametrize("phase", PHASES)
@pytest.mark.parametrize("output", ENDINGS)
def test_opencv_codes(phase, output):
    name = f"Bayer{PHASES[phase]}2{ENDINGS[output]}"
    assert kro.to_opencv_code(f"Bayer{phase}8", output, "bilinear") == OPENCV[name]
    assert kro.to_opencv_code(f"Bayer{phase}12", output, "bilinear") == OPENCV[name]
    if output in ("RGB8", "BGR8", "RGB16"):
        assert kro.to_opencv_code(f"Bayer{phase}8", output) == OPENCV[name + "_EA"]
        assert kro.to_opencv_code(f"Bayer{phase}8", output, "fine") == OPENCV[name + "_VNG"]


def test_opencv_codes_of_grey_frames():
    assert kro.to_opencv_code("Mono8") == OPENCV["GRAY2RGB"]
    assert kro.to_opencv_code("Mono16", "BGRa16") == OPENCV["GRAY2BGRA"]


@pytest.mark.parametrize("arguments, says", [
    (("BayerRG12p",), "format: BayerRG12p came, expected samples in bytes or words"),
    (("BayerRG8", "RGBa8"), "output: RGBa8 came with BayerRG8 and 'edge', for which OpenCV has no code"),
    (("BayerRG8", "RGB8", "nearest"), "'nearest', for which OpenCV has no code"),
    (("BayerRG8", "RGBa8", "fine"), "'fine', for which OpenCV has no code"),
    (("BayerRG12", "RGB16", "fine"), "'fine', for which OpenCV has no code"),
    (("BayerRG8", "RGB8Planar", "bilinear"), "output: RGB8_Planar came"),
    (("BayerRG8", "RGB8", "best"), "algorithm: 'best' came"),
    (("BayerRG7",), "format: unknown pixel format 'BayerRG7'"),
])
def test_opencv_has_no_code(arguments, says):
    with pytest.raises(ValueError) as raised:
        kro.to_opencv_code(*arguments)
    assert says in str(raised.value)


def test_opencv_agrees():
    """The same colours come out of OpenCV: of a mosaic of one colour all algorithms make that colour."""
    cv2 = pytest.importorskip("cv2")
    for name, code in OPENCV.items():
        assert getattr(cv2, "COLOR_" + name) == code
    for sites, phase in (("RGGB", "RG"), ("GRBG", "GR"), ("GBRG", "GB"), ("BGGR", "BG")):
        cell = [{"R": 200, "G": 120, "B": 40}[site] for site in sites]
        frame = numpy.tile(numpy.array(cell, "u1").reshape(2, 2), (8, 8))
        for output in ("RGB8", "BGR8"):
            for algorithm in ("bilinear", "edge", "fine"):
                code = kro.to_opencv_code(f"Bayer{phase}8", output, algorithm)
                ours = kro.convert(frame, f"Bayer{phase}8", output=output, algorithm=algorithm)
                assert numpy.array_equal(cv2.cvtColor(frame, code), ours)
