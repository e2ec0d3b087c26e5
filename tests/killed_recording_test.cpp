// A recording process is killed at random moments. What it leaves is whole up to the segment that
// was being written, and salvaging gives back every save but the torn one.
#include <signal.h>
#include <sys/wait.h>

#include <algorithm>
#include <random>

#include "support.h"

namespace {

constexpr int saves = 40;

// Channel c has as many values as this in a save: from one to what takes several writes.
std::vector<std::int32_t> values_of(int save)
{
    return std::vector<std::int32_t>(static_cast<std::size_t>(1 + save * 7919 % 50000), save);
}

void record(const char* path, int saved)
{
    void* file = nullptr;
    void* group = nullptr;
    ASSERT_EQ(0, open_file(path, "w", &file));
    ASSERT_EQ(0, create_group(file, "g", &group));
    void* const numbers = add_channel(group, "c");
    void* const times = add_channel(group, "time");
    for (int save = 0; save != saves; ++save) {
        const std::vector<std::int32_t> values = values_of(save);
        const std::vector<timestamp_fields> moments(values.size() % 100,
                                                    {2024, 1, 1, 1, 0, save, 0});
        ASSERT_EQ(0, set_channel_data_int32(numbers, values.size(), values.data()));
        ASSERT_EQ(0, set_channel_data_timestamp(times, moments.size(), moments.data()));
        ASSERT_EQ(0, create_file_property_int32(file, std::to_string(save).c_str(), save));
        ASSERT_EQ(0, save_file(file));
        ASSERT_EQ(1, write(saved, "s", 1));
    }
    ASSERT_EQ(0, close_file(&file));
}

// Kills a recording some time after a number of saves. @return how many saves had returned
std::size_t record_until_killed(const char* path, std::size_t after_saves, std::size_t microseconds)
{
    int reports[2];
    EXPECT_EQ(0, pipe(reports));
    const pid_t child = fork();
    if (child == 0) {
        record(path, reports[1]);
        _exit(0);
    }
    char returned[saves];
    std::size_t count = 0;
    while (count != after_saves) count += read(reports[0], returned, 1) == 1;
    usleep(static_cast<useconds_t>(microseconds));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(reports[1]);
    count += static_cast<std::size_t>(read(reports[0], returned, sizeof returned));
    close(reports[0]);
    return count;
}

TEST(KilledRecording, IsWholeUpToTheTornSegment)
{
    const scratch_file reference;
    std::FILE* const nobody = std::fopen("/dev/null", "w");
    record(reference.path(), fileno(nobody));
    std::fclose(nobody);
    const std::string whole = reference.bytes();
    const std::vector<std::size_t> segments = segment_offsets(whole);
    ASSERT_EQ(2u * saves + 1, segments.size());

    std::minstd_rand random(std::random_device{}());
    const scratch_file file;
    const scratch_file salvaged;
    const std::string salvage =
        TDMS_TOOL " salvage -o " + std::string(salvaged.path()) + " " + file.path() + " >/dev/null";
    int torn = 0;
    for (int round = 0; round != 100; ++round) {
        file.fill("");
        const auto after_saves = random() % saves;
        const auto microseconds = random() % 300;
        SCOPED_TRACE(std::to_string(after_saves) + " saves, " + std::to_string(microseconds));
        const std::size_t returned = record_until_killed(file.path(), after_saves, microseconds);
        const std::string left = file.bytes();
        ASSERT_TRUE(whole.starts_with(left));
        // Only what the stream still buffers of the saves that returned is lost.
        EXPECT_LE(segments[2 * returned], left.size() + BUFSIZ);
        const std::size_t end =
            *std::prev(std::upper_bound(segments.begin(), segments.end(), left.size()));
        torn += end != left.size();
        if (end == 0) continue;
        EXPECT_EQ(0, std::system(salvage.c_str()));
        EXPECT_TRUE(whole.substr(0, end) == salvaged.bytes());
        const open_tdms opened(salvaged, "r");
        ASSERT_EQ(0, opened.status);
        const std::size_t kept =
            (std::find(segments.begin(), segments.end(), end) - segments.begin()) / 2;
        std::vector<std::int32_t> expected;
        for (int save = 0; save != static_cast<int>(kept); ++save) {
            const auto values = values_of(save);
            expected.insert(expected.end(), values.begin(), values.end());
        }
        if (kept != 0) {
            EXPECT_TRUE(expected == int32_values(opened.channel(0, 0)));
        }
    }
    RecordProperty("torn", torn);
}

}  // namespace
