#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "file_bytes.h"
#include "tdms.h"

// A path of its own for each test, removed at its end.
class scratch_file {
  public:
    scratch_file()
        : path_((std::filesystem::temp_directory_path() /
                 ("tdms_test_" + std::to_string(getpid()) + "_" + std::to_string(count_++)))
                    .string())
    {
    }
    ~scratch_file() { std::filesystem::remove(path_); }
    scratch_file(const scratch_file&) = delete;
    scratch_file& operator=(const scratch_file&) = delete;

    const char* path() const { return path_.c_str(); }

    std::string bytes() const
    {
        std::ifstream in(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    void fill(const std::string& bytes) const
    {
        std::ofstream(path_, std::ios::binary | std::ios::trunc) << bytes;
    }

  private:
    static inline int count_ = 0;
    std::string path_;
};

// An open file, closed at the end of the test.
class open_tdms {
  public:
    open_tdms(const char* path, const char* mode) : status(open_file(path, mode, &handle)) {}
    open_tdms(const scratch_file& file, const char* mode) : open_tdms(file.path(), mode) {}
    ~open_tdms() { close(); }
    open_tdms(const open_tdms&) = delete;
    open_tdms& operator=(const open_tdms&) = delete;

    void close()
    {
        if (handle == nullptr) return;
        EXPECT_EQ(0, close_file(&handle));
    }

    void* add_group(const char* name) const
    {
        void* group = nullptr;
        EXPECT_EQ(0, create_group(handle, name, &group));
        return group;
    }

    // All groups, or all channels of the one at a position.
    std::vector<void*> groups() const
    {
        std::vector<void*> list(static_cast<std::size_t>(get_num_group(handle)));
        EXPECT_EQ(0, get_group(handle, list.data()));
        return list;
    }
    std::vector<void*> channels(std::size_t g) const
    {
        std::vector<void*> list(static_cast<std::size_t>(get_num_channel(group(g))));
        EXPECT_EQ(0, get_channel(group(g), list.data()));
        return list;
    }
    void* group(std::size_t i) const { return groups().at(i); }
    void* channel(std::size_t g, std::size_t c) const { return channels(g).at(c); }

    void* handle = nullptr;
    int status;
};

inline void* add_channel(void* group, const char* name)
{
    void* channel = nullptr;
    EXPECT_EQ(0, create_channel(group, name, &channel));
    return channel;
}

inline std::string name_of(int (*get_name)(void*, char*), void* handle)
{
    char name[256];
    EXPECT_EQ(0, get_name(handle, name));
    return name;
}

inline std::uint64_t value_count(void* channel)
{
    std::uint64_t count = 0;
    EXPECT_EQ(0, get_num_channel_data(channel, &count));
    return count;
}

inline std::vector<std::int32_t> int32_values(void* channel)
{
    std::vector<std::int32_t> values(value_count(channel));
    EXPECT_EQ(0, get_channel_data_int32(channel, values.data()));
    return values;
}

constexpr const char* null_text = "basic_string::_M_construct null not valid";

// The logic errors and failed lookups that leave the library.
template <class Call>
std::string thrown_text(Call call)
{
    try {
        call();
    } catch (const std::exception& e) {
        return e.what();
    }
    return "nothing";
}
