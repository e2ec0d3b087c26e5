#include "workloads.h"

#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

namespace bench {

namespace {

class Folder {
  public:
    Folder()
    {
        const char* base = std::getenv("TDMS_BENCH_DIR");
        path_ = std::string(base != nullptr ? base : "/dev/shm") + "/tdms-bench-XXXXXX";
        require(mkdtemp(path_.data()) != nullptr, "creating the scratch folder");
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

std::vector<std::string> make_texts()
{
    std::vector<std::string> made;
    for (std::size_t i = 0; i != 500'000; ++i) {
        char text[32];
        std::snprintf(text, sizeof text, "text %05zu 89abcdef", i % 100'000);
        made.emplace_back(text, 10 + i % 9);
    }
    return made;
}

std::vector<const char*> make_text_pointers()
{
    std::vector<const char*> made;
    for (const std::string& text : texts()) made.push_back(text.c_str());
    return made;
}

std::vector<timestamp_fields> make_timestamps()
{
    constexpr int per_second = 100;
    constexpr int step = 1'000'000 / per_second;
    std::vector<timestamp_fields> made;
    for (int i = 0; i != 300'000; ++i) {
        const int second = i / per_second;
        made.push_back({2024, 1, 15, 10, second / 60, second % 60, i % per_second * step});
    }
    return made;
}

}  // namespace

Series::Series(const Shape& shape)
    : Shape(shape), source_(channels * values), target_(channels * values * saves)
{
    double next = 0;
    for (double& value : source_) value = next += 0.5;
}

std::string Series::file(const char* extension) const
{
    return scratch(std::string(name) + extension);
}

void Series::clear()
{
    std::fill(target_.begin(), target_.end(), -1.0);
}

void Series::verify(std::size_t count) const
{
    const double* read = target_.data();
    for (std::size_t channel = 0; channel != count; ++channel) {
        for (std::size_t save = 0; save != saves; ++save, read += values)
            require(std::equal(read, read + values, source(channel)), "reading back");
    }
}

void require(bool success, const char* what)
{
    if (!success) throw std::runtime_error(std::string(what) + " failed");
}

std::string scratch(const std::string& name)
{
    static const Folder folder;
    return folder.path() + "/" + name;
}

bool exists(const std::string& path)
{
    return std::filesystem::exists(path);
}

const std::string& vacated(const std::string& path)
{
    std::filesystem::remove(path);
    return path;
}

std::string channel_name(std::size_t index)
{
    char name[32];
    std::snprintf(name, sizeof name, "channel %05zu", index);
    return name;
}

const std::vector<std::string>& texts()
{
    static const auto made = make_texts();
    return made;
}

const std::vector<const char*>& text_pointers()
{
    static const auto made = make_text_pointers();
    return made;
}

const std::vector<timestamp_fields>& timestamps()
{
    static const auto made = make_timestamps();
    return made;
}

}  // namespace bench
