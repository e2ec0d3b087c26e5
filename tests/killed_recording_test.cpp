// A recording process is killed at random moments. What it leaves is intact up to the segment that
// was being written: nothing that tdms_save() saved is missing, also in what is salvaged of it. One
// that is not killed is followed by tdms_refresh() to its end.
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <atomic>
#include <random>

#include "elements.h"
#include "support.h"

namespace {

using counter = std::atomic<std::size_t>;

constexpr int saves = 40;

// What the fast channels get in some saves of a recording of `all` saves.
std::vector<std::int64_t> fast_values(std::int64_t first_save, std::int64_t end, std::int64_t all)
{
    std::vector<std::int64_t> values;
    for (auto save = first_save; save != end; ++save) {
        for (int i = 0; i <= save * 7919 % (400000 / all); ++i) values.push_back(save << 40 | i);
    }
    return values;
}

// Now and then, there is a new group and a new property, too.
template <std::int64_t All>
void record_appended(const scratch_file& scratch, counter& returned)
{
    const tdms_file file(scratch, "w");
    void* const numbers = file.channel("fast", "number");
    void* const times = file.channel("fast", "time");
    void* const slow_times = file.channel("slow", "time");
    void* const events = file.channel("slow", "event");
    for (std::int64_t save = 0; save != All; ++save, ++returned) {
        const auto values = fast_values(save, save + 1, All);
        const std::string string = std::to_string(save);
        const char* const event = string.c_str();
        if (save % 100 == 0) file.channel(event, "x");
        if (save % 100 == 0) create_file_property_int8(file.handle, event, 1);
        expect_each(0, {tdms_append_int64(numbers, values.size(), values.data()),
                        tdms_append_nanoseconds(times, values.size(), values.data()),
                        tdms_append_nanoseconds(slow_times, 1, &save),
                        tdms_append_string(events, 1, &event), tdms_save(file.handle)});
    }
}

template <class T>
std::vector<T> read_from(std::uint64_t first, void* channel,
                         int (*read)(void*, std::uint64_t, std::uint64_t, T*))
{
    std::vector<T> values(found_and_lost(channel).first - first);
    EXPECT_EQ(0, read(channel, first, values.size(), values.data()));
    return values;
}

// What is known of a recording: complete saves, and how many values of fast channels they have.
struct progress {
    std::int64_t saves = 0;
    std::uint64_t fast = 0;
};

// Reads what is new of a recording.
void look_at(const tdms_file& file, progress& seen, std::int64_t all)
{
    if (get_num_group(file.handle) == 0) return;
    const auto first = static_cast<std::uint64_t>(seen.saves);
    const auto times = read_from(first, file.channel("slow", "time"), tdms_read_nanoseconds);
    const auto events =
        read_from<const char*>(first, file.channel("slow", "event"), tdms_read_string);
    ASSERT_EQ(times.size(), events.size());
    for (std::size_t i = 0; i != times.size(); ++i) {
        EXPECT_EQ(seen.saves + static_cast<std::int64_t>(i), times[i]);
        EXPECT_EQ(std::to_string(times[i]), events[i]);
    }
    const auto now = seen.saves + static_cast<std::int64_t>(times.size());
    const auto fast = fast_values(seen.saves, now, all);
    EXPECT_TRUE(fast == read_from(seen.fast, file.channel("fast", "number"), tdms_read_int64));
    EXPECT_TRUE(fast == read_from(seen.fast, file.channel("fast", "time"), tdms_read_nanoseconds));
    EXPECT_EQ((now + 99) / 100, get_num_file_property(file.handle));
    EXPECT_EQ((now + 99) / 100 + 2, get_num_group(file.handle));
    seen = {now, seen.fast + fast.size()};
}

counter& shared_counter()
{
    static auto& shared = *new (
        mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) counter;
    shared = 0;
    return shared;
}

template <std::int64_t All>
pid_t start(const scratch_file& file, counter& count)
{
    file.fill("");
    const pid_t child = fork();
    if (child != 0) return child;
    record_appended<All>(file, count);
    _exit(testing::Test::HasFailure() ? 1 : 0);
}

// Kills a recording some time after some number of saves. @return how many saves had returned
std::size_t record_until_killed(const scratch_file& scratch)
{
    static std::minstd_rand random;
    counter& returned = shared_counter();
    const std::size_t saved = random() % saves;
    const pid_t child = start<saves>(scratch, returned);
    while (returned < saved && waitpid(child, nullptr, WNOHANG) == 0) usleep(1);
    EXPECT_GE(returned, saved) << "the recording ended by itself";
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
    for (int round = 0; round != rounds(40); ++round) {
        const auto returned = static_cast<std::int64_t>(record_until_killed(file));
        const tdms_file left(file);
        ASSERT_EQ(0, left.status);
        truncated += left.rest != 0;
        progress all;
        look_at(left, all, saves);
        if (round % 4 != 0) continue;
        const bool salvaged = std::system(salvage.c_str()) == 0;
        progress kept;
        if (salvaged) look_at(tdms_file(intact, "r"), kept, saves);
        EXPECT_EQ(all.saves, kept.saves);
        EXPECT_TRUE(all.saves == returned || all.saves == returned + 1) << all.saves;
    }
    RecordProperty("truncated", truncated);  // how many depends on the machine
}

TEST(Recording, IsFollowedSaveBySave)
{
    const scratch_file scratch("");
    const pid_t recorder = start<1000>(scratch, shared_counter());
    const tdms_file file(scratch);
    ASSERT_EQ(0, file.status);
    progress seen;
    int ended = -1;
    for (int looks = 1; ended < 0 && !HasFailure(); ++looks) {
        if (waitpid(recorder, &ended, WNOHANG) == 0) ended = -1;
        ASSERT_EQ(0, tdms_refresh(file.handle, nullptr));
        look_at(file, seen, 1000);
        // Who opens the file in the middle finds complete saves, too.
        progress anew;
        if (looks % 50 == 0) look_at(tdms_file(scratch), anew, 1000);
    }
    EXPECT_EQ(std::pair(0, std::int64_t{1000}), std::pair(ended, seen.saves));
    EXPECT_EQ(0, tdms_file(scratch, "r").status);
}

}  // namespace
