// Kernel tables by number and name, with C linkage, so that the tables of another build can be loaded beside this
// one's.
#pragma once

#include <cstdint>

#include "kro/kro.h"

extern "C" {
using KroBenchRoutine = void (*)();

KRO_API int32_t kroBenchTables();
KRO_API const char* kroBenchTableName(int32_t table);
// Null where the table has no such routine.
KRO_API KroBenchRoutine kroBenchRoutine(int32_t table, const char* name);
KRO_API int32_t kroBenchDemosaicing(int32_t table, KroContext* handle, const KroImage* input, KroAlgorithm algorithm,
                                    KroImage* output);
// Takes the records of kro/view.h. Missing from modules of revisions that knew no views.
KRO_API int32_t kroBenchView(int32_t table, const void* source, const void* picture, const void* options);
}
