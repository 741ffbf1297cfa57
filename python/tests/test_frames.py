"""Files of frames: mapped, and read as the command reads them."""

import os
import re
import subprocess

import kro
import native
import numpy
import pytest
from native import ALL_FORMATS

COMMAND = os.environ["KRO_COMMAND"]


def write(folder, name, data):
    path = folder / name
    path.write_bytes(data)
    return path


def by_command(path, *options):
    """How the command reads a file: size, format and number of frames."""
    result = subprocess.run([COMMAND, "info", str(path), *options], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    text = result.stdout.decode()
    found = re.search(r"(\d+)x(\d+) (\S+)", text)
    return (result.returncode, (int(found[2]), int(found[1])), found[3]) if found else (result.returncode, None, None)


@pytest.mark.parametrize("pixel_format", sorted(ALL_FORMATS))
def test_every_format(tmp_path, pixel_format):
    frames = [native.random_frame(pixel_format, 6, 10, i) for i in range(3)]
    path = write(tmp_path, f"film_10x6_{pixel_format}.raw", b"".join(frames))
    film = kro.read_frames(path)
    assert (len(film), film.format, film.shape) == (3, pixel_format, (6, 10))
    for i in (0, 1, 2, -1):
        assert film[i].tobytes() == frames[i]
        assert numpy.array_equal(kro.convert(film[i], film.format, shape=film.shape),
                                 native.picture(frames[i], pixel_format, 6, 10))


@pytest.mark.parametrize("name, size", [
    ("a_16x8_BayerRG8.raw", 128), ("a_16x8_rggb.raw", 256), ("a_16x8_rggb.bin", 128), ("x_16x8_SRGGB12P.raw", 192),
    ("cam_16x8_bayer_grbg8.bin", 128), ("scan_16x8_mono_12bit.raw", 256), ("still_16x8_gbrg_10bit_packed.raw", 192),
    ("y_16x8_Y16_BE.raw", 256), ("s_16x8_rggb12_packed.raw", 192), ("film_16x8_BayerBG10p.raw", 480),
])
def test_names_say_what_they_say_to_the_command(tmp_path, name, size):
    path = write(tmp_path, name, bytes(size))
    code, shape, pixel_format = by_command(path)
    if code != 0:
        with pytest.raises(ValueError, match="not clear from its name"):
            kro.read_frames(path)
        return
    film = kro.read_frames(path)
    assert (film.shape, film.format) == (shape, pixel_format)


@pytest.mark.parametrize("name, size, options, says", [
    ("a.raw", 128, {}, "size unknown, its name says none; give shape=(height, width)"),
    ("a_16x8.raw", 128, {}, "pixel format unknown, its name says none; give format=, such as BayerRG8"),
    ("a_16x8_BayerRG8.raw", 0, {}, "the file is empty"),
    ("a_16x8_BayerRG8.raw", 100, {}, "has 100 bytes, but one 16x8 BayerRG8 frame takes 128"),
    ("a_16x8_BayerRG8.raw", 132, {}, "skip=4"),
    ("a_16x8_BayerRG8.raw", 144, {}, "stride=18"),
    ("a_16x8_BayerRG8.raw", 128 + 100, {}, "wrong size or format"),
    ("a_16x8_BayerRG8.raw", 128, {"skip": 200}, "skip=200 leaves nothing"),
    ("a_16x8_BayerRG8.raw", 128, {"stride": 8}, "stride=8 is shorter than a row"),
    ("a_16x8_BayerRG8.raw", 128, {"big_endian": True}, "big_endian=True"),
    ("a_16x8_BayerRG8.raw", 128, {"skip": -1}, "skip: -1 came, expected 0 or more"),
    ("a_16x8_BayerRG8.raw", 128, {"skip": 1 << 63}, "skip: 9223372036854775808 came"),
    ("a_16x8_BayerRG8.raw", 128, {"skip": (1 << 62) - 1}, "leaves nothing"),
    ("a_16x8_BayerRG8.raw", 128, {"stride": (1 << 62) - 1}, "larger than memory can be"),
    ("a_16x8_BayerRG8.raw", 128, {"format": 7}, "format: 7 came"),
    ("a_16x8_BayerRG8.raw", 128, {"format": "BayerXY8"}, "unknown pixel format 'BayerXY8'"),
    ("a_16x8_BayerRG8.raw", 128, {"shape": (2, 64)}, "bad size '64x2'"),
    ("a_16x8_BayerRG8.png", 128, {}, "expected raw frames or an NPY file"),
    ("a_16x8_BayerRG8.npy", 128, {}, "a_16x8_BayerRG8.npy: cannot be read as an NPY file: the magic string"),
    ("a_16x8_BayerRG8.npy", 0, {}, "cannot be read as an NPY file: EOF"),
])
def test_what_is_wrong_is_said(tmp_path, name, size, options, says):
    path = write(tmp_path, name, bytes(size))
    with pytest.raises(ValueError) as raised:
        kro.read_frames(path, **options)
    assert says in str(raised.value)
    assert "--" not in str(raised.value)


def test_no_such_file(tmp_path):
    with pytest.raises(FileNotFoundError):
        kro.read_frames(tmp_path / "a_16x8_BayerRG8.raw")


@pytest.mark.parametrize("arguments", [{"skip": "1"}, {"stride": 1.5}, {"skip": None}, {"format": []}, {"format": b"rggb"}])
def test_arguments_of_other_types(tmp_path, arguments):
    with pytest.raises(TypeError, match=f"^{next(iter(arguments))}: "):
        kro.read_frames(write(tmp_path, "a_16x8_BayerRG8.raw", bytes(128)), **arguments)


def test_paths_of_other_types(tmp_path):
    path = write(tmp_path, "a_16x8_BayerRG8.raw", bytes(128))
    for same in (str(path), os.fsencode(path)):
        assert kro.read_frames(same).shape == (8, 16)
    odd = os.fsencode(path).replace(b"a_", b"\xff_")
    os.rename(path, odd)
    assert kro.read_frames(os.fsdecode(odd)).shape == (8, 16)


@pytest.mark.parametrize("shape", [5, (1, 2, 3), ("a", "b"), (8.0, 16)])
def test_a_shape_that_is_none(tmp_path, shape):
    with pytest.raises(TypeError, match="^shape: "):
        kro.read_frames(write(tmp_path, "a_16x8_BayerRG8.raw", bytes(128)), shape=shape)


def test_arguments_come_before_the_name(tmp_path):
    data = native.random_frame("BayerGB10p", 8, 16)
    path = write(tmp_path, "a_99x99_BayerRG8.raw", b"head" + data + b"rest")
    film = kro.read_frames(path, "BayerGB10p", (8, 16), skip=4, ignore_rest=True)
    assert (len(film), film.format, film.shape) == (1, "BayerGB10p", (8, 16))
    assert film[0].tobytes() == data
    assert kro.read_frames(path, ALL_FORMATS["BayerGB10p"].code, (8, 16), skip=4, ignore_rest=True)[0].tobytes() == data


@pytest.mark.parametrize("pixel_format", ["BayerRG8", "BayerRG12", "BayerRG10p", "SRGGB14P"])
@pytest.mark.parametrize("last", ["whole", "without its padding"])
def test_rows_with_padding(tmp_path, pixel_format, last):
    rows = numpy.random.default_rng(4).integers(0, 256, (2 * 6, native.frame_bytes(pixel_format, 8) + 6), "u1")
    if pixel_format == "BayerRG12":
        rows[:, 1::2] &= 15
    stride = rows.shape[1]
    path = write(tmp_path, f"a_8x6_{pixel_format}.raw", rows.tobytes()[:None if last == "whole" else -6])
    film = kro.read_frames(path, stride=stride)
    assert len(film) == 2
    for i, frame in enumerate(film):
        assert numpy.array_equal(kro.convert(frame, film.format, shape=film.shape),
                                 native.picture(rows[6 * i:6 * i + 6].tobytes(), pixel_format, 6, 8, stride=stride))


def test_words_in_either_order_and_at_odd_places(tmp_path):
    data = native.random_frame("BayerGR12", 6, 8)
    swapped = numpy.frombuffer(data, "u2").byteswap().tobytes()
    expected = native.picture(data, "BayerGR12", 6, 8, "edge", "RGB16")
    for name, start, content, options in (("a_8x6_BayerGR12.raw", b"", data, {}),
                                          ("a_8x6_BayerGR12.raw", b"#", data, {"skip": 1}),
                                          ("a_8x6_BayerGR12.raw", b"", swapped, {"big_endian": True}),
                                          ("a_8x6_grbg12be.raw", b"###", swapped, {"skip": 3})):
        film = kro.read_frames(write(tmp_path, name, start + content), **options)
        assert numpy.array_equal(kro.convert(film[0], film.format, output="RGB16"), expected), (name, options)


def test_frames_lie_in_the_file(tmp_path):
    path = write(tmp_path, "a_8x6_BayerRG8.raw", bytes(48))
    film = kro.read_frames(path)
    frame = film[0]
    with open(path, "r+b") as file:
        file.write(b"\xff" * 48)
    assert (frame == 255).all()
    with pytest.raises(ValueError):
        frame[0, 0] = 1


def test_frames_are_a_sequence(tmp_path):
    film = kro.read_frames(write(tmp_path, "a_8x6_BayerRG8.raw", bytes(48) + b"\1" * 48 + b"\2" * 48))
    assert [int(frame[0, 0]) for frame in film] == [0, 1, 2]
    assert [int(frame[0, 0]) for frame in film[::-1]] == [2, 1, 0]
    assert "3 8x6 BayerRG8 frames" in repr(film)
    for place in (3, -4):
        with pytest.raises(IndexError, match=f"frame {place} of 3"):
            film[place]


@pytest.mark.parametrize("kind, name, pixel_format", [
    ("u1", "a_rggb.npy", "BayerRG8"), ("<u2", "a_bggr_10bit.npy", "BayerBG10"), (">u2", "a_mono.npy", "Mono16"),
])
def test_npy_files(tmp_path, kind, name, pixel_format):
    stack = numpy.random.default_rng(5).integers(0, 200, (3, 6, 8)).astype(kind)
    numpy.save(tmp_path / name, stack)
    film = kro.read_frames(tmp_path / name)
    assert (len(film), film.format, film.shape) == (3, pixel_format, (6, 8))
    assert numpy.array_equal(film[2], stack[2])
    assert by_command(tmp_path / name)[1:] == ((6, 8), pixel_format)
    plain = native.picture(stack[1].astype(kind.replace(">", "<")).tobytes(), pixel_format, 6, 8)
    assert numpy.array_equal(kro.convert(film[1], film.format), plain)
    with pytest.raises(ValueError, match="shape: "):
        kro.read_frames(tmp_path / name, shape=(8, 6))
    with pytest.raises(ValueError, match="header of its own"):
        kro.read_frames(tmp_path / name, skip=1)
