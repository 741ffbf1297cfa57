#include "kernels/table.hpp"

#include <dlfcn.h>

#include <stdexcept>

namespace bench {
namespace {

struct Access {
    decltype(&kroBenchTables) tables;
    decltype(&kroBenchTableName) tableName;
    decltype(&kroBenchRoutine) routine;
    decltype(&kroBenchDemosaicing) demosaicing;
    decltype(&kroBenchView) view;
};

std::vector<Table> tablesThrough(const Access& access, const std::string& build) {
    std::vector<Table> tables;
    for (int32_t i = 0; i < access.tables(); ++i) {
        tables.push_back({build, access.tableName(i), i, access.routine, access.demosaicing, access.view});
    }
    return tables;
}

template <class Routine>
void look(void* module, const char* name, Routine& routine) {
    routine = reinterpret_cast<Routine>(dlsym(module, name));
    if (routine == nullptr) {
        throw std::runtime_error(dlerror());
    }
}

}  // namespace

std::vector<Table> ownTables() {
    return tablesThrough({kroBenchTables, kroBenchTableName, kroBenchRoutine, kroBenchDemosaicing, kroBenchView}, "");
}

std::vector<Table> tablesOfModule(const std::string& text) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos) {
        throw std::runtime_error("not LABEL=MODULE: " + text);
    }
    void* module = dlopen(text.substr(equals + 1).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) {
        throw std::runtime_error(dlerror());
    }
    Access access{};
    look(module, "kroBenchTables", access.tables);
    look(module, "kroBenchTableName", access.tableName);
    look(module, "kroBenchRoutine", access.routine);
    look(module, "kroBenchDemosaicing", access.demosaicing);
    access.view = reinterpret_cast<decltype(access.view)>(dlsym(module, "kroBenchView"));
    return tablesThrough(access, text.substr(0, equals));
}

}  // namespace bench
