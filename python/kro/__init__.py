"""Raw camera frames (Bayer mosaic or grey) to displayable pictures, for NumPy.

>>> import kro, numpy
>>> frame = numpy.zeros((480, 640), "uint8")
>>> kro.convert(frame, "BayerRG8").shape
(480, 640, 3)
"""

from typing import NamedTuple, Tuple, Union

from kro._frames import Frames, read_frames
from kro._kro import CopyWarning, convert, version as __version__
from kro import _kro

__all__ = ["CopyWarning", "Format", "Frames", "convert", "formats", "read_frames", "to_opencv_code", "__version__"]


class Format(NamedTuple):
    """What is known of a pixel format.

    >>> import kro
    >>> [f.code for f in kro.formats() if f.name == "BayerRG12p"] == [0x010C0059]
    True
    """

    name: str
    code: int
    #: Significant bits of a sample.
    bits: int
    #: Colours of the first four sites, row by row; of pictures the letters of a pixel; "Y" of grey ones.
    order: str
    #: "byte", "word", "packed" (GigE Vision), "lsb" (PFNC's p) or "csi2"; of pictures "interleaved" or "planar".
    packing: str
    #: A format that frames can have.
    frame: bool
    #: A format that pictures can have.
    picture: bool
    #: Samples of a pixel.
    channels: int
    #: What V4L2, libcamera, GStreamer and FFmpeg call it; convert takes these names too.
    names: Tuple[str, ...]


def formats() -> "list[Format]":
    """Every pixel format: those of frames, then those of pictures that are not among them.

    >>> import kro
    >>> "BayerRG12p" in [f.name for f in kro.formats() if f.frame]
    True
    >>> [f.name for f in kro.formats() if f.picture and f.packing == "planar" and f.bits == 8]
    ['RGB8_Planar', 'BGR8_Planar']
    """
    return [Format(*entry) for entry in _kro.formats()]


# OpenCV names a mosaic by the second and third site of its second row, so its BayerBG begins with red; and what it
# gives as RGB of one mosaic it gives as BGR of the one with red and blue exchanged.
_OPENCV_PLAIN = {"BGR": 46, "RGB": 46, "BGRa": 139, "RGBa": 139, "Y": 86}
_OPENCV_EDGE = {"BGR": 135, "RGB": 135}
_OPENCV_FINE = {"BGR": 62, "RGB": 62}
_OPENCV_GREY = {"BGR": 8, "RGB": 8, "BGRa": 9, "RGBa": 9}
# Of RGGB, GRBG, BGGR and GBRG in OpenCV's order BG, GB, RG, GR.
_OPENCV_PLACE = {"RGGB": 0, "GRBG": 1, "BGGR": 2, "GBRG": 3}


def to_opencv_code(format: Union[str, int], output: Union[str, int] = "RGB8", algorithm: str = "edge") -> int:
    """The code with which cv2.cvtColor makes the same kind of picture: cv2.COLOR_BayerBG2RGB_EA and the like.

    OpenCV takes frames of bytes and of words, and has no nearest neighbour; with 'edge' it gives RGB and BGR alone.
    With 'fine' the code is that of its own slow method, VNG, which takes bytes alone.

    >>> import kro
    >>> kro.to_opencv_code("BayerRG8", "BGR8", "bilinear")  # cv2.COLOR_BayerBG2BGR
    46
    """
    named = {entry.name: entry for entry in formats()}
    frame = named[_kro.input_name(format)]
    picture = named[_kro.output_name(output)]
    if algorithm not in ("nearest", "bilinear", "edge", "fine"):
        raise ValueError(f"algorithm: {algorithm!r} came, expected 'nearest', 'bilinear', 'edge' or 'fine'")
    if frame.packing not in ("byte", "word"):
        raise ValueError(f"format: {frame.name} came, expected samples in bytes or words, as OpenCV takes no others")
    if frame.order == "Y":
        codes, place = _OPENCV_GREY, 0
    else:
        known = {"bilinear": _OPENCV_PLAIN, "edge": _OPENCV_EDGE, "fine": _OPENCV_FINE if frame.bits == 8 else {}}
        codes = known.get(algorithm, {})
        exchanged = 2 if picture.order.startswith("RGB") else 0
        place = (_OPENCV_PLACE[frame.order] + exchanged) % 4
    if picture.order not in codes or picture.packing == "planar":
        raise ValueError(f"output: {picture.name} came with {frame.name} and {algorithm!r}, for which OpenCV has no "
                         f"code")
    return codes[picture.order] + place
