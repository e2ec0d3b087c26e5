// A recording process is killed at random moments. What it leaves is whole up to the segment that
// was being written, and salvaging gives back every save but the torn one.
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <random>

#include "support.h"

namespace {

constexpr std::size_t saves = 40;

// Saves of one value up to what takes several writes. Those that have returned are counted.
void record(const scratch_file& scratch, std::atomic<std::size_t>& returned)
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

// Kills a recording some time after a number of saves. @return how many saves had returned
std::size_t record_until_killed(const scratch_file& scratch, std::size_t saved, std::size_t delay)
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

TEST(KilledRecording, IsWholeUpToTheTornSegment)
{
    const scratch_file file;
    const scratch_file salvaged;
    std::atomic<std::size_t> all = 0;
    record(file, all);
    const std::string whole = file.bytes();
    const std::vector<std::size_t> offsets = segment_offsets(whole);
    ASSERT_EQ(2 * saves + 1, offsets.size());

    const std::string salvage = "'" TDMS_TOOL "' salvage -o '" + std::string(salvaged.path()) +
                                "' '" + file.path() + "' >/dev/null";
    std::minstd_rand random;
    int torn = 0;
    for (int round = 0; round != 100; ++round) {
        file.fill("");
        const std::size_t returned = record_until_killed(file, random() % saves, random() % 300);
        const std::string left = file.bytes();
        ASSERT_TRUE(whole.starts_with(left));
        // Of the saves that returned, only what the stream still buffers is lost.
        EXPECT_LE(offsets[2 * returned], left.size() + BUFSIZ);
        const std::size_t end =
            *std::prev(std::upper_bound(offsets.begin(), offsets.end(), left.size()));
        torn += end != left.size();
        if (end == 0) continue;
        EXPECT_EQ(0, std::system(salvage.c_str()));
        EXPECT_TRUE(whole.substr(0, end) == salvaged.bytes());
        EXPECT_EQ(0, open_tdms(salvaged, "r").status);
    }
    EXPECT_GT(torn, 0);
}

}  // namespace
