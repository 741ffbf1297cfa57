#include "output/output_names.hpp"

#include <filesystem>

#include "support/failure.hpp"

namespace fs = std::filesystem;

namespace cli {

std::string stemOf(const std::string& input) {
    return input == standardStream ? "stdin" : fs::path(input).stem().string();
}

bool meansFolder(const std::string& output) {
    std::error_code ignored;
    return output.back() == '/' || fs::is_directory(output, ignored);
}

void makeFolder(const std::string& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) {
        throw Failure(folder + ": cannot be created: " + error.message());
    }
}

OutputNames::OutputNames(const std::string& output, const std::string& typeName, std::size_t inputs)
    : output_(output) {
    if (output.empty()) {
        throw UsageFailure("say where the picture goes: -o out.png, -o FOLDER/ or -o - with --to");
    }
    if (output != standardStream && meansFolder(output)) {
        type_ = &requireFileType(typeName.empty() ? "png" : typeName);
        folder_ = output;
        pattern_ = NamePattern::inFolder(output, type_->name);
        return;
    }
    chooseType(typeName);
    pattern_ = NamePattern(output);
    if (inputs > 1 && !isStandardOutput() && !pattern_.hasName() && !pattern_.countsPictures()) {
        throw UsageFailure("-o " + output + " is one file for " + std::to_string(inputs) +
                           " inputs, expected -o FOLDER/ or a pattern such as -o '{name}.png' or -o %04d.png");
    }
}

void OutputNames::chooseType(const std::string& typeName) {
    const FileType* byName = isStandardOutput() ? nullptr : fileTypeOf(output_);
    type_ = typeName.empty() ? byName : &requireFileType(typeName);
    if (type_ == nullptr) {
        throw UsageFailure("-o " + output_ +
                           " does not say the file type, expected an extension or --to: " + extensionList());
    }
    if (byName != nullptr && byName != type_) {
        throw UsageFailure("-o " + output_ + " and --to " + typeName + " contradict each other");
    }
}

bool OutputNames::isStandardOutput() const { return output_ == standardStream; }

std::string OutputNames::nameFor(const PictureName& name, bool numbered) const {
    return numbered && !pattern_.hasNumber() ? pattern_.withFrameMark().fill(name) : pattern_.fill(name);
}

void OutputNames::makeFolder() const {
    if (!folder_.empty()) {
        cli::makeFolder(folder_);
    }
}

}  // namespace cli
