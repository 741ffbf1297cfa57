"""Pictures are those of the library, whatever frames and pictures lie in."""

import array
import gc
import sys
import tracemalloc
import warnings

import kro
import native
import numpy
import pytest
from hypothesis import given, settings, strategies as st
from native import ALGORITHMS, ALL_FORMATS, OUTPUTS

BAYER = sorted(ALL_FORMATS)
WORDS = [name for name in BAYER if ALL_FORMATS[name].packing == "word"]
PLAIN = [name for name in BAYER if ALL_FORMATS[name].packing in ("byte", "word")]
QUICK = settings(max_examples=60, deadline=None, derandomize=True, database=None)


@pytest.fixture(autouse=True)
def copies_fail():
    """No frame is copied but where a test expects it."""
    with warnings.catch_warnings():
        warnings.simplefilter("error", kro.CopyWarning)
        yield


def samples_of(pixel_format, data, height, width):
    kind = "u1" if ALL_FORMATS[pixel_format].packing == "byte" else "u2"
    return numpy.frombuffer(data, kind).reshape(height, width)


@pytest.mark.parametrize("pixel_format", BAYER)
def test_every_format_of_frames(pixel_format):
    data = native.random_frame(pixel_format, 6, 10)
    for algorithm in ALGORITHMS:
        for output in ("RGB8", "BGR16"):
            expected = native.picture(data, pixel_format, 6, 10, algorithm, output)
            result = kro.convert(data, pixel_format, shape=(6, 10), algorithm=algorithm, output=output)
            assert result.dtype == expected.dtype and numpy.array_equal(result, expected)


@pytest.mark.parametrize("output", OUTPUTS)
def test_every_format_of_pictures(output):
    data = native.random_frame("BayerGB12p", 7, 9)
    expected = native.picture(data, "BayerGB12p", 7, 9, "bilinear", output)
    result = kro.convert(data, "BayerGB12p", shape=(7, 9), algorithm="bilinear", output=output)
    assert result.dtype == expected.dtype and result.shape == expected.shape and numpy.array_equal(result, expected)
    assert numpy.array_equal(kro.convert(data, 0x010C0055, (7, 9), algorithm="bilinear", output=OUTPUTS[output][0]),
                             expected)


@pytest.mark.parametrize("wrap", [bytes, bytearray, memoryview, lambda data: array.array("B", data),
                                  lambda data: numpy.frombuffer(data, "u1"), lambda data: memoryview(data).cast("c")])
def test_anything_with_the_buffer_protocol(wrap):
    data = native.random_frame("BayerGR10Packed", 5, 8)
    assert numpy.array_equal(kro.convert(wrap(data), "BayerGR10Packed", shape=(5, 8)),
                             native.picture(data, "BayerGR10Packed", 5, 8))


def test_the_format_s_other_names():
    data = native.random_frame("BayerRG16", 4, 6)
    swapped = samples_of("BayerRG16", data, 4, 6).byteswap().tobytes()
    expected = native.picture(data, "BayerRG16", 4, 6)
    for name in ("SRGGB16", "rggb16le", "bayer_rggb16le", "Bayer_RG_16", "0x0110002f"):
        assert numpy.array_equal(kro.convert(data, name, shape=(4, 6)), expected), name
    assert numpy.array_equal(kro.convert(swapped, "rggb16be", shape=(4, 6)), expected)


@QUICK
@given(st.sampled_from(PLAIN), st.integers(4, 40), st.integers(4, 70), st.integers(0, 5), st.integers(0, 5),
       st.booleans(), st.sampled_from(sorted(ALGORITHMS)), st.sampled_from(sorted(OUTPUTS)))
def test_rows_of_arrays_lie_anywhere(pixel_format, height, width, before, behind, upwards, algorithm, output):
    data = native.random_frame(pixel_format, height, width)
    samples = samples_of(pixel_format, data, height, width)
    around = numpy.full((height, before + width + behind), 77, samples.dtype)
    view = around[::-1, before:before + width] if upwards else around[:, before:before + width]
    view[...] = samples
    expected = native.picture(data, pixel_format, height, width, algorithm, output)
    assert numpy.array_equal(kro.convert(view, pixel_format, algorithm=algorithm, output=output), expected)


@QUICK
@given(st.sampled_from([name for name in BAYER if ALL_FORMATS[name].packing not in ("byte", "word")]),
       st.integers(4, 20), st.integers(4, 40), st.integers(0, 9))
def test_packed_rows_with_padding(pixel_format, height, width, padding):
    row = native.frame_bytes(pixel_format, width)
    frame = numpy.random.default_rng(3).integers(0, 256, (height, row + padding), "u1")
    expected = native.picture(frame.tobytes(), pixel_format, height, width, stride=row + padding)
    assert numpy.array_equal(kro.convert(frame, pixel_format, shape=(height, width)), expected)
    assert numpy.array_equal(kro.convert(frame[:, :row], pixel_format, shape=(height, width)), expected)


@QUICK
@given(st.sampled_from(sorted(OUTPUTS)), st.integers(4, 30), st.integers(4, 40), st.integers(0, 4), st.booleans())
def test_out_is_written_in_place_and_nothing_beside_it(output, height, width, gap, upwards):
    data = native.random_frame("BayerBG10p", height, width)
    shape = native.picture_shape(output, height, width)
    planar = OUTPUTS[output][1] == "planes"
    around = numpy.full(tuple(n + 2 * gap if i == (2 if planar else 1) else n for i, n in enumerate(shape)), 99,
                        OUTPUTS[output][2])
    inner = (slice(None), slice(None, None, -1 if upwards else 1), slice(gap, gap + width))[0 if planar else 1:]
    out = around[inner]
    assert out.shape == shape
    result = kro.convert(data, "BayerBG10p", shape=(height, width), output=output, out=out)
    assert result is out
    assert numpy.array_equal(out, native.picture(data, "BayerBG10p", height, width, "edge", output))
    out[...] = 99
    assert (around == 99).all()


def test_out_of_one_dimension():
    data = native.random_frame("BayerRG8", 6, 8)
    for output in ("RGB8", "RGB8_Planar", "Mono16"):
        expected = native.picture(data, "BayerRG8", 6, 8, "edge", output)
        out = bytearray(expected.nbytes)
        assert kro.convert(data, "BayerRG8", (6, 8), output=output, out=out) is out
        assert bytes(out) == expected.tobytes()


@pytest.mark.parametrize("pixel_format", WORDS)
def test_big_endian_arrays(pixel_format):
    data = native.random_frame(pixel_format, 6, 8)
    swapped = samples_of(pixel_format, data, 6, 8).astype(">u2")
    assert numpy.array_equal(kro.convert(swapped, pixel_format, output="RGB16"),
                             native.picture(data, pixel_format, 6, 8, "edge", "RGB16"))


@QUICK
@given(st.sampled_from(WORDS), st.integers(8, 16), st.sampled_from(["RGB8", "RGB16"]))
def test_bits(pixel_format, bits, output):
    data = native.random_frame(pixel_format, 6, 8)
    assert numpy.array_equal(kro.convert(data, pixel_format, (6, 8), output=output, bits=bits),
                             native.picture(data, pixel_format, 6, 8, "edge", output, bits))


@pytest.mark.parametrize("pixel_format", PLAIN)
@pytest.mark.parametrize("how", ["every other column", "turned round", "transposed", "one row for all"])
def test_frames_that_must_be_copied_are_and_it_is_said(pixel_format, how):
    data = native.random_frame(pixel_format, 8, 8)
    samples = samples_of(pixel_format, data, 8, 8)
    if how == "every other column":
        view = numpy.repeat(samples, 2, axis=1)[:, ::2]
    elif how == "turned round":
        view = samples[:, ::-1]
    elif how == "transposed":
        view = samples.T
    else:
        view = numpy.broadcast_to(samples[0], (8, 8))
    expected = native.picture(numpy.ascontiguousarray(view).tobytes(), pixel_format, 8, 8)
    with pytest.warns(kro.CopyWarning, match="^frame: .*copied first"):
        assert numpy.array_equal(kro.convert(view, pixel_format), expected)
    with pytest.raises(kro.CopyWarning):
        kro.convert(view, pixel_format)


def test_strided_bytes_are_copied():
    data = native.random_frame("BayerRG12p", 4, 8)
    spread = bytes(byte for pair in zip(data, data) for byte in pair)
    with pytest.warns(kro.CopyWarning):
        assert numpy.array_equal(kro.convert(memoryview(spread)[::2], "BayerRG12p", (4, 8)),
                                 native.picture(data, "BayerRG12p", 4, 8))


@QUICK
@given(st.sampled_from(BAYER), st.integers(4, 24), st.integers(4, 40), st.sampled_from(sorted(ALGORITHMS)),
       st.sampled_from(["RGB8", "BGRa8", "RGB8_Planar", "Mono16"]), st.booleans())
def test_nothing_beside_the_frame_and_the_picture_is_touched(pixel_format, height, width, algorithm, output, at_end):
    data = native.random_frame(pixel_format, height, width)
    expected = native.picture(data, pixel_format, height, width, algorithm, output)
    frame = native.Guarded(len(data)).array(len(data), at_end and len(data) % 2 == 0)
    frame[...] = numpy.frombuffer(data, "u1")
    out = native.Guarded(expected.nbytes).array(expected.nbytes, at_end and expected.nbytes % 2 == 0)
    kro.convert(frame, pixel_format, (height, width), algorithm=algorithm, output=output, out=out)
    assert out.tobytes() == expected.tobytes()


def test_no_memory_beside_the_picture():
    frame = numpy.random.default_rng(1).integers(0, 4096, (1000, 2100), "u2")[:, 40:2040]
    out = numpy.empty((1000, 2000, 3), "u1")
    kro.convert(frame, "BayerRG12", out=out, threads=2)
    tracemalloc.start()
    try:
        for threads in (None, 2):
            tracemalloc.reset_peak()
            kro.convert(frame, "BayerRG12", out=out, threads=threads)
            assert tracemalloc.get_traced_memory()[1] < 4096
        result = kro.convert(frame, "BayerRG12")
        assert result.nbytes <= tracemalloc.get_traced_memory()[1] < result.nbytes + 4096
        # The measure sees what a copy takes.
        tracemalloc.reset_peak()
        with pytest.warns(kro.CopyWarning):
            kro.convert(frame[:, ::-1], "BayerRG12", out=out)
        assert tracemalloc.get_traced_memory()[1] > result.nbytes + 1000 * 2000 * 2
    finally:
        tracemalloc.stop()


def test_nothing_is_held_after_a_call():
    frame, out = bytearray(64), bytearray(192)
    size = sys.getrefcount(out)
    for arguments in ({"out": out}, {"out": out, "bits": 3}, {"out": bytearray(1)}, {"shape": (1, 2), "out": out}):
        try:
            kro.convert(frame, "BayerRG8", **{"shape": (8, 8), **arguments})
        except ValueError:
            pass
        del arguments
        frame.append(0)  # a buffer that is lent still cannot grow
        frame.pop()
        out.append(0)
        out.pop()
    assert sys.getrefcount(out) <= size
    gc.collect()
    before = len(gc.get_objects())
    for _ in range(200):
        kro.convert(frame, "BayerRG8", (8, 8))
    gc.collect()
    assert len(gc.get_objects()) < before + 50
