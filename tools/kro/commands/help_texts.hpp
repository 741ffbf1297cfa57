#pragma once

// What the help of each command says below its options.
namespace cli {

constexpr const char* mainExamples = R"(Examples:
  kro convert frame_1280x960_BayerRG8.raw -o frame.png
  kro convert capture.bin -f BayerRG12p -s 1280x960 -a bilinear -o capture.tif
  kro show frame_1280x960_BayerRG8.raw
  kro mosaic photo.png -f BayerGB10p -o frames/
  kro info frame_1280x960_BayerRG8.raw
  kro guess capture.bin
  kro help COMMAND says more of each.)";

constexpr const char* convertExamples = R"(Examples:
  kro convert outdoor_2592x1536_BayerGR8.raw -o outdoor.png
  kro convert capture.bin -f BayerRG12Packed -s 1280x960 -a bilinear -o capture.png
  kro convert v4l2.raw -f pRAA -s 1640x1232 --stride 2080 -o v4l2.png
  kro convert thermal.raw -f Y16 --big-endian -s 640x512 --bits 14 --black 7000 -o thermal.png
  kro convert capture.bin -f rggb10le -s 1280x960 --skip 512 --wb gray --gamma srgb -o look.png
  kro convert frames/*.raw -f BayerRG8 -s 1280x960 -o pictures/ --to ppm
  kro convert film_640x480_BayerRG8.raw --frames 10-20 -o 'film-{frame}.png'
  camera | kro convert - -f rggb8 -s 640x480 -O RGB8 -o - --to raw | player
  kro convert still_768x512_BayerRG12.raw --depth 16 --scale -o still.tif
  kro convert mosaic.tif stack.npy -f rggb -o pictures/

Where pictures go:
  -o FILE.EXT    one file; frames of one input are numbered: FILE-0001.EXT
  -o FOLDER/     a picture for each input, named after it
  -o PATTERN     with {name} for the input's name, {frame} for the frame's number, or %04d for the picture's: 0001,
                 0002 and so on over all inputs
  -o -           standard output, of the type given by --to
A file appears whole or not at all. An input is never overwritten.

What may be in FRAME: raw frames, whose size and format are in the name or in -s and -f; or PGM, PNG, TIFF (any number
of pages) and NPY files (rows and columns, or frames, rows and columns) with one channel, which say size and depth
themselves and need but the phase, in the name or as -f rggb.

How the frame lies in memory: kro formats lists the names of -f, PFNC's and those of V4L2, libcamera, GStreamer and
FFmpeg. A name that ends in 10P, 12P or 14P is read as it is spelt, since several packings take equally many bytes:
BayerRG12p and rggb12p as PFNC's, SRGGB12P and pRCC as CSI-2's, BayerRG12Packed as GigE Vision's; what is spelt like
none of them is asked for. --stride is for rows with a gap between them.

The bytes are the library's unless --wb, --gamma, --bits, --black, --scale, --shift or --opaque is given, but for two
things: alpha, 0 in raw files, is opaque in those that can be looked at, and JPEG files (--quality) hold nearly the
same pixels. Sensor data has no white balance and no gamma: straight it looks green and dark.

8-bit pictures show the high bits of the format. Where samples have fewer, as 14 in a format of 16, --bits N shows
those: what exceeds them is white. --depth 16 keeps all bits, for every format and algorithm, as numbers up to 2^bits
- 1; --scale stretches these to 65535. --black N is subtracted from the frame's samples before all else.

-j threads work on many frames or, where there are fewer, on parts of each; frames below 0.5 Mpixel are not divided.)";

constexpr const char* showExamples = R"(Examples:
  kro show outdoor_2592x1536_BayerGR8.raw
  kro show capture.bin -f SRGGB12P -s 2028x1520 --stride 3072 --viewer
  kro show frames/*.raw -f rggb8 -s 1280x960
  kro show film_640x480_BayerRG8.raw --frames 100-200 --most 12
  camera | kro show - -f rggb8 -s 640x480
  kro show mosaic.tif -f rggb --in blocks --columns 100 | less -R

One frame fills the terminal, several stand on a contact sheet with their names below. Frames are balanced, curved and
exposed so that they can be judged; --plain leaves that, and kro convert has the bytes. Of a pipe the first frame is
shown unless --frames says otherwise. The terminal is asked for kitty's graphics and for sixel; where it has neither,
each character shows two pixels in colour.)";

constexpr const char* mosaicExamples = R"(Examples:
  kro mosaic photo.png -f BayerRG12Packed -o photo_640x480_BayerRG12Packed.raw
  kro mosaic photo.jpg -f SGRBG10P -o frames/
  kro mosaic photo.jpg -f BayerGR10 --big-endian --stride 4096 -o padded.raw
  kro mosaic photo.tif -f gbrg12 -o photo_BayerGB12.pgm
  kro mosaic photo.png -f rggb8 -o - | kro convert - -f rggb8 -s 640x480 -o back.png

With a folder the frame is named NAME_WIDTHxHEIGHT_FORMAT.raw, so that kro convert needs no more options. In a PGM,
PNG or TIFF file the frame is the one channel of a picture, from which kro convert reads it as well.)";

constexpr const char* infoExamples = R"(Examples:
  kro info outdoor_2592x1536_BayerGR8.raw
  kro info capture.bin -f rggb10le -s 1280x960 --frames 1-3
  kro info v4l2.raw -f SRGGB10P -s 1640x1232 --stride 2080

The units of --black are those of min, max and mean here.)";

constexpr const char* guessExamples = R"(Examples:
  kro guess capture.bin
  kro guess capture.bin --sheet answers.png
  camera-dump | kro guess -

Tries every layout of samples that kro reads (bytes; words of 10 to 16 bits in either order of bytes, in their low or
high bits; 10Packed, 12Packed; 10p, 12p, 14p; CSI-2's RAW10, 12 and 14) with every length of rows, and ranks what
results by how well samples are told by their neighbours. Headers before the first row, padding after each row and
several frames in one file are found too. Each of up to six answers comes with how sure it is (sure, likely, a guess),
why, and the line that converts the file so. A usual size goes before another that is told a little better.

What no statistic tells: red and blue may be exchanged, so mosaics have two names; the mosaic of a grey scene with
equal gains is a grey frame; words tell how many of their bits are used, not how many the sensor has. Rows that begin within a group of packed samples, rows of fewer than 32 or more
than 10000 samples, and more than the first 256 MiB of a file are not looked at.)";

constexpr const char* helpExamples = R"(Examples:
  kro help
  kro help convert)";

constexpr const char* selftestExamples = R"(Example:
  kro selftest

Makes more than eight thousand small pictures of generated frames, of every layout of samples, phase, algorithm and
kind of output, with gaps between rows and in bands, and compares a digest of each kind with the one that every machine
must give. Says which instruction sets the processor has. Exit code 0: all right; 1: the digests that differ are named.)";

constexpr const char* benchExamples = R"(Examples:
  kro bench --help
All arguments go to kro-bench, which must stand beside kro or in PATH.)";

}  // namespace cli
