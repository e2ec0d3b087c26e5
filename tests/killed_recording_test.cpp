// A recording process is killed at random moments. What it leaves is intact up to the segment that
// was being written: nothing that tdms_save() saved is missing, also in what is salvaged of it, and
// for a handle that follows the recording.
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <atomic>
#include <random>

#include "elements.h"
#include "support.h"

namespace {

using counter = std::atomic<std::int64_t>;

constexpr std::int64_t saves = 40;

// What a fast channel gets in the first saves.
std::vector<std::int64_t> fast_values(std::int64_t first_save, std::int64_t end)
{
    std::vector<std::int64_t> values;
    for (auto save = first_save; save != end; ++save) {
        for (int i = 0; i <= save * 7919 % 10000; ++i) values.push_back(save << 40 | i);
    }
    return values;
}

void record(const scratch_file& scratch, counter& returned)
{
    const tdms_file file(scratch, "w");
    void* const times = file.channel("fast", "time");
    void* const events = file.channel("slow", "event");
    for (std::int64_t save = 0; save != saves; ++save, ++returned) {
        const auto values = fast_values(save, save + 1);
        const std::string string = std::to_string(save);
        const char* const event = string.c_str();
        if (save % 20 == 0) file.group(event);  // metadata that is new
        expect_each(0, {tdms_append_nanoseconds(times, values.size(), values.data()),
                        tdms_append_string(events, 1, &event), tdms_save(file.handle)});
    }
}

// Reads all of a recording. @return how many saves it has
std::int64_t complete_saves(const tdms_file& file)
{
    if (get_num_group(file.handle) == 0) return 0;
    void* const channel = file.channel("slow", "event");
    std::vector<const char*> events(found_and_lost(channel).first);
    EXPECT_EQ(0, tdms_read_string(channel, 0, events.size(), events.data()));
    for (std::size_t i = 0; i != events.size(); ++i) EXPECT_EQ(std::to_string(i), events[i]);
    const auto complete = static_cast<std::int64_t>(events.size());
    const auto expected = fast_values(0, complete);
    std::vector<std::int64_t> read(expected.size());
    void* const fast = file.channel("fast", "time");
    EXPECT_EQ(expected.size(), found_and_lost(fast).first);
    EXPECT_EQ(0, tdms_read_nanoseconds(fast, 0, read.size(), read.data()));
    EXPECT_TRUE(expected == read);
    EXPECT_EQ((complete + 19) / 20 + 2, get_num_group(file.handle));
    return complete;
}

// Follows a recording, and kills it some time after some number of saves.
// @return how many saves had returned
std::int64_t record_until_killed(const scratch_file& scratch, const tdms_file& follower)
{
    static std::minstd_rand random;
    static auto& returned = *new (
        mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) counter;
    returned = 0;
    const auto wanted = static_cast<std::int64_t>(random() % saves);
    const pid_t child = fork();
    if (child == 0) {
        record(scratch, returned);
        _exit(0);
    }
    while (returned < wanted && waitpid(child, nullptr, WNOHANG) == 0) {
        EXPECT_EQ(0, tdms_refresh(follower.handle, nullptr));
    }
    EXPECT_GE(returned, wanted) << "the recording ended by itself";
    usleep(static_cast<useconds_t>(random() % 300));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    return returned;
}

TEST(KilledRecording, HasEverySaveThatReturned)
{
    const scratch_file file;
    const scratch_file intact;
    const std::string salvage = "'" TDMS_TOOL "' salvage -o '" + std::string(intact.path()) +
                                "' '" + file.path() + "' >/dev/null 2>&1";
    int truncated = 0;
    for (int round = 0; round != rounds(50); ++round) {
        file.fill("");
        const tdms_file follower(file);
        const std::int64_t returned = record_until_killed(file, follower);
        const tdms_file left(file);
        ASSERT_EQ(0, left.status);
        truncated += left.rest != 0;
        const std::int64_t all = complete_saves(left);
        EXPECT_TRUE(all == returned || all == returned + 1) << all << " of " << returned;
        EXPECT_EQ(0, tdms_refresh(follower.handle, nullptr));
        EXPECT_EQ(all, complete_saves(follower));
        if (round % 4 != 0) continue;  // the tool takes longer than the recording
        const bool salvaged = std::system(salvage.c_str()) == 0;
        EXPECT_EQ(all, salvaged ? complete_saves(tdms_file(intact, "r")) : 0);
    }
    RecordProperty("truncated", truncated);  // how many depends on the machine
}

}  // namespace
