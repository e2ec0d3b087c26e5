// A recording process is killed at random moments. What it leaves is intact up to the segment that
// was being written: salvaging recovers the intact segments, and of what tdms_save() saved, nothing
// is missing.
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <random>

#include "elements.h"
#include "support.h"

namespace {

constexpr std::size_t saves = 40;

// Saves of one value up to what takes several writes. Those that have returned are counted.
void record_staged(const scratch_file& scratch, std::atomic<std::size_t>& returned)
{
    const open_tdms file(scratch, "w");
    void* const numbers = add_channel(file.add_group("g"), "c");
    void* const times = add_channel(file.group(0), "time");
    for (std::size_t save = 0; save != saves; ++save) {
        const std::vector<std::int32_t> values(1 + save * 7919 % 50000, static_cast<int>(save));
        const std::vector<timestamp_fields> moments(save, {2024, 1, 1, 1, 0, 0, 0});
        ASSERT_EQ(0, set_channel_data_int32(numbers, values.size(), values.data()));
        ASSERT_EQ(0, set_channel_data_timestamp(times, moments.size(), moments.data()));
        ASSERT_EQ(0, create_file_property_int8(file.handle, std::to_string(save).c_str(), 1));
        ASSERT_EQ(0, save_file(file.handle));
        ++returned;
    }
}

// What the fast channels get in some saves.
std::vector<std::int64_t> fast_values(std::int64_t first_save, std::int64_t end)
{
    std::vector<std::int64_t> values;
    for (auto save = first_save; save != end; ++save) {
        for (int i = 0; i <= save * 7919 % 10000; ++i) values.push_back(save << 40 | i);
    }
    return values;
}

void record_appended(const scratch_file& scratch, std::atomic<std::size_t>& returned)
{
    const tdms_file file(scratch, "w");
    void* const numbers = file.channel("fast", "number");
    void* const times = file.channel("fast", "time");
    void* const slow_times = file.channel("slow", "time");
    void* const events = file.channel("slow", "event");
    for (std::int64_t save = 0; save != saves; ++save) {
        const auto values = fast_values(save, save + 1);
        const std::string text = std::to_string(save);
        const char* const event = text.c_str();
        expect_each(0, {tdms_append_int64(numbers, values.size(), values.data()),
                        tdms_append_nanoseconds(times, values.size(), values.data()),
                        tdms_append_nanoseconds(slow_times, 1, &save),
                        tdms_append_string(events, 1, &event), tdms_save(file.handle)});
        ++returned;
    }
}

template <class T>
std::vector<T> read_all(void* channel, int (*read)(void*, std::uint64_t, std::uint64_t, T*))
{
    std::vector<T> values(found_and_lost(channel).first);
    EXPECT_EQ(0, read(channel, 0, values.size(), values.data()));
    return values;
}

// Kills a recording some time after a number of saves. @return how many saves had returned
std::size_t record_until_killed(void (*record)(const scratch_file&, std::atomic<std::size_t>&),
                                const scratch_file& scratch, std::size_t saved, std::size_t delay)
{
    static auto& returned =
        *new (mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
            std::atomic<std::size_t>;
    returned = 0;
    const pid_t child = fork();
    if (child == 0) {
        record(scratch, returned);
        _exit(0);
    }
    while (returned < saved && waitpid(child, nullptr, WNOHANG) == 0) usleep(1);
    EXPECT_GE(returned, saved) << "the recording ended by itself";
    usleep(static_cast<useconds_t>(delay));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    return returned;
}

TEST(KilledRecording, IsIntactUpToTheTruncatedSegment)
{
    const scratch_file file;
    const scratch_file salvaged;
    std::atomic<std::size_t> all = 0;
    record_staged(file, all);
    const std::string complete = file.bytes();
    const std::vector<std::size_t> offsets = segment_offsets(complete);
    ASSERT_EQ(2 * saves + 1, offsets.size());

    const std::string salvage = "'" TDMS_TOOL "' salvage -o '" + std::string(salvaged.path()) +
                                "' '" + file.path() + "' >/dev/null";
    std::minstd_rand random;
    int truncated = 0;
    for (int round = 0; round != 100; ++round) {
        file.fill("");
        const std::size_t returned =
            record_until_killed(record_staged, file, random() % saves, random() % 300);
        const std::string left = file.bytes();
        ASSERT_TRUE(complete.starts_with(left));
        // Of the saves that returned, only what the stream still buffers is lost.
        EXPECT_LE(offsets[2 * returned], left.size() + BUFSIZ);
        const std::size_t end =
            *std::prev(std::upper_bound(offsets.begin(), offsets.end(), left.size()));
        truncated += end != left.size();
        if (end == 0) continue;
        EXPECT_EQ(0, std::system(salvage.c_str()));
        EXPECT_TRUE(complete.substr(0, end) == salvaged.bytes());
        EXPECT_EQ(0, open_tdms(salvaged, "r").status);
    }
    EXPECT_GT(truncated, 0);
}

TEST(KilledRecording, HasEverySaveThatReturned)
{
    const scratch_file file;
    std::minstd_rand random;
    int truncated = 0;
    for (int round = 0; round != 200; ++round) {
        file.fill("");
        const std::size_t returned =
            record_until_killed(record_appended, file, random() % saves, random() % 300);
        const tdms_file left(file);
        ASSERT_EQ(0, left.status);
        truncated += left.rest != 0;
        if (returned == 0 && get_num_group(left.handle) == 0) continue;
        const auto slow_times = read_all(left.channel("slow", "time"), tdms_read_nanoseconds);
        const std::size_t saved = slow_times.size();
        EXPECT_TRUE(saved == returned || saved == returned + 1) << saved << " of " << returned;
        const auto fast = fast_values(0, static_cast<std::int64_t>(saved));
        EXPECT_TRUE(fast == read_all(left.channel("fast", "number"), tdms_read_int64));
        EXPECT_TRUE(fast == read_all(left.channel("fast", "time"), tdms_read_nanoseconds));
        const auto events = read_all<const char*>(left.channel("slow", "event"), tdms_read_string);
        ASSERT_EQ(saved, events.size());
        for (std::size_t i = 0; i != saved; ++i) {
            EXPECT_EQ(slow_times[i], std::stoll(events[i]));
            EXPECT_EQ(std::to_string(i), events[i]);
        }
    }
    EXPECT_GT(truncated, 0);
}

}  // namespace
