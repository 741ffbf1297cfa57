#pragma once

#include <cstdint>
#include <string>

#include "output/name_pattern.hpp"
#include "pictures/picture_file.hpp"

namespace cli {

// Where pictures go: one file, numbered files, a folder, a pattern with marks in it, or standard output.
class OutputNames {
public:
    // The type follows the name's extension, or typeName where the name has none.
    OutputNames(const std::string& output, const std::string& typeName, std::size_t inputs);

    const FileType& type() const { return *type_; }
    bool isStandardOutput() const;
    bool countsPictures() const { return pattern_.countsPictures(); }
    // Numbered where the input holds several frames.
    std::string nameFor(const PictureName& name, bool numbered) const;
    void makeFolder() const;

private:
    void chooseType(const std::string& typeName);

    std::string output_;
    NamePattern pattern_;
    std::string folder_;
    const FileType* type_ = nullptr;
};

// A file's name without folder and extension.
std::string stemOf(const std::string& input);

// Whether the name means a folder, be it there or not.
bool meansFolder(const std::string& output);

// Makes the folder and those above it.
void makeFolder(const std::string& folder);

}  // namespace cli
