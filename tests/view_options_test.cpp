// Options of views: what each may be, and records of every size.
#include <climits>
#include <cstring>

#include "view_call.hpp"

namespace {

using reference::InputFormat;
using reference::Layout;

// ---- values ----

TEST(ViewOptions, AlgorithmsAndFlags) {
    for (const char* input : {"BayerRG8", "Mono8", "Mono12p"}) {  // grey knows no algorithm, but checks it
        for (const int32_t algorithm : {4, -1, INT_MAX, INT_MIN}) {
            ViewCall call(input);
            call.options.algorithm = algorithm;
            call.expect(KRO_ERR_OPTION, "algorithm");
        }
    }
    for (const uint32_t flag : {16u, 32u, 0x80000000u, 0xFFFFFFFFu}) {
        ViewCall call;
        call.options.flags = flag;
        call.expect(KRO_ERR_OPTION, "flag");
    }
}

TEST(ViewOptions, AlphaRange) {
    const struct {
        const char* output;
        int32_t alpha, status;
    } cases[] = {{"RGBa8", 255, KRO_OK},
                 {"RGBa8", 256, KRO_ERR_OPTION},
                 {"BGRx8", 256, KRO_ERR_OPTION},
                 {"aRGB8", -1, KRO_ERR_OPTION},
                 {"RGB8Planar", 0, KRO_OK},
                 {"RGB8Planar", 256, KRO_ERR_OPTION},
                 {"RGBa16", 256, KRO_OK},
                 {"RGBa16", 65535, KRO_OK},
                 {"aBGR16", 65536, KRO_ERR_OPTION},
                 {"RGB16Planar", INT_MIN, KRO_ERR_OPTION}};
    for (const auto& c : cases) {
        ViewCall call("BayerRG12", c.output, true);
        call.options.flags = KRO_VIEW_ALPHA;
        call.options.alpha = c.alpha;
        call.expect(c.status, c.output);
    }
}

TEST(ViewOptions, BitsAndWordFlagsFitTheFormat) {
    for (const InputFormat& format : reference::viewInputFormats()) {
        const bool words = format.layout == Layout::words;
        for (const int32_t bits : {INT_MIN, -1, 0, 1, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, INT_MAX}) {
            ViewCall call(format.name);
            call.options.bits = bits;
            const bool fits = bits == 0 || (words ? bits >= 8 && bits <= 16 : bits == format.bits);
            call.expect(fits ? KRO_OK : KRO_ERR_OPTION, (format.name + std::to_string(bits)).c_str());
        }
        for (const uint32_t flags :
             {KRO_VIEW_BIG_ENDIAN, KRO_VIEW_LEFT_ALIGNED, KRO_VIEW_BIG_ENDIAN | KRO_VIEW_LEFT_ALIGNED}) {
            ViewCall call(format.name);
            call.options.flags = flags;
            call.expect(words ? KRO_OK : KRO_ERR_OPTION, format.name);
        }
        ViewCall call(format.name, "BGR8");
        call.options.flags = KRO_VIEW_ALPHA | KRO_VIEW_FULL_RANGE;  // without effect, but no error
        call.expect(KRO_OK, format.name);
    }
}

TEST(ViewOptions, BandsOutsideThePicture) {
    const struct {
        int32_t first, rows, status;
    } cases[] = {{0, 6, KRO_OK},
                 {5, 1, KRO_OK},
                 {5, 0, KRO_OK},
                 {6, 0, KRO_ERR_OPTION},
                 {6, 1, KRO_ERR_OPTION},
                 {0, 7, KRO_ERR_OPTION},
                 {5, 2, KRO_ERR_OPTION},
                 {-1, 0, KRO_ERR_OPTION},
                 {-1, 3, KRO_ERR_OPTION},
                 {0, -1, KRO_ERR_OPTION},
                 {3, -2, KRO_ERR_OPTION},
                 {1, INT_MAX, KRO_ERR_OPTION},
                 {INT_MAX, 1, KRO_ERR_OPTION},
                 {INT_MIN, INT_MIN, KRO_ERR_OPTION},
                 {INT_MIN, 0, KRO_ERR_OPTION}};
    for (const auto& c : cases) {
        ViewCall call;
        call.options.firstRow = c.first;
        call.options.rowCount = c.rows;
        call.expect(c.status, (std::to_string(c.first) + " + " + std::to_string(c.rows)).c_str());
    }
}

// ---- option records ----

// A record of so many bytes where readable memory ends; what lies between them and the end, of up to three bytes, is
// not of the record.
struct Record {
    guard::Buffer buffer{4096};
    const KroViewOptions* options;

    explicit Record(std::vector<uint8_t> bytes) {
        bytes.resize((bytes.size() + 3) / 4 * 4, 0xFF);
        options = reinterpret_cast<const KroViewOptions*>(buffer.hold(bytes, guard::Placement::againstEnd));
    }
};

// The options as a record of another size: cut off, or with zeros after them.
std::vector<uint8_t> recordBytes(KroViewOptions options, size_t size) {
    options.size = static_cast<uint32_t>(size);
    std::vector<uint8_t> bytes(std::max(size, sizeof options));
    std::memcpy(bytes.data(), &options, sizeof options);
    bytes.resize(std::max(size, sizeof options.size));
    return bytes;
}

int32_t runWith(const ViewCall& call, const std::vector<uint8_t>& record) {
    const Record placed(record);
    return kro::convertView(kro::bestKernels(), &call.source, &call.picture, placed.options);
}

Planes expectedOf(const ViewCall& call, const KroViewOptions& options) {
    reference::Scene scene(inputNamed("BayerRG12"), call.frame.rows(), wordsOf(inputNamed("BayerRG12"), options));
    return planesOf(scene, outputNamed("RGBa16"), options);
}

TEST(ViewOptions, RecordsBelowFourBytesAreRefused) {
    for (const size_t size : {0u, 1u, 2u, 3u}) {
        const ViewCall call;
        EXPECT_EQ(KRO_ERR_OPTION, runWith(call, recordBytes(noOptions, size))) << size;
        EXPECT_TRUE(call.pixels.untouched()) << size;
    }
}

// Every field that a shorter record lacks counts as 0, whatever lies in memory there.
TEST(ViewOptions, ShorterRecordsEndInZeros) {
    KroViewOptions given = withAlgorithm(reference::Method::bilinear);
    given.flags = KRO_VIEW_ALPHA | KRO_VIEW_FULL_RANGE;
    given.alpha = 0x1234;
    given.bits = 13;
    given.firstRow = 2;
    given.rowCount = 3;
    for (size_t size = 4; size <= sizeof given; ++size) {
        ViewCall call;
        const std::vector<uint8_t> bytes = recordBytes(given, size);
        KroViewOptions counts{};
        std::memcpy(&counts, bytes.data(), size);
        EXPECT_EQ(KRO_OK, runWith(call, bytes));
        EXPECT_TRUE(call.pixels.holds(expectedOf(call, counts), bandOf(counts, call.size.height))) << size;
    }
}

TEST(ViewOptions, ARecordOfNothingButItsSizeMeansNearest) {
    ViewCall call;
    EXPECT_EQ(KRO_OK, runWith(call, recordBytes({}, 4)));
    EXPECT_TRUE(call.pixels.holds(expectedOf(call, withAlgorithm(reference::Method::nearest)), {0, 6}));
}

TEST(ViewOptions, NoRecordMeansEdge) {
    ViewCall call;
    EXPECT_EQ(KRO_OK, kro::convertView(kro::bestKernels(), &call.source, &call.picture, nullptr));
    EXPECT_TRUE(call.pixels.holds(expectedOf(call, withAlgorithm(reference::Method::edge)), {0, 6}));
}

TEST(ViewOptions, LongerRecordsMustEndInZeros) {
    const size_t known = sizeof(KroViewOptions);
    for (const size_t more : {size_t{1}, size_t{4}, size_t{9}, size_t{100}}) {
        ViewCall good;
        EXPECT_EQ(KRO_OK, runWith(good, recordBytes(noOptions, known + more)));
        EXPECT_TRUE(good.pixels.holds(expectedOf(good, noOptions), {0, 6}));
        for (const size_t at : {known, known + more / 2, known + more - 1}) {
            ViewCall bad;
            std::vector<uint8_t> bytes = recordBytes(noOptions, known + more);
            bytes[at] = 1;
            EXPECT_EQ(KRO_ERR_OPTION, runWith(bad, bytes)) << more << " " << at;
            EXPECT_TRUE(bad.pixels.untouched());
        }
    }
}

}  // namespace
