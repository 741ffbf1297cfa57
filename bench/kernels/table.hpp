// The kernels of one instruction set of one build: this program's own, or those of a module that was loaded.
#pragma once

#include <string>
#include <vector>

#include "kernels/table_access.hpp"

namespace bench {

struct Table {
    std::string build;           // empty for this program's own
    std::string instructionSet;  // "avx2", ...
    int32_t index;
    decltype(&kroBenchRoutine) routine;
    decltype(&kroBenchDemosaicing) demosaicing;
    decltype(&kroBenchView) view;  // null where the build has no views

    std::string label() const { return build.empty() ? instructionSet : instructionSet + " " + build; }
};

std::vector<Table> ownTables();
// `text` is "label=path of a module built from table_access.cpp". Throws std::runtime_error.
std::vector<Table> tablesOfModule(const std::string& text);

}  // namespace bench
