// A file that appears under its name when it is finished, or not at all.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace kro_camera {

class WholeFile {
public:
    explicit WholeFile(const std::string& path);
    // What was not finished goes.
    ~WholeFile();
    WholeFile(const WholeFile&) = delete;
    WholeFile& operator=(const WholeFile&) = delete;

    const std::string& path() const { return path_; }
    void write(const void* data, std::size_t size);
    // Gives it its name, which no other file must have by now.
    void finish();

private:
    [[noreturn]] void fail(int errorNumber) const;

    std::string path_;
    std::string part_;
    std::FILE* file_;
};

}  // namespace kro_camera
