#include "output/output_names.hpp"

#include <filesystem>

#include "support/failure.hpp"

namespace fs = std::filesystem;

namespace cli {

namespace {

constexpr const char* nameMark = "{name}";
constexpr const char* frameMark = "{frame}";

bool has(const std::string& pattern, const char* mark) { return pattern.find(mark) != std::string::npos; }

std::string replaced(std::string pattern, const std::string& mark, const std::string& value) {
    for (std::size_t at = pattern.find(mark); at != std::string::npos; at = pattern.find(mark, at + value.size())) {
        pattern.replace(at, mark.size(), value);
    }
    return pattern;
}

std::string fourDigits(uint64_t number) {
    const std::string digits = std::to_string(number);
    return std::string(digits.size() < 4 ? 4 - digits.size() : 0, '0') + digits;
}

// "a/b.png" becomes "a/b-{frame}.png".
std::string withFrameMark(const std::string& pattern) {
    const std::size_t length = fs::path(pattern).extension().string().size();
    return pattern.substr(0, pattern.size() - length) + "-" + frameMark + pattern.substr(pattern.size() - length);
}

}  // namespace

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
    : pattern_(output) {
    if (output.empty()) {
        throw UsageFailure("say where the picture goes: -o out.png, -o FOLDER/ or -o - with --to");
    }
    if (output == standardStream || !meansFolder(output)) {
        chooseType(typeName);
        if (inputs > 1 && output != standardStream && !has(output, nameMark)) {
            throw UsageFailure("-o " + output + " is one file for " + std::to_string(inputs) +
                               " inputs, expected -o FOLDER/ or a pattern such as -o '{name}.png'");
        }
        return;
    }
    type_ = &requireFileType(typeName.empty() ? "png" : typeName);
    folder_ = output;
    pattern_ = (fs::path(output) / nameMark).string() + "." + type_->name;
}

void OutputNames::chooseType(const std::string& typeName) {
    const FileType* byName = isStandardOutput() ? nullptr : fileTypeOf(pattern_);
    type_ = typeName.empty() ? byName : &requireFileType(typeName);
    if (type_ == nullptr) {
        throw UsageFailure("-o " + pattern_ +
                           " does not say the file type, expected an extension or --to: " + extensionList());
    }
    if (byName != nullptr && byName != type_) {
        throw UsageFailure("-o " + pattern_ + " and --to " + typeName + " contradict each other");
    }
}

bool OutputNames::isStandardOutput() const { return pattern_ == standardStream; }

std::string OutputNames::nameFor(const std::string& input, std::optional<uint64_t> frame) const {
    const std::string pattern = frame && !has(pattern_, frameMark) ? withFrameMark(pattern_) : pattern_;
    const std::string numbered = replaced(pattern, frameMark, fourDigits(frame.value_or(1)));
    return replaced(numbered, nameMark, stemOf(input));
}

void OutputNames::makeFolder() const {
    if (!folder_.empty()) {
        cli::makeFolder(folder_);
    }
}

}  // namespace cli
