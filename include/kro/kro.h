/* kro: raw camera frames to displayable images. */
#ifndef KRO_KRO_H
#define KRO_KRO_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define KRO_API __attribute__((visibility("default")))
#else
#define KRO_API
#endif

#define KRO_VERSION_MAJOR 0
#define KRO_VERSION_MINOR 1
#define KRO_VERSION_PATCH 0

/* ---- status codes ---- */
#define KRO_OK 0
#define KRO_ERR_FORMAT (-102)
#define KRO_ERR_SIZE (-104)
#define KRO_ERR_OUTPUT_FORMAT (-107)
#define KRO_ERR_NULL (-111)
#define KRO_ERR_NO_MEMORY (-117)

/* ---- algorithms ---- */
typedef int32_t KroAlgorithm;
#define KRO_NEAREST 0
#define KRO_BILINEAR 1
#define KRO_EDGE 2

/* ---- pixel formats (PFNC codes) ---- */
#define KRO_MONO8 0x01080001u
#define KRO_MONO10 0x01100003u
#define KRO_MONO10_PACKED 0x010C0004u
#define KRO_MONO12 0x01100005u
#define KRO_MONO12_PACKED 0x010C0006u
#define KRO_MONO14 0x01100025u
#define KRO_MONO16 0x01100007u
#define KRO_BAYER_GR8 0x01080008u
#define KRO_BAYER_RG8 0x01080009u
#define KRO_BAYER_GB8 0x0108000Au
#define KRO_BAYER_BG8 0x0108000Bu
#define KRO_BAYER_GR10 0x0110000Cu
#define KRO_BAYER_RG10 0x0110000Du
#define KRO_BAYER_GB10 0x0110000Eu
#define KRO_BAYER_BG10 0x0110000Fu
#define KRO_BAYER_GR12 0x01100010u
#define KRO_BAYER_RG12 0x01100011u
#define KRO_BAYER_GB12 0x01100012u
#define KRO_BAYER_BG12 0x01100013u
#define KRO_BAYER_GR16 0x0110002Eu
#define KRO_BAYER_RG16 0x0110002Fu
#define KRO_BAYER_GB16 0x01100030u
#define KRO_BAYER_BG16 0x01100031u
#define KRO_BAYER_GR10_PACKED 0x010C0026u
#define KRO_BAYER_RG10_PACKED 0x010C0027u
#define KRO_BAYER_GB10_PACKED 0x010C0028u
#define KRO_BAYER_BG10_PACKED 0x010C0029u
#define KRO_BAYER_GR12_PACKED 0x010C002Au
#define KRO_BAYER_RG12_PACKED 0x010C002Bu
#define KRO_BAYER_GB12_PACKED 0x010C002Cu
#define KRO_BAYER_BG12_PACKED 0x010C002Du
#define KRO_RGB8 0x02180014u
#define KRO_BGR8 0x02180015u
#define KRO_RGBA8 0x02200016u
#define KRO_BGRA8 0x02200017u
#define KRO_RGB8_PLANAR 0x02180021u
#define KRO_BGR8_PLANAR 0x02180025u

/* ---- records ---- */
typedef struct KroImage {
    int32_t height;
    int32_t width;
    uint32_t pixelFormat;
    void* data;
} KroImage;

typedef struct KroScratch {
    void* data;
    int32_t capacity;
} KroScratch;

typedef struct KroContext {
    uint32_t outputFormat;
    int32_t reservedA;
    int32_t reservedB;
    int32_t reservedTriple[2][3];
    int32_t reservedC;
    int32_t reservedD;
    KroScratch scratch;
} KroContext;

typedef struct KroCoverage {
    int32_t first;
    int32_t second;
} KroCoverage;

/* ---- handle and configuration ---- */
KRO_API int32_t kroCreate(KroContext** handleOut);
KRO_API int32_t kroRelease(KroContext** handle);
KRO_API void kroInit(KroContext* handle);
KRO_API int32_t kroMemRealloc(KroScratch* scratch, int32_t size);
KRO_API int32_t kroDemosaicGetConfig(const KroContext* handle, uint32_t* formatOut);
KRO_API int32_t kroDemosaicSetConfig(KroContext* handle, const uint32_t* formatIn);

/* ---- the main entry ---- */
KRO_API int32_t kroDemosaicing(KroContext* handle, const KroImage* input, KroAlgorithm algorithm, KroImage* output);

/* ---- input normalisation ---- */
KRO_API int32_t demosaicDataInit(const KroImage* input, KroContext* handle, uint32_t* normalisedFormat,
                                 int32_t* preConversion);
KRO_API void u16Tou8(const uint16_t* source, int32_t height, int32_t width, uint32_t shift, uint8_t* destination);
KRO_API void unpacked(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);

/* ---- converters of one frame ---- */
KRO_API int32_t rg8Convert(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                           int32_t outputFormat, KroAlgorithm algorithm, uint8_t* workingMemory);
KRO_API int32_t gr8Convert(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                           int32_t outputFormat, KroAlgorithm algorithm, uint8_t* workingMemory);
KRO_API int32_t gb8Convert(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                           int32_t outputFormat, KroAlgorithm algorithm, uint8_t* workingMemory);
KRO_API int32_t bg8Convert(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                           int32_t outputFormat, KroAlgorithm algorithm, uint8_t* workingMemory);
KRO_API int32_t mono8Convert(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                             int32_t outputFormat);

/* ---- output utilities ---- */
KRO_API int32_t kroBMPAdjust(const KroContext* handle, const KroImage* image);
KRO_API void bgrToBgra(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);

/* ---- nearest-neighbour, 8 bits ---- */
KRO_API uint32_t rg8ToBgr8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                   int32_t swap);
KRO_API uint32_t gb8ToBgr8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                   int32_t swap);
KRO_API uint32_t rg8ToBgra8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                    int32_t swap);
KRO_API uint32_t gb8ToBgra8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                    int32_t swap);
KRO_API uint32_t rg8ToBgr8P_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* redPlane,
                                    uint8_t* greenPlane, uint8_t* bluePlane);
KRO_API uint32_t gb8ToBgr8P_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* redPlane,
                                    uint8_t* greenPlane, uint8_t* bluePlane);
KRO_API uint32_t rg8ToMono8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                    int32_t swap);
KRO_API uint32_t gb8ToMono8_nearest(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                    int32_t swap);

KRO_API void rg8ToBgr8_nearest_body(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap);
KRO_API void rg8ToBgra8_nearest_body(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap);
KRO_API void rg8ToMono8_nearest_body(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap);
KRO_API void rg8ToBgr8P_nearest_body(const uint8_t* const* rows, int32_t width, uint8_t* redPlane,
                                     uint8_t* greenPlane, uint8_t* bluePlane);
KRO_API void rg8ToBgr8_nearest_lastRows(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap);
KRO_API void rg8ToBgra8_nearest_lastRows(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap);
KRO_API void rg8ToMono8_nearest_lastRows(const uint8_t* const* rows, int32_t width, uint8_t* output, int32_t swap);
KRO_API void rg8ToBgr8P_nearest_lastRows(const uint8_t* const* rows, int32_t width, uint8_t* redPlane,
                                         uint8_t* greenPlane, uint8_t* bluePlane);

/* ---- bilinear, 8 bits ---- */
KRO_API int32_t rg8ToBgr8_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);
KRO_API int32_t gr8ToBgr8_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);
KRO_API int32_t gb8ToBgr8_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);
KRO_API int32_t bg8ToBgr8_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);
KRO_API int32_t rg8ToBgra8_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);
KRO_API int32_t gr8ToBgra8_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);
KRO_API int32_t gb8ToBgra8_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);
KRO_API int32_t bg8ToBgra8_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination);
KRO_API int32_t rg8ToBgr8P_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* firstPlane,
                                    uint8_t* secondPlane, uint8_t* thirdPlane);
KRO_API int32_t gr8ToBgr8P_bilinear(const uint8_t* source, int32_t height, int32_t width, uint8_t* firstPlane,
                                    uint8_t* secondPlane, uint8_t* thirdPlane);
KRO_API int32_t rg8ToMono8_bilinear(const uint8_t* source, int32_t height, int32_t width, const uint32_t* weights,
                                    uint8_t* destination);
KRO_API int32_t gr8ToMono8_bilinear(const uint8_t* source, int32_t height, int32_t width, const uint32_t* weights,
                                    uint8_t* destination);

KRO_API KroCoverage rg8ToBgr8_bilinear_body(const uint8_t* source, uint8_t* destination, int32_t height,
                                            int32_t width, uint32_t swapRB);
KRO_API KroCoverage rg8ToBgra8_bilinear_body(const uint8_t* source, uint8_t* destination, int32_t height,
                                             int32_t width, uint32_t swapRB);
KRO_API KroCoverage rg8ToBgr8P_bilinear_body(const uint8_t* source, uint8_t* redPlane, uint8_t* greenPlane,
                                             uint8_t* bluePlane, int32_t height, int32_t width);
KRO_API KroCoverage rg8ToMono8_bilinear_body(const uint8_t* source, uint8_t* destination, int32_t height,
                                             int32_t width, const uint32_t* weights);

KRO_API void rg8ToBgr8_bilinear_firstRows(const uint8_t* source, uint8_t* destination, int32_t width,
                                          uint32_t swapRB);
KRO_API void rg8ToBgra8_bilinear_firstRows(const uint8_t* source, uint8_t* destination, int32_t width,
                                           uint32_t swapRB);
KRO_API void gr8ToBgr8_bilinear_firstRows(const uint8_t* source, uint8_t* destination, int32_t width,
                                          uint32_t swapRB);
KRO_API void gr8ToBgra8_bilinear_firstRows(const uint8_t* source, uint8_t* destination, int32_t width,
                                           uint32_t swapRB);

KRO_API void rg8ToBgr8_bilinear_firstCols(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                                          uint32_t swapRB);
KRO_API void rg8ToBgra8_bilinear_firstCols(const uint8_t* source, uint8_t* destination, int32_t height,
                                           int32_t width, uint32_t swapRB);
KRO_API void rg8ToBgr8P_bilinear_firstCols(const uint8_t* source, uint8_t* redPlane, uint8_t* greenPlane,
                                           uint8_t* bluePlane, int32_t height, int32_t width);
KRO_API void rg8ToMono8_bilinear_firstCols(const uint8_t* source, uint8_t* destination, int32_t height,
                                           int32_t width, const uint32_t* weights);

KRO_API void rg8ToBgr8_bilinear_lastRows(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                                         int32_t firstBorderRow, uint32_t swapRB);
KRO_API void rg8ToBgra8_bilinear_lastRows(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                                          int32_t firstBorderRow, uint32_t swapRB);
KRO_API void rg8ToBgr8P_bilinear_lastRows(const uint8_t* source, uint8_t* redPlane, uint8_t* greenPlane,
                                          uint8_t* bluePlane, int32_t height, int32_t width, int32_t firstBorderRow);
KRO_API void rg8ToMono8_bilinear_lastRows(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                                          int32_t firstBorderRow, const uint32_t* weights);

KRO_API void rg8ToBgr8_bilinear_lastCols(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                                         int32_t firstBorderCol, uint32_t swapRB);
KRO_API void rg8ToBgra8_bilinear_lastCols(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                                          int32_t firstBorderCol, uint32_t swapRB);
KRO_API void rg8ToBgr8P_bilinear_lastCols(const uint8_t* source, uint8_t* redPlane, uint8_t* greenPlane,
                                          uint8_t* bluePlane, int32_t height, int32_t width, int32_t firstBorderCol);
KRO_API void rg8ToMono8_bilinear_lastCols(const uint8_t* source, uint8_t* destination, int32_t height, int32_t width,
                                          int32_t firstBorderCol, const uint32_t* weights);

/* ---- edge-directed, 8 bits ---- */
KRO_API int32_t rg8ToBgr8_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                               uint32_t swap);
KRO_API int32_t gb8ToBgr8_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                               uint32_t swap);
KRO_API int32_t rg8ToBgra8_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                uint32_t swap);
KRO_API int32_t gb8ToBgra8_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                uint32_t swap);
KRO_API int32_t rg8ToBgr8P_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* redPlane,
                                uint8_t* greenPlane, uint8_t* bluePlane, uint8_t* workingMemory);
KRO_API int32_t gb8ToBgr8P_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* redPlane,
                                uint8_t* greenPlane, uint8_t* bluePlane, uint8_t* workingMemory);
KRO_API int32_t rg8ToMono8_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                uint32_t swap, uint8_t* workingMemory);
KRO_API int32_t gb8ToMono8_edge(const uint8_t* source, int32_t height, int32_t width, uint8_t* destination,
                                uint32_t swap, uint8_t* workingMemory);

KRO_API int32_t rg8ToBgr8_edge_body(const uint8_t* const* band, int32_t width, uint8_t* output, uint8_t* greenRow,
                                    uint32_t swap);
KRO_API int32_t rg8ToBgra8_edge_body(const uint8_t* const* band, int32_t width, uint8_t* output, uint8_t* greenRow,
                                     uint32_t swap);
KRO_API int32_t rg8ToBgr8P_edge_body(const uint8_t* const* band, int32_t width, uint8_t* redPlane,
                                     uint8_t* greenPlane, uint8_t* bluePlane, uint8_t* greenRow);
KRO_API int32_t rg8ToMono8_edge_body(const uint8_t* const* band, int32_t width, uint8_t* output, uint8_t* greenRow,
                                     uint32_t swap);
KRO_API int32_t rg8ToBgr8_edge_last2Rows(const uint8_t* const* band, int32_t width, uint8_t* output,
                                         uint8_t* greenRow, uint32_t swap);
KRO_API int32_t rg8ToBgra8_edge_last2Rows(const uint8_t* const* band, int32_t width, uint8_t* output,
                                          uint8_t* greenRow, uint32_t swap);
KRO_API int32_t rg8ToBgr8P_edge_last2Rows(const uint8_t* const* band, int32_t width, uint8_t* redPlane,
                                          uint8_t* greenPlane, uint8_t* bluePlane, uint8_t* greenRow);
KRO_API int32_t rg8ToMono8_edge_last2Rows(const uint8_t* const* band, int32_t width, uint8_t* output,
                                          uint8_t* greenRow, uint32_t swap);
KRO_API int32_t rg8ToBgr8_edge_last3Rows(const uint8_t* const* band, int32_t width, uint8_t* output,
                                         uint8_t* greenRow, uint32_t swap);
KRO_API int32_t rg8ToBgra8_edge_last3Rows(const uint8_t* const* band, int32_t width, uint8_t* output,
                                          uint8_t* greenRow, uint32_t swap);
KRO_API int32_t rg8ToBgr8P_edge_last3Rows(const uint8_t* const* band, int32_t width, uint8_t* redPlane,
                                          uint8_t* greenPlane, uint8_t* bluePlane, uint8_t* greenRow);
KRO_API int32_t rg8ToMono8_edge_last3Rows(const uint8_t* const* band, int32_t width, uint8_t* output,
                                          uint8_t* greenRow, uint32_t swap);

/* ---- bilinear, 16 bits ---- */
KRO_API int32_t kroDemosaicingBilinearU16(const uint16_t* source, int32_t height, int32_t width,
                                          uint16_t* destination);
KRO_API int32_t kroDemosaicingBilinearU16P(const uint16_t* source, int32_t height, int32_t width, uint16_t* bluePlane,
                                           uint16_t* greenPlane, uint16_t* redPlane);
KRO_API int32_t demosaicingBilinearRGGBU16(const uint16_t* source, int32_t height, int32_t width,
                                           uint16_t* destination);
KRO_API int32_t demosaicingBilinearRGGBU16P(const uint16_t* source, int32_t height, int32_t width,
                                            uint16_t* bluePlane, uint16_t* greenPlane, uint16_t* redPlane);
KRO_API void bilinearFirstRowsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t width, uint32_t order);
KRO_API void bilinearFirstColsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                      uint32_t order);
KRO_API KroCoverage bilinearBodyRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                        uint32_t order);
KRO_API void bilinearLastRowsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                     int32_t firstBorderRow, uint32_t order);
KRO_API void bilinearLastColsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                     int32_t firstBorderCol, uint32_t order);
KRO_API void bilinearFirstRowsRGGBU16P(const uint16_t* source, uint16_t* bluePlane, uint16_t* greenPlane,
                                       uint16_t* redPlane, int32_t width);
KRO_API void bilinearFirstColsRGGBU16P(const uint16_t* source, uint16_t* bluePlane, uint16_t* greenPlane,
                                       uint16_t* redPlane, int32_t height, int32_t width);
KRO_API KroCoverage bilinearBodyRGGBU16P(const uint16_t* source, uint16_t* bluePlane, uint16_t* greenPlane,
                                         uint16_t* redPlane, int32_t height, int32_t width);
KRO_API void bilinearLastRowsRGGBU16P(const uint16_t* source, uint16_t* bluePlane, uint16_t* greenPlane,
                                      uint16_t* redPlane, int32_t height, int32_t width, int32_t firstBorderRow);
KRO_API void bilinearLastColsRGGBU16P(const uint16_t* source, uint16_t* bluePlane, uint16_t* greenPlane,
                                      uint16_t* redPlane, int32_t height, int32_t width, int32_t firstBorderCol);

/* ---- edge-directed, 16 bits ---- */
KRO_API int32_t demosaicingEdgeRGGBU16(const uint16_t* source, int32_t height, int32_t width, uint16_t* destination);
KRO_API int32_t demosaicingEdgeGRBGU16(const uint16_t* source, int32_t height, int32_t width, uint16_t* destination);
KRO_API int32_t demosaicingEdgeGBRGU16(const uint16_t* source, int32_t height, int32_t width, uint16_t* destination);
KRO_API int32_t demosaicingEdgeBGGRU16(const uint16_t* source, int32_t height, int32_t width, uint16_t* destination);
KRO_API KroCoverage edgeSecRGGBU16(const uint16_t* source, uint16_t* destination, int32_t rows, int32_t width,
                                   int32_t startColumn, int32_t clampMax);
KRO_API void edgeFirstRowsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t width, int32_t startColumn,
                                  int32_t clampMax);
KRO_API void edgeFirstRowsGBRGU16(const uint16_t* source, uint16_t* destination, int32_t width, int32_t startColumn,
                                  int32_t clampMax);
KRO_API void edgeFirstColsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                  int32_t clampMax);
KRO_API void edgeFirstColsGRBGU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                  int32_t clampMax);
KRO_API void edgeLastRowsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                 int32_t firstRow, int32_t startColumn, int32_t clampMax);
KRO_API void edgeLastColsRGGBU16(const uint16_t* source, uint16_t* destination, int32_t height, int32_t width,
                                 int32_t firstColumn, int32_t clampMax);

#ifdef __cplusplus
}
#endif
#endif
