// A process follows, by tdms_refresh(), what another one records.
#include <sys/wait.h>

#include <cmath>

#include "support.h"

namespace {

constexpr std::uint64_t saves = 1000;
constexpr std::uint64_t per_save = 37;

// Each save adds as many values to every channel; now and then there is a new group and property.
void record(const scratch_file& scratch)
{
    const tdms_file file(scratch, "w");
    std::vector<double> values(per_save);
    std::vector<std::int64_t> times(per_save);
    for (std::uint64_t save = 0; save != saves; ++save) {
        for (std::uint64_t i = 0; i != per_save; ++i) {
            values[i] = std::sqrt(static_cast<double>(save * per_save + i));
            times[i] = static_cast<std::int64_t>(save * per_save + i);
        }
        const std::string text = std::to_string(save);
        const char* const texts[] = {text.c_str()};
        EXPECT_EQ(0, tdms_append_nanoseconds(file.channel("a", "time"), per_save, times.data()));
        EXPECT_EQ(0, tdms_append_double(file.channel("a", "value"), per_save, values.data()));
        EXPECT_EQ(0, tdms_append_double(file.channel("b", "value"), per_save, values.data()));
        EXPECT_EQ(0, tdms_append_string(file.channel("b", "text"), 1, texts));
        if (save % 100 == 0) {
            EXPECT_EQ(
                0, tdms_append_double(file.channel(("new" + text).c_str(), "x"), 1, values.data()));
            EXPECT_EQ(0, create_file_property_string(file.handle, text.c_str(), text.c_str()));
        }
        EXPECT_EQ(0, tdms_save(file.handle));
    }
}

// What one look at the file shows is of complete saves. @return how many
std::uint64_t check(void* file, std::uint64_t before)
{
    void* group = nullptr;
    void* channels[4] = {};
    if (tdms_find_group(file, "b", &group) != TDMS_OK) return 0;
    EXPECT_EQ(0, tdms_find_channel(group, "text", &channels[0]));
    EXPECT_EQ(0, tdms_find_channel(group, "value", &channels[1]));
    EXPECT_EQ(0, tdms_find_group(file, "a", &group));
    EXPECT_EQ(0, tdms_find_channel(group, "time", &channels[2]));
    EXPECT_EQ(0, tdms_find_channel(group, "value", &channels[3]));
    const std::uint64_t now = found_and_lost(channels[0]).first;
    EXPECT_LE(before, now);
    const std::uint64_t count = (now - before) * per_save;
    std::vector<double> values(count);
    std::vector<std::int64_t> times(count);
    for (void* const channel : {channels[1], channels[3]}) {
        EXPECT_EQ(std::pair(now * per_save, 0ul), found_and_lost(channel));
        EXPECT_EQ(0, tdms_read_double(channel, before * per_save, count, values.data()));
        for (std::uint64_t i = 0; i != count; ++i) {
            EXPECT_EQ(std::sqrt(static_cast<double>(before * per_save + i)), values[i]);
        }
    }
    EXPECT_EQ(0, tdms_read_nanoseconds(channels[2], before * per_save, count, times.data()));
    for (std::uint64_t i = 0; i != count; ++i) {
        EXPECT_EQ(static_cast<std::int64_t>(before * per_save + i), times[i]);
    }
    EXPECT_EQ(static_cast<int>((now + 99) / 100), get_num_file_property(file));
    EXPECT_EQ(static_cast<int>(2 + (now + 99) / 100), get_num_group(file));
    return now;
}

TEST(Following, AnotherProcessSaveBySave)
{
    const scratch_file scratch("");
    const pid_t recorder = fork();
    if (recorder == 0) {
        record(scratch);
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    const tdms_file file(scratch);
    ASSERT_EQ(0, file.status);
    std::uint64_t seen = 0;
    int looks = 0;
    int ended = -1;
    while (ended < 0 && !HasFailure()) {
        if (waitpid(recorder, &ended, WNOHANG) == 0) ended = -1;
        ASSERT_EQ(0, tdms_refresh(file.handle, nullptr));
        seen = check(file.handle, seen);
        // One that opens the file in the middle finds complete saves, too.
        if (++looks % 50 == 0) check(tdms_file(scratch).handle, 0);
    }
    EXPECT_EQ(0, ended);
    EXPECT_EQ(saves, seen);
    EXPECT_EQ(0, tdms_file(scratch, "r").status);
    RecordProperty("looks", looks);
}

}  // namespace
