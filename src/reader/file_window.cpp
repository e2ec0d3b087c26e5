#include "reader/file_window.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace tdms_impl {
namespace {

constexpr std::uint64_t far_ahead = 65536;
constexpr std::uint64_t little_ahead = 4096;
constexpr std::uint64_t long_skip = 16384;

}  // namespace

file_window::file_window(int file, std::uint64_t size)
    : file_(file), size_(size), ahead_(little_ahead)
{
}

bool file_window::read(std::uint64_t offset, std::uint64_t count, unsigned char* target)
{
    if (contains(offset, 1)) {
        const std::uint64_t buffered = std::min(count, filled_ - (offset - begin_));
        target = std::copy_n(buffer_.get() + (offset - begin_), buffered, target);
        offset += buffered;
        count -= buffered;
    }
    if (count == 0) return true;
    if (offset > size_ || count > size_ - offset) return false;
    if (!follows(offset)) {
        skip_to(offset);
    } else if (count < little_ahead) {
        const unsigned char* const bytes = view(offset, count);
        if (bytes != nullptr) std::copy_n(bytes, count, target);
        return bytes != nullptr;
    }
    use(offset, count);
    return read_file(offset, count, target) == count;
}

bool file_window::covers(std::uint64_t end) const
{
    const std::int64_t size_now = size_of_file(file_);
    return size_now >= 0 && end <= static_cast<std::uint64_t>(size_now);
}

// Whether a request is close to the previous one.
bool file_window::follows(std::uint64_t offset) const
{
    return offset >= begin_ && offset <= std::max(begin_ + filled_, stretch_ + used_) + long_skip;
}

void file_window::skip_to(std::uint64_t offset)
{
    if (used_ != 0) ahead_ = std::min(used_, std::max(far_ahead, largest_ + little_ahead));
    begin_ = stretch_ = offset;
    filled_ = used_ = largest_ = 0;
}

// Fills the buffer from `offset` on. @return whether it holds `count` bytes
bool file_window::fill(std::uint64_t offset, std::uint64_t count)
{
    if (offset > size_ || count > size_ - offset) return false;
    if (follows(offset)) {
        ahead_ = std::min(far_ahead, 16 * ahead_);
    } else {
        skip_to(offset);
    }
    const std::uint64_t wanted = std::min(std::max(count, ahead_), size_ - offset);
    filled_ = 0;
    begin_ = offset;
    if (wanted > capacity_) {
        capacity_ = 0;
        buffer_.reset();
        buffer_ = std::make_unique_for_overwrite<unsigned char[]>(wanted);
        capacity_ = wanted;
    }
    filled_ = read_file(offset, wanted, buffer_.get());
    return count <= filled_;
}

std::uint64_t file_window::read_file(std::uint64_t offset, std::uint64_t count,
                                     unsigned char* target)
{
    // Bypasses the descriptor's position; seeking would cost a system call per read.
    std::uint64_t got = 0;
    while (got != count) {
        const ssize_t part =
            pread(file_, target + got, count - got, static_cast<off_t>(offset + got));
        if (part < 0 && errno == EINTR) continue;
        if (part < 0) device_failed_ = true;
        if (part <= 0) break;
        got += static_cast<std::uint64_t>(part);
    }
    return got;
}

std::int64_t size_of_file(int file)
{
    struct stat facts {};
    if (fstat(file, &facts) != 0) return -1;
    return S_ISREG(facts.st_mode) ? facts.st_size : lseek(file, 0, SEEK_END);  // of a device
}

}  // namespace tdms_impl
