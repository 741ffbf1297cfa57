"""What is wrong with a call is said: the argument, what came, what was expected."""

import kro
import numpy
import pytest

FRAME = numpy.zeros((8, 12), "u1")
WORDS = numpy.zeros((8, 12), "u2")
PACKED = bytes(8 * 18)


def call(**changes):
    arguments = {"frame": FRAME, "format": "BayerRG8", **changes}
    return kro.convert(**arguments)


@pytest.mark.parametrize("kind, says, changes", [
    (TypeError, ["frame: <class 'int'> came", "buffer protocol"], {"frame": 5}),
    (TypeError, ["frame: <class 'str'> came", "buffer protocol"], {"frame": "abc"}),
    (ValueError, ["frame: an array of 'H' and shape (8, 12) came", "bytes ('B') for BayerRG8"], {"frame": WORDS}),
    (ValueError, ["frame: an array of 'h' and shape (8, 12) came", "unsigned words ('H') or bytes ('B')"],
     {"frame": WORDS.view("i2"), "format": "BayerRG10"}),
    (ValueError, ["frame: an array of 'f'", "for BayerRG8"], {"frame": numpy.zeros((8, 12), "f4")}),
    (ValueError, ["frame: an array of 'B' and shape (8, 12, 1) came", "two (rows)"], {"frame": FRAME[..., None]}),
    (ValueError, ["frame: an array of 'B' and shape () came"], {"frame": numpy.zeros((), "u1")}),
    (ValueError, ["frame: (3, 12) came", "4 to 2^30"], {"frame": FRAME[:3]}),
    (ValueError, ["frame: (0, 12) came", "4 to 2^30"], {"frame": FRAME[:0]}),
    (ValueError, ["frame: 144 bytes came, expected 126 for BayerRG12p of shape (7, 12)"],
     {"frame": PACKED, "format": "BayerRG12p", "shape": (7, 12)}),
    (ValueError, ["frame: 160 bytes came, expected 144", "rows 20 bytes apart", "reshape(8, 20)"],
     {"frame": bytes(160), "format": "BayerRG12p", "shape": (8, 12)}),
    (ValueError, ["frame: an array of 'B' and shape (8, 12) came, expected 8 rows of at least 18"],
     {"format": "BayerRG12p", "shape": (8, 12)}),
    (ValueError, ["frame: an array of 'B' and shape (8, 12) came, expected 9 rows"], {"shape": (9, 12)}),
    (ValueError, ["frame: words at an odd address", "even"],
     {"frame": memoryview(bytearray(193))[1:], "format": "BayerRG10", "shape": (8, 12)}),
    (ValueError, ["frame: words at an odd address or rows an odd number of bytes apart came"],
     {"frame": numpy.zeros((8, 25), "u1"), "format": "BayerRG10", "shape": (8, 12)}),
    (ValueError, ["format: unknown pixel format 'BayerRG9', did you mean BayerRG8?", "kro.formats()"], {"format": "BayerRG9"}),
    (ValueError, ["format: pixel format 'RGGB12P' has several meanings, give ", "BayerRG12p (PFNC's)"], {"format": "RGGB12P"}),
    (ValueError, ["format: unknown pixel format ''"], {"format": ""}),
    (ValueError, ["format: unknown pixel format 'RGB8'"], {"format": "RGB8"}),
    (ValueError, ["format: 7 came", "code of a pixel format"], {"format": 7}),
    (ValueError, ["format: -1 came", "code of a pixel format"], {"format": -1}),
    (ValueError, ["format: 18446744073709551617 came"], {"format": (1 << 64) + 1}),
    (TypeError, ["format: [] came", "name of a pixel format or its code"], {"format": []}),
    (TypeError, ["format: None came"], {"format": None}),
    (TypeError, ["shape: None came with a frame that is an array of 'B' and shape (144), expected".replace("(144)", "(144,)"),
                 "(height, width) of the BayerRG12p samples"], {"frame": PACKED, "format": "BayerRG12p"}),
    (TypeError, ["shape: None came", "BayerRG12 samples"], {"format": "BayerRG12"}),
    (TypeError, ["shape: (1, 2, 3) came", "expected (height, width)"], {"shape": (1, 2, 3)}),
    (TypeError, ["shape: 8 came", "expected (height, width)"], {"shape": 8}),
    (TypeError, ["shape: (8, 'x') came", "whole numbers"], {"shape": (8, "x")}),
    (TypeError, ["shape: (8, 12.0) came", "whole numbers"], {"shape": (8, 12.0)}),
    (TypeError, ["shape: (8, 1267650600228229401496703205376) came", "whole numbers"], {"shape": (8, 1 << 100)}),
    (ValueError, ["shape: (2, 48) came, expected a height and a width of 4 to 2^30"], {"shape": (2, 48)}),
    (ValueError, ["shape: (-8, 12) came"], {"shape": (-8, 12)}),
    (ValueError, ["shape: (8, 1073741825) came"], {"shape": (8, (1 << 30) + 1)}),
    (ValueError, ["algorithm: 'cubic' came, expected 'nearest', 'bilinear', 'edge' or 'fine'"], {"algorithm": "cubic"}),
    (TypeError, ["algorithm: 2 came"], {"algorithm": 2}),
    (ValueError, ["output: unknown output format 'RGB9', did you mean RGB8?"], {"output": "RGB9"}),
    (ValueError, ["output: unknown output format 'BayerRG8'"], {"output": "BayerRG8"}),
    (ValueError, ["output: 5 came"], {"output": 5}),
    (TypeError, ["output: None came"], {"output": None}),
    (ValueError, ["out: an array of 'B' and shape (8, 12) came, expected one of 'B' and shape (8, 12, 3) for RGB8"],
     {"out": numpy.zeros((8, 12), "u1")}),
    (ValueError, ["out: an array of 'H' and shape (8, 12, 3) came, expected one of 'B'"], {"out": numpy.zeros((8, 12, 3), "u2")}),
    (ValueError, ["out: an array of 'B' and shape (8, 12, 3) came, expected one of 'H' and shape (3, 8, 12) for RGB16_Planar"],
     {"out": numpy.zeros((8, 12, 3), "u1"), "output": "RGB16Planar"}),
    (ValueError, ["out: an array of '>H'", "one of 'H'"], {"out": numpy.zeros((8, 12), ">u2"), "output": "Mono16"}),
    (ValueError, ["out: an array of 'B' and shape (287,) came"], {"out": bytearray(287)}),
    (ValueError, ["out: ", "one behind the other"], {"out": numpy.zeros((8, 24, 3), "u1")[:, ::2]}),
    (ValueError, ["out: ", "one behind the other"], {"out": numpy.zeros((8, 12, 3), "u1")[..., ::-1]}),
    (ValueError, ["out: ", "one behind the other"],
     {"out": numpy.lib.stride_tricks.as_strided(numpy.zeros(400, "u1"), (8, 12, 3), (35, 3, 1))}),
    (ValueError, ["out: ", "even address"], {"out": memoryview(bytearray(193))[1:], "output": "Mono16"}),
    (ValueError, ["out: words at an odd address or rows an odd number of bytes apart"],
     {"out": numpy.ndarray((8, 12), "u2", bytearray(400), 0, (25, 2)), "output": "Mono16"}),
    (ValueError, ["out: the frame's own memory came"], {"out": FRAME, "output": "Mono8"}),
    (TypeError, ["out: <class 'list'> came", "buffer protocol"], {"out": []}),
    (ValueError, ["threads: 0 came, expected a number of 1 or more, or None"], {"threads": 0}),
    (ValueError, ["threads: -3 came"], {"threads": -3}),
    (TypeError, ["threads: 'all' came"], {"threads": "all"}),
    (ValueError, ["bits: 12 came, expected 8 or None for BayerRG8"], {"bits": 12}),
    (ValueError, ["bits: 17 came, expected 8 to 16, or None, for BayerRG12"], {"frame": WORDS, "format": "BayerRG12", "bits": 17}),
    (ValueError, ["bits: 0 came"], {"frame": WORDS, "format": "BayerRG12", "bits": 0}),
    (TypeError, ["bits: 8.5 came"], {"bits": 8.5}),
    (TypeError, ["convert() has no argument 'size'"], {"size": 1}),
])
def test_what_is_wrong_is_said(kind, says, changes):
    with pytest.raises(kind) as raised:
        call(**changes)
    for words in says:
        assert words in str(raised.value)


@pytest.mark.parametrize("out", [bytes(288), numpy.zeros((8, 12, 3), "u1")], ids=["bytes", "array"])
def test_an_out_that_cannot_be_written(out):
    if isinstance(out, numpy.ndarray):
        out.flags.writeable = False
    with pytest.raises((BufferError, ValueError, TypeError), match="^out: .*expected memory that can be written"):
        call(out=out)


def test_calls_that_lack_or_repeat_an_argument():
    for arguments, named, words in (((), {}, "needs 'frame'"), ((FRAME,), {}, "needs 'format'"),
                                    ((FRAME, "BayerRG8", None, "edge"), {}, "by name; 4 came"),
                                    ((FRAME, "BayerRG8"), {"format": "x"}, "got 'format' twice")):
        with pytest.raises(TypeError) as raised:
            kro.convert(*arguments, **named)
        assert words in str(raised.value)


def test_nothing_is_written_where_something_is_wrong():
    out = numpy.full((8, 12, 3), 7, "u1")
    for changes in ({"shape": (9, 12)}, {"bits": 12}, {"frame": WORDS}, {"threads": 0}):
        with pytest.raises(ValueError):
            call(out=out, **changes)
    assert (out == 7).all()


def test_numbers_that_raise():
    class Strange:
        def __index__(self):
            raise RuntimeError("of its own")

    with pytest.raises(TypeError, match="^shape: "):
        call(shape=(8, Strange()))
