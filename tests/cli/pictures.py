"""Readers and writers of picture files that owe nothing to the command: (width, height, channels, samples)."""

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
