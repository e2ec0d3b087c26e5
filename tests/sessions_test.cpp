// A file with everything in it, by several threads, each with a file of its own.
#include "sessions.h"

#include <thread>

#include "support.h"

// The C library guards what it knows of the time zone by a lock that the thread sanitizer cannot
// see.
extern "C" const char* __tsan_default_suppressions()
{
    return "called_from_lib:libc.so.6\n";
}

namespace {

// The first functions hand out the process's first strings; the others, those that were asked for.
void own_strings(const scratch_file& scratch)
{
    const tdms_file file(scratch, "w");
    void* const channel = file.channel("g", "c");
    for (std::uint64_t i = 0; i != 50; ++i) {
        const std::string own = scratch.path() + std::to_string(i);
        const char* string = own.c_str();
        expect_each(0, {tdms_append_string(channel, 1, &string), tdms_save(file.handle),
                        tdms_read_string(channel, i, 1, &string)});
        EXPECT_EQ(own, string);
    }
}

void complete_lives(const scratch_file& scratch)
{
    const auto call = [](auto function) { EXPECT_EQ(0, function()); };
    for (int round = 0; round != 5; ++round) {
        write_everything(scratch.path(), call);
        append_everything(scratch.path(), call);
        read_everything(scratch.path(), call);
        record_everything(scratch.path(), call);
        extend_everything(scratch.path(), call);
    }
    EXPECT_EQ(0, delete_file(scratch.path()));
    own_strings(scratch);
}

TEST(Sessions, EverythingComesBackInEachThread)
{
    const scratch_file files[8];
    std::vector<std::thread> threads;
    for (const scratch_file& file : files) threads.emplace_back([&] { complete_lives(file); });
    for (std::thread& t : threads) t.join();
}

}  // namespace
