"""White balance and curve, which are off unless asked for."""

from pictures import read_pnm, words, write_ppm
from support import Case

COLOUR = (40, 160, 80)


class Tone(Case):
    def setUp(self):
        super().setUp()
        self.write("flat.ppm", write_ppm(8, 6, list(COLOUR) * 48))
        self.kro("mosaic", "flat.ppm", "-f", "grbg8", "-o", "f_8x6_BayerGR8.raw")

    def pixel(self, *more, name="x.ppm"):
        self.kro("convert", "f_8x6_BayerGR8.raw", "-o", name, *more)
        return tuple(read_pnm(self.read(name))[3][:3])

    def test_off(self):
        self.assertEqual(self.pixel(), COLOUR)
        self.assertEqual(self.pixel("--wb", "none", "--gamma", "none"), COLOUR)
        self.assertEqual(self.pixel("--wb", "1,1,1", "--gamma", "1"), COLOUR)

    def test_grey_in_both_spellings(self):
        self.assertEqual(self.pixel("--wb", "grey"), self.pixel("--wb", "gray"))

    def test_balance(self):
        self.assertEqual(self.pixel("--wb", "gray"), (160, 160, 160))
        self.assertEqual(self.pixel("--wb", "2,0.5,10"), (80, 80, 255))
        for output in ("BGR8", "RGB8Planar", "BGR8Planar"):
            self.assertEqual(self.pixel("--wb", "2,0.5,1", "-O", output), (80, 80, 80))

    def test_curves(self):
        def power(value):
            return round(255 * (value / 255) ** (1 / 2.2))

        def srgb(value):
            v = value / 255
            return round(255 * (12.92 * v if v <= 0.0031308 else 1.055 * v ** (1 / 2.4) - 0.055))

        self.assertEqual(self.pixel("--gamma", "2.2"), tuple(map(power, COLOUR)))
        self.assertEqual(self.pixel("--gamma", "srgb"), tuple(map(srgb, COLOUR)))
        self.assertEqual(self.pixel("--gamma", "2.2", "--wb", "gray"), (power(160),) * 3)
        luma = (77 * 40 + 150 * 160 + 29 * 80 + 128) >> 8
        self.assertEqual(self.pixel("--gamma", "2.2", "-O", "Mono8"), (power(luma),) * 3)

    def test_alpha_is_left_alone(self):
        self.kro("convert", "f_8x6_BayerGR8.raw", "-O", "RGBa8", "--wb", "9,9,9", "--gamma", "3", "-o", "x.raw")
        self.assertEqual(set(self.read("x.raw")[3::4]), {0})

    def test_sixteen_bits(self):
        self.kro("mosaic", "flat.ppm", "-f", "grbg12", "-o", "f_8x6_BayerGR12.raw")
        plain = [round(v * 4095 / 255) for v in COLOUR]

        def pixel(*more):
            raw = self.kro("convert", "f_8x6_BayerGR12.raw", "--depth", "16", "-o", "-", "--to", "raw", *more)
            return words(raw, "<")[2::-1]

        self.assertEqual(pixel(), plain)
        self.assertEqual(pixel("--wb", "gray"), [plain[1]] * 3)
        self.assertEqual(pixel("--gamma", "2.2"), [round(4095 * (v / 4095) ** (1 / 2.2)) for v in plain])
        self.assertEqual(pixel("--gamma", "2.2", "--scale"), [round(65535 * (v / 4095) ** (1 / 2.2)) for v in plain])
