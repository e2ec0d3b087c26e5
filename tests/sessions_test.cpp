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
}

TEST(Sessions, EverythingComesBackInEachThread)
{
    const scratch_file files[8];
    std::vector<std::thread> threads;
    for (const scratch_file& file : files) threads.emplace_back([&] { complete_lives(file); });
    for (std::thread& t : threads) t.join();
}

}  // namespace
