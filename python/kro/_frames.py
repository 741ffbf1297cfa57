"""Files of raw frames, mapped into memory."""

import mmap
import operator
import os
from collections.abc import Sequence
from typing import Any, Optional, Tuple, Union

import numpy

from kro import _kro

# Picture files that can hold a mosaic, which have to be decoded.
_DECODED = (".pgm", ".pnm", ".png", ".tif", ".tiff")


class Frames(Sequence):
    """The frames of a file, as arrays that lie in it: nothing is read before it is used, and nothing is copied.

    What read_frames returns; `format` and `shape` are what convert wants to know of each frame.

    >>> import kro, tempfile, os
    >>> path = os.path.join(tempfile.mkdtemp(), "film_8x4_BayerRG10p.raw")
    >>> with open(path, "wb") as file: _ = file.write(bytes(3 * 40))
    >>> frames = kro.read_frames(path)
    >>> len(frames), frames.format, frames.shape
    (3, 'BayerRG10p', (4, 8))
    >>> kro.convert(frames[2], frames.format, shape=frames.shape).shape
    (4, 8, 3)
    """

    def __init__(self, path: str, format: str, shape: Tuple[int, int], count: int, frame: Any) -> None:
        self.path = path
        #: The name of the frames' pixel format.
        self.format = format
        #: Height and width.
        self.shape = shape
        self._count = count
        self._frame = frame

    def __len__(self) -> int:
        return self._count

    def __getitem__(self, index: Any) -> Any:
        if isinstance(index, slice):
            return [self._frame(i) for i in range(*index.indices(self._count))]
        place = operator.index(index)
        if not -self._count <= place < self._count:
            raise IndexError(f"{self.path}: frame {place} of {self._count}")
        return self._frame(place % self._count)

    def __repr__(self) -> str:
        height, width = self.shape
        return f"<{self._count} {width}x{height} {self.format} frames of {self.path!r}>"


def read_frames(path: Union[str, "os.PathLike[str]"], format: Optional[Union[str, int]] = None,
                shape: Optional[Tuple[int, int]] = None, *, skip: int = 0, stride: int = 0, big_endian: bool = False,
                ignore_rest: bool = False) -> Frames:
    """The frames of a raw file, or of the array in an NPY file, mapped into memory.

    What is not given is taken from the file's name, as the command does: 'film_1280x960_BayerRG12p.raw'. Frames are
    arrays that cannot be written to: (height, width) of bytes or words; of packed formats bytes, row by row where
    `stride` gives the distance of rows. Only where words begin at an odd place, or where the file ends within the
    padding of its last frame, is a frame copied. The file must not become shorter while frames of it are in use.
    PGM, PNG and TIFF files have to be decoded, by imageio for one, whose arrays convert takes.

    skip         bytes before the first frame
    stride       bytes from row to row; 0: rows follow each other without gaps
    big_endian   words have their high byte first
    ignore_rest  bytes that are left over behind whole frames are no error

    >>> import kro, tempfile, os
    >>> path = os.path.join(tempfile.mkdtemp(), "still_16x8_BayerGB12.raw")
    >>> with open(path, "wb") as file: _ = file.write(bytes(256))
    >>> kro.read_frames(path)[0].shape
    (8, 16)
    """
    name = os.fsdecode(path)
    kind = os.path.splitext(name)[1].lower()
    if kind in _DECODED:
        raise ValueError(f"{name}: a {kind[1:]} file came, expected raw frames or an NPY file, which can be mapped "
                         f"(`kro convert` reads it; so do imageio and others, and kro.convert takes their arrays)")
    skip, stride = _whole("skip", skip), _whole("stride", stride)
    wanted = "" if format is None else format if isinstance(format, str) else _kro.input_name(format)
    if kind == ".npy":
        return _array_frames(name, wanted, shape, bool(skip or stride or big_endian))
    return _raw_frames(name, wanted, shape, skip, stride, big_endian, ignore_rest)


def _shown(name: str) -> str:
    """A file's name for messages and for what it says of its frames, whatever its bytes."""
    return name.encode("utf-8", "replace").decode()


def _whole(argument: str, value: Any) -> int:
    try:
        number = operator.index(value)
    except TypeError:
        raise TypeError(f"{argument}: {value!r} came, expected a whole number") from None
    if not 0 <= number < 1 << 62:
        raise ValueError(f"{argument}: {value!r} came, expected 0 or more, below 2^62")
    return number


def _sides(shape: Any) -> Tuple[int, int]:
    try:
        height, width = map(operator.index, shape)
    except (TypeError, ValueError):
        raise TypeError(f"shape: {shape!r} came, expected (height, width)") from None
    return height, width


def _raw_frames(name: str, wanted: str, shape: Optional[Tuple[int, int]], skip: int, stride: int, big_endian: bool,
                ignore_rest: bool) -> Frames:
    size = "" if shape is None else "{1}x{0}".format(*_sides(shape))
    with open(name, "rb", buffering=0) as file:
        length = os.fstat(file.fileno()).st_size
        format, height, width, frame_bytes, count, swapped = _kro.layout(
            _shown(name), length, wanted, size, skip, stride, big_endian, ignore_rest)
        mapped = mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ)
    layout = _array_layout(format, height, width, stride, swapped)
    odd = layout["dtype"] != "u1" and skip % 2 != 0

    def frame(place: int) -> Any:
        start = skip + place * frame_bytes
        if not odd and start + frame_bytes <= length:
            return numpy.ndarray(buffer=mapped, offset=start, **layout)
        whole = mapped[start:start + frame_bytes].ljust(frame_bytes, b"\0")
        return numpy.ndarray(buffer=whole, **layout)

    return Frames(name, format, (height, width), count, frame)


def _array_layout(format: str, height: int, width: int, stride: int, swapped: bool) -> "dict[str, Any]":
    packing, row = _kro.row(format, width)
    if packing == "word":
        kind = ">u2" if swapped else "<u2"
        return {"shape": (height, width), "dtype": kind, "strides": (stride or row, 2)}
    if packing == "byte" or stride:
        return {"shape": (height, row), "dtype": "u1", "strides": (stride or row, 1)}
    return {"shape": (_kro.row(format, width * height)[1],), "dtype": "u1"}


def _array_frames(name: str, wanted: str, shape: Optional[Tuple[int, int]], more: bool) -> Frames:
    if more:
        raise ValueError(f"{name}: skip, stride and big_endian belong to raw frames, this file has a header of its "
                         f"own")
    try:
        # Not numpy.load, which takes what is no NPY file for pickled data.
        array = numpy.asarray(numpy.lib.format.open_memmap(name, mode="r"))
    except ValueError as failure:
        raise ValueError(f"{name}: cannot be read as an NPY file: {failure}") from None
    stack = array[None] if array.ndim == 2 else array
    if stack.ndim != 3 or stack.dtype.str[1:] not in ("u1", "u2"):
        raise ValueError(f"{name}: an array of {array.dtype} and shape {array.shape} came, expected uint8 or uint16 "
                         f"with rows and columns, or frames, rows and columns")
    sides = stack.shape[1:]
    if shape is not None and _sides(shape) != sides:
        raise ValueError(f"shape: {shape!r} came, but the frames of {name} are {sides!r}")
    format = _kro.contained_name(_shown(name), wanted, 255 if stack.dtype.itemsize == 1 else 65535)
    return Frames(name, format, sides, len(stack), lambda place: stack[place])
