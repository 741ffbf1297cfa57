"""Readers and writers of picture files that owe nothing to the command: (width, height, channels, samples)."""

import base64
import re
import struct
import zlib


def _unfilter(raw, height, row_bytes, step):
    rows, before, at = [], bytearray(row_bytes), 0
    for _ in range(height):
        kind, row = raw[at], bytearray(raw[at + 1:at + 1 + row_bytes])
        at += 1 + row_bytes
        for i in range(row_bytes):
            left = row[i - step] if i >= step else 0
            up = before[i]
            corner = before[i - step] if i >= step else 0
            if kind == 1:
                row[i] = (row[i] + left) & 255
            elif kind == 2:
                row[i] = (row[i] + up) & 255
            elif kind == 3:
                row[i] = (row[i] + (left + up) // 2) & 255
            elif kind == 4:
                guess = left + up - corner
                nearest = min((abs(guess - left), 0, left), (abs(guess - up), 1, up),
                              (abs(guess - corner), 2, corner))
                row[i] = (row[i] + nearest[2]) & 255
        rows.append(bytes(row))
        before = row
    assert at == len(raw)
    return b"".join(rows)


def read_png(data):
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    at, packed, ended = 8, b"", False
    while at < len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + size]
        assert zlib.crc32(kind + body) == struct.unpack(">I", data[at + 8 + size:at + 12 + size])[0]
        if kind == b"IHDR":
            width, height, bits, colour, _, _, interlace = struct.unpack(">IIBBBBB", body)
        packed += body if kind == b"IDAT" else b""
        ended = kind == b"IEND"
        at += 12 + size
    assert ended and interlace == 0
    channels = {0: 1, 2: 3, 6: 4}[colour]
    step = channels * bits // 8
    raw = _unfilter(zlib.decompress(packed), height, width * step, step)
    return width, height, channels, words(raw, ">") if bits == 16 else list(raw)


def write_png(width, height, channels, samples, bits=8):
    colour = {1: 0, 3: 2, 4: 6}[channels]
    rows = [samples[y * width * channels:(y + 1) * width * channels] for y in range(height)]
    raw = b"".join(b"\0" + (bytes(row) if bits == 8 else struct.pack(f">{len(row)}H", *row)) for row in rows)

    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

    header = struct.pack(">IIBBBBB", width, height, bits, colour, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(raw)) + chunk(b"IEND", b"")


def words(raw, order):
    return list(struct.unpack(f"{order}{len(raw) // 2}H", raw))


def read_pnm(data):
    kind, size, maximum, raw = data.split(b"\n", 3)
    width, height = map(int, size.split())
    channels = {b"P5": 1, b"P6": 3}[kind]
    samples = words(raw, ">") if int(maximum) > 255 else list(raw)
    assert len(samples) == width * height * channels
    return width, height, channels, samples


def write_ppm(width, height, samples, maximum=255):
    body = bytes(samples) if maximum < 256 else struct.pack(f">{len(samples)}H", *samples)
    return f"P6\n# made by a test\n{width} {height}\n{maximum}\n".encode() + body


def read_bmp(data):
    size, start, header, width, height, planes, bits = struct.unpack("<2xI4xIIiiHH", data[:30])
    assert data[:2] == b"BM" and size == len(data) and header == 40 and planes == 1 and height < 0
    channels, stride = bits // 8, (width * bits // 8 + 3) // 4 * 4
    assert len(data) == start - height * stride
    samples = []
    for y in range(-height):
        row = data[start + y * stride:start + (y + 1) * stride]
        assert not any(row[width * channels:])
        samples += row[:width * channels]
    return width, -height, channels, samples


def read_tiff(data):
    assert data[:4] == b"II*\0"
    at = struct.unpack("<I", data[4:8])[0]
    tags = {}
    for i in range(struct.unpack("<H", data[at:at + 2])[0]):
        tag, kind, count = struct.unpack("<HHI", data[at + 2 + 12 * i:at + 10 + 12 * i])
        field = data[at + 10 + 12 * i:at + 14 + 12 * i]
        size = {1: 1, 3: 2, 4: 4}.get(kind, 8) * count
        body = field[:size] if size <= 4 else data[struct.unpack("<I", field)[0]:][:size]
        layout = {1: f"<{count}B", 3: f"<{count}H", 4: f"<{count}I"}.get(kind, f"<{size}B")
        tags[tag] = list(struct.unpack(layout, body))
    assert tags.get(259, [1]) == [1] and tags.get(284, [1]) == [1]
    channels, bits = tags[277][0], tags[258][0]
    raw = b"".join(data[o:o + n] for o, n in zip(tags[273], tags[279]))
    samples = words(raw, "<") if bits == 16 else list(raw)
    assert len(samples) == tags[256][0] * tags[257][0] * channels
    return tags[256][0], tags[257][0], channels, samples


def write_pgm(width, height, samples, maximum=255):
    body = bytes(samples) if maximum < 256 else struct.pack(f">{len(samples)}H", *samples)
    return f"P5 {width} {height}\n{maximum}\n".encode() + body


def write_bmp(width, height, channels, samples, palette=None, upwards=True):
    """Samples in the file's own order: B, G, R(, nothing), or indices of a palette of B, G, R, nothing."""
    stride = (width * channels + 3) // 4 * 4
    rows = [bytes(samples[y * width * channels:(y + 1) * width * channels]).ljust(stride, b"\0") for y in range(height)]
    colours = bytes(palette or [])
    start = 54 + len(colours)
    body = b"".join(reversed(rows) if upwards else rows)
    return (b"BM" + struct.pack("<IIIIiiHHIIIIII", start + len(body), 0, start, 40, width,
                                height if upwards else -height, 1, 8 * channels, 0, len(body), 0, 0,
                                len(colours) // 4, 0) + colours + body)


def write_tiff(pages, order="<", rows_per_strip=None, compression=1, white_is_zero=False, **changes):
    """Pages of (width, height, channels, samples, bits), strips packed by zlib where compression is 8."""
    data = bytearray({"<": b"II*\0", ">": b"MM\0*"}[order] + b"\0" * 4)
    link = 4
    for width, height, channels, samples, bits in pages:
        rows = rows_per_strip or height
        row = width * channels
        strips = []
        for y in range(0, height, rows):
            part = samples[y * row:(y + rows) * row]
            strip = bytes(part) if bits == 8 else struct.pack(f"{order}{len(part)}H", *part)
            strip = zlib.compress(strip) if compression == 8 else strip
            strips.append((len(data), len(strip)))
            data += strip + b"\0" * (len(strip) % 2)
        photometric = 2 if channels > 2 else 0 if white_is_zero else 1
        tags = {256: (4, [width]), 257: (4, [height]), 258: (3, [bits] * channels), 259: (3, [compression]),
                262: (3, [photometric]), 273: (4, [at for at, _ in strips]), 277: (3, [channels]),
                278: (4, [rows]), 279: (4, [size for _, size in strips]),
                **({338: (3, [2])} if channels in (2, 4) else {})}
        tags = {tag: entry for tag, entry in {**tags, **changes.get("tags", {})}.items() if entry}
        fields = b""
        for tag, (kind, values) in sorted(tags.items()):
            body = struct.pack(order + str(len(values)) + {3: "H", 4: "I"}[kind], *values)
            if len(body) > 4:
                at = len(data)
                data += body + b"\0" * (len(body) % 2)
                body = struct.pack(order + "I", at)
            fields += struct.pack(order + "HHI", tag, kind, len(values)) + body.ljust(4, b"\0")
        data[link:link + 4] = struct.pack(order + "I", len(data))
        data += struct.pack(order + "H", len(tags)) + fields
        link = len(data)
        data += b"\0" * 4
    return bytes(data)


def write_npy(shape, samples, kind="|u1", fortran=False, version=1):
    text = f"{{'descr': '{kind}', 'fortran_order': {fortran}, 'shape': {tuple(shape)}, }}\n"
    layout = {"|u1": f"{len(samples)}B", "<u2": f"<{len(samples)}H", ">u2": f">{len(samples)}H"}.get(kind)
    body = struct.pack(layout, *samples) if layout else b"\0" * 8 * len(samples)
    length = struct.pack("<H" if version == 1 else "<I", len(text))
    return b"\x93NUMPY" + bytes([version, 0]) + length + text.encode() + body


def read_sixel(text):
    """The pictures in what a terminal gets, and what is between them."""
    pictures = []
    parts = re.split(rb"\x1bP[0-9;]*q(.*?)\x1b\\", text, flags=re.S)
    for body in parts[1::2]:
        width, height = map(int, re.match(rb'"\d+;\d+;(\d+);(\d+)', body).groups())
        pixels, palette, x, y, colour = [None] * (width * height), {}, 0, 0, 0
        for token in re.finditer(rb"#(\d+)(?:;2;(\d+);(\d+);(\d+))?|!(\d+)([?-~])|([?-~])|(\$)|(-)",
                                 body[body.index(b"#"):]):
            if token[1]:
                colour = int(token[1])
                if token[2]:
                    palette[colour] = [round(int(v) * 255 / 100) for v in token.group(2, 3, 4)]
            elif token[8]:
                x = 0
            elif token[9]:
                x, y = 0, y + 6
            else:
                for _ in range(int(token[5] or 1)):
                    for bit in range(6):
                        if (ord(token[6] or token[7]) - 63) >> bit & 1 and y + bit < height:
                            pixels[(y + bit) * width + x] = palette[colour]
                    x += 1
        pictures.append((width, height, 3, [v for pixel in pixels for v in pixel]))
    return pictures, b"".join(parts[0::2])


def read_kitty(text):
    pictures, data = [], b""
    for keys, part in re.findall(rb"\x1b_G([^;]*);([^\x1b]*)\x1b\\", text):
        data += part
        if b"m=0" in keys:
            pictures.append(read_png(base64.b64decode(data, validate=True)))
            data = b""
    return pictures, re.sub(rb"\x1b_G.*?\x1b\\", b"", text, flags=re.S)


def read_blocks(text):
    """One picture of all lines of half blocks in true colour, and the other lines."""
    rows, others = [], []
    for line in text.split(b"\n"):
        cells = re.findall(rb"\x1b\[38;2;(\d+);(\d+);(\d+);(?:48;2;(\d+);(\d+);(\d+)|49)m\xe2\x96\x80", line)
        if not cells:
            others.append(line)
            continue
        assert line.endswith(b"\x1b[0m")
        rows.append([int(v) for cell in cells for v in cell[:3]])
        if cells[0][3]:
            rows.append([int(v) for cell in cells for v in cell[3:]])
    return (len(rows[0]) // 3, len(rows), 3, sum(rows, [])), b"\n".join(others)
