#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "file_bytes.h"
#include "handles.h"

// Where tests write: in memory, if it has a folder, since closing a truncated file waits for the
// disk.
inline std::filesystem::path scratch_folder()
{
    const bool in_memory = std::getenv("TMPDIR") == nullptr && access("/dev/shm", W_OK) == 0;
    return in_memory ? "/dev/shm" : std::filesystem::temp_directory_path();
}

// A path of its own for each test, removed at its end.
class scratch_file {
  public:
    scratch_file()
        : path_(scratch_folder() /
                ("tdms_test_" + std::to_string(getpid()) + "_" + std::to_string(count_++)))
    {
    }
    explicit scratch_file(const std::string& bytes) : scratch_file() { fill(bytes); }
    ~scratch_file() { std::filesystem::remove(path_); }
    scratch_file(scratch_file&&) = delete;

    const char* path() const { return path_.c_str(); }

    std::string bytes() const
    {
        std::ifstream in(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    void fill(const std::string& bytes) const { std::ofstream(path_, std::ios::binary) << bytes; }

  private:
    static inline int count_ = 0;
    std::filesystem::path path_;
};

inline void* add_channel(void* group, const char* name)
{
    void* channel = nullptr;
    EXPECT_EQ(0, create_channel(group, name, &channel));
    return channel;
}

// An open file, closed at the end of the test, with the functions of one interface.
template <auto open, auto save, auto close>
struct test_file : file_handle {
    test_file() = default;
    test_file(const scratch_file& file, const char* mode) : status(open(file.path(), mode, &handle))
    {
    }

    void save_and_close()
    {
        EXPECT_EQ(0, save(handle));
        EXPECT_EQ(0, close(&handle));
    }

    int status = TDMS_OK;
};

struct open_tdms : test_file<open_file, save_file, close_file> {
    using test_file::test_file;

    void* add_group(const char* name) const
    {
        void* group = nullptr;
        EXPECT_EQ(0, create_group(handle, name, &group));
        return group;
    }

    void* group(std::size_t i) const { return groups_of(handle).at(i); }
    void* channel(std::size_t g, std::size_t c) const { return channels_of(group(g)).at(c); }
};

struct tdms_file : test_file<tdms_open, tdms_save, tdms_close> {
    using test_file::test_file;
    explicit tdms_file(const scratch_file& partial)
    {
        status = tdms_open_partial(partial.path(), &handle, &rest);
    }

    // The group or channel of that name, created if it is not there.
    void* group(const char* name) const
    {
        void* group = nullptr;
        if (tdms_find_group(handle, name, &group) == TDMS_OK) return group;
        EXPECT_EQ(0, tdms_create_group(handle, name, &group));
        return group;
    }
    void* channel(const char* group_name, const char* name) const
    {
        void* const owner = group(group_name);
        void* channel = nullptr;
        if (tdms_find_channel(owner, name, &channel) == TDMS_OK) return channel;
        EXPECT_EQ(0, tdms_create_channel(owner, name, &channel));
        return channel;
    }

    std::uint64_t rest = 0;
};

// How many values of a channel can be read, and how many are lost.
inline std::pair<std::uint64_t, std::uint64_t> found_and_lost(void* channel)
{
    std::pair<std::uint64_t, std::uint64_t> numbers{~0ull, ~0ull};
    EXPECT_EQ(0, tdms_get_num_values(channel, &numbers.first, &numbers.second));
    return numbers;
}

// A new file with channel c in group g.
struct file_of_one_channel {
    const scratch_file scratch;
    open_tdms file{scratch, "w"};
    void* const group = file.add_group("g");
    void* const channel = add_channel(group, "c");
};
struct FileOfOneChannel : testing::Test, file_of_one_channel {};

inline std::string name_of(int (*get_name)(void*, char*), void* handle)
{
    std::string name(4096, '\0');
    EXPECT_EQ(0, get_name(handle, name.data()));
    return name.c_str();
}

inline std::uint64_t value_count(void* channel)
{
    std::uint64_t count = 0;
    EXPECT_EQ(0, get_num_channel_data(channel, &count));
    return count;
}

// How many descriptors the process has.
inline std::ptrdiff_t descriptors()
{
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
}

// Each of them must be the expected status.
inline void expect_each(int expected, std::initializer_list<int> statuses)
{
    EXPECT_EQ(std::vector<int>(statuses.size(), expected), std::vector<int>(statuses));
}

// How many rounds a random test makes: TDMS_TEST_ROUNDS times as many, if that is set.
inline int rounds(int usual)
{
    const char* const factor = std::getenv("TDMS_TEST_ROUNDS");
    return factor == nullptr ? usual : usual * std::atoi(factor);
}

// Tests that store times begin with this.
inline void set_time_zone(const char* name)
{
    setenv("TZ", name, 1);
    tzset();
}

constexpr const char* null_message = "basic_string::_M_construct null not valid";

// The logic errors and failed lookups that leave the library.
template <class Call>
std::string thrown_message(Call call)
{
    try {
        call();
    } catch (const std::exception& e) {
        return e.what();
    }
    return "nothing";
}
