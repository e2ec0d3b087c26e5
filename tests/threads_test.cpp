// Several threads, each with files of its own: what the library shares between them is locked.
#include <thread>

#include "support.h"

// The C library guards what it knows of the time zone by a lock that the thread sanitizer cannot
// see.
extern "C" const char* __tsan_default_suppressions()
{
    return "called_from_lib:libc.so.6\n";
}

namespace {

void write_and_read(int thread)
{
    const std::string path =
        (std::filesystem::temp_directory_path() /
         ("tdms_threads_" + std::to_string(getpid()) + "_" + std::to_string(thread)))
            .string();
    for (int round = 0; round != 20; ++round) {
        void* file = nullptr;
        void* group = nullptr;
        const timestamp_fields times[] = {{2024, 1, 1, 1, thread, round, 0},
                                          {2024, 1, 1, 2, thread, round, 0}};
        const char* const texts[] = {"first", "second", "third"};
        ASSERT_EQ(0, open_file(path.c_str(), "w", &file));
        ASSERT_EQ(0, create_group(file, "g", &group));
        void* const time_channel = add_channel(group, "time");
        ASSERT_EQ(0, set_channel_data_timestamp(time_channel, 2, times));
        ASSERT_EQ(0, set_channel_data_string(add_channel(group, "texts"), 3, texts));
        ASSERT_EQ(0, save_file(file));
        ASSERT_EQ(0, close_file(&file));

        ASSERT_EQ(0, open_file(path.c_str(), "r", &file));
        ASSERT_EQ(0, get_group(file, &group));
        void* channels[2];
        ASSERT_EQ(0, get_channel(group, channels));
        const char* read_texts[3];
        timestamp_fields read_times[2];
        ASSERT_EQ(0, get_channel_data_string(channels[0], read_texts));
        ASSERT_EQ(0, get_channel_data_timestamp(channels[1], read_times));
        EXPECT_EQ(0, std::memcmp(times, read_times, sizeof times));
        // Every thread writes the same texts, so whichever come first in the storage are right.
        for (int i = 0; i != 3; ++i) EXPECT_STREQ(texts[i], read_texts[i]);
        ASSERT_EQ(0, close_file(&file));
    }
    std::filesystem::remove(path);
}

TEST(Threads, DifferentFilesAtOnce)
{
    std::vector<std::thread> threads;
    for (int i = 0; i != 4; ++i) threads.emplace_back(write_and_read, i);
    for (std::thread& t : threads) t.join();
}

}  // namespace
