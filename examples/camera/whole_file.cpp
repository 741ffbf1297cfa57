#include "whole_file.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "modes.hpp"

namespace kro_camera {

WholeFile::WholeFile(const std::string& path) : path_(path), file_(nullptr) {
    const std::filesystem::path target(path);
    part_ = (target.parent_path() / ("." + target.filename().string() + ".part")).string();
    file_ = std::fopen(part_.c_str(), "wbxe");
    if (file_ == nullptr) {
        fail(errno);
    }
}

WholeFile::~WholeFile() {
    if (file_ != nullptr) {
        std::fclose(file_);
    }
    if (!part_.empty()) {
        unlink(part_.c_str());
    }
}

void WholeFile::fail(int errorNumber) const {
    throw Failure(path_ + ": cannot be written: " + std::generic_category().message(errorNumber));
}

void WholeFile::write(const void* data, std::size_t size) {
    if (size != 0 && std::fwrite(data, size, 1, file_) != 1) {
        fail(errno);
    }
}

void WholeFile::finish() {
    std::FILE* const file = file_;
    file_ = nullptr;
    if (std::fclose(file) != 0) {
        fail(errno);
    }
    if (renameat2(AT_FDCWD, part_.c_str(), AT_FDCWD, path_.c_str(), RENAME_NOREPLACE) != 0) {
        fail(errno);
    }
    part_.clear();
}

}  // namespace kro_camera
