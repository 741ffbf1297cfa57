#include "table_access.hpp"

#include <cstring>

// Compiled against older revisions too, whose tables stood elsewhere.
#if __has_include("KRODemosaicing.hpp")
#include "KRODemosaicing.hpp"
#define KRO_KERNEL_LIST "table/kernels.def"
#else
#include "isa/kernels.hpp"
#define KRO_KERNEL_LIST "isa/kernels.def"
#endif

namespace {

constexpr int32_t room = 16;

const kro::Kernels& kernelsOf(int32_t table) {
    const kro::Kernels* tables[room];
    kro::usableKernels(tables, room);
    return *tables[table];
}

struct NamedMember {
    const char* name;
    KroBenchRoutine (*get)(const kro::Kernels&);
};

constexpr NamedMember members[] = {
#define KRO_KERNEL(routine, ...) \
    {#routine, [](const kro::Kernels& kernels) { return reinterpret_cast<KroBenchRoutine>(kernels.routine); }},
#include KRO_KERNEL_LIST
#undef KRO_KERNEL
};

}  // namespace

int32_t kroBenchTables() {
    const kro::Kernels* tables[room];
    return kro::usableKernels(tables, room);
}

const char* kroBenchTableName(int32_t table) { return kernelsOf(table).name; }

KroBenchRoutine kroBenchRoutine(int32_t table, const char* name) {
    for (const NamedMember& member : members) {
        if (std::strcmp(member.name, name) == 0) {
            return member.get(kernelsOf(table));
        }
    }
    return nullptr;
}

int32_t kroBenchDemosaicing(int32_t table, KroContext* handle, const KroImage* input, KroAlgorithm algorithm,
                            KroImage* output) {
    return kro::demosaicing(kernelsOf(table), handle, input, algorithm, output);
}

#if __has_include("KROView.hpp")
#include "KROView.hpp"

int32_t kroBenchView(int32_t table, const void* source, const void* picture, const void* options) {
    return kro::convertView(kernelsOf(table), static_cast<const KroSourceView*>(source),
                            static_cast<const KroPictureView*>(picture), static_cast<const KroViewOptions*>(options));
}
#endif
